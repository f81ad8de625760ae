// SPDX-License-Identifier: BSD-3-Clause
//
// Opaque payloads beside, or instead of, a frame's own planes.
//
//   one QCX frame       'pack' { 'QCXF' payload, an alpha plane }
//   stitched chunks     'pack' { a plane whose 'sdat' holds 'stch' chunk 0, 'tile' chunk 1, 'tile' chunk 2 ... }
#pragma once

#include <cstdint>

#include "api/base/records.h"
#include "container/frame_layout.h"

namespace container {

// The plan of a wrapped frame; the type of the first record, which is read whatever the count, decides. Throws
// invalid_argument.
frame_layout_plan plan_wrapped_frame(const QVRUncompressed_UncompressedParams_t& up,
                                     const QVRUncompressed_CompressedParams_t& cp,
                                     const QVRUncompressed_WrapParams_t* wraps, std::uint32_t count);

// What the header of a QCX frame says of it.
struct qcx_header_info {
    std::uint32_t width;
    std::uint32_t height;
    bool has_alpha;
    bool interlaced;
};

// Throws invalid_argument for a frame too short to have a header, or of a compression that is not known.
qcx_header_info read_qcx_header(const std::uint8_t* frame, std::uint32_t size);

// Throws invalid_argument unless a plane with these parameters can stand beside such a frame.
void check_against_qcx(const QVRUncompressed_UncompressedParams_t& up, const qcx_header_info& qcx);

// Fills count records from the boxes of a parsed plan. Throws invalid_argument when there are fewer boxes.
void read_wrap_params(const frame_layout_plan& plan, QVRUncompressed_WrapParams_t* wraps, std::uint32_t count);

// Throws invalid_buffer unless the first count boxes exist.
void check_box_count(const frame_layout_plan& plan, std::uint32_t count);

// Throws invalid_buffer unless the payload lies inside the source.
void check_payload(const box_entry& box, std::uint32_t source_size);

}  // namespace container
