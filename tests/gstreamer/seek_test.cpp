// SPDX-License-Identifier: BSD-3-Clause
//
// Any frame of a file can be gone to, whether frames are of one size or not.
#include <gtest/gtest.h>

#include <string>
#include <vector>

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
    return "filesrc location=" + file.path() + before + " ! qvrparse name=parser framerate=" + at.text() +
           " ! qvrdec name=decoder threads=1 ! appsink name=out sync=false wait-on-eos=false max-buffers=2";
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

namespace {

// From the frame `first` on, `step` apart.
void expect_frames(const std::vector<media::frame>& frames, int first, int step, std::size_t count,
                   const rate& at = k_usual) {
    ASSERT_EQ(frames.size(), count);
    for (std::size_t i = 0; i < count; ++i) {
        const auto number = static_cast<std::uint32_t>(first + step * static_cast<int>(i));
        EXPECT_EQ(frames[i].pixels[0], number);
        EXPECT_EQ(frames[i].pts, at.time_of(number));
    }
}

std::string player(const media::temporary_file& file) {
    return "filesrc location=" + file.path() +
           " ! qvrparse name=parser framerate=30/1 ! qvrdec threads=1 ! appsink name=out sync=false wait-on-eos=false";
}

}  // namespace

TEST_P(seek, stops_where_it_is_told) {
    const media::temporary_file file(clip(GetParam()));
    media::pipeline pipeline(player(file));
    ASSERT_TRUE(pipeline.pause());
    ASSERT_TRUE(pipeline.seek(1, GST_FORMAT_DEFAULT, 10, 15, GST_SEEK_FLAG_ACCURATE));
    ASSERT_TRUE(pipeline.run().eos);
    expect_frames(pipeline.take("out"), 10, 1, 5);
}

TEST_P(seek, to_a_segment) {
    const media::temporary_file file(clip(GetParam()));
    media::pipeline pipeline(player(file));
    ASSERT_TRUE(pipeline.pause());
    for (const int first : {3, 20}) {
        const auto flags = static_cast<GstSeekFlags>(GST_SEEK_FLAG_ACCURATE | GST_SEEK_FLAG_SEGMENT);
        ASSERT_TRUE(pipeline.seek(1, GST_FORMAT_DEFAULT, first, first + 4, flags));
        ASSERT_TRUE(pipeline.run().segment_done);
        expect_frames(pipeline.take("out"), first, 1, 4);
    }
}

TEST_P(seek, backwards) {
    const media::temporary_file file(clip(GetParam()));
    for (const GstFormat format : {GST_FORMAT_TIME, GST_FORMAT_DEFAULT}) {
        const auto place = [&](std::uint32_t frame) {
            return format == GST_FORMAT_TIME ? static_cast<gint64>(k_usual.time_of(frame)) : gint64{frame};
        };
        media::pipeline pipeline(player(file));
        ASSERT_TRUE(pipeline.pause());
        ASSERT_TRUE(pipeline.seek(-1, format, place(5), place(12), GST_SEEK_FLAG_ACCURATE));
        ASSERT_TRUE(pipeline.run().eos);
        expect_frames(pipeline.take("out"), 11, -1, 7);
    }
}

INSTANTIATE_TEST_SUITE_P(coded, seek, testing::Bool());

TEST(seek_backwards, begins_at_the_end_when_nothing_else_is_said) {
    const media::temporary_file file(clip(false));
    for (const GstFormat format : {GST_FORMAT_TIME, GST_FORMAT_DEFAULT}) {
        media::pipeline pipeline(player(file));
        ASSERT_TRUE(pipeline.pause());
        ASSERT_TRUE(pipeline.seek(-1, format, 0, -1, GST_SEEK_FLAG_NONE));
        ASSERT_TRUE(pipeline.run().eos);
        expect_frames(pipeline.take("out"), k_frames - 1, -1, k_frames);
    }
}

