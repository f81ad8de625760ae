// SPDX-License-Identifier: BSD-3-Clause
#include "rle/index_table.h"

#include <gtest/gtest.h>

#include <vector>

#include "rle/rle_params.h"
#include "rle_testing.h"

namespace {

using test::bytes;
using test::from_bits;
using test::from_hex;
using test::message_of;
using test::operator+;
using values = std::vector<std::uint32_t>;

bytes written(const values& sizes, const values& rows) {
    bytes table(k_largest_index_table);
    table.resize(write_index_table(sizes.data(), rows.data(), sizes.size(), table.data(), table.size()));
    return table;
}

index_table read(const bytes& payload) {
    index_table table;
    read_index_table(payload.data(), payload.size(), table);
    return table;
}

values first(const std::array<std::uint32_t, k_most_slices>& all, std::size_t count) {
    return values(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(count));
}

TEST(index_table, one_slice_of_6_bytes_and_2_rows_takes_8_bytes) {
    EXPECT_EQ(written({6}, {2}), from_hex("01 bf ff fc 6f ff ff 90"));
}

TEST(index_table, equal_differences_share_a_group) {
    // 8388607 three times: one group of three, difference 0, in Rice form.
    EXPECT_EQ(written({8388607, 8388607, 8388607}, {8388607, 8388608, 8388609}), from_bits("00000011"
                                                                                           "011 1 0 0000000000"
                                                                                           "1 1 0 0000000000"
                                                                                           "010 1 0 0000000010"));
}

TEST(index_table, rice_form_ends_at_13311_and_the_raw_form_begins) {
    // 13310 = 2 x 6655 and 13312 = 2 x 6656; odd codes come from negative differences: 13311 = 2 x 6656 - 1.
    EXPECT_EQ(written({8388607 - 6656}, {8388607}), from_bits("00000001"
                                                              "1 1 1111111111110 1111111111"
                                                              "1 1 0 0000000000"));
    EXPECT_EQ(written({8388607 + 6656}, {8388607}), from_bits("00000001"
                                                              "1 0 000000000011010000000000"
                                                              "1 1 0 0000000000"));
}

TEST(index_table, values_within_24_bits_of_their_neighbour_come_back) {
    for (const values& sizes : {values{0}, values{16777214}, values{1, 2, 3, 4, 5}, values{7, 7, 7, 100000, 7},
                                values{0, 8388607, 0, 8388607}, values(255, 12345)}) {
        const values rows(sizes.size(), 3);
        const bytes table = written(sizes, rows);
        const index_table back = read(table);
        ASSERT_EQ(back.slices, sizes.size());
        EXPECT_EQ(first(back.sizes, sizes.size()), sizes);
        EXPECT_EQ(first(back.rows, rows.size()), rows);
        EXPECT_EQ(back.bytes, table.size());
    }
}

TEST(index_table, a_difference_is_wrapped_once_when_written_and_never_when_read) {
    // 16777215 is 8388608 above the predictor: written as the difference -8388608, read back as -1.
    const index_table back = read(written({16777215}, {1}));
    EXPECT_EQ(back.sizes[0], 0xffffffffu);
}

TEST(index_table, a_difference_past_24_bits_is_out_of_range) {
    EXPECT_EQ(message_of<out_of_range>([] { written({8388607 + 0x1800000}, {1}); }),
              "values greater than 24bit is not supported by rle index table");
    EXPECT_EQ(message_of<out_of_range>([] { written({0x80000000}, {1}); }),
              "values greater than 24bit is not supported by rle index table");
}

TEST(index_table, of_300_slices_only_the_low_8_bits_of_the_count_and_44_values_are_written) {
    const values sizes(300, 8388607);
    const bytes table = written(sizes, sizes);
    EXPECT_EQ(table[0], 44);
    EXPECT_EQ(table, from_bits("00101100"
                               "00000101100 1 0 0000000000"
                               "00000101100 1 0 0000000000"));
}

TEST(index_table, the_largest_table_fits_its_bound) {
    EXPECT_EQ(k_largest_index_table, 1659u);
    values sizes;
    for (std::uint32_t i = 0; i < 255; ++i) {
        sizes.push_back(i % 2 == 0 ? 0 : 16000 + i);  // every difference another, and raw
    }
    EXPECT_LE(written(sizes, sizes).size(), 1659u);
}

TEST(index_table, an_empty_payload_is_too_short) {
    EXPECT_EQ(message_of<invalid_argument>([] { read({}); }), "rle payload is too short");
}

TEST(index_table, a_table_that_ends_early_is_too_short_wherever_it_is_cut) {
    const bytes table = written({6, 100, 20}, {1, 2, 3});
    for (std::size_t size = 0; size < table.size(); ++size) {
        EXPECT_EQ(message_of<invalid_argument>(
                      [&] { read(bytes(table.begin(), table.begin() + static_cast<std::ptrdiff_t>(size))); }),
                  "rle payload is too short")
            << size << " of " << table.size();
    }
}

TEST(index_table, a_group_past_the_last_value_is_malformed) {
    // Two slices, a group of three sizes.
    EXPECT_EQ(message_of<invalid_argument>([] { read(from_bits("00000010 011 1 0 0000000000")); }),
              "rle index table is malformed");
    // The sizes are complete; a group of two row counts for the one slice.
    EXPECT_EQ(message_of<invalid_argument>([] { read(from_bits("00000001 1 1 0 0000000000 010 1 0 0000000000")); }),
              "rle index table is malformed");
}

TEST(index_table, a_group_that_is_both_too_long_and_cut_short_is_too_short) {
    EXPECT_EQ(message_of<invalid_argument>([] { read(from_bits("00000001 011 0 0000")); }), "rle payload is too short");
}

TEST(index_table, a_table_of_zeros_ends_with_the_payload) {
    EXPECT_EQ(message_of<invalid_argument>([] { read(bytes{1} + bytes(1000, 0)); }), "rle payload is too short");
}

TEST(index_table, a_table_of_ones_ends_with_the_payload) {
    EXPECT_EQ(message_of<invalid_argument>([] { read(bytes(1000, 0xff)); }), "rle payload is too short");
}

TEST(index_table, zero_slices_take_one_byte) {
    const index_table table = read(bytes{0, 0xff, 0xff});
    EXPECT_EQ(table.slices, 0u);
    EXPECT_EQ(table.bytes, 1u);
}

}  // namespace
