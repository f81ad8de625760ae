// SPDX-License-Identifier: BSD-3-Clause
//
// PNG pictures: 8 or 16 bits, 1 to 4 channels.
#pragma once

#include <cstdint>

#include "file_io.h"
#include "picture.h"

namespace qvr {

extern const picture_format k_png_format;

bool begins_like_png(input_file& file);

// Palettes become RGB, transparent colours an alpha channel, greys of less than 8 bits 8 bits. Nothing else is
// converted: gamma and colour profile are not looked at.
void read_png(input_file& file, picture& to);

// The samples are height rows of what the other members say.
void write_png(output_file& file, const picture& shape, const std::uint8_t* samples);

}  // namespace qvr
