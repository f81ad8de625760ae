// SPDX-License-Identifier: BSD-3-Clause
//
// The size field of every box of a good stream, set to what a size should never be.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "changed.h"
#include "good_streams.h"

namespace {

using namespace hostile;
using namespace test;

class size_fields : public testing::TestWithParam<std::string> {};

TEST_P(size_fields, each_have_one_outcome) {
    const good_stream& family = good(GetParam());
    ASSERT_TRUE(proves_good(family));
    prober one(1);
    prober four(4);
    for (const found_box& box : boxes_of(family.stream)) {
        for (const uint32_t size : bad_sizes(box.size)) {
            SCOPED_TRACE(testing::Message() << box.type << " at " << box.offset << ": " << size);
            const bytes stream = with_32(family.stream, box.offset, size);
            one.ask(ask_about(family, stream));
            one.ask_trusting(stream);
            four.ask(ask_about(family, stream));
            // Bytes behind the frame give a lie something to reach into.
            one.ask(ask_about(family, stream + family.stream));
            ASSERT_FALSE(HasFailure());
        }
    }
}

// Two lies at once: one box that says too much or too little inside another that does.
TEST_P(size_fields, in_pairs) {
    const good_stream& family = good(GetParam());
    prober one(1);
    const std::vector<found_box> boxes = boxes_of(family.stream);
    for (const found_box& outer : boxes) {
        for (const found_box& inner : boxes) {
            for (const uint32_t size : {0u, 8u, inner.size + 1, 0xffffffffu}) {
                for (const uint32_t around : {outer.size + 1, outer.size - 1, 0xffffffffu}) {
                    SCOPED_TRACE(testing::Message()
                                 << outer.offset << ": " << around << ", " << inner.offset << ": " << size);
                    bytes stream = with_32(family.stream + test::repeat(0, 30), outer.offset, around);
                    store_32(stream, inner.offset, size);
                    one.ask(ask_about(family, stream));
                    ASSERT_FALSE(HasFailure());
                }
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(family, size_fields, testing::ValuesIn(family_names()),
                         [](const auto& named) { return named.param; });

// For each box the outcomes of 0, 1, 7, 8, n - 1, n + 1, 0x7fffffff, 0x80000000 and 0xffffffff, n being its true size.
struct row {
    const char* type;
    size_t offset;
    uint32_t size;
    std::vector<std::string> decoded;
};

const std::string k_ok = "ok";
const std::string k_no_plane = "at least one 'sinf' and one 'sdat' box expected";

std::string larger_than_source(const std::string& pack_size, const std::string& source_size) {
    return "pack box size(" + pack_size + ") is greater than buffer size(" + source_size + ")";
}

std::string small_box(const std::string& type, const std::string& offset) {
    return "'" + type + "' box size expected to be at least 8 at offset " + offset;
}

std::string no_header(const std::string& offset) {
    return "can't read box header(8 bytes) at offset " + offset;
}

std::string small_sinf(const std::string& offset) {
    return "sinf box size expected to be at least 20 bytes at offset " + offset;
}

std::string small_sdat(const std::string& least, const std::string& offset) {
    return "'sdat' box size expected to be at least " + least + " at offset " + offset;
}

std::string no_sdat(const std::string& offset) {
    return "'sdat' box expected at offset " + offset;
}

// Calls `check` with the row's number, the column's number and the answers.
template <class check_type>
void for_each_lie(const good_stream& family, const std::vector<row>& table, check_type check) {
    ASSERT_TRUE(proves_good(family));
    const std::vector<found_box> boxes = boxes_of(family.stream);
    ASSERT_EQ(boxes.size(), table.size());
    prober with;
    for (size_t i = 0; i < table.size(); ++i) {
        ASSERT_EQ(boxes[i].type, table[i].type);
        ASSERT_EQ(boxes[i].offset, table[i].offset);
        ASSERT_EQ(boxes[i].size, table[i].size);
        const std::vector<uint32_t> sizes = bad_sizes(table[i].size);
        ASSERT_EQ(table[i].decoded.size(), sizes.size());
        for (size_t j = 0; j < sizes.size(); ++j) {
            SCOPED_TRACE(testing::Message() << table[i].type << " at " << table[i].offset << ": " << sizes[j]);
            check(table[i].decoded[j], with.ask(ask_about(family, with_32(family.stream, table[i].offset, sizes[j]))));
        }
    }
}

TEST(size_field, of_each_box_of_two_planes) {
    const std::string alone = "src metadata type is incompatible with color component order or component type";
    const std::vector<row> table = {
        {"pack",
         0,
         142,
         {k_no_plane, k_no_plane, k_no_plane, k_no_plane, "can't read 23 bytes at offset 127",
          larger_than_source("143", "142"), larger_than_source("2147483647", "142"),
          larger_than_source("2147483648", "142"), larger_than_source("4294967295", "142")}},
        {"icmp",
         8,
         82,
         {small_box("icmp", "8"), small_box("icmp", "8"), small_box("icmp", "8"), k_ok, k_ok, alone, alone, alone,
          alone}},
        {"sinf",
         16,
         21,
         {small_sinf("16"), small_sinf("16"), small_sinf("16"), small_sinf("16"), no_sdat("40"), no_sdat("42"),
          no_header("2147483663"), no_header("2147483664"), no_header("4294967311")}},
        {"sdat",
         37,
         53,
         {small_sdat("53", "37"), small_sdat("53", "37"), small_sdat("53", "37"), small_sdat("53", "37"),
          small_sdat("53", "37"), alone, alone, alone, alone}},
        {"icmp",
         90,
         52,
         {small_box("icmp", "90"), small_box("icmp", "90"), small_box("icmp", "90"), k_ok, k_ok, k_ok, k_ok, k_ok,
          k_ok}},
        {"sinf",
         98,
         21,
         {small_sinf("98"), small_sinf("98"), small_sinf("98"), small_sinf("98"), no_sdat("122"), no_sdat("124"),
          no_header("2147483745"), no_header("2147483746"), no_header("4294967393")}},
        {"sdat",
         119,
         23,
         {small_sdat("23", "119"), small_sdat("23", "119"), small_sdat("23", "119"), small_sdat("23", "119"),
          small_sdat("23", "119"), k_ok, k_ok, k_ok, k_ok}},
    };
    for_each_lie(good("two_planes"), table, [&](const std::string& decoded, const answers& heard) {
        if (decoded == k_ok || decoded == alone) {
            const answers parsed = {"ok", "Can't read 1 wrap boxes, only 0 found", decoded,
                                    "0 wrap boxes found in bytestream, but 1 expected according to wrap params", 0};
            EXPECT_EQ(heard, parsed);
        } else {
            EXPECT_EQ(heard, refused_by_all(decoded));
        }
    });
}

TEST(size_field, of_each_box_beside_a_wrapped_frame) {
    const std::vector<row> table = {
        {"pack",
         0,
         103,
         {k_no_plane, k_no_plane, k_no_plane, k_no_plane, "can't read 16 bytes at offset 95",
          larger_than_source("104", "103"), larger_than_source("2147483647", "103"),
          larger_than_source("2147483648", "103"), larger_than_source("4294967295", "103")}},
        // A box too short or too long leaves bytes of the frame or of the plane's description to be taken for the next
        // one, and that one is larger than all that follows.
        {"QCXF",
         8,
         58,
         {small_box("QCXF", "8"), small_box("QCXF", "8"), small_box("QCXF", "8"), k_no_plane, k_no_plane, k_no_plane,
          k_no_plane, k_no_plane, k_no_plane}},
        {"sinf",
         66,
         21,
         {small_sinf("66"), small_sinf("66"), small_sinf("66"), small_sinf("66"), no_sdat("90"), no_sdat("92"),
          no_header("2147483713"), no_header("2147483714"), no_header("4294967361")}},
        {"sdat",
         87,
         16,
         {small_sdat("16", "87"), small_sdat("16", "87"), small_sdat("16", "87"), small_sdat("16", "87"),
          small_sdat("16", "87"), k_ok, k_ok, k_ok, k_ok}},
    };
    for_each_lie(good("qcx_with_raw_alpha"), table, [](const std::string& decoded, const answers& heard) {
        const answers accepted = {"ok", "ok", "ok", "ok", 1};
        EXPECT_EQ(heard, decoded == k_ok ? accepted : refused_by_all(decoded));
    });
}

// The text is that of unwrapping. A number alone is the number of chunks that are left.
TEST(size_field, of_each_box_of_stitched_chunks) {
    const std::vector<row> table = {
        {"pack",
         0,
         121,
         {k_no_plane, k_no_plane, k_no_plane, k_no_plane, k_ok, larger_than_source("122", "121"),
          larger_than_source("2147483647", "121"), larger_than_source("2147483648", "121"),
          larger_than_source("4294967295", "121")}},
        {"sinf",
         8,
         21,
         {small_sinf("8"), small_sinf("8"), small_sinf("8"), small_sinf("8"), no_sdat("32"), no_sdat("34"),
          no_header("2147483655"), no_header("2147483656"), no_header("4294967303")}},
        {"sdat",
         29,
         92,
         {small_sdat("8", "29"), small_sdat("8", "29"), small_sdat("8", "29"), "0", k_ok, k_ok, no_header("121"),
          no_header("121"), no_header("121")}},
        {"stch",
         37,
         18,
         {small_box("stch", "37"), small_box("stch", "37"), small_box("stch", "37"), "1", "1", "1", "1", "1", "1"}},
        {"tile",
         55,
         28,
         {small_box("tile", "55"), small_box("tile", "55"), small_box("tile", "55"), "2", "2", "2", "2", "2", "2"}},
        {"tile",
         83,
         38,
         {small_box("tile", "83"), small_box("tile", "83"), small_box("tile", "83"), k_ok, k_ok,
          "can't read 31 bytes at offset 91", "can't read 2147483639 bytes at offset 91",
          "can't read 2147483640 bytes at offset 91", "can't read 4294967287 bytes at offset 91"}},
    };
    const std::string depth = "bit depth in src metadata is different than bit depth in uncompressed params";
    for_each_lie(good("stitched"), table, [&](const std::string& unwrapped, const answers& heard) {
        if (unwrapped.size() == 1) {
            const answers fewer = {
                "ok", "Can't read 3 wrap boxes, only " + unwrapped + " found", depth,
                unwrapped + " wrap boxes found in bytestream, but 3 expected according to wrap params",
                static_cast<uint32_t>(unwrapped[0] - '0')};
            EXPECT_EQ(heard, fewer);
        } else if (unwrapped == k_ok || unwrapped.find(" bytes at offset 91") != std::string::npos) {
            const answers all = {"ok", "ok", depth, unwrapped, 3};
            EXPECT_EQ(heard, all);
        } else {
            EXPECT_EQ(heard, refused_by_all(unwrapped));
        }
    });
}

}  // namespace
