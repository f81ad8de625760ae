// SPDX-License-Identifier: BSD-3-Clause
//
// The encoded stream: its caps, and the first bytes of each of its frames.
#pragma once

#include <gst/gst.h>

#include <cstddef>
#include <cstdint>

#include "formats.h"
#include "frame_numbers.h"

namespace qvr_gst {

// Bytes that starts_frame() looks at. No frame is shorter.
constexpr std::size_t k_header_size = 36;

constexpr const char* k_media_type = "video/x-qvr-uncompressed";

// For pad templates. Parsed: buffers hold one whole frame each, and caps describe it.
enum class framing { any, parsed, parsed_and_described };
GstCaps* encoded_caps(framing which);

// Of parsed frames: what upstream's caps say (null: nothing), as far as the frame and the rate do not say otherwise.
GstCaps* described_caps(const GstCaps* upstream, const frame_params& frame, const frame_rate& rate);

// What to ask of upstream where downstream of the parser wants these: the same less what the parser adds, in the order of
// the filter (null: none). Takes the caps.
GstCaps* undescribed_caps(GstCaps* wanted, GstCaps* filter, bool adds_rate);

// Size of the frame that a header of k_header_size bytes begins.
std::uint32_t frame_size(const std::uint8_t* header);

// Whether a frame may begin here: a 'pack' box of a size that its first plane's dimensions bear out and, where nothing
// else says that a frame begins, with a known box behind it.
enum class trust { known_box, any_box };
bool starts_frame(const std::uint8_t* header, trust level);

// Bytes to go on by where no frame begins: up to the next place where one may, or to where the next header may lie. At
// the end of a stream only to such a frame as is not cut short: one pass over what is left, whatever it holds.
std::size_t distance_to_frame(const std::uint8_t* data, std::size_t size, bool at_end);

}  // namespace qvr_gst
