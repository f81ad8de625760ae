// SPDX-License-Identifier: BSD-3-Clause
//
// Unwrapping a compressed frame that stands beside a frame of several planes: the alpha plane is taken alone, into the
// rows of an order that the planes serve.
#include <gtest/gtest.h>

#include "box_builder.h"
#include "codec.h"

namespace {

using namespace test;

const bytes k_frame = counting(5, 0x40);
const bytes k_example = from_hex("01bffffc6fffff90df ad54396aa0");  // two rows of 0 1 2 3

// 4 x 2 pixels of RGB and an alpha plane as given.
bytes stream_with(uint32_t width, uint32_t height, std::string_view code, const bytes& payload) {
    return pack(box("QCXF", k_frame) + component(4, 2, "rg08", bytes(24)) + component(width, height, code, payload));
}

class unwrapping_beside_planes : public testing::Test {
  protected:
    outcome take(const frame_params& up, const bytes& stream, uint32_t dst_size) {
        return unwrap(decoder_, up, {wrap_record(1, 5)}, stream, dst_size);
    }

    decoder decoder_;
};

TEST_F(unwrapping_beside_planes, writes_the_alpha_rows_at_the_start_of_the_frame) {
    const bytes stream = stream_with(4, 2, " a08", counting(8, 1));
    expect_bytes(take(frame_record(5, 1, 4, 2), stream, 24), "01020304 05060708 cccccccc cccccccc cccccccc cccccccc");
    expect_bytes(take(frame_record(5, 1, 4, 2, 12), stream, 24),
                 "01020304 cccccccc cccccccc 05060708 cccccccc cccccccc");
    expect_bytes(take(frame_record(3, 1, 4, 2), stream, 32),
                 "01020304 05060708 cccccccc cccccccc cccccccc cccccccc cccccccc cccccccc");
}

TEST_F(unwrapping_beside_planes, of_coded_alpha_asks_the_caller_for_the_dimensions_and_not_the_plane) {
    expect_bytes(take(frame_record(5, 1, 4, 2), stream_with(8, 9, "rl08", k_example), 24),
                 "00010203 00010203 cccccccc cccccccc cccccccc cccccccc");
    expect_bytes(take(frame_record(5, 1, 4, 2), stream_with(4, 2, "rl16", k_example), 24),
                 "00010203 00010203 cccccccc cccccccc cccccccc cccccccc");
}

TEST_F(unwrapping_beside_planes, of_narrower_raw_alpha_leaves_the_rest_of_each_row_alone) {
    expect_bytes(take(frame_record(5, 1, 4, 2), stream_with(2, 2, " a08", counting(4, 1)), 24),
                 "0102cccc 0304cccc cccccccc cccccccc cccccccc cccccccc");
}

TEST_F(unwrapping_beside_planes, of_raw_alpha_that_does_not_fit_the_rows_is_refused) {
    const char* const text = "Alpha plane with different width or height is not supported by this decoder";
    expect_failure(take(frame_record(5, 1, 4, 2), stream_with(5, 2, " a08", counting(10)), 24), text);
    expect_failure(take(frame_record(5, 1, 4, 2), stream_with(4, 2, " a16", counting(16)), 24), text);
    // Wide enough rows of the caller's take it.
    expect_bytes(take(frame_record(5, 1, 4, 2, 12), stream_with(4, 2, " a16", counting(16)), 24),
                 "00010203 04050607 cccccccc 08090a0b 0c0d0e0f cccccccc");
}

TEST_F(unwrapping_beside_planes, of_raw_alpha_with_fewer_rows_than_the_source_holds_is_refused) {
    expect_failure(take(frame_record(5, 1, 4, 2), stream_with(4, 1, " a08", counting(4)), 24),
                   "Alpha plane with different width or height is not supported by this decoder");
}

TEST_F(unwrapping_beside_planes, of_raw_alpha_beside_narrowed_samples_is_refused) {
    const bytes stream =
        pack(box("QCXF", k_frame) + component(4, 2, "rg10", bytes(30)) + component(4, 2, " a08", counting(8)));
    expect_failure(take(frame_record(5, 3, 4, 2), stream, 48),
                   "planes with different bitdepth is not supported by this decoder");
}

TEST_F(unwrapping_beside_planes, of_coded_alpha_beside_narrowed_samples_is_refused_by_the_coder) {
    const bytes stream =
        pack(box("QCXF", k_frame) + component(4, 2, "rg10", bytes(30)) + component(4, 2, "rl08", k_example));
    expect_failure(take(frame_record(5, 3, 4, 2), stream, 48), "only 8, and 16 bitdepth supported");
}

TEST_F(unwrapping_beside_planes, of_a_lone_alpha_order_is_refused) {
    expect_failure(take(frame_record(14, 1, 4, 2), stream_with(4, 2, " a08", counting(8)), 8),
                   "src metadata type is incompatible with color component order or component type");
}

}  // namespace
