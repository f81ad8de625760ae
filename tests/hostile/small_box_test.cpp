// SPDX-License-Identifier: BSD-3-Clause
//
// Boxes of no size, of 7 and of 8 bytes, of every type, in every place of a good stream.
#include <gtest/gtest.h>

#include <string>

#include "box_builder.h"
#include "changed.h"
#include "good_streams.h"

namespace {

using namespace hostile;
using namespace test;
using namespace std::string_view_literals;

constexpr std::string_view k_types[] = {"pack"sv, "icmp"sv, "sinf"sv, "sdat"sv,    "QCXF"sv,
                                        "stch"sv, "tile"sv, "free"sv, "\0\0\0\0"sv};
constexpr uint32_t k_sizes[] = {0, 7, 8};

class small_boxes : public testing::TestWithParam<std::string> {};

TEST_P(small_boxes, of_every_type_in_every_place_have_one_outcome) {
    const good_stream& family = good(GetParam());
    ASSERT_TRUE(proves_good(family));
    prober one(1);
    prober four(4);
    for (const place& where : places_of(family.stream)) {
        for (const std::string_view type : k_types) {
            for (const uint32_t size : k_sizes) {
                SCOPED_TRACE(testing::Message() << type << " of " << size << " at " << where.offset << " inside "
                                                << where.parents.size() << " boxes");
                const bytes stream = inserted(family.stream, where, box_with_size(type, size, {}));
                one.ask(ask_about(family, stream));
                four.ask(ask_about(family, stream));
                ASSERT_FALSE(HasFailure());
            }
        }
    }
}

// The same without the sizes of the boxes around them going along.
TEST_P(small_boxes, that_push_the_rest_out_of_its_box_have_one_outcome) {
    const good_stream& family = good(GetParam());
    prober one(1);
    for (const place& where : places_of(family.stream)) {
        for (const std::string_view type : k_types) {
            for (const uint32_t size : k_sizes) {
                SCOPED_TRACE(testing::Message() << type << " of " << size << " at " << where.offset);
                const bytes stream = inserted(family.stream, {where.offset, {}}, box_with_size(type, size, {}));
                one.ask(ask_about(family, stream));
                ASSERT_FALSE(HasFailure());
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(family, small_boxes, testing::ValuesIn(family_names()),
                         [](const auto& named) { return named.param; });

const answers k_accepted_plain = {"ok", "Can't read 1 wrap boxes, only 0 found", "ok",
                                  "0 wrap boxes found in bytestream, but 1 expected according to wrap params", 0};

answers ask_with(const good_stream& family, size_t offset, const std::vector<size_t>& parents, std::string_view type,
                 uint32_t size) {
    prober with;
    return with.ask(ask_about(family, inserted(family.stream, {offset, parents}, box_with_size(type, size, {}))));
}

TEST(small_box, of_a_type_without_meaning_is_passed_in_8_bytes) {
    for (const std::string_view type : {"pack"sv, "sdat"sv, "stch"sv, "tile"sv, "free"sv, "\0\0\0\0"sv}) {
        for (const uint32_t size : k_sizes) {
            SCOPED_TRACE(testing::Message() << type << " of " << size);
            EXPECT_EQ(ask_with(good("single_plane"), 8, {0}, type, size), k_accepted_plain);
            EXPECT_EQ(ask_with(good("single_plane"), 61, {0}, type, size), k_accepted_plain);
            EXPECT_EQ(ask_with(good("two_planes"), 90, {0}, type, size), k_accepted_plain);
        }
    }
}

TEST(small_box, between_a_plane_description_and_its_data_is_refused) {
    for (const std::string_view type : k_types) {
        for (const uint32_t size : k_sizes) {
            if (type == "sdat") {
                EXPECT_EQ(ask_with(good("single_plane"), 29, {0}, type, size),
                          refused_by_all("'sdat' box size expected to be at least 32 at offset 29"));
            } else {
                EXPECT_EQ(ask_with(good("single_plane"), 29, {0}, type, size),
                          refused_by_all("'sdat' box expected at offset 33"));
            }
        }
    }
}

TEST(small_box, that_describes_a_plane_is_refused) {
    for (const uint32_t size : k_sizes) {
        EXPECT_EQ(ask_with(good("single_plane"), 8, {0}, "sinf", size),
                  refused_by_all("sinf box size expected to be at least 20 bytes at offset 8"));
        EXPECT_EQ(ask_with(good("single_plane"), 61, {0}, "sinf", size),
                  refused_by_all("only single 'sinf' box allowed outside of 'icmp' box"));
        EXPECT_EQ(ask_with(good("two_planes"), 98, {0, 90}, "sinf", size),
                  refused_by_all("sinf box size expected to be at least 20 bytes at offset 98"));
    }
}

TEST(small_box, that_holds_a_plane_must_hold_its_header) {
    const good_stream& family = good("single_plane");
    for (const uint32_t size : {0u, 7u}) {
        EXPECT_EQ(ask_with(family, 8, {0}, "icmp", size),
                  refused_by_all("'icmp' box size expected to be at least 8 at offset 8"));
        EXPECT_EQ(ask_with(family, 61, {0}, "icmp", size),
                  refused_by_all("'icmp' box size expected to be at least 8 at offset 61"));
    }
    // One of 8 bytes takes the plane that follows it for its own.
    EXPECT_EQ(ask_with(family, 8, {0}, "icmp", 8), k_accepted_plain);
    EXPECT_EQ(ask_with(family, 61, {0}, "icmp", 8), refused_by_all("can't read box header(8 bytes) at offset 69"));
}

TEST(small_box, that_wraps_a_frame_must_hold_its_header) {
    const good_stream& family = good("single_plane");
    for (const uint32_t size : {0u, 7u}) {
        EXPECT_EQ(ask_with(family, 8, {0}, "QCXF", size),
                  refused_by_all("'QCXF' box size expected to be at least 8 at offset 8"));
        EXPECT_EQ(ask_with(family, 61, {0}, "QCXF", size),
                  refused_by_all("'QCXF' box size expected to be at least 8 at offset 61"));
    }
    const answers empty = {"ok", "ok", "ok", "Alpha plane is not found", 1};
    EXPECT_EQ(ask_with(family, 8, {0}, "QCXF", 8), empty);
    EXPECT_EQ(ask_with(family, 61, {0}, "QCXF", 8), empty);
}

TEST(small_box, among_stitched_chunks) {
    const good_stream& family = good("stitched");
    const std::string depth = "bit depth in src metadata is different than bit depth in uncompressed params";
    const answers unchanged = {"ok", "ok", depth, "ok", 3};
    for (const size_t offset : {size_t{37}, size_t{55}, size_t{83}, size_t{121}}) {
        for (const std::string_view type : {"pack"sv, "icmp"sv, "sinf"sv, "sdat"sv, "free"sv, "\0\0\0\0"sv}) {
            for (const uint32_t size : k_sizes) {
                EXPECT_EQ(ask_with(family, offset, {0, 29}, type, size), unchanged);
            }
        }
        for (const std::string type : {"QCXF", "stch", "tile"}) {
            const std::string place = std::to_string(offset);
            for (const uint32_t size : {0u, 7u}) {
                EXPECT_EQ(ask_with(family, offset, {0, 29}, type, size),
                          refused_by_all("'" + type + "' box size expected to be at least 8 at offset " + place));
            }
            const answers one_more = {"ok", "ok", depth,
                                      offset == 37 ? "Extra box size is not equal wrap params size" : "ok", 4};
            EXPECT_EQ(ask_with(family, offset, {0, 29}, type, 8), one_more);
        }
    }
}

}  // namespace
