// SPDX-License-Identifier: BSD-3-Clause
#include "formats.h"

#include <algorithm>
#include <array>
#include <limits>
#include <string>
#include <vector>

namespace qvr_gst {

namespace {

// GStreamer's names of packed formats stand for bytes in memory order, those of 64-bit formats for 16-bit words; Y210
// and Y212 keep their samples in the top bits. ARGB64 is in the byte order of the machine, which is little-endian here.
constexpr format_row k_rows[] = {
    // clang-format off
    {GST_VIDEO_FORMAT_UYVY,      QVRUncompressed_OrderCbYCrY,         QVRUncompressed_TypeU8},
    {GST_VIDEO_FORMAT_YUY2,      QVRUncompressed_OrderYCbYCr,         QVRUncompressed_TypeU8},
    {GST_VIDEO_FORMAT_v210,      QVRUncompressed_OrderCbYCrY,         QVRUncompressed_TypeU10Packed},
    {GST_VIDEO_FORMAT_Y210,      QVRUncompressed_OrderYCbYCr,         QVRUncompressed_TypeU10},
    {GST_VIDEO_FORMAT_Y212_LE,   QVRUncompressed_OrderYCbYCr,         QVRUncompressed_TypeU12},
    {GST_VIDEO_FORMAT_v216,      QVRUncompressed_OrderCbYCrY,         QVRUncompressed_TypeU16},
    {GST_VIDEO_FORMAT_ARGB,      QVRUncompressed_OrderARGB,           QVRUncompressed_TypeU8},
    {GST_VIDEO_FORMAT_BGRA,      QVRUncompressed_OrderBGRA,           QVRUncompressed_TypeU8},
    {GST_VIDEO_FORMAT_RGBA,      QVRUncompressed_OrderRGBA,           QVRUncompressed_TypeU8},
    {GST_VIDEO_FORMAT_ABGR,      QVRUncompressed_OrderABGR,           QVRUncompressed_TypeU8},
    {GST_VIDEO_FORMAT_ARGB64_LE, QVRUncompressed_OrderARGB,           QVRUncompressed_TypeU16},
    {GST_VIDEO_FORMAT_ARGB64,    QVRUncompressed_OrderARGB,           QVRUncompressed_TypeU16},
    {GST_VIDEO_FORMAT_BGRA64_LE, QVRUncompressed_OrderBGRA,           QVRUncompressed_TypeU16},
    {GST_VIDEO_FORMAT_RGBA64_LE, QVRUncompressed_OrderRGBA,           QVRUncompressed_TypeU16},
    {GST_VIDEO_FORMAT_ABGR64_LE, QVRUncompressed_OrderABGR,           QVRUncompressed_TypeU16},
    {GST_VIDEO_FORMAT_RGB,       QVRUncompressed_OrderRGB,            QVRUncompressed_TypeU8},
    {GST_VIDEO_FORMAT_BGR,       QVRUncompressed_OrderBGR,            QVRUncompressed_TypeU8},
    {GST_VIDEO_FORMAT_I420,      QVRUncompressed_OrderPlanar420,      QVRUncompressed_TypeU8},
    {GST_VIDEO_FORMAT_A420,      QVRUncompressed_OrderPlanar420Alpha, QVRUncompressed_TypeU8},
    {GST_VIDEO_FORMAT_GRAY8,     QVRUncompressed_OrderAlpha,          QVRUncompressed_TypeU8},
    {GST_VIDEO_FORMAT_GRAY16_LE, QVRUncompressed_OrderAlpha,          QVRUncompressed_TypeU16},
    {GST_VIDEO_FORMAT_IYU2,      QVRUncompressed_OrderYCbCr444,       QVRUncompressed_TypeU8,        k_444_uyv},
    {GST_VIDEO_FORMAT_v308,      QVRUncompressed_OrderYCbCr444,       QVRUncompressed_TypeU8,        k_444_yuv},
    // clang-format on
};

enum class colour : std::uint8_t { none, ycbcr_422, ycbcr_444, ycbcr_420, rgb, alpha_alone };

// What is stored of each order, whatever the arrangement in memory, and what `qvr` calls it.
struct stored_planes {
    colour main;
    bool alpha;
    const char* name;
};

constexpr std::array<stored_planes, 17> k_stored = {{
    {colour::none, false, "wrapped chunks"},
    {colour::ycbcr_422, false, "YUY2"},
    {colour::ycbcr_422, false, "UYVY"},
    {colour::rgb, true, "ARGB"},
    {colour::rgb, true, "BGRA"},
    {colour::rgb, false, "RGB"},
    {colour::rgb, false, "BGR"},
    {colour::rgb, true, "RGBA"},
    {colour::rgb, true, "ABGR"},
    {colour::ycbcr_444, false, "YUV444"},
    {colour::ycbcr_420, false, "I420"},
    {colour::ycbcr_422, true, "UYAVYA"},
    {colour::ycbcr_444, true, "YUVA444"},
    {colour::ycbcr_420, true, "A420"},
    {colour::alpha_alone, true, "Alpha"},
    {colour::ycbcr_422, true, "YUY2+A"},
    {colour::ycbcr_422, true, "UYVY+A"},
}};

constexpr struct {
    std::uint32_t type;
    const char* name;
} k_types[] = {
    {QVRUncompressed_TypeU8, "U8"},
    {QVRUncompressed_TypeU16, "U16"},
    {QVRUncompressed_TypeU10, "U10"},
    {QVRUncompressed_TypeU12, "U12"},
    {QVRUncompressed_TypeU10Packed, "U10Packed"},
    {QVRUncompressed_TypeHalf, "Half"},
    {QVRUncompressed_TypeFloat, "Float"},
    {QVRUncompressed_TypeFixed16, "Fixed16"},
};

const stored_planes& planes_of(std::uint32_t order) {
    return k_stored[order < k_stored.size() ? order : 0];
}

// Packed 10-bit samples are stored like those in words of their own.
std::uint32_t stored_type(std::uint32_t type) {
    return type == QVRUncompressed_TypeU10Packed ? std::uint32_t{QVRUncompressed_TypeU10} : type;
}

bool is_wanted(const format_row& row, packed_444 choice) {
    return row.needs == k_444_off || row.needs == choice;
}

std::string number_range(bool even) {
    return (even ? "[2, " : "[1, ") + std::to_string(k_most_pixels) + (even ? ", 2]" : "]");
}

// Frames of which encoding asks an even width, and those of which it asks an even height as well.
bool has_even_width(const format_row& row) {
    const colour main = planes_of(row.order).main;
    return main == colour::ycbcr_422 || main == colour::ycbcr_420;
}

bool has_even_height(const format_row& row) {
    return planes_of(row.order).main == colour::ycbcr_420;
}

template <class Predicate>
void append_structure(GstCaps* caps, bool even_width, bool even_height, Predicate wanted) {
    std::string names;
    for (const format_row& row : k_rows) {
        if (wanted(row)) {
            names += (names.empty() ? "" : ", ") + std::string(gst_video_format_to_string(row.format));
        }
    }
    const std::string text = "video/x-raw, format=(string){ " + names + " }, width=(int)" + number_range(even_width) +
                             ", height=(int)" + number_range(even_height) + ", framerate=(fraction)[0/1, 2147483647/1]";
    gst_caps_append(caps, gst_caps_from_string(text.c_str()));
}

template <class Predicate>
GstCaps* caps_of_rows(dimensions which, Predicate wanted) {
    GstCaps* caps = gst_caps_new_empty();
    if (which == dimensions::any) {
        append_structure(caps, false, false, wanted);
        return caps;
    }
    constexpr struct { bool width, height; } k_groups[] = {{true, false}, {false, false}, {true, true}};
    for (const auto& even : k_groups) {
        append_structure(caps, even.width, even.height, [&](const format_row& row) {
            return wanted(row) && has_even_width(row) == even.width && has_even_height(row) == even.height;
        });
    }
    return caps;
}

}  // namespace

GType packed_444_type() {
    static const GEnumValue k_values[] = {
        {k_444_off, "Neither encode nor decode 4:4:4 YCbCr", "off"},
        {k_444_uyv, "Samples are Cb, Y, Cr (IYU2)", "uyv"},
        {k_444_yuv, "Samples are Y, Cb, Cr (v308)", "yuv"},
        {0, nullptr, nullptr},
    };
    static const GType k_type = g_enum_register_static("GstQvrPacked444", k_values);
    return k_type;
}

const format_row* row_of(GstVideoFormat format) {
    const auto* const found =
        std::find_if(std::begin(k_rows), std::end(k_rows), [&](const format_row& row) { return row.format == format; });
    return found != std::end(k_rows) ? found : nullptr;
}

bool serves(const format_row& row, const frame_params& stream) {
    const stored_planes& wanted = planes_of(row.order);
    const stored_planes& stored = planes_of(stream.colorComponentOrder);
    return wanted.main == stored.main && (stored.alpha || !wanted.alpha) &&
           stored_type(row.type) == stored_type(stream.componentType);
}

GstCaps* raw_caps(dimensions which, packed_444 choice) {
    return caps_of_rows(which, [&](const format_row& row) { return is_wanted(row, choice); });
}

GstCaps* template_caps(dimensions which) {
    return caps_of_rows(which, [](const format_row&) { return true; });
}

GstCaps* decoded_caps(const frame_params& stream, packed_444 choice) {
    std::vector<const format_row*> rows;
    for (const format_row& row : k_rows) {
        if (is_wanted(row, choice) && serves(row, stream)) {
            rows.push_back(&row);
        }
    }
    const auto rank = [&](const format_row* row) {
        const bool own = row->order == stream.colorComponentOrder && row->type == stream.componentType;
        return own ? 0 : planes_of(row->order).alpha ? 1 : 2;
    };
    std::stable_sort(rows.begin(), rows.end(), [&](const auto* a, const auto* b) { return rank(a) < rank(b); });
    GstCaps* caps = gst_caps_new_empty();
    for (const format_row* row : rows) {
        gst_caps_append_structure(
            caps, gst_structure_new("video/x-raw", "format", G_TYPE_STRING, gst_video_format_to_string(row->format),
                                    "width", G_TYPE_INT, static_cast<int>(stream.width), "height", G_TYPE_INT,
                                    static_cast<int>(stream.height), nullptr));
    }
    return caps;
}

bool is_wrapped_chunks(const frame_params& stream) {
    return stream.colorComponentOrder == 0;
}

bool is_small_enough(std::uint32_t width, std::uint32_t height) {
    constexpr std::uint64_t k_most_sample_bytes = 8;  // of a pixel, in any of the formats here
    return width > 0 && height > 0 && width <= k_most_pixels && height <= k_most_pixels &&
           k_most_sample_bytes * width * height <= std::numeric_limits<std::uint32_t>::max();
}

bool is_taken(const frame_params& stream) {
    return is_wrapped_chunks(stream) || is_small_enough(stream.width, stream.height);
}

std::string description_of(const frame_params& stream) {
    std::string text = planes_of(stream.colorComponentOrder).name;
    for (const auto& each : k_types) {
        if (each.type == stream.componentType && !is_wrapped_chunks(stream)) {
            text += std::string(" ") + each.name;
        }
    }
    return text;
}

bool has_any_format(const frame_params& stream) {
    return std::any_of(std::begin(k_rows), std::end(k_rows),
                       [&](const format_row& row) { return serves(row, stream); });
}

bool leaves_alpha_out(const format_row& row, const frame_params& stream) {
    return planes_of(stream.colorComponentOrder).alpha && !planes_of(row.order).alpha;
}

}  // namespace qvr_gst
