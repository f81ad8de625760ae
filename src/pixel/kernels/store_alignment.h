// SPDX-License-Identifier: BSD-3-Clause
//
// Stores that cross from one cache line into the next take twice as long, and most stores of wide vectors do when their
// destination is not aligned. So where a row's first block has been stored, the next one begins at the first place of
// the destination that is aligned to a vector. Both write what lies between; it is the same.
//
//   destination  |-------:-------|-------:-------|        | lines, : vectors
//   first block       ==============
//   second                   ==============
//
#pragma once

#include <cstddef>
#include <cstdint>

// The units of `unit_bytes` that lie before the first aligned place, fewer than fill a vector; 0 where no unit begins
// at one. vector_bytes is a power of two up to 512, unit_bytes a power of two or three times one.
inline std::size_t units_to_alignment(const std::uint8_t* to, unsigned unit_bytes, std::size_t vector_bytes) {
    const std::size_t missing = (0 - reinterpret_cast<std::uintptr_t>(to)) & (vector_bytes - 1);
    const std::size_t even = unit_bytes & (0 - unit_bytes);  // the power of two in it
    if ((missing & (even - 1)) != 0) {
        return 0;
    }
    constexpr std::size_t k_third = 171;  // 3 x 171 = 1 modulo 512 and every smaller power of two
    const std::size_t units = missing / even * (unit_bytes == even ? 1 : k_third);
    return units & (vector_bytes / even - 1);
}

// Goes over `items` of a row in blocks: run(count) does a block and moves `count` items on. lead: the items before the
// place where stores are aligned, fewer than a block, or 0. Returns how many items are left, fewer than a block.
template <class Run>
[[gnu::always_inline]] inline std::size_t run_blocks(std::size_t items, std::size_t block, std::size_t lead, Run run) {
    if (lead != 0 && items >= 2 * block) {
        run(lead);
        items -= lead;
    }
    for (; items >= block; items -= block) {
        run(block);
    }
    return items;
}
