// SPDX-License-Identifier: BSD-3-Clause
//
// A pixel map as byte shuffles. A block is as many 16-byte vectors of the caller's samples as a group has samples: it
// holds whole groups whatever the sample width, and becomes as many whole vectors of colours and of alphas.
//
//   caller  RGBARGBARGBARGBA RGBARGBARGBARGBA RGBARGBARGBARGBA RGBARGBARGBARGBA
//   colour  RGBRGBRGBRGBRGBR GBRGBRGBRGBRGBRG BRGBRGBRGBRGBRGB
//   alpha   AAAAAAAAAAAAAAAA
//
// Each vector of one side is put together from bytes of some vectors of the other, one shuffle for each.
#pragma once

#include <cstdint>

#include "api/base/pixel_format.h"

constexpr unsigned k_shuffle_bytes = 16;
constexpr unsigned k_most_block_vectors = 4;
constexpr std::uint8_t k_shuffle_zero = 0x80;  // a shuffle turns it into a zero byte

// mask[out][in]: which bytes of vector `in` go where in vector `out`.
struct block_permutation {
    std::uint8_t mask[k_most_block_vectors][k_most_block_vectors][k_shuffle_bytes];

    constexpr void move(unsigned from, unsigned to) {
        mask[to / k_shuffle_bytes][from / k_shuffle_bytes][to % k_shuffle_bytes] =
            static_cast<std::uint8_t>(from % k_shuffle_bytes);
    }
    constexpr bool takes(unsigned out, unsigned in) const {
        for (const std::uint8_t each : mask[out][in]) {
            if (each != k_shuffle_zero) {
                return true;
            }
        }
        return false;
    }
};

struct block_permutations {
    block_permutation pack;    // caller -> colours, then alphas
    block_permutation unpack;  // colours, then alphas -> caller
};

constexpr block_permutations make_block_permutations(const pixel_map& map, unsigned sample_bytes) {
    block_permutations both{};
    for (unsigned out = 0; out < k_most_block_vectors; ++out) {
        for (unsigned in = 0; in < k_most_block_vectors; ++in) {
            for (unsigned byte = 0; byte < k_shuffle_bytes; ++byte) {
                both.pack.mask[out][in][byte] = both.unpack.mask[out][in][byte] = k_shuffle_zero;
            }
        }
    }
    const unsigned groups = k_shuffle_bytes / sample_bytes;
    const unsigned alphas = map.colours * k_shuffle_bytes;  // where they start behind the colours
    for (unsigned group = 0; group < groups; ++group) {
        for (unsigned sample = 0; sample < map.samples; ++sample) {
            const bool is_colour = sample < map.colours;  // in bitstream order: colours, then alpha
            const unsigned place = is_colour ? map.colour[sample] : static_cast<unsigned>(map.alpha);
            const unsigned caller = (group * map.samples + place) * sample_bytes;
            const unsigned stored =
                is_colour ? (group * map.colours + sample) * sample_bytes : alphas + group * sample_bytes;
            for (unsigned byte = 0; byte < sample_bytes; ++byte) {
                both.pack.move(caller + byte, stored + byte);
                both.unpack.move(stored + byte, caller + byte);
            }
        }
    }
    return both;
}

// Which shuffles a kind of map needs at all: the same for every order and sample width of that kind.
namespace block_shape {

struct pair {  // two samples change places: every vector by itself
    static constexpr unsigned k_ins = 1, k_outs = 1;
    static constexpr bool k_takes[1][1] = {{true}};
};
struct triple {  // three samples change places
    static constexpr unsigned k_ins = 3, k_outs = 3;
    static constexpr bool k_takes[3][3] = {{true, true, false}, {true, true, true}, {false, true, true}};
};
struct split_3 {  // two colours and an alpha are taken apart
    static constexpr unsigned k_ins = 3, k_outs = 3;
    static constexpr bool k_takes[3][3] = {{true, true, false}, {false, true, true}, {true, true, true}};
};
struct merge_3 {
    static constexpr unsigned k_ins = 3, k_outs = 3;
    static constexpr bool k_takes[3][3] = {{true, false, true}, {true, true, true}, {false, true, true}};
};
struct split_4 {  // three colours and an alpha
    static constexpr unsigned k_ins = 4, k_outs = 4;
    static constexpr bool k_takes[4][4] = {
        {true, true, false, false}, {false, true, true, false}, {false, false, true, true}, {true, true, true, true}};
};
struct merge_4 {
    static constexpr unsigned k_ins = 4, k_outs = 4;
    static constexpr bool k_takes[4][4] = {
        {true, false, false, true}, {true, true, false, true}, {false, true, true, true}, {false, false, true, true}};
};

// Whether a shape leaves out no shuffle that the permutation needs.
template <class Shape>
constexpr bool covers(const block_permutation& permutation) {
    for (unsigned out = 0; out < k_most_block_vectors; ++out) {
        for (unsigned in = 0; in < k_most_block_vectors; ++in) {
            const bool has = out < Shape::k_outs && in < Shape::k_ins && Shape::k_takes[out][in];
            if (permutation.takes(out, in) && !has) {
                return false;
            }
        }
    }
    return true;
}

}  // namespace block_shape
