// SPDX-License-Identifier: BSD-3-Clause
//
// Where decoded samples go: strides, surplus planes, odd widths, fixed point to floating point.
#include <gtest/gtest.h>

#include <string>

#include "box_builder.h"
#include "codec.h"
#include "format_cases.h"
#include "guarded_buffer.h"

namespace {

using namespace test;

const bytes k_two_rows = counting(8, 1);

TEST(decoder_strides, padding_between_rows_is_not_written) {
    expect_bytes(decode(frame_record(1, 1, 2, 2, 7), single_plane(2, 2, "y208", k_two_rows)),
                 "02010403 cccccc 06050807 cccccc");
    expect_bytes(decode(frame_record(2, 1, 2, 2, 7), single_plane(2, 2, "y208", k_two_rows)),
                 "01020304 cccccc 05060708 cccccc");
    expect_bytes(decode(frame_record(6, 1, 1, 2, 4), single_plane(1, 2, "rg08", k_two_rows)), "030201 cc 060504 cc");
    expect_bytes(decode(frame_record(9, 1, 1, 2, 4), single_plane(1, 2, "y408", k_two_rows)), "010203 cc 040506 cc");
    expect_bytes(decode(frame_record(14, 2, 2, 2, 5), single_plane(2, 2, " a16", k_two_rows)),
                 "01020304 cc 05060708 cc");
}

TEST(decoder_strides, of_planar_frames_are_those_of_luma_and_chroma) {
    const bytes stream = pack(component(2, 2, " y08", counting(4, 1)) + component(1, 1, "cb08", {0x21}) +
                              component(1, 1, "cr08", {0x31}) + component(2, 2, " a08", counting(4, 0x41)));
    expect_bytes(decode(frame_record(13, 1, 2, 2, 3, 2), stream), "0102 cc 0304 cc 21 cc 31 cc 4142 cc 4344 cc");
    expect_bytes(decode(frame_record(10, 1, 2, 2, 3, 2), stream), "0102 cc 0304 cc 21 cc 31 cc");
    expect_bytes(decode(frame_record(13, 1, 2, 2), stream), "01020304 21 31 41424344");
}

TEST(decoder_strides, of_odd_planar_frames_round_chroma_up) {
    const bytes stream = pack(component(3, 3, " y08", counting(9, 1)) + component(2, 2, "cb08", counting(4, 0x21)) +
                              component(2, 2, "cr08", counting(4, 0x31)) + component(3, 3, " a08", counting(9, 0x41)));
    expect_bytes(decode(frame_record(10, 1, 3, 3), stream), "010203 040506 070809 2122 2324 3132 3334");
    expect_bytes(decode(frame_record(13, 1, 3, 3, 4, 3), stream),
                 "010203 cc 040506 cc 070809 cc 2122 cc 2324 cc 3132 cc 3334 cc 414243 cc 444546 cc 474849 cc");
    // Five samples of luma and three of each chroma plane: low bits 1, 2, 3, 0, 1 and 3, 2, 1.
    const bytes ten =
        pack(component(5, 1, " y10", from_hex("0102030405 3901")) + component(3, 1, "cb10", from_hex("212223 1b")) +
             component(3, 1, "cr10", from_hex("313233 1b")));
    expect_bytes(decode(frame_record(10, 3, 5, 1), ten), "4001 8002 c003 0004 4005 c021 8022 4023 c031 8032 4033");
}

TEST(decoder_strides, of_chroma_are_needed_beyond_32_bits) {
    expect_failure(decode(frame_record(10, 1, 0xffffffffu, 1, 0, 1), bytes{}, 0),
                   "rowBytes2 is too small, it should be at least 2147483648 according to uncompressed params");
    expect_failure(decode(frame_record(10, 7, 0xffffffffu, 1, 0xffffffffu), bytes{}, 0),
                   "rowBytes is too small, it should be at least 17179869180 according to uncompressed params");
}

TEST(decoder_strides, of_separate_alpha_is_the_second) {
    const bytes stream = pack(component(2, 2, "y208", k_two_rows) + component(2, 2, " a08", counting(4, 0x41)));
    expect_bytes(decode(frame_record(15, 1, 2, 2, 5, 3), stream), "02010403 cc 06050807 cc 4142 cc 4344 cc");
    expect_bytes(decode(frame_record(16, 1, 2, 2, 0, 3), stream), "01020304 05060708 4142 cc 4344 cc");
}

TEST(decoder_strides, of_widened_rows_leave_the_padding_alone) {
    const bytes stream = single_plane(1, 2, "rg10", from_hex("ff0080 39 000102 00"));
    expect_bytes(decode(frame_record(5, 3, 1, 2, 8), stream), "40ff 8000 c080 cccc 0000 0001 0002 cccc");
    expect_bytes(decode(frame_record(6, 3, 1, 2, 8), stream), "c080 8000 40ff cccc 0002 0001 0000 cccc");
}

TEST(decoder_strides, a_packed_ten_bit_row_is_zero_filled_to_its_least_length_only) {
    // Two pixels: four samples 0x3ff, 0, 1, 2.
    const bytes stream = single_plane(2, 1, "y210", from_hex("ff000000 93"));
    expect_bytes(decode(frame_record(2, 5, 2, 1, 20), stream), "ff031000 02000000 00000000 00000000 cccccccc");
}

TEST(decoder_strides, too_small_ones_are_refused) {
    expect_failure(decode(frame_record(1, 1, 3, 1, 7), single_plane(3, 1, "y208", k_two_rows)),
                   "rowBytes is too small, it should be at least 8 according to uncompressed params");
    expect_success(decode(frame_record(2, 1, 3, 1, 7), single_plane(3, 1, "y208", k_two_rows)));
    expect_failure(decode(frame_record(11, 1, 3, 1, 9), single_plane(3, 1, "y208", k_two_rows)),
                   "rowBytes is too small, it should be at least 10 according to uncompressed params");
    expect_failure(decode(frame_record(10, 1, 3, 1, 3, 1), single_plane(3, 1, "y208", k_two_rows)),
                   "rowBytes2 is too small, it should be at least 2 according to uncompressed params");
    expect_failure(decode(frame_record(2, 5, 7, 1, 31), single_plane(7, 1, "y210", counting(30))),
                   "rowBytes is too small, it should be at least 32 according to uncompressed params");
}

TEST(decoder_buffers, a_destination_one_byte_short_is_refused_before_anything_is_written) {
    decoder with;
    for (const format_case& row : all_format_cases()) {
        SCOPED_TRACE(testing::PrintToString(row));
        const frame_params up = frame_record(row.order, row.type, row.width, row.height);
        const uint32_t needed = QVRUncompressed_GetUncompressedBufSize(&up);
        const outcome result = decode(with, up, from_hex(row.stream), needed - 1);
        expect_failure(result, "dst size is too small");
        EXPECT_EQ(result.data, repeat(k_fill, needed - 1));
    }
}

TEST(decoder_buffers, bytes_behind_the_raw_frame_stay_untouched) {
    decoder with;
    for (const format_case& row : all_format_cases()) {
        if (std::string(row.decoded) == refused) {
            continue;
        }
        SCOPED_TRACE(testing::PrintToString(row));
        const frame_params up = frame_record(row.order, row.type, row.width, row.height);
        const uint32_t needed = QVRUncompressed_GetUncompressedBufSize(&up);
        const outcome result = decode(with, up, from_hex(row.stream), needed + 13);
        expect_success(result);
        EXPECT_EQ(result.written, needed);
        EXPECT_EQ(to_hex(bytes(result.data.end() - 13, result.data.end())), to_hex(repeat(k_fill, 13)));
    }
}

TEST(decoder_buffers, buffers_with_a_guard_page_before_them_are_enough) {
    decoder with;
    for (const format_case& row : all_format_cases()) {
        if (std::string(row.decoded) == refused) {
            continue;
        }
        SCOPED_TRACE(testing::PrintToString(row));
        const frame_params up = frame_record(row.order, row.type, row.width, row.height);
        guarded_buffer src(from_hex(row.stream), guard::before);
        src.make_read_only();
        guarded_buffer dst(QVRUncompressed_GetUncompressedBufSize(&up), guard::before);
        EXPECT_EQ(QVRUncompressed_DecodeFrame(with.handle(), &up, src.data(), src.size32(), dst.data(), dst.size32(),
                                              nullptr),
                  0u);
    }
}

TEST(surplus_planes, a_frame_with_alpha_decodes_into_orders_without) {
    const bytes rgb = pack(component(2, 1, "rg08", counting(6, 1)) + component(2, 1, " a08", {8, 9}));
    expect_bytes(decode(frame_record(5, 1, 2, 1), rgb), "010203 040506");
    expect_bytes(decode(frame_record(6, 1, 2, 1), rgb), "030201 060504");
    const bytes coded = pack(component(2, 1, "rg08", counting(6, 1)) + component(2, 1, "rl08", {0xff}));
    expect_bytes(decode(frame_record(5, 1, 2, 1), coded), "010203 040506");
    const bytes ycbcr = pack(component(2, 1, "y416", counting(12, 1)) + component(2, 1, " a16", counting(4)));
    expect_bytes(decode(frame_record(9, 2, 2, 1), ycbcr), "010203040506 0708090a0b0c");
}

TEST(surplus_planes, planes_may_come_in_any_order) {
    const bytes rgb = pack(component(2, 1, " a08", {8, 9}) + component(2, 1, "rg08", counting(6, 1)));
    expect_bytes(decode(frame_record(7, 1, 2, 1), rgb), "01020308 04050609");
    const bytes planar = pack(component(1, 1, "cr08", {0x31}) + component(2, 2, " a08", counting(4, 0x41)) +
                              component(1, 1, "cb08", {0x21}) + component(2, 2, " y08", counting(4, 1)));
    expect_bytes(decode(frame_record(10, 1, 2, 2), planar), "01020304 21 31");
}

TEST(other_orders, one_stream_decodes_into_each_order_of_its_planes) {
    const bytes rgb = pack(component(1, 1, "rg08", {1, 2, 3}) + component(1, 1, " a08", {9}));
    expect_bytes(decode(frame_record(3, 1, 1, 1), rgb), "09010203");
    expect_bytes(decode(frame_record(4, 1, 1, 1), rgb), "03020109");
    expect_bytes(decode(frame_record(7, 1, 1, 1), rgb), "01020309");
    expect_bytes(decode(frame_record(8, 1, 1, 1), rgb), "09030201");
    const bytes ycbcr = pack(component(2, 1, "y208", counting(4, 1)) + component(2, 1, " a08", {8, 9}));
    expect_bytes(decode(frame_record(1, 1, 2, 1), ycbcr), "02010403");
    expect_bytes(decode(frame_record(2, 1, 2, 1), ycbcr), "01020304");
    expect_bytes(decode(frame_record(11, 1, 2, 1), ycbcr), "010208 030409");
    expect_bytes(decode(frame_record(15, 1, 2, 1), ycbcr), "02010403 0809");
    expect_bytes(decode(frame_record(16, 1, 2, 1), ycbcr), "01020304 0809");
}

TEST(other_orders, ten_bits_decode_into_words_or_packed_words) {
    const bytes stream = single_plane(2, 1, "y210", from_hex("ff000000 93"));
    expect_bytes(decode(frame_record(2, 3, 2, 1), stream), "c0ff 0000 4000 8000");
    expect_bytes(decode(frame_record(1, 3, 2, 1), stream), "0000 c0ff 8000 4000");
    expect_bytes(decode(frame_record(2, 5, 2, 1), stream), "ff031000 02000000 00000000 00000000");
}

TEST(odd_422_width, order_2_gets_the_stored_samples) {
    expect_bytes(decode(frame_record(2, 1, 3, 2), single_plane(3, 2, "y208", counting(14, 1))),
                 "01020304050607 08090a0b0c0d0e");
    expect_bytes(decode(frame_record(2, 2, 1, 1), single_plane(1, 1, "y216", counting(6, 1))), "0102 0304 0506");
}

TEST(odd_422_width, order_1_gets_zero_for_the_sample_that_is_not_stored) {
    expect_bytes(decode(frame_record(1, 1, 3, 2), single_plane(3, 2, "y208", counting(14, 1))),
                 "0201040306050007 09080b0a0d0c000e");
    expect_bytes(decode(frame_record(1, 2, 1, 1), single_plane(1, 1, "y216", counting(6, 1))), "0304 0102 0000 0506");
    expect_bytes(decode(frame_record(1, 7, 1, 1), single_plane(1, 1, " y2f", counting(12, 1))),
                 "05060708 01020304 00000000 090a0b0c");
}

TEST(odd_422_width, order_15_gets_zero_for_the_sample_that_is_not_stored) {
    const bytes stream = pack(component(3, 1, "y208", counting(7, 1)) + component(3, 1, " a08", {0x41, 0x42, 0x43}));
    expect_bytes(decode(frame_record(15, 1, 3, 1), stream), "0201040306050007 414243");
    expect_bytes(decode(frame_record(16, 1, 3, 1), stream), "01020304050607 414243");
}

TEST(odd_422_width, order_11_ends_with_the_last_stored_sample) {
    const bytes stream = pack(component(3, 1, "y208", counting(7, 1)) + component(3, 1, " a08", {0x41, 0x42, 0x43}));
    expect_bytes(decode(frame_record(11, 1, 3, 1), stream), "010241 030442 050643 07");
}

TEST(odd_422_width, ten_and_twelve_bit_rows_hold_2w_plus_1_samples) {
    // Seven samples: high bytes 01 to 07, then their low bits 1, 2, 3, 0, 1, 2, 3.
    const bytes ten = single_plane(3, 1, "y210", from_hex("01020304050607 3939"));
    expect_bytes(decode(frame_record(2, 3, 3, 1), ten), "4001 8002 c003 0004 4005 8006 c007");
    expect_bytes(decode(frame_record(1, 3, 3, 1), ten), "8002 4001 0004 c003 8006 4005 0000 c007");
    const bytes twelve = single_plane(3, 1, "y212", from_hex("01020304050607 21436507"));
    expect_bytes(decode(frame_record(2, 4, 3, 1), twelve), "1001 2002 3003 4004 5005 6006 7007");
    expect_bytes(decode(frame_record(1, 4, 3, 1), twelve), "2002 1001 4004 3003 6006 5005 0000 7007");
}

TEST(odd_422_width, packed_ten_bit_rows_look_for_low_bits_behind_2w_samples_and_leave_the_last_pixel_out) {
    // Six bytes of samples, then a byte that counts as the low bits of the first four: 1, 2, 3, 0.
    const bytes stream = single_plane(3, 1, "y210", from_hex("010203040506 39 ffff"));
    expect_bytes(decode(frame_record(2, 5, 3, 1), stream), "0528f000 10000000 00000000 00000000");
    const bytes five = single_plane(5, 1, "y210", from_hex("0102030405060708090a 39 39 ffff"));
    expect_bytes(decode(frame_record(2, 5, 5, 1), five), "0528f000 1054a001 1f800000 00000000");
    const bytes one = single_plane(1, 1, "y210", from_hex("0102 39 ff"));
    expect_bytes(decode(frame_record(2, 5, 1, 1), one), "00000000 00000000 00000000 00000000");
}

TEST(fixed_point, becomes_floating_point_with_14_fraction_bits) {
    // 1.0, -1.0, 0.5, -2.0, 0, the smallest step, its negative, and the largest value.
    const bytes samples = from_hex("0040 00c0 0020 0080 0000 0100 ffff ff7f");
    const char* floats = "0000803f 000080bf 0000003f 000000c0 00000000 00008038 000080b8 00feff3f";
    expect_bytes(decode(frame_record(2, 7, 4, 1), single_plane(4, 1, "y2S1", samples)), floats);
    // Nine samples, one more than a group of eight.
    expect_bytes(decode(frame_record(9, 7, 3, 1), single_plane(3, 1, "y4S1", samples + bytes{0x00, 0xe0})),
                 std::string(floats) + "000000bf");
}

TEST(fixed_point, is_reordered_after_the_conversion) {
    const bytes samples = from_hex("0040 00c0 0020");
    expect_bytes(decode(frame_record(5, 7, 1, 1), single_plane(1, 1, "rgS1", samples)), "0000803f 000080bf 0000003f");
    expect_bytes(decode(frame_record(6, 7, 1, 1), single_plane(1, 1, "rgS1", samples)), "0000003f 000080bf 0000803f");
    const bytes pair = samples + from_hex("0080");
    expect_bytes(decode(frame_record(1, 7, 2, 1), single_plane(2, 1, "y2S1", pair)),
                 "000080bf 0000803f 000000c0 0000003f");
}

TEST(fixed_point, leaves_padding_alone) {
    expect_bytes(
        decode(frame_record(6, 7, 1, 2, 14), single_plane(1, 2, "rgS1", from_hex("004000c00020 002000c00040"))),
        "0000003f 000080bf 0000803f cccc 0000803f 000080bf 0000003f cccc");
}

TEST(fixed_point, of_an_odd_422_width_has_zero_for_the_sample_that_is_not_stored) {
    const bytes samples = from_hex("0040 00c0 0020");
    expect_bytes(decode(frame_record(2, 7, 1, 1), single_plane(1, 1, "y2S1", samples)), "0000803f 000080bf 0000003f");
    expect_bytes(decode(frame_record(1, 7, 1, 1), single_plane(1, 1, "y2S1", samples)),
                 "000080bf 0000803f 00000000 0000003f");
}

TEST(fixed_point, stays_as_it_is_in_its_own_type) {
    expect_bytes(decode(frame_record(5, 214, 1, 1), single_plane(1, 1, "rgS1", from_hex("004000c00020"))),
                 "0040 00c0 0020");
}

TEST(fixed_point, other_16_bit_planes_are_not_converted) {
    const char* depth = "bit depth in src metadata is different than bit depth in uncompressed params";
    expect_failure(decode(frame_record(2, 7, 2, 1), single_plane(2, 1, "y216", counting(8))), depth);
    expect_failure(decode(frame_record(2, 7, 2, 1), single_plane(2, 1, " y2h", counting(8))), depth);
    expect_bytes(decode(frame_record(2, 6, 2, 1), single_plane(2, 1, " y2h", counting(8))), "0001020304050607");
}

TEST(fixed_point, needs_the_floating_point_order_of_its_planes) {
    const char* match = "src metadata type is incompatible with color component order or component type";
    expect_failure(decode(frame_record(5, 7, 1, 1), single_plane(1, 1, "y4S1", counting(6))), match);
    expect_failure(decode(frame_record(9, 7, 1, 1), single_plane(1, 1, "y2S1", counting(6))), match);
    expect_failure(decode(frame_record(10, 7, 1, 1), single_plane(1, 1, "y2S1", counting(6))), match);
    expect_failure(decode(frame_record(11, 7, 1, 1), single_plane(1, 1, "y2S1", counting(6))),
                   "Only 8 and 16 bit alpha is supported");
}

}  // namespace
