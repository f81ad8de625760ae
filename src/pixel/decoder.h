// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>

#include "api/base/records.h"
#include "container/frame_layout.h"
#include "pixel/frame_geometry.h"
#include "pixel/row_codec.h"
#include "pixel/scratch_buffer.h"
#include "rle/threaded_rle.h"
#include "threading/threaded_executor.h"

namespace decoder {

// What a decoder handle owns. One call at a time; every failure is thrown.
class decoder_impl {
  public:
    explicit decoder_impl(std::uint32_t thread_count);

    // Decodes a frame into the layout that up asks for and returns the size of the raw frame.
    std::uint32_t decode_frame(const QVRUncompressed_UncompressedParams_t& up, const std::uint8_t* src,
                               std::uint32_t src_size, std::uint8_t* dst, std::uint32_t dst_size);

    // Takes out count payloads and, unless they are stitched chunks, decodes the alpha plane beside them. At least one
    // record is readable whatever the count. Returns the size of the raw alpha plane, 0 with stitched chunks.
    std::uint32_t decode_and_unwrap_frame(const QVRUncompressed_UncompressedParams_t& up,
                                          const QVRUncompressed_WrapParams_t* wraps, std::uint32_t count,
                                          const std::uint8_t* src, std::uint32_t src_size, std::uint8_t* dst,
                                          std::uint32_t dst_size, std::uint8_t* const* wrap_dst);

  private:
    void decode_colour_plane(const QVRUncompressed_UncompressedParams_t& up, const caller_plane& plane,
                             const container::plane_roles& roles, const frame_buffers& frame);
    void decode_alpha_plane(const QVRUncompressed_UncompressedParams_t& up, const caller_plane& plane,
                            const container::plane_entry& stored, const frame_buffers& frame);
    void unwrap_stitched(const QVRUncompressed_WrapParams_t& first, std::uint32_t count, const std::uint8_t* src,
                         std::uint32_t src_size, std::uint8_t* const* wrap_dst);
    std::uint32_t unwrap_qcx(const QVRUncompressed_UncompressedParams_t& up, const QVRUncompressed_WrapParams_t& first,
                             std::uint32_t count, const frame_buffers& frame, std::uint32_t dst_size,
                             std::uint8_t* const* wrap_dst);
    void decode_coded_alpha(const rle_params& params, const container::plane_entry& stored, const frame_buffers& frame,
                            std::uint8_t* target, threaded_rle_decoder::uncovered rest);
    void threaded_unpack_rows(const row_codec& codec, std::uint32_t rows, row_span<const std::uint8_t> stored,
                              row_span<const std::uint8_t> alpha, row_span<std::uint8_t> caller);

    threaded_executor executor;
    threaded_rle_decoder alpha_decoder;
    scratch_buffer scratch;
};

}  // namespace decoder
