// The residual kernels of the alpha coder.
#include <gtest/gtest.h>

#include <cstring>

#include "bytes.h"
#include "kernel_harness.h"
#include "random_source.h"
#include "rle/kernels/residual_kernels.h"

namespace {

using test::bytes;
using test::kernel_call;

template <class Sample>
kernel_call residual_call(bytes samples) {
    kernel_call call;
    call.sources = {std::move(samples)};
    call.source_margins = {2 * sizeof(Sample)};
    call.destination_sizes = {16, k_residual_block * sizeof(Sample)};
    call.run = [](cpu_features features, const std::uint8_t* const* in, std::uint8_t* const* out) {
        residual_block<Sample> block;
        make_residual_kernels(features)(in[0], block);
        std::memcpy(out[0], &block.second_order, 8);
        std::memcpy(out[0] + 8, &block.changes, 8);
        std::memcpy(out[1], block.codes, sizeof block.codes);
    };
    return call;
}

template <class Sample>
constexpr std::size_t k_block_bytes = (2 + k_residual_block) * sizeof(Sample);

template <class Sample>
residual_block<Sample> scalar_block(const std::vector<Sample>& samples) {
    residual_block<Sample> block;
    make_residual_kernels(cpu_scalar)(reinterpret_cast<const std::uint8_t*>(samples.data() + 2), block);
    return block;
}

template <class Sample>
void check_against_scalar() {
    test::random_source random(sizeof(Sample));
    for (int round = 0; round < 40; ++round) {
        test::expect_same_as_scalar(residual_call<Sample>(random.content(k_block_bytes<Sample>)));
        test::expect_same_as_scalar(residual_call<Sample>(random.runs(k_block_bytes<Sample>)));
        // Extremes, where differences wrap round.
        bytes extremes = random.content(k_block_bytes<Sample>);
        for (std::uint8_t& byte : extremes) {
            byte = static_cast<std::uint8_t>(byte % 3 == 0 ? 0x00 : byte % 3 == 1 ? 0xff : 0x80);
        }
        test::expect_same_as_scalar(residual_call<Sample>(extremes));
        ASSERT_FALSE(testing::Test::HasFailure()) << "round " << round;
    }
}

TEST(residual_kernels, eight_bit_blocks_equal_scalar_at_every_alignment) {
    check_against_scalar<std::uint8_t>();
}

TEST(residual_kernels, sixteen_bit_blocks_equal_scalar_at_every_alignment) {
    check_against_scalar<std::uint16_t>();
}

TEST(residual_kernels, every_pair_of_eight_bit_differences_equals_scalar) {
    // All 65,536 pairs of neighbouring differences, 62 samples of a block at a time.
    for (unsigned first = 0; first < 256; ++first) {
        for (unsigned second = 0; second < 256; second += 32) {
            bytes samples = {0, 0};
            for (unsigned i = 0; i < 32; ++i) {
                samples.push_back(static_cast<std::uint8_t>(first));
                samples.push_back(static_cast<std::uint8_t>(first + second + i));
            }
            const kernel_call call = residual_call<std::uint8_t>(samples);
            const auto expected = test::scalar_result(call);
            for (const cpu_features features : test::feature_levels()) {
                bytes flags(16);
                bytes codes(k_residual_block);
                const std::uint8_t* in[] = {samples.data() + 2};
                std::uint8_t* out[] = {flags.data(), codes.data()};
                call.run(features, in, out);
                ASSERT_EQ(flags, expected[0]) << first << ", " << second;
                ASSERT_EQ(codes, expected[1]) << first << ", " << second;
            }
        }
    }
}

TEST(residual_kernels, a_tie_goes_to_the_second_order) {
    std::vector<std::uint8_t> samples(2 + k_residual_block, 0);
    samples[0] = samples[1] = 127;
    const auto block = scalar_block(samples);
    EXPECT_EQ(block.codes[0], 253);  // 0 - 127 both ways: -127
    EXPECT_EQ(block.second_order & 1, 1u);
}

TEST(residual_kernels, a_sample_equal_to_the_one_before_takes_the_first_order) {
    std::vector<std::uint16_t> samples(2 + k_residual_block, 7);
    const auto block = scalar_block(samples);
    EXPECT_EQ(block.second_order, 0u);
    EXPECT_EQ(block.changes, 0u);
    for (const std::uint16_t code : block.codes) {
        EXPECT_EQ(code, 0);
    }
}

TEST(residual_kernels, a_ramp_is_one_run_of_second_order_zeros) {
    std::vector<std::uint8_t> samples;
    for (unsigned i = 0; i < 2 + k_residual_block; ++i) {
        samples.push_back(static_cast<std::uint8_t>(5 * i));
    }
    const auto block = scalar_block(samples);
    EXPECT_EQ(block.second_order, ~std::uint64_t{0});
    EXPECT_EQ(block.changes, 0u);
    EXPECT_EQ(block.codes[63], 0);
}

TEST(residual_kernels, a_change_is_marked_where_order_or_code_differs) {
    std::vector<std::uint8_t> samples(2 + k_residual_block, 10);
    samples[2 + 5] = 11;  // +1 first order; then -1, and flat again
    const auto block = scalar_block(samples);
    EXPECT_EQ(block.codes[5], 2);
    EXPECT_EQ(block.codes[6], 1);
    EXPECT_EQ(block.changes, std::uint64_t{0b11100000});
}

}  // namespace