// A frame has the same time whether it was played to or sought, on either side of one that is damaged.
TEST(seek_in_a_damaged_file, finds_frames_at_the_times_that_they_have_when_played) {
    bytes stream = clip(false);
    stream.at(stream.size() / k_frames * 10 + 4) = 'q';
    const media::temporary_file file(stream);
    media::pipeline pipeline(player(file));
    ASSERT_TRUE(pipeline.run().eos);
    const auto played = pipeline.take("out");
    ASSERT_EQ(played.size(), k_frames - 1);
    for (const media::frame& each : played) {
        EXPECT_EQ(each.pts, k_usual.time_of(each.pixels[0]));
    }
    for (const char* before : {"", " ! queue max-size-buffers=1"}) {
        media::pipeline other(reader(file, k_usual, before));
        ASSERT_TRUE(other.pause());
        for (const std::uint32_t frame : {20u, 9u, 11u, 39u}) {
            ASSERT_TRUE(other.seek(GST_FORMAT_DEFAULT, frame, GST_SEEK_FLAG_ACCURATE));
            expect_frame(other, frame);
        }
    }
}

TEST(frames, can_be_asked_for_by_number) {
    const media::temporary_file file(clip(false));
    for (const char* before : {"", " ! queue max-size-buffers=1"}) {
        media::pipeline pipeline(reader(file, {30000, 1001}, before));
        ASSERT_TRUE(pipeline.pause());
        EXPECT_EQ(pipeline.duration(GST_FORMAT_DEFAULT), gint64{k_frames});
        GstElement* const decoder = pipeline.element("decoder");
        GstQuery* const seeking = gst_query_new_seeking(GST_FORMAT_DEFAULT);
        EXPECT_TRUE(gst_element_query(decoder, seeking));
        GstFormat format = GST_FORMAT_UNDEFINED;
        gboolean seekable = FALSE;
        gint64 first = -1;
        gint64 last = -1;
        gst_query_parse_seeking(seeking, &format, &seekable, &first, &last);
        gst_query_unref(seeking);
        EXPECT_EQ(format, GST_FORMAT_DEFAULT);
        EXPECT_TRUE(seekable);
        EXPECT_EQ(first, 0);
        EXPECT_EQ(last, gint64{k_frames});
        gst_object_unref(decoder);
    }
}

TEST(frames, say_their_own_number) {
    const media::temporary_file file(clip(false));
    media::pipeline pipeline(reader(file, {30000, 1001}));
    ASSERT_TRUE(pipeline.pause());
    GstElement* const decoder = pipeline.element("decoder");
    for (const std::uint32_t frame : k_visits) {
        ASSERT_TRUE(pipeline.seek(GST_FORMAT_DEFAULT, frame, GST_SEEK_FLAG_ACCURATE));
        gint64 position = -1;
        EXPECT_TRUE(gst_element_query_position(decoder, GST_FORMAT_DEFAULT, &position));
        EXPECT_EQ(position, gint64{frame});
    }
    gst_object_unref(decoder);
}

TEST(frames, are_converted_to_times_and_back) {
    const media::temporary_file file(clip(false));
    media::pipeline pipeline(reader(file, {30000, 1001}));
    ASSERT_TRUE(pipeline.pause());
    GstElement* const parser = pipeline.element("parser");
    const auto converted = [&](GstFormat from, gint64 value, GstFormat to) {
        gint64 result = -2;
        EXPECT_TRUE(gst_element_query_convert(parser, from, value, to, &result));
        return result;
    };
    for (const gint64 frame : {0, 1, 3, 10, 29, 1000}) {
        const gint64 time = converted(GST_FORMAT_DEFAULT, frame, GST_FORMAT_TIME);
        EXPECT_EQ(time, frame * 1001 * gint64{GST_SECOND} / 30000);
        EXPECT_EQ(converted(GST_FORMAT_TIME, time, GST_FORMAT_DEFAULT), frame);
    }
    gst_object_unref(parser);
}

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
