// SPDX-License-Identifier: BSD-3-Clause
//
// The row kernels: literal rows for the scalar definitions, then every other instruction set against them.
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

#include "bytes.h"
#include "kernel_harness.h"
#include "pixel/kernels/row_kernels.h"
#include "random_source.h"

namespace {

using test::bytes;
using test::from_hex;
using test::kernel_call;
using test::operator+;

// Two blocks of four of the widest vectors, and one byte more.
constexpr std::size_t k_longest = 2 * 4 * 64 + 1;

// In units of `unit_bytes`: every length up to the longest, and some in which a kernel aligns its stores.
std::vector<std::size_t> row_lengths(std::size_t unit_bytes, std::size_t longest = k_longest) {
    std::vector<std::size_t> lengths(longest / unit_bytes + 1 + 16);
    std::iota(lengths.begin(), lengths.end(), 0);
    std::transform(lengths.end() - 16, lengths.end(), lengths.end() - 16,
                   [=](std::size_t length) { return length + 450 / unit_bytes; });
    return lengths;
}

constexpr std::uint32_t k_mapped_orders[] = {1, 3, 4, 6, 7, 8, 11, 12, 15};

kernel_call pack_call(const reorder_rule& rule, std::size_t groups, bytes row, bool with_alpha) {
    kernel_call call;
    call.sources = {std::move(row)};
    call.destination_sizes = {groups * rule.colour_bytes,
                              with_alpha && rule.map.alpha >= 0 ? groups * rule.sample_bytes : 0};
    call.run = [=](cpu_features features, const std::uint8_t* const* in, std::uint8_t* const* out) {
        row_kernels_for(features).pack(rule, in[0], groups, out[0], with_alpha ? out[1] : nullptr);
    };
    return call;
}

kernel_call unpack_call(const reorder_rule& rule, std::size_t groups, bytes colour, bytes alpha) {
    kernel_call call;
    call.sources = {std::move(colour), std::move(alpha)};
    call.destination_sizes = {groups * rule.group_bytes};
    call.run = [=](cpu_features features, const std::uint8_t* const* in, std::uint8_t* const* out) {
        row_kernels_for(features).unpack(rule, in[0], in[1], groups, out[0]);
    };
    return call;
}

TEST(row_kernels, pack_equals_scalar_on_every_length_alignment_and_order) {
    test::random_source random(1);
    for (const std::uint32_t order : k_mapped_orders) {
        for (const unsigned sample_bytes : {1u, 2u, 4u}) {
            const reorder_rule rule = make_reorder_rule(traits_of_order(order).map, sample_bytes);
            for (const std::size_t groups : row_lengths(rule.group_bytes)) {
                const bytes row = random.content(groups * rule.group_bytes);
                test::expect_same_as_scalar(pack_call(rule, groups, row, true));
                test::expect_same_as_scalar(pack_call(rule, groups, row, false));
                ASSERT_FALSE(HasFailure()) << "order " << order << ", bytes " << sample_bytes << ", groups " << groups;
            }
        }
    }
}

TEST(row_kernels, unpack_equals_scalar_on_every_length_alignment_and_order) {
    test::random_source random(2);
    for (const std::uint32_t order : k_mapped_orders) {
        for (const unsigned sample_bytes : {1u, 2u, 4u}) {
            const reorder_rule rule = make_reorder_rule(traits_of_order(order).map, sample_bytes);
            for (const std::size_t groups : row_lengths(rule.group_bytes)) {
                const std::size_t alpha_bytes = rule.map.alpha >= 0 ? groups * sample_bytes : 0;
                test::expect_same_as_scalar(
                    unpack_call(rule, groups, random.content(groups * rule.colour_bytes), random.content(alpha_bytes)));
                ASSERT_FALSE(HasFailure()) << "order " << order << ", bytes " << sample_bytes << ", groups " << groups;
            }
        }
    }
}

TEST(row_kernels, unpack_undoes_pack) {
    test::random_source random(3);
    for (const std::uint32_t order : k_mapped_orders) {
        for (const unsigned sample_bytes : {1u, 2u, 4u}) {
            const reorder_rule rule = make_reorder_rule(traits_of_order(order).map, sample_bytes);
            const std::size_t groups = 37;
            const bytes row = random.content(groups * rule.group_bytes);
            const auto packed = test::scalar_result(pack_call(rule, groups, row, true));
            EXPECT_EQ(test::scalar_result(unpack_call(rule, groups, packed[0], packed[1]))[0], row)
                << "order " << order << ", bytes " << sample_bytes;
        }
    }
}

// Samples that lose or gain their low bits on the way.
struct fused_kernels {
    const char* name;
    void (*row_kernels::*pack)(const reorder_rule&, const std::uint8_t*, std::size_t, std::uint8_t*, std::uint8_t*);
    void (*row_kernels::*unpack)(const reorder_rule&, const std::uint8_t*, const std::uint8_t*, std::size_t,
                                 std::uint8_t*);
    std::size_t in_a_byte;
};

const fused_kernels k_fused_kernels[] = {
    {"10 bits", &row_kernels::pack_narrow_10, &row_kernels::widen_unpack_10, 4},
    {"12 bits", &row_kernels::pack_narrow_12, &row_kernels::widen_unpack_12, 2},
};

TEST(row_kernels, reordering_and_narrowing_at_once_equal_scalar_on_every_length_alignment_and_order) {
    test::random_source random(6);
    for (const std::uint32_t order : k_mapped_orders) {
        const reorder_rule rule = make_reorder_rule(traits_of_order(order).map, 2);
        for (const fused_kernels& kernels : k_fused_kernels) {
            for (const std::size_t groups : row_lengths(rule.group_bytes, 2 * k_longest)) {
                const std::size_t samples = groups * rule.map.colours;
                const std::size_t lows = (samples + kernels.in_a_byte - 1) / kernels.in_a_byte;
                kernel_call call;
                call.sources = {random.content(groups * rule.group_bytes)};
                call.destination_sizes = {samples, lows};
                call.run = [=](cpu_features features, const std::uint8_t* const* in, std::uint8_t* const* out) {
                    (row_kernels_for(features).*kernels.pack)(rule, in[0], groups, out[0], out[1]);
                };
                test::expect_same_as_scalar(call);
                if (rule.map.alpha < 0) {
                    kernel_call back;
                    back.sources = {random.content(samples), random.content(lows)};
                    back.destination_sizes = {groups * rule.group_bytes};
                    back.run = [=](cpu_features features, const std::uint8_t* const* in, std::uint8_t* const* out) {
                        (row_kernels_for(features).*kernels.unpack)(rule, in[0], in[1], groups, out[0]);
                    };
                    test::expect_same_as_scalar(back);
                }
                ASSERT_FALSE(HasFailure()) << kernels.name << ", order " << order << ", groups " << groups;
            }
        }
    }
}

// Rows longer than the tiles in which low bits are collected.
TEST(row_kernels, reordering_and_narrowing_at_once_equal_both_steps_on_long_rows) {
    test::random_source random(7);
    const row_kernels& scalar_kernels = row_kernels_for(cpu_scalar);
    for (const std::uint32_t order : k_mapped_orders) {
        const reorder_rule rule = make_reorder_rule(traits_of_order(order).map, 2);
        for (const std::size_t groups : {383u, 384u, 385u, 1920u, 2047u}) {
            const std::size_t samples = groups * rule.map.colours;
            const bytes row = random.content(groups * rule.group_bytes);
            bytes words(2 * samples);
            scalar_kernels.pack(rule, row.data(), groups, words.data(), nullptr);
            bytes high(samples);
            bytes low((samples + 3) / 4);
            scalar_kernels.narrow_10(words.data(), samples, high.data(), low.data());
            for (const cpu_features features : test::feature_levels()) {
                bytes fused_high(high.size());
                bytes fused_low(low.size());
                row_kernels_for(features).pack_narrow_10(rule, row.data(), groups, fused_high.data(), fused_low.data());
                EXPECT_EQ(fused_high, high) << "order " << order << ", groups " << groups << ", features " << features;
                EXPECT_EQ(fused_low, low) << "order " << order << ", groups " << groups << ", features " << features;
            }
        }
    }
}

using narrow_kernel = void (*row_kernels::*)(const std::uint8_t*, std::size_t, std::uint8_t*, std::uint8_t*);
using widen_kernel = void (*row_kernels::*)(const std::uint8_t*, const std::uint8_t*, std::size_t, std::uint8_t*);

struct width_kernels {
    const char* name;
    narrow_kernel narrow;
    widen_kernel widen;
    // Sizes for a count of samples (of pixels in packed rows).
    std::size_t (*word_bytes)(std::size_t);
    std::size_t (*high_bytes)(std::size_t);
    std::size_t (*low_bytes)(std::size_t);
};

const width_kernels k_width_kernels[] = {
    {"10 bits", &row_kernels::narrow_10, &row_kernels::widen_10, [](std::size_t n) { return 2 * n; },
     [](std::size_t n) { return n; }, [](std::size_t n) { return (n + 3) / 4; }},
    {"12 bits", &row_kernels::narrow_12, &row_kernels::widen_12, [](std::size_t n) { return 2 * n; },
     [](std::size_t n) { return n; }, [](std::size_t n) { return (n + 1) / 2; }},
    {"10 bits packed", &row_kernels::narrow_10_packed, &row_kernels::widen_10_packed,
     [](std::size_t n) { return (n + 5) / 6 * 16; }, [](std::size_t n) { return n / 2 * 4; },
     [](std::size_t n) { return n / 2; }},
};

kernel_call narrow_call(const width_kernels& kernels, std::size_t count, bytes words) {
    kernel_call call;
    call.sources = {std::move(words)};
    call.destination_sizes = {kernels.high_bytes(count), kernels.low_bytes(count)};
    call.run = [=](cpu_features features, const std::uint8_t* const* in, std::uint8_t* const* out) {
        (row_kernels_for(features).*kernels.narrow)(in[0], count, out[0], out[1]);
    };
    return call;
}

kernel_call widen_call(const width_kernels& kernels, std::size_t count, bytes high, bytes low) {
    kernel_call call;
    call.sources = {std::move(high), std::move(low)};
    call.destination_sizes = {kernels.word_bytes(count)};
    call.run = [=](cpu_features features, const std::uint8_t* const* in, std::uint8_t* const* out) {
        (row_kernels_for(features).*kernels.widen)(in[0], in[1], count, out[0]);
    };
    return call;
}

TEST(row_kernels, narrow_and_widen_equal_scalar_on_every_length_and_alignment) {
    test::random_source random(4);
    for (const width_kernels& kernels : k_width_kernels) {
        for (const std::size_t count : row_lengths(1)) {
            test::expect_same_as_scalar(narrow_call(kernels, count, random.content(kernels.word_bytes(count))));
            test::expect_same_as_scalar(widen_call(kernels, count, random.content(kernels.high_bytes(count)),
                                                   random.content(kernels.low_bytes(count))));
            ASSERT_FALSE(HasFailure()) << kernels.name << ", count " << count;
        }
    }
}

TEST(row_kernels, ten_bits_are_split_into_high_bytes_and_low_bits_of_four_samples) {
    // Samples 0x3ff, 0x000, 0x155, 0x2aa and one more, 0x201, in the top ten bits; the low six bits are not stored.
    const bytes words = from_hex("ff ff  3f 00  7f 55  80 aa  40 80");
    const auto stored = test::scalar_result(narrow_call(k_width_kernels[0], 5, words));
    EXPECT_EQ(stored[0], from_hex("ff 00 55 aa 80"));
    EXPECT_EQ(stored[1], from_hex("93 01"));  // 10 01 00 11, 01
    const auto widened = test::scalar_result(widen_call(k_width_kernels[0], 5, stored[0], stored[1]));
    EXPECT_EQ(widened[0], from_hex("c0 ff  00 00  40 55  80 aa  40 80"));
}

TEST(row_kernels, twelve_bits_are_split_into_high_bytes_and_nibbles_of_two_samples) {
    const bytes words = from_hex("1f ab  2f cd  3f ef");
    const auto stored = test::scalar_result(narrow_call(k_width_kernels[1], 3, words));
    EXPECT_EQ(stored[0], from_hex("ab cd ef"));
    EXPECT_EQ(stored[1], from_hex("21 03"));
    const auto widened = test::scalar_result(widen_call(k_width_kernels[1], 3, stored[0], stored[1]));
    EXPECT_EQ(widened[0], from_hex("10 ab  20 cd  30 ef"));
}

// Samples 0 to 11 hold 4 i + (i mod 4), three to a word at bits 0, 10 and 20, bits 30 and 31 set.
bytes packed_group() {
    bytes row;
    for (std::uint32_t word = 0; word < 4; ++word) {
        std::uint32_t value = 0xc0000000;
        for (std::uint32_t j = 0; j < 3; ++j) {
            const std::uint32_t sample = word * 3 + j;
            value |= (sample * 4 + sample % 4) << (10 * j);
        }
        row = row + test::le32(value);
    }
    return row;
}

TEST(row_kernels, packed_ten_bits_keep_word_order_and_drop_the_two_spare_bits) {
    const auto stored = test::scalar_result(narrow_call(k_width_kernels[2], 6, packed_group()));
    EXPECT_EQ(stored[0], from_hex("00 01 02 03 04 05 06 07 08 09 0a 0b"));
    EXPECT_EQ(stored[1], from_hex("e4 e4 e4"));  // 11 10 01 00 each
    bytes expected = packed_group();
    for (std::size_t i = 3; i < expected.size(); i += 4) {
        expected[i] &= 0x3f;
    }
    EXPECT_EQ(test::scalar_result(widen_call(k_width_kernels[2], 6, stored[0], stored[1]))[0], expected);
}

TEST(row_kernels, a_packed_tail_of_two_and_four_pixels_takes_one_and_two_low_bytes) {
    for (const std::size_t width : {2u, 3u}) {  // an odd last pixel is left out
        const auto stored = test::scalar_result(narrow_call(k_width_kernels[2], width, packed_group()));
        EXPECT_EQ(stored[0], from_hex("00 01 02 03"));
        EXPECT_EQ(stored[1], from_hex("e4"));
        EXPECT_EQ(test::scalar_result(widen_call(k_width_kernels[2], width, stored[0], stored[1]))[0],
                  from_hex("00 14 a0 00  0f 00 00 00  00 00 00 00  00 00 00 00"));
    }
    for (const std::size_t width : {4u, 5u}) {
        const auto stored = test::scalar_result(narrow_call(k_width_kernels[2], width, packed_group()));
        EXPECT_EQ(stored[0], from_hex("00 01 02 03 04 05 06 07"));
        EXPECT_EQ(stored[1], from_hex("e4 e4"));
        EXPECT_EQ(test::scalar_result(widen_call(k_width_kernels[2], width, stored[0], stored[1]))[0],
                  from_hex("00 14 a0 00  0f 40 50 01  1a 7c 00 00  00 00 00 00"));
    }
    EXPECT_TRUE(test::scalar_result(narrow_call(k_width_kernels[2], 1, packed_group()))[0].empty());
}

kernel_call float_call(std::size_t count, bytes words) {
    kernel_call call;
    call.sources = {std::move(words)};
    call.destination_sizes = {4 * count};
    call.run = [=](cpu_features features, const std::uint8_t* const* in, std::uint8_t* const* out) {
        row_kernels_for(features).fixed_to_float(in[0], count, out[0]);
    };
    return call;
}

TEST(row_kernels, fixed_point_becomes_float) {
    // 1, -1, 0, the least and the largest.
    EXPECT_EQ(test::scalar_result(float_call(5, from_hex("00 40  00 c0  00 00  00 80  ff 7f")))[0],
              from_hex("00 00 80 3f  00 00 80 bf  00 00 00 00  00 00 00 c0  00 fe ff 3f"));
    test::random_source random(5);
    for (const std::size_t count : row_lengths(1)) {
        test::expect_same_as_scalar(float_call(count, random.content(2 * count)));
        ASSERT_FALSE(HasFailure()) << "count " << count;
    }
}

TEST(row_kernels, the_best_table_that_the_features_allow_is_taken) {
    EXPECT_EQ(&row_kernels_for(cpu_scalar), &k_scalar_kernels);
    EXPECT_EQ(&row_kernels_for(cpu_ssse3), &k_ssse3_kernels);
    EXPECT_EQ(&row_kernels_for(static_cast<cpu_features>(cpu_ssse3 | cpu_avx2)), &k_avx2_kernels);
    EXPECT_EQ(&row_kernels_for(static_cast<cpu_features>(cpu_ssse3 | cpu_avx2 | cpu_avx512)), &k_avx512_kernels);
    EXPECT_EQ(k_scalar_kernels.pack, scalar::pack);
    EXPECT_EQ(k_scalar_kernels.widen_12, scalar::widen_12);
}

}  // namespace
