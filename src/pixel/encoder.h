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

namespace encoder {

// What an encoder handle owns. One call at a time; every failure is thrown.
class encoder_impl {
  public:
    explicit encoder_impl(std::uint32_t thread_count);

    // Encodes a frame and returns the size of the bitstream.
    std::uint32_t encode_frame(const QVRUncompressed_UncompressedParams_t& up,
                               const QVRUncompressed_CompressedParams_t& cp, const std::uint8_t* src,
                               std::uint32_t src_size, std::uint8_t* dst, std::uint32_t dst_size);

    // Wraps count payloads and, unless they are stitched chunks, encodes the alpha plane src beside them. At least one
    // record is readable whatever the count.
    std::uint32_t encode_and_wrap_frame(const QVRUncompressed_UncompressedParams_t& up,
                                        const QVRUncompressed_CompressedParams_t& cp,
                                        const QVRUncompressed_WrapParams_t* wraps, std::uint32_t count,
                                        const std::uint8_t* src, std::uint32_t src_size,
                                        const std::uint8_t* const* wrap_data, std::uint8_t* dst,
                                        std::uint32_t dst_size);

  private:
    void encode_planes(const QVRUncompressed_UncompressedParams_t& up, const QVRUncompressed_CompressedParams_t& cp,
                       const frame_geometry& geometry, container::frame_layout_plan& plan, const frame_buffers& frame);
    void encode_colour_plane(const QVRUncompressed_UncompressedParams_t& up,
                             const QVRUncompressed_CompressedParams_t& cp, const caller_plane& plane,
                             container::frame_layout_plan& plan, const frame_buffers& frame);
    void encode_alpha_plane(const QVRUncompressed_UncompressedParams_t& up,
                            const QVRUncompressed_CompressedParams_t& cp, const caller_plane& plane,
                            container::frame_layout_plan& plan, const frame_buffers& frame);
    void encode_wrapped_alpha(const QVRUncompressed_UncompressedParams_t& up,
                              const QVRUncompressed_CompressedParams_t& cp, container::frame_layout_plan& plan,
                              const frame_buffers& frame);
    void code_alpha(const rle_params& params, const std::uint8_t* source, std::uint64_t source_size,
                    container::frame_layout_plan& plan, std::uint8_t* dst);
    void threaded_pack_rows(const row_codec& codec, std::uint32_t rows, row_span<const std::uint8_t> caller,
                            row_span<std::uint8_t> stored, row_span<std::uint8_t> alpha);

    threaded_executor executor;
    threaded_rle_encoder alpha_coder;
    scratch_buffer scratch;
};

}  // namespace encoder
