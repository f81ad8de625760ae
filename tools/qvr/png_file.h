// SPDX-License-Identifier: BSD-3-Clause
//
// PNG pictures as plain samples: 8 or 16 bits (little-endian), 1 to 4 channels, rows without a gap.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "file_io.h"

namespace qvr {

struct picture {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    unsigned channels = 0;          // 1 grey, 2 grey and alpha, 3 RGB, 4 RGBA
    unsigned bytes_per_sample = 0;  // 1 or 2
    std::vector<std::uint8_t> samples;

    bool has_alpha() const { return channels == 2 || channels == 4; }
    std::size_t row_bytes() const { return std::size_t{width} * channels * bytes_per_sample; }
};

bool begins_like_png(input_file& file);

// Palettes become RGB, transparent colours an alpha channel, greys of less than 8 bits 8 bits. Nothing else is
// converted: gamma and colour profile are not looked at.
picture read_png(input_file& file);

// The samples are height rows of what the other members say.
void write_png(output_file& file, const picture& shape, const std::uint8_t* samples);

}  // namespace qvr
