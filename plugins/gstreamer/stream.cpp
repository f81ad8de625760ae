// SPDX-License-Identifier: BSD-3-Clause
#include "stream.h"

#include <cstring>
#include <string>

#include "formats.h"

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

// A damaged size must not make anyone wait for gigabytes. No pixel takes more than 16 bytes; the rest is room for coded
// alpha, box headers and wrapped payloads.
bool is_plausible(std::uint32_t size, const std::uint8_t* sinf) {
    constexpr std::uint32_t k_allowance = 1 << 20;
    constexpr std::uint64_t k_most_pixel_bytes = 32;
    const std::uint64_t pixels = std::uint64_t{load_32(sinf + 8)} * load_32(sinf + 12);
    return size <= k_allowance || (size - k_allowance) / k_most_pixel_bytes <= pixels;
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

std::uint32_t frame_size(const std::uint8_t* header) {
    return load_32(header);
}

bool starts_frame(const std::uint8_t* header, trust level) {
    if (!is_box(header, "pack") || frame_size(header) < k_header_size) {
        return false;
    }
    const std::uint8_t* const first = header + k_box_header;
    const std::uint8_t* const sinf = is_box(first, "icmp") ? first + k_box_header : first;
    if (is_box(sinf, "sinf")) {
        const bool stitched = std::memcmp(sinf + 16, "stch", 4) == 0;  // whose dimensions mean nothing
        return stitched || is_plausible(frame_size(header), sinf);
    }
    return level == trust::any_box || is_box(first, "QCXF");
}

}  // namespace qvr_gst
