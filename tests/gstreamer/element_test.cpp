// SPDX-License-Identifier: BSD-3-Clause
//
// The elements in the situations that a pipeline brings about.
#include <gst/check/gstharness.h>
#include <gst/video/video.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "guarded_buffer.h"
#include "media.h"

using media::bytes;
using test::operator+;

namespace {

constexpr const char* k_coded_caps =
    "video/x-qvr-uncompressed,parsed=true,width=4,height=2,framerate=25/1,interlace-mode=progressive";

std::string current_format(GstPad* pad) {
    GstCaps* const caps = gst_pad_get_current_caps(pad);
    gchar* const text = gst_caps_to_string(caps);
    std::string result = text;
    g_free(text);
    gst_caps_unref(caps);
    return result;
}

bool has(const std::string& text, const char* part) {
    return text.find(part) != std::string::npos;
}

// Encoder and decoder, one behind the other.
class both {
  public:
    explicit both(const char* encoder = "qvrenc threads=1") : both(encoder, "qvrdec threads=1") {}
    both(const char* encoder, const char* decoder)
        : harness(gst_harness_new_parse((std::string(encoder) + " ! " + decoder).c_str())) {}
    ~both() { gst_harness_teardown(harness); }
    both(const both&) = delete;
    both& operator=(const both&) = delete;

    GstHarness* const harness;
};

}  // namespace

TEST(element, dimensions_that_cannot_be_stored_are_refused) {
    const auto takes = [](const char* caps) {
        GstHarness* const encoder = gst_harness_new("qvrenc");
        GstCaps* const wanted = gst_caps_from_string(caps);
        const bool result = gst_pad_query_accept_caps(GST_PAD_PEER(encoder->srcpad), wanted) != FALSE;
        gst_caps_unref(wanted);
        gst_harness_teardown(encoder);
        return result;
    };
    EXPECT_TRUE(takes("video/x-raw,format=UYVY,width=4,height=3,framerate=25/1"));
    EXPECT_FALSE(takes("video/x-raw,format=UYVY,width=3,height=4,framerate=25/1"));
    EXPECT_FALSE(takes("video/x-raw,format=I420,width=4,height=3,framerate=25/1"));
    EXPECT_TRUE(takes("video/x-raw,format=RGB,width=3,height=3,framerate=25/1"));
    EXPECT_FALSE(takes("video/x-raw,format=NV12,width=4,height=4,framerate=25/1"));
    EXPECT_FALSE(takes("video/x-raw,format=IYU2,width=4,height=4,framerate=25/1"));  // without packed-444
}

TEST(element, caps_change_in_mid_stream) {
    both elements;
    const struct {
        const char* format;
        std::uint32_t width, height;
    } k_parts[] = {{"UYVY", 4, 2}, {"ARGB", 7, 5}, {"GRAY8", 7, 5}, {"v210", 48, 1}, {"UYVY", 4, 2}};
    for (const auto& part : k_parts) {
        const media::raw_format& format = media::format_named(part.format);
        const std::string caps = media::caps_text(format, part.width, part.height);
        gst_harness_set_src_caps_str(elements.harness, caps.c_str());
        for (int i = 0; i < 2; ++i) {
            GstBuffer* const raw = media::random_buffer(format, caps, part.width);
            const bytes before = media::pixels_of(raw, caps);
            GstBuffer* const back = gst_harness_push_and_pull(elements.harness, raw);
            ASSERT_NE(back, nullptr) << part.format;
            EXPECT_EQ(media::pixels_of(back, current_format(elements.harness->sinkpad)), before) << part.format;
            gst_buffer_unref(back);
        }
        EXPECT_TRUE(has(current_format(elements.harness->sinkpad), part.format));
    }
}

