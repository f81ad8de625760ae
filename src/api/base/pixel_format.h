// SPDX-License-Identifier: BSD-3-Clause
//
// The model of pixel formats: what each component order and component type means, a table row each. Everything else in
// the library asks these rows; a new format is a new row here and in the plane tables.
#pragma once

#include <cstdint>

#include "api/base/checked.h"

// Where the samples of one group of an interleaved row go. A group is the smallest run of samples that is permuted by
// itself: a pixel, or a pair of 4:2:2 samples.
struct pixel_map {
    std::uint8_t samples;    // of one group in the caller's memory; 0: memory order is bitstream order, nothing to do
    std::uint8_t colours;    // of them stored in the colour plane
    std::uint8_t colour[3];  // stored colour sample j is the caller's sample colour[j]
    std::int8_t alpha;       // the caller's sample that is alpha, -1 for none
};

enum class arrangement : std::uint8_t {
    interleaved,             // one plane
    interleaved_plus_alpha,  // one plane of colour, behind it one of alpha
    planar_420,              // luma, Cb and Cr at half size, and alpha when the order has it
    alpha_only,              // one plane of alpha
};

struct order_traits {
    std::uint16_t subsampling;  // 422, 444, 420; 1 for a single component; 0 for an order that does not exist
    arrangement planes;
    bool has_alpha;
    // An interleaved row holds samples_per_pixel x width samples, and odd_width_samples more when the width is odd.
    std::uint8_t samples_per_pixel;
    std::uint8_t odd_width_samples;
    pixel_map map;

    bool interleaves_alpha() const { return map.samples != 0 && map.alpha >= 0; }
};

// How samples of fewer bits than their memory are stored: high bytes first, low bits packed behind.
enum class narrowing : std::uint8_t { none, ten_bits, twelve_bits, ten_bits_packed };

struct type_traits {
    std::uint32_t type;
    std::uint8_t bits;   // of a stored sample; 0 for a type that does not exist
    std::uint8_t bytes;  // of a sample in the caller's memory, as the default strides count it
    narrowing rule;
};

// A row whose memory order is the bitstream's.
constexpr pixel_map k_in_stream_order = {0, 0, {0, 0, 0}, -1};

// Any value may be asked for; values outside the tables get a row that says so.
const order_traits& traits_of_order(std::uint32_t order);
const type_traits& traits_of_type(std::uint32_t type);

// The type whose rows hold six 4:2:2 pixels in four 32-bit words; its stride rule does not look at the order.
constexpr std::uint32_t k_packed_type = 5;

// Bytes of one interleaved row of the caller's, without padding. 0 for orders that do not exist.
wide interleaved_row_bytes(std::uint32_t order, std::uint32_t type, std::uint32_t width);
