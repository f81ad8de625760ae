// SPDX-License-Identifier: BSD-3-Clause
//
// The table of token beginnings, against tokens read field by field. Entries are made while the test runs, which those of
// the library's constant table are not, so that whatever watches the program sees it.
#include "rle/kernels/token_table.h"

#include <gtest/gtest.h>

#include <array>
#include <bitset>
#include <vector>

#include "rle/bit_reader.h"

namespace {

template <class Sample>
std::vector<std::uint32_t> entries() {
    std::vector<std::uint32_t> all;
    for (std::uint32_t window = 0; window < 1u << k_table_bits; ++window) {
        all.push_back(table_entry<Sample>(window));
    }
    return all;
}

struct fields {
    bool second_order;
    std::uint64_t length;
    bool rice;
    std::uint64_t quotient;
    std::uint64_t prefix_bits;
    std::uint32_t residual;
    std::uint64_t bits;
};

// Of a token that begins with the 12 bits of window, all bits behind them zero.
template <class Sample>
fields read_fields(std::uint32_t window) {
    using traits = sample_traits<Sample>;
    const std::array<std::uint8_t, 16> bytes = {static_cast<std::uint8_t>(window >> 4),
                                                static_cast<std::uint8_t>(window << 4)};
    bit_reader reader(bytes.data(), bytes.size());
    fields token = {};
    token.second_order = reader.read(1) != 0;
    token.length = reader.read_gamma();
    token.rice = reader.read(1) != 0;
    while (token.rice && token.quotient < 8 && reader.peek(1) != 0) {
        ++token.quotient;
        reader.skip(1);
    }
    reader.skip(token.rice ? 1 : 0);
    token.prefix_bits = reader.bits_read();
    const unsigned code_bits = token.rice ? traits::k_low_bits : traits::k_depth;
    const std::uint64_t code = (token.quotient << traits::k_low_bits) * (token.rice ? 1 : 0) + reader.read(code_bits);
    token.residual = static_cast<Sample>(zigzag_decode(code));
    token.bits = reader.bits_read();
    return token;
}

TEST(token_table, of_8_bits_holds_the_tokens_that_lie_within_the_window_and_do_not_bend) {
    const std::vector<std::uint32_t> table = entries<std::uint8_t>();
    std::size_t held = 0;
    for (std::uint32_t window = 0; window < table.size(); ++window) {
        const fields token = read_fields<std::uint8_t>(window);
        const bool bends = token.second_order && token.length > 1 && token.residual != 0;
        if (token.length > 15 || token.bits > k_table_bits || bends) {
            ASSERT_EQ(table[window], k_longer_token<std::uint8_t>) << std::bitset<12>(window);
            continue;
        }
        ++held;
        ASSERT_EQ(table[window],
                  token.bits | token.length << 8 | (token.second_order ? 0xff0000u : 0u) | token.residual << 24)
            << std::bitset<12>(window);
    }
    EXPECT_GT(held, table.size() / 2);
}

TEST(token_table, is_made_of_all_entries) {
    const auto table = make_token_table<std::uint8_t>();
    EXPECT_EQ(std::vector<std::uint32_t>(table.begin(), table.end()), entries<std::uint8_t>());
}

TEST(token_table, of_8_bits_has_the_written_entries) {
    const std::vector<std::uint32_t> table = entries<std::uint8_t>();
    // First order, one sample, Rice code 0 00: six bits, no change.
    EXPECT_EQ(table[0b0'1'1'0'00'000000], 0x00000106u);
    // Second order, three samples, Rice code 0 00: eight bits.
    EXPECT_EQ(table[0b1'011'1'0'00'0000], 0x00ff0308u);
    // First order, one sample, code 10 01 = 5, which is -3: seven bits.
    EXPECT_EQ(table[0b0'1'1'10'01'00000], 0xfd000107u);
    // The same of second order and two samples bends.
    EXPECT_EQ(table[0b1'010'1'10'01'000], 0x00ff0000u);
    // Five zeros ahead of a length of 32 or more.
    EXPECT_EQ(table[0b0'00000'100000], 0x00ff0000u);
}

TEST(token_table, of_16_bits_holds_what_comes_before_the_last_bits_of_the_code) {
    const std::vector<std::uint32_t> table = entries<std::uint16_t>();
    for (std::uint32_t window = 0; window < table.size(); ++window) {
        const fields token = read_fields<std::uint16_t>(window);
        const std::uint32_t entry = table[window];
        if (token.length > 15 || token.prefix_bits > k_table_bits) {
            ASSERT_EQ(entry, k_longer_token<std::uint16_t>) << std::bitset<12>(window);
            continue;
        }
        ASSERT_EQ(entry & 63, token.bits) << std::bitset<12>(window);
        ASSERT_EQ(entry >> 6 & 63, token.prefix_bits) << std::bitset<12>(window);
        ASSERT_EQ(entry >> 12 & 63, 64 - (token.bits - token.prefix_bits)) << std::bitset<12>(window);
        ASSERT_EQ(entry >> 18 & 15, token.quotient) << std::bitset<12>(window);
        ASSERT_EQ(entry >> 22 & 15, token.length) << std::bitset<12>(window);
        ASSERT_EQ(entry >> 30 & 1, token.second_order && token.length > 1 ? 1u : 0u) << std::bitset<12>(window);
        ASSERT_EQ(entry >> 31, token.second_order ? 1u : 0u) << std::bitset<12>(window);
    }
}

}  // namespace
