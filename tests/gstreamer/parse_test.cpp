// SPDX-License-Identifier: BSD-3-Clause
//
// The parser: frames out of any pieces, their caps and times, and what stands between them.
#include <gst/check/gstharness.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "media.h"

using media::bytes;
using test::operator+;

namespace {

// A grey frame that holds one value.
bytes grey(std::uint8_t value, std::uint32_t width = 8, std::uint32_t height = 4) {
    return media::encoded(media::format_named("GRAY8"), width, height, test::repeat(value, width * height));
}

struct parsed {
    std::vector<bytes> frames;
    std::vector<GstClockTime> times;
    std::vector<std::string> caps;  // at each frame
    std::vector<std::string> warnings;
    std::vector<std::string> errors;
};

std::string text_of(GstCaps* caps) {
    gchar* const text = gst_caps_to_string(caps);
    std::string result = text;
    g_free(text);
    gst_caps_unref(caps);
    return result;
}

void take_messages(GstBus* bus, parsed& into) {
    constexpr auto k_wanted = static_cast<GstMessageType>(GST_MESSAGE_ERROR | GST_MESSAGE_WARNING);
    while (GstMessage* const message = gst_bus_pop_filtered(bus, k_wanted)) {
        GError* error = nullptr;
        const bool is_error = GST_MESSAGE_TYPE(message) == GST_MESSAGE_ERROR;
        (is_error ? gst_message_parse_error : gst_message_parse_warning)(message, &error, nullptr);
        (is_error ? into.errors : into.warnings).emplace_back(error->message);
        g_error_free(error);
        gst_message_unref(message);
    }
}

parsed parse(const bytes& stream, std::size_t piece = 1000, const std::string& options = "", bool to_the_end = true,
             const std::string& more_caps = "") {
    GstHarness* const harness = gst_harness_new_parse(("qvrparse" + options).c_str());
    GstElement* const parser = gst_harness_find_element(harness, "qvrparse");
    GstBus* const bus = gst_bus_new();
    gst_element_set_bus(parser, bus);
    gst_harness_set_src_caps_str(harness, ("video/x-qvr-uncompressed" + more_caps).c_str());
    GstSegment segment;
    gst_segment_init(&segment, GST_FORMAT_BYTES);
    gst_harness_push_event(harness, gst_event_new_segment(&segment));
    for (std::size_t at = 0; at < stream.size(); at += piece) {
        const auto begin = stream.begin() + static_cast<std::ptrdiff_t>(at);
        const auto size = static_cast<std::ptrdiff_t>(std::min(piece, stream.size() - at));
        gst_harness_push(harness, media::buffer_of(bytes(begin, begin + size)));
    }
    if (to_the_end) {
        gst_harness_push_event(harness, gst_event_new_eos());
    }
    parsed result;
    while (GstEvent* const event = gst_harness_try_pull_event(harness)) {
        if (GST_EVENT_TYPE(event) == GST_EVENT_CAPS) {
            GstCaps* caps = nullptr;
            gst_event_parse_caps(event, &caps);
            result.caps.push_back(text_of(gst_caps_ref(caps)));
        }
        gst_event_unref(event);
    }
    while (GstBuffer* const buffer = gst_harness_try_pull(harness)) {
        result.frames.push_back(media::bytes_of(buffer));
        result.times.push_back(GST_BUFFER_PTS(buffer));
        gst_buffer_unref(buffer);
    }
    take_messages(bus, result);
    gst_element_set_bus(parser, nullptr);
    gst_object_unref(bus);
    gst_object_unref(parser);
    gst_harness_teardown(harness);
    return result;
}

using frame_list = std::vector<bytes>;

// The first bytes of a frame as large as can be, of one plane.
bytes header_of(std::uint32_t size, std::uint32_t width, std::uint32_t height) {
    bytes header = grey(1);
    header.resize(36);
    std::copy_n(test::le32(size).begin(), 4, header.begin());
    std::copy_n((test::le32(width) + test::le32(height)).begin(), 8, header.begin() + 16);
    return header;
}

}  // namespace

TEST(parse, frames_come_out_of_pieces_of_any_size) {
    const frame_list frames = {grey(1), grey(2, 9, 3), grey(3), grey(4, 300, 200), grey(5)};
    bytes stream;
    for (const bytes& each : frames) {
        stream = stream + each;
    }
    for (const std::size_t piece : {1u, 7u, 36u, 69u, 1000u, 100000u}) {
        const parsed result = parse(stream, piece);
        EXPECT_EQ(result.frames, frames) << piece;
        EXPECT_EQ(result.times, (std::vector<GstClockTime>{0, 40000000, 80000000, 120000000, 160000000})) << piece;
        EXPECT_TRUE(result.warnings.empty());
    }
}

