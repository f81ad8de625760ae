// SPDX-License-Identifier: BSD-3-Clause
//
// Stitched chunks: wrapping, counting, describing and unwrapping them.
#include <gtest/gtest.h>

#include "box_builder.h"
#include "codec.h"
#include "guarded_buffer.h"

namespace {

using namespace test;

const bytes k_first = counting(10, 0x10);
const bytes k_second = counting(20, 0x40);
const bytes k_third = counting(30, 0x80);

const std::vector<wrap_params> k_records = {wrap_record(2, 10), wrap_record(2, 20), wrap_record(2, 30)};

bytes stitched(const bytes& boxes) {
    return single_plane(4, 2, "stch", boxes);
}

const bytes k_stream = stitched(box("stch", k_first) + box("tile", k_second) + box("tile", k_third));

outcome try_unwrap(const std::vector<wrap_params>& records, const bytes& stream,
                   std::optional<uint32_t> count = std::nullopt) {
    decoder with;
    return unwrap(with, frame_record(0, 0, 0, 0), records, stream, std::nullopt, count);
}

TEST(stitched_wrapping, three_chunks_of_10_20_and_30_bytes) {
    encoder with;
    const outcome result =
        wrap(with, frame_record(0, 0, 4, 2), raw_alpha(), k_records, {k_first, k_second, k_third}, nullptr);
    expect_bytes(result,
                 "79000000 'pack' 15000000 'sinf' 04000000 02000000 'stch' 00 5c000000 'sdat' "
                 "12000000 'stch' 10111213 14151617 1819 "
                 "1c000000 'tile' 40414243 44454647 48494a4b 4c4d4e4f 50515253 "
                 "26000000 'tile' 80818283 84858687 88898a8b 8c8d8e8f 90919293 94959697 98999a9b 9c9d");
    EXPECT_EQ(result.data.size(), 121u);
}

TEST(stitched_wrapping, takes_size_and_layout_from_the_frame_record_without_its_rules) {
    encoder with;
    // Each of these fields would be refused for a frame of its own.
    const frame_params up = frame_record(10, 3, 3, 5, 1, 1, 0x101);
    const outcome result = wrap(with, up, coded_alpha(), {wrap_record(2, 1)}, {bytes{0xab}}, nullptr);
    expect_bytes(result,
                 "2e000000 'pack' 15000000 'sinf' 03000000 05000000 'stch' 01 11000000 'sdat' 09000000 'stch' ab");
    expect_success(wrap(with, frame_record(3, 3, 4, 2), coded_alpha(), {wrap_record(2, 1)}, {bytes{1}}, nullptr));
}

TEST(stitched_wrapping, only_the_first_type_decides) {
    encoder with;
    const outcome result =
        wrap(with, frame_record(0, 0, 4, 2), raw_alpha(), {wrap_record(2, 10), wrap_record(1, 20), wrap_record(3, 30)},
             {k_first, k_second, k_third}, nullptr);
    expect_success(result);
    EXPECT_EQ(to_hex(result.frame()), to_hex(k_stream));
}

TEST(stitched_wrapping, chunks_may_be_empty) {
    encoder with;
    expect_bytes(wrap(with, frame_record(0, 0, 4, 2), raw_alpha(),
                      {wrap_record(2, 0), wrap_record(2, 1), wrap_record(2, 0)}, {bytes{}, bytes{7}, bytes{}}, nullptr),
                 "3e000000 'pack' 15000000 'sinf' 04000000 02000000 'stch' 00 21000000 'sdat' "
                 "08000000 'stch' 09000000 'tile' 07 08000000 'tile'");
}

TEST(stitched_wrapping, a_count_of_0_makes_an_empty_plane) {
    encoder with;
    const outcome result =
        wrap(with, frame_record(0, 0, 4, 2), raw_alpha(), {wrap_record(2, 10)}, {}, nullptr, std::nullopt, 0);
    expect_bytes(result, "25000000 'pack' 15000000 'sinf' 04000000 02000000 'stch' 00 08000000 'sdat'");
    EXPECT_EQ(read_wrap_count(result.frame()), 0u);
    EXPECT_EQ(read_metadata(result.frame()).status, 0u);
}

TEST(stitched_wrapping, a_destination_one_byte_short_is_refused) {
    encoder with;
    const outcome result =
        wrap(with, frame_record(0, 0, 4, 2), raw_alpha(), k_records, {k_first, k_second, k_third}, nullptr, 120);
    expect_failure(result, "dst size is too small");
    EXPECT_EQ(result.data, repeat(k_fill, 120));
}

TEST(stitched_wrapping, an_unknown_type_in_any_record_is_refused) {
    encoder with;
    expect_failure(wrap(with, frame_record(0, 0, 4, 2), raw_alpha(), {wrap_record(2, 10), wrap_record(0, 20)},
                        {k_first, k_second}, nullptr, 4096),
                   "Unknown wrap type");
}

TEST(stitched_wrapping, chunks_past_32_bits_are_larger_than_any_destination) {
    encoder with;
    sparse_buffer chunk(0xffffffffu);
    const uint8_t* const payloads[] = {chunk.data(), chunk.data()};
    const wrap_params records[] = {wrap_record(2, 0xffffffffu), wrap_record(2, 0xffffffffu)};
    const frame_params up = frame_record(0, 0, 4, 2);
    const stream_params cp = raw_alpha();
    guarded_buffer target(51);
    EXPECT_EQ(QVRUncompressed_EncodeAndWrapFrame(with.handle(), &up, &cp, records, 2, nullptr, 0, payloads,
                                                 target.data(), 51, nullptr),
              1u);
    EXPECT_EQ(with.messages(), message_list{"dst size is too small"});
}

TEST(wrap_count, is_that_of_all_wrap_boxes) {
    EXPECT_EQ(read_wrap_count(k_stream), 3u);
    EXPECT_EQ(read_wrap_count(single_plane(2, 1, " a08", {1, 2})), 0u);
    EXPECT_EQ(read_wrap_count(pack(box("QCXF", k_first) + bare_plane(2, 1, " a08", {1, 2}))), 1u);
    EXPECT_EQ(read_wrap_count(pack(box("QCXF", k_first) + box("QCXF", {}) + bare_plane(2, 1, " a08", {1, 2}) +
                                   box("QCXF", k_second))),
              3u);
    EXPECT_EQ(read_wrap_count(pack(box("QCXF", k_first) + bare_plane(2, 1, "stch", box("stch", {}) + box("tile", {})))),
              3u);
}

TEST(wrap_count, of_something_else_is_0) {
    EXPECT_EQ(read_wrap_count({}), 0u);
    EXPECT_EQ(read_wrap_count(repeat(0, 64)), 0u);
    EXPECT_EQ(read_wrap_count(pack(box("QCXF", k_first))), 0u);
    EXPECT_EQ(QVRUncompressed_ReadWrapCount(nullptr, 0), 0u);
    EXPECT_EQ(QVRUncompressed_ReadWrapCount(nullptr, 100), 0u);
}

TEST(wrap_count, knows_three_boxes_inside_a_stitched_plane_and_skips_others) {
    EXPECT_EQ(read_wrap_count(stitched(box("QCXF", {}) + box("free", k_first) + box("tile", {}) + box("stch", {}))),
              3u);
    EXPECT_EQ(read_wrap_count(stitched(box_with_size("tiny", 0, {}) + box("stch", {}) + box_with_size("tiny", 7, {}) +
                                       box("tile", {}))),
              2u);
    EXPECT_EQ(read_wrap_count(stitched({})), 0u);
}

TEST(wrap_count, takes_stitch_boxes_at_the_top_for_unknown_ones) {
    EXPECT_EQ(read_wrap_count(pack(box("stch", k_first) + box("tile", k_first) + bare_plane(2, 1, " a08", {1, 2}))),
              0u);
}

TEST(wrap_count, ignores_fewer_than_8_bytes_behind_the_last_chunk) {
    for (size_t extra = 1; extra < 8; ++extra) {
        EXPECT_EQ(read_wrap_count(stitched(box("stch", k_first) + repeat(0xff, extra))), 1u) << extra;
        EXPECT_EQ(read_wrap_count(stitched(repeat(0, extra))), 0u) << extra;
    }
}

TEST(wrap_metadata, of_three_chunks) {
    const metadata read = read_wrap_metadata(k_stream, 3);
    ASSERT_EQ(read.status, 0u);
    const uint32_t types[] = {2, 3, 3};
    const uint32_t sizes[] = {10, 20, 30};
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(read.wraps[i].size, 16u);
        EXPECT_EQ(read.wraps[i].wrapType, types[i]);
        EXPECT_EQ(read.wraps[i].dataSize, sizes[i]);
    }
    EXPECT_EQ(read.up.size, 36u);
    EXPECT_EQ(read.up.colorComponentOrder, 0u);
    EXPECT_EQ(read.up.componentType, 0u);
    EXPECT_EQ(read.up.width, 4u);
    EXPECT_EQ(read.up.height, 2u);
}

