// SPDX-License-Identifier: BSD-3-Clause
#include "rle/rle_params.h"

#include <gtest/gtest.h>

#include "rle_testing.h"

namespace {

using test::message_of;

std::string refusal(const rle_params& params) {
    return message_of<invalid_argument>([&] { validate(params); });
}

TEST(rle_params, are_checked_in_order) {
    EXPECT_EQ(refusal({0, 0, 9, 0, 1}), "Invalid width");
    EXPECT_EQ(refusal({1920, 0, 9, 0, 1}), "Invalid height");
    EXPECT_EQ(refusal({1920, 1, 9, 0, 1}), "only 8, and 16 bitdepth supported");
    EXPECT_EQ(refusal({1920, 1, 8, 0, 1}), "row_bytes is too small, it should be at least 1920 according to params");
    EXPECT_EQ(refusal({1920, 1, 16, 0, 3839}),
              "row_bytes is too small, it should be at least 3840 according to params");
    EXPECT_EQ(refusal({0xffffffff, 1, 16, 0, 1}),
              "row_bytes is too small, it should be at least 8589934590 according to params");
    EXPECT_NO_THROW(validate({1920, 1, 8, 0, 1920}));
    EXPECT_NO_THROW(validate({1920, 1, 16, 0, 0}));
}

TEST(rle_params, raw_plane_size_counts_the_stride) {
    EXPECT_EQ(raw_plane_size({4, 2, 8, 0, 0}), 8u);
    EXPECT_EQ(raw_plane_size({4, 2, 16, 0, 0}), 16u);
    EXPECT_EQ(raw_plane_size({4, 2, 8, 0, 6}), 12u);
    EXPECT_EQ(decimal(raw_plane_size({0xffffffff, 0xffffffff, 16, 0, 0})), "36893488130239234050");
}

TEST(rle_params, slices_are_16_unless_asked_and_never_more_than_rows) {
    EXPECT_EQ(slice_count({4, 100, 8, 0, 0}), 16u);
    EXPECT_EQ(slice_count({4, 100, 8, 3, 0}), 3u);
    EXPECT_EQ(slice_count({4, 2, 8, 0, 0}), 2u);
    EXPECT_EQ(slice_count({4, 2, 8, 255, 0}), 2u);
    EXPECT_EQ(slice_count({4, 0, 8, 0, 0}), 0u);
}

TEST(rle_params, worst_case_is_a_token_a_sample_behind_the_largest_table) {
    EXPECT_EQ(worst_case_slice_size({4, 2, 8, 1, 0}, 2), 11u);
    EXPECT_EQ(worst_case_slice_size({4, 2, 16, 1, 0}, 2), 19u);
    EXPECT_EQ(worst_case_payload_size({4, 2, 8, 1, 0}), 1659u + 11);
    EXPECT_EQ(worst_case_payload_size({4, 2, 8, 2, 0}), 1659u + 6 + 6);
    EXPECT_EQ(worst_case_payload_size({3, 10, 8, 4, 0}), 1659u + 13 + 13 + 9 + 9);
}

TEST(rle_params, the_worst_case_counts_samples_modulo_32_bits) {
    EXPECT_EQ(worst_case_slice_size({0x10001, 0x10000, 8, 1, 0}, 0x10000), (std::uint64_t{0x10000} * 11 + 7) / 8);
    EXPECT_EQ(worst_case_payload_size({0x80000000, 2, 8, 1, 0}), 1659u);
}

TEST(rle_params, a_plane_without_rows_or_columns_still_has_a_bound) {
    EXPECT_EQ(worst_case_payload_size({0, 5, 8, 0, 0}), 1659u);
    EXPECT_EQ(worst_case_payload_size({5, 0, 16, 0, 0}), 1659u);
}

}  // namespace
