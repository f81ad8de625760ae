// SPDX-License-Identifier: BSD-3-Clause
//
// The kernels of the alpha coder: samples into runs, runs into tokens.
#include <gtest/gtest.h>

#include <cstring>

#include "bytes.h"
#include "kernel_harness.h"
#include "random_source.h"
#include "rle/bit_writer.h"
#include "rle/kernels/rle_kernels.h"

namespace {

using test::bytes;
using test::kernel_call;

// The result in two destinations: samples looked at and runs found; and the runs.
template <class Sample>
kernel_call find_call(bytes samples, std::uint32_t symbol) {
    const std::size_t count = samples.size() / sizeof(Sample) - 2;
    kernel_call call;
    call.sources = {std::move(samples)};
    call.source_margins = {2 * sizeof(Sample)};
    call.destination_sizes = {8, 8 * std::min<std::size_t>(count, k_run_capacity)};
    call.run = [count, symbol](cpu_features features, const std::uint8_t* const* in, std::uint8_t* const* out) {
        run_list runs;
        const auto done =
            find_runs<Sample>(rle_kernels_for(features))(in[0], static_cast<std::uint32_t>(count), symbol, runs);
        std::memcpy(out[0], &done, 4);
        std::memcpy(out[0] + 4, &runs.count, 4);
        std::memset(out[1], 0, 8 * std::min<std::size_t>(count, k_run_capacity));
        std::memcpy(out[1], runs.starts, 4 * runs.count);
        std::memcpy(out[1] + 4 * runs.count, runs.symbols, 4 * runs.count);
    };
    return call;
}

template <class Sample>
constexpr std::uint32_t k_second_order = 1u << (8 * sizeof(Sample));

template <class Sample>
void check_find_against_scalar() {
    test::random_source random(sizeof(Sample));
    for (const std::size_t count : {1u, 2u, 31u, 63u, 64u, 65u, 127u, 128u, 200u, 400u}) {
        const std::size_t size = (2 + count) * sizeof(Sample);
        for (const std::uint32_t symbol : {k_no_symbol, 0u, 5u, k_second_order<Sample>}) {
            test::expect_same_as_scalar(find_call<Sample>(random.content(size), symbol));
            test::expect_same_as_scalar(find_call<Sample>(random.runs(size), symbol));
            // Extremes, where differences wrap round.
            bytes extremes = random.content(size);
            for (std::uint8_t& byte : extremes) {
                byte = static_cast<std::uint8_t>(byte % 3 == 0 ? 0x00 : byte % 3 == 1 ? 0xff : 0x80);
            }
            test::expect_same_as_scalar(find_call<Sample>(extremes, symbol));
        }
        ASSERT_FALSE(testing::Test::HasFailure()) << count << " samples";
    }
}

TEST(find_runs, eight_bit_samples_equal_scalar_at_every_alignment) {
    check_find_against_scalar<std::uint8_t>();
}

TEST(find_runs, sixteen_bit_samples_equal_scalar_at_every_alignment) {
    check_find_against_scalar<std::uint16_t>();
}

template <class Sample>
struct found {
    std::uint32_t done;
    run_list runs;
};

template <class Sample>
found<Sample> find(const std::vector<Sample>& samples, std::uint32_t symbol, cpu_features features) {
    found<Sample> result;
    result.done = find_runs<Sample>(rle_kernels_for(features))(
        reinterpret_cast<const std::uint8_t*>(samples.data() + 2), static_cast<std::uint32_t>(samples.size() - 2),
        symbol, result.runs);
    return result;
}

using values = std::vector<std::uint32_t>;

values starts_of(const run_list& runs) {
    return values(runs.starts, runs.starts + runs.count);
}
values symbols_of(const run_list& runs) {
    return values(runs.symbols, runs.symbols + runs.count);
}

template <class Sample>
void expect_all_levels_equal_scalar(const std::vector<Sample>& samples, std::uint32_t symbol) {
    const auto expected = find(samples, symbol, cpu_scalar);
    for (const cpu_features features : test::feature_levels()) {
        const auto result = find(samples, symbol, features);
        ASSERT_EQ(result.done, expected.done) << features;
        ASSERT_EQ(starts_of(result.runs), starts_of(expected.runs)) << features;
        ASSERT_EQ(symbols_of(result.runs), symbols_of(expected.runs)) << features;
    }
}

TEST(find_runs, every_pair_of_eight_bit_differences_equals_scalar) {
    for (unsigned first = 0; first < 256; ++first) {
        for (unsigned second = 0; second < 256; second += 32) {
            std::vector<std::uint8_t> samples = {0, 0};
            for (unsigned i = 0; i < 32; ++i) {
                samples.push_back(static_cast<std::uint8_t>(first));
                samples.push_back(static_cast<std::uint8_t>(first + second + i));
            }
            expect_all_levels_equal_scalar(samples, k_no_symbol);
            ASSERT_FALSE(testing::Test::HasFailure()) << first << ", " << second;
        }
    }
}

// A level or a slope of every step, then one sample that breaks it at every place: what is skipped in large strides.
template <class Sample>
void check_straight_lines() {
    for (const unsigned slope : {0u, 1u, 3u, 255u, 40000u}) {
        for (std::size_t length = 1; length < 700; length += length < 300 ? 1 : 37) {
            std::vector<Sample> samples;
            for (std::size_t i = 0; i < 2 + 700; ++i) {
                samples.push_back(static_cast<Sample>(i * slope));
            }
            samples[2 + length] = static_cast<Sample>(samples[2 + length] + 1);
            expect_all_levels_equal_scalar(samples, slope == 0 ? 0 : k_second_order<Sample>);
            expect_all_levels_equal_scalar(samples, 7);
            ASSERT_FALSE(testing::Test::HasFailure()) << "slope " << slope << ", length " << length;
        }
    }
}

TEST(find_runs, a_straight_line_ends_where_it_ends) {
    check_straight_lines<std::uint8_t>();
    check_straight_lines<std::uint16_t>();
}

TEST(find_runs, a_full_list_stops_at_a_block) {
    std::vector<std::uint8_t> samples;
    for (std::size_t i = 0; i < 2 + 1000; ++i) {
        samples.push_back(static_cast<std::uint8_t>(i % 2 == 0 ? 3 : 200));
    }
    // Every sample starts a run: 448 runs leave room for one block more, 512 for none.
    EXPECT_EQ(find(samples, k_no_symbol, cpu_scalar).done, 512u);
    expect_all_levels_equal_scalar(samples, k_no_symbol);
}

TEST(find_runs, the_most_samples_of_a_call) {
    std::vector<std::uint16_t> samples(2 + k_most_samples, 7);
    const auto none = find(samples, 0, cpu_scalar);
    EXPECT_EQ(none.done, 65536u);
    EXPECT_EQ(none.runs.count, 0u);
    expect_all_levels_equal_scalar(samples, 0);
    samples.back() = 8;
    const auto one = find(samples, 0, cpu_scalar);
    EXPECT_EQ(starts_of(one.runs), values{65535});
    expect_all_levels_equal_scalar(samples, 0);
}

TEST(find_runs, a_tie_goes_to_the_second_order) {
    const auto tie = find<std::uint8_t>({127, 127, 0}, k_no_symbol, cpu_scalar);
    EXPECT_EQ(symbols_of(tie.runs), values{256 + 253});  // 0 - 127 both ways: -127
}

TEST(find_runs, a_sample_equal_to_the_one_before_takes_the_first_order) {
    const auto level = find(std::vector<std::uint16_t>(2 + 100, 7), k_no_symbol, cpu_scalar);
    EXPECT_EQ(starts_of(level.runs), values{0});
    EXPECT_EQ(symbols_of(level.runs), values{0});
}

TEST(find_runs, a_ramp_is_one_run_of_second_order_zeros) {
    std::vector<std::uint8_t> samples;
    for (unsigned i = 0; i < 2 + 100; ++i) {
        samples.push_back(static_cast<std::uint8_t>(5 * i));
    }
    const auto ramp = find(samples, k_no_symbol, cpu_scalar);
    EXPECT_EQ(starts_of(ramp.runs), values{0});
    EXPECT_EQ(symbols_of(ramp.runs), values{256});
    EXPECT_EQ(find(samples, 256, cpu_scalar).runs.count, 0u);  // the run before goes on
}

TEST(find_runs, a_run_starts_where_order_or_code_differs) {
    std::vector<std::uint8_t> samples(2 + 64, 10);
    samples[2 + 5] = 11;  // +1: a tie; then -1, first order, and flat again
    const auto step = find(samples, k_no_symbol, cpu_scalar);
    EXPECT_EQ(starts_of(step.runs), (values{0, 5, 6, 7}));
    EXPECT_EQ(symbols_of(step.runs), (values{0, 256 + 2, 1, 0}));
}

// The bits of all tokens of a list but the last, whatever the pieces.
template <class Sample>
bytes assembled(const run_list& runs, cpu_features features) {
    piece_list pieces;
    assemble<Sample>(rle_kernels_for(features))(runs, pieces);
    bytes out(8 * k_run_capacity);
    bit_writer writer(out.data(), out.size());
    for (std::uint32_t i = 0; i < pieces.count; ++i) {
        EXPECT_GE(pieces.lengths[i], 1u);
        EXPECT_LE(pieces.lengths[i], k_longest_piece);
        EXPECT_EQ(pieces.bits[i] >> pieces.lengths[i], 0u);
        writer.write_short(pieces.bits[i], static_cast<unsigned>(pieces.lengths[i]));
    }
    out.resize(writer.finish());
    return out;
}

template <class Sample>
run_list list_of(const values& lengths, const values& symbols) {
    run_list runs;
    runs.count = 0;
    std::uint32_t start = 3;
    for (std::size_t i = 0; i < lengths.size(); ++i) {
        runs.starts[runs.count] = start;
        runs.symbols[runs.count++] = symbols[i];
        start += lengths[i];
    }
    return runs;
}

template <class Sample>
void expect_same_tokens(const run_list& runs) {
    const bytes expected = assembled<Sample>(runs, cpu_scalar);
    for (const cpu_features features : test::feature_levels()) {
        ASSERT_EQ(assembled<Sample>(runs, features), expected) << features;
    }
}

// Every symbol, with lengths that share a piece well, hardly, and not at all.
template <class Sample>
void check_every_symbol(std::uint32_t longest) {
    test::random_source random(longest);
    const std::uint32_t symbols = 2 * k_second_order<Sample>;
    for (std::uint32_t first = 0; first < symbols; first += k_run_capacity) {
        run_list runs;
        runs.count = k_run_capacity;
        std::uint32_t start = 0;
        for (std::uint32_t i = 0; i < k_run_capacity; ++i) {
            runs.starts[i] = start;
            runs.symbols[i] = first + i;
            start += 1 + random.below(longest);
        }
        expect_same_tokens<Sample>(runs);
        ASSERT_FALSE(testing::Test::HasFailure()) << "symbols from " << first;
    }
}

TEST(assemble, every_symbol_equals_scalar) {
    for (const std::uint32_t longest : {1u, 2u, 4u, 16u, 100u}) {
        check_every_symbol<std::uint8_t>(longest);
        check_every_symbol<std::uint16_t>(longest);
    }
}

TEST(assemble, every_length_equals_scalar) {
    for (std::uint32_t length = 1; length < k_most_samples; length += length < 5000 ? 1 : 411) {
        const values lengths = {1, 1, length, 1, 1, 1, 1, 1, 1, 1};
        expect_same_tokens<std::uint8_t>(list_of<std::uint8_t>(lengths, {1, 2, 256, 3, 4, 5, 6, 7, 8, 9}));
        expect_same_tokens<std::uint16_t>(list_of<std::uint16_t>(lengths, {1, 2, 0xffff, 3, 4, 5, 6, 7, 8, 9}));
        ASSERT_FALSE(testing::Test::HasFailure()) << length;
    }
}

TEST(assemble, every_count_equals_scalar) {
    for (std::uint32_t count = 1; count <= 40; ++count) {
        expect_same_tokens<std::uint8_t>(list_of<std::uint8_t>(values(count, 2), values(count, 258)));
        expect_same_tokens<std::uint16_t>(list_of<std::uint16_t>(values(count, 2), values(count, 258)));
    }
}

TEST(assemble, the_last_run_is_left_open) {
    EXPECT_EQ(assembled<std::uint8_t>(list_of<std::uint8_t>({9}, {0}), cpu_scalar), bytes{});
    // Seven samples, second order, +1; five, first order, -122 (243, raw).
    EXPECT_EQ(assembled<std::uint8_t>(list_of<std::uint8_t>({7, 5, 9}, {256 + 2, 243, 0}), cpu_scalar),
              test::from_bits("1 00111 1 0 10  0 00101 0 11110011"));
    EXPECT_EQ(assembled<std::uint16_t>(list_of<std::uint16_t>({1, 2, 9}, {65536 + 575, 576, 0}), cpu_scalar),
              test::from_bits("1 1 1 111111110 111111  0 010 0 0000001001000000"));
}

}  // namespace
