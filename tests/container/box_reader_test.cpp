// SPDX-License-Identifier: BSD-3-Clause
//
// Parsing: what a good bitstream becomes, and the message of every way to be a bad one.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "api/base/errors.h"
#include "container/box_reader.h"
#include "container/parse.h"
#include "guarded_buffer.h"

namespace {

using container::frame_layout_plan;
using test::bytes;
using test::from_hex;
using test::le32;
using test::operator+;

bytes box(const std::string& type, const bytes& payload) {
    return le32(static_cast<std::uint32_t>(payload.size() + 8)) + from_hex("'" + type + "'") + payload;
}

bytes sinf(std::uint32_t width, std::uint32_t height, const std::string& code, bytes tail = {0}) {
    bytes payload = le32(width) + le32(height);
    payload.insert(payload.end(), code.begin(), code.end());
    return box("sinf", payload + tail);
}

bytes pack(const bytes& children) {
    return box("pack", children);
}

bytes set_32(bytes stream, std::size_t at, std::uint32_t value) {
    const bytes field = le32(value);
    std::copy(field.begin(), field.end(), stream.begin() + static_cast<std::ptrdiff_t>(at));
    return stream;
}

frame_layout_plan parsed(const bytes& stream) {
    const test::guarded_buffer source(stream);
    return container::parse_container(source.data(), source.size32());
}

std::string refusal(const bytes& stream) {
    try {
        parsed(stream);
    } catch (const invalid_buffer& failure) {
        return failure.what();
    }
    return "accepted";
}

// A good single-plane frame: 'pack' at 0, 'sinf' at 8, 'sdat' at 29, payload at 37.
bytes good() {
    return pack(sinf(2, 1, "rg08") + box("sdat", bytes(6, 0xaa)));
}

TEST(parse, a_good_frame) {
    const frame_layout_plan plan = parsed(good());
    ASSERT_EQ(plan.planes.size(), 1u);
    EXPECT_EQ(plan.planes[0].type, fourcc("rg08"));
    EXPECT_EQ(plan.planes[0].width, 2u);
    EXPECT_EQ(plan.planes[0].height, 1u);
    EXPECT_EQ(plan.planes[0].offset, 37u);
    EXPECT_EQ(plan.planes[0].size, 6u);
    EXPECT_EQ(plan.total, 43u);
}

TEST(parse, the_source_itself) {
    EXPECT_EQ(refusal(bytes(7)), "buffer size should be at least 8");
    EXPECT_EQ(refusal({}), "buffer size should be at least 8");
    try {
        container::parse_container(nullptr, 100);
        FAIL();
    } catch (const invalid_buffer& failure) {
        EXPECT_STREQ(failure.what(), "buffer is null");
    }
}

TEST(parse, the_outermost_box) {
    EXPECT_EQ(refusal(set_32(good(), 4, fourcc("park"))), "'pack' box expected at offset 4");
    EXPECT_EQ(refusal(set_32(good(), 0, 44)), "pack box size(44) is greater than buffer size(43)");
    EXPECT_EQ(refusal(set_32(good(), 0, 0xffffffff)), "pack box size(4294967295) is greater than buffer size(43)");
    for (const std::uint32_t size : {0u, 7u, 8u, 15u}) {
        EXPECT_EQ(refusal(set_32(good(), 0, size)), "at least one 'sinf' and one 'sdat' box expected") << size;
    }
}

TEST(parse, the_plane_description) {
    EXPECT_EQ(refusal(set_32(good(), 8, 19)), "sinf box size expected to be at least 20 bytes at offset 8");
    EXPECT_EQ(refusal(pack(sinf(2, 1, "rg08", {2}) + box("sdat", bytes(6)))), "Undefined value of frame layout: 2");
    EXPECT_EQ(refusal(pack(sinf(2, 1, "rg08", {255}) + box("sdat", bytes(6)))), "Undefined value of frame layout: 255");
    EXPECT_EQ(parsed(pack(sinf(2, 1, "rg08", {}) + box("sdat", bytes(6)))).planes[0].layout, 0);
    EXPECT_EQ(parsed(pack(sinf(2, 1, "rg08", {1}) + box("sdat", bytes(6)))).planes[0].layout, 1);
    EXPECT_EQ(parsed(pack(sinf(2, 1, "rg08", {1, 9, 9, 9}) + box("sdat", bytes(6)))).planes[0].offset, 40u);
    EXPECT_EQ(refusal(pack(box("icmp", box("sdat", bytes(6))))), "'sinf' box expected at offset 20");
}

TEST(parse, a_plane_description_that_runs_past_the_limit) {
    EXPECT_EQ(refusal(set_32(pack(bytes(8)), 8, 20) + bytes(40)), "at least one 'sinf' and one 'sdat' box expected");
    bytes cut = set_32(set_32(pack(bytes(8)), 8, 20), 12, fourcc("sinf"));
    EXPECT_EQ(refusal(cut), "can't read 20 bytes at offset 8");
    EXPECT_EQ(refusal(set_32(cut, 8, 21)), "can't read 21 bytes at offset 8");
    EXPECT_EQ(refusal(set_32(cut, 8, 0xffffffff)), "can't read 21 bytes at offset 8");
}

TEST(parse, the_plane_data) {
    EXPECT_EQ(refusal(set_32(good(), 33, fourcc("SDAT"))), "'sdat' box expected at offset 33");
    EXPECT_EQ(refusal(set_32(good(), 29, 13)), "'sdat' box size expected to be at least 14 at offset 29");
    EXPECT_EQ(refusal(set_32(good(), 12 + 4, 3)), "'sdat' box size expected to be at least 17 at offset 29");
    EXPECT_EQ(refusal(pack(sinf(2, 1, "rg08"))), "can't read box header(8 bytes) at offset 29");
    // Declared large enough, but the 'pack' ends.
    EXPECT_EQ(refusal(set_32(good(), 0, 42)), "can't read 14 bytes at offset 37");
    // A size past the end of the 'pack' is not looked at beyond the least one.
    EXPECT_EQ(parsed(set_32(good(), 29, 0xffffffff)).planes[0].size, 0xfffffff7u);
}

TEST(parse, the_least_plane_data_is_exact_past_32_and_64_bits) {
    EXPECT_EQ(refusal(set_32(set_32(good(), 16, 0x10000), 20, 0x10000)),
              "'sdat' box size expected to be at least 12884901896 at offset 29");
    EXPECT_EQ(refusal(pack(sinf(0xffffffff, 0xffffffff, " rgf") + box("sdat", bytes(6)))),
              "'sdat' box size expected to be at least 221360928781435404308 at offset 29");
}

TEST(parse, a_coded_plane_needs_one_byte) {
    EXPECT_EQ(parsed(pack(sinf(2, 1, "rl08") + box("sdat", bytes(1)))).planes[0].size, 1u);
    EXPECT_EQ(refusal(pack(sinf(2, 1, "rl16") + box("sdat", {}))),
              "'sdat' box size expected to be at least 9 at offset 29");
}

TEST(parse, top_level_planes) {
    const bytes plane = sinf(2, 1, "rg08") + box("sdat", bytes(6));
    EXPECT_EQ(refusal(pack(plane + plane)), "only single 'sinf' box allowed outside of 'icmp' box");
    EXPECT_EQ(refusal(pack(box("icmp", plane) + plane)), "only single 'sinf' box allowed outside of 'icmp' box");
    const bytes alpha = sinf(2, 1, " a08") + box("sdat", bytes(2));
    EXPECT_EQ(parsed(pack(plane + box("icmp", alpha))).planes.size(), 2u);
}

TEST(parse, a_grouping_box_that_is_longer_or_shorter_than_its_plane) {
    const bytes plane = sinf(2, 1, "rg08") + box("sdat", bytes(6));
    const bytes alpha = sinf(2, 1, " a08") + box("sdat", bytes(2));
    EXPECT_EQ(parsed(pack(box("icmp", plane + bytes(5, 0xff)) + box("icmp", alpha))).planes.size(), 2u);
    for (const std::uint32_t size : {8u, 9u, 20u}) {
        EXPECT_EQ(parsed(set_32(pack(box("icmp", plane) + box("icmp", alpha)), 8, size)).planes.size(), 2u) << size;
    }
    for (const std::uint32_t size : {0u, 1u, 7u}) {
        EXPECT_EQ(refusal(set_32(pack(box("icmp", plane)), 8, size)),
                  "'icmp' box size expected to be at least 8 at offset 8");
    }
}

TEST(parse, wrapped_frames) {
    const bytes plane = sinf(2, 1, " a08") + box("sdat", bytes(2));
    const frame_layout_plan plan = parsed(pack(box("QCXF", bytes(5)) + plane + box("QCXF", {})));
    ASSERT_EQ(plan.wrap_boxes.size(), 2u);
    EXPECT_EQ(plan.wrap_boxes[0].size, 5u);
    EXPECT_EQ(plan.wrap_boxes[0].offset, 16u);
    EXPECT_EQ(plan.wrap_boxes[1].size, 0u);
    EXPECT_EQ(refusal(set_32(pack(box("QCXF", {}) + plane), 8, 7)),
              "'QCXF' box size expected to be at least 8 at offset 8");
    // One that runs past the end is recorded all the same.
    EXPECT_EQ(parsed(set_32(pack(plane + box("QCXF", {})), 39, 1000)).wrap_boxes[0].size, 992u);
}

TEST(parse, unknown_boxes_are_skipped) {
    const bytes plane = sinf(2, 1, "rg08") + box("sdat", bytes(6));
    EXPECT_EQ(parsed(pack(box("free", bytes(11)) + plane + box("zzzz", {}))).planes[0].offset, 56u);
    for (const std::uint32_t size : {0u, 7u}) {
        EXPECT_EQ(parsed(set_32(pack(box("free", {}) + plane), 8, size)).planes[0].offset, 45u);
    }
    EXPECT_EQ(refusal(pack(box("free", bytes(3)))), "at least one 'sinf' and one 'sdat' box expected");
    EXPECT_EQ(parsed(pack(plane + bytes(7, 0xff))).planes.size(), 1u);  // what is shorter than a header
}

TEST(parse, combinations) {
    const auto two = [](const std::string& first, const std::string& second) {
        return pack(box("icmp", sinf(0, 0, first) + box("sdat", bytes(1))) +
                    box("icmp", sinf(0, 0, second) + box("sdat", bytes(1))));
    };
    EXPECT_EQ(refusal(two("rg08", " a16")), "accepted");
    EXPECT_EQ(refusal(two("rg08", "rg08")), "Invalid combination of planes");
    EXPECT_EQ(refusal(two(" a08", "rl08")), "Invalid combination of planes");
    EXPECT_EQ(refusal(two("stch", " a08")), "Invalid combination of planes");
    EXPECT_EQ(refusal(pack(sinf(2, 1, "y2f ") + box("sdat", {}))), "Invalid combination of planes");
    EXPECT_EQ(parsed(pack(sinf(0, 1, "  f2") + box("sdat", {}))).planes[0].type, fourcc(" y2f"));
}

TEST(parse, stitched_chunks_are_recorded_in_order) {
    const bytes chunks = box("stch", bytes(10)) + box("free", bytes(3)) + box("tile", bytes(20)) + box("QCXF", {});
    const frame_layout_plan plan = parsed(pack(sinf(2, 1, "stch") + box("sdat", chunks)));
    ASSERT_EQ(plan.wrap_boxes.size(), 3u);
    EXPECT_EQ(plan.wrap_boxes[0].type, container::k_stch);
    EXPECT_EQ(plan.wrap_boxes[0].offset, 45u);
    EXPECT_EQ(plan.wrap_boxes[1].type, container::k_tile);
    EXPECT_EQ(plan.wrap_boxes[2].type, container::k_qcxf);
    EXPECT_EQ(plan.planes[0].offset, 37u + chunks.size());  // behind the boxes
    EXPECT_EQ(plan.planes[0].size, chunks.size());
}

TEST(parse, stitched_chunks_of_odd_sizes) {
    const auto stitched = [](const bytes& payload) { return pack(sinf(2, 1, "stch") + box("sdat", payload)); };
    EXPECT_EQ(parsed(stitched({})).wrap_boxes.size(), 0u);
    EXPECT_EQ(parsed(stitched(bytes(7))).wrap_boxes.size(), 0u);
    EXPECT_EQ(parsed(stitched(box("stch", {}) + bytes(7))).wrap_boxes.size(), 1u);
    EXPECT_EQ(parsed(stitched(set_32(box("free", {}), 0, 0) + box("tile", {}))).wrap_boxes.size(), 1u);
    for (const char* type : {"QCXF", "stch", "tile"}) {
        EXPECT_EQ(refusal(stitched(set_32(box(type, {}), 0, 7))),
                  "'" + std::string(type) + "' box size expected to be at least 8 at offset 37");
    }
    // Larger than the rest of the payload: recorded, and the walk goes on where it ends, here behind the 'free' box.
    const frame_layout_plan plan =
        parsed(pack(sinf(2, 1, "stch") + box("sdat", set_32(box("stch", {}), 0, 20)) + bytes(12) + box("QCXF", {})));
    EXPECT_EQ(plan.wrap_boxes.size(), 2u);
    EXPECT_EQ(plan.wrap_boxes[0].size, 12u);
    // The plane claims more than the 'pack' has, and so does not end before its last header does.
    EXPECT_EQ(refusal(set_32(stitched(box("stch", bytes(2))), 29, 1000)),
              "can't read box header(8 bytes) at offset 47");
}

TEST(parse, a_million_boxes_take_linear_time) {
    const bytes plane = sinf(2, 1, "rg08") + box("sdat", bytes(6));
    for (const char* type : {"free", "QCXF"}) {
        bytes boxes;
        boxes.reserve(8000000);
        const bytes one = box(type, {});
        for (int i = 0; i < 1000000; ++i) {
            boxes.insert(boxes.end(), one.begin(), one.end());
        }
        EXPECT_EQ(parsed(pack(boxes + plane)).planes[0].offset, 8000037u);
    }
}

TEST(parse, every_truncation_is_refused) {
    const bytes stream = good();
    for (std::size_t size = 0; size < stream.size(); ++size) {
        EXPECT_NE(refusal(bytes(stream.begin(), stream.begin() + static_cast<std::ptrdiff_t>(size))), "accepted");
        if (size >= 8) {
            const bytes cut(stream.begin(), stream.begin() + static_cast<std::ptrdiff_t>(size));
            EXPECT_NE(refusal(set_32(cut, 0, static_cast<std::uint32_t>(size))), "accepted") << size;
        }
    }
}

}  // namespace
