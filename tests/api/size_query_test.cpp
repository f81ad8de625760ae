// SPDX-License-Identifier: BSD-3-Clause
//
// What the three size queries answer, literally.
#include <gtest/gtest.h>

#include "codec.h"
#include "guarded_buffer.h"

namespace {

using namespace test;

uint32_t raw_size(const frame_params& up) {
    return QVRUncompressed_GetUncompressedBufSize(&up);
}

uint32_t stream_size(const frame_params& up, const stream_params& cp) {
    return QVRUncompressed_GetCompressedBufSize(&up, &cp);
}

TEST(raw_size_query, order_1_rounds_an_odd_width_up_and_order_2_adds_one_sample) {
    EXPECT_EQ(raw_size(frame_record(1, 1, 3, 2)), 16u);
    EXPECT_EQ(raw_size(frame_record(2, 1, 3, 2)), 14u);
    EXPECT_EQ(raw_size(frame_record(1, 2, 3, 2)), 32u);
    EXPECT_EQ(raw_size(frame_record(2, 2, 3, 2)), 28u);
    EXPECT_EQ(raw_size(frame_record(1, 7, 3, 2)), 64u);
    EXPECT_EQ(raw_size(frame_record(2, 7, 3, 2)), 56u);
}

TEST(raw_size_query, type_5_takes_16_bytes_for_each_begun_group_of_6_pixels) {
    EXPECT_EQ(raw_size(frame_record(2, 5, 1920, 1)), 5120u);
    EXPECT_EQ(raw_size(frame_record(2, 5, 1921, 1)), 5136u);
    EXPECT_EQ(raw_size(frame_record(2, 5, 1, 1)), 16u);
    EXPECT_EQ(raw_size(frame_record(2, 5, 6, 1)), 16u);
    EXPECT_EQ(raw_size(frame_record(2, 5, 7, 2)), 64u);
    EXPECT_EQ(raw_size(frame_record(2, 5, 0, 2)), 0u);
}

TEST(raw_size_query, type_5_keeps_its_row_size_in_every_interleaved_order) {
    EXPECT_EQ(raw_size(frame_record(1, 5, 7, 1)), 32u);
    EXPECT_EQ(raw_size(frame_record(7, 5, 7, 1)), 32u);
}

TEST(raw_size_query, planar_orders_round_chroma_up) {
    EXPECT_EQ(raw_size(frame_record(10, 1, 5, 3)), 27u);
    EXPECT_EQ(raw_size(frame_record(13, 1, 5, 3)), 42u);
    EXPECT_EQ(raw_size(frame_record(10, 2, 5, 3)), 54u);
    EXPECT_EQ(raw_size(frame_record(13, 7, 5, 3)), 168u);
    EXPECT_EQ(raw_size(frame_record(14, 1, 5, 3)), 15u);
    EXPECT_EQ(raw_size(frame_record(14, 2, 5, 3)), 30u);
}

TEST(raw_size_query, order_16_with_16_bits_adds_the_separate_alpha_plane) {
    EXPECT_EQ(raw_size(frame_record(16, 2, 4, 2)), 48u);
    EXPECT_EQ(raw_size(frame_record(15, 2, 4, 2)), 48u);
    EXPECT_EQ(raw_size(frame_record(15, 1, 3, 2)), 22u);
    EXPECT_EQ(raw_size(frame_record(16, 1, 3, 2)), 20u);
}

TEST(raw_size_query, interleaved_444_orders_hold_3_or_4_samples_a_pixel) {
    for (const uint32_t order : {3u, 4u, 7u, 8u, 12u}) {
        EXPECT_EQ(raw_size(frame_record(order, 1, 3, 2)), 24u) << order;
        EXPECT_EQ(raw_size(frame_record(order, 3, 3, 2)), 48u) << order;
        EXPECT_EQ(raw_size(frame_record(order, 7, 3, 2)), 96u) << order;
    }
    for (const uint32_t order : {5u, 6u, 9u}) {
        EXPECT_EQ(raw_size(frame_record(order, 1, 3, 2)), 18u) << order;
        EXPECT_EQ(raw_size(frame_record(order, 6, 3, 2)), 36u) << order;
        EXPECT_EQ(raw_size(frame_record(order, 7, 3, 2)), 72u) << order;
    }
}

TEST(raw_size_query, order_11_adds_one_sample_for_an_odd_width) {
    EXPECT_EQ(raw_size(frame_record(11, 1, 4, 1)), 12u);
    EXPECT_EQ(raw_size(frame_record(11, 1, 3, 1)), 10u);
    EXPECT_EQ(raw_size(frame_record(11, 2, 3, 2)), 40u);
}

TEST(raw_size_query, types_214_and_5_and_unknown_ones_count_2_bytes_a_sample) {
    for (const uint32_t type : {2u, 3u, 4u, 6u, 8u, 0u, 214u, 999u}) {
        EXPECT_EQ(raw_size(frame_record(9, type, 3, 2)), 36u) << type;
    }
    EXPECT_EQ(raw_size(frame_record(14, 5, 3, 2)), 12u);
}

TEST(raw_size_query, a_caller_stride_is_taken_as_given) {
    EXPECT_EQ(raw_size(frame_record(1, 1, 2, 3, 100)), 300u);
    EXPECT_EQ(raw_size(frame_record(1, 1, 2, 3, 1)), 3u);
    EXPECT_EQ(raw_size(frame_record(14, 1, 2, 3, 7)), 21u);
    EXPECT_EQ(raw_size(frame_record(10, 1, 4, 4, 10, 3)), 52u);
    EXPECT_EQ(raw_size(frame_record(13, 1, 4, 4, 10, 3)), 92u);
    EXPECT_EQ(raw_size(frame_record(15, 1, 4, 4, 10, 5)), 60u);
    EXPECT_EQ(raw_size(frame_record(16, 1, 4, 4, 0, 5)), 52u);
    // The second stride means nothing in the other orders.
    EXPECT_EQ(raw_size(frame_record(7, 1, 4, 4, 0, 500)), 64u);
    EXPECT_EQ(raw_size(frame_record(14, 1, 4, 4, 0, 500)), 16u);
}

TEST(raw_size_query, unknown_orders_have_no_default_stride) {
    EXPECT_EQ(raw_size(frame_record(0, 1, 4, 4)), 0u);
    EXPECT_EQ(raw_size(frame_record(17, 2, 4, 4)), 0u);
    EXPECT_EQ(raw_size(frame_record(17, 2, 4, 4, 9)), 36u);
}

TEST(raw_size_query, width_or_height_0_gives_0) {
    for (uint32_t order = 1; order <= 16; ++order) {
        EXPECT_EQ(raw_size(frame_record(order, 2, 0, 4)), 0u) << order;
        EXPECT_EQ(raw_size(frame_record(order, 2, 4, 0)), 0u) << order;
    }
}

TEST(raw_size_query, low_32_bits_of_an_exact_product_are_returned) {
    EXPECT_EQ(raw_size(frame_record(7, 7, 65536, 65536)), 0u);
    EXPECT_EQ(raw_size(frame_record(7, 7, 65536, 65537)), 1048576u);
    EXPECT_EQ(raw_size(frame_record(14, 1, 0xffffffffu, 1)), 0xffffffffu);
    EXPECT_EQ(raw_size(frame_record(14, 1, 0xffffffffu, 0xffffffffu)), 1u);
    EXPECT_EQ(raw_size(frame_record(9, 7, 0xffffffffu, 0xffffffffu)), 12u);
    EXPECT_EQ(raw_size(frame_record(2, 5, 0xffffffffu, 1)), 0xaaaaaab0u);
    EXPECT_EQ(raw_size(frame_record(11, 1, 0xffffffffu, 1)), 0xfffffffeu);
}

TEST(raw_size_query, parity_and_strides_are_not_checked) {
    EXPECT_EQ(raw_size(frame_record(10, 1, 3, 3)), 17u);
    EXPECT_EQ(raw_size(frame_record(10, 1, 3, 3, 1, 1)), 7u);
}

TEST(stream_size_query, a_single_plane_takes_37_bytes_beside_its_payload) {
    EXPECT_EQ(stream_size(frame_record(5, 1, 4, 2), raw_alpha()), 61u);
    EXPECT_EQ(stream_size(frame_record(14, 2, 3, 2), raw_alpha()), 49u);
}

TEST(stream_size_query, two_planes_take_37_bytes_each_and_8_for_the_whole) {
    EXPECT_EQ(stream_size(frame_record(7, 1, 4, 2), raw_alpha()), 114u);
    EXPECT_EQ(stream_size(frame_record(15, 2, 4, 2), raw_alpha()), 130u);
}

TEST(stream_size_query, planar_chroma_is_rounded_up) {
    // 1921 x 1081 has chroma planes of 961 x 541.
    EXPECT_EQ(stream_size(frame_record(10, 1, 1921, 1081), raw_alpha()), 3116522u);
    EXPECT_EQ(stream_size(frame_record(13, 1, 1921, 1081), raw_alpha()), 5193160u);
}

TEST(stream_size_query, ten_and_twelve_bit_rows_are_rounded_up_to_bytes) {
    // 3843 samples of 10 bits make 4804 bytes; 9 samples make 12.
    EXPECT_EQ(stream_size(frame_record(1, 3, 1921, 1), raw_alpha()), 4841u);
    EXPECT_EQ(stream_size(frame_record(2, 5, 1921, 1), raw_alpha()), 4841u);
    EXPECT_EQ(stream_size(frame_record(5, 3, 3, 1), raw_alpha()), 49u);
    EXPECT_EQ(stream_size(frame_record(5, 4, 3, 2), raw_alpha()), 65u);
}

TEST(stream_size_query, strides_mean_nothing) {
    EXPECT_EQ(stream_size(frame_record(5, 1, 4, 2, 999, 999), raw_alpha()), 61u);
    EXPECT_EQ(stream_size(frame_record(5, 1, 4, 2, 1, 1), raw_alpha()), 61u);
    EXPECT_EQ(stream_size(frame_record(14, 1, 4, 2, 999), coded_alpha(1)), 1707u);
}

TEST(stream_size_query, coded_alpha_counts_its_worst_case) {
    // 1659 bytes of table, and 11 (or 19) bits for each sample of each slice, rounded up slice by slice.
    EXPECT_EQ(stream_size(frame_record(14, 1, 4, 2), coded_alpha(1)), 1707u);
    EXPECT_EQ(stream_size(frame_record(14, 1, 4, 2), coded_alpha(2)), 1708u);
    EXPECT_EQ(stream_size(frame_record(14, 1, 4, 2), coded_alpha(255)), 1708u);
    EXPECT_EQ(stream_size(frame_record(14, 2, 4, 2), coded_alpha(1)), 1715u);
    EXPECT_EQ(stream_size(frame_record(14, 1, 1, 32), coded_alpha(0)), 1744u);
    EXPECT_EQ(stream_size(frame_record(14, 1, 1, 32), coded_alpha(255)), 1760u);
    EXPECT_EQ(stream_size(frame_record(14, 1, 3, 10), coded_alpha(4)), 1740u);
}

TEST(stream_size_query, coded_alpha_beside_colour_counts_both) {
    EXPECT_EQ(stream_size(frame_record(7, 1, 4, 2), coded_alpha(1)), 1776u);
    EXPECT_EQ(stream_size(frame_record(16, 2, 4, 2), coded_alpha(1)), 1792u);
    EXPECT_EQ(stream_size(frame_record(13, 1, 4, 2), coded_alpha(1)), 1838u);
}

TEST(stream_size_query, coded_alpha_means_nothing_to_orders_and_types_without_an_alpha_plane) {
    EXPECT_EQ(stream_size(frame_record(5, 1, 4, 2), coded_alpha(1)), 61u);
    EXPECT_EQ(stream_size(frame_record(7, 3, 4, 2), coded_alpha(1)), 67u);
    EXPECT_EQ(stream_size(frame_record(13, 7, 2, 2), coded_alpha(1)), 143u);
}

TEST(stream_size_query, width_or_height_0_leaves_the_headers) {
    EXPECT_EQ(stream_size(frame_record(1, 1, 0, 2), raw_alpha()), 37u);
    EXPECT_EQ(stream_size(frame_record(1, 1, 2, 0), raw_alpha()), 37u);
    EXPECT_EQ(stream_size(frame_record(7, 1, 0, 0), raw_alpha()), 82u);
    EXPECT_EQ(stream_size(frame_record(10, 1, 0, 2), raw_alpha()), 119u);
    EXPECT_EQ(stream_size(frame_record(13, 1, 2, 0), raw_alpha()), 156u);
    EXPECT_EQ(stream_size(frame_record(14, 1, 4, 0), coded_alpha()), 1696u);
    EXPECT_EQ(stream_size(frame_record(14, 1, 0, 4), coded_alpha()), 1696u);
    EXPECT_EQ(stream_size(frame_record(7, 2, 0, 0), coded_alpha(3)), 1741u);
}

TEST(stream_size_query, low_32_bits_of_an_exact_sum_are_returned) {
    EXPECT_EQ(stream_size(frame_record(14, 1, 0xffffffffu, 1), raw_alpha()), 36u);
    EXPECT_EQ(stream_size(frame_record(14, 1, 65536, 65536), raw_alpha()), 37u);
    EXPECT_EQ(stream_size(frame_record(10, 3, 0xffffffffu, 1), raw_alpha()), 2147483766u);
}

TEST(stream_size_query, the_coded_bound_takes_samples_of_a_slice_modulo_2_to_the_32) {
    EXPECT_EQ(stream_size(frame_record(14, 1, 65536, 65536), coded_alpha(1)), 1696u);
    EXPECT_EQ(stream_size(frame_record(14, 1, 65536, 65537), coded_alpha(1)), 91808u);
    // 2^31 samples at 11 bits are past 32 bits in the product, but not in the bytes.
    EXPECT_EQ(stream_size(frame_record(14, 1, 65536, 32768), coded_alpha(1)), 2952791712u);
    // Two slices of 2^31 samples each: 5,905,580,032 bytes.
    EXPECT_EQ(stream_size(frame_record(14, 1, 65536, 65536), coded_alpha(2)), 1610614432u);
}

TEST(stream_size_query, unsupported_pairs_give_0) {
    EXPECT_EQ(stream_size(frame_record(0, 1, 4, 4), raw_alpha()), 0u);
    EXPECT_EQ(stream_size(frame_record(17, 1, 4, 4), raw_alpha()), 0u);
    EXPECT_EQ(stream_size(frame_record(14, 3, 4, 4), raw_alpha()), 0u);
    EXPECT_EQ(stream_size(frame_record(10, 214, 4, 4), raw_alpha()), 0u);
    EXPECT_EQ(stream_size(frame_record(1, 5, 4, 4), raw_alpha()), 0u);
}

TEST(stream_size_query, odd_sizes_are_not_refused) {
    EXPECT_EQ(stream_size(frame_record(1, 1, 3, 1), raw_alpha()), 44u);
    EXPECT_EQ(stream_size(frame_record(10, 1, 3, 3), raw_alpha()), 136u);
    EXPECT_EQ(stream_size(frame_record(11, 1, 3, 1), raw_alpha()), 92u);
}

TEST(stream_size_query, the_frame_layout_means_nothing) {
    EXPECT_EQ(stream_size(frame_record(5, 1, 4, 2, 0, 0, 77), raw_alpha()), 61u);
}

TEST(oversized_frames, a_frame_past_2_to_the_64_bytes_is_larger_than_any_source) {
    expect_failure(encode(frame_record(7, 7, 0xffffffffu, 0xffffffffu), raw_alpha(), repeat(0, 64), 64),
                   "src size is too small");
    expect_failure(encode(frame_record(7, 7, 65536, 65536), raw_alpha(), repeat(0, 64), 64), "src size is too small");
}

TEST(oversized_frames, a_frame_past_2_to_the_64_bytes_is_larger_than_any_destination) {
    expect_failure(decode(frame_record(7, 7, 0xffffffffu, 0xffffffffu), repeat(0, 64), 64), "dst size is too small");
    expect_failure(decode(frame_record(7, 7, 65536, 65536), repeat(0, 64), 64), "dst size is too small");
    // All products are 0 modulo 2^64 here.
    expect_failure(decode(frame_record(7, 7, 0x80000000u, 0x80000000u, 0x80000000u), repeat(0, 64), 64),
                   "rowBytes is too small, it should be at least 34359738368 according to uncompressed params");
}

class oversized_streams : public testing::Test {
  protected:
    // Only address space: nothing may be read or written before the size is refused.
    sparse_buffer source_{0xffffffffu};
    sparse_buffer target_{0xffffffffu};
    encoder encoder_;

    uint32_t try_encode(const frame_params& up, const stream_params& cp) {
        return QVRUncompressed_EncodeFrame(encoder_.handle(), &up, &cp, source_.data(), 0xffffffffu, target_.data(),
                                           0xffffffffu, nullptr);
    }
};

TEST_F(oversized_streams, a_raw_stream_past_32_bits_is_larger_than_any_destination) {
    EXPECT_EQ(try_encode(frame_record(14, 1, 0xffffffffu, 1), raw_alpha()), 1u);
    EXPECT_EQ(encoder_.messages(), message_list{"dst size is too small"});
}

TEST_F(oversized_streams, a_coded_bound_past_32_bits_is_larger_than_any_destination) {
    EXPECT_EQ(try_encode(frame_record(14, 1, 65536, 65535), coded_alpha()), 1u);
    EXPECT_EQ(encoder_.messages(), message_list{"dst size is too small"});
}

}  // namespace