TEST(element, a_flush_and_the_end_go_through) {
    both elements;
    const media::raw_format& format = media::format_named("RGB");
    const std::string caps = media::caps_text(format, 5, 3);
    gst_harness_set_src_caps_str(elements.harness, caps.c_str());
    gst_buffer_unref(gst_harness_push_and_pull(elements.harness, media::random_buffer(format, caps, 1)));
    EXPECT_TRUE(gst_harness_push_event(elements.harness, gst_event_new_flush_start()));
    EXPECT_TRUE(gst_harness_push_event(elements.harness, gst_event_new_flush_stop(TRUE)));
    GstSegment segment;
    gst_segment_init(&segment, GST_FORMAT_TIME);
    EXPECT_TRUE(gst_harness_push_event(elements.harness, gst_event_new_segment(&segment)));
    GstBuffer* const raw = media::random_buffer(format, caps, 2);
    const bytes before = media::pixels_of(raw, caps);
    GstBuffer* const back = gst_harness_push_and_pull(elements.harness, raw);
    EXPECT_EQ(media::pixels_of(back, caps), before);
    gst_buffer_unref(back);
    EXPECT_TRUE(gst_harness_push_event(elements.harness, gst_event_new_eos()));
    bool ended = false;
    while (GstEvent* const event = gst_harness_try_pull_event(elements.harness)) {
        ended = ended || GST_EVENT_TYPE(event) == GST_EVENT_EOS;
        gst_event_unref(event);
    }
    EXPECT_TRUE(ended);
}

TEST(element, a_tee_feeds_two_decoders) {
    media::pipeline pipeline(
        "videotestsrc num-buffers=5 pattern=snow ! video/x-raw,format=BGRA,width=31,height=9,framerate=25/1 ! tee "
        "name=r "
        "r. ! queue ! appsink name=raw sync=false wait-on-eos=false r. ! queue ! qvrenc alpha-rle=1 ! tee name=t "
        "t. ! queue ! qvrdec ! video/x-raw,format=BGRA ! appsink name=a sync=false wait-on-eos=false "
        "t. ! queue ! qvrdec ! video/x-raw,format=BGRA ! appsink name=b sync=false wait-on-eos=false");
    ASSERT_TRUE(pipeline.run().eos);
    const auto raw = pipeline.take("raw");
    const auto a = pipeline.take("a");
    const auto b = pipeline.take("b");
    ASSERT_EQ(raw.size(), 5u);
    ASSERT_EQ(a.size(), 5u);
    ASSERT_EQ(b.size(), 5u);
    for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(raw[i].pixels, a[i].pixels);
        EXPECT_EQ(raw[i].pixels, b[i].pixels);
    }
}

TEST(element, decodebin_finds_parser_and_decoder) {
    const media::raw_format& format = media::format_named("RGB");
    const std::string caps = media::caps_text(format, 6, 4);
    bytes stream;
    std::vector<bytes> pictures;
    for (std::uint64_t i = 0; i < 3; ++i) {
        GstBuffer* const raw = media::random_buffer(format, caps, i);
        pictures.push_back(media::pixels_of(raw, caps));
        stream = stream + media::encoded(format, 6, 4, pictures.back());
        gst_buffer_unref(raw);
    }
    const media::temporary_file file(stream);
    media::pipeline pipeline(
        "filesrc location=" + file.path() +
        " ! decodebin ! videoconvert ! video/x-raw,format=RGB ! appsink name=out sync=false wait-on-eos=false");
    const media::ending end = pipeline.run();
    EXPECT_TRUE(end.eos) << end.error;
    const auto frames = pipeline.take("out");
    ASSERT_EQ(frames.size(), 3u);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(frames[i].pixels, pictures[i]);
        EXPECT_EQ(frames[i].pts, i * 40 * GST_MSECOND);
    }
}

TEST(element, interlacing_is_stored_and_comes_back) {
    const media::raw_format& format = media::format_named("UYVY");
    const std::string caps = media::caps_text(format, 4, 2);
    const auto stored_layout = [](GstBuffer* coded) { return static_cast<int>(media::bytes_of(coded).at(8 + 20)); };
    for (const char* mode : {"progressive", "interleaved", "mixed"}) {
        GstHarness* const encoder = gst_harness_new("qvrenc");
        GstHarness* const decoder = gst_harness_new("qvrdec");
        gst_harness_set_src_caps_str(encoder, (caps + ",interlace-mode=" + mode).c_str());
        GstBuffer* const raw = media::random_buffer(format, caps, 1);
        if (mode == std::string("mixed")) {
            GST_BUFFER_FLAG_SET(raw, GST_VIDEO_BUFFER_FLAG_INTERLACED | GST_VIDEO_BUFFER_FLAG_TFF);
        }
        GstBuffer* const coded = gst_harness_push_and_pull(encoder, raw);
        EXPECT_EQ(stored_layout(coded), mode == std::string("progressive") ? 0 : 1) << mode;
        const std::string coded_caps = current_format(encoder->sinkpad);
        EXPECT_TRUE(has(coded_caps, mode)) << coded_caps;
        gst_harness_set_src_caps_str(decoder, coded_caps.c_str());
        GstBuffer* const back = gst_harness_push_and_pull(decoder, coded);
        EXPECT_TRUE(has(current_format(decoder->sinkpad), mode));
        EXPECT_EQ(GST_BUFFER_FLAG_IS_SET(back, GST_VIDEO_BUFFER_FLAG_TFF) != 0, mode == std::string("mixed"));
        gst_buffer_unref(back);
        gst_harness_teardown(decoder);
        gst_harness_teardown(encoder);
    }
}

