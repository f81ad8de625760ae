// SPDX-License-Identifier: BSD-3-Clause
//
// The row kernels for any vector width, written once. An instruction set supplies a vector type V of V::lanes 16-byte
// lanes, in which shuffles, packs and unpacks stay inside their lane, and the few operations that cross lanes.
//
// Every kernel is a loop over blocks of a fixed size. What is left of a row takes the same way through a block of its
// own on the stack, so nothing is read or written past the row's ends, and no second version of the code is needed.
//
// Included by one source file for each instruction set; V has internal linkage there, and so have the kernels.
#pragma once

#include <cstddef>
#include <cstring>
#include <utility>

#include "pixel/kernels/row_kernels.h"

template <class V>
struct vector_kernels {
    static constexpr std::size_t k_bytes = V::lanes * 16;

    // ---- Reordering: each lane takes a block of its own, blocks follow each other in memory.

    template <class Shape>
    struct shuffles {
        V of[Shape::outs][Shape::ins];

        explicit shuffles(const block_permutation& permutation) {
            for (unsigned out = 0; out < Shape::outs; ++out) {
                for (unsigned in = 0; in < Shape::ins; ++in) {
                    of[out][in] = V::broadcast(permutation.mask[out][in]);
                }
            }
        }
    };

    template <class Shape, unsigned out>
    static V permute(const V (&in)[Shape::ins], const shuffles<Shape>& by) {
        V sum = V::zero();
#pragma GCC unroll 4
        for (unsigned i = 0; i < Shape::ins; ++i) {
            if (Shape::takes[out][i]) {
                sum = sum | in[i].shuffle(by.of[out][i]);
            }
        }
        return sum;
    }

    template <class Shape, unsigned outs, unsigned... out>
    static void permute_all(const V (&in)[Shape::ins], const shuffles<Shape>& by, V (&to)[outs],
                            std::integer_sequence<unsigned, out...>) {
        ((to[out] = permute<Shape, out>(in, by)), ...);
    }

    // Vector `index` of the blocks that start at `from`.
    template <unsigned vectors>
    static V block_vector(const std::uint8_t* from, unsigned index) {
        if constexpr (vectors == 1) {
            return V::load(from);
        }
        return V::from_lanes([=](unsigned lane) { return from + (lane * vectors + index) * 16; });
    }

