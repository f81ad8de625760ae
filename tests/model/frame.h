// SPDX-License-Identifier: BSD-3-Clause
#ifndef QVR_TESTS_MODEL_FRAME_H
#define QVR_TESTS_MODEL_FRAME_H

// Whole frames: caller memory to bitstream and back.

#include "boxes.h"
#include "model_types.h"
#include "rle.h"

namespace model {

bytes encode_frame(const frame_params& frame, const stream_params& stream, view source, exact capacity);

// Writes into `raw` exactly the bytes that decoding defines and leaves all
// others alone. Returns the size of the raw frame.
std::uint32_t decode_frame(const frame_params& frame, view source, target raw);

// The description of a frame's alpha plane for the run-length coder.
rle_params alpha_params(const frame_params& frame, std::uint32_t slices);

// Planes of one component, also used when wrapping.
bytes pack_plane(std::uint32_t type, std::uint32_t width, std::uint32_t height, view source, exact start, exact stride);
void unpack_plane(std::uint32_t type, const parsed_plane& plane, view source, target raw, exact start, exact stride);

// The part of a stored payload that lies inside the source.
view payload_of(view source, const parsed_plane& plane);

}  // namespace model

#endif
