// SPDX-License-Identifier: BSD-3-Clause
#include "test_helpers.h"

using namespace model_test;
using model::bytes;

namespace {

std::string parse_failure(const bytes& stream) {
    return failure_of([&] { model::parse_frame(look(stream)); });
}

bytes plane(const std::string& name, const bytes& payload) {
    return sinf(2, 1, name) + box("sdat", payload);
}

}  // namespace

TEST(model_boxes, refuses_streams_without_planes) {
    EXPECT_EQ(failure_of([] { model::parse_frame({}); }), "buffer is null");
    EXPECT_EQ(parse_failure(bytes(7, 0)), "buffer size should be at least 8");
    EXPECT_EQ(parse_failure(bytes(8, 0)), "'pack' box expected at offset 4");
    EXPECT_EQ(parse_failure(sized_box("pack", 9, {})), "pack box size(9) is greater than buffer size(8)");
    const std::string none = "at least one 'sinf' and one 'sdat' box expected";
    EXPECT_EQ(parse_failure(box("pack", {})), none);
    EXPECT_EQ(parse_failure(sized_box("pack", 0, plane("rg08", bytes(6, 0)))), none);
    EXPECT_EQ(parse_failure(box("pack", sized_box("none", 0, {}) + bytes(7, 0))), none);
}

TEST(model_boxes, refuses_bad_sinf_boxes) {
    const auto run = [](const bytes& child) { return parse_failure(box("pack", child)); };
    EXPECT_EQ(run(sized_box("sinf", 19, bytes(30, 0))), "sinf box size expected to be at least 20 bytes at offset 8");
    EXPECT_EQ(run(sized_box("sinf", 20, bytes(11, 0))), "can't read 20 bytes at offset 8");
    EXPECT_EQ(run(sized_box("sinf", 30, bytes(12, 0))), "can't read 21 bytes at offset 8");
    EXPECT_EQ(run(sinf(2, 1, "rg08", 2)), "Undefined value of frame layout: 2");
    EXPECT_EQ(run(sinf(2, 1, "rg08")), "can't read box header(8 bytes) at offset 29");
    EXPECT_EQ(run(box("icmp", box("sdat", {}))), "'sinf' box expected at offset 20");
}

TEST(model_boxes, refuses_bad_sdat_boxes) {
    const auto run = [](const bytes& child) { return parse_failure(box("pack", child)); };
    EXPECT_EQ(run(sinf(2, 1, "rg08") + box("none", {})), "'sdat' box expected at offset 33");
    EXPECT_EQ(run(plane("rg08", bytes(5, 0))), "'sdat' box size expected to be at least 14 at offset 29");
    EXPECT_EQ(run(sinf(2, 1, "rg08") + sized_box("sdat", 99, bytes(5, 0))), "can't read 14 bytes at offset 37");
    EXPECT_EQ(run(plane("rl08", {})), "'sdat' box size expected to be at least 9 at offset 29");
    EXPECT_EQ(run(plane("rl08", {0})), "no failure");
    EXPECT_EQ(run(sinf(2, 1, "rg08") + sized_box("sdat", 99, bytes(6, 0))), "no failure");
}

TEST(model_boxes, prints_sizes_past_64_bits) {
    const bytes stream = box("pack", sinf(0xFFFFFFFFu, 0xFFFFFFFFu, " rgf") + box("sdat", {}));
    // 12 * (2^32 - 1)^2 + 8
    EXPECT_EQ(parse_failure(stream), "'sdat' box size expected to be at least 221360928781435404308 at offset 29");
}

TEST(model_boxes, allows_one_plane_outside_of_icmp_boxes) {
    const bytes one = plane("rg08", bytes(6, 0));
    const bytes alpha = plane(" a08", bytes(2, 0));
    const std::string text = "only single 'sinf' box allowed outside of 'icmp' box";
    EXPECT_EQ(parse_failure(box("pack", one + alpha)), text);
    EXPECT_EQ(parse_failure(box("pack", box("icmp", one) + alpha)), text);
    EXPECT_EQ(parse_failure(box("pack", one + box("icmp", alpha))), "no failure");
    EXPECT_EQ(parse_failure(box("pack", one + box("icmp", one))), "Invalid combination of planes");
    EXPECT_EQ(parse_failure(box("pack", plane("nope", {}))), "Invalid combination of planes");
}

TEST(model_boxes, refuses_boxes_smaller_than_their_header) {
    EXPECT_EQ(parse_failure(box("pack", sized_box("QCXF", 7, {}))),
              "'QCXF' box size expected to be at least 8 at offset 8");
    EXPECT_EQ(parse_failure(box("pack", sized_box("icmp", 0, {}))),
              "'icmp' box size expected to be at least 8 at offset 8");
    EXPECT_EQ(parse_failure(box("pack", plane("stch", sized_box("stch", 1, {})))),
              "'stch' box size expected to be at least 8 at offset 37");
    EXPECT_EQ(parse_failure(box("pack", plane("stch", box("stch", {}) + sized_box("tile", 1, {})))),
              "'tile' box size expected to be at least 8 at offset 45");
}

TEST(model_boxes, walks_stitched_payloads) {
    const bytes chunks = box("stch", bytes(3, 1)) + sized_box("none", 2, {}) + box("tile", bytes(1, 2)) +
                         sized_box("QCXF", 100, bytes(4, 0));
    const model::parsed_frame frame = model::parse_frame(look(box("pack", plane("stch", chunks))));
    ASSERT_EQ(frame.wraps.size(), 3u);
    EXPECT_EQ(frame.wraps[0].type, "stch");
    EXPECT_EQ(frame.wraps[0].offset, 45u);
    EXPECT_EQ(frame.wraps[0].size, 3u);
    EXPECT_EQ(frame.wraps[1].type, "tile");
    EXPECT_EQ(frame.wraps[1].size, 1u);
    EXPECT_EQ(frame.wraps[2].type, "QCXF");
    EXPECT_EQ(frame.wraps[2].size, 92u);
    EXPECT_EQ(frame.planes[0].offset, 37u + 11 + 8 + 9 + 100);
    EXPECT_EQ(frame.planes[0].size, 40u);
}

TEST(model_boxes, reads_metadata) {
    bytes short_sinf = sinf(2, 1, " a16", 1);
    short_sinf.pop_back();
    short_sinf[0] = 20;
    const model::frame_params lone = model::read_metadata(look(box("pack", short_sinf + box("sdat", bytes(4, 0)))));
    EXPECT_EQ(lone.order, 14u);
    EXPECT_EQ(lone.type, 2u);
    EXPECT_EQ(lone.frame_layout, 0u);
    const bytes both = box("icmp", sinf(2, 1, " a08", 0) + box("sdat", bytes(2, 0))) +
                       box("icmp", sinf(2, 1, "y208", 1) + box("sdat", bytes(4, 0)));
    const model::frame_params pair = model::read_metadata(look(box("pack", both)));
    EXPECT_EQ(pair.order, 11u);
    EXPECT_EQ(pair.type, 1u);
    EXPECT_EQ(pair.width, 2u);
    EXPECT_EQ(pair.height, 1u);
    EXPECT_EQ(pair.frame_layout, 1u);
}
