// SPDX-License-Identifier: BSD-3-Clause
//
// Plane-type codes: the four characters that label a plane in the bitstream, what each means, which planes a frame of
// each order and type is made of, and which sets of planes a frame may carry.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "api/base/checked.h"

// Four ASCII characters, first character in the lowest byte: the order in which the file holds them.
constexpr std::uint32_t fourcc(const char (&text)[5]) {
    return static_cast<std::uint32_t>(static_cast<unsigned char>(text[0])) |
           static_cast<std::uint32_t>(static_cast<unsigned char>(text[1])) << 8 |
           static_cast<std::uint32_t>(static_cast<unsigned char>(text[2])) << 16 |
           static_cast<std::uint32_t>(static_cast<unsigned char>(text[3])) << 24;
}

enum class plane_class : std::uint8_t {
    unknown,
    luma,
    cb,
    cr,
    alpha,
    coded_alpha,  // run-length coded; not stored in rows
    rgb,          // interleaved, three samples a pixel
    ycbcr_444,    // likewise
    ycbcr_422,    // interleaved, two samples a pixel and one more for an odd width
    stitched,     // holds boxes, not samples
};

struct plane_type_traits {
    std::uint32_t code;
    std::uint32_t legacy;  // an older spelling that readers accept; 0 for none
    plane_class holds;
    std::uint8_t bits;             // of a stored sample
    std::uint32_t component_type;  // that reading reports for a frame whose main plane this is

    bool is_chroma() const { return holds == plane_class::cb || holds == plane_class::cr; }
    bool is_alpha() const { return holds == plane_class::alpha || holds == plane_class::coded_alpha; }
    bool is_fixed_point() const { return component_type == 214; }
};

// The row of a code; for any other value a row of class unknown, code 0.
const plane_type_traits& traits_of_plane(std::uint32_t code);

// The current spelling of a code read from a file; 0 for one that does not exist.
std::uint32_t normalised_plane_type(std::uint32_t code);

// Samples and whole bytes of one stored row; 0 for planes that are not stored in rows.
wide row_samples(std::uint32_t code, std::uint32_t width);
wide row_bytes(std::uint32_t code, std::uint32_t width);

constexpr std::size_t k_most_planes = 4;

// Planes of a frame in bitstream order, unused places 0.
using plane_codes = std::array<std::uint32_t, k_most_planes>;

// The planes that a frame of this order and type is stored in. Throws invalid_argument for a pair that is not
// supported.
const plane_codes& format_planes(std::uint32_t order, std::uint32_t type);

// The code under which an alpha plane is stored when it is run-length coded; any other code unchanged.
std::uint32_t coded_form(std::uint32_t code);

// Whether a stored plane serves a caller whose format names `wanted`: the plane itself, coded alpha for raw alpha, and
// fixed point for float (converted on decoding).
bool plane_serves(std::uint32_t stored, std::uint32_t wanted);

// Whether a frame may carry exactly these planes, in any order. A repeated code is never allowed.
bool allowed_plane_sets(const std::uint32_t* codes, std::size_t count);
