// SPDX-License-Identifier: BSD-3-Clause
//
// Narrowing: words become high bytes, which are stored, and low bytes with the low bits where they were; low
// bytes of several vectors are squeezed into one.
#pragma once

#include <cstddef>
#include <cstring>
#include <utility>

#include "pixel/kernels/vector_reorder.h"

template <class V>
struct vector_narrow {
    using reorder = vector_reorder<V>;
    static constexpr std::size_t k_bytes = reorder::k_bytes;

    template <unsigned bits>
    static constexpr unsigned k_in_a_byte = 8 / bits;  // samples, and vectors that are squeezed into one
    template <unsigned bits>
    static constexpr std::size_t k_squeezed = k_in_a_byte<bits>* k_bytes;  // samples that are squeezed into a vector
    static constexpr std::uint8_t k_swapped_bytes[16] = {1, 0, 3, 2, 5, 4, 7, 6, 9, 8, 11, 10, 13, 12, 15, 14};
    template <unsigned bits>
    static constexpr int k_low_field = bits == 2 ? 0xc0 : 0xf0;

    static V high_bytes(V front, V back) {
        return V::pack_16(front.template shift_right_16<8>(), back.template shift_right_16<8>());
    }
    template <unsigned bits>
    static V low_bytes(V front, V back) {
        const V field = V::set_16(k_low_field<bits>);
        return V::pack_16(front & field, back & field);
    }

    // Neighbours are pushed together before one shift moves a whole byte's samples down. To have them change places it is
    // enough that their factors do.
    template <unsigned bits, bool swaps = false>
    static V squeeze(const V (&lows)[k_in_a_byte<bits>]) {
        V pushed[k_in_a_byte<bits>];
#pragma GCC unroll 4
        for (unsigned i = 0; i < k_in_a_byte<bits>; ++i) {
            if constexpr (bits == 2) {
                // s0 + 4 s1, bytes into words, and p0 + 16 p1, words into double words.
                pushed[i] =
                    lows[i].multiply_add_8(V::set_16(swaps ? 0x0104 : 0x0401)).multiply_add_16(V::set_32(0x00100001));
            } else {
                // s0 + 16 s1
                pushed[i] = lows[i].multiply_add_8(V::set_16(swaps ? 0x0110 : 0x1001)).template shift_right_16<4>();
            }
        }
        if constexpr (bits == 2) {
            const V front = V::pack_32(pushed[0], pushed[1]).template shift_right_16<6>();
            const V back = V::pack_32(pushed[2], pushed[3]).template shift_right_16<6>();
            return V::pack_16(front, back).interleave_lanes_32();
        } else {
            return V::pack_16(pushed[0], pushed[1]).interleave_lanes_64();
        }
    }

    template <unsigned bits, bool swaps>
    static void narrow_block(const std::uint8_t* words, std::uint8_t* high, std::uint8_t* low) {
        const V swapped = V::broadcast(k_swapped_bytes);
        V lows[k_in_a_byte<bits>];
#pragma GCC unroll 4
        for (unsigned i = 0; i < k_in_a_byte<bits>; ++i) {
            const V front = reorder::template block_vector<2>(words + 2 * k_bytes * i, 0);
            const V back = reorder::template block_vector<2>(words + 2 * k_bytes * i, 1);
            const V highs = high_bytes(front, back);
            (swaps ? highs.shuffle(swapped) : highs).store(high + i * k_bytes);
            lows[i] = low_bytes<bits>(front, back);
        }
        squeeze<bits, swaps>(lows).store(low);
    }

    template <unsigned bits, bool swaps>
    static void narrow_row(const std::uint8_t* words, std::size_t samples, std::uint8_t* high, std::uint8_t* low) {
        constexpr std::size_t block = k_squeezed<bits>;
        const std::size_t lead = units_to_alignment(high, k_in_a_byte<bits>, k_bytes) * k_in_a_byte<bits>;
        samples = run_blocks(
            samples, block, lead, [&](std::size_t count) __attribute__((always_inline)) {
                narrow_block<bits, swaps>(words, high, low);
                words += 2 * count;
                high += count;
                low += count / k_in_a_byte<bits>;
            });
        if (samples != 0) {
            std::uint8_t in[2 * block] = {};
            std::uint8_t out[block + k_bytes];
            std::memcpy(in, words, 2 * samples);
            narrow_block<bits, swaps>(in, out, out + block);
            std::memcpy(high, out, samples);
            std::memcpy(low, out + block, (samples * bits + 7) / 8);
        }
    }

    template <unsigned bits>
    static void narrow(const std::uint8_t* words, std::size_t samples, std::uint8_t* high, std::uint8_t* low) {
        narrow_row<bits, false>(words, samples, high, low);
    }

