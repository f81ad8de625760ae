// SPDX-License-Identifier: BSD-3-Clause
//
// Wrap records that do not agree with the boxes: types, sizes and counts, on reading and on writing.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "box_builder.h"
#include "changed.h"
#include "good_streams.h"

namespace {

using namespace hostile;
using namespace test;

const uint32_t k_types[] = {0, 1, 2, 3, 4, 0x80000000u, 0xffffffffu};

class wrap_records : public testing::TestWithParam<std::string> {};

TEST_P(wrap_records, of_any_type_size_and_count_have_one_outcome) {
    const good_stream& family = good(GetParam());
    ASSERT_TRUE(proves_good(family));
    prober one(1);
    prober four(4);
    for (const uint32_t type : k_types) {
        for (uint32_t count = 1; count <= 5; ++count) {
            for (const uint32_t size : bad_sizes(family.records[0].dataSize)) {
                SCOPED_TRACE(testing::Message() << count << " of type " << type << " and size " << size);
                question asked = ask_about(family, family.stream);
                asked.records.assign(count, wrap_record(type, size));
                one.ask(asked);
                four.ask(asked);
                // A first record that is right.
                asked.records[0] = family.records[0];
                one.ask(asked);
                ASSERT_FALSE(HasFailure());
            }
        }
    }
}

TEST_P(wrap_records, for_any_frame_record_have_one_outcome) {
    const good_stream& family = good(GetParam());
    prober one(1);
    for (uint32_t order = 0; order <= 17; ++order) {
        for (const uint32_t type : {0u, 1u, 2u, 3u, 5u, 6u, 7u, 214u}) {
            for (const uint32_t stride : {0u, 1u, 3u, 40u}) {
                SCOPED_TRACE(testing::Message() << "order " << order << ", type " << type << ", stride " << stride);
                question asked = ask_about(family, family.stream);
                asked.up.colorComponentOrder = order;
                asked.up.componentType = type;
                asked.up.rowBytes = asked.up.rowBytes2 = stride;
                one.ask(asked);
                ASSERT_FALSE(HasFailure());
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(family, wrap_records, testing::ValuesIn(family_names()),
                         [](const auto& named) { return named.param; });

TEST(wrap_record, that_says_less_or_more_than_the_box_takes_nothing_out) {
    const good_stream& family = good("qcx_with_coded_alpha");
    ASSERT_TRUE(proves_good(family));
    prober with;
    for (const uint32_t size : {0u, 1u, 7u, 8u, 49u, 51u, 58u, 0x7fffffffu, 0x80000000u, 0xffffffffu}) {
        question asked = ask_about(family, family.stream);
        asked.records = {wrap_record(1, size)};
        EXPECT_EQ(with.ask(asked).unwrap, "'QCXF' box size is not equal wrap params size");
    }
}

TEST(wrap_record, of_another_type_takes_nothing_out) {
    prober with;
    question asked = ask_about(good("qcx_with_raw_alpha"), good("qcx_with_raw_alpha").stream);
    for (const uint32_t type : {0u, 3u, 4u, 0xffffffffu}) {
        asked.records = {wrap_record(type, 50)};
        EXPECT_EQ(with.ask(asked).unwrap, "'QCXF' box type is not equal to wrap params type");
    }
    // Type 2 takes the boxes of any frame out, and the frame beside them is not looked at.
    asked.records = {wrap_record(2, 50)};
    EXPECT_EQ(with.ask(asked).unwrap, "ok");
    asked = ask_about(good("stitched"), good("stitched").stream);
    asked.records = {wrap_record(1, 10)};
    EXPECT_EQ(with.ask(asked).unwrap, "Alpha plane is not found");
}

TEST(wrap_record, of_a_count_the_stream_does_not_have) {
    prober with;
    question asked = ask_about(good("stitched"), good("stitched").stream);
    asked.records.push_back(wrap_record(3, 5));
    answers heard = with.ask(asked);
    EXPECT_EQ(heard.unwrap, "3 wrap boxes found in bytestream, but 4 expected according to wrap params");
    EXPECT_EQ(heard.wrap_metadata, "Can't read 4 wrap boxes, only 3 found");
    asked.records.resize(2);
    heard = with.ask(asked);
    EXPECT_EQ(heard.unwrap, "ok");
    EXPECT_EQ(heard.wrap_metadata, "ok");
    asked = ask_about(good("qcx_with_raw_alpha"), good("qcx_with_raw_alpha").stream);
    asked.records.push_back(wrap_record(1, 50));
    heard = with.ask(asked);
    EXPECT_EQ(heard.unwrap, "Only single QCX wrap chunk supported for decode");
    EXPECT_EQ(heard.wrap_metadata, "Can't read 2 wrap boxes, only 1 found");
}

TEST(wrap_record, sizes_behind_the_first_are_not_what_is_copied) {
    prober with;
    question asked = ask_about(good("stitched"), good("stitched").stream);
    for (const uint32_t size : {0u, 0xffffffffu}) {
        asked.records[1].dataSize = size;
        asked.records[2].dataSize = size;
        EXPECT_EQ(with.ask(asked).unwrap, "ok");  // and the payloads are those of the boxes
    }
}

// Writing: each combination of types, sizes and counts against the model, on buffers of just the size.
struct written_case {
    frame_params up = frame_record(14, 1, 4, 2);
    stream_params cp = raw_alpha();
    std::vector<wrap_params> records;
    uint32_t room = 0;
};

void expect_written_as_by_model(encoder& with, const written_case& one, uint32_t count) {
    const bytes src = counting(8, 1);
    const std::vector<model::wrap_params> wraps = to_model(one.records);
    std::vector<bytes> payloads;
    std::vector<model::view> views;
    for (const wrap_params& record : one.records) {
        payloads.push_back(qcx_frame({1300, 4, 2, false}, std::max(record.dataSize, 45u)));
        payloads.back().resize(record.dataSize);
    }
    for (const bytes& payload : payloads) {
        views.push_back(view_of(payload));
    }
    std::string expected = "ok";
    bytes stream;
    try {
        const model::stream_params cp = {one.cp.alphaCompression, one.cp.rleSlices};
        stream = model::encode_and_wrap(to_model(one.up), cp, wraps, count, view_of(src), views, one.room);
    } catch (const model::failure& failed) {
        expected = failed.what();
    }
    const outcome made = wrap(with, one.up, one.cp, one.records, payloads, &src, one.room, count);
    if (expected == "ok") {
        expect_success(made);
        EXPECT_EQ(to_hex(made.frame()), to_hex(stream));
    } else {
        expect_failure(made, expected);
    }
}

TEST(wrap_record, on_writing_has_one_outcome_for_any_type_size_and_count) {
    encoder with;
    for (const uint32_t first : k_types) {
        for (const uint32_t second : {0u, 1u, 2u, 3u, 0xffffffffu}) {
            for (const uint32_t size : {0u, 1u, 7u, 8u, 40u, 44u, 45u, 46u, 200u}) {
                for (uint32_t count = 0; count <= 3; ++count) {
                    for (const stream_params& cp : {raw_alpha(), coded_alpha(2)}) {
                        written_case one;
                        one.cp = cp;
                        one.records = {wrap_record(first, size), wrap_record(second, size), wrap_record(3, 1)};
                        one.room = QVRUncompressed_GetCompressedWrapBufSize(&one.up, &cp, one.records.data(), count);
                        SCOPED_TRACE(testing::Message() << first << ", " << second << ", size " << size << ", count "
                                                        << count << ", room " << one.room);
                        expect_written_as_by_model(with, one, count);
                        if (one.room != 0) {
                            --one.room;
                            expect_written_as_by_model(with, one, count);
                        }
                        ASSERT_FALSE(testing::Test::HasFailure());
                    }
                }
            }
        }
    }
}

TEST(wrap_record, on_writing_a_frame_of_any_head_has_one_outcome) {
    encoder with;
    const bytes src = counting(8, 1);
    const bytes good_head = qcx_frame({1300, 4, 2, false}, 45);
    const outcome untouched =
        wrap(with, frame_record(14, 1, 4, 2), raw_alpha(), {wrap_record(1, 45)}, {good_head}, &src);
    expect_success(untouched);
    for (size_t bit = 0; bit < good_head.size() * 8; ++bit) {
        SCOPED_TRACE(bit);
        bytes head = good_head;
        head[bit / 8] = static_cast<uint8_t>(head[bit / 8] ^ (1u << (bit % 8)));
        std::string expected = "ok";
        try {
            model::encode_and_wrap(to_model(frame_record(14, 1, 4, 2)), {}, {{1, 45}}, 1, view_of(src), {view_of(head)},
                                   1000);
        } catch (const model::failure& failed) {
            expected = failed.what();
        }
        const outcome made = wrap(with, frame_record(14, 1, 4, 2), raw_alpha(), {wrap_record(1, 45)}, {head}, &src);
        if (expected == "ok") {
            expect_success(made);
        } else {
            expect_failure(made, expected);
            const outcome again =
                wrap(with, frame_record(14, 1, 4, 2), raw_alpha(), {wrap_record(1, 45)}, {good_head}, &src);
            ASSERT_EQ(again.data, untouched.data);
        }
        ASSERT_FALSE(testing::Test::HasFailure());
    }
}

}  // namespace
