// SPDX-License-Identifier: BSD-3-Clause
//
// The same for the functions that take wrap records: record by record, and the record before its pointer.
#include <gtest/gtest.h>

#include <vector>

#include "argument_sweep.h"
#include "box_builder.h"
#include "codec.h"

namespace {

using namespace test;

const uint8_t k_payload[4] = {1, 2, 3, 4};

// One row of the table: two records, each with a good or a bad size field and a payload pointer or null.
struct record_row {
    uint64_t first_size;
    bool first_pointer;
    uint64_t second_size;
    bool second_pointer;
    uint32_t status_by_record;   // encoding and unwrapping: records and pointers in turn
    uint32_t status_of_records;  // reading: records alone
};

const record_row k_record_rows[] = {
    {16, true, 16, true, 0, 0},          {15, true, 16, true, 3, 3},
    {17, true, 16, true, 3, 3},          {0, true, 16, true, 3, 3},
    {16, false, 16, true, 2, 0},         {15, false, 16, true, 3, 3},
    {16, true, 15, true, 3, 3},          {16, true, 16, false, 2, 0},
    {16, true, 15, false, 3, 3},         {16, false, 15, true, 2, 3},
    {16, false, 16, false, 2, 0},        {15, true, 16, false, 3, 3},
    {16, false, 15, false, 2, 3},        {15, false, 15, false, 3, 3},
    {0x100000010, true, 16, true, 3, 3}, {16, true, ~uint64_t{0}, true, 3, 3},
};

std::vector<wrap_params> records_of(const record_row& row) {
    std::vector<wrap_params> records = {wrap_record(2, 4), wrap_record(2, 4)};
    records[0].size = row.first_size;
    records[1].size = row.second_size;
    return records;
}

TEST(wrap_argument_checks, size_query_fails_with_0) {
    const wrap_params record = wrap_record(2, 4);
    for_each_argument(3, frame_record(0, 0, 4, 2), [&](const arguments& with) {
        for (const uint32_t count : {0u, 1u}) {
            EXPECT_EQ(
                QVRUncompressed_GetCompressedWrapBufSize(with.unless_null(0, &with.up), with.unless_null(1, &with.cp),
                                                         with.unless_null(2, &record), count),
                with.expected == 0 ? 37 + count * 12 : 0);
        }
    });
}

TEST(wrap_argument_checks, size_query_looks_at_each_counted_record) {
    const frame_params up = frame_record(0, 0, 4, 2);
    const stream_params cp = raw_alpha();
    for (const record_row& row : k_record_rows) {
        const auto records = records_of(row);
        EXPECT_EQ(QVRUncompressed_GetCompressedWrapBufSize(&up, &cp, records.data(), 2),
                  row.status_of_records == 0 ? 61u : 0u);
        EXPECT_EQ(QVRUncompressed_GetCompressedWrapBufSize(&up, &cp, records.data(), 1),
                  row.first_size == 16 ? 49u : 0u);
        // With a count of 0 no size field is looked at.
        EXPECT_EQ(QVRUncompressed_GetCompressedWrapBufSize(&up, &cp, records.data(), 0), 37u);
    }
}

TEST(wrap_argument_checks, wrapping_tests_pointers_then_record_sizes) {
    encoder out;
    const wrap_params record = wrap_record(2, 4);
    const uint8_t* const payloads[] = {k_payload};
    for_each_argument(5, frame_record(0, 0, 4, 2), [&](const arguments& with) {
        bytes dst(49, k_fill);
        uint32_t written = k_untouched;
        ASSERT_EQ(QVRUncompressed_EncodeAndWrapFrame(with.unless_null(0, out.handle()), with.unless_null(1, &with.up),
                                                     with.unless_null(2, &with.cp), &record, 1, nullptr, 0,
                                                     with.unless_null(3, payloads), with.unless_null(4, dst.data()), 49,
                                                     &written),
                  with.expected);
        ASSERT_EQ(written, with.expected == 0 ? 49u : k_untouched);
        ASSERT_EQ(dst == repeat(k_fill, 49), with.expected != 0);
    });
    EXPECT_EQ(out.messages(), message_list{});
}

TEST(wrap_argument_checks, wrapping_tests_each_record_before_its_payload) {
    encoder with;
    const frame_params up = frame_record(0, 0, 4, 2);
    const stream_params cp = raw_alpha();
    for (const record_row& row : k_record_rows) {
        const auto records = records_of(row);
        const uint8_t* const payloads[] = {row.first_pointer ? k_payload : nullptr,
                                           row.second_pointer ? k_payload : nullptr};
        uint8_t dst[64] = {};
        EXPECT_EQ(QVRUncompressed_EncodeAndWrapFrame(with.handle(), &up, &cp, records.data(), 2, nullptr, 0, payloads,
                                                     dst, 64, nullptr),
                  row.status_by_record)
            << row.first_size << row.first_pointer << row.second_size << row.second_pointer;
        EXPECT_EQ(QVRUncompressed_EncodeAndWrapFrame(with.handle(), &up, &cp, records.data(), 0, nullptr, 0, payloads,
                                                     dst, 64, nullptr),
                  0u);
    }
}

TEST(wrap_argument_checks, wrapping_looks_at_the_frame_record_before_the_wrap_records) {
    encoder with;
    frame_params up = frame_record(0, 0, 4, 2);
    stream_params cp = raw_alpha();
    const wrap_params record = wrap_record(2, 4);
    const uint8_t* const no_payload[] = {nullptr};
    uint8_t dst[64] = {};
    const auto call = [&] {
        return QVRUncompressed_EncodeAndWrapFrame(with.handle(), &up, &cp, &record, 1, nullptr, 0, no_payload, dst, 64,
                                                  nullptr);
    };
    EXPECT_EQ(call(), 2u);
    up.size = 35;
    EXPECT_EQ(call(), 3u);
    up.size = 36;
    cp.size = 11;
    EXPECT_EQ(call(), 3u);
}

TEST(wrap_argument_checks, no_record_array_is_a_null_pointer) {
    encoder out;
    decoder in;
    const frame_params up = frame_record(14, 1, 4, 2);
    const stream_params cp = raw_alpha();
    const bytes src = counting(64);
    uint8_t dst[128] = {};
    const uint8_t* const payloads[] = {k_payload};
    uint8_t* const targets[] = {dst};
    for (const uint32_t count : {0u, 1u}) {
        EXPECT_EQ(QVRUncompressed_EncodeAndWrapFrame(out.handle(), &up, &cp, nullptr, count, src.data(), 64, payloads,
                                                     dst, 128, nullptr),
                  2u);
        EXPECT_EQ(QVRUncompressed_DecodeAndUnwrapFrame(in.handle(), &up, nullptr, count, src.data(), 64, dst, 128,
                                                       targets, nullptr),
                  2u);
    }
}

const bytes k_stitched = single_plane(4, 2, "stch", box("stch", counting(4)) + box("tile", counting(4)));

TEST(wrap_argument_checks, reading_wraps_tests_pointers_then_record_sizes) {
    decoder in;
    for (const uint32_t count : {0u, 1u, 2u}) {
        SCOPED_TRACE(testing::Message() << count << " records");
        for (const bool no_records : {false, true}) {
            for_each_frame_argument(3, frame_record(0, 0, 77, 0), [&](arguments& with) {
                std::vector<wrap_params> records = {wrap_record(77, 77), wrap_record(77, 77)};
                const uint32_t expected = no_records && count != 0 ? 2 : with.expected;
                ASSERT_EQ(QVRUncompressed_ReadWrapMetadata(
                              with.unless_null(0, in.handle()), with.unless_null(1, k_stitched.data()),
                              static_cast<uint32_t>(k_stitched.size()), with.unless_null(2, &with.up),
                              no_records ? nullptr : records.data(), count),
                          expected);
                ASSERT_EQ(with.up.width, expected == 0 ? 4u : 77u);
                ASSERT_EQ(records[0].wrapType, expected == 0 && count > 0 ? 2u : 77u);
                ASSERT_EQ(records[1].wrapType, expected == 0 && count > 1 ? 3u : 77u);
            });
        }
    }
}

TEST(wrap_argument_checks, reading_wraps_looks_at_each_counted_record) {
    decoder with;
    for (const record_row& row : k_record_rows) {
        auto records = records_of(row);
        frame_params up = frame_record(0, 0, 77, 0);
        EXPECT_EQ(QVRUncompressed_ReadWrapMetadata(with.handle(), k_stitched.data(),
                                                   static_cast<uint32_t>(k_stitched.size()), &up, records.data(), 2),
                  row.status_of_records);
        EXPECT_EQ(up.width, row.status_of_records == 0 ? 4u : 77u);
        records = records_of(row);
        EXPECT_EQ(QVRUncompressed_ReadWrapMetadata(with.handle(), k_stitched.data(),
                                                   static_cast<uint32_t>(k_stitched.size()), &up, records.data(), 0),
                  0u);
    }
}

TEST(wrap_argument_checks, unwrapping_tests_pointers_then_the_record_size) {
    decoder in;
    const wrap_params record = wrap_record(2, 4);
    for (const bool no_target : {false, true}) {  // which is no error here
        for_each_frame_argument(4, frame_record(0, 0, 4, 2), [&](const arguments& with) {
            bytes target(4, k_fill);
            uint8_t* const targets[] = {target.data()};
            uint8_t dst[8] = {};
            uint32_t written = k_untouched;
            ASSERT_EQ(QVRUncompressed_DecodeAndUnwrapFrame(
                          with.unless_null(0, in.handle()), with.unless_null(1, &with.up), &record, 1,
                          with.unless_null(2, k_stitched.data()), static_cast<uint32_t>(k_stitched.size()),
                          no_target ? nullptr : dst, 8, with.unless_null(3, targets), &written),
                      with.expected);
            ASSERT_EQ(written, with.expected == 0 ? 0u : k_untouched);
            ASSERT_EQ(target == counting(4), with.expected == 0);
        });
    }
}

TEST(wrap_argument_checks, unwrapping_tests_each_record_before_its_buffer) {
    decoder with;
    frame_params up = frame_record(0, 0, 4, 2);
    for (const record_row& row : k_record_rows) {
        const auto records = records_of(row);
        uint8_t copies[2][4] = {};
        uint8_t* const targets[] = {row.first_pointer ? copies[0] : nullptr, row.second_pointer ? copies[1] : nullptr};
        EXPECT_EQ(QVRUncompressed_DecodeAndUnwrapFrame(with.handle(), &up, records.data(), 2, k_stitched.data(),
                                                       static_cast<uint32_t>(k_stitched.size()), nullptr, 0, targets,
                                                       nullptr),
                  row.status_by_record);
        EXPECT_EQ(QVRUncompressed_DecodeAndUnwrapFrame(with.handle(), &up, records.data(), 0, k_stitched.data(),
                                                       static_cast<uint32_t>(k_stitched.size()), nullptr, 0, targets,
                                                       nullptr),
                  0u);
    }
}

}  // namespace
