// SPDX-License-Identifier: BSD-3-Clause
//
// Any frame of a file can be gone to, whether frames are of one size or not.
#include <gtest/gtest.h>

#include <string>

#include "media.h"
#include "random_source.h"

using media::bytes;
using test::operator+;

namespace {

constexpr std::uint32_t k_frames = 40;

// Frame n begins with the sample n. Coded frames are of many sizes.
bytes clip(bool coded) {
    bytes stream;
    for (std::uint32_t i = 0; i < k_frames; ++i) {
        test::random_source random(i);
        bytes pixels = coded ? random.runs(64 * 32) : random.content(64 * 32);
        pixels[0] = static_cast<std::uint8_t>(i);
        stream = stream + media::encoded(media::format_named("GRAY8"), 64, 32, pixels, coded);
    }
    return stream;
}

// Frames in so many seconds. At the slow one frames are so far apart that the base class has no reason to parse from the
// last place it knows: it goes where it is told.
struct rate {
    GstClockTime frames;
    GstClockTime seconds;

    GstClockTime time_of(std::uint32_t frame) const { return frame * seconds * GST_SECOND / frames; }
    std::string text() const { return std::to_string(frames) + "/" + std::to_string(seconds); }
};

constexpr rate k_usual = {30, 1};
constexpr rate k_slow = {1, 7};

std::string reader(const media::temporary_file& file, const rate& at = k_usual, const char* before = "") {
    return "filesrc location=" + file.path() + before + " ! qvrparse framerate=" + at.text() +
           " ! qvrdec threads=1 ! appsink name=out sync=false wait-on-eos=false max-buffers=2";
}

void expect_frame(media::pipeline& pipeline, std::uint32_t frame, const rate& at = k_usual) {
    const media::frame shown = pipeline.shown("out");
    ASSERT_FALSE(shown.pixels.empty());
    EXPECT_EQ(shown.pixels[0], frame);
    EXPECT_EQ(shown.pts, at.time_of(frame));
}

constexpr std::uint32_t k_visits[] = {20, 3, 39, 0, 38, 21, 22, 1};

}  // namespace

class seek : public testing::TestWithParam<bool> {};

TEST_P(seek, by_time) {
    const media::temporary_file file(clip(GetParam()));
    for (const rate& at : {k_usual, k_slow}) {
        media::pipeline pipeline(reader(file, at));
        ASSERT_TRUE(pipeline.pause());
        for (const std::uint32_t frame : k_visits) {
            const auto time = static_cast<gint64>(at.time_of(frame));
            ASSERT_TRUE(pipeline.seek(GST_FORMAT_TIME, time, GST_SEEK_FLAG_ACCURATE));
            expect_frame(pipeline, frame, at);
            ASSERT_TRUE(pipeline.seek(GST_FORMAT_TIME, time, GST_SEEK_FLAG_KEY_UNIT));
            expect_frame(pipeline, frame, at);
        }
    }
}

TEST_P(seek, by_frame_number) {
    const media::temporary_file file(clip(GetParam()));
    for (const rate& at : {k_usual, k_slow}) {
        media::pipeline pipeline(reader(file, at));
        ASSERT_TRUE(pipeline.pause());
        for (const std::uint32_t frame : k_visits) {
            ASSERT_TRUE(pipeline.seek(GST_FORMAT_DEFAULT, frame, GST_SEEK_FLAG_NONE));
            expect_frame(pipeline, frame, at);
        }
    }
}

TEST_P(seek, and_on_to_the_end) {
    const media::temporary_file file(clip(GetParam()));
    media::pipeline pipeline(
        "filesrc location=" + file.path() +
        " ! qvrparse framerate=30/1 ! qvrdec threads=1 ! appsink name=out sync=false wait-on-eos=false");
    ASSERT_TRUE(pipeline.pause());
    ASSERT_TRUE(pipeline.seek(GST_FORMAT_DEFAULT, 35, GST_SEEK_FLAG_ACCURATE));
    ASSERT_TRUE(pipeline.run().eos);
    const auto rest = pipeline.take("out");
    ASSERT_EQ(rest.size(), 5u);
    for (std::uint32_t i = 0; i < 5; ++i) {
        EXPECT_EQ(rest[i].pixels[0], 35 + i);
        EXPECT_EQ(rest[i].pts, (35 + i) * GST_SECOND / 30);
    }
}

