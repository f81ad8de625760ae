// SPDX-License-Identifier: BSD-3-Clause
//
// Damaged files end in a warning and a frame less, or in an error; never in anything else.
#include <gtest/gtest.h>

#include <string>

#include "media.h"
#include "random_source.h"

using media::bytes;
using test::operator+;

namespace {

constexpr std::uint32_t k_width = 64;
constexpr std::uint32_t k_height = 32;

bytes coded_frame(std::uint64_t salt) {
    test::random_source random(salt);
    const bytes pixels = random.runs(k_width * k_height * 4);
    return media::encoded(media::format_named("RGBA"), k_width, k_height, pixels, true);
}

media::ending play(const bytes& content, std::size_t* frames = nullptr) {
    const media::temporary_file file(content);
    media::pipeline pipeline("filesrc location=" + file.path() +
                             " ! qvrparse ! qvrdec threads=1 ! appsink name=out sync=false wait-on-eos=false");
    media::ending result = pipeline.run();
    if (frames != nullptr) {
        *frames = pipeline.take("out").size();
    }
    return result;
}

}  // namespace

TEST(damage, a_frame_whose_coded_alpha_is_broken_is_left_out) {
    bytes broken = coded_frame(2);
    for (std::size_t i = broken.size() - 400; i < broken.size(); ++i) {
        broken[i] = 0xff;
    }
    std::size_t frames = 0;
    const media::ending result = play(coded_frame(1) + broken + coded_frame(3), &frames);
    EXPECT_TRUE(result.eos) << result.error;
    EXPECT_EQ(frames, 2u);
    ASSERT_EQ(result.warnings.size(), 1u);
    EXPECT_EQ(result.warnings[0].find("A damaged frame was left out."), 0u);
}

TEST(damage, a_file_without_a_good_frame_is_an_error) {
    EXPECT_FALSE(play(test::repeat('x', 5000)).error.empty());
    const bytes frame = coded_frame(1);
    EXPECT_FALSE(play(bytes(frame.begin(), frame.end() - 1)).error.empty());
}

TEST(damage, streams_without_a_raw_format_are_an_error_that_says_so) {
    const media::raw_format half = {"RGB half", 5, 6, 6, 0};
    const std::string none = "There is no raw video format for this stream: ";
    EXPECT_EQ(play(media::encoded(half, 4, 2, test::repeat(0, 48))).error.find(none + "RGB Half."), 0u);
    const bytes packed = media::encoded(media::format_named("IYU2"), 4, 2, test::repeat(0, 24));
    EXPECT_EQ(play(packed).error.find(none + "YUV444 U8; set packed-444"), 0u);
}

// Whose dimensions are whatever the caller wrote.
TEST(damage, wrapped_chunks_are_no_damage_but_have_no_raw_format) {
    for (const std::uint32_t width : {0u, 4u, 0xffffffffu}) {
        const media::ending result = play(media::wrapped_chunks(width, 2));
        EXPECT_EQ(result.error.find("There is no raw video format for this stream: wrapped chunks."), 0u)
            << result.error;
        EXPECT_TRUE(result.warnings.empty()) << width;
    }
}

TEST(damage, any_byte_may_be_wrong) {
    const bytes whole = coded_frame(1) + coded_frame(2);
    test::random_source random(7);
    for (int i = 0; i < 60; ++i) {
        bytes damaged = whole;
        const std::size_t place =
            i % 2 == 0 ? random.below(120) : random.below(static_cast<std::uint32_t>(whole.size()));
        damaged[place] = static_cast<std::uint8_t>(random.next());
        if (i % 5 == 4) {
            damaged.resize(random.below(static_cast<std::uint32_t>(whole.size())));
        }
        const media::ending result = play(damaged);
        EXPECT_TRUE(result.eos || !result.error.empty());
    }
}
