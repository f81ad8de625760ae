// SPDX-License-Identifier: BSD-3-Clause
//
// PNG pictures made and read by libpng alone, without any code of the tool.
#pragma once

#include <cstdint>
#include <string>

#include "process.h"

enum class colours { grey, palette, rgb, grey_alpha, rgba };

struct test_picture {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    int depth = 8;
    colours kind = colours::rgb;
    bytes samples;  // 16-bit samples little-endian; palette: one index a byte

    unsigned channels() const;
};

// Every sample another value, with full and empty alpha among them.
test_picture make_picture(colours kind, int depth, std::uint32_t width, std::uint32_t height);

// The palette that palette pictures have: index i is (i, 255 - i, 7 * i mod 256).
bytes palette_colour(std::uint8_t index);

// transparent: palette indices below this number get the index as their alpha.
void write_picture(const std::string& path, const test_picture& from, bool interlaced = false,
                   unsigned transparent = 0);

test_picture read_picture(const std::string& path);