// Planes of such a height do not follow each other without a gap, so that the frame is copied.
TEST(element, interlacing_of_copied_frames_is_stored_too) {
    for (const char* mode : {"interleaved", "mixed"}) {
        for (const bool interlaced : {true, false}) {
            const std::string caps =
                media::caps_text(media::format_named("I420"), 720, 486) + ",interlace-mode=" + mode;
            GstHarness* const encoder = gst_harness_new("qvrenc");
            gst_harness_set_src_caps_str(encoder, caps.c_str());
            GstBuffer* const raw = media::random_buffer(media::format_named("I420"), caps, 1);
            if (interlaced) {
                GST_BUFFER_FLAG_SET(raw, GST_VIDEO_BUFFER_FLAG_INTERLACED);
            }
            GstBuffer* const coded = gst_harness_push_and_pull(encoder, raw);
            ASSERT_NE(coded, nullptr);
            const bool stored = media::bytes_of(coded).at(16 + 20) == 1;
            EXPECT_EQ(stored, interlaced || mode == std::string("interleaved")) << mode;
            gst_buffer_unref(coded);
            gst_harness_teardown(encoder);
        }
    }
}

TEST(element, all_can_be_stopped_and_played_again) {
    const media::temporary_file file(media::encoded(media::format_named("GRAY8"), 8, 4, test::counting(32)) +
                                     media::encoded(media::format_named("GRAY8"), 8, 4, test::counting(32, 2)));
    const std::string sink = " ! appsink name=out sync=false wait-on-eos=false";
    for (const std::string& elements : {"filesrc location=" + file.path() + " ! qvrparse ! qvrdec",
                                        "filesrc location=" + file.path() + " ! queue ! qvrparse ! qvrdec",
                                        std::string("videotestsrc num-buffers=2 pattern=white ! "
                                                    "video/x-raw,format=GRAY8,width=8,height=4 ! qvrenc ! qvrdec")}) {
        SCOPED_TRACE(elements);
        media::pipeline pipeline(elements + sink);
        std::vector<bytes> first;
        for (int i = 0; i < 3; ++i) {
            EXPECT_TRUE(pipeline.run().eos);
            std::vector<bytes> pictures;
            for (const media::frame& each : pipeline.take("out")) {
                pictures.push_back(each.pixels);
            }
            pipeline.stop();
            ASSERT_EQ(pictures.size(), 2u) << i;
            first = i == 0 ? pictures : first;
            EXPECT_EQ(pictures, first);
        }
    }
}

// Planes with gaps between them, strides of their own each, and a last row that ends with its last pixel.
TEST(element, frames_whose_planes_lie_apart) {
    const media::raw_format& format = media::format_named("I420");
    const std::string caps = media::caps_text(format, 4, 2);
    const bytes pixels = test::counting(12, 1);
    both elements;
    gst_harness_set_src_caps_str(elements.harness, caps.c_str());
    gsize offsets[GST_VIDEO_MAX_PLANES] = {3, 40, 60};
    gint strides[GST_VIDEO_MAX_PLANES] = {7, 5, 9};
    bytes content(62, 0xee);
    for (std::size_t y = 0; y < 2; ++y) {
        std::memcpy(&content[3 + 7 * y], &pixels[4 * y], 4);
    }
    std::memcpy(&content[40], &pixels[8], 2);
    std::memcpy(&content[60], &pixels[10], 2);
    GstBuffer* const raw = media::buffer_of(content);
    gst_buffer_add_video_meta_full(raw, GST_VIDEO_FRAME_FLAG_NONE, GST_VIDEO_FORMAT_I420, 4, 2, 3, offsets, strides);
    GstBuffer* const back = gst_harness_push_and_pull(elements.harness, raw);
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(media::pixels_of(back, caps), pixels);
    gst_buffer_unref(back);
}

