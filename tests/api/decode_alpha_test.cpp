// SPDX-License-Identifier: BSD-3-Clause
//
// Run-length coded alpha planes from outside: padding, odd but valid payloads, and payloads that are refused.
#include <gtest/gtest.h>

#include <string>

#include "box_builder.h"
#include "codec.h"

namespace {

using namespace test;

constexpr const char* k_short = "rle payload is too short";
constexpr const char* k_table = "rle index table is malformed";
constexpr const char* k_run = "rle run exceeds slice";

// Two rows of 0, 1, 2, 3 in one slice: an index table of 8 bytes and 6 bytes of tokens.
const bytes k_worked = from_hex("01bffffc6fffff90 dfad54396aa0");

bytes alpha_frame(uint32_t width, uint32_t height, const bytes& payload) {
    return single_plane(width, height, "rl08", payload);
}

// Each payload goes the serial and the pooled way.
class coded_alpha_decoding : public testing::TestWithParam<uint32_t> {
  protected:
    outcome decode_alpha(uint32_t width, uint32_t height, const bytes& payload, uint32_t row_bytes = 0) {
        return decode(decoder_, frame_record(14, 1, width, height, row_bytes), alpha_frame(width, height, payload));
    }
    outcome decode_payload(const char* hex) { return decode_alpha(4, 2, from_hex(hex)); }

