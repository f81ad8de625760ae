// SPDX-License-Identifier: BSD-3-Clause
#include "api/base/pixel_format.h"

#include <gtest/gtest.h>

#include <string>

#include "api/base/errors.h"
#include "api/base/validation.h"

namespace {

TEST(pixel_format, subsampling_by_order) {
    const unsigned expected[16] = {422, 422, 444, 444, 444, 444, 444, 444, 444, 420, 422, 444, 420, 1, 422, 422};
    for (std::uint32_t order = 1; order <= 16; ++order) {
        EXPECT_EQ(traits_of_order(order).subsampling, expected[order - 1]) << order;
    }
    for (const std::uint32_t order : {0u, 17u, 0xffffffffu}) {
        EXPECT_EQ(traits_of_order(order).subsampling, 0u) << order;
    }
}

TEST(pixel_format, orders_with_alpha) {
    for (std::uint32_t order = 0; order <= 40; ++order) {
        const bool expected = order >= 3 && order <= 16 && (0x3f33u >> (order - 3) & 1) != 0;
        EXPECT_EQ(traits_of_order(order).has_alpha, expected) << order;
    }
    EXPECT_FALSE(traits_of_order(0xffffffff).has_alpha);
}

TEST(pixel_format, orders_in_bitstream_order_need_no_reordering) {
    for (std::uint32_t order = 1; order <= 16; ++order) {
        const bool in_order = order >= 2 && (0x5989u >> (order - 2) & 1) != 0;
        EXPECT_EQ(traits_of_order(order).map.samples == 0, in_order) << order;
    }
}

TEST(pixel_format, bits_and_bytes_by_type) {
    struct {
        std::uint32_t type;
        unsigned bits, bytes;
    } const expected[] = {{1, 8, 1},  {2, 16, 2}, {3, 10, 2},   {4, 12, 2}, {5, 10, 2},
                          {6, 16, 2}, {7, 32, 4}, {214, 16, 2}, {0, 0, 2},  {8, 0, 2}};
    for (const auto& each : expected) {
        EXPECT_EQ(traits_of_type(each.type).bits, each.bits) << each.type;
        EXPECT_EQ(traits_of_type(each.type).bytes, each.bytes) << each.type;
    }
}

TEST(pixel_format, interleaved_rows_of_odd_widths_differ_by_order) {
    EXPECT_EQ(interleaved_row_bytes(1, 1, 3), 8u);
    EXPECT_EQ(interleaved_row_bytes(15, 2, 3), 16u);
    EXPECT_EQ(interleaved_row_bytes(2, 1, 3), 7u);
    EXPECT_EQ(interleaved_row_bytes(16, 7, 3), 28u);
    EXPECT_EQ(interleaved_row_bytes(11, 1, 3), 10u);
    EXPECT_EQ(interleaved_row_bytes(11, 1, 4), 12u);
    EXPECT_EQ(interleaved_row_bytes(12, 7, 3), 48u);
    EXPECT_EQ(interleaved_row_bytes(9, 214, 3), 18u);
    EXPECT_EQ(interleaved_row_bytes(17, 1, 3), 0u);
}

TEST(pixel_format, packed_rows_take_16_bytes_for_six_pixels_whatever_the_order) {
    EXPECT_EQ(interleaved_row_bytes(2, 5, 1920), 5120u);
    EXPECT_EQ(interleaved_row_bytes(2, 5, 1921), 5136u);
    EXPECT_EQ(interleaved_row_bytes(0, 5, 1), 16u);
    EXPECT_EQ(interleaved_row_bytes(2, 5, 0xffffffff), wide{715827883} * 16);
}

TEST(sizes, are_exact_past_64_bits_and_answered_modulo_2_to_the_32) {
    const wide large = wide{0xffffffffffffffff} * 16;
    EXPECT_EQ(decimal(large), "295147905179352825840");
    EXPECT_EQ(decimal(0), "0");
    EXPECT_EQ(low_32(large), 0xfffffff0u);
    EXPECT_FALSE(fits_32(wide{1} << 32));
    EXPECT_EQ(checked_narrow(0xffffffff), 0xffffffffu);
    EXPECT_THROW(checked_narrow(wide{1} << 32), invalid_argument);
}

std::string refusal(std::uint32_t order, std::uint32_t type, std::uint32_t width, std::uint32_t height,
                    std::uint8_t coded) {
    try {
        check_encoder_params({36, order, type, width, height, 0, 0, 0}, {10, coded, 0});
    } catch (const invalid_argument& failure) {
        return failure.what();
    }
    return "";
}

TEST(encoder_params, rules_in_their_order) {
    EXPECT_EQ(refusal(13, 3, 3, 3, 1), "Only 8 and 16 bit alpha supported for RLE compression");
    EXPECT_EQ(refusal(13, 3, 3, 3, 0), "Width must be multiple of 2 for 422 and 420 subsampling");
    EXPECT_EQ(refusal(13, 3, 4, 3, 0), "Height must be multiple of 2 for 420 subsampling");
    EXPECT_EQ(refusal(1, 1, 4, 3, 0), "");
    EXPECT_EQ(refusal(14, 1, 3, 3, 1), "");
    EXPECT_EQ(refusal(5, 3, 3, 3, 1), "");
    EXPECT_EQ(refusal(17, 99, 3, 3, 1), "");
}

}  // namespace
