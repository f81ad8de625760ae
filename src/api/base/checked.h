// SPDX-License-Identifier: BSD-3-Clause
//
// Sizes that cannot overflow. A frame's size is a product of up to three 32-bit fields and a small factor, a
// bitstream's a sum of a few of those: 128 bits hold every one exactly, so sizes are computed wide, compared, and
// narrowed last.
#pragma once

#include <cstdint>
#include <limits>
#include <string>

__extension__ typedef unsigned __int128 wide;  // NOLINT(modernize-use-using): that form has no __extension__

constexpr wide ceil_div(wide value, wide divisor) {
    return (value + divisor - 1) / divisor;
}

// Half of a dimension, rounded up: what chroma keeps of it.
constexpr std::uint32_t half_up(std::uint32_t value) {
    return value / 2 + value % 2;
}

constexpr bool fits_32(wide value) {
    return value <= std::numeric_limits<std::uint32_t>::max();
}

// What the size queries answer: the size modulo 2^32.
constexpr std::uint32_t low_32(wide value) {
    return static_cast<std::uint32_t>(value);
}

// For values already proven to fit: a plan whose total fits the caller's buffer has only offsets and sizes that do.
// Throws invalid_argument otherwise, which no input can reach.
std::uint32_t checked_narrow(wide value);

std::string decimal(wide value);
