// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include "api/base/errors.h"
#include "bytes.h"
#include "guarded_buffer.h"
#include "random_source.h"
#include "rle/bit_reader.h"
#include "rle/bit_writer.h"
#include "rle/kernels/token.h"

namespace {

using test::bytes;
using test::from_hex;

TEST(bit_writer, fills_bytes_from_the_top) {
    bytes out(4);
    bit_writer writer(out.data(), out.size());
    writer.write(1, 1);
    writer.write(0, 3);
    writer.write(0xabc, 12);
    writer.write(1, 1);
    EXPECT_EQ(writer.finish(), 3u);
    EXPECT_EQ(out, from_hex("8a bc 80 00"));
}

TEST(bit_writer, writes_whole_words_and_across_them) {
    bytes out(24);
    bit_writer writer(out.data(), out.size());
    writer.write(0x0123456789abcdef, 64);
    writer.write(0x5, 4);
    writer.write(0xfedcba9876543210, 64);
    EXPECT_EQ(writer.finish(), 17u);
    EXPECT_EQ(out, from_hex("0123456789abcdef 5fedcba987654321 00 00000000000000"));
}

TEST(bit_writer, without_bits_writes_nothing) {
    bytes out(1, 0x77);
    bit_writer writer(out.data(), out.size());
    EXPECT_EQ(writer.finish(), 0u);
    EXPECT_EQ(out[0], 0x77);
}

TEST(bit_writer, stops_at_the_end_of_its_room) {
    test::guarded_buffer out(8);
    bit_writer writer(out.data(), out.size());
    writer.write(0, 64);
    writer.write(1, 1);
    EXPECT_THROW(writer.finish(), invalid_argument);
}

TEST(bit_reader, reads_what_the_writer_wrote) {
    test::random_source random(11);
    for (int round = 0; round < 200; ++round) {
        std::vector<std::pair<std::uint64_t, unsigned>> fields;
        bytes out(4096);
        bit_writer writer(out.data(), out.size());
        for (int i = 0; i < 300; ++i) {
            const unsigned count = 1 + random.below(57);
            const std::uint64_t value = random.next() >> (64 - count);
            fields.emplace_back(value, count);
            writer.write(value, count);
        }
        out.resize(writer.finish());
        const test::guarded_buffer source(out);
        bit_reader reader(source.data(), source.size());
        for (const auto& [value, count] : fields) {
            ASSERT_EQ(reader.peek(count), value);
            ASSERT_EQ(reader.read(count), value);
        }
        EXPECT_FALSE(reader.exhausted());
    }
}

TEST(bit_reader, shows_zeros_past_the_end_and_remembers_taking_them) {
    const test::guarded_buffer source(from_hex("ff"));
    bit_reader reader(source.data(), source.size());
    EXPECT_EQ(reader.peek(12), 0xff0u);
    EXPECT_EQ(reader.read(8), 0xffu);
    EXPECT_FALSE(reader.exhausted());
    EXPECT_EQ(reader.peek(57), 0u);
    EXPECT_FALSE(reader.exhausted());
    EXPECT_EQ(reader.read(1), 0u);
    EXPECT_TRUE(reader.exhausted());
}

TEST(bit_reader, reads_gamma_codes) {
    const bytes source = test::from_bits("1 010 011 00100 0000000100000000");
    bit_reader reader(source.data(), source.size());
    EXPECT_EQ(reader.read_gamma(), 1u);
    EXPECT_EQ(reader.read_gamma(), 2u);
    EXPECT_EQ(reader.read_gamma(), 3u);
    EXPECT_EQ(reader.read_gamma(), 4u);
    EXPECT_EQ(reader.read_gamma(), 128u);
}

TEST(bit_reader, counts_no_more_than_32_zeros_of_a_gamma_code) {
    const bytes largest = test::from_hex("00000000 ffffffff 80");
    bit_reader reader(largest.data(), largest.size());
    EXPECT_EQ(reader.read_gamma(), 0x1ffffffffu);
    EXPECT_EQ(reader.bits_read(), 65u);

    const bytes zeros(9);
    bit_reader nothing(zeros.data(), zeros.size());
    EXPECT_EQ(nothing.read_gamma(), 0u);
    EXPECT_EQ(nothing.bits_read(), 65u);
}

TEST(bit_reader, counts_ones_however_many_there_are) {
    for (const std::size_t ones : {0u, 1u, 31u, 32u, 33u, 64u, 100u}) {
        const bytes source = test::from_bits(std::string(ones, '1') + "01");
        bit_reader reader(source.data(), source.size());
        EXPECT_EQ(reader.read_unary(), ones);
        EXPECT_EQ(reader.bits_read(), ones + 1);
    }
    const bytes endless(1000, 0xff);
    bit_reader reader(endless.data(), endless.size());
    EXPECT_EQ(reader.read_unary(), 8000u);
    EXPECT_TRUE(reader.exhausted());
}

TEST(gamma_zeros, is_the_binary_logarithm) {
    EXPECT_EQ(gamma_zeros(1), 0u);
    EXPECT_EQ(gamma_zeros(2), 1u);
    EXPECT_EQ(gamma_zeros(3), 1u);
    EXPECT_EQ(gamma_zeros(255), 7u);
    EXPECT_EQ(gamma_zeros(0x100000000), 32u);
}

TEST(zigzag, alternates_between_the_signs) {
    EXPECT_EQ(zigzag_decode(0), 0u);
    EXPECT_EQ(static_cast<std::int64_t>(zigzag_decode(1)), -1);
    EXPECT_EQ(static_cast<std::int64_t>(zigzag_decode(2)), 1);
    EXPECT_EQ(static_cast<std::int64_t>(zigzag_decode(253)), -127);
    EXPECT_EQ(static_cast<std::int64_t>(zigzag_decode(254)), 127);
}

}  // namespace