    template <class Shape, unsigned colours, bool keeps_alpha>
    static void pack_block(const std::uint8_t* caller, const shuffles<Shape>& by, std::uint8_t* colour,
                           std::uint8_t* alpha) {
        V in[Shape::ins];
#pragma GCC unroll 4
        for (unsigned i = 0; i < Shape::ins; ++i) {
            in[i] = block_vector<Shape::ins>(caller, i);
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
        V in[Shape::ins];
#pragma GCC unroll 4
        for (unsigned i = 0; i < colours; ++i) {
            in[i] = block_vector<colours>(colour, i);
        }
        if constexpr (Shape::ins > colours) {
            in[colours] = V::load(alpha);
        }
        V out[Shape::outs];
        permute_all<Shape>(in, by, out, std::make_integer_sequence<unsigned, Shape::outs>{});
        V::store_blocks(caller, out);
    }

    template <class Shape, unsigned colours, bool keeps_alpha>
    static void pack_row(const reorder_rule& rule, const std::uint8_t* caller, std::size_t groups, std::uint8_t* colour,
                         std::uint8_t* alpha) {
        const shuffles<Shape> by(rule.blocks.pack);
        std::size_t left = groups * rule.group_bytes / Shape::ins;  // bytes of one of the block's vectors, all lanes
        for (; left >= k_bytes; left -= k_bytes) {
            pack_block<Shape, colours, keeps_alpha>(caller, by, colour, alpha);
            caller += Shape::ins * k_bytes;
            colour += colours * k_bytes;
            alpha += keeps_alpha ? k_bytes : 0;
        }
        if (left != 0) {
            std::uint8_t in[Shape::ins * k_bytes] = {};
            std::uint8_t out[(colours + 1) * k_bytes];
            std::memcpy(in, caller, Shape::ins * left);
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
        constexpr bool has_alpha = Shape::ins > colours;
        const shuffles<Shape> by(rule.blocks.unpack);
        std::size_t left = groups * rule.group_bytes / Shape::outs;
        for (; left >= k_bytes; left -= k_bytes) {
            unpack_block<Shape, colours>(colour, alpha, by, caller);
            caller += Shape::outs * k_bytes;
            colour += colours * k_bytes;
            alpha += has_alpha ? k_bytes : 0;
        }
        if (left != 0) {
            std::uint8_t in[(colours + 1) * k_bytes] = {};
            std::uint8_t out[Shape::outs * k_bytes];
            std::memcpy(in, colour, colours * left);
            if constexpr (has_alpha) {
                std::memcpy(in + colours * k_bytes, alpha, left);
            }
            unpack_block<Shape, colours>(in, in + colours * k_bytes, by, out);
            std::memcpy(caller, out, Shape::outs * left);
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

    // ---- Narrowing: a block is one vector of low bits and the vectors of words and high bytes that go with it.

    template <unsigned bits>
    static constexpr unsigned k_in_a_byte = 8 / bits;  // samples, and vectors of high bytes in a block

    // The high bytes of two vectors of words are stored; what is left of their low bits comes back.
    template <unsigned bits>
    static V split_words(const std::uint8_t* words, std::uint8_t* high) {
        const V front = block_vector<2>(words, 0);
        const V back = block_vector<2>(words, 1);
        V::pack_16(front.template shift_right_16<8>(), back.template shift_right_16<8>()).store(high);
        // The low bits stay where they are in the low byte while neighbours are pushed together, so that one shift does
        // for a whole byte's samples.
        const V field = V::set_16(bits == 2 ? 0xc0 : 0xf0);
        const V lows = V::pack_16(front & field, back & field);
        if constexpr (bits == 2) {
            // s0 + 4 s1, bytes into words, and p0 + 16 p1, words into double words.
            return lows.multiply_add_8(V::set_16(0x0401)).multiply_add_16(V::set_32(0x00100001));
        } else {
            return lows.multiply_add_8(V::set_16(0x1001)).template shift_right_16<4>();  // s0 + 16 s1
        }
    }

    template <unsigned bits>
    static void narrow_block(const std::uint8_t* words, std::uint8_t* high, std::uint8_t* low) {
        V lows[k_in_a_byte<bits>];
#pragma GCC unroll 4
        for (unsigned i = 0; i < k_in_a_byte<bits>; ++i) {
            lows[i] = split_words<bits>(words + i * 2 * k_bytes, high + i * k_bytes);
        }
        if constexpr (bits == 2) {
            const V front = V::pack_32(lows[0], lows[1]).template shift_right_16<6>();
            const V back = V::pack_32(lows[2], lows[3]).template shift_right_16<6>();
            V::pack_16(front, back).interleave_lanes_32().store(low);
        } else {
            V::pack_16(lows[0], lows[1]).interleave_lanes_64().store(low);
        }
    }

    template <unsigned bits>
    static void narrow_row(const std::uint8_t* words, std::size_t samples, std::uint8_t* high, std::uint8_t* low) {
        constexpr std::size_t block = k_in_a_byte<bits> * k_bytes;
        for (; samples >= block; samples -= block) {
            narrow_block<bits>(words, high, low);
            words += 2 * block;
            high += block;
            low += k_bytes;
        }
        if (samples != 0) {
            std::uint8_t in[2 * block] = {};
            std::uint8_t out[block + k_bytes];
            std::memcpy(in, words, 2 * samples);
            narrow_block<bits>(in, out, out + block);
            std::memcpy(high, out, samples);
            std::memcpy(low, out + block, (samples * bits + 7) / 8);
        }
    }

    static void narrow_10(const std::uint8_t* words, std::size_t samples, std::uint8_t* high, std::uint8_t* low) {
        narrow_row<2>(words, samples, high, low);
    }
    static void narrow_12(const std::uint8_t* words, std::size_t samples, std::uint8_t* high, std::uint8_t* low) {
        narrow_row<4>(words, samples, high, low);
    }

    // ---- Widening: a block is a vector of high bytes and the two vectors of words that it becomes.

    // Low bits of `bits` bits: how many bytes a block has of them.
    template <unsigned bits>
    static constexpr std::size_t k_low_bytes = k_bytes* bits / 8;

    // Each word gets the low byte that holds its bits; a multiplication shifts them to the top, a mask leaves only them.
    template <unsigned bits>
    struct low_bits {
        static constexpr std::size_t k_half = k_low_bytes<bits> / 2;  // bytes for one vector of words
        V spread = V::from_lanes([](unsigned lane) { return k_spread.of[lane]; });
        V shifts = V::broadcast(reinterpret_cast<const std::uint8_t*>(bits == 2 ? k_shifts_2 : k_shifts_4));
        V field = V::set_16(bits == 2 ? 0xc0 : 0xf0);

        V operator()(const std::uint8_t* low) const {
            return (V::template broadcast_bytes<k_half>(low).shuffle(spread).multiply_16(shifts)) & field;
        }

      private:
        struct spread_table {
            std::uint8_t of[4][16];
        };
        static constexpr spread_table make_spread() {
            spread_table table{};
            for (unsigned word = 0; word < 32; ++word) {
                table.of[word / 8][word % 8 * 2] = static_cast<std::uint8_t>(word * bits / 8);
                table.of[word / 8][word % 8 * 2 + 1] = k_shuffle_zero;
            }
            return table;
        }
        static constexpr spread_table k_spread = make_spread();
        static constexpr std::uint16_t k_shifts_2[8] = {64, 16, 4, 1, 64, 16, 4, 1};
        static constexpr std::uint16_t k_shifts_4[8] = {16, 1, 16, 1, 16, 1, 16, 1};
    };

    template <unsigned bits>
    static void widen_block(const low_bits<bits>& lows, const std::uint8_t* high, const std::uint8_t* low,
                            std::uint8_t* words) {
        const V highs = V::load(high).for_unpacking();
        (V::unpack_low_8(V::zero(), highs) | lows(low)).store(words);
        (V::unpack_high_8(V::zero(), highs) | lows(low + low_bits<bits>::k_half)).store(words + k_bytes);
    }

    template <unsigned bits>
    static void widen_row(const std::uint8_t* high, const std::uint8_t* low, std::size_t samples, std::uint8_t* words) {
        const low_bits<bits> lows;
        for (; samples >= k_bytes; samples -= k_bytes) {
            widen_block<bits>(lows, high, low, words);
            words += 2 * k_bytes;
            high += k_bytes;
            low += k_low_bytes<bits>;
        }
        if (samples != 0) {
            std::uint8_t in[k_bytes + k_low_bytes<bits>] = {};
            std::uint8_t out[2 * k_bytes];
            std::memcpy(in, high, samples);
            std::memcpy(in + k_bytes, low, (samples * bits + 7) / 8);
            widen_block<bits>(lows, in, in + k_bytes, out);
            std::memcpy(words, out, 2 * samples);
        }
    }

    static void widen_10(const std::uint8_t* high, const std::uint8_t* low, std::size_t samples, std::uint8_t* words) {
        widen_row<2>(high, low, samples, words);
    }
    static void widen_12(const std::uint8_t* high, const std::uint8_t* low, std::size_t samples, std::uint8_t* words) {
        widen_row<4>(high, low, samples, words);
    }

    static void convert_block(const std::uint8_t* words, std::uint8_t* floats) {
        const V fixed = V::load(words).for_unpacking();
        V::unpack_low_16(V::zero(), fixed).fixed_to_float().store(floats);
        V::unpack_high_16(V::zero(), fixed).fixed_to_float().store(floats + k_bytes);
    }

    static void fixed_to_float(const std::uint8_t* words, std::size_t samples, std::uint8_t* floats) {
        std::size_t left = 2 * samples;  // bytes of words
        for (; left >= k_bytes; left -= k_bytes) {
            convert_block(words, floats);
            words += k_bytes;
            floats += 2 * k_bytes;
        }
        if (left != 0) {
            std::uint8_t in[k_bytes] = {};
            std::uint8_t out[2 * k_bytes];
            std::memcpy(in, words, left);
            convert_block(in, out);
            std::memcpy(floats, out, 2 * left);
        }
    }

    // What a caller sees of a kernel: afterwards the processor is as it was for the code around.
    template <auto kernel>
    struct entry;
    template <class... Arguments, void (*kernel)(Arguments...)>
    struct entry<kernel> {
        static void call(Arguments... arguments) {
            kernel(arguments...);
            V::leave();
        }
    };

    static void use(row_kernels& kernels) {
        kernels.pack = entry<pack>::call;
        kernels.unpack = entry<unpack>::call;
        kernels.narrow_10 = entry<narrow_10>::call;
        kernels.narrow_12 = entry<narrow_12>::call;
        kernels.widen_10 = entry<widen_10>::call;
        kernels.widen_12 = entry<widen_12>::call;
        kernels.fixed_to_float = entry<fixed_to_float>::call;
    }
};
