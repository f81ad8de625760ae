// SPDX-License-Identifier: BSD-3-Clause
//
// Decoding slices by every instruction set against looking closely at every token.
#include <gtest/gtest.h>

#include <algorithm>

#include "guarded_buffer.h"
#include "kernel_harness.h"
#include "random_source.h"
#include "rle/slice_decoder.h"
#include "rle/slice_encoder.h"

namespace {

using test::bytes;

// One row, decoded between inaccessible pages, and how it went; the samples only where it went well.
template <class Sample>
struct decoded_row {
    decoded_row(const bytes& payload, std::uint32_t samples)
        : source(payload),
          out(samples * sizeof(Sample)),
          slice{source.data(), source.size(), {out.data(), samples, 1, samples * sizeof(Sample)}, slice_result::ok} {}
    bytes samples() const { return slice.result == slice_result::ok ? out.copy() : bytes{}; }

    test::guarded_buffer source;
    test::guarded_buffer out;
    coded_slice slice;
};

// Alone, and together with another.
template <class Sample>
void expect_same_at_every_level(const bytes& payload, const bytes& other, std::uint32_t samples) {
    decoded_row<Sample> expected(payload, samples);
    decode_slices<Sample>(&expected.slice, 1, rle_kernels_for(cpu_scalar));
    decoded_row<Sample> expected_other(other, samples);
    decode_slices<Sample>(&expected_other.slice, 1, rle_kernels_for(cpu_scalar));
    for (const cpu_features features : test::feature_levels()) {
        decoded_row<Sample> alone(payload, samples);
        decode_slices<Sample>(&alone.slice, 1, rle_kernels_for(features));
        ASSERT_EQ(alone.slice.result, expected.slice.result) << features;
        ASSERT_EQ(alone.samples(), expected.samples()) << features;

        decoded_row<Sample> first(payload, samples);
        decoded_row<Sample> second(other, samples);
        coded_slice both[] = {first.slice, second.slice};
        decode_slices<Sample>(both, 2, rle_kernels_for(features));
        first.slice.result = both[0].result;
        second.slice.result = both[1].result;
        ASSERT_EQ(first.slice.result, expected.slice.result) << features;
        ASSERT_EQ(first.samples(), expected.samples()) << features;
        ASSERT_EQ(second.slice.result, expected_other.slice.result) << features;
        ASSERT_EQ(second.samples(), expected_other.samples()) << features;
    }
}

// Levels, slopes, bends, steps and noise, of every length.
template <class Sample>
bytes drawn(test::random_source& random, std::size_t samples) {
    bytes plane;
    Sample value = 0;
    while (plane.size() < samples * sizeof(Sample)) {
        const auto bend = static_cast<Sample>(random.below(3) == 0 ? random.below(5) - 2 : 0);
        auto slope = static_cast<Sample>(random.below(2) == 0 ? 0 : random.next() >> (64 - 1 - random.below(16)));
        const bool noisy = random.below(4) == 0;
        for (unsigned i = random.below(random.below(4) == 0 ? 900 : 40); i > 0; --i) {
            value = static_cast<Sample>(value + slope + (noisy ? random.below(4) : 0));
            slope = static_cast<Sample>(slope + bend);
            const auto* const first = reinterpret_cast<const std::uint8_t*>(&value);
            plane.insert(plane.end(), first, first + sizeof value);
        }
    }
    plane.resize(samples * sizeof(Sample));
    return plane;
}

template <class Sample>
bytes coded(const bytes& plane, cpu_features features) {
    const auto samples = static_cast<std::uint32_t>(plane.size() / sizeof(Sample));
    bytes out(plane.size() * 3 + 16);
    out.resize(encode_slice<Sample>({plane.data(), samples, 1, plane.size()}, out.data(), out.size(),
                                    rle_kernels_for(features)));
    return out;
}

template <class Sample>
void check_drawn_slices() {
    test::random_source random(40 + sizeof(Sample));
    bytes other = coded<Sample>(drawn<Sample>(random, 3000), cpu_scalar);
    for (int round = 0; round < 60; ++round) {
        const bytes plane = drawn<Sample>(random, 3000);
        const bytes payload = coded<Sample>(plane, cpu_scalar);
        for (const cpu_features features : test::feature_levels()) {
            ASSERT_EQ(coded<Sample>(plane, features), payload) << features;
        }
        decoded_row<Sample> back(payload, 3000);
        decode_slices<Sample>(&back.slice, 1, rle_kernels_for(detected_cpu_features()));
        ASSERT_EQ(back.slice.result, slice_result::ok);
        ASSERT_EQ(back.samples(), plane);
        expect_same_at_every_level<Sample>(payload, other, 3000);
        // Too many samples in the payload, and too few.
        expect_same_at_every_level<Sample>(payload, other, 2000 + random.below(990));
        const auto cut = static_cast<std::ptrdiff_t>(random.below(static_cast<std::uint32_t>(payload.size())));
        expect_same_at_every_level<Sample>(bytes(payload.begin(), payload.begin() + cut), other, 3000);
        expect_same_at_every_level<Sample>(other, bytes(payload.begin(), payload.begin() + cut), 3000);
        ASSERT_FALSE(testing::Test::HasFailure()) << "round " << round;
        other = payload;
    }
}

TEST(slice_levels, decode_what_was_encoded_alone_and_together) {
    check_drawn_slices<std::uint8_t>();
    check_drawn_slices<std::uint16_t>();
}

// Bits at random, with zeros and ones in different shares: tokens that no encoder writes.
template <class Sample>
void check_random_bits() {
    test::random_source random(50 + sizeof(Sample));
    for (int round = 0; round < 400; ++round) {
        bytes payloads[2];
        for (bytes& payload : payloads) {
            payload = random.content(1 + random.below(600));
            const unsigned shape = random.below(4);
            for (std::uint8_t& byte : payload) {
                const auto other = static_cast<std::uint8_t>(random.next());
                byte = static_cast<std::uint8_t>(shape == 0 ? byte & other : shape == 1 ? byte | other : byte);
                byte = shape == 2 && other < 100 ? 0 : byte;
            }
        }
        expect_same_at_every_level<Sample>(payloads[0], payloads[1], 1 + random.below(5000));
        ASSERT_FALSE(testing::Test::HasFailure()) << "round " << round;
    }
}

TEST(slice_levels, decode_random_bits_alike) {
    check_random_bits<std::uint8_t>();
    check_random_bits<std::uint16_t>();
}

}  // namespace
