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

// How a pixel map moves the bytes of 16-byte vectors: as many whole groups as fit, everything else left out (0x80,
// which a byte shuffle turns into zero).
struct shuffle_masks {
    std::uint8_t groups = 0;        // in one vector of the caller's samples
    std::uint8_t colour_bytes = 0;  // that they leave
    std::uint8_t alpha_bytes = 0;
    std::uint8_t pack[16] = {};           // caller's vector -> colours of all groups, then their alphas
    std::uint8_t pack_alpha[16] = {};     // caller's vector -> alphas alone
    std::uint8_t unpack_colour[16] = {};  // colours -> caller's vector, zeros at the alphas
    std::uint8_t unpack_alpha[16] = {};   // alphas -> caller's vector, zeros at the colours
};

constexpr std::uint8_t k_shuffle_zero = 0x80;

constexpr shuffle_masks make_shuffle_masks(const pixel_map& map, unsigned sample_bytes) {
    shuffle_masks masks;
    for (unsigned i = 0; i < 16; ++i) {
        masks.pack[i] = masks.pack_alpha[i] = masks.unpack_colour[i] = masks.unpack_alpha[i] = k_shuffle_zero;
    }
    // With alpha, as many groups as leave four bytes of it: one double word to store, and all that fits with four
    // samples to the pixel.
    const unsigned groups = map.alpha >= 0 ? 4 / sample_bytes : 16 / (map.samples * sample_bytes);
    masks.groups = static_cast<std::uint8_t>(groups);
    masks.colour_bytes = static_cast<std::uint8_t>(groups * map.colours * sample_bytes);
    masks.alpha_bytes = static_cast<std::uint8_t>(map.alpha < 0 ? 0 : groups * sample_bytes);
    for (unsigned group = 0; group < groups; ++group) {
        for (unsigned byte = 0; byte < sample_bytes; ++byte) {
            for (unsigned colour = 0; colour < map.colours; ++colour) {
                const unsigned caller = (group * map.samples + map.colour[colour]) * sample_bytes + byte;
                const unsigned stored = (group * map.colours + colour) * sample_bytes + byte;
                masks.pack[stored] = static_cast<std::uint8_t>(caller);
                masks.unpack_colour[caller] = static_cast<std::uint8_t>(stored);
            }
            if (map.alpha >= 0) {
                const unsigned caller = (group * map.samples + static_cast<unsigned>(map.alpha)) * sample_bytes + byte;
                const unsigned stored = group * sample_bytes + byte;
                masks.pack[masks.colour_bytes + stored] = static_cast<std::uint8_t>(caller);
                masks.pack_alpha[stored] = static_cast<std::uint8_t>(caller);
                masks.unpack_alpha[caller] = static_cast<std::uint8_t>(stored);
            }
        }
    }
    return masks;
}

// A pixel map at one sample width, ready for kernels.
struct reorder_rule {
    pixel_map map;
    unsigned sample_bytes;  // 1, 2 or 4
    unsigned group_bytes;   // of one group in the caller's memory
    unsigned colour_bytes;  // of them colour
    shuffle_masks masks;
};

constexpr reorder_rule make_reorder_rule(const pixel_map& map, unsigned sample_bytes) {
    return {map, sample_bytes, map.samples * sample_bytes, map.colours * sample_bytes,
            make_shuffle_masks(map, sample_bytes)};
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

// The best kernels for a processor with these features.
row_kernels make_row_kernels(cpu_features features);

// Each instruction set replaces what it does better.
void use_scalar(row_kernels& kernels);
void use_ssse3(row_kernels& kernels);

// The definitions, which the other kernels also call for what is left of a row.
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
