// SPDX-License-Identifier: BSD-3-Clause
//
// Caller strides: the least ones, wider ones, ones that are too small, and the order of the checks on them.
#include <gtest/gtest.h>

#include <string>

#include "codec.h"

namespace {

using namespace test;

struct stride_row {
    uint32_t order;
    uint32_t type;
    uint32_t width;
    uint32_t height;
    uint32_t least;   // rowBytes
    uint32_t least2;  // rowBytes2, 0 where it means nothing
};

const stride_row k_stride_rows[] = {
    {1, 1, 4, 2, 8, 0},   {1, 2, 4, 2, 16, 0},  {1, 7, 4, 2, 32, 0},  {2, 1, 4, 2, 8, 0},    {2, 3, 4, 2, 16, 0},
    {2, 5, 8, 2, 32, 0},  {2, 5, 6, 2, 16, 0},  {2, 5, 2, 2, 16, 0},  {2, 214, 4, 2, 16, 0}, {3, 1, 3, 2, 12, 0},
    {4, 2, 3, 2, 24, 0},  {5, 1, 3, 2, 9, 0},   {6, 6, 3, 2, 18, 0},  {7, 7, 3, 2, 48, 0},   {8, 4, 3, 2, 24, 0},
    {9, 7, 3, 2, 36, 0},  {10, 1, 4, 2, 4, 2},  {10, 2, 4, 2, 8, 4},  {10, 7, 6, 2, 24, 12}, {11, 1, 4, 2, 12, 0},
    {11, 6, 4, 2, 24, 0}, {12, 1, 3, 2, 12, 0}, {13, 1, 6, 2, 6, 3},  {13, 3, 6, 2, 12, 6},  {14, 1, 5, 2, 5, 0},
    {14, 2, 5, 2, 10, 0}, {15, 1, 4, 2, 8, 4},  {15, 2, 4, 2, 16, 8}, {16, 1, 4, 2, 8, 4},   {16, 7, 4, 2, 32, 16},
};

std::string too_small(const char* field, uint32_t least) {
    return std::string(field) + " is too small, it should be at least " + std::to_string(least) +
           " according to uncompressed params";
}

TEST(encoder_strides, one_byte_less_than_the_least_stride_is_refused) {
    for (const stride_row& row : k_stride_rows) {
        SCOPED_TRACE(testing::Message() << "order " << row.order << ", type " << row.type);
        const frame_params up = frame_record(row.order, row.type, row.width, row.height, row.least - 1);
        expect_failure(encode(up, raw_alpha(), repeat(0, 1024), 2048), too_small("rowBytes", row.least));
        const frame_params smallest = frame_record(row.order, row.type, row.width, row.height, 1);
        expect_failure(encode(smallest, raw_alpha(), repeat(0, 1024), 2048), too_small("rowBytes", row.least));
    }
}

TEST(encoder_strides, one_byte_less_than_the_least_second_stride_is_refused) {
    for (const stride_row& row : k_stride_rows) {
        if (row.least2 == 0) {
            continue;
        }
        SCOPED_TRACE(testing::Message() << "order " << row.order << ", type " << row.type);
        const frame_params up = frame_record(row.order, row.type, row.width, row.height, 0, row.least2 - 1);
        expect_failure(encode(up, raw_alpha(), repeat(0, 1024), 2048), too_small("rowBytes2", row.least2));
        const frame_params both =
            frame_record(row.order, row.type, row.width, row.height, row.least - 1, row.least2 - 1);
        expect_failure(encode(both, raw_alpha(), repeat(0, 1024), 2048), too_small("rowBytes", row.least));
    }
}

TEST(encoder_strides, the_least_strides_and_zero_give_the_same_stream) {
    for (const stride_row& row : k_stride_rows) {
        SCOPED_TRACE(testing::Message() << "order " << row.order << ", type " << row.type);
        const bytes src = counting(1024);
        const outcome by_zero =
            encode(frame_record(row.order, row.type, row.width, row.height), raw_alpha(), src, 2048);
        const outcome by_least = encode(frame_record(row.order, row.type, row.width, row.height, row.least, row.least2),
                                        raw_alpha(), src, 2048);
        expect_success(by_zero);
        expect_success(by_least);
        EXPECT_EQ(to_hex(by_least.frame()), to_hex(by_zero.frame()));
    }
}

TEST(encoder_strides, the_second_stride_is_not_looked_at_in_other_orders) {
    for (const stride_row& row : k_stride_rows) {
        if (row.least2 != 0) {
            continue;
        }
        SCOPED_TRACE(testing::Message() << "order " << row.order << ", type " << row.type);
        const frame_params up = frame_record(row.order, row.type, row.width, row.height, 0, 1);
        expect_success(encode(up, raw_alpha(), repeat(0, 1024), 2048));
    }
}

TEST(encoder_strides, the_stride_check_comes_before_the_source_size) {
    expect_failure(encode(frame_record(5, 1, 3, 2, 8), raw_alpha(), bytes{}, 0), too_small("rowBytes", 9));
    expect_failure(encode(frame_record(15, 1, 4, 2, 8, 3), raw_alpha(), bytes{}, 0), too_small("rowBytes2", 4));
}

TEST(encoder_strides, the_needed_stride_is_printed_beyond_32_bits) {
    expect_failure(encode(frame_record(7, 7, 0xffffffffu, 1, 1), raw_alpha(), bytes{}, 0),
                   "rowBytes is too small, it should be at least 68719476720 according to uncompressed params");
}

TEST(encoder_strides, bytes_between_rows_of_an_interleaved_frame_are_skipped) {
    expect_bytes(encode(frame_record(6, 1, 2, 2, 8), raw_alpha(), from_hex("010203 040506 eeee 070809 0a0b0c eeee")),
                 "31000000 'pack' 15000000 'sinf' 02000000 02000000 'rg08' 00 "
                 "14000000 'sdat' 030201 060504 090807 0c0b0a");
}

TEST(encoder_strides, bytes_between_rows_of_a_frame_that_needs_no_reordering_are_skipped) {
    expect_bytes(encode(frame_record(9, 1, 2, 2, 7), raw_alpha(), from_hex("010203 040506 ee 070809 0a0b0c ee")),
                 "31000000 'pack' 15000000 'sinf' 02000000 02000000 'y408' 00 "
                 "14000000 'sdat' 010203 040506 070809 0a0b0c");
}

TEST(encoder_strides, an_odd_stride_of_16_bit_samples_is_fine) {
    expect_bytes(
        encode(frame_record(1, 2, 2, 2, 9), raw_alpha(), from_hex("0101 0202 0303 0404 ee 0505 0606 0707 0808 ee")),
        "35000000 'pack' 15000000 'sinf' 02000000 02000000 'y216' 00 "
        "18000000 'sdat' 0202 0101 0404 0303 0606 0505 0808 0707");
}

TEST(encoder_strides, ten_bit_rows_with_padding_are_narrowed_row_by_row) {
    // Samples 0x3ff, 0x001, 0x155, 0x2aa, 0x0ff, 0x300 in the top ten bits; the low six bits are dropped.
    expect_bytes(encode(frame_record(5, 3, 2, 2, 14), raw_alpha(),
                        from_hex("ffff 7f00 4055 8faa c03f 00c0 eeee 0000 0000 0000 0000 0000 c000 eeee")),
                 "35000000 'pack' 15000000 'sinf' 02000000 02000000 'rg10' 00 "
                 "18000000 'sdat' ff0055aa3fc0 9703 000000000000 000c");
}

TEST(encoder_strides, planar_strides_of_luma_and_chroma_are_independent) {
    expect_bytes(encode(frame_record(10, 1, 4, 4, 6, 3), raw_alpha(),
                        from_hex("01020304 eeee 05060708 eeee 090a0b0c eeee 0d0e0f10 eeee "
                                 "2122 ee 2324 ee 3132 ee 3334 ee")),
                 "8f000000 'pack' "
                 "35000000 'icmp' 15000000 'sinf' 04000000 04000000 ' y08' 00 "
                 "18000000 'sdat' 01020304 05060708 090a0b0c 0d0e0f10 "
                 "29000000 'icmp' 15000000 'sinf' 02000000 02000000 'cb08' 00 0c000000 'sdat' 21222324 "
                 "29000000 'icmp' 15000000 'sinf' 02000000 02000000 'cr08' 00 0c000000 'sdat' 31323334");
}

TEST(encoder_strides, planar_alpha_uses_the_luma_stride) {
    expect_bytes(
        encode(frame_record(13, 1, 2, 2, 3, 2), raw_alpha(), from_hex("0102 ee 0304 ee 05 ee 06 ee 0708 ee 090a ee")),
        "a6000000 'pack' "
        "29000000 'icmp' 15000000 'sinf' 02000000 02000000 ' y08' 00 0c000000 'sdat' 01020304 "
        "26000000 'icmp' 15000000 'sinf' 01000000 01000000 'cb08' 00 09000000 'sdat' 05 "
        "26000000 'icmp' 15000000 'sinf' 01000000 01000000 'cr08' 00 09000000 'sdat' 06 "
        "29000000 'icmp' 15000000 'sinf' 02000000 02000000 ' a08' 00 0c000000 'sdat' 0708090a");
}

TEST(encoder_strides, separate_alpha_uses_the_second_stride) {
    expect_bytes(
        encode(frame_record(15, 1, 2, 2, 5, 3), raw_alpha(), from_hex("01020304 ee 05060708 ee 1112 ee 1314 ee")),
        "5e000000 'pack' "
        "2d000000 'icmp' 15000000 'sinf' 02000000 02000000 'y208' 00 10000000 'sdat' 02010403 06050807 "
        "29000000 'icmp' 15000000 'sinf' 02000000 02000000 ' a08' 00 0c000000 'sdat' 11121314");
}

TEST(encoder_strides, alpha_alone_with_padding) {
    expect_bytes(encode(frame_record(14, 2, 2, 2, 6), raw_alpha(), from_hex("01020304 eeee 05060708 eeee")),
                 "2d000000 'pack' 15000000 'sinf' 02000000 02000000 ' a16' 00 10000000 'sdat' 0102030405060708");
}

TEST(encoder_strides, packed_ten_bit_rows_with_padding) {
    // Samples 1 to 12 in four words, then a padding word.
    expect_bytes(
        encode(frame_record(2, 5, 6, 1, 20), raw_alpha(), from_hex("01083000 04146000 07209000 0a2cc000 eeeeeeee")),
        "34000000 'pack' 15000000 'sinf' 06000000 01000000 'y210' 00 "
        "17000000 'sdat' 000000 01010101 02020202 03 393939");
}

}  // namespace
