// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include "guarded_buffer.h"
#include "rle/index_table.h"
#include "rle_testing.h"

namespace {

using test::bytes;
using test::decoded;
using test::from_bits;
using test::from_hex;
using test::message_of;
using test::operator+;

// A payload whose table names these sizes and row counts.
bytes payload(const std::vector<std::uint32_t>& sizes, const std::vector<std::uint32_t>& rows, const bytes& slices) {
    bytes table(k_largest_index_table);
    table.resize(write_index_table(sizes.data(), rows.data(), sizes.size(), table.data(), table.size()));
    return table + slices;
}

// Slices of one constant run of the starting value.
const char* const k_one_sample = "0 1 1 0 00";
const char* const k_four_samples = "0 00100 1 0 00";

std::string refusal(const rle_params& params, const bytes& source, unsigned workers = 0) {
    return message_of<invalid_argument>([&] { decoded(params, source, workers); });
}

TEST(threaded_rle_decoder, decodes_the_worked_example_and_returns_8) {
    EXPECT_EQ(decoded(test::k_example, test::example_payload()), test::example_plane());
}

TEST(threaded_rle_decoder, the_slice_count_of_the_parameters_is_not_looked_at) {
    for (const std::uint32_t slices : {0u, 2u, 255u}) {
        EXPECT_EQ(decoded({4, 2, 8, slices, 0}, test::example_payload()), test::example_plane());
    }
}

TEST(threaded_rle_decoder, rows_are_spread_and_the_padding_keeps_what_the_compact_rows_left) {
    EXPECT_EQ(decoded({4, 2, 8, 0, 6}, test::example_payload(), 0, 0xcc),
              from_hex("00 01 02 03 00 01  00 01 02 03 cc cc"));
}

TEST(threaded_rle_decoder, each_slice_spreads_its_own_rows) {
    const bytes source = test::coded({4, 4, 8, 2, 0}, test::example_plane() + test::example_plane());
    EXPECT_EQ(decoded({4, 4, 8, 0, 6}, source, 0, 0xcc),
              from_hex("00 01 02 03 00 01  00 01 02 03 cc cc  00 01 02 03 00 01  00 01 02 03 cc cc"));
}

TEST(threaded_rle_decoder, checks_run_in_order) {
    threaded_executor executor(0);
    const threaded_rle_decoder decoder(executor);
    bytes out(8);
    const bytes source = test::example_payload();
    const auto decode = [&](const rle_params& params, const void* src, void* dst, unsigned long dst_size) {
        return message_of<invalid_argument>([&] { decoder.decode_frame(params, src, source.size(), dst, dst_size); });
    };
    EXPECT_EQ(decode({0, 0, 8, 0, 0}, nullptr, nullptr, 0), "Invalid width");
    EXPECT_EQ(decode({4, 0, 8, 0, 0}, nullptr, nullptr, 0), "Invalid height");
    EXPECT_EQ(decode({4, 2, 10, 0, 0}, nullptr, nullptr, 0), "only 8, and 16 bitdepth supported");
    EXPECT_EQ(decode({4, 2, 8, 0, 3}, nullptr, nullptr, 0),
              "row_bytes is too small, it should be at least 4 according to params");
    EXPECT_EQ(decode(test::k_example, nullptr, out.data(), 8), "src and buffers required to be non-null");
    EXPECT_EQ(decode(test::k_example, source.data(), nullptr, 8), "src and buffers required to be non-null");
    EXPECT_EQ(decode(test::k_example, source.data(), out.data(), 7), "dst buffer is too small according to metadata");
}

TEST(threaded_rle_decoder, a_table_of_zero_slices_leaves_the_plane_alone_with_and_without_threads) {
    for (const unsigned workers : {0u, 2u}) {
        EXPECT_EQ(decoded({4, 2, 8, 0, 0}, {0}, workers, 0xcc), bytes(8, 0xcc));
        EXPECT_EQ(decoded({4, 2, 8, 0, 0}, {0}, workers, 0xcc, threaded_rle_decoder::uncovered::clear), bytes(8, 0));
    }
}

TEST(threaded_rle_decoder, fewer_rows_than_the_plane_leave_the_rest_alone) {
    const bytes source = payload({2}, {1}, from_bits(k_four_samples));
    for (const unsigned workers : {0u, 2u}) {
        EXPECT_EQ(decoded({4, 2, 8, 0, 0}, source, workers, 0xcc), from_hex("7f7f7f7f cccccccc"));
        EXPECT_EQ(decoded({4, 2, 8, 0, 0}, source, workers, 0xcc, threaded_rle_decoder::uncovered::clear),
                  from_hex("7f7f7f7f 00000000"));
    }
}

TEST(threaded_rle_decoder, more_rows_than_the_plane_are_refused) {
    EXPECT_EQ(refusal({1, 2, 8, 0, 0}, payload({1}, {3}, bytes(9))), "rle index table is malformed");
    EXPECT_EQ(refusal({1, 2, 8, 0, 0}, payload({1, 1}, {1, 2}, bytes(9))), "rle index table is malformed");
    // Two counts whose sum passes 32 bits: 8388607, then 2^32 - 1 by wrapping.
    EXPECT_EQ(refusal({1, 2, 8, 0, 0}, payload({1, 1}, {8388607, 16777215}, bytes(9))), "rle index table is malformed");
}

TEST(threaded_rle_decoder, a_slice_that_starts_past_the_payload_is_refused_even_without_rows) {
    EXPECT_EQ(refusal({1, 2, 8, 0, 0}, payload({100, 1}, {1, 0}, from_bits(k_one_sample))), "rle payload is too short");
    // One that starts at its very end, and has no rows, is not.
    EXPECT_EQ(decoded({1, 2, 8, 0, 0}, payload({1, 1}, {1, 0}, from_bits(k_one_sample)), 0, 0xcc), (bytes{127, 0xcc}));
}

TEST(threaded_rle_decoder, row_counts_are_looked_at_before_slice_starts) {
    EXPECT_EQ(refusal({1, 2, 8, 0, 0}, payload({100, 1}, {1, 2}, from_bits(k_one_sample))),
              "rle index table is malformed");
}

TEST(threaded_rle_decoder, a_slice_may_read_on_past_its_size_while_the_payload_lasts) {
    // The table says one byte; the run of four samples takes two.
    EXPECT_EQ(decoded({4, 1, 8, 0, 0}, payload({1}, {1}, from_bits(k_four_samples))), bytes(4, 127));
    // A size that has wrapped in the table names the one and only slice.
    EXPECT_EQ(decoded({4, 1, 8, 0, 0}, payload({16777215}, {1}, from_bits(k_four_samples))), bytes(4, 127));
}

TEST(threaded_rle_decoder, a_payload_that_ends_early_is_refused) {
    EXPECT_EQ(refusal({4, 1, 8, 0, 0}, payload({2}, {1}, bytes{from_bits(k_four_samples)[0]})),
              "rle payload is too short");
}

TEST(threaded_rle_decoder, a_run_past_the_slice_is_refused) {
    EXPECT_EQ(refusal({3, 1, 8, 0, 0}, payload({2}, {1}, from_bits(k_four_samples))), "rle run exceeds slice");
}

TEST(threaded_rle_decoder, of_several_bad_slices_the_first_is_reported_whatever_the_threads) {
    const bytes source = payload({2, 2}, {1, 1}, from_bits(k_four_samples));  // too long; and nothing left
    for (int i = 0; i < 50; ++i) {
        for (const unsigned workers : {0u, 2u, 3u}) {
            EXPECT_EQ(refusal({3, 2, 8, 0, 0}, source, workers), "rle run exceeds slice");
        }
    }
}

TEST(threaded_rle_decoder, slices_behind_one_that_failed_are_not_decoded) {
    // 255 slices of one row, each of which could read through the whole payload of empty runs.
    const bytes source =
        payload(std::vector<std::uint32_t>(255, 0), std::vector<std::uint32_t>(255, 1), bytes(1 << 20));
    for (const unsigned workers : {0u, 3u}) {
        EXPECT_EQ(refusal({1, 255, 8, 0, 0}, source, workers), "rle payload is too short");
    }
}

TEST(threaded_rle_decoder, every_cut_of_a_payload_stays_inside_it) {
    const bytes whole = test::coded({4, 2, 8, 2, 0}, test::example_plane());
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const test::guarded_buffer source(bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)));
        test::guarded_buffer out(8);
        threaded_executor executor(0);
        EXPECT_EQ(message_of<invalid_argument>([&] {
                      threaded_rle_decoder(executor).decode_frame({4, 2, 8, 0, 0}, source.data(), source.size(),
                                                                  out.data(), out.size());
                  }),
                  "rle payload is too short");
    }
}

TEST(threaded_rle_decoder, long_prefixes_of_16_bit_codes_are_read) {
    // 8 ones: 8 x 64 + 63 = 575, -288.
    const bytes source = payload({3}, {1}, from_bits("0 1 1 111111110 111111"));
    EXPECT_EQ(decoded({1, 1, 16, 0, 0}, source), from_hex("df 7e"));
    // Raw: 576, +288.
    EXPECT_EQ(decoded({1, 1, 16, 0, 0}, payload({3}, {1}, from_bits("0 1 0 0000001001000000"))), from_hex("1f 81"));
}

}  // namespace