TEST(wrap_metadata, of_a_qcx_frame) {
    const metadata read = read_wrap_metadata(pack(box("QCXF", k_second) + bare_plane(2, 1, "rl16", {0}, 1)), 1);
    ASSERT_EQ(read.status, 0u);
    EXPECT_EQ(read.wraps[0].wrapType, 1u);
    EXPECT_EQ(read.wraps[0].dataSize, 20u);
    EXPECT_EQ(read.up.colorComponentOrder, 14u);
    EXPECT_EQ(read.up.componentType, 2u);
    EXPECT_EQ(read.up.frameLayout, 1u);
}

TEST(wrap_metadata, may_be_asked_for_fewer_records_or_none) {
    const metadata two = read_wrap_metadata(k_stream, 2);
    ASSERT_EQ(two.status, 0u);
    EXPECT_EQ(two.wraps[1].dataSize, 20u);
    EXPECT_EQ(read_wrap_metadata(k_stream, 0).status, 0u);
    EXPECT_EQ(read_wrap_metadata(single_plane(2, 1, " a08", {1, 2}), 0).status, 0u);
}

TEST(wrap_metadata, asked_for_too_many_records_fails_with_the_frame_record_filled) {
    const metadata read = read_wrap_metadata(k_stream, 4);
    EXPECT_EQ(read.status, 1u);
    EXPECT_EQ(read.messages, message_list{"Can't read 4 wrap boxes, only 3 found"});
    EXPECT_EQ(read.up.width, 4u);
    EXPECT_EQ(read.wraps[0].wrapType, 77u);
    EXPECT_EQ(read.wraps[0].dataSize, 0x5a5a5a5au);
    EXPECT_EQ(read_wrap_metadata(single_plane(2, 1, " a08", {1, 2}), 1).messages,
              message_list{"Can't read 1 wrap boxes, only 0 found"});
}