    decoder decoder_{GetParam()};
};

TEST_P(coded_alpha_decoding, of_the_worked_payload) {
    const outcome result = decode_alpha(4, 2, k_worked);
    expect_bytes(result, "00010203 00010203");
    EXPECT_EQ(result.written, 8u);
}

TEST_P(coded_alpha_decoding, spreads_rows_and_leaves_the_compact_layout_in_the_padding) {
    expect_bytes(decode_alpha(4, 2, k_worked, 6), "00010203 0001 00010203 cccc");
    expect_bytes(decode_alpha(4, 2, k_worked, 9), "00010203 00010203 cc 00010203 cccccccccc");
    expect_bytes(decode_alpha(4, 2, k_worked, 4), "00010203 00010203");
}

TEST_P(coded_alpha_decoding, spreads_three_rows_from_the_last_to_the_second) {
    expect_bytes(decode_alpha(4, 3, from_hex("01bffffa 6fffff70 dfad5461 86aa30c3 5500"), 6),
                 "00010203 1011 10111213 2223 20212223 cccc");
}

TEST_P(coded_alpha_decoding, of_one_row_a_slice_writes_no_padding) {
    const bytes payload = from_hex("02bffffd 70017fff fde000") + from_hex("dfad5400 dbad5400");
    expect_bytes(decode_alpha(4, 2, payload, 6), "00010203 cccc 10111213 cccc");
}

TEST_P(coded_alpha_decoding, of_planar_frames_uses_the_luma_stride) {
    const bytes stream = pack(component(4, 2, " y08", counting(8, 0x51)) + component(2, 1, "cb08", {0x21, 0x22}) +
                              component(2, 1, "cr08", {0x31, 0x32}) + component(4, 2, "rl08", k_worked));
    expect_bytes(decode(decoder_, frame_record(13, 1, 4, 2, 6, 3), stream),
                 "51525354 cccc 55565758 cccc 2122 cc 3132 cc 00010203 0001 00010203 cccc");
}

TEST_P(coded_alpha_decoding, of_separate_planes_uses_the_second_stride) {
    const bytes stream = pack(component(4, 2, "y208", counting(16, 0x51)) + component(4, 2, "rl08", k_worked));
    expect_bytes(decode(decoder_, frame_record(16, 1, 4, 2, 9, 6), stream),
                 "5152535455565758 cc 595a5b5c5d5e5f60 cc 00010203 0001 00010203 cccc");
    expect_bytes(decode(decoder_, frame_record(15, 1, 4, 2, 9, 6), stream),
                 "5251545356555857 cc 5a595c5b5e5d605f cc 00010203 0001 00010203 cccc");
}

TEST_P(coded_alpha_decoding, into_interleaved_pixels_leaves_row_padding_alone) {
    const bytes stream = pack(component(4, 2, "rg08", counting(24, 0x11)) + component(4, 2, "rl08", k_worked));
    expect_bytes(decode(decoder_, frame_record(7, 1, 4, 2, 18), stream),
                 "111213 00 141516 01 171819 02 1a1b1c 03 cccc 1d1e1f 00 202122 01 232425 02 262728 03 cccc");
}

TEST_P(coded_alpha_decoding, takes_8_and_9_one_bits_as_the_longest_prefix) {
    const frame_params up = frame_record(14, 2, 1, 1);
    expect_bytes(decode(decoder_, up, single_plane(1, 1, "rl16", from_hex("01bffffd efffffb0 7fefc0"))), "df7e");
    expect_bytes(decode(decoder_, up, single_plane(1, 1, "rl16", from_hex("01bffffd efffffb0 7fffc0"))), "df7e");
    expect_bytes(decode_alpha(1, 1, from_hex("01bffffe 6fffffb0 7ff4")), "6e");
}

TEST_P(coded_alpha_decoding, of_a_token_with_an_unwanted_raw_value) {
    // A residual of 2 written in 8 raw bits: an encoder would use a prefix.
    expect_bytes(decode_alpha(1, 1, from_hex("01bffffe 6fffffb0") + from_bits("0 1 0 00000010")), "80");
}

TEST_P(coded_alpha_decoding, ignores_the_size_of_a_single_slice) {
    expect_bytes(decode_payload("01bffffe efffff90 dfad54396aa0"), "0001020300010203");
    expect_bytes(decode_payload("01bfffff 6fffff90 dfad54396aa0"), "0001020300010203");
    expect_bytes(decode_payload("01bfffcd 6fffff90 dfad54396aa0"), "0001020300010203");
}

TEST_P(coded_alpha_decoding, ignores_bytes_behind_the_last_slice) {
    expect_bytes(decode_alpha(4, 2, k_worked + repeat(0xff, 50)), "0001020300010203");
}

TEST_P(coded_alpha_decoding, finds_slices_by_the_sizes_of_those_before) {
    // One spare byte between the two slices.
    expect_bytes(decode_alpha(4, 2, from_hex("02bffffc f0037fff fde000 dfad5400 ee dbad5400")), "00010203 10111213");
}

TEST_P(coded_alpha_decoding, of_a_slice_without_rows) {
    expect_bytes(decode_alpha(4, 1, from_hex("02bffffd 700f7fff fde004 dfad5400")), "00010203");
}

TEST_P(coded_alpha_decoding, of_a_payload_that_declares_more_than_the_source_holds) {
    const bytes children = sinf(4, 2, "rl08") + box_with_size("sdat", 0xffffffffu, k_worked);
    expect_bytes(decode(decoder_, frame_record(14, 1, 4, 2), pack(children)), "0001020300010203");
    // The payload may go on behind the end of the frame.
    const bytes cut = box_with_size("pack", 38, children);
    expect_bytes(decode(decoder_, frame_record(14, 1, 4, 2), cut), "0001020300010203");
}

TEST_P(coded_alpha_decoding, ends_where_the_payload_ends_though_the_source_goes_on) {
    const bytes children = sinf(4, 2, "rl08") + box_with_size("sdat", 21, k_worked);
    expect_failure(decode(decoder_, frame_record(14, 1, 4, 2), pack(children)), k_short);
}

TEST_P(coded_alpha_decoding, of_no_slices_writes_nothing) {
    const outcome result = decode_payload("00");
    expect_success(result);
    EXPECT_EQ(result.written, 8u);
    EXPECT_EQ(result.data, repeat(k_fill, 8));
    expect_bytes(decode_payload("00 ffffffff ffffffff"), "cccccccc cccccccc");
}

TEST_P(coded_alpha_decoding, of_fewer_rows_than_the_height_leaves_the_rest_untouched) {
    expect_bytes(decode_payload("01bffffc efffffb0 dfad5400"), "00010203 cccccccc");
    expect_bytes(decode_alpha(4, 3, from_hex("02bffffd 70017fff fde000 dfad5400 dbad5400")),
                 "00010203 10111213 cccccccc");
}

TEST_P(coded_alpha_decoding, into_pixels_reads_uncovered_rows_as_zero) {
    const auto frame = [](const bytes& payload) {
        return pack(component(4, 2, "rg08", counting(24, 0x11)) + component(4, 2, "rl08", payload));
    };
    const frame_params up = frame_record(7, 1, 4, 2);
    // An earlier frame leaves its alpha behind in the handle.
    expect_success(decode(decoder_, up, frame(k_worked)));
    expect_bytes(decode(decoder_, up, frame({0})),
                 "11121300 14151600 17181900 1a1b1c00 1d1e1f00 20212200 23242500 26272800");
    expect_success(decode(decoder_, up, frame(k_worked)));
    expect_bytes(decode(decoder_, up, frame(from_hex("01bffffc efffffb0 dfad5400"))),
                 "11121300 14151601 17181902 1a1b1c03 1d1e1f00 20212200 23242500 26272800");
}

TEST_P(coded_alpha_decoding, of_an_empty_run_goes_on) {
    expect_bytes(decode_payload("01bffff7 efffff90 00000000 00000000 237eb550 e5aa80"), "00010203 00010203");
}

TEST_P(coded_alpha_decoding, of_empty_runs_alone_ends_with_the_payload) {
    expect_failure(decode_alpha(4, 2, from_hex("01bffffc 6fffff90") + repeat(0, 1000)), k_short);
}

TEST_P(coded_alpha_decoding, refuses_a_slice_that_is_cut_off) {
    for (size_t size = 8; size < k_worked.size(); ++size) {
        SCOPED_TRACE(size);
        expect_failure(
            decode_alpha(4, 2, bytes(k_worked.begin(), k_worked.begin() + static_cast<std::ptrdiff_t>(size))), k_short);
    }
}

TEST_P(coded_alpha_decoding, refuses_an_index_table_that_is_cut_off) {
    for (size_t size = 1; size < 8; ++size) {
        SCOPED_TRACE(size);
        expect_failure(
            decode_alpha(4, 2, bytes(k_worked.begin(), k_worked.begin() + static_cast<std::ptrdiff_t>(size))), k_short);
    }
    expect_failure(decode_payload("ff"), k_short);
}

TEST_P(coded_alpha_decoding, refuses_a_group_past_the_last_value) {
    // Two sizes, or two row counts, where there is one slice.
    expect_failure(decode_payload("014fffff 10ffffff ffffffff"), k_table);
    expect_failure(decode_payload("01bffffc 53ffffe4 dfad5439 6aa0"), k_table);
}

TEST_P(coded_alpha_decoding, refuses_more_rows_than_the_height) {
    expect_failure(decode_payload("01bffffc 6fffff70 dfad5439 6aa0"), k_table);
    expect_failure(decode_payload("02bffffd 70017fff fde008 dfad5400 dfad5439 6aa0"), k_table);
    expect_failure(decode_alpha(4, 1, k_worked), k_table);
}

TEST_P(coded_alpha_decoding, refuses_a_slice_that_starts_past_the_payload) {
    expect_failure(decode_payload("02bffe0b 7bc7bfff fef000 dfad5400 dbad5400"), k_short);
}

TEST_P(coded_alpha_decoding, adds_rows_and_sizes_up_without_wrapping) {
    // 2^32 - 1 rows and 3 rows would be 2 rows in 32 bits.
    expect_failure(decode_payload("02bffffd 70017fff ffe020 dfad5400 dbad5400"), k_table);
    // The first slice is said to be 2^32 - 1 bytes long.
    expect_failure(decode_payload("02bfffff f0017fff fde000 dfad5400 dbad5400"), k_short);
}

TEST_P(coded_alpha_decoding, refuses_a_run_past_the_last_sample) {
    expect_bytes(decode_payload("01bffffc 6fffff90 0880"), "7f7f7f7f 7f7f7f7f");
    expect_failure(decode_payload("01bffffc 6fffff90 0980"), k_run);
    // A slice of one row may not run into the next.
    expect_failure(decode_payload("02bffffd 70017fff fde000 16000000 12000000"), k_run);
}

TEST_P(coded_alpha_decoding, refuses_no_width_and_no_height) {
    expect_failure(decode_alpha(0, 2, k_worked), "Invalid width");
    expect_failure(decode_alpha(2, 0, k_worked), "Invalid height");
    expect_failure(decode_alpha(0, 0, k_worked), "Invalid width");
}

TEST_P(coded_alpha_decoding, works_again_after_a_failure) {
    expect_failure(decode_payload("01bffffc 6fffff90 0980"), k_run);
    expect_bytes(decode_alpha(4, 2, k_worked), "00010203 00010203");
}

INSTANTIATE_TEST_SUITE_P(threads, coded_alpha_decoding, testing::Values(1u, 2u, 3u, 8u),
                         testing::PrintToStringParamName());

}  // namespace
