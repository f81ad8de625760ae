// SPDX-License-Identifier: BSD-3-Clause
#include "stream.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace qvr_gst {

namespace {

constexpr std::size_t k_box_header = 8;

// Fields lie at any address, which GStreamer's own macro takes for aligned.
std::uint32_t load_32(const std::uint8_t* at) {
    std::uint32_t value = 0;
    std::memcpy(&value, at, sizeof value);
    return value;
}

bool is_box(const std::uint8_t* box, const char* type) {
    return std::memcmp(box + 4, type, 4) == 0;
}

// A damaged size must not make anyone wait for gigabytes, nor for a frame that would be refused in the end. No pixel
// takes more than 16 bytes; the rest is room for coded alpha, box headers and wrapped payloads.
bool is_plausible(std::uint32_t size, const std::uint8_t* sinf) {
    constexpr std::uint32_t k_allowance = 1 << 20;
    constexpr std::uint64_t k_most_pixel_bytes = 32;
    const std::uint32_t width = load_32(sinf + 8);
    const std::uint32_t height = load_32(sinf + 12);
    return size <= k_allowance || (is_small_enough(width, height) &&
                                   (size - k_allowance) / k_most_pixel_bytes <= std::uint64_t{width} * height);
}

const char* interlace_mode_of(const frame_params& frame, const GstStructure* upstream) {
    const char* const given = gst_structure_get_string(upstream, "interlace-mode");
    if (given != nullptr && std::string(given) == "mixed") {
        return "mixed";
    }
    return frame.frameLayout == QVRUncompressed_LayoutInterlaced ? "interleaved" : "progressive";
}

// Wrapped chunks may have any dimensions, also such as caps cannot say.
gint dimension_of(std::uint32_t value) {
    return static_cast<gint>(std::clamp<std::uint32_t>(value, 1, k_most_pixels));
}

}  // namespace

GstCaps* encoded_caps(framing which) {
    std::string text = k_media_type;
    if (which != framing::any) {
        text += ", parsed=(boolean)true";
    }
    if (which == framing::parsed_and_described) {
        const std::string range = "=(int)[1, " + std::to_string(k_most_pixels) + "]";
        text += ", width" + range + ", height" + range +
                ", framerate=(fraction)[0/1, 2147483647/1], "
                "interlace-mode=(string){ progressive, interleaved, mixed }";
    }
    return gst_caps_from_string(text.c_str());
}

GstCaps* described_caps(const GstCaps* upstream, const frame_params& frame, const frame_rate& rate) {
    GstCaps* const caps = upstream != nullptr ? gst_caps_copy(upstream) : gst_caps_new_empty_simple(k_media_type);
    gst_caps_set_simple(caps, "parsed", G_TYPE_BOOLEAN, TRUE, "width", G_TYPE_INT, dimension_of(frame.width), "height",
                        G_TYPE_INT, dimension_of(frame.height), "framerate", GST_TYPE_FRACTION, rate.numerator,
                        rate.denominator, "interlace-mode", G_TYPE_STRING,
                        interlace_mode_of(frame, gst_caps_get_structure(caps, 0)), nullptr);
    return caps;
}

GstCaps* undescribed_caps(GstCaps* wanted, GstCaps* filter, bool adds_rate) {
    wanted = gst_caps_make_writable(wanted);
    for (guint i = 0; i < gst_caps_get_size(wanted); ++i) {
        gst_structure_remove_fields(gst_caps_get_structure(wanted, i), "parsed", adds_rate ? "framerate" : nullptr,
                                    nullptr);
    }
    GstCaps* const any = encoded_caps(framing::any);
    GstCaps* const taken = gst_caps_intersect_full(wanted, any, GST_CAPS_INTERSECT_FIRST);
    GstCaps* const result =
        filter != nullptr ? gst_caps_intersect_full(filter, taken, GST_CAPS_INTERSECT_FIRST) : gst_caps_ref(taken);
    for (GstCaps* const each : {any, taken, wanted}) {
        gst_caps_unref(each);
    }
    return result;
}

std::uint32_t frame_size(const std::uint8_t* header) {
    return load_32(header);
}

bool starts_frame(const std::uint8_t* header, trust level) {
    if (!is_box(header, "pack") || frame_size(header) < k_header_size) {
        return false;
    }
    const std::uint8_t* const first = header + k_box_header;
    const std::uint8_t* const sinf = is_box(first, "icmp") ? first + k_box_header : first;
    // The sizes of wrapped chunks, stitched ones and 'QCXF', are what the caller wrote: nothing here bounds them.
    if (is_box(sinf, "sinf")) {
        const bool stitched = std::memcmp(sinf + 16, "stch", 4) == 0;  // whose dimensions mean nothing
        return stitched || is_plausible(frame_size(header), sinf);
    }
    return level == trust::any_box || is_box(first, "QCXF");
}

std::size_t distance_to_frame(const std::uint8_t* data, std::size_t size, bool at_end) {
    const auto may_begin = [&](std::size_t at) {
        return starts_frame(data + at, trust::known_box) && (!at_end || frame_size(data + at) <= size - at);
    };
    std::size_t at = 1;
    while (at + k_header_size <= size && !may_begin(at)) {
        ++at;
    }
    return at;
}

}  // namespace qvr_gst
