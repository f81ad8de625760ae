// SPDX-License-Identifier: BSD-3-Clause
//
// The same statuses, messages and bytes for each number of threads and each instruction set, for all that can be encoded.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "api/base/cpu_features.h"
#include "frame_trip.h"
#include "pixel/kernels/stream_copy.h"

namespace {

constexpr std::uint32_t k_thread_counts[] = {1, 2, 3, 5, 8, 16, 33};
constexpr cpu_features k_levels[] = {cpu_scalar, cpu_ssse3, static_cast<cpu_features>(cpu_ssse3 | cpu_avx2),
                                     static_cast<cpu_features>(~0u)};

// With 33 threads a chunk is one row; in two planes of a 4:2:0 frame two rows, in the others one.
constexpr std::uint32_t k_width = 134, k_rows = 33;

struct outcome {
    std::uint32_t encoded, decoded;
    frame_trip::bytes stream, came_back;
    std::string message;

    bool operator==(const outcome& other) const {
        return encoded == other.encoded && decoded == other.decoded && stream == other.stream &&
               came_back == other.came_back && message == other.message;
    }
};

outcome there_and_back(frame_trip& trip, handle_pair& with) {
    with.message[0] = 0;
    outcome result = {};
    result.encoded = trip.encode(with.encoder);
    result.stream = trip.stream();
    result.decoded = trip.decode(with.decoder);
    if (result.decoded == 0) {  // or else the bytes are unspecified
        result.came_back = trip.came_back();
    }
    result.message = with.message;
    return result;
}

class same_bytes : public testing::Test {
  protected:
    same_bytes() {
        for (const std::uint32_t threads : k_thread_counts) {
            handles_.push_back(std::make_unique<handle_pair>(threads));
        }
    }
    ~same_bytes() override { limit_cpu_features(static_cast<cpu_features>(~0u)); }

    // On one thread with the scalar kernels, then every other way; whether it could be decoded.
    bool expect_for(const frame_case& what) {
        SCOPED_TRACE(testing::PrintToString(what));
        frame_trip trip(what);
        limit_cpu_features(cpu_scalar);
        const outcome expected = there_and_back(trip, *handles_[0]);
        EXPECT_EQ(expected.encoded, 0u);
        for (const cpu_features level : k_levels) {
            limit_cpu_features(level);
            for (std::size_t i = 0; i < handles_.size(); ++i) {
                EXPECT_TRUE(there_and_back(trip, *handles_[i]) == expected)
                    << k_thread_counts[i] << " threads, instruction sets " << static_cast<int>(level);
            }
        }
        return expected.decoded == 0;
    }

    std::vector<std::unique_ptr<handle_pair>> handles_;
};

TEST_F(same_bytes, of_all_pairs_with_raw_alpha) {
    const std::vector<frame_case> pairs = all_pairs(k_width, k_rows, 2 * k_rows);
    EXPECT_EQ(pairs.size(), 106u);
    std::size_t decoded = 0;
    for (const frame_case& pair : pairs) {
        decoded += expect_for(pair) ? 1 : 0;
    }
    // Nine orders keep samples of alpha beside colour; five types have no place for them (one of the nine has four).
    EXPECT_EQ(decoded, 62u);
}

TEST_F(same_bytes, of_coded_alpha_in_few_and_many_slices) {
    for (const std::uint32_t order : {3u, 4u, 7u, 8u, 11u, 12u, 13u, 14u, 15u, 16u}) {
        for (const std::uint32_t type : {1u, 2u}) {
            for (const int slices : {1, 5, 33, 255}) {
                EXPECT_TRUE(expect_for({order, type, static_cast<std::uint8_t>(slices), carried::alone, k_width,
                                        order == 13 ? 2 * k_rows : k_rows}));
            }
        }
    }
}

// Planes that the caches hold are copied in another way than those that they do not hold.
TEST_F(same_bytes, of_planes_past_the_caches) {
    assume_cache_size(0);
    for (const std::uint32_t order : {2u, 5u, 9u, 10u, 13u, 14u, 16u}) {
        for (const std::uint32_t type : {1u, 2u}) {
            EXPECT_TRUE(expect_for({order, type, 0, carried::alone, k_width, 2 * k_rows}));
        }
    }
    assume_cache_size(~std::uint64_t{0});
    EXPECT_TRUE(expect_for({5, 1, 0, carried::alone, k_width, 2 * k_rows}));
}

// Past the caches a long row is stored some thousand bytes after the other.
TEST_F(same_bytes, of_long_rows_past_the_caches) {
    constexpr std::uint32_t k_long = 12300;
    std::vector<frame_case> frames = all_pairs(k_long, 2, 2);
    for (const std::uint32_t type : {1u, 2u}) {
        for (const std::uint32_t order : {3u, 11u, 13u, 16u}) {
            frames.push_back({order, type, 5, carried::alone, k_long, 2});
        }
    }
    for (const frame_case& what : frames) {
        SCOPED_TRACE(testing::PrintToString(what));
        frame_trip trip(what);
        limit_cpu_features(cpu_scalar);
        assume_cache_size(~std::uint64_t{0});
        const outcome expected = there_and_back(trip, *handles_[0]);
        EXPECT_EQ(expected.encoded, 0u);
        assume_cache_size(0);
        for (const cpu_features level : k_levels) {
            limit_cpu_features(level);
            for (const std::size_t i : {0u, 1u}) {
                EXPECT_TRUE(there_and_back(trip, *handles_[i]) == expected)
                    << k_thread_counts[i] << " threads, instruction sets " << static_cast<int>(level);
            }
        }
    }
}

TEST_F(same_bytes, of_wrapped_payloads) {
    for (const std::uint32_t type : {1u, 2u}) {
        for (const int slices : {0, 5, 33}) {
            EXPECT_TRUE(expect_for(
                {14, type, static_cast<std::uint8_t>(slices), carried::beside_a_compressed_frame, k_width, k_rows}));
        }
    }
    EXPECT_TRUE(expect_for({14, 1, 0, carried::as_stitched_tiles, k_width, k_rows}));
}

}  // namespace