TEST(parse, times_do_not_drift) {
    bytes stream;
    for (int i = 0; i < 100; ++i) {
        stream = stream + grey(static_cast<std::uint8_t>(i));
    }
    const parsed result = parse(stream, 1000, " framerate=30000/1001");
    ASSERT_EQ(result.times.size(), 100u);
    EXPECT_EQ(result.times[1], 33366666u);
    EXPECT_EQ(result.times[3], 100100000u);  // three frames are 100.1 ms to the nanosecond
    EXPECT_EQ(result.times[99], 3303300000u);
}

TEST(parse, caps_say_what_the_frames_are) {
    bytes interlaced = grey(2, 6, 5);
    interlaced.at(interlaced.size() - 30 - 8 - 1) = 1;  // the last byte of 'sinf'
    const parsed result = parse(grey(1) + interlaced + interlaced);
    ASSERT_EQ(result.frames.size(), 3u);
    ASSERT_EQ(result.caps.size(), 2u);
    EXPECT_EQ(result.caps[0],
              "video/x-qvr-uncompressed, parsed=(boolean)true, width=(int)8, height=(int)4, "
              "framerate=(fraction)25/1, interlace-mode=(string)progressive");
    EXPECT_EQ(result.caps[1],
              "video/x-qvr-uncompressed, parsed=(boolean)true, width=(int)6, height=(int)5, "
              "framerate=(fraction)25/1, interlace-mode=(string)interleaved");
}

TEST(parse, the_rate_is_the_propertys_else_upstreams_else_25) {
    const auto rate = [](const std::string& options, const std::string& caps) {
        const parsed result = parse(grey(1), 1000, options, true, caps);
        const std::string text = result.caps.at(0);
        const std::size_t at = text.find("(fraction)") + 10;
        return text.substr(at, text.find(',', at) - at);
    };
    EXPECT_EQ(rate("", ""), "25/1");
    EXPECT_EQ(rate("", ",framerate=30/1"), "30/1");
    EXPECT_EQ(rate("", ",framerate=0/1"), "0/1");  // a variable rate is one, too
    EXPECT_EQ(rate(" framerate=50/1", ",framerate=30/1"), "50/1");
    EXPECT_EQ(rate(" framerate=50/1", ",framerate=0/1"), "50/1");
    const parsed variable = parse(grey(1) + grey(2), 1000, "", true, ",framerate=0/1");
    EXPECT_EQ(variable.frames, (frame_list{grey(1), grey(2)}));
}

TEST(parse, what_stands_between_frames_is_skipped) {
    const bytes junk = test::from_hex("0102 'pack' 0000") + test::repeat(7, 50);
    for (const std::size_t piece : {1u, 10u, 1000u}) {
        const parsed result = parse(junk + grey(1) + junk + grey(2) + grey(3) + junk, piece);
        EXPECT_EQ(result.frames, (frame_list{grey(1), grey(2), grey(3)})) << piece;
        EXPECT_FALSE(result.warnings.empty());
    }
}

TEST(parse, a_frame_that_is_cut_short_is_left_out) {
    for (const std::size_t left : {1u, 8u, 35u, 36u, 60u}) {
        const bytes last = grey(3);
        const parsed result =
            parse(grey(1) + grey(2) + bytes(last.begin(), last.begin() + static_cast<std::ptrdiff_t>(left)));
        EXPECT_EQ(result.frames, (frame_list{grey(1), grey(2)})) << left;
    }
    bytes alone = grey(1);
    alone.pop_back();
    EXPECT_EQ(parse(alone).warnings, (std::vector<std::string>{"An incomplete frame was left out."}));
}

TEST(parse, a_damaged_size_costs_that_frame_alone) {
    const bytes header = grey(2);
    for (const std::uint32_t size : {0u, 8u, 40u, 68u, 70u, 0x00100000u, 0x7fffffffu, 0xffffffffu}) {
        bytes damaged = header;
        std::copy_n(test::le32(size).begin(), 4, damaged.begin());
        const parsed result = parse(grey(1) + damaged + grey(3) + grey(4));
        ASSERT_GE(result.frames.size(), 2u) << size;
        EXPECT_EQ(result.frames.front(), grey(1)) << size;
        EXPECT_EQ(result.frames.back(), grey(4)) << size;
        EXPECT_FALSE(result.warnings.empty()) << size;
    }
}

TEST(parse, a_damaged_size_holds_nobody_up) {
    bytes damaged = grey(2);
    std::copy_n(test::le32(0x7fffffff).begin(), 4, damaged.begin());
    const parsed result = parse(grey(1) + damaged + grey(3) + grey(4), 1000, "", false);
    EXPECT_EQ(result.frames, (frame_list{grey(1), grey(3), grey(4)}));
}

