// SPDX-License-Identifier: BSD-3-Clause
//
// Which of GStreamer's raw formats is which order and type of the library's, and which of them a stream decodes to.
#pragma once

#include <QVRUncompressed.h>
#include <gst/video/video.h>

#include <cstdint>
#include <string>

namespace qvr_gst {

using frame_params = QVRUncompressed_UncompressedParams_t;

// Widest and highest frame that the elements take.
constexpr std::uint32_t k_most_pixels = 32768;

// A 4:4:4 YCbCr stream does not say which of its three samples is which, so nothing is assumed unless asked for.
enum packed_444 { k_444_off, k_444_uyv, k_444_yuv };
GType packed_444_type();

struct format_row {
    GstVideoFormat format;
    std::uint32_t order;
    std::uint32_t type;
    packed_444 needs = k_444_off;  // else the format is used with this choice alone
};

// The row of a format; null when there is none.
const format_row* row_of(GstVideoFormat format);

// Whether a frame that reads as `stream` can be decoded into the row's format.
bool serves(const format_row& row, const frame_params& stream);

// All formats, with the even dimensions that encoding asks for, or with any.
enum class dimensions { for_encoding, any };
GstCaps* raw_caps(dimensions which, packed_444 choice);
// The same with every choice for 4:4:4, as pad templates show it.
GstCaps* template_caps(dimensions which);

// What a frame that reads as `stream` can be decoded into, the best first: its own layout, then those that keep its
// alpha. Empty when there is nothing.
GstCaps* decoded_caps(const frame_params& stream, packed_444 choice);

// Whether that is a run of wrapped chunks, which have no samples to decode.
bool is_wrapped_chunks(const frame_params& stream);

// Whether width and height are from 1 to k_most_pixels, and so few pixels that a frame of any format here stays below
// the library's 4 GiB.
bool is_small_enough(std::uint32_t width, std::uint32_t height);

// Whether the elements take a frame that reads as `stream`. Wrapped chunks have no samples, and dimensions that mean
// nothing.
bool is_taken(const frame_params& stream);

// What is in a stream, by name and for messages: "RGB Half" or "wrapped chunks".
std::string description_of(const frame_params& stream);

// Whether a stream can be decoded with one or another choice for 4:4:4.
bool has_any_format(const frame_params& stream);

// Whether the stream holds an alpha plane that the row's format has no room for.
bool leaves_alpha_out(const format_row& row, const frame_params& stream);

}  // namespace qvr_gst
