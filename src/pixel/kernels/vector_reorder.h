// SPDX-License-Identifier: BSD-3-Clause
//
// Reordering: each lane takes a block of its own, blocks follow each other in memory.
#pragma once

#include <cstddef>
#include <cstring>
#include <utility>

#include "pixel/kernels/row_kernels.h"
#include "pixel/kernels/store_alignment.h"

template <class V>
struct vector_reorder {
    static constexpr std::size_t k_bytes = V::k_lanes * 16;

    template <class Shape>
    struct shuffles {
        V of[Shape::k_outs][Shape::k_ins];

        explicit shuffles(const block_permutation& permutation) {
            for (unsigned out = 0; out < Shape::k_outs; ++out) {
                for (unsigned in = 0; in < Shape::k_ins; ++in) {
                    of[out][in] = V::broadcast(permutation.mask[out][in]);
                }
            }
        }
    };

    template <class Shape, unsigned out>
    static V permute(const V (&in)[Shape::k_ins], const shuffles<Shape>& by) {
        V sum = V::zero();
#pragma GCC unroll 4
        for (unsigned i = 0; i < Shape::k_ins; ++i) {
            if (Shape::k_takes[out][i]) {
                sum = sum | in[i].shuffle(by.of[out][i]);
            }
        }
        return sum;
    }

    template <class Shape, unsigned outs, unsigned... out>
    static void permute_all(const V (&in)[Shape::k_ins], const shuffles<Shape>& by, V (&to)[outs],
                            std::integer_sequence<unsigned, out...>) {
        ((to[out] = permute<Shape, out>(in, by)), ...);
    }

    // Vector `index` of the blocks that start at `from`.
    template <unsigned vectors>
    static V block_vector(const std::uint8_t* from, unsigned index) {
        if constexpr (vectors == 1) {
            return V::load(from);
        }
        return V::from_lanes([=](unsigned lane) { return from + std::size_t{16} * (lane * vectors + index); });
    }

    template <class Shape, unsigned colours, bool keeps_alpha>
    static void pack_block(const std::uint8_t* caller, const shuffles<Shape>& by, std::uint8_t* colour,
                           std::uint8_t* alpha) {
        V in[Shape::k_ins];
#pragma GCC unroll 4
        for (unsigned i = 0; i < Shape::k_ins; ++i) {
            in[i] = block_vector<Shape::k_ins>(caller, i);
        }
        V out[colours];
        permute_all<Shape>(in, by, out, std::make_integer_sequence<unsigned, colours>{});
        V::store_blocks(colour, out);
        if constexpr (keeps_alpha) {
            permute<Shape, colours>(in, by).store(alpha);  // one vector a block: lanes follow each other
        }
    }

    template <class Shape, unsigned colours>
    static void unpack_block(const std::uint8_t* colour, const std::uint8_t* alpha, const shuffles<Shape>& by,
                             std::uint8_t* caller) {
        V in[Shape::k_ins];
#pragma GCC unroll 4
        for (unsigned i = 0; i < colours; ++i) {
            in[i] = block_vector<colours>(colour, i);
        }
        if constexpr (Shape::k_ins > colours) {
            in[colours] = V::load(alpha);
        }
        V out[Shape::k_outs];
        permute_all<Shape>(in, by, out, std::make_integer_sequence<unsigned, Shape::k_outs>{});
        V::store_blocks(caller, out);
    }

