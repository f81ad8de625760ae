// SPDX-License-Identifier: BSD-3-Clause
//
// Alpha planes as they come up in practice, drawn here so that everybody has the same.
#pragma once

#include <cstdint>
#include <vector>

#include "options.h"

namespace bench {

// Coverage, 0 to 1, of each pixel.
struct matte {
    std::uint32_t width;
    std::uint32_t height;
    std::vector<float> coverage;

    float& at(std::uint32_t x, std::uint32_t y) { return coverage[std::size_t{y} * width + x]; }
};

struct matte_kind {
    const char* name;
    matte (*draw)(const frame_size& size);
};

const std::vector<matte_kind>& all_mattes();
const matte_kind& matte_named(const char* name);

// As samples of 1 or 2 bytes, little-endian.
std::vector<std::uint8_t> to_samples(const matte& drawn, unsigned sample_bytes);

}  // namespace bench
