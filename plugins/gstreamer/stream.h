// SPDX-License-Identifier: BSD-3-Clause
//
// The encoded stream: its caps, and the first bytes of each of its frames.
#pragma once

#include <gst/gst.h>

#include <cstddef>
#include <cstdint>

namespace qvr_gst {

// Bytes that starts_frame() looks at. No frame is shorter.
constexpr std::size_t k_header_size = 36;

constexpr const char* k_media_type = "video/x-qvr-uncompressed";

// For pad templates. Parsed: buffers hold one whole frame each, and caps describe it.
enum class framing { any, parsed, parsed_and_described };
GstCaps* encoded_caps(framing which);

// Size of the frame that a header of k_header_size bytes begins.
std::uint32_t frame_size(const std::uint8_t* header);

// Whether a frame may begin here: a 'pack' box of a size that its first plane's dimensions bear out and, where nothing
// else says that a frame begins, with a known box behind it.
enum class trust { known_box, any_box };
bool starts_frame(const std::uint8_t* header, trust level);

}  // namespace qvr_gst