    // Low bytes of samples whose vectors do not come out in pairs and fours, until there are enough to be squeezed.
    template <unsigned bits>
    class low_tile {
      public:
        explicit low_tile(std::uint8_t* low) : out(low) {}

        // Room for the low bytes of `samples` samples more; they are taken as written.
        std::uint8_t* take(std::size_t samples) {
            if (used + samples > k_size) {
                flush();
            }
            std::uint8_t* const room = bytes + used;
            used += samples;
            return room;
        }
        // `surplus` of the samples taken last do not exist; their low bytes are zero.
        void finish(std::size_t surplus) {
            used -= surplus;
            flush();
        }

      private:
        static constexpr std::size_t k_size = 768;  // whole vectors to squeeze for every width

        void flush() {
            std::size_t done = 0;
            for (; used - done >= k_squeezed<bits>; done += k_squeezed<bits>) {
                squeezed(bytes + done).store(out);
                out += k_bytes;
            }
            if (done != used) {
                std::uint8_t rest[k_bytes];
                std::memset(bytes + used, 0, done + k_squeezed<bits> - used);
                squeezed(bytes + done).store(rest);
                std::memcpy(out, rest, ((used - done) * bits + 7) / 8);
            }
            used = 0;
        }
        static V squeezed(const std::uint8_t* from) {
            V lows[k_in_a_byte<bits>];
#pragma GCC unroll 4
            for (unsigned i = 0; i < k_in_a_byte<bits>; ++i) {
                lows[i] = V::load(from + i * k_bytes);
            }
            return squeeze<bits>(lows);
        }

        std::uint8_t bytes[k_size];
        std::size_t used = 0;
        std::uint8_t* out;
    };

    // ---- Reordering and narrowing at once: every lane takes two blocks, whose colours are pairs of vectors.

    template <class Shape, unsigned colours, unsigned bits>
    static void pack_narrow_block(const std::uint8_t* caller, const typename reorder::template shuffles<Shape>& by,
                                  std::uint8_t* high, std::uint8_t* low_tile) {
        V words[2 * colours];
#pragma GCC unroll 2
        for (unsigned half = 0; half < 2; ++half) {
            V in[Shape::k_ins];
            V out[colours];
#pragma GCC unroll 4
            for (unsigned i = 0; i < Shape::k_ins; ++i) {
                in[i] = reorder::template block_vector<2 * Shape::k_ins>(caller, half * Shape::k_ins + i);
            }
            reorder::template permute_all<Shape>(in, by, out, std::make_integer_sequence<unsigned, colours>{});
#pragma GCC unroll 4
            for (unsigned i = 0; i < colours; ++i) {
                words[half * colours + i] = out[i];
            }
        }
        V highs[colours];
        V lows[colours];
#pragma GCC unroll 4
        for (unsigned i = 0; i < colours; ++i) {
            highs[i] = high_bytes(words[2 * i], words[2 * i + 1]);
            lows[i] = low_bytes<bits>(words[2 * i], words[2 * i + 1]);
        }
        V::store_blocks(high, highs);
        V::store_blocks(low_tile, lows);
    }

    template <class Shape, unsigned colours, unsigned bits>
    static void pack_narrow_row(const reorder_rule& rule, const std::uint8_t* caller, std::size_t groups,
                                std::uint8_t* high, std::uint8_t* low) {
        constexpr std::size_t block = colours * k_bytes;  // samples
        const typename reorder::template shuffles<Shape> by(rule.blocks.pack);
        low_tile<bits> lows(low);
        std::size_t samples = groups * rule.map.colours;
        std::size_t surplus = 0;
        for (; samples >= block; samples -= block) {
            pack_narrow_block<Shape, colours, bits>(caller, by, high, lows.take(block));
            caller += 2 * Shape::k_ins * k_bytes;
            high += block;
        }
        if (samples != 0) {
            std::uint8_t in[2 * Shape::k_ins * k_bytes] = {};
            std::uint8_t out[block];
            std::memcpy(in, caller, samples / rule.map.colours * rule.group_bytes);
            pack_narrow_block<Shape, colours, bits>(in, by, out, lows.take(block));
            std::memcpy(high, out, samples);
            surplus = block - samples;
        }
        lows.finish(surplus);
    }

    template <unsigned bits>
    static void pack_narrow(const reorder_rule& rule, const std::uint8_t* caller, std::size_t groups,
                            std::uint8_t* high, std::uint8_t* low) {
        using namespace block_shape;
        switch (rule.map.samples) {
            case 2:
                return narrow_row<bits, true>(caller, 2 * groups, high, low);
            case 3:
                return rule.map.alpha < 0 ? pack_narrow_row<triple, 3, bits>(rule, caller, groups, high, low)
                                          : pack_narrow_row<split_3, 2, bits>(rule, caller, groups, high, low);
            default:
                return pack_narrow_row<split_4, 3, bits>(rule, caller, groups, high, low);
        }
    }
};