// Strides that the library knows are taken without a copy, whatever they are.
TEST(element, frames_with_wide_strides) {
    const media::raw_format& format = media::format_named("RGB");
    const std::string caps = media::caps_text(format, 2, 3);
    both elements;
    gst_harness_set_src_caps_str(elements.harness, caps.c_str());
    const bytes pixels = test::counting(18, 1);
    bytes content(48, 0xee);
    for (std::size_t y = 0; y < 3; ++y) {
        std::memcpy(&content[16 * y], &pixels[6 * y], 6);
    }
    gsize offsets[GST_VIDEO_MAX_PLANES] = {0};
    gint strides[GST_VIDEO_MAX_PLANES] = {16};
    GstBuffer* const raw = media::buffer_of(content);
    gst_buffer_add_video_meta_full(raw, GST_VIDEO_FRAME_FLAG_NONE, GST_VIDEO_FORMAT_RGB, 2, 3, 1, offsets, strides);
    GstBuffer* const back = gst_harness_push_and_pull(elements.harness, raw);
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(media::pixels_of(back, caps), pixels);
    gst_buffer_unref(back);
}

// The last row ends with its last pixel, and behind it is memory that must not be touched.
TEST(element, frames_whose_last_row_is_short) {
    const std::string caps = media::caps_text(media::format_named("RGB"), 2, 3);
    both elements;
    gst_harness_set_src_caps_str(elements.harness, caps.c_str());
    const bytes pixels = test::counting(18, 1);
    test::guarded_buffer content(16 * 2 + 6);
    for (std::size_t y = 0; y < 3; ++y) {
        std::memcpy(content.data() + 16 * y, &pixels[6 * y], 6);
    }
    gsize offsets[GST_VIDEO_MAX_PLANES] = {0};
    gint strides[GST_VIDEO_MAX_PLANES] = {16};
    GstBuffer* const raw = gst_buffer_new_wrapped_full(GST_MEMORY_FLAG_READONLY, content.data(), content.size(), 0,
                                                       content.size(), nullptr, nullptr);
    gst_buffer_add_video_meta_full(raw, GST_VIDEO_FRAME_FLAG_NONE, GST_VIDEO_FORMAT_RGB, 2, 3, 1, offsets, strides);
    GstBuffer* const back = gst_harness_push_and_pull(elements.harness, raw);
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(media::pixels_of(back, caps), pixels);
    gst_buffer_unref(back);
}

// No encoder of ours makes such a stream; others may.
TEST(element, planes_of_odd_dimensions_are_decoded) {
    const bytes stream = test::from_hex(
        "88000000 'pack'"
        "2e000000 'icmp' 15000000 'sinf' 03000000 03000000 ' y08' 00 11000000 'sdat' 010203040506070809"
        "29000000 'icmp' 15000000 'sinf' 02000000 02000000 'cb08' 00 0c000000 'sdat' 11121314"
        "29000000 'icmp' 15000000 'sinf' 02000000 02000000 'cr08' 00 0c000000 'sdat' 21222324");
    GstHarness* const decoder = gst_harness_new("qvrdec");
    gst_harness_set_src_caps_str(decoder, k_coded_caps);
    GstBuffer* const back = gst_harness_push_and_pull(decoder, media::buffer_of(stream));
    ASSERT_NE(back, nullptr);
    const std::string caps = current_format(decoder->sinkpad);
    EXPECT_TRUE(has(caps, "width=(int)3, height=(int)3"));
    EXPECT_EQ(test::to_hex(media::pixels_of(back, caps)), "01020304 05060708 09111213 14212223 24");
    gst_buffer_unref(back);
    gst_harness_teardown(decoder);
}

