// SPDX-License-Identifier: BSD-3-Clause
//
// The inner loops over one row: pointers and counts, no strides, no threads, nothing thrown. Every kernel takes any
// alignment, reads nothing outside its source and writes nothing outside its destination. The scalar kernels are the
// definition; the others give the same bytes.
#pragma once

#include <cstddef>
#include <cstdint>

#include "api/base/cpu_features.h"
#include "api/base/pixel_format.h"
#include "pixel/kernels/block_permutation.h"

// A pixel map at one sample width, ready for kernels.
struct reorder_rule {
    pixel_map map;
    unsigned sample_bytes;  // 1, 2 or 4
    unsigned group_bytes;   // of one group in the caller's memory
    unsigned colour_bytes;  // of them colour
    block_permutations blocks;
};

constexpr reorder_rule make_reorder_rule(const pixel_map& map, unsigned sample_bytes) {
    return {map, sample_bytes, map.samples * sample_bytes, map.colours * sample_bytes,
            make_block_permutations(map, sample_bytes)};
}

struct row_kernels {
    // `groups` groups of the caller's samples into a colour row and an alpha row. alpha may be null: then it is
    // dropped.
    void (*pack)(const reorder_rule& rule, const std::uint8_t* caller, std::size_t groups, std::uint8_t* colour,
                 std::uint8_t* alpha);
    // The way back. alpha is read exactly when the map has one.
    void (*unpack)(const reorder_rule& rule, const std::uint8_t* colour, const std::uint8_t* alpha, std::size_t groups,
                   std::uint8_t* caller);

    // 16-bit words with the sample in the top bits, into one high byte a sample and the low bits of four (10 bits) or
    // two samples (12 bits) in a byte, first sample lowest; bits of samples that are not there are zero.
    //
    //   word    hhhhhhhh ll000000      high  h0 h1 h2 h3 ...     low  33221100 ...
    //   word    hhhhhhhh llll0000      high  h0 h1 h2 h3 ...     low  11110000 33332222 ...
    void (*narrow_10)(const std::uint8_t* words, std::size_t samples, std::uint8_t* high, std::uint8_t* low);
    void (*narrow_12)(const std::uint8_t* words, std::size_t samples, std::uint8_t* high, std::uint8_t* low);
    void (*widen_10)(const std::uint8_t* high, const std::uint8_t* low, std::size_t samples, std::uint8_t* words);
    void (*widen_12)(const std::uint8_t* high, const std::uint8_t* low, std::size_t samples, std::uint8_t* words);

    // Reordering and changing the width at once: `groups` groups of words in the caller's order. Alpha is dropped, and
    // only maps without alpha can be widened.
    void (*pack_narrow_10)(const reorder_rule& rule, const std::uint8_t* caller, std::size_t groups, std::uint8_t* high,
                           std::uint8_t* low);
    void (*pack_narrow_12)(const reorder_rule& rule, const std::uint8_t* caller, std::size_t groups, std::uint8_t* high,
                           std::uint8_t* low);
    void (*widen_unpack_10)(const reorder_rule& rule, const std::uint8_t* high, const std::uint8_t* low,
                            std::size_t groups, std::uint8_t* caller);
    void (*widen_unpack_12)(const reorder_rule& rule, const std::uint8_t* high, const std::uint8_t* low,
                            std::size_t groups, std::uint8_t* caller);

    // Six 4:2:2 pixels in four 32-bit words, three 10-bit samples each. A row of `width` pixels; the last pixel of an
    // odd tail is left out. high: 2 x width bytes. Widening writes the row to the end of its last group of six, zeros
    // where there is no pixel.
    //
    //   word    00cccccc ccccbbbb bbbbbbaa aaaaaaaa
    void (*narrow_10_packed)(const std::uint8_t* words, std::size_t width, std::uint8_t* high, std::uint8_t* low);
    void (*widen_10_packed)(const std::uint8_t* high, const std::uint8_t* low, std::size_t width, std::uint8_t* words);

    // Signed words with 14 fraction bits into 32-bit floats.
    void (*fixed_to_float)(const std::uint8_t* words, std::size_t samples, std::uint8_t* floats);
};

// A table for each instruction set. Constants: not a line of an instruction set's code runs on a processor without it.
extern const row_kernels k_scalar_kernels;
extern const row_kernels k_ssse3_kernels;
extern const row_kernels k_avx2_kernels;
extern const row_kernels k_avx512_kernels;

// The best kernels for a processor with these features.
const row_kernels& row_kernels_for(cpu_features features);

// The definitions; other kernels call them for rests of rows with rules of their own.
namespace scalar {
void pack(const reorder_rule& rule, const std::uint8_t* caller, std::size_t groups, std::uint8_t* colour,
          std::uint8_t* alpha);
void unpack(const reorder_rule& rule, const std::uint8_t* colour, const std::uint8_t* alpha, std::size_t groups,
            std::uint8_t* caller);
void narrow_10(const std::uint8_t* words, std::size_t samples, std::uint8_t* high, std::uint8_t* low);
void narrow_12(const std::uint8_t* words, std::size_t samples, std::uint8_t* high, std::uint8_t* low);
void widen_10(const std::uint8_t* high, const std::uint8_t* low, std::size_t samples, std::uint8_t* words);
void widen_12(const std::uint8_t* high, const std::uint8_t* low, std::size_t samples, std::uint8_t* words);
void narrow_10_packed(const std::uint8_t* words, std::size_t width, std::uint8_t* high, std::uint8_t* low);
void widen_10_packed(const std::uint8_t* high, const std::uint8_t* low, std::size_t width, std::uint8_t* words);
void fixed_to_float(const std::uint8_t* words, std::size_t samples, std::uint8_t* floats);
}  // namespace scalar

// Shape of the packed rows.
constexpr std::size_t k_packed_pixels = 6;
constexpr std::size_t k_packed_group_bytes = 16;
constexpr std::size_t k_packed_group_samples = 12;
constexpr std::size_t k_packed_group_low_bytes = 3;
