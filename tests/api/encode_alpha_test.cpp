// SPDX-License-Identifier: BSD-3-Clause
//
// Run-length coded alpha planes: literal payloads, slices, strides and the coder's own refusals.
#include <gtest/gtest.h>

#include <string>

#include "box_builder.h"
#include "codec.h"
#include "guarded_buffer.h"

namespace {

using namespace test;

struct payload_row {
    const char* name;
    uint32_t type;
    uint32_t width;
    uint32_t height;
    uint8_t slices;
    const char* source;
    const char* payload;
};

void PrintTo(const payload_row& row, std::ostream* out) {
    *out << row.name;
}

const payload_row k_payload_rows[] = {
    {"two_equal_rows_of_a_ramp_make_six_tokens", 1, 4, 2, 1, "00010203 00010203", "01bffffc 6fffff90 dfad5439 6aa0"},
    {"one_constant_value_makes_two_tokens", 1, 4, 3, 1, "c8c8c8c8 c8c8c8c8 c8c8c8c8", "01bffffd efffff70 d24170"},
    {"the_start_value_127_makes_one_token", 1, 4, 3, 1, "7f7f7f7f 7f7f7f7f 7f7f7f7f", "01bffffe 6fffff70 0c80"},
    {"one_constant_16_bit_value_makes_two_tokens", 2, 3, 2, 1, "e803e803 e803e803 e803e803",
     "01bffffc efffff90 df05a2c0 00"},
    {"the_start_value_32767_makes_one_token", 2, 3, 2, 1, "ff7fff7f ff7fff7f ff7fff7f", "01bffffe 6fffff90 1a00"},
    {"ten_rows_in_four_slices_split_as_3_3_2_2", 1, 1, 10, 4, "05050505 05050505 0505",
     "04bffffd dc005fff fef800c0 0e0000de 6500de65 00de6c00 de6c00"},
    {"fewer_rows_than_slices_make_one_slice_a_row", 1, 1, 3, 200, "090909", "03bffffe 54005fff ff6a0000 dd60dd60 dd60"},
    {"a_ramp_runs_on_across_rows", 1, 8, 2, 1, "00010203 04050607 08090a0b 0c0d0e0f", "01bffffd 6fffff90 dfad4740"},
    {"a_16_bit_ramp_runs_on_across_rows", 2, 4, 2, 1, "0000e803 d007b80b a00f8813 7017581b",
     "01bffffb efffff90 dfffa81f 426800"},
    {"the_largest_8_bit_residual_with_a_prefix_is_19", 1, 1, 1, 1, "75", "01bffffe 6fffffb0 fec0"},
    {"an_8_bit_residual_of_20_is_raw", 1, 1, 1, 1, "89", "01bffffe 6fffffb0 c280"},
    {"the_largest_16_bit_residual_with_a_prefix_is_575", 2, 3, 1, 1, "df7edf7e 0000",
     "01bffffc 6fffffb0 ffefd80d fb7a"},
    {"a_16_bit_residual_of_576_is_raw", 2, 1, 1, 1, "1f81", "01bffffd efffffb0 c04800"},
    {"equal_residuals_go_to_the_second_order", 1, 4, 1, 1, "7f756b61", "01bffffd efffffb0 63fba8"},
    {"noise_in_two_slices", 1, 4, 2, 2, "00ff00ff 076303fa", "02bffffd 70097fff fde000df acb4c8dd f95f443f 20"},
    {"unequal_slices_start_afresh", 1, 4, 4, 3, "01020304 01020304 01020304 01020304",
     "03bffffc 7007800b ffffe700 3800df6d 54396aa0 df6d5400 df6d5400"},
    {"slice_count_0_means_16", 1, 1, 32, 0, "7f7f7f7f 7f7f7f7f 7f7f7f7f 7f7f7f7f 7f7f7f7f 7f7f7f7f 7f7f7f7f 7f7f7f7f",
     "10bffffe c7c005ff fff23e00 00282828 28282828 28282828 28282828 28"},
    {"slice_count_0_is_held_to_the_height", 1, 1, 5, 0, "7f7f7f7f 7f", "05bffffe c90017ff ffd92000 60606060 60"},
};

class alpha_payload : public testing::TestWithParam<payload_row> {};

const char* code_of(uint32_t type) {
    return type == 1 ? "rl08" : "rl16";
}

TEST_P(alpha_payload, is_coded) {
    const payload_row& row = GetParam();
    const bytes expected = single_plane(row.width, row.height, code_of(row.type), from_hex(row.payload));
    for (const uint32_t threads : {1u, 2u, 3u, 8u}) {
        SCOPED_TRACE(threads);
        encoder with(threads);
        const frame_params up = frame_record(14, row.type, row.width, row.height);
        const outcome result = encode(with, up, coded_alpha(row.slices), from_hex(row.source));
        expect_bytes(result, to_hex(expected));
    }
}

TEST_P(alpha_payload, is_decoded) {
    const payload_row& row = GetParam();
    const bytes stream = single_plane(row.width, row.height, code_of(row.type), from_hex(row.payload));
    for (const uint32_t threads : {1u, 2u, 3u, 8u}) {
        SCOPED_TRACE(threads);
        decoder with(threads);
        expect_bytes(decode(with, frame_record(14, row.type, row.width, row.height), stream), row.source);
    }
}

std::string payload_name(const testing::TestParamInfo<payload_row>& info) {
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(known, alpha_payload, testing::ValuesIn(k_payload_rows), payload_name);

TEST(coded_alpha_encoding, the_whole_frame_of_the_worked_payload) {
    expect_bytes(encode(frame_record(14, 1, 4, 2), coded_alpha(1), from_hex("00010203 00010203")),
                 "33000000 'pack' 15000000 'sinf' 04000000 02000000 'rl08' 00 "
                 "16000000 'sdat' 01bffffc6fffff90dfad54396aa0");
}

TEST(coded_alpha_encoding, a_wider_stride_changes_only_where_rows_are_read) {
    const char* expected =
        "33000000 'pack' 15000000 'sinf' 04000000 02000000 'rl08' 00 "
        "16000000 'sdat' 01bffffc6fffff90dfad54396aa0";
    expect_bytes(encode(frame_record(14, 1, 4, 2, 4), coded_alpha(1), from_hex("00010203 00010203")), expected);
    expect_bytes(encode(frame_record(14, 1, 4, 2, 6), coded_alpha(1), from_hex("00010203 eeee 00010203 eeee")),
                 expected);
}

TEST(coded_alpha_encoding, the_frame_is_as_short_as_its_payload) {
    const frame_params up = frame_record(14, 1, 64, 64);
    const stream_params cp = coded_alpha(1);
    const outcome result = encode(up, cp, repeat(0x7f, 4096));
    // One run of 4096: 1 + 25 + 1 + 3 bits.
    expect_bytes(result,
                 "31000000 'pack' 15000000 'sinf' 40000000 40000000 'rl08' 00 "
                 "14000000 'sdat' 01bffffd 6ffff7d0 00040020");
}

TEST(coded_alpha_encoding, planar_alpha_is_read_with_the_luma_stride) {
    expect_bytes(encode(frame_record(13, 1, 4, 2, 6, 3), coded_alpha(1),
                        from_hex("01020304 eeee 05060708 eeee 2122 ee 3132 ee 00010203 eeee 00010203 eeee")),
                 "b6000000 'pack' "
                 "2d000000 'icmp' 15000000 'sinf' 04000000 02000000 ' y08' 00 10000000 'sdat' 01020304 05060708 "
                 "27000000 'icmp' 15000000 'sinf' 02000000 01000000 'cb08' 00 0a000000 'sdat' 2122 "
                 "27000000 'icmp' 15000000 'sinf' 02000000 01000000 'cr08' 00 0a000000 'sdat' 3132 "
                 "33000000 'icmp' 15000000 'sinf' 04000000 02000000 'rl08' 00 "
                 "16000000 'sdat' 01bffffc6fffff90dfad54396aa0");
}

TEST(coded_alpha_encoding, separate_alpha_is_read_with_the_second_stride) {
    for (const uint32_t order : {15u, 16u}) {
        SCOPED_TRACE(order);
        const char* colour = order == 15 ? "0201040306050807 1211141316151817" : "0102030405060708 1112131415161718";
        expect_bytes(
            encode(frame_record(order, 1, 4, 2, 9, 5), coded_alpha(1),
                   from_hex("0102030405060708 ee 1112131415161718 ee 00010203 ee 00010203 ee")),
            std::string("70000000 'pack' 35000000 'icmp' 15000000 'sinf' 04000000 02000000 'y208' 00 18000000 'sdat'") +
                colour +
                "33000000 'icmp' 15000000 'sinf' 04000000 02000000 'rl08' 00 "
                "16000000 'sdat' 01bffffc6fffff90dfad54396aa0");
    }
}

TEST(coded_alpha_encoding, interleaved_alpha_is_taken_out_of_padded_rows) {
    expect_bytes(encode(frame_record(7, 1, 4, 2, 18), coded_alpha(1),
                        from_hex("101112 00 202122 01 303132 02 404142 03 eeee "
                                 "505152 00 606162 01 707172 02 808182 03 eeee")),
                 "78000000 'pack' "
                 "3d000000 'icmp' 15000000 'sinf' 04000000 02000000 'rg08' 00 "
                 "20000000 'sdat' 101112 202122 303132 404142 505152 606162 707172 808182 "
                 "33000000 'icmp' 15000000 'sinf' 04000000 02000000 'rl08' 00 "
                 "16000000 'sdat' 01bffffc6fffff90dfad54396aa0");
}

TEST(coded_alpha_encoding, a_separate_plane_wider_than_the_coded_bound_is_refused) {
    // The coder is offered as many source bytes as the payload may take: 1659 + 11 for this frame.
    for (const uint32_t order : {15u, 16u}) {
        SCOPED_TRACE(order);
        expect_success(encode(frame_record(order, 1, 4, 2, 0, 835), coded_alpha(1), repeat(0, 16 + 1670)));
        expect_failure(encode(frame_record(order, 1, 4, 2, 0, 836), coded_alpha(1), repeat(0, 16 + 1672)),
                       "src buffer is too small according to metadata");
    }
}

TEST(coded_alpha_encoding, the_planar_orders_take_any_stride) {
    expect_success(encode(frame_record(14, 1, 4, 2, 5000), coded_alpha(1), repeat(0, 10000)));
    expect_success(encode(frame_record(13, 1, 4, 2, 5000), coded_alpha(1), repeat(0, 20004)));
}

TEST(coded_alpha_encoding, slices_above_the_height_are_held_to_it) {
    const bytes src = counting(20);
    const outcome held = encode(frame_record(14, 1, 4, 5), coded_alpha(255), src);
    const outcome exact = encode(frame_record(14, 1, 4, 5), coded_alpha(5), src);
    expect_success(held);
    EXPECT_EQ(to_hex(held.frame()), to_hex(exact.frame()));
    EXPECT_EQ(held.data[37], 5u);
}

TEST(coded_alpha_encoding, a_frame_takes_255_slices) {
    const outcome result = encode(frame_record(14, 1, 1, 300), coded_alpha(255), repeat(0x7f, 300));
    expect_success(result);
    // 45 slices of two rows, then 210 of one; each is one byte long.
    const bytes payload = from_hex("ffbffffe c07f4005 fffff20b 20030020 346000") + repeat(0x28, 45) + repeat(0x60, 210);
    EXPECT_EQ(to_hex(result.frame()), to_hex(single_plane(1, 300, "rl08", payload)));
}

TEST(coded_alpha_encoding, a_run_of_more_than_2_to_the_28_samples_is_written_whole) {
    // The second of two tokens takes 66 bits. Address space that reads as zeros: 16384 x 16385 samples of 16 bits.
    sparse_buffer source(536903680);
    sparse_buffer target(637574816);
    encoder with;
    const frame_params up = frame_record(14, 2, 16384, 16385);
    const stream_params cp = coded_alpha(1);
    ASSERT_EQ(QVRUncompressed_GetCompressedBufSize(&up, &cp), 637574816u);
    uint32_t written = 0;
    ASSERT_EQ(QVRUncompressed_EncodeFrame(with.handle(), &up, &cp, source.data(), 536903680u, target.data(), 637574816u,
                                          &written),
              0u);
    EXPECT_EQ(to_hex(target.data(), written), canonical("38000000 'pack' 15000000 'sinf' 00400000 01400000 'rl16' 00 "
                                                        "1b000000 'sdat' 01bffff9 eff7ffb0 dfffa000 00008001 fffc00"));
}

}  // namespace
