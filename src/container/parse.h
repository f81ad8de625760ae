// SPDX-License-Identifier: BSD-3-Clause
//
// A bitstream read back into a plan, and what the plan says of the frame.
#pragma once

#include <cstdint>

#include "container/frame_layout.h"

namespace container {

// Throws invalid_buffer for anything that is not one frame. Raw planes of the plan lie inside the source whole; coded
// planes and wrapped payloads begin inside it and may claim to end past it.
frame_layout_plan parse_container(const std::uint8_t* source, std::uint32_t source_size);

// The frame's description, with default strides.
QVRUncompressed_UncompressedParams_t read_metadata(const frame_layout_plan& plan);

// The planes against each other. Throws invalid_argument.
void check_plane_consistency(const frame_layout_plan& plan);

// The planes against what the caller asks for. Throws invalid_argument.
void check_against_caller(const frame_layout_plan& plan, const QVRUncompressed_UncompressedParams_t& up);

// Whether decoding turns fixed-point samples into the floats that the caller asks for.
bool converts_to_float(const plane_info& main, std::uint32_t component_type);

}  // namespace container
