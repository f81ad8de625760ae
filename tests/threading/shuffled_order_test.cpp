// SPDX-License-Identifier: BSD-3-Clause
//
// No task relies on another one of its batch: run one by one in any order, they give the same bytes and messages.
#include <gtest/gtest.h>

#include "frame_trip.h"
#include "shuffled_executor.h"

namespace {

constexpr std::uint32_t k_seeds = 12;
constexpr std::uint32_t k_width = 38, k_rows = 33;

// One row a chunk, and chunks of a few rows.
class shuffled_order : public testing::TestWithParam<std::uint32_t> {
  protected:
    void expect_for(const frame_case& what) {
        SCOPED_TRACE(testing::PrintToString(what));
        frame_trip trip(what);
        ASSERT_EQ(trip.encode(in_order_.encoder), 0u);
        const frame_trip::bytes stream = trip.stream();
        const std::uint32_t decoded = trip.decode(in_order_.decoder);
        const frame_trip::bytes came_back = trip.came_back();
        for (std::uint32_t seed = 1; seed <= k_seeds; ++seed) {
            shuffled::seed(seed);
            ASSERT_EQ(trip.encode(with_.encoder), 0u) << seed;
            ASSERT_EQ(trip.stream(), stream) << seed;
            EXPECT_GT(shuffled::tasks_run(), 1u);
            EXPECT_GT(shuffled::tasks_out_of_order(), 0u) << seed;
            ASSERT_EQ(trip.decode(with_.decoder), decoded) << seed;
            ASSERT_TRUE(decoded != 0 || trip.came_back() == came_back) << seed;
        }
    }

    handle_pair in_order_{1};
    handle_pair with_{GetParam()};
};

TEST_P(shuffled_order, gives_the_same_bytes_of_all_pairs) {
    const std::vector<frame_case> pairs = all_pairs(k_width, k_rows, 2 * k_rows);
    EXPECT_EQ(pairs.size(), 106u);
    for (const frame_case& pair : pairs) {
        expect_for(pair);
    }
}

TEST_P(shuffled_order, gives_the_same_bytes_of_coded_alpha) {
    for (const std::uint32_t order : {3u, 4u, 7u, 8u, 11u, 12u, 13u, 14u, 15u, 16u}) {
        for (const std::uint32_t type : {1u, 2u}) {
            for (const int slices : {7, 33}) {
                expect_for({order, type, static_cast<std::uint8_t>(slices), carried::alone, k_width,
                            order == 13 ? 2 * k_rows : k_rows});
            }
        }
    }
    expect_for({14, 1, 33, carried::beside_a_compressed_frame, k_width, k_rows});
}

TEST_P(shuffled_order, reports_the_first_slice_that_fails) {
    std::uint8_t plane[5] = {};
    for (std::uint32_t seed = 1; seed <= 200; ++seed) {
        shuffled::seed(seed);
        with_.reports = 0;
        EXPECT_EQ(QVRUncompressed_DecodeFrame(with_.decoder, &k_frame_of_broken_slices, k_two_broken_slices.data(),
                                              k_two_broken_slices.size(), plane, 5, nullptr),
                  1u);
        EXPECT_EQ(with_.reports, 1);
        EXPECT_STREQ(with_.message, "rle run exceeds slice") << seed;
        EXPECT_EQ(shuffled::tasks_run(), 5u);
    }
}

INSTANTIATE_TEST_SUITE_P(chunks, shuffled_order, testing::Values(7u, k_rows));

}  // namespace
