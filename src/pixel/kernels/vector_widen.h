// SPDX-License-Identifier: BSD-3-Clause
//
// Widening: high bytes move to the top of words, low bits are put below them.
#pragma once

#include <cstddef>
#include <cstring>
#include <numeric>
#include <utility>

#include "pixel/kernels/vector_narrow.h"

template <class V>
struct vector_widen {
    using reorder = vector_reorder<V>;
    static constexpr std::size_t k_bytes = reorder::k_bytes;

    // A vector of words needs this many bytes of high and of low bits.
    static constexpr std::size_t k_words = k_bytes / 2;
    template <unsigned bits>
    static constexpr std::size_t k_low_part = k_words* bits / 8;

    // Each word gets the low byte that holds its bits; a multiplication shifts them to the top, a mask leaves only them.
    template <unsigned bits>
    struct low_bits {
        V spread = V::from_lanes([](unsigned lane) { return k_spread.of[lane]; });
        V shifts = V::broadcast(reinterpret_cast<const std::uint8_t*>(bits == 2 ? k_shifts_2 : k_shifts_4));
        V field = V::set_16(vector_narrow<V>::template k_low_field<bits>);

        V operator()(const std::uint8_t* low) const {
            return V::template broadcast_bytes<k_low_part<bits>>(low).shuffle(spread).multiply_16(shifts) & field;
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
    static void widen(const std::uint8_t* high, const std::uint8_t* low, std::size_t samples, std::uint8_t* words) {
        const low_bits<bits> lows;
        const std::size_t lead = units_to_alignment(words, 2 * 8 / bits, k_bytes) * 8 / bits;
        samples = run_blocks(
            samples, k_words, lead, [&](std::size_t count) __attribute__((always_inline)) {
                (V::spread_8_to_16(high) | lows(low)).store(words);
                words += 2 * count;
                high += count;
                low += count * bits / 8;
            });
        if (samples != 0) {
            std::uint8_t in[2 * k_words] = {};
            std::uint8_t out[k_bytes];
            std::memcpy(in, high, samples);
            std::memcpy(in + k_words, low, (samples * bits + 7) / 8);
            (V::spread_8_to_16(in) | lows(in + k_words)).store(out);
            std::memcpy(words, out, 2 * samples);
        }
    }

    // ---- Widening and reordering at once, for the orders without alpha: no other is stored in fewer bits.

    template <class Shape, unsigned bits>
    static void widen_unpack_block(const low_bits<bits>& lows, const typename reorder::template shuffles<Shape>& by,
                                   const std::uint8_t* high, const std::uint8_t* low, std::uint8_t* caller) {
        V words[Shape::k_ins];
        V out[Shape::k_outs];
#pragma GCC unroll 4
        for (unsigned i = 0; i < Shape::k_ins; ++i) {
            words[i] = V::spread_8_to_16(high + i * k_words) | lows(low + i * k_low_part<bits>);
        }
        V::to_blocks(words);
        reorder::template permute_all<Shape>(words, by, out, std::make_integer_sequence<unsigned, Shape::k_outs>{});
        V::store_blocks(caller, out);
    }

    template <class Shape, unsigned bits>
    static void widen_unpack_row(const reorder_rule& rule, const std::uint8_t* high, const std::uint8_t* low,
                                 std::size_t groups, std::uint8_t* caller) {
        constexpr std::size_t block = Shape::k_ins * k_words;  // samples
        const typename reorder::template shuffles<Shape> by(rule.blocks.unpack);
        const low_bits<bits> lows;
        const unsigned unit = std::lcm(rule.map.samples, 8 / bits);  // whole groups and whole bytes of low bits
        const std::size_t lead = units_to_alignment(caller, 2 * unit, k_bytes) * unit;
        const auto widen_some = [&](std::size_t count) __attribute__((always_inline)) {
            widen_unpack_block<Shape, bits>(lows, by, high, low, caller);
            high += count;
            low += count * bits / 8;
            caller += 2 * count;
        };
        const std::size_t samples = run_blocks(groups * rule.map.samples, block, lead, widen_some);
        if (samples != 0) {
            std::uint8_t in[2 * block] = {};
            std::uint8_t out[2 * block];
            std::memcpy(in, high, samples);
            std::memcpy(in + block, low, (samples * bits + 7) / 8);
            widen_unpack_block<Shape, bits>(lows, by, in, in + block, out);
            std::memcpy(caller, out, 2 * samples);
        }
    }

    template <unsigned bits>
    static void widen_unpack(const reorder_rule& rule, const std::uint8_t* high, const std::uint8_t* low,
                             std::size_t groups, std::uint8_t* caller) {
        using namespace block_shape;
        return rule.map.samples == 2 ? widen_unpack_row<pair, bits>(rule, high, low, groups, caller)
                                     : widen_unpack_row<triple, bits>(rule, high, low, groups, caller);
    }

    static void fixed_to_float(const std::uint8_t* words, std::size_t samples, std::uint8_t* floats) {
        constexpr std::size_t block = k_bytes / 4;
        const std::size_t lead = units_to_alignment(floats, sizeof(float), k_bytes);
        samples = run_blocks(
            samples, block, lead, [&](std::size_t count) __attribute__((always_inline)) {
                V::spread_16_to_32(words).fixed_to_float().store(floats);
                words += 2 * count;
                floats += 4 * count;
            });
        if (samples != 0) {
            std::uint8_t in[2 * block] = {};
            std::uint8_t out[4 * block];
            std::memcpy(in, words, 2 * samples);
            V::spread_16_to_32(in).fixed_to_float().store(out);
            std::memcpy(floats, out, 4 * samples);
        }
    }
};
