// SPDX-License-Identifier: BSD-3-Clause
//
// Every bit of the first 256 bytes of a good stream turned, one at a time.
#include <gtest/gtest.h>

#include <algorithm>

#include "good_streams.h"

namespace {

using namespace hostile;
using namespace test;

class turned_bits : public testing::TestWithParam<std::string> {};

TEST_P(turned_bits, each_have_one_outcome) {
    const good_stream& family = good(GetParam());
    ASSERT_TRUE(proves_good(family));
    prober one(1);
    prober four(4);
    bytes stream = family.stream;
    for (size_t bit = 0; bit < std::min<size_t>(stream.size(), 256) * 8; ++bit) {
        SCOPED_TRACE(bit);
        const auto mask = static_cast<uint8_t>(1u << (bit % 8));
        stream[bit / 8] = static_cast<uint8_t>(stream[bit / 8] ^ mask);
        one.ask(ask_about(family, stream));
        one.ask_trusting(stream);
        four.ask(ask_about(family, stream));
        stream[bit / 8] = static_cast<uint8_t>(stream[bit / 8] ^ mask);
        ASSERT_FALSE(HasFailure());
    }
    EXPECT_EQ(stream, family.stream);
}

INSTANTIATE_TEST_SUITE_P(family, turned_bits, testing::ValuesIn(family_names()),
                         [](const auto& named) { return named.param; });

TEST(turned_bit, in_each_byte_of_the_plane_description_is_told_by_its_message) {
    const good_stream& family = good("single_plane");
    ASSERT_TRUE(proves_good(family));
    prober with;
    const auto decode_with_bit = [&](size_t at, uint8_t mask) {
        bytes stream = family.stream;
        stream[at] = static_cast<uint8_t>(stream[at] ^ mask);
        return with.ask(ask_about(family, stream)).decode;
    };
    EXPECT_EQ(decode_with_bit(4, 0x20), "'pack' box expected at offset 4");
    EXPECT_EQ(decode_with_bit(8, 0x10), "sinf box size expected to be at least 20 bytes at offset 8");
    EXPECT_EQ(decode_with_bit(12, 0x20), "at least one 'sinf' and one 'sdat' box expected");
    EXPECT_EQ(decode_with_bit(16, 0x01), "'sdat' box size expected to be at least 38 at offset 29");
    EXPECT_EQ(decode_with_bit(16, 0x04), "width in src metadata is different than width in uncompressed params");
    EXPECT_EQ(decode_with_bit(19, 0x80), "'sdat' box size expected to be at least 12884901920 at offset 29");
    EXPECT_EQ(decode_with_bit(20, 0x02), "height in src metadata is different than height in uncompressed params");
    EXPECT_EQ(decode_with_bit(23, 0x80), "'sdat' box size expected to be at least 25769803808 at offset 29");
    EXPECT_EQ(decode_with_bit(24, 0x01), "Invalid combination of planes");
    EXPECT_EQ(decode_with_bit(28, 0x01), "ok");
    EXPECT_EQ(decode_with_bit(28, 0x80), "Undefined value of frame layout: 128");
    EXPECT_EQ(decode_with_bit(29, 0x01), "ok");
    EXPECT_EQ(decode_with_bit(29, 0x20), "'sdat' box size expected to be at least 32 at offset 29");
    EXPECT_EQ(decode_with_bit(33, 0x01), "'sdat' box expected at offset 33");
}

}  // namespace
