// SPDX-License-Identifier: BSD-3-Clause
//
// Which sample of a frame is stored where, and what a stream can be taken out as.
#include <gst/check/gstharness.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "media.h"

using media::bytes;
using test::from_hex;
using test::to_hex;

namespace {

constexpr const char* k_coded_caps =
    "video/x-qvr-uncompressed,parsed=true,width=2,height=1,framerate=25/1,interlace-mode=progressive";

bytes encode(const std::string& format, const std::string& caps, GstBuffer* raw) {
    GstHarness* const encoder = gst_harness_new_parse(
        ("qvrenc threads=1 packed-444=" + std::string(media::format_named(format).packed_444)).c_str());
    gst_harness_set_src_caps_str(encoder, caps.c_str());
    GstBuffer* const coded = gst_harness_push_and_pull(encoder, raw);
    const bytes result = media::bytes_of(coded);
    gst_buffer_unref(coded);
    gst_harness_teardown(encoder);
    return result;
}

// The content of the 'sdat' box behind the 'sinf' of that plane type; "none" when there is no such plane.
std::string stored(const bytes& stream, const std::string& type) {
    const std::string text(stream.begin(), stream.end());
    const std::size_t found = text.find(type);
    if (found == std::string::npos) {
        return "none";
    }
    const std::size_t box = found + 5;  // behind the type and the frame layout
    const auto size = static_cast<std::size_t>(stream.at(box) | stream.at(box + 1) << 8);
    return to_hex(bytes(stream.begin() + static_cast<std::ptrdiff_t>(box + 8),
                        stream.begin() + static_cast<std::ptrdiff_t>(box + size)));
}

struct literal_case {
    const char* format;
    std::uint32_t width;
    std::uint32_t height;
    const char* raw;
    const char* plane;
    const char* expected;
    const char* alpha = "none";
};

const literal_case k_literal_cases[] = {
    {"UYVY", 2, 1, "11 22 33 44", "y208", "11 22 33 44"},
    {"YUY2", 2, 1, "22 11 44 33", "y208", "11 22 33 44"},
    {"v216", 2, 1, "12 11 22 21 32 31 42 41", "y216", "12 11 22 21 32 31 42 41"},
    {"Y210", 2, 1, "40 22 80 11 c0 44 00 33", "y210", "11 22 33 44 c6"},
    {"v210", 2, 1, "46 24 c2 0c 13 01 00 00 00 00 00 00 00 00 00 00", "y210", "11 22 33 44 c6"},
    {"Y212_LE", 2, 1, "40 22 80 11 c0 44 00 33", "y212", "11 22 33 44 48 c0"},
    {"ARGB", 2, 1, "a1 11 21 31 a2 12 22 32", "rg08", "11 21 31 12 22 32", "a1 a2"},
    {"BGRA", 2, 1, "31 21 11 a1 32 22 12 a2", "rg08", "11 21 31 12 22 32", "a1 a2"},
    {"RGBA", 2, 1, "11 21 31 a1 12 22 32 a2", "rg08", "11 21 31 12 22 32", "a1 a2"},
    {"ABGR", 2, 1, "a1 31 21 11 a2 32 22 12", "rg08", "11 21 31 12 22 32", "a1 a2"},
    {"ARGB64", 1, 1, "a2 a1 12 11 22 21 32 31", "rg16", "12 11 22 21 32 31", "a2 a1"},
    {"ARGB64_LE", 1, 1, "a2 a1 12 11 22 21 32 31", "rg16", "12 11 22 21 32 31", "a2 a1"},
    {"BGRA64_LE", 1, 1, "32 31 22 21 12 11 a2 a1", "rg16", "12 11 22 21 32 31", "a2 a1"},
    {"RGBA64_LE", 1, 1, "12 11 22 21 32 31 a2 a1", "rg16", "12 11 22 21 32 31", "a2 a1"},
    {"ABGR64_LE", 1, 1, "a2 a1 32 31 22 21 12 11", "rg16", "12 11 22 21 32 31", "a2 a1"},
    {"RGB", 2, 1, "11 21 31 12 22 32", "rg08", "11 21 31 12 22 32"},
    {"BGR", 2, 1, "31 21 11 32 22 12", "rg08", "11 21 31 12 22 32"},
    {"I420", 2, 2, "01 02 03 04 05 06", " y08", "01 02 03 04"},
    {"I420", 2, 2, "01 02 03 04 05 06", "cb08", "05"},
    {"I420", 2, 2, "01 02 03 04 05 06", "cr08", "06"},
    {"A420", 2, 2, "01 02 03 04 05 06 07 08 09 0a", "cr08", "06", "07 08 09 0a"},
    {"GRAY8", 2, 1, "01 02", " a08", "01 02", "01 02"},
    {"GRAY16_LE", 2, 1, "02 01 04 03", " a16", "02 01 04 03", "02 01 04 03"},
    {"IYU2", 2, 1, "01 02 03 04 05 06", "y408", "01 02 03 04 05 06"},
    {"v308", 2, 1, "01 02 03 04 05 06", "y408", "01 02 03 04 05 06"},
};

}  // namespace

TEST(layout, samples_are_stored_as_the_bitstream_has_them) {
    for (const literal_case& each : k_literal_cases) {
        SCOPED_TRACE(std::string(each.format) + each.plane);
        const std::string caps = media::caps_text(media::format_named(each.format), each.width, each.height);
        const bytes stream = encode(each.format, caps, media::buffer_of_pixels(from_hex(each.raw), caps));
        EXPECT_EQ(stored(stream, each.plane), test::canonical(each.expected));
        const std::string alpha = stored(stream, media::format_named(each.format).type == 2 ? " a16" : " a08");
        EXPECT_EQ(alpha, std::string(each.alpha) == "none" ? "none" : test::canonical(each.alpha));
    }
}

