// SPDX-License-Identifier: BSD-3-Clause
#include "media.h"

#include <gst/app/gstappsink.h>
#include <gst/video/video.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "random_source.h"

namespace media {

namespace {

constexpr GstClockTime k_patience = 30 * GST_SECOND;

std::uint32_t row_bytes(const raw_format& format, std::uint32_t width, std::uint32_t plane) {
    if (format.pixel_bytes == 0) {
        return (width + 5) / 6 * 16;
    }
    return plane == 1 || plane == 2 ? (width + 1) / 2 : width * format.pixel_bytes;
}

// Of the last group of v210 the samples behind the last pixel are nobody's.
void clear_unused(bytes& row, std::uint32_t width) {
    for (std::uint32_t sample = 2 * width; sample < row.size() / 4 * 3; ++sample) {
        std::uint32_t word = 0;
        std::memcpy(&word, &row[sample / 3 * 4], sizeof word);
        word &= ~(0x3ffu << sample % 3 * 10);
        std::memcpy(&row[sample / 3 * 4], &word, sizeof word);
    }
}

frame frame_of(GstSample* sample) {
    gchar* const text = gst_caps_to_string(gst_sample_get_caps(sample));
    frame result;
    result.caps = text;
    g_free(text);
    GstBuffer* const buffer = gst_sample_get_buffer(sample);
    result.pts = GST_BUFFER_PTS(buffer);
    result.pixels = pixels_of(buffer, result.caps);
    gst_sample_unref(sample);
    return result;
}

void note(GstMessage* message, ending& into) {
    GError* error = nullptr;
    gchar* debug = nullptr;
    if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_ERROR) {
        gst_message_parse_error(message, &error, &debug);
        into.error += std::string(error->message) + " / " + (debug != nullptr ? debug : "");
    } else {
        gst_message_parse_warning(message, &error, &debug);
        into.warnings.push_back(std::string(error->message) + " / " + (debug != nullptr ? debug : ""));
    }
    g_clear_error(&error);
    g_free(debug);
}

}  // namespace

const std::vector<raw_format>& formats() {
    static const std::vector<raw_format> k_all = {
        // name, order, type, bytes of a pixel, even, alpha, low byte of a word
        {"YUY2", 1, 1, 2, 1},
        {"Y210", 1, 3, 4, 1, false, 0xc0},
        {"Y212_LE", 1, 4, 4, 1, false, 0xf0},
        {"UYVY", 2, 1, 2, 1},
        {"v216", 2, 2, 4, 1},
        {"v210", 2, 5, 0, 1},
        {"ARGB", 3, 1, 4, 0, true},
        {"BGRA", 4, 1, 4, 0, true},
        {"RGBA", 7, 1, 4, 0, true},
        {"ABGR", 8, 1, 4, 0, true},
        {"ARGB64", 3, 2, 8, 0, true},
        {"ARGB64_LE", 3, 2, 8, 0, true},
        {"BGRA64_LE", 4, 2, 8, 0, true},
        {"RGBA64_LE", 7, 2, 8, 0, true},
        {"ABGR64_LE", 8, 2, 8, 0, true},
        {"RGB", 5, 1, 3, 0},
        {"BGR", 6, 1, 3, 0},
        {"I420", 10, 1, 1, 2},
        {"A420", 13, 1, 1, 2, true},
        {"GRAY8", 14, 1, 1, 0},
        {"GRAY16_LE", 14, 2, 2, 0},
        {"IYU2", 9, 1, 3, 0, false, 0xff, "uyv"},
        {"v308", 9, 1, 3, 0, false, 0xff, "yuv"},
    };
    return k_all;
}

const raw_format& format_named(const std::string& name) {
    for (const raw_format& each : formats()) {
        if (name == each.name) {
            return each;
        }
    }
    throw std::logic_error("no such format: " + name);
}

std::string caps_text(const raw_format& format, std::uint32_t width, std::uint32_t height) {
    return "video/x-raw,format=" + std::string(format.name) + ",width=" + std::to_string(width) +
           ",height=" + std::to_string(height) + ",framerate=25/1";
}

