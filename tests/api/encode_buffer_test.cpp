// SPDX-License-Identifier: BSD-3-Clause
//
// Sizes of the encoder's buffers, frames without pixels, and what a failure leaves as it was.
#include <gtest/gtest.h>

#include "codec.h"
#include "format_cases.h"
#include "guarded_buffer.h"

namespace {

using namespace test;

TEST(encoder_buffers, a_source_one_byte_short_is_refused_for_every_pair) {
    encoder with;
    for (const format_case& row : all_format_cases()) {
        SCOPED_TRACE(testing::PrintToString(row));
        bytes src = from_hex(row.source);
        src.pop_back();
        const outcome result = encode(with, frame_record(row.order, row.type, row.width, row.height), raw_alpha(), src);
        expect_failure(result, "src size is too small");
        EXPECT_EQ(result.data, repeat(k_fill, result.data.size()));
    }
}

TEST(encoder_buffers, a_destination_one_byte_short_is_refused_before_anything_is_written) {
    encoder with;
    for (const format_case& row : all_format_cases()) {
        SCOPED_TRACE(testing::PrintToString(row));
        const uint32_t needed = static_cast<uint32_t>(from_hex(row.stream).size());
        const outcome result = encode(with, frame_record(row.order, row.type, row.width, row.height), raw_alpha(),
                                      from_hex(row.source), needed - 1);
        expect_failure(result, "dst size is too small");
        EXPECT_EQ(result.data, repeat(k_fill, needed - 1));
    }
}

TEST(encoder_buffers, a_larger_source_and_destination_change_nothing) {
    encoder with;
    for (const format_case& row : all_format_cases()) {
        SCOPED_TRACE(testing::PrintToString(row));
        const bytes expected = from_hex(row.stream);
        const outcome result =
            encode(with, frame_record(row.order, row.type, row.width, row.height), raw_alpha(),
                   from_hex(row.source) + repeat(0xee, 13), static_cast<uint32_t>(expected.size() + 11));
        expect_bytes(result, row.stream);
        EXPECT_EQ(to_hex(bytes(result.data.end() - 11, result.data.end())), to_hex(repeat(k_fill, 11)));
    }
}

TEST(encoder_buffers, a_coded_destination_one_byte_short_of_the_bound_is_refused) {
    encoder with;
    for (const coded_case& row : coded_cases()) {
        SCOPED_TRACE(testing::PrintToString(row));
        const frame_params up = frame_record(row.order, row.type, row.width, row.height);
        const stream_params cp = coded_alpha(row.slices);
        const uint32_t needed = QVRUncompressed_GetCompressedBufSize(&up, &cp);
        const outcome result = encode(with, up, cp, from_hex(row.source), needed - 1);
        expect_failure(result, "dst size is too small");
        EXPECT_EQ(result.data, repeat(k_fill, needed - 1));
    }
}

TEST(encoder_buffers, bytes_behind_the_bound_stay_untouched_with_coded_alpha) {
    for (const coded_case& row : coded_cases()) {
        SCOPED_TRACE(testing::PrintToString(row));
        const frame_params up = frame_record(row.order, row.type, row.width, row.height);
        const stream_params cp = coded_alpha(row.slices);
        const uint32_t needed = QVRUncompressed_GetCompressedBufSize(&up, &cp);
        const outcome result = encode(up, cp, from_hex(row.source), needed + 9);
        expect_bytes(result, row.stream);
        EXPECT_EQ(to_hex(bytes(result.data.end() - 9, result.data.end())), to_hex(repeat(k_fill, 9)));
    }
}

TEST(encoder_buffers, size_0_passes_the_entry_checks_and_fails_inside) {
    const frame_params up = frame_record(5, 1, 2, 2);
    expect_failure(encode(up, raw_alpha(), bytes{}, 64), "src size is too small");
    expect_failure(encode(up, raw_alpha(), repeat(0, 12), 0), "dst size is too small");
}

TEST(encoder_buffers, the_source_size_is_checked_before_the_destination_size) {
    expect_failure(encode(frame_record(5, 1, 2, 2), raw_alpha(), repeat(0, 11), 0), "src size is too small");
}

TEST(encoder_buffers, a_padded_source_must_hold_the_padding_of_its_last_row) {
    expect_failure(encode(frame_record(5, 1, 2, 2, 8), raw_alpha(), repeat(0, 15)), "src size is too small");
    expect_success(encode(frame_record(5, 1, 2, 2, 8), raw_alpha(), repeat(0, 16)));
}

TEST(encoder_buffers, bytes_written_may_be_null) {
    encoder with;
    const frame_params up = frame_record(14, 1, 2, 1);
    const stream_params cp = raw_alpha();
    const guarded_buffer src(from_hex("0102"));
    guarded_buffer dst(39);
    EXPECT_EQ(QVRUncompressed_EncodeFrame(with.handle(), &up, &cp, src.data(), 2, dst.data(), 39, nullptr), 0u);
    EXPECT_EQ(to_hex(dst.copy()), canonical("27000000 'pack' 15000000 'sinf' 02000000 01000000 ' a08' 00 "
                                            "0a000000 'sdat' 0102"));
}

TEST(encoder_buffers, buffers_with_a_guard_page_before_them_are_enough) {
    encoder with;
    for (const format_case& row : all_format_cases()) {
        SCOPED_TRACE(testing::PrintToString(row));
        const frame_params up = frame_record(row.order, row.type, row.width, row.height);
        const stream_params cp = raw_alpha();
        guarded_buffer src(from_hex(row.source), guard::before);
        src.make_read_only();
        const bytes expected = from_hex(row.stream);
        guarded_buffer dst(expected.size(), guard::before);
        uint32_t written = 0;
        ASSERT_EQ(QVRUncompressed_EncodeFrame(with.handle(), &up, &cp, src.data(), src.size32(), dst.data(),
                                              dst.size32(), &written),
                  0u);
        EXPECT_EQ(to_hex(dst.copy()), to_hex(expected));
    }
}

TEST(encoder_buffers, a_failed_call_leaves_the_handle_usable) {
    encoder with;
    const frame_params up = frame_record(14, 1, 2, 1);
    expect_failure(encode(with, up, raw_alpha(), bytes{}, 64), "src size is too small");
    expect_failure(encode(with, frame_record(0, 1, 2, 1), raw_alpha(), bytes{}, 64),
                   "combination of color component order and component type is not supported");
    expect_bytes(encode(with, up, raw_alpha(), from_hex("0102")),
                 "27000000 'pack' 15000000 'sinf' 02000000 01000000 ' a08' 00 0a000000 'sdat' 0102");
}

// Frames without pixels: headers alone, the same on each path and for each number of threads.
class empty_frames : public testing::TestWithParam<uint32_t> {};

TEST_P(empty_frames, of_every_pair_encode_to_headers_alone) {
    encoder with(GetParam());
    for (const format_case& row : all_format_cases()) {
        for (const bool no_width : {true, false}) {
            SCOPED_TRACE(testing::Message() << testing::PrintToString(row) << (no_width ? " without width" : ""));
            const frame_params up =
                frame_record(row.order, row.type, no_width ? 0 : row.width, no_width ? row.height : 0);
            const stream_params cp = raw_alpha();
            const outcome result = encode(with, up, cp, bytes{});
            expect_success(result);
            EXPECT_EQ(result.written, QVRUncompressed_GetCompressedBufSize(&up, &cp));
        }
    }
}

TEST_P(empty_frames, are_written_literally) {
    encoder with(GetParam());
    expect_bytes(encode(with, frame_record(1, 1, 0, 2), raw_alpha(), bytes{}),
                 "25000000 'pack' 15000000 'sinf' 00000000 02000000 'y208' 00 08000000 'sdat'");
    expect_bytes(encode(with, frame_record(9, 3, 5, 0), raw_alpha(), bytes{}),
                 "25000000 'pack' 15000000 'sinf' 05000000 00000000 'y410' 00 08000000 'sdat'");
    expect_bytes(encode(with, frame_record(7, 1, 0, 0), raw_alpha(), bytes{}),
                 "52000000 'pack' "
                 "25000000 'icmp' 15000000 'sinf' 00000000 00000000 'rg08' 00 08000000 'sdat' "
                 "25000000 'icmp' 15000000 'sinf' 00000000 00000000 ' a08' 00 08000000 'sdat'");
    expect_bytes(encode(with, frame_record(10, 1, 4, 0), raw_alpha(), bytes{}),
                 "77000000 'pack' "
                 "25000000 'icmp' 15000000 'sinf' 04000000 00000000 ' y08' 00 08000000 'sdat' "
                 "25000000 'icmp' 15000000 'sinf' 02000000 00000000 'cb08' 00 08000000 'sdat' "
                 "25000000 'icmp' 15000000 'sinf' 02000000 00000000 'cr08' 00 08000000 'sdat'");
}

TEST_P(empty_frames, are_refused_with_coded_alpha) {
    encoder with(GetParam());
    for (const uint32_t order : {3u, 4u, 7u, 8u, 11u, 12u, 13u, 14u, 15u, 16u}) {
        SCOPED_TRACE(order);
        expect_failure(encode(with, frame_record(order, 1, 0, 2), coded_alpha(), bytes{}), "Invalid width");
        expect_failure(encode(with, frame_record(order, 2, 2, 0), coded_alpha(), bytes{}), "Invalid height");
        expect_failure(encode(with, frame_record(order, 1, 0, 0), coded_alpha(), bytes{}), "Invalid width");
    }
}

TEST_P(empty_frames, decode_to_nothing) {
    decoder with(GetParam());
    const bytes wide = from_hex("25000000 'pack' 15000000 'sinf' 05000000 00000000 'y410' 00 08000000 'sdat'");
    const outcome flat = decode(with, frame_record(9, 3, 5, 0), wide, 7);
    expect_success(flat);
    EXPECT_EQ(flat.written, 0u);
    EXPECT_EQ(flat.data, repeat(k_fill, 7));
    const bytes tall = from_hex("25000000 'pack' 15000000 'sinf' 00000000 02000000 'y208' 00 08000000 'sdat'");
    for (const uint32_t order : {1u, 2u}) {
        const outcome narrow = decode(with, frame_record(order, 1, 0, 2), tall, 0);
        expect_success(narrow);
        EXPECT_EQ(narrow.written, 0u);
    }
}

INSTANTIATE_TEST_SUITE_P(threads, empty_frames, testing::Values(1u, 2u, 3u, 8u), testing::PrintToStringParamName());

}  // namespace