TEST(parse, a_damaged_frame_leaves_its_place_in_time) {
    bytes damaged = grey(2);
    damaged.at(damaged.size() - 32 - 4) = 'x';  // the type of 'sdat'
    const parsed result = parse(grey(1) + damaged + grey(3));
    EXPECT_EQ(result.frames, (frame_list{grey(1), grey(3)}));
    EXPECT_EQ(result.times, (std::vector<GstClockTime>{0, 80000000}));
    EXPECT_EQ(result.warnings, (std::vector<std::string>{"A damaged frame was left out."}));
    const parsed at_first = parse(damaged + grey(3));
    EXPECT_EQ(at_first.frames, (frame_list{grey(3)}));
    EXPECT_EQ(at_first.times, (std::vector<GstClockTime>{40000000}));
}

TEST(parse, a_frame_that_was_skipped_leaves_its_place_in_time_too) {
    bytes damaged = grey(2);
    damaged.at(4) = 'q';
    EXPECT_EQ(parse(grey(1) + damaged + grey(3) + grey(4)).times, (std::vector<GstClockTime>{0, 80000000, 120000000}));
    EXPECT_EQ(parse(damaged + grey(3)).times, (std::vector<GstClockTime>{40000000}));
    // Frames of several sizes do not tell how many were skipped: the next one follows the last.
    EXPECT_EQ(parse(grey(1) + grey(1, 9, 3) + damaged + grey(3) + grey(4)).times,
              (std::vector<GstClockTime>{0, 40000000, 80000000, 120000000}));
}

// The rest of the file is looked through once, not once for each place where a frame might begin.
TEST(parse, many_frames_that_are_cut_short_are_one_warning) {
    bytes rest;
    for (int i = 0; i < 5000; ++i) {
        rest = rest + header_of(0x7ffffff0, 32768, 16383);
    }
    const parsed result = parse(grey(1) + rest, 10000);
    EXPECT_EQ(result.frames, (frame_list{grey(1)}));
    EXPECT_EQ(result.warnings, (std::vector<std::string>{"An incomplete frame was left out."}));
    EXPECT_EQ(parse(grey(1) + rest + grey(2), 10000).frames, (frame_list{grey(1), grey(2)}));
    const media::temporary_file file(grey(1) + rest + grey(2));
    for (const char* between : {"", " ! queue"}) {
        media::pipeline pipeline("filesrc location=" + file.path() + between + " ! qvrparse ! fakesink");
        const media::ending end = pipeline.run();
        EXPECT_TRUE(end.eos) << end.error;
        EXPECT_EQ(end.warnings.size(), 1u);
    }
}

TEST(parse, nobody_waits_for_a_frame_that_would_be_refused) {
    const frame_list expected = {grey(1), grey(2)};
    for (const std::uint32_t side : {32768u, 32769u, 0xffffffffu}) {
        const bytes stream = grey(1) + header_of(0x7ffffff0, side, 32768) + grey(2);
        EXPECT_EQ(parse(stream, 1000, "", false).frames, expected) << side;
    }
    // The largest of all is waited for.
    const bytes stream = grey(1) + header_of(0x7ffffff0, 32768, 16383) + grey(2);
    EXPECT_EQ(parse(stream, 1000, "", false).frames, (frame_list{grey(1)}));
}

// Such a size is no damage here: 20000 x 20000 RGBA samples of 16 bits take 3.2 GB.
TEST(parse, a_frame_of_2_gib_or_more_is_an_error) {
    bytes header = grey(1);
    std::copy_n(test::le32(0x80000000u).begin(), 4, header.begin());
    std::copy_n((test::le32(20000) + test::le32(20000)).begin(), 8, header.begin() + 16);
    const parsed result = parse(header, 1000, "", false);
    EXPECT_EQ(result.errors,
              (std::vector<std::string>{"A frame is larger than GStreamer's parsers take: 2 GiB or more."}));
    std::copy_n(test::le32(0x7fffffffu).begin(), 4, header.begin());
    EXPECT_TRUE(parse(header, 1000, "", false).errors.empty());
}

TEST(parse, wrapped_chunks_of_any_dimensions_go_on) {
    const bytes stream = media::wrapped_chunks(0, 7);
    const parsed result = parse(grey(1) + stream + grey(2));
    EXPECT_EQ(result.frames, (frame_list{grey(1), stream, grey(2)}));
    EXPECT_TRUE(result.warnings.empty());
    ASSERT_EQ(result.caps.size(), 3u);
    EXPECT_NE(result.caps[1].find("width=(int)1, height=(int)7"), std::string::npos) << result.caps[1];
}
