// SPDX-License-Identifier: BSD-3-Clause
//
// The bits of one token; see sample_traits.h for what they mean.
#pragma once

#include <cstdint>

#include "rle/sample_traits.h"

// floor(log2(value)) for value > 0: the number of zeros that open the Elias gamma code of value, which takes twice that
// and one more bit in all.
inline unsigned gamma_zeros(std::uint64_t value) {
    return 63u - static_cast<unsigned>(__builtin_clzll(value));
}

struct token {
    std::uint64_t head;  // M and L
    std::uint64_t tail;  // T and Z
    unsigned head_length;
    unsigned tail_length;
};

// The token of a run of less than 2^32 samples.
template <class Sample>
token make_token(std::uint32_t symbol, std::uint64_t length) {
    using traits = sample_traits<Sample>;
    const std::uint64_t order = symbol >> traits::k_depth;
    const std::uint32_t code = static_cast<Sample>(symbol);
    const unsigned length_bits = 2 * gamma_zeros(length) + 1;
    // Raw, with a type bit of 0.
    token made = {order << length_bits | length, code, 1 + length_bits, 1 + traits::k_depth};
    if (code < traits::k_rice_limit) {
        // Rice: the quotient Z >> k in one-bits, a zero bit and the k low bits.
        const std::uint32_t quotient = code >> traits::k_low_bits;
        const std::uint32_t type_and_ones = (2u << quotient) - 1;
        const std::uint32_t low = code & ((1u << traits::k_low_bits) - 1);
        made.tail = type_and_ones << (1 + traits::k_low_bits) | low;
        made.tail_length = 1 + quotient + 1 + traits::k_low_bits;
    }
    return made;
}
