// SPDX-License-Identifier: BSD-3-Clause
//
// The rules that the encoder checks before it touches a pixel, and their order.
#include <gtest/gtest.h>

#include "codec.h"

namespace {

using namespace test;

constexpr const char* k_width_rule = "Width must be multiple of 2 for 422 and 420 subsampling";
constexpr const char* k_height_rule = "Height must be multiple of 2 for 420 subsampling";
constexpr const char* k_alpha_rule = "Only 8 and 16 bit alpha supported for RLE compression";
constexpr const char* k_pair_rule = "combination of color component order and component type is not supported";

// A source and a destination larger than any of these small frames needs.
outcome try_encode(const frame_params& up, const stream_params& cp) {
    return encode(up, cp, repeat(0, 4096), 8192);
}

TEST(encoder_rules, odd_width_is_refused_for_each_422_and_420_order) {
    for (const uint32_t order : {1u, 2u, 10u, 11u, 13u, 15u, 16u}) {
        SCOPED_TRACE(order);
        expect_failure(try_encode(frame_record(order, 1, 3, 2), raw_alpha()), k_width_rule);
        expect_failure(try_encode(frame_record(order, 2, 1, 2), raw_alpha()), k_width_rule);
    }
}

TEST(encoder_rules, odd_width_1919_of_order_1_is_refused_though_the_size_query_answers) {
    const frame_params up = frame_record(1, 1, 1919, 2);
    expect_failure(encode(up, raw_alpha(), repeat(0, 7680), 8192), k_width_rule);
    EXPECT_EQ(QVRUncompressed_GetUncompressedBufSize(&up), 7680u);
}

TEST(encoder_rules, odd_width_is_accepted_for_each_444_order_and_alpha_alone) {
    for (const uint32_t order : {3u, 4u, 5u, 6u, 7u, 8u, 9u, 12u, 14u}) {
        SCOPED_TRACE(order);
        expect_success(try_encode(frame_record(order, 1, 3, 3), raw_alpha()));
    }
}

TEST(encoder_rules, odd_height_is_refused_for_both_420_orders) {
    for (const uint32_t order : {10u, 13u}) {
        SCOPED_TRACE(order);
        expect_failure(try_encode(frame_record(order, 1, 2, 3), raw_alpha()), k_height_rule);
    }
}

TEST(encoder_rules, odd_height_1081_of_order_10_is_refused) {
    expect_failure(encode(frame_record(10, 1, 2, 1081), raw_alpha(), repeat(0, 4096), 4096), k_height_rule);
}

TEST(encoder_rules, odd_height_is_accepted_for_each_422_order) {
    for (const uint32_t order : {1u, 2u, 11u, 15u, 16u}) {
        SCOPED_TRACE(order);
        expect_success(try_encode(frame_record(order, 1, 2, 3), raw_alpha()));
    }
}

TEST(encoder_rules, width_is_checked_before_height) {
    expect_failure(try_encode(frame_record(10, 1, 3, 3), raw_alpha()), k_width_rule);
}

TEST(encoder_rules, coded_alpha_needs_8_or_16_bits_in_each_order_with_alpha) {
    for (const uint32_t order : {3u, 4u, 7u, 8u, 11u, 12u, 13u, 14u, 15u, 16u}) {
        for (const uint32_t type : {3u, 4u, 6u, 7u, 214u}) {
            SCOPED_TRACE(testing::Message() << "order " << order << ", type " << type);
            expect_failure(try_encode(frame_record(order, type, 2, 2), coded_alpha()), k_alpha_rule);
        }
    }
}

TEST(encoder_rules, any_value_but_zero_asks_for_coded_alpha) {
    stream_params cp = raw_alpha();
    cp.alphaCompression = 0x80;
    expect_failure(try_encode(frame_record(3, 3, 2, 2), cp), k_alpha_rule);
    const outcome result = try_encode(frame_record(14, 1, 2, 2), cp);
    expect_success(result);
    EXPECT_EQ(to_hex(bytes(result.data.begin() + 24, result.data.begin() + 28)), canonical("'rl08'"));
}

TEST(encoder_rules, order_3_with_10_bits_is_accepted_with_raw_alpha) {
    expect_success(try_encode(frame_record(3, 3, 2, 2), raw_alpha()));
}

TEST(encoder_rules, asking_for_coded_alpha_means_nothing_without_an_alpha_plane) {
    const bytes src = counting(24);
    for (const uint32_t order : {5u, 6u, 9u}) {
        SCOPED_TRACE(order);
        const outcome raw = encode(frame_record(order, 3, 2, 2), raw_alpha(), src);
        const outcome coded = encode(frame_record(order, 3, 2, 2), coded_alpha(), src);
        expect_success(coded);
        EXPECT_EQ(to_hex(coded.frame()), to_hex(raw.frame()));
    }
    expect_success(try_encode(frame_record(1, 3, 2, 2), coded_alpha()));
    expect_success(try_encode(frame_record(10, 7, 2, 2), coded_alpha()));
}

TEST(encoder_rules, alpha_rule_comes_before_the_width_rule) {
    expect_failure(try_encode(frame_record(11, 3, 3, 2), coded_alpha()), k_alpha_rule);
    expect_failure(try_encode(frame_record(13, 3, 3, 3), coded_alpha()), k_alpha_rule);
}

TEST(encoder_rules, orders_0_and_17_are_refused_by_the_lookup) {
    expect_failure(try_encode(frame_record(0, 1, 3, 3), raw_alpha()), k_pair_rule);
    expect_failure(try_encode(frame_record(17, 1, 3, 3), raw_alpha()), k_pair_rule);
    expect_failure(try_encode(frame_record(17, 3, 3, 3), coded_alpha()), k_pair_rule);
    expect_failure(try_encode(frame_record(0xffffffffu, 1, 3, 3), raw_alpha()), k_pair_rule);
}

TEST(encoder_rules, orders_without_alpha_pass_the_alpha_rule) {
    for (const uint32_t order : {0u, 1u, 2u, 5u, 6u, 9u, 10u, 17u}) {
        SCOPED_TRACE(order);
        const outcome result = try_encode(frame_record(order, 3, 2, 2), coded_alpha());
        if (order == 0 || order == 17) {
            expect_failure(result, k_pair_rule);
        } else {
            expect_success(result);
        }
    }
}

TEST(encoder_rules, type_5_belongs_to_order_2_only) {
    expect_success(try_encode(frame_record(2, 5, 6, 1), raw_alpha()));
    expect_failure(try_encode(frame_record(1, 5, 6, 1), raw_alpha()), k_pair_rule);
}

TEST(encoder_rules, the_stride_check_comes_before_the_lookup) {
    expect_failure(try_encode(frame_record(14, 3, 4, 2, 7), raw_alpha()),
                   "rowBytes is too small, it should be at least 8 according to uncompressed params");
}

TEST(encoder_rules, the_width_rule_comes_before_the_stride_check) {
    expect_failure(try_encode(frame_record(1, 1, 3, 2, 1), raw_alpha()), k_width_rule);
}

TEST(encoder_rules, the_source_size_comes_before_the_lookup) {
    expect_failure(encode(frame_record(14, 3, 4, 2), raw_alpha(), repeat(0, 15), 512), "src size is too small");
    expect_failure(encode(frame_record(14, 3, 4, 2), raw_alpha(), repeat(0, 16), 512), k_pair_rule);
}

TEST(encoder_rules, the_frame_layout_is_stored_as_its_low_byte_unchecked) {
    for (const uint32_t layout : {0u, 1u, 2u, 0xffu, 0x100u, 0x102u, 0xffffff01u}) {
        SCOPED_TRACE(layout);
        const outcome result = try_encode(frame_record(14, 1, 2, 1, 0, 0, layout), raw_alpha());
        expect_success(result);
        EXPECT_EQ(result.data[28], layout & 0xffu);
    }
}

TEST(encoder_rules, every_plane_carries_the_frame_layout) {
    expect_bytes(encode(frame_record(13, 1, 2, 2, 0, 0, 1), raw_alpha(), from_hex("01020304 05 06 0708090a")),
                 "a6000000 'pack' "
                 "29000000 'icmp' 15000000 'sinf' 02000000 02000000 ' y08' 01 0c000000 'sdat' 01020304 "
                 "26000000 'icmp' 15000000 'sinf' 01000000 01000000 'cb08' 01 09000000 'sdat' 05 "
                 "26000000 'icmp' 15000000 'sinf' 01000000 01000000 'cr08' 01 09000000 'sdat' 06 "
                 "29000000 'icmp' 15000000 'sinf' 02000000 02000000 ' a08' 01 0c000000 'sdat' 0708090a");
}

}  // namespace
