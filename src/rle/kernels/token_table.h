// SPDX-License-Identifier: BSD-3-Clause
//
// What the next 12 bits of a slice say, looked up instead of read field by field. Of 8-bit samples they hold most tokens
// whole; of 16-bit samples all but the last 6 or 16 bits of the code.
#pragma once

#include <array>
#include <cstdint>

#include "rle/sample_traits.h"

constexpr unsigned k_table_bits = 12;
constexpr unsigned k_most_gamma_zeros = 3;  // runs of up to 15 samples

// The fields of a token as far as they lie within the window.
struct token_prefix {
    bool second_order = false;
    std::uint32_t length = 0;  // 0: not a token that the table can hold
    bool rice = false;
    std::uint32_t quotient = 0;
    unsigned bits = 0;  // up to the low bits of a Rice code, or to a raw code
};

constexpr token_prefix read_prefix(std::uint32_t window) {
    const auto bit = [window](unsigned i) { return i < k_table_bits && (window >> (k_table_bits - 1 - i) & 1) != 0; };
    token_prefix prefix;
    prefix.second_order = bit(0);
    unsigned zeros = 0;
    while (zeros <= k_most_gamma_zeros && !bit(1 + zeros)) {
        ++zeros;
    }
    if (zeros > k_most_gamma_zeros) {
        return prefix;
    }
    unsigned at = 1 + 2 * zeros + 1;
    const std::uint32_t length = window >> (k_table_bits - at) & ((2u << zeros) - 1);
    prefix.rice = bit(at++);
    while (prefix.rice && prefix.quotient < 8 && bit(at)) {
        ++prefix.quotient;
        ++at;
    }
    at += prefix.rice ? 1 : 0;  // the bit that ends the quotient
    prefix.bits = at;
    prefix.length = at <= k_table_bits ? length : 0;
    return prefix;
}

// An entry for a token that must be read field by field: to 8-bit samples one of second order without bits and samples.
template <class Sample>
constexpr std::uint32_t k_longer_token = sizeof(Sample) == 1 ? 0xff0000 : 0;

// All other entries are
//   8-bit samples    bits 0..7 of the token    8..15 length of the run    16..23 second order: 0xff    24..31 residual
//   16-bit samples   bits 0..5 of the token    6..11 of its prefix    12..17 bits that are not the code's, of 64
//                    18..21 quotient           22..25 length of the run
//                    30 second order and longer than one sample              31 second order
// A run of second order whose residual is not 0 bends, and is not for the table if it is longer than one sample.
template <class Sample>
constexpr std::uint32_t table_entry(std::uint32_t window) {
    using traits = sample_traits<Sample>;
    const token_prefix prefix = read_prefix(window);
    const unsigned code_bits = prefix.rice ? traits::k_low_bits : traits::k_depth;
    const unsigned bits = prefix.bits + code_bits;
    if (prefix.length == 0) {
        return k_longer_token<Sample>;
    }
    if (traits::k_depth == 16) {
        const std::uint32_t order = prefix.second_order ? 1 : 0;
        const std::uint32_t may_bend = prefix.length > 1 ? order : 0;
        return bits | prefix.bits << 6 | (64 - code_bits) << 12 | prefix.quotient << 18 | prefix.length << 22 |
               may_bend << 30 | order << 31;
    }
    if (bits > k_table_bits) {
        return k_longer_token<Sample>;
    }
    const std::uint32_t low = window >> (k_table_bits - bits) & ((1u << code_bits) - 1);
    const std::uint32_t code = (prefix.quotient << code_bits) + low;
    const std::uint32_t residual = (code >> 1) ^ (0 - (code & 1));
    if (prefix.second_order && prefix.length > 1 && residual != 0) {
        return k_longer_token<Sample>;
    }
    return bits | prefix.length << 8 | (prefix.second_order ? 0xff0000u : 0u) | residual << 24;
}

template <class Sample>
constexpr std::array<std::uint32_t, 1u << k_table_bits> make_token_table() {
    std::array<std::uint32_t, 1u << k_table_bits> table{};
    for (std::uint32_t window = 0; window < table.size(); ++window) {
        table[window] = table_entry<Sample>(window);
    }
    return table;
}