TEST(wrap_metadata, of_a_broken_stream_leaves_all_records_untouched) {
    const metadata read = read_wrap_metadata(repeat(0, 9), 1);
    EXPECT_EQ(read.status, 1u);
    EXPECT_EQ(read.messages, message_list{"'pack' box expected at offset 4"});
    EXPECT_EQ(read.up.width, 0u);
    EXPECT_EQ(read.wraps[0].wrapType, 77u);
}

TEST(wrap_metadata, reports_the_declared_size_of_a_box_that_runs_past_the_end) {
    const bytes stream = pack(bare_plane(2, 1, " a08", {1, 2}) + box_with_size("QCXF", 1000, k_first));
    EXPECT_EQ(read_wrap_count(stream), 1u);
    EXPECT_EQ(read_wrap_metadata(stream, 1).wraps[0].dataSize, 992u);
    const bytes chunk = stitched(box("stch", k_first) + box_with_size("tile", 500, k_first));
    EXPECT_EQ(read_wrap_count(chunk), 2u);
    EXPECT_EQ(read_wrap_metadata(chunk, 2).wraps[1].dataSize, 492u);
}

TEST(stitch_boxes, smaller_than_their_header_are_refused) {
    for (const char* type : {"stch", "tile", "QCXF"}) {
        for (const uint32_t size : {0u, 1u, 7u}) {
            const bytes stream = stitched(box("free", {}) + box_with_size(type, size, {}));
            EXPECT_EQ(read_metadata(stream).messages,
                      message_list{std::string("'") + type + "' box size expected to be at least 8 at offset 45"});
            EXPECT_EQ(read_wrap_count(stream), 0u);
        }
    }
}

TEST(stitched_unwrapping, copies_each_chunk) {
    const outcome result = try_unwrap(k_records, k_stream);
    expect_success(result);
    EXPECT_EQ(result.written, 0u);
    ASSERT_EQ(result.payloads.size(), 3u);
    EXPECT_EQ(to_hex(result.payloads[0]), to_hex(k_first));
    EXPECT_EQ(to_hex(result.payloads[1]), to_hex(k_second));
    EXPECT_EQ(to_hex(result.payloads[2]), to_hex(k_third));
}

TEST(stitched_unwrapping, may_take_fewer_chunks) {
    const outcome result = try_unwrap({wrap_record(2, 10)}, k_stream);
    expect_success(result);
    EXPECT_EQ(to_hex(result.payloads[0]), to_hex(k_first));
}

TEST(stitched_unwrapping, leaves_dst_alone) {
    decoder with;
    const outcome result = unwrap(with, frame_record(14, 1, 4, 2), k_records, k_stream, 8);
    expect_success(result);
    EXPECT_EQ(result.written, 0u);
    EXPECT_EQ(result.data, repeat(k_fill, 8));
}

TEST(stitched_unwrapping, does_not_look_at_the_frame_record) {
    decoder with;
    expect_success(unwrap(with, frame_record(99, 99, 1, 1, 1, 1, 99), k_records, k_stream, std::nullopt));
}

TEST(stitched_unwrapping, of_more_chunks_than_there_are_fails) {
    expect_failure(
        try_unwrap({wrap_record(2, 10), wrap_record(2, 20), wrap_record(2, 30), wrap_record(2, 1)}, k_stream),
        "3 wrap boxes found in bytestream, but 4 expected according to wrap params");
    expect_failure(try_unwrap({wrap_record(2, 10)}, single_plane(2, 1, " a08", {1, 2})),
                   "0 wrap boxes found in bytestream, but 1 expected according to wrap params");
}

