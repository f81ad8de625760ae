// SPDX-License-Identifier: BSD-3-Clause
//
// Frames of each format into a file and back, byte by byte.
#include <gst/check/gstharness.h>
#include <gtest/gtest.h>

#include <string>

#include "media.h"

using media::raw_format;

namespace {

class round_trip : public testing::TestWithParam<raw_format> {};

std::string name_of(const testing::TestParamInfo<raw_format>& info) {
    return info.param.name;
}

std::string element(const char* name, const raw_format& format) {
    return std::string(name) + " threads=1 packed-444=" + format.packed_444;
}

// The pictures of videotestsrc by way of a file, on the left as they were and on the right as they came back.
void compare_clip(const raw_format& format, std::uint32_t width, std::uint32_t height, const std::string& options) {
    SCOPED_TRACE(media::caps_text(format, width, height) + " " + options);
    const media::temporary_file file;
    const std::string caps = media::caps_text(format, width, height);
    media::pipeline writer("videotestsrc num-buffers=3 pattern=ball ! " + caps +
                           " ! tee name=t ! queue ! appsink name=raw sync=false wait-on-eos=false t. ! queue ! " +
                           element("qvrenc", format) + options + " ! filesink location=" + file.path());
    ASSERT_TRUE(writer.run().eos);
    media::pipeline reader("filesrc location=" + file.path() + " ! qvrparse ! " + element("qvrdec", format) + " ! " +
                           caps + " ! appsink name=back sync=false wait-on-eos=false");
    ASSERT_TRUE(reader.run().eos);
    const auto raw = writer.take("raw");
    const auto back = reader.take("back");
    ASSERT_EQ(raw.size(), 3u);
    ASSERT_EQ(back.size(), 3u);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(raw[i].pixels, back[i].pixels) << "frame " << i;
        EXPECT_EQ(back[i].pts, i * 40 * GST_MSECOND);
    }
}

// Random bytes through encoder and decoder side by side.
void compare_noise(const raw_format& format, std::uint32_t width, std::uint32_t height, bool rle) {
    const std::string caps = media::caps_text(format, width, height);
    SCOPED_TRACE(caps + (rle ? " coded" : ""));
    GstHarness* const encoder =
        gst_harness_new_parse((element("qvrenc", format) + (rle ? " alpha-rle=1" : "")).c_str());
    GstHarness* const decoder = gst_harness_new_parse((element("qvrdec", format)).c_str());
    gst_harness_set_src_caps_str(encoder, caps.c_str());
    gst_harness_set_src_caps_str(
        decoder, "video/x-qvr-uncompressed,parsed=true,width=1,height=1,framerate=25/1,interlace-mode=progressive");
    gst_harness_set_sink_caps_str(decoder, ("video/x-raw,format=" + std::string(format.name)).c_str());
    for (std::uint64_t i = 0; i < 2; ++i) {
        GstBuffer* const raw = media::random_buffer(format, caps, i);
        const media::bytes before = media::pixels_of(raw, caps);
        GstBuffer* const coded = gst_harness_push_and_pull(encoder, raw);
        ASSERT_NE(coded, nullptr);
        GstBuffer* const back = gst_harness_push_and_pull(decoder, coded);
        ASSERT_NE(back, nullptr);
        EXPECT_EQ(media::pixels_of(back, caps), before);
        gst_buffer_unref(back);
    }
    gst_harness_teardown(decoder);
    gst_harness_teardown(encoder);
}

}  // namespace

TEST_P(round_trip, pictures_by_way_of_a_file) {
    compare_clip(GetParam(), 330, 66, "");
    compare_clip(GetParam(), 330, 66, " alpha-rle=true rle-slices=3");
}

TEST_P(round_trip, noise_of_every_shape) {
    const raw_format& format = GetParam();
    for (const bool rle : {false, true}) {
        compare_noise(format, 12, 10, rle);
        compare_noise(format, 2, 2, rle);
        compare_noise(format, format.even > 0 ? 46 : 47, format.even > 1 ? 6 : 5, rle);
        compare_noise(format, format.even > 0 ? 2 : 1, format.even > 1 ? 2 : 1, rle);
    }
}

INSTANTIATE_TEST_SUITE_P(all, round_trip, testing::ValuesIn(media::formats()), name_of);