bytes pixels_of(GstBuffer* buffer, const std::string& caps) {
    GstCaps* const parsed = gst_caps_from_string(caps.c_str());
    GstVideoInfo info;
    const bool known = gst_video_info_from_caps(&info, parsed) != FALSE;
    gst_caps_unref(parsed);
    GstVideoFrame mapped;
    if (!known || !gst_video_frame_map(&mapped, &info, buffer, GST_MAP_READ)) {
        ADD_FAILURE() << "not a frame of " << caps;
        return {};
    }
    const raw_format& format = format_named(GST_VIDEO_INFO_NAME(&info));
    bytes result;
    for (guint plane = 0; plane < GST_VIDEO_FRAME_N_PLANES(&mapped); ++plane) {
        const std::uint32_t size = row_bytes(format, static_cast<std::uint32_t>(info.width), plane);
        const int rows = plane == 1 || plane == 2 ? (info.height + 1) / 2 : info.height;
        for (int y = 0; y < rows; ++y) {
            const auto* const start = static_cast<guint8*>(mapped.data[plane]) + y * mapped.info.stride[plane];
            bytes row(start, start + size);
            if (format.pixel_bytes == 0) {
                clear_unused(row, static_cast<std::uint32_t>(info.width));
            }
            result.insert(result.end(), row.begin(), row.end());
        }
    }
    gst_video_frame_unmap(&mapped);
    return result;
}

bytes bytes_of(GstBuffer* buffer) {
    bytes result(gst_buffer_get_size(buffer));
    gst_buffer_extract(buffer, 0, result.data(), result.size());
    return result;
}

GstBuffer* buffer_of(const bytes& content) {
    GstBuffer* const buffer = gst_buffer_new_allocate(nullptr, content.size(), nullptr);
    gst_buffer_fill(buffer, 0, content.data(), content.size());
    return buffer;
}

GstBuffer* buffer_of_pixels(const bytes& pixels, const std::string& caps) {
    GstCaps* const parsed = gst_caps_from_string(caps.c_str());
    GstVideoInfo info;
    gst_video_info_from_caps(&info, parsed);
    gst_caps_unref(parsed);
    const raw_format& format = format_named(GST_VIDEO_INFO_NAME(&info));
    GstBuffer* const buffer = buffer_of(bytes(info.size, 0xee));
    std::size_t at = 0;
    for (guint plane = 0; plane < GST_VIDEO_INFO_N_PLANES(&info); ++plane) {
        const std::uint32_t size = row_bytes(format, static_cast<std::uint32_t>(info.width), plane);
        const int rows = plane == 1 || plane == 2 ? (info.height + 1) / 2 : info.height;
        for (int y = 0; y < rows; ++y, at += size) {
            gst_buffer_fill(buffer, info.offset[plane] + static_cast<gsize>(y * info.stride[plane]), &pixels.at(at),
                            size);
        }
    }
    return buffer;
}

GstBuffer* random_buffer(const raw_format& format, const std::string& caps, std::uint64_t salt) {
    GstCaps* const parsed = gst_caps_from_string(caps.c_str());
    GstVideoInfo info;
    gst_video_info_from_caps(&info, parsed);
    gst_caps_unref(parsed);
    test::random_source random(salt);
    bytes content = random.runs(info.size);
    for (std::size_t i = 0; i < content.size(); ++i) {
        if (format.pixel_bytes == 0 && i % 4 == 3) {
            content[i] &= 0x3f;
        } else if (i % 2 == 0) {
            content[i] &= format.low_mask;
        }
    }
    return buffer_of(content);
}

test::frame_params params_of(const raw_format& format, std::uint32_t width, std::uint32_t height) {
    test::frame_params up = {};
    up.size = sizeof up;
    up.colorComponentOrder = format.order;
    up.componentType = format.type;
    up.width = width;
    up.height = height;
    return up;
}

bytes encoded(const raw_format& format, std::uint32_t width, std::uint32_t height, const bytes& pixels,
              bool alpha_rle) {
    const test::stream_params how = {sizeof how, static_cast<std::uint8_t>(alpha_rle), 0};
    const test::outcome made = test::encode(params_of(format, width, height), how, pixels);
    test::expect_success(made);
    return made.frame();
}

bytes wrapped_chunks(std::uint32_t width, std::uint32_t height) {
    constexpr std::uint32_t k_chunk = 10;
    test::frame_params up = {};
    up.size = sizeof up;
    up.width = width;
    up.height = height;
    test::wrap_params record = {};
    record.size = sizeof record;
    record.wrapType = QVRUncompressed_WrapStitched;
    record.dataSize = k_chunk;
    test::encoder with;
    const test::stream_params how = {sizeof how, 0, 0};
    const bytes chunk(k_chunk, 7);
    const test::outcome made = test::wrap(with, up, how, {record, record}, {chunk, chunk}, nullptr);
    test::expect_success(made);
    return made.frame();
}