TEST(stitched_unwrapping, compares_the_first_size_only) {
    for (const uint32_t size : {9u, 11u, 0u}) {
        expect_failure(try_unwrap({wrap_record(2, size), wrap_record(2, 20)}, k_stream),
                       "Extra box size is not equal wrap params size");
    }
    // A larger second buffer than its chunk needs: the chunk is copied, the rest stays.
    const outcome result = try_unwrap({wrap_record(2, 10), wrap_record(2, 25)}, k_stream);
    expect_success(result);
    EXPECT_EQ(to_hex(result.payloads[1]), to_hex(k_second + repeat(k_fill, 5)));
}

TEST(stitched_unwrapping, looks_at_the_count_before_the_size) {
    expect_failure(try_unwrap({wrap_record(2, 9), wrap_record(2, 20), wrap_record(2, 30), wrap_record(2, 1)}, k_stream),
                   "3 wrap boxes found in bytestream, but 4 expected according to wrap params");
}

TEST(stitched_unwrapping, does_not_look_at_further_types) {
    const outcome result = try_unwrap({wrap_record(2, 10), wrap_record(1, 20), wrap_record(0, 30)}, k_stream);
    expect_success(result);
    EXPECT_EQ(to_hex(result.payloads[2]), to_hex(k_third));
}

TEST(stitched_unwrapping, of_a_first_box_of_another_kind) {
    const outcome tile = try_unwrap({wrap_record(2, 10)}, stitched(box("tile", k_first)));
    expect_success(tile);
    EXPECT_EQ(to_hex(tile.payloads[0]), to_hex(k_first));
    const outcome qcx =
        try_unwrap({wrap_record(2, 20)}, pack(box("QCXF", k_second) + bare_plane(2, 1, " a08", {1, 2})));
    expect_success(qcx);
    EXPECT_EQ(to_hex(qcx.payloads[0]), to_hex(k_second));
}

TEST(stitched_unwrapping, of_a_count_of_0_copies_nothing) {
    const outcome with_boxes = try_unwrap({wrap_record(2, 10)}, k_stream, 0);
    expect_success(with_boxes);
    EXPECT_EQ(with_boxes.written, 0u);
    EXPECT_EQ(with_boxes.payloads[0], repeat(k_fill, 10));
    const outcome without = try_unwrap({wrap_record(2, 10)}, single_plane(2, 1, " a08", {1, 2}), 0);
    expect_success(without);
    EXPECT_EQ(without.written, 0u);
}

TEST(stitched_unwrapping, of_empty_chunks) {
    const outcome result =
        try_unwrap({wrap_record(2, 0), wrap_record(2, 0)}, stitched(box("stch", {}) + box("tile", {})));
    expect_success(result);
}

TEST(stitched_unwrapping, of_a_broken_stream_reports_the_stream) {
    expect_failure(try_unwrap({wrap_record(2, 0)}, repeat(0, 7)), "buffer size should be at least 8");
}

TEST(stitched_unwrapping, refuses_a_chunk_that_does_not_lie_inside_the_source) {
    const bytes stream = stitched(box_with_size("stch", 500, k_first));
    expect_failure(try_unwrap({wrap_record(2, 492)}, stream), "can't read 492 bytes at offset 45");
    const bytes second = stitched(box("stch", k_first) + box_with_size("tile", 50, k_first));
    expect_failure(try_unwrap({wrap_record(2, 10), wrap_record(2, 42)}, second), "can't read 42 bytes at offset 63");
    expect_success(try_unwrap({wrap_record(2, 10)}, second));
}

TEST(stitched_unwrapping, takes_a_chunk_that_runs_past_the_plane_but_not_past_the_source) {
    const bytes stream = stitched(box_with_size("stch", 18, counting(9, 0x10))) + bytes{0x19};
    const outcome result = try_unwrap({wrap_record(2, 10)}, stream);
    expect_success(result);
    EXPECT_EQ(to_hex(result.payloads[0]), to_hex(k_first));
}

TEST(stitched_frames, round_trip_on_each_number_of_threads) {
    for (const uint32_t threads : {0u, 1u, 2u, 8u}) {
        encoder out(threads);
        decoder in(threads);
        const outcome wrapped =
            wrap(out, frame_record(0, 0, 4, 2), raw_alpha(), k_records, {k_first, k_second, k_third}, nullptr);
        expect_success(wrapped);
        const outcome result = unwrap(in, frame_record(0, 0, 4, 2), k_records, wrapped.frame(), std::nullopt);
        expect_success(result);
        EXPECT_EQ(to_hex(result.payloads[2]), to_hex(k_third));
    }
}

}  // namespace