// What GStreamer itself puts into each format: a colour whose components all differ. Its planar 4:2:0 says what luma
// and chroma are, the bytes of the colour what R, G, B and A are.
TEST(layout, gstreamer_means_the_same_by_its_formats) {
    const auto stream_of = [](const media::raw_format& format) {
        const media::temporary_file file;
        media::pipeline pipeline("videotestsrc num-buffers=1 pattern=solid-color foreground-color=0x401080f0 ! " +
                                 media::caps_text(format, 2, 2) + " ! qvrenc threads=1 packed-444=" +
                                 format.packed_444 + " ! filesink location=" + file.path());
        EXPECT_TRUE(pipeline.run().eos);
        return file.read();
    };
    const bytes planar = stream_of(media::format_named("I420"));
    const std::string y = stored(planar, " y08").substr(0, 2);
    const std::string cb = stored(planar, "cb08");
    const std::string cr = stored(planar, "cr08");
    ASSERT_NE(y, cb);
    ASSERT_NE(cb, cr);
    for (const media::raw_format& format : media::formats()) {
        SCOPED_TRACE(format.name);
        const bytes stream = stream_of(format);
        const auto start = [&](const std::string& type, std::size_t count) {
            return stored(stream, type).substr(0, 2 * count + (count - 1) / 4);
        };
        if (format.order <= 2 && format.type != 2) {
            const std::string type = format.type == 1 ? "y208" : format.type == 4 ? "y212" : "y210";
            EXPECT_EQ(start(type, 4), cb + y + cr + y);
        } else if (format.order == 2) {  // high bytes
            const bytes row = from_hex(stored(stream, "y216"));
            EXPECT_EQ(to_hex({row.at(1), row.at(3), row.at(5), row.at(7)}), cb + y + cr + y);
        } else if (format.order == 9) {
            EXPECT_EQ(start("y408", 3), format.packed_444 == std::string("uyv") ? cb + y + cr : y + cb + cr);
        } else if (format.order <= 8 && format.type == 1) {
            EXPECT_EQ(start("rg08", 3), "1080f0");
            EXPECT_EQ(start(" a08", 1), format.alpha ? "40" : "no");
        } else if (format.order <= 8) {
            EXPECT_EQ(start("rg16", 6), "10108080 f0f0");
            EXPECT_EQ(start(" a16", 2), "4040");
        }
    }
}

TEST(layout, a_stream_comes_out_as_whatever_the_library_decodes_it_to) {
    for (const media::raw_format& from : media::formats()) {
        const std::string caps = media::caps_text(from, 4, 2);
        GstBuffer* const raw = media::random_buffer(from, caps, from.order * 1000 + from.type);
        const bytes stream = media::encoded(from, 4, 2, media::pixels_of(raw, caps));
        gst_buffer_unref(raw);
        for (const media::raw_format& to : media::formats()) {
            SCOPED_TRACE(std::string(from.name) + " to " + to.name);
            const test::outcome expected = test::decode(media::params_of(to, 4, 2), stream);
            GstHarness* const decoder =
                gst_harness_new_parse(("qvrdec threads=1 packed-444=" + std::string(to.packed_444)).c_str());
            gst_harness_set_src_caps_str(decoder, k_coded_caps);
            gst_harness_set_sink_caps_str(decoder, ("video/x-raw,format=" + std::string(to.name)).c_str());
            const GstFlowReturn flow = gst_harness_push(decoder, media::buffer_of(stream));
            EXPECT_EQ(flow == GST_FLOW_OK, expected.status == 0) << gst_flow_get_name(flow);
            if (GstBuffer* const back = gst_harness_try_pull(decoder)) {
                EXPECT_EQ(to_hex(media::pixels_of(back, media::caps_text(to, 4, 2))), to_hex(expected.frame()));
                gst_buffer_unref(back);
            } else {
                EXPECT_NE(expected.status, 0u);
            }
            gst_harness_teardown(decoder);
        }
    }
}

TEST(layout, the_streams_own_format_comes_first) {
    const std::vector<std::pair<const char*, const char*>> k_expected = {
        {"UYVY", "UYVY"},       {"YUY2", "UYVY"},           {"v210", "v210"},
        {"Y212_LE", "Y212_LE"}, {"v216", "v216"},           {"ARGB", "ARGB"},
        {"BGRA", "ARGB"},       {"ABGR64_LE", "ARGB64_LE"}, {"RGB", "RGB"},
        {"BGR", "RGB"},         {"I420", "I420"},           {"A420", "A420"},
        {"GRAY8", "GRAY8"},     {"GRAY16_LE", "GRAY16_LE"}, {"IYU2", "IYU2"},
    };
    for (const auto& [from, to] : k_expected) {
        const media::raw_format& format = media::format_named(from);
        const std::string caps = media::caps_text(format, 4, 2);
        GstBuffer* const raw = media::random_buffer(format, caps, 1);
        const bytes stream = media::encoded(format, 4, 2, media::pixels_of(raw, caps));
        gst_buffer_unref(raw);
        GstHarness* const decoder =
            gst_harness_new_parse(("qvrdec packed-444=" + std::string(format.packed_444)).c_str());
        gst_harness_set_src_caps_str(decoder, k_coded_caps);
        GstBuffer* const back = gst_harness_push_and_pull(decoder, media::buffer_of(stream));
        GstCaps* const chosen = gst_pad_get_current_caps(decoder->sinkpad);
        EXPECT_STREQ(gst_structure_get_string(gst_caps_get_structure(chosen, 0), "format"), to) << from;
        gst_caps_unref(chosen);
        gst_buffer_unref(back);
        gst_harness_teardown(decoder);
    }
}
