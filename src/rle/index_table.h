// SPDX-License-Identifier: BSD-3-Clause
//
// The table at the front of a coded plane: how many slices, the byte size of each, the row count of each.
//
//   8 bits    number of slices N
//   2 x       a sequence of N values (sizes, then row counts), each value as the difference from the one before, equal
//             differences in groups: Elias gamma of the group's length, a type bit, the zigzag code of the difference
//             type 1: Rice code with 10 low bits    type 0: 24 raw bits
//   0..7 bits zero, to a whole byte
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

constexpr std::size_t k_most_slices = 255;  // the count is one byte

struct index_table {
    std::uint32_t slices = 0;
    std::array<std::uint32_t, k_most_slices> sizes;  // bytes; the first `slices` are valid, of rows too
    std::array<std::uint32_t, k_most_slices> rows;
    std::size_t bytes = 0;  // of the table itself
};

// Writes a table for count slices and returns its size in bytes. Only the low 8 bits of the count are stored, with as
// many values. Throws out_of_range for a value too far from the one before.
std::size_t write_index_table(const std::uint32_t* sizes, const std::uint32_t* rows, std::size_t count,
                              std::uint8_t* destination, std::size_t capacity);

// Throws invalid_argument for a table that ends before its last value or names more values than it has slices.
void read_index_table(const std::uint8_t* payload, std::size_t payload_size, index_table& table);
