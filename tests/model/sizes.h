// SPDX-License-Identifier: BSD-3-Clause
#ifndef QVR_TESTS_MODEL_SIZES_H
#define QVR_TESTS_MODEL_SIZES_H

// Strides, raw frame sizes and the plan of a bitstream: which planes and
// wrapped payloads it holds and how many bytes they need.

#include "formats.h"
#include "model_types.h"

namespace model {

// Bytes of one caller row of an interleaved order without padding.
exact packed_row_size(const frame_params& frame);
// The stride in force for the first caller plane and for the second one.
exact first_stride(const frame_params& frame);
exact second_stride(const frame_params& frame);
// Throws when a caller stride is smaller than a row.
void check_row_strides(const frame_params& frame);
// The parity and alpha rules that apply to encoding only.
void check_encoder_rules(const frame_params& frame, const stream_params& stream);

exact uncompressed_size_exact(const frame_params& frame);

// What a plane needs besides its payload depends on the number of planes.
struct planned_plane {
    code name;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint8_t layout = 0;
    exact payload = 0;
};

struct planned_box {
    std::string type;
    exact payload = 0;
};

struct frame_plan {
    std::vector<planned_box> wraps;
    std::vector<planned_plane> planes;
    std::vector<planned_box> stitched;

    exact total() const;
};

frame_plan plan_frame(const frame_params& frame, const stream_params& stream);
frame_plan plan_wrapped_frame(const frame_params& frame, const stream_params& stream,
                              const std::vector<wrap_params>& wraps, std::uint32_t count);

// Fails unless every record has a type.
void check_wrap_records(const std::vector<wrap_params>& wraps, std::uint32_t count);

// The exported queries: the low 32 bits of the exact size, 0 on failure.
std::uint32_t uncompressed_size(const frame_params& frame);
std::uint32_t compressed_size(const frame_params& frame, const stream_params& stream);
std::uint32_t compressed_wrap_size(const frame_params& frame, const stream_params& stream,
                                   const std::vector<wrap_params>& wraps, std::uint32_t count);

}  // namespace model

#endif