TEST(element, buffers_come_from_pools_and_are_cut_to_size) {
    const media::raw_format& format = media::format_named("RGBA");
    const std::string caps = media::caps_text(format, 64, 64);
    GstHarness* const encoder = gst_harness_new_parse("qvrenc alpha-rle=true");
    GstHarness* const decoder = gst_harness_new("qvrdec");
    gst_harness_set_src_caps_str(encoder, caps.c_str());
    gst_harness_set_src_caps_str(decoder, k_coded_caps);
    const bytes pixels = test::repeat(9, 64 * 64 * 4);
    const bytes expected = media::encoded(format, 64, 64, pixels, true);
    for (int i = 0; i < 3; ++i) {
        GstBuffer* const coded = gst_harness_push_and_pull(encoder, media::buffer_of_pixels(pixels, caps));
        EXPECT_NE(coded->pool, nullptr);
        EXPECT_EQ(media::bytes_of(coded), expected);
        GstBuffer* const back = gst_harness_push_and_pull(decoder, coded);
        EXPECT_NE(back->pool, nullptr);
        gst_buffer_unref(back);
    }
    gst_harness_set(encoder, "qvrenc", "alpha-rle", FALSE, nullptr);
    GstBuffer* const raw_alpha = gst_harness_push_and_pull(encoder, media::buffer_of_pixels(pixels, caps));
    EXPECT_EQ(media::bytes_of(raw_alpha), media::encoded(format, 64, 64, pixels));
    gst_buffer_unref(raw_alpha);
    gst_harness_teardown(decoder);
    gst_harness_teardown(encoder);
}

TEST(element, threads_change_no_byte) {
    const media::raw_format& format = media::format_named("A420");
    const std::string caps = media::caps_text(format, 128, 96);
    std::vector<bytes> results;
    for (const char* threads : {"1", "4"}) {
        GstHarness* const encoder =
            gst_harness_new_parse((std::string("qvrenc alpha-rle=1 rle-slices=7 threads=") + threads).c_str());
        gst_harness_set_src_caps_str(encoder, caps.c_str());
        GstBuffer* const coded = gst_harness_push_and_pull(encoder, media::random_buffer(format, caps, 3));
        results.push_back(media::bytes_of(coded));
        gst_buffer_unref(coded);
        gst_harness_teardown(encoder);
    }
    EXPECT_EQ(results[0], results[1]);
}

TEST(element, colour_and_shape_of_pixels_go_along) {
    both elements;
    gst_harness_set_src_caps_str(elements.harness,
                                 "video/x-raw,format=UYVY,width=4,height=2,framerate=24000/1001,"
                                 "pixel-aspect-ratio=12/11,colorimetry=bt2020,interlace-mode=interleaved,"
                                 "field-order=top-field-first");
    gst_buffer_unref(gst_harness_push_and_pull(elements.harness, media::buffer_of(test::counting(16))));
    const std::string caps = current_format(elements.harness->sinkpad);
    for (const char* part : {"framerate=(fraction)24000/1001", "pixel-aspect-ratio=(fraction)12/11",
                             "colorimetry=(string)bt2020", "field-order=(string)top-field-first"}) {
        EXPECT_TRUE(has(caps, part)) << caps;
    }
}

// A seek flushes from behind while the first caps are on their way.
TEST(element, caps_that_a_flush_held_up_are_sent_again) {
    const bytes coded = media::encoded(media::format_named("GRAY8"), 4, 2, test::counting(8));
    for (const char* name : {"qvrparse", "qvrdec"}) {
        GstHarness* const harness = gst_harness_new(name);
        gst_harness_set_src_caps_str(harness, k_coded_caps);
        GstPad* const out = gst_element_get_static_pad(harness->element, "src");
        gst_pad_push_event(out, gst_event_new_flush_start());
        EXPECT_EQ(gst_harness_push(harness, media::buffer_of(coded)), GST_FLOW_FLUSHING) << name;
        gst_harness_push_event(harness, gst_event_new_flush_start());  // false: it has been there
        EXPECT_TRUE(gst_harness_push_event(harness, gst_event_new_flush_stop(TRUE)));
        GstSegment segment;
        gst_segment_init(&segment, GST_FORMAT_TIME);
        EXPECT_TRUE(gst_harness_push_event(harness, gst_event_new_segment(&segment)));
        EXPECT_EQ(gst_harness_push(harness, media::buffer_of(coded)), GST_FLOW_OK) << name;
        GstCaps* caps = gst_pad_get_current_caps(out);
        EXPECT_NE(caps, nullptr) << name;
        gst_clear_caps(&caps);
        gst_object_unref(out);
        gst_harness_teardown(harness);
    }
}