INSTANTIATE_TEST_SUITE_P(coded, seek, testing::Bool());

// The place of a frame that has not been met can then only be computed, which needs frames of one size.
TEST(seek_behind_a_queue, finds_frames_of_one_size) {
    const media::temporary_file file(clip(false));
    media::pipeline pipeline(reader(file, k_usual, " ! queue max-size-buffers=1"));
    ASSERT_TRUE(pipeline.pause());
    for (const std::uint32_t frame : k_visits) {
        ASSERT_TRUE(pipeline.seek(GST_FORMAT_DEFAULT, frame, GST_SEEK_FLAG_NONE));
        expect_frame(pipeline, frame);
    }
}

TEST(seek_duration, is_known_of_frames_of_one_size) {
    const media::temporary_file file(clip(false));
    media::pipeline pipeline(reader(file));
    ASSERT_TRUE(pipeline.pause());
    EXPECT_EQ(pipeline.duration(GST_FORMAT_TIME), static_cast<gint64>(k_frames * GST_SECOND / 30));
}

namespace {

GstPadProbeReturn count(GstPad*, GstPadProbeInfo*, gpointer counter) {
    g_atomic_int_inc(static_cast<gint*>(counter));
    return GST_PAD_PROBE_OK;
}

}  // namespace

// Frames of one size are gone to without looking at all those before them, whatever the size in the last file was.
TEST(seek_in_a_second_file, computes_places_with_the_new_size) {
    const media::temporary_file first(media::encoded(media::format_named("GRAY8"), 16, 16, test::repeat(9, 256)));
    const media::temporary_file second(clip(false));
    media::pipeline pipeline("filesrc name=file location=" + first.path() +
                             " ! qvrparse name=parser framerate=30/1 ! qvrdec threads=1 ! appsink name=out sync=false "
                             "wait-on-eos=false max-buffers=2");
    ASSERT_TRUE(pipeline.pause());
    pipeline.stop();
    GstElement* const source = pipeline.element("file");
    g_object_set(source, "location", second.path().c_str(), nullptr);
    gst_object_unref(source);
    ASSERT_TRUE(pipeline.pause());
    GstElement* const parser = pipeline.element("parser");
    GstPad* const pad = gst_element_get_static_pad(parser, "sink");
    gint reads = 0;
    const gulong probe = gst_pad_add_probe(
        pad, static_cast<GstPadProbeType>(GST_PAD_PROBE_TYPE_PULL | GST_PAD_PROBE_TYPE_BUFFER), count, &reads, nullptr);
    EXPECT_TRUE(pipeline.seek(GST_FORMAT_DEFAULT, k_frames - 1, GST_SEEK_FLAG_NONE));
    gst_pad_remove_probe(pad, probe);
    gst_object_unref(pad);
    gst_object_unref(parser);
    expect_frame(pipeline, k_frames - 1);
    EXPECT_GT(g_atomic_int_get(&reads), 0);
    EXPECT_LT(g_atomic_int_get(&reads), static_cast<gint>(k_frames / 2));
}

// A frame of 64 bytes whose number times 64 is 2^64 and a little is not one of the first.
TEST(seek_beyond_the_end, goes_to_no_other_frame) {
    bytes stream;
    for (std::uint32_t i = 0; i < k_frames; ++i) {
        stream = stream +
                 media::encoded(media::format_named("GRAY8"), 27, 1, test::repeat(static_cast<std::uint8_t>(i), 27));
    }
    ASSERT_EQ(stream.size(), 64 * k_frames);
    const media::temporary_file file(stream);
    media::pipeline pipeline(reader(file, {2147483647, 1}));
    ASSERT_TRUE(pipeline.pause());
    pipeline.seek(GST_FORMAT_DEFAULT, (gint64{1} << 58) + 20, GST_SEEK_FLAG_NONE);
    const media::frame shown = pipeline.shown("out");
    EXPECT_TRUE(shown.pixels.empty() || shown.pixels[0] == 0) << int{shown.pixels[0]};  // nothing, or still the first
}