pipeline::pipeline(const std::string& description) {
    GError* error = nullptr;
    top = gst_parse_launch(description.c_str(), &error);
    if (top == nullptr || error != nullptr) {
        const std::string reason = error != nullptr ? error->message : "";
        g_clear_error(&error);
        g_clear_object(&top);  // as far as it was made
        throw std::logic_error(description + ": " + reason);
    }
    bus = gst_element_get_bus(top);
}

pipeline::~pipeline() {
    gst_element_set_state(top, GST_STATE_NULL);
    gst_object_unref(bus);
    gst_object_unref(top);
}

ending pipeline::run() {
    constexpr auto k_wanted = static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_SEGMENT_DONE |
                                                          GST_MESSAGE_ERROR | GST_MESSAGE_WARNING);
    gst_element_set_state(top, GST_STATE_PLAYING);
    ending result;
    while (!result.eos && !result.segment_done && result.error.empty()) {
        GstMessage* const message = gst_bus_timed_pop_filtered(bus, k_patience, k_wanted);
        if (message == nullptr) {
            ADD_FAILURE() << "the pipeline neither ended nor failed";
            return result;
        }
        if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_EOS) {
            result.eos = true;
        } else if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_SEGMENT_DONE) {
            result.segment_done = true;
        } else {
            note(message, result);
        }
        gst_message_unref(message);
    }
    return result;
}

bool pipeline::pause() {
    gst_element_set_state(top, GST_STATE_PAUSED);
    return gst_element_get_state(top, nullptr, nullptr, k_patience) == GST_STATE_CHANGE_SUCCESS;
}

bool pipeline::seek(GstFormat format, gint64 to, GstSeekFlags flags) {
    return gst_element_seek_simple(top, format, static_cast<GstSeekFlags>(flags | GST_SEEK_FLAG_FLUSH), to) != FALSE &&
           gst_element_get_state(top, nullptr, nullptr, k_patience) == GST_STATE_CHANGE_SUCCESS;
}

bool pipeline::seek(gdouble speed, GstFormat format, gint64 start, gint64 stop, GstSeekFlags flags) {
    const GstSeekType stop_type = stop < 0 ? GST_SEEK_TYPE_NONE : GST_SEEK_TYPE_SET;
    return gst_element_seek(top, speed, format, static_cast<GstSeekFlags>(flags | GST_SEEK_FLAG_FLUSH),
                            GST_SEEK_TYPE_SET, start, stop_type, stop) != FALSE &&
           gst_element_get_state(top, nullptr, nullptr, k_patience) == GST_STATE_CHANGE_SUCCESS;
}

gint64 pipeline::duration(GstFormat format) const {
    gint64 result = -1;
    gst_element_query_duration(top, format, &result);
    return result;
}

std::vector<frame> pipeline::take(const char* sink) {
    GstElement* const from = element(sink);
    std::vector<frame> result;
    while (GstSample* sample = gst_app_sink_try_pull_sample(GST_APP_SINK(from), 0)) {
        result.push_back(frame_of(sample));
    }
    gst_object_unref(from);
    return result;
}

frame pipeline::shown(const char* sink) {
    GstElement* const from = element(sink);
    GstSample* const sample = gst_app_sink_try_pull_preroll(GST_APP_SINK(from), k_patience);
    gst_object_unref(from);
    return sample != nullptr ? frame_of(sample) : frame{};
}

GstElement* pipeline::element(const char* name) const {
    GstElement* const found = gst_bin_get_by_name(GST_BIN(top), name);
    if (found == nullptr) {
        throw std::logic_error(std::string("no element ") + name);
    }
    return found;
}

temporary_file::temporary_file() {
    std::string pattern = testing::TempDir() + "qvr-gstreamer-XXXXXX";
    const int descriptor = mkstemp(pattern.data());
    if (descriptor < 0) {
        throw std::runtime_error("no temporary file in " + testing::TempDir());
    }
    close(descriptor);
    path_ = pattern;
}

temporary_file::temporary_file(const bytes& content) : temporary_file() {
    std::ofstream file(path_, std::ios::binary);
    file.write(reinterpret_cast<const char*>(content.data()), static_cast<std::streamsize>(content.size()));
}

temporary_file::~temporary_file() {
    unlink(path_.c_str());
}

bytes temporary_file::read() const {
    std::ifstream file(path_, std::ios::binary);
    return bytes(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

}  // namespace media