    template <class Shape, unsigned colours, bool keeps_alpha>
    static void pack_row(const reorder_rule& rule, const std::uint8_t* caller, std::size_t groups, std::uint8_t* colour,
                         std::uint8_t* alpha) {
        const shuffles<Shape> by(rule.blocks.pack);
        // Counted in bytes of one of the block's vectors, all lanes.
        const std::size_t lead = units_to_alignment(colour, rule.colour_bytes, k_bytes);
        const std::size_t left = run_blocks(
            groups * rule.group_bytes / Shape::k_ins, k_bytes,
            lead * rule.group_bytes / Shape::k_ins, [&](std::size_t bytes) __attribute__((always_inline)) {
                pack_block<Shape, colours, keeps_alpha>(caller, by, colour, alpha);
                caller += Shape::k_ins * bytes;
                colour += colours * bytes;
                alpha += keeps_alpha ? bytes : 0;
            });
        if (left != 0) {
            std::uint8_t in[Shape::k_ins * k_bytes] = {};
            std::uint8_t out[(colours + 1) * k_bytes];
            std::memcpy(in, caller, Shape::k_ins * left);
            pack_block<Shape, colours, keeps_alpha>(in, by, out, out + colours * k_bytes);
            std::memcpy(colour, out, colours * left);
            if constexpr (keeps_alpha) {
                std::memcpy(alpha, out + colours * k_bytes, left);
            }
        }
    }

    template <class Shape, unsigned colours>
    static void unpack_row(const reorder_rule& rule, const std::uint8_t* colour, const std::uint8_t* alpha,
                           std::size_t groups, std::uint8_t* caller) {
        constexpr bool has_alpha = Shape::k_ins > colours;
        const shuffles<Shape> by(rule.blocks.unpack);
        const std::size_t lead = units_to_alignment(caller, rule.group_bytes, k_bytes);
        const std::size_t left = run_blocks(
            groups * rule.group_bytes / Shape::k_outs, k_bytes,
            lead * rule.group_bytes / Shape::k_outs, [&](std::size_t bytes) __attribute__((always_inline)) {
                unpack_block<Shape, colours>(colour, alpha, by, caller);
                caller += Shape::k_outs * bytes;
                colour += colours * bytes;
                alpha += has_alpha ? bytes : 0;
            });
        if (left != 0) {
            std::uint8_t in[(colours + 1) * k_bytes] = {};
            std::uint8_t out[Shape::k_outs * k_bytes];
            std::memcpy(in, colour, colours * left);
            if constexpr (has_alpha) {
                std::memcpy(in + colours * k_bytes, alpha, left);
            }
            unpack_block<Shape, colours>(in, in + colours * k_bytes, by, out);
            std::memcpy(caller, out, Shape::k_outs * left);
        }
    }

    static void pack(const reorder_rule& rule, const std::uint8_t* caller, std::size_t groups, std::uint8_t* colour,
                     std::uint8_t* alpha) {
        using namespace block_shape;
        const bool splits = rule.map.alpha >= 0 && alpha != nullptr;
        switch (rule.map.samples) {
            case 2:
                return pack_row<pair, 1, false>(rule, caller, groups, colour, alpha);
            case 3:
                return rule.map.alpha < 0 ? pack_row<triple, 3, false>(rule, caller, groups, colour, alpha)
                       : splits           ? pack_row<split_3, 2, true>(rule, caller, groups, colour, alpha)
                                          : pack_row<split_3, 2, false>(rule, caller, groups, colour, alpha);
            default:
                return splits ? pack_row<split_4, 3, true>(rule, caller, groups, colour, alpha)
                              : pack_row<split_4, 3, false>(rule, caller, groups, colour, alpha);
        }
    }

    static void unpack(const reorder_rule& rule, const std::uint8_t* colour, const std::uint8_t* alpha,
                       std::size_t groups, std::uint8_t* caller) {
        using namespace block_shape;
        switch (rule.map.samples) {
            case 2:
                return unpack_row<pair, 1>(rule, colour, alpha, groups, caller);
            case 3:
                return rule.map.alpha < 0 ? unpack_row<triple, 3>(rule, colour, alpha, groups, caller)
                                          : unpack_row<merge_3, 2>(rule, colour, alpha, groups, caller);
            default:
                return unpack_row<merge_4, 3>(rule, colour, alpha, groups, caller);
        }
    }
};
