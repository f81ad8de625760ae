// SPDX-License-Identifier: BSD-3-Clause
//
// What a bitstream's planes are called, which of them may stand together, and what the metadata say of them.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "box_builder.h"
#include "codec.h"

namespace {

using namespace test;

// Enough for a 2 x 2 plane of any code, and six unknown boxes of no size for a stitched plane.
const bytes k_payload = repeat(0, 48);

bytes frame_of(const std::vector<std::string>& codes) {
    if (codes.size() == 1) {
        return single_plane(2, 2, codes[0], k_payload);
    }
    bytes children;
    for (const std::string& code : codes) {
        children = children + component(2, 2, code, k_payload);
    }
    return pack(children);
}

void expect_metadata(const std::vector<std::string>& codes, uint32_t order, uint32_t type) {
    SCOPED_TRACE(testing::PrintToString(codes));
    const metadata read = read_metadata(frame_of(codes));
    EXPECT_EQ(read.status, 0u);
    EXPECT_EQ(read.messages, message_list{});
    EXPECT_EQ(read.up.size, 36u);
    EXPECT_EQ(read.up.colorComponentOrder, order);
    EXPECT_EQ(read.up.componentType, type);
    EXPECT_EQ(read.up.width, 2u);
    EXPECT_EQ(read.up.height, 2u);
    EXPECT_EQ(read.up.rowBytes, 0u);
    EXPECT_EQ(read.up.frameLayout, 0u);
    EXPECT_EQ(read.up.rowBytes2, 0u);
}

void expect_invalid(const std::vector<std::string>& codes) {
    SCOPED_TRACE(testing::PrintToString(codes));
    const metadata read = read_metadata(frame_of(codes));
    EXPECT_EQ(read.status, 1u);
    EXPECT_EQ(read.messages, message_list{"Invalid combination of planes"});
}

struct base_row {
    std::vector<std::string> codes;
    uint32_t order;
    uint32_t order_with_alpha;
    uint32_t type;
};

const std::vector<base_row>& bases_that_take_alpha() {
    static const std::vector<base_row> rows = {
        {{"y208"}, 2, 11, 1},
        {{"y210"}, 2, 11, 3},
        {{"y212"}, 2, 11, 4},
        {{"y216"}, 2, 11, 2},
        {{"y408"}, 9, 12, 1},
        {{"y410"}, 9, 12, 3},
        {{"y412"}, 9, 12, 4},
        {{"y416"}, 9, 12, 2},
        {{"rg08"}, 5, 3, 1},
        {{"rg10"}, 5, 3, 3},
        {{"rg12"}, 5, 3, 4},
        {{"rg16"}, 5, 3, 2},
        {{" y08", "cb08", "cr08"}, 10, 13, 1},
        {{" y10", "cb10", "cr10"}, 10, 13, 3},
        {{" y12", "cb12", "cr12"}, 10, 13, 4},
        {{" y16", "cb16", "cr16"}, 10, 13, 2},
    };
    return rows;
}

const std::vector<base_row>& bases_without_alpha() {
    static const std::vector<base_row> rows = {
        {{"y2S1"}, 2, 0, 214},
        {{"y4S1"}, 9, 0, 214},
        {{"rgS1"}, 5, 0, 214},
        {{" y2f"}, 2, 0, 7},
        {{" y2h"}, 2, 0, 6},
        {{" y4f"}, 9, 0, 7},
        {{" y4h"}, 9, 0, 6},
        {{" rgf"}, 5, 0, 7},
        {{" rgh"}, 5, 0, 6},
        {{"  yf", " cbf", " crf"}, 10, 0, 7},
        {{"  yh", " cbh", " crh"}, 10, 0, 6},
    };
    return rows;
}

const char* const k_alpha_codes[] = {" a08", " a16", "rl08", "rl16"};

TEST(metadata_table, of_integer_planes_with_and_without_alpha) {
    for (const base_row& row : bases_that_take_alpha()) {
        expect_metadata(row.codes, row.order, row.type);
        for (const char* alpha : k_alpha_codes) {
            std::vector<std::string> codes = row.codes;
            codes.emplace_back(alpha);
            expect_metadata(codes, row.order_with_alpha, row.type);
        }
    }
}

TEST(metadata_table, of_floating_and_fixed_point_planes) {
    for (const base_row& row : bases_without_alpha()) {
        expect_metadata(row.codes, row.order, row.type);
    }
}

TEST(metadata_table, of_alpha_alone) {
    expect_metadata({" a08"}, 14, 1);
    expect_metadata({"rl08"}, 14, 1);
    expect_metadata({" a16"}, 14, 2);
    expect_metadata({"rl16"}, 14, 2);
}

TEST(metadata_table, of_stitched_chunks) {
    const metadata read = read_metadata(single_plane(5, 3, "stch", box("stch", {1, 2}), 1));
    EXPECT_EQ(read.status, 0u);
    EXPECT_EQ(read.up.colorComponentOrder, 0u);
    EXPECT_EQ(read.up.componentType, 0u);
    EXPECT_EQ(read.up.width, 5u);
    EXPECT_EQ(read.up.height, 3u);
    EXPECT_EQ(read.up.frameLayout, 1u);
}

TEST(metadata_table, the_order_of_the_planes_does_not_matter) {
    expect_metadata({" a08", "y208"}, 11, 1);
    expect_metadata({"cr10", "cb10", " y10"}, 10, 3);
    expect_metadata({"rl16", "cr16", " y16", "cb16"}, 13, 2);
}

TEST(metadata_table, a_repeated_call_overwrites_the_whole_record) {
    const decoder with;
    const bytes stream = frame_of({"rg08"});
    frame_params up = frame_record(77, 77, 77, 77, 77, 77, 77);
    EXPECT_EQ(QVRUncompressed_ReadMetadata(with.handle(), stream.data(), static_cast<uint32_t>(stream.size()), &up),
              0u);
    EXPECT_EQ(up.size, 36u);
    EXPECT_EQ(up.colorComponentOrder, 5u);
    EXPECT_EQ(up.componentType, 1u);
    EXPECT_EQ(up.width, 2u);
    EXPECT_EQ(up.height, 2u);
    EXPECT_EQ(up.rowBytes, 0u);
    EXPECT_EQ(up.frameLayout, 0u);
    EXPECT_EQ(up.rowBytes2, 0u);
}

TEST(metadata_table, size_and_layout_are_those_of_the_main_plane) {
    const bytes stream = pack(component(3, 5, " a08", k_payload, 0) + component(4, 2, "y208", k_payload, 1));
    const metadata read = read_metadata(stream);
    EXPECT_EQ(read.status, 0u);
    EXPECT_EQ(read.up.width, 4u);
    EXPECT_EQ(read.up.height, 2u);
    EXPECT_EQ(read.up.frameLayout, 1u);
}

TEST(metadata_table, of_a_420_frame_comes_from_luma) {
    const bytes stream = pack(component(1, 1, "cb08", k_payload) + component(1, 1, "cr08", k_payload) +
                              component(2, 3, " y08", k_payload, 1));
    const metadata read = read_metadata(stream);
    EXPECT_EQ(read.status, 0u);
    EXPECT_EQ(read.up.width, 2u);
    EXPECT_EQ(read.up.height, 3u);
    EXPECT_EQ(read.up.frameLayout, 1u);
}

TEST(plane_sets, floating_and_fixed_point_planes_take_no_alpha) {
    for (const base_row& row : bases_without_alpha()) {
        for (const char* alpha : k_alpha_codes) {
            std::vector<std::string> codes = row.codes;
            codes.emplace_back(alpha);
            expect_invalid(codes);
        }
    }
}

TEST(plane_sets, incomplete_or_mixed_sets_are_refused) {
    expect_invalid({" y08"});
    expect_invalid({"cb08"});
    expect_invalid({" y08", "cb08"});
    expect_invalid({" y08", " a08"});
    expect_invalid({" y08", "cb08", " a08"});
    expect_invalid({" y08", "cb08", "cr10"});
    expect_invalid({"  yf", " cbf", " crh"});
    expect_invalid({"y208", "y408"});
    expect_invalid({"stch", " a08"});
    expect_invalid({"y208", "stch"});
    expect_invalid({" a08", " a16"});
    expect_invalid({"y208", " a08", " a16"});
}

TEST(plane_sets, a_repeated_code_is_refused) {
    expect_invalid({"y208", "y208"});
    expect_invalid({" a08", " a08"});
    expect_invalid({"rg08", " a08", " a08"});
    expect_invalid({" y08", "cb08", "cb08", "cr08"});
}

TEST(plane_sets, two_alpha_planes_are_refused) {
    expect_metadata({"rg08", " a16"}, 3, 1);
    expect_invalid({"rg08", " a08", "rl08"});
}

TEST(plane_sets, an_unknown_code_is_refused) {
    expect_invalid({"y2f "});
    expect_invalid({"Y208"});
    expect_invalid({"rg14"});
    expect_invalid({"rl10"});
    expect_invalid({" a10"});
    expect_invalid({"    "});
    expect_invalid({"y208", "abcd"});
    expect_invalid({"abcd", "efgh"});
    expect_invalid({"y5S1"});
    expect_invalid({" S1 "});
}

TEST(old_spellings, of_interleaved_planes_are_read_as_the_current_ones) {
    expect_metadata({"  f2"}, 2, 7);
    expect_metadata({"  f4"}, 9, 7);
    expect_metadata({"  h2"}, 2, 6);
    expect_metadata({"  h4"}, 9, 6);
    expect_metadata({"rg f"}, 5, 7);
    expect_metadata({"rg h"}, 5, 6);
}

TEST(old_spellings, of_chroma_planes_are_read_as_the_current_ones) {
    expect_metadata({"  yf", "cb f", "cr f"}, 10, 7);
    expect_metadata({"  yh", "cb h", "cr h"}, 10, 6);
    expect_metadata({"  yf", "cb f", " crf"}, 10, 7);
    expect_invalid({"  yf", "cb f", "cr h"});
    // The same plane twice, in both spellings.
    expect_invalid({"  yf", "cb f", " cbf"});
}

TEST(old_spellings, decode_like_the_current_ones) {
    const bytes samples = counting(16, 1);
    expect_bytes(decode(frame_record(1, 7, 2, 1), single_plane(2, 1, "  f2", samples)),
                 "05060708 01020304 0d0e0f10 090a0b0c");
    expect_bytes(decode(frame_record(2, 6, 2, 1), single_plane(2, 1, "  h2", samples)), "01020304 05060708");
    expect_bytes(decode(frame_record(9, 6, 1, 1), single_plane(1, 1, "  h4", samples)), "010203040506");
    expect_bytes(decode(frame_record(9, 7, 1, 1), single_plane(1, 1, "  f4", samples)), "01020304 05060708 090a0b0c");
    expect_bytes(decode(frame_record(6, 6, 1, 1), single_plane(1, 1, "rg h", samples)), "0506 0304 0102");
    expect_bytes(decode(frame_record(6, 7, 1, 1), single_plane(1, 1, "rg f", samples)), "090a0b0c 05060708 01020304");
    expect_bytes(decode(frame_record(10, 6, 2, 2),
                        pack(component(2, 2, "  yh", counting(8)) + component(1, 1, "cb h", {0x21, 0x22}) +
                             component(1, 1, "cr h", {0x31, 0x32}))),
                 "0001020304050607 2122 3132");
}

TEST(old_spellings, have_the_row_size_of_the_current_ones) {
    const metadata read = read_metadata(single_plane(2, 1, "  f2", repeat(0, 15)));
    EXPECT_EQ(read.messages, message_list{"'sdat' box size expected to be at least 24 at offset 29"});
}

}  // namespace
