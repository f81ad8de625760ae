// SPDX-License-Identifier: BSD-3-Clause
//
// Every length that a good stream can be cut to, with and without a size field that goes along with the cut.
#include <gtest/gtest.h>

#include <string>

#include "box_builder.h"
#include "changed.h"
#include "good_streams.h"

namespace {

using namespace hostile;
using namespace test;

class truncation : public testing::TestWithParam<std::string> {
  protected:
    void SetUp() override { ASSERT_TRUE(proves_good(family_)); }

    const good_stream& family_ = good(GetParam());
    prober one_{1};
    prober four_{4};
};

TEST_P(truncation, leaves_a_source_smaller_than_its_outermost_box) {
    const bytes& whole = family_.stream;
    for (size_t size = 0; size < whole.size(); ++size) {
        SCOPED_TRACE(size);
        const std::string message = size < 8 ? "buffer size should be at least 8"
                                             : "pack box size(" + std::to_string(whole.size()) +
                                                   ") is greater than buffer size(" + std::to_string(size) + ")";
        const question asked = ask_about(family_, first_bytes(whole, size));
        ASSERT_EQ(one_.ask(asked), refused_by_all(message));
        ASSERT_EQ(four_.ask(asked), refused_by_all(message));
        ASSERT_FALSE(HasFailure());
    }
}

TEST_P(truncation, with_a_size_that_tells_of_it) {
    const bytes& whole = family_.stream;
    for (size_t size = 8; size <= whole.size(); ++size) {
        SCOPED_TRACE(size);
        const bytes cut = with_32(first_bytes(whole, size), 0, static_cast<uint32_t>(size));
        one_.ask(ask_about(family_, cut));
        four_.ask(ask_about(family_, cut));
        one_.ask_trusting(cut);
        ASSERT_FALSE(HasFailure());
    }
}

TEST_P(truncation, of_the_outermost_box_alone) {
    const bytes& whole = family_.stream;
    for (size_t size = 0; size <= whole.size(); ++size) {
        SCOPED_TRACE(size);
        const bytes cut = with_32(whole, 0, static_cast<uint32_t>(size));
        one_.ask(ask_about(family_, cut));
        four_.ask(ask_about(family_, cut));
        ASSERT_FALSE(HasFailure());
    }
}

// The last box goes without its end, and no other size is changed.
TEST_P(truncation, of_what_lies_behind_a_frame_changes_nothing) {
    const bytes longer = family_.stream + test::repeat(0xff, 20);
    const answers untouched = one_.ask(ask_about(family_, family_.stream));
    for (size_t size = family_.stream.size(); size <= longer.size(); ++size) {
        SCOPED_TRACE(size);
        ASSERT_EQ(one_.ask(ask_about(family_, first_bytes(longer, size))), untouched);
        ASSERT_FALSE(HasFailure());
    }
}

std::string family_name(const testing::TestParamInfo<std::string>& info) {
    return info.param;
}

INSTANTIATE_TEST_SUITE_P(family, truncation, testing::ValuesIn(family_names()), family_name);

// What the parser says at each length of one plane, and of one plane in front of another.
struct cut_range {
    size_t to;
    const char* message;
};

void expect_ranges(const good_stream& family, const std::vector<cut_range>& ranges) {
    ASSERT_TRUE(proves_good(family));
    prober with;
    size_t size = 8;
    for (const cut_range& range : ranges) {
        for (; size <= range.to; ++size) {
            SCOPED_TRACE(size);
            const bytes cut = with_32(first_bytes(family.stream, size), 0, static_cast<uint32_t>(size));
            ASSERT_EQ(with.ask(ask_about(family, cut)), refused_by_all(range.message));
        }
    }
    EXPECT_EQ(size, family.stream.size());
}

TEST(truncated, single_plane) {
    expect_ranges(good("single_plane"), {{15, "at least one 'sinf' and one 'sdat' box expected"},
                                         {28, "can't read 21 bytes at offset 8"},
                                         {36, "can't read box header(8 bytes) at offset 29"},
                                         {60, "can't read 32 bytes at offset 37"}});
}

TEST(truncated, coded_plane_is_read_by_its_first_byte) {
    const good_stream& family = good("coded_alpha_8");
    prober with;
    const size_t first_payload_byte = 37;
    for (size_t size = first_payload_byte + 1; size < family.stream.size(); ++size) {
        SCOPED_TRACE(size);
        const bytes cut = with_32(first_bytes(family.stream, size), 0, static_cast<uint32_t>(size));
        const answers heard = with.ask(ask_about(family, cut));
        EXPECT_EQ(heard.metadata, "ok");
        EXPECT_EQ(heard.decode, "rle payload is too short");
        ASSERT_FALSE(testing::Test::HasFailure());
    }
    const bytes cut = with_32(first_bytes(family.stream, first_payload_byte), 0, first_payload_byte);
    EXPECT_EQ(with.ask(ask_about(family, cut)), refused_by_all("can't read 9 bytes at offset 37"));
}

TEST(truncated, second_of_two_planes_leaves_the_first) {
    const good_stream& family = good("two_planes");
    prober with;
    // Up to 7 bytes behind the first plane are no box, and the first plane alone is a frame.
    for (size_t size = 90; size < 98; ++size) {
        SCOPED_TRACE(size);
        const answers heard =
            with.ask(ask_about(family, with_32(first_bytes(family.stream, size), 0, static_cast<uint32_t>(size))));
        EXPECT_EQ(heard.metadata, "ok");
        EXPECT_EQ(heard.decode, "src metadata type is incompatible with color component order or component type");
    }
    const auto refused = [&](size_t size, const char* message) {
        SCOPED_TRACE(size);
        const bytes cut = with_32(first_bytes(family.stream, size), 0, static_cast<uint32_t>(size));
        EXPECT_EQ(with.ask(ask_about(family, cut)), refused_by_all(message));
    };
    refused(98, "can't read box header(8 bytes) at offset 98");
    refused(105, "can't read box header(8 bytes) at offset 98");
    refused(106, "can't read 21 bytes at offset 98");
    refused(118, "can't read 21 bytes at offset 98");
    refused(119, "can't read box header(8 bytes) at offset 119");
    refused(126, "can't read box header(8 bytes) at offset 119");
    refused(127, "can't read 23 bytes at offset 127");
    refused(141, "can't read 23 bytes at offset 127");
}

}  // namespace
