// SPDX-License-Identifier: BSD-3-Clause
//
// Odd widths on decoding. No encoder of ours writes them for 4:2:2 and 4:2:0, but a stream can hold them. The colour
// plane stands last in the stream, where one sample too many lies on the inaccessible page.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "good_streams.h"
#include "random_source.h"

namespace {

using namespace hostile;
using namespace test;

// The planes of a pair in reverse, with the contents that `fill` makes.
template <class fill_type>
bytes reversed_planes(uint32_t order, uint32_t type, uint32_t width, uint32_t height, fill_type fill) {
    model::frame_plan plan;
    std::vector<bytes> payloads;
    for (const model::code& code : model::format_planes(order, type)) {
        const model::plane_role role = model::role_of(code);
        const bool half = role == model::plane_role::cb || role == model::plane_role::cr;
        const uint32_t w = half ? (width + 1) / 2 : width;
        const uint32_t h = half ? (height + 1) / 2 : height;
        plan.planes.insert(plan.planes.begin(), {code, w, h, 0, 0});
        payloads.insert(payloads.begin(), fill(code, static_cast<size_t>(model::row_bytes(code, w) * h)));
    }
    return model::write_frame(plan, {}, payloads, {});
}

class odd_widths : public testing::TestWithParam<uint32_t> {};

TEST_P(odd_widths, of_every_type_decode_to_what_is_stored) {
    const uint32_t order = GetParam();
    random_source random(order);
    prober one(1);
    prober four(4);
    for (const uint32_t type : {1u, 2u, 3u, 4u, 5u, 6u, 7u, 214u}) {
        for (const uint32_t width : {1u, 3u, 5u, 7u, 9u, 11u, 13u, 15u, 17u, 21u, 31u, 33u, 47u, 65u}) {
            if (!model::is_supported_pair(order, type)) {
                continue;
            }
            SCOPED_TRACE(testing::Message() << "type " << type << ", width " << width);
            const bytes stream = reversed_planes(order, type, width, 3,
                                                 [&](const model::code&, size_t size) { return random.content(size); });
            frame_params up = frame_record(order, type, width, 3);
            one.ask({stream, up, {wrap_record(1, 0)}});
            four.ask({stream, up, {wrap_record(1, 0)}});
            up.rowBytes = up.rowBytes2 = width * 16 + 5;  // wide enough for any row, with padding behind
            one.ask({stream, up, {wrap_record(1, 0)}});
            ASSERT_FALSE(HasFailure());
        }
    }
}

// Streams of fixed point that are asked for as floating point: rows twice as long as those that are stored.
class odd_fixed_point_widths : public testing::TestWithParam<uint32_t> {};

TEST_P(odd_fixed_point_widths, become_floating_point) {
    const uint32_t order = GetParam();
    random_source random(order);
    prober one(1);
    for (uint32_t width = 1; width < 40; width += 2) {
        SCOPED_TRACE(width);
        const bytes stream = reversed_planes(order, 214, width, 3,
                                             [&](const model::code&, size_t size) { return random.content(size); });
        EXPECT_EQ(one.ask({stream, frame_record(order, 7, width, 3), {wrap_record(1, 0)}}).decode, "ok");
    }
}

INSTANTIATE_TEST_SUITE_P(order, odd_fixed_point_widths, testing::Values(1u, 2u, 5u, 6u, 9u),
                         testing::PrintToStringParamName());
INSTANTIATE_TEST_SUITE_P(order, odd_widths, testing::Range(1u, 17u), testing::PrintToStringParamName());

// One row of three pixels: colour samples 1, 2, 3 ... and alpha a0, a1, a2.
TEST(odd_width, of_three_pixels_in_each_order) {
    const std::map<uint32_t, std::string> expected = {
        {1, "0201 0403 0605 0007"},         {2, "0102 0304 0506 07"},
        {3, "a0010203 a1040506 a2070809"},  {4, "030201a0 060504a1 090807a2"},
        {5, "010203 040506 070809"},        {6, "030201 060504 090807"},
        {7, "010203a0 040506a1 070809a2"},  {8, "a0030201 a1060504 a2090807"},
        {9, "010203 040506 070809"},        {10, "010203 0102 0102"},
        {11, "0102a0 0304a1 0506a2 07"},    {12, "020103a0 050406a1 080709a2"},
        {13, "010203 0102 0102 a0a1a2"},    {14, "a0a1a2"},
        {15, "0201 0403 0605 0007 a0a1a2"}, {16, "0102 0304 0506 07 a0a1a2"},
    };
    decoder one(1);
    decoder four(4);
    for (const auto& [order, hex] : expected) {
        SCOPED_TRACE(order);
        const bytes stream = reversed_planes(order, 1, 3, 1, [](const model::code& code, size_t size) {
            return counting(size, code == " a08" ? 0xa0 : 1);
        });
        expect_bytes(decode(one, frame_record(order, 1, 3, 1), stream), hex);
        expect_bytes(decode(four, frame_record(order, 1, 3, 1), stream), hex);
    }
}

TEST(odd_width, of_chroma_that_is_not_rounded_up_is_refused) {
    const auto planar = [](uint32_t cb_width, uint32_t cr_width) {
        model::frame_plan plan;
        plan.planes = {{"cr08", cr_width, 1, 0, 0}, {"cb08", cb_width, 1, 0, 0}, {" y08", 3, 1, 0, 0}};
        return model::write_frame(plan, {}, {bytes(cr_width), bytes(cb_width), bytes(3)}, {});
    };
    prober with;
    const auto decoded = [&](const bytes& stream) {
        return with.ask({stream, frame_record(10, 1, 3, 1), {wrap_record(1, 0)}}).decode;
    };
    EXPECT_EQ(decoded(planar(2, 2)), "ok");
    EXPECT_EQ(decoded(planar(1, 2)), "Cb plane width and hight should be half of luma");
    EXPECT_EQ(decoded(planar(2, 1)), "Cr plane width and hight should be half of luma");
}

}  // namespace
