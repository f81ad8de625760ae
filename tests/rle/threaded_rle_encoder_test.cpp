// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include "guarded_buffer.h"
#include "random_source.h"
#include "rle_testing.h"

namespace {

using test::bytes;
using test::coded;
using test::decoded;
using test::from_hex;
using test::message_of;

std::string refusal(const rle_params& params, const void* src, unsigned long src_size, void* dst,
                    unsigned long dst_size) {
    threaded_executor executor(0);
    return message_of<invalid_argument>(
        [&] { threaded_rle_encoder(executor).encode_frame(params, src, src_size, dst, dst_size); });
}

TEST(threaded_rle_encoder, the_worked_example_is_14_bytes) {
    EXPECT_EQ(coded(test::k_example, test::example_plane()), from_hex("01 bf ff fc 6f ff ff 90 df ad 54 39 6a a0"));
}

TEST(threaded_rle_encoder, checks_run_in_order_and_before_anything_is_written) {
    bytes plane(8);
    bytes out(1659 + 11, 0x55);
    EXPECT_EQ(refusal({0, 2, 8, 1, 0}, nullptr, 0, nullptr, 0), "Invalid width");
    EXPECT_EQ(refusal({4, 2, 8, 1, 3}, nullptr, 0, nullptr, 0),
              "row_bytes is too small, it should be at least 4 according to params");
    EXPECT_EQ(refusal({4, 2, 8, 1, 0}, nullptr, 8, out.data(), out.size()), "src and buffers required to be non-null");
    EXPECT_EQ(refusal({4, 2, 8, 1, 0}, plane.data(), 8, nullptr, out.size()),
              "src and buffers required to be non-null");
    EXPECT_EQ(refusal({4, 2, 8, 1, 0}, plane.data(), 7, out.data(), 0),
              "src buffer is too small according to metadata");
    EXPECT_EQ(refusal({4, 2, 8, 1, 6}, plane.data(), 11, out.data(), 0),
              "src buffer is too small according to metadata");
    EXPECT_EQ(refusal({4, 2, 8, 1, 0}, plane.data(), 8, out.data(), out.size() - 1),
              "dst buffer is too small according to metadata");
    EXPECT_EQ(out, bytes(1659 + 11, 0x55));
}

TEST(threaded_rle_encoder, ten_rows_in_four_slices_are_3_3_2_2) {
    const rle_params params = {1, 10, 8, 4, 0};
    const bytes payload = coded(params, bytes(10, 127));
    // Count; four sizes of one byte (one difference, then three of zero); rows 3, 3, 2, 2 (a difference, 0, -1, 0);
    // padding; and a run of three or two samples in each slice.
    EXPECT_EQ(test::to_hex(payload), test::to_hex(test::from_bits("00000100"
                                                                  "1 0 111111111111111111111011  011 1 0 0000000000"
                                                                  "1 0 111111111111111111110111  1 1 0 0000000000"
                                                                  "1 1 0 0000000001  1 1 0 0000000000 000000"
                                                                  "0 011 1 0 00  0 011 1 0 00"
                                                                  "0 010 1 0 00  0 010 1 0 00")));
}

TEST(threaded_rle_encoder, more_slices_than_rows_are_one_row_each) {
    const bytes plane = test::counting(6);
    EXPECT_EQ(coded({2, 3, 8, 200, 0}, plane), coded({2, 3, 8, 3, 0}, plane));
}

TEST(threaded_rle_encoder, a_row_stride_of_the_row_size_is_the_same_as_none) {
    EXPECT_EQ(coded({4, 2, 8, 1, 4}, test::example_plane()), test::example_payload());
}

TEST(threaded_rle_encoder, a_wider_stride_only_changes_where_rows_are_read) {
    EXPECT_EQ(coded({4, 2, 8, 1, 6}, from_hex("00 01 02 03 aa aa  00 01 02 03 bb bb")), test::example_payload());
}

struct plane_case {
    std::uint32_t width, height, depth, slices, gap;
};

TEST(threaded_rle_encoder, bytes_do_not_depend_on_threads_and_come_back) {
    test::random_source random(31);
    for (const plane_case& each : {plane_case{1, 1, 8, 0, 0}, plane_case{1, 1, 16, 0, 0}, plane_case{33, 17, 8, 0, 0},
                                   plane_case{64, 40, 16, 7, 5}, plane_case{130, 256, 8, 255, 1},
                                   plane_case{5, 300, 16, 255, 0}, plane_case{257, 3, 8, 2, 30}}) {
        const std::uint32_t row = each.width * each.depth / 8;
        const rle_params params = {each.width, each.height, each.depth, each.slices,
                                   each.gap == 0 ? 0 : row + each.gap};
        for (const bool noisy : {false, true}) {
            const std::size_t size = std::size_t{row + each.gap} * each.height;
            const bytes plane = noisy ? random.content(size) : random.runs(size);
            const bytes payload = coded(params, plane);
            for (const unsigned workers : {2u, 3u, 8u}) {
                EXPECT_EQ(coded(params, plane, workers), payload);
            }
            for (const unsigned workers : {0u, 2u, 3u, 8u}) {
                const bytes back = decoded(params, payload, workers);
                for (std::uint32_t i = 0; i < each.height; ++i) {
                    const auto at = static_cast<std::ptrdiff_t>(i * (row + each.gap));
                    ASSERT_TRUE(std::equal(plane.begin() + at, plane.begin() + at + row, back.begin() + at))
                        << each.width << " x " << each.height << ", row " << i;
                }
            }
        }
    }
}

TEST(threaded_rle_encoder, writes_only_inside_the_worst_case) {
    test::random_source random(32);
    for (const std::uint32_t width : {1u, 7u, 64u, 99u}) {
        const rle_params params = {width, 9, 8, 3, 0};
        // Every sample a token of its own.
        bytes plane(std::size_t{width} * 9);
        for (std::size_t i = 0; i < plane.size(); ++i) {
            plane[i] = static_cast<std::uint8_t>(i % 2 == 0 ? random.below(60) : 190 + random.below(60));
        }
        const test::guarded_buffer source(plane);
        test::guarded_buffer out(static_cast<std::size_t>(worst_case_payload_size(params)));
        threaded_executor executor(2);
        const unsigned long size =
            threaded_rle_encoder(executor).encode_frame(params, source.data(), source.size(), out.data(), out.size());
        const bytes payload(out.data(), out.data() + size);
        EXPECT_EQ(decoded(params, payload), plane);
    }
}

}  // namespace
