// SPDX-License-Identifier: BSD-3-Clause
//
// Payloads of coded alpha put together bit by bit, without any code of the tool or the library.
#pragma once

#include <cstdint>
#include <vector>

#include "process.h"

class bit_string {
  public:
    bit_string& put(std::uint64_t value, unsigned count);
    bit_string& gamma(std::uint64_t value);
    // A run of so many samples that all repeat the one before.
    bit_string& repeat(std::uint64_t samples);
    // The last byte filled up, with zeros or with other bits.
    bytes finish(std::uint8_t fill = 0) const;

  private:
    std::vector<bool> bits;
};

// As an encoder writes it, with what fills up the last byte.
bytes slice_table(const std::vector<std::uint32_t>& sizes, const std::vector<std::uint32_t>& rows,
                  std::uint8_t fill = 0);

bytes joined(const std::vector<bytes>& parts);

// A frame of one plane of 8-bit alpha.
bytes coded_frame(std::uint32_t width, std::uint32_t height, const bytes& payload);
