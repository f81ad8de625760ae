// SPDX-License-Identifier: BSD-3-Clause
//
// Packed samples, three in 32 bits. Groups of six pixels, 16 bytes, twelve samples.
#pragma once

#include <cstddef>
#include <cstring>

#include "pixel/kernels/vector_narrow.h"

template <class V>
struct vector_packed {
    static constexpr std::size_t k_bytes = V::k_lanes * 16;

    // Eight samples are a unit; three units make two groups. Each is spread into words with the sample in the top bits:
    // the two bytes that hold it, and a multiplication that shifts it up.
    struct packed_units {
        struct table {
            std::uint8_t bytes[3][16];
            std::uint16_t factors[3][8];
        };
        static constexpr unsigned k_load[3] = {0, 8, 16};  // where 16 bytes that hold a unit start in two groups

        static constexpr table make() {
            table all{};
            for (unsigned unit = 0; unit < 3; ++unit) {
                for (unsigned i = 0; i < 8; ++i) {
                    const unsigned sample = unit * 8 + i;
                    const unsigned byte = sample / 3 * 4 + sample % 3 - k_load[unit];
                    all.bytes[unit][2 * i] = static_cast<std::uint8_t>(byte);
                    all.bytes[unit][2 * i + 1] = static_cast<std::uint8_t>(byte + 1);
                    all.factors[unit][i] = static_cast<std::uint16_t>(64 >> (sample % 3 * 2));
                }
            }
            return all;
        }
        static constexpr table k_table = make();

        // Units `first`, `first` + 2 ... one in each lane; what is done to them depends on first % 3 alone.
        V spread[3];
        V factors[3];

        packed_units() {
            for (unsigned first = 0; first < 3; ++first) {
                spread[first] = V::from_lanes([=](unsigned lane) { return k_table.bytes[(first + 2 * lane) % 3]; });
                factors[first] = V::from_lanes([=](unsigned lane) {
                    return reinterpret_cast<const std::uint8_t*>(k_table.factors[(first + 2 * lane) % 3]);
                });
            }
        }

        V words(const std::uint8_t* packed, unsigned first) const {
            const V bytes = V::from_lanes([=](unsigned lane) {
                const unsigned unit = first + 2 * lane;
                return packed + std::size_t{32} * (unit / 3) + k_load[unit % 3];
            });
            return bytes.shuffle(spread[first % 3]).multiply_16(factors[first % 3]);
        }
    };

    // A block: three vectors of high bytes.
    static constexpr std::size_t k_packed_block_groups = 4 * V::k_lanes;

    static void narrow_packed_block(const packed_units& units, const std::uint8_t* packed, std::uint8_t* high,
                                    std::uint8_t* low_tile) {
#pragma GCC unroll 3
        for (unsigned i = 0; i < 3; ++i) {
            const V front = units.words(packed, i * 2 * V::k_lanes);
            const V back = units.words(packed, i * 2 * V::k_lanes + 1);
            vector_narrow<V>::high_bytes(front, back).store(high + i * k_bytes);
            vector_narrow<V>::template low_bytes<2>(front, back).store(low_tile + i * k_bytes);
        }
    }

    static void narrow_10_packed(const std::uint8_t* packed, std::size_t width, std::uint8_t* high, std::uint8_t* low) {
        constexpr std::size_t block = k_packed_block_groups * k_packed_group_samples;
        const std::size_t whole = width / k_packed_pixels;
        typename vector_narrow<V>::template low_tile<2> lows(low);
        const packed_units units;
        std::size_t surplus = 0;
        std::size_t groups = whole;
        for (; groups >= k_packed_block_groups; groups -= k_packed_block_groups) {
            narrow_packed_block(units, packed, high, lows.take(block));
            packed += k_packed_block_groups * k_packed_group_bytes;
            high += block;
        }
        if (groups != 0) {
            std::uint8_t in[k_packed_block_groups * k_packed_group_bytes] = {};
            std::uint8_t out[block];
            std::memcpy(in, packed, groups * k_packed_group_bytes);
            narrow_packed_block(units, in, out, lows.take(block));
            std::memcpy(high, out, groups * k_packed_group_samples);
            surplus = block - groups * k_packed_group_samples;
            packed += groups * k_packed_group_bytes;
            high += groups * k_packed_group_samples;
        }
        lows.finish(surplus);
        scalar::narrow_10_packed(packed, width % k_packed_pixels, high, low + whole * k_packed_group_low_bytes);
    }

    // Eight groups, one in a lane: 96 high bytes and 24 bytes of low bits.
    struct packed_groups {
        static constexpr unsigned k_count = 8;
        // Where 16 bytes that hold the high bytes of a group, and the low bits of four, start; neither passes the end.
        static constexpr unsigned high_start(unsigned group) { return group == k_count - 1 ? 80 : 12 * group; }
        static constexpr unsigned low_start(unsigned group) { return group < 4 ? 0 : 8; }

        // One after the other for the groups, so that a vector's lanes load theirs at once.
        struct tables {
            std::uint8_t front[k_count][16];  // in each double word the first and second high byte, as words
            std::uint8_t back[k_count][16];   // the third, in the upper word
            std::uint8_t low[k_count][16];    // the two bytes that hold its six low bits, in both words
        };
        static constexpr tables make() {
            tables all{};
            for (unsigned group = 0; group < k_count; ++group) {
                std::uint8_t(&front)[16] = all.front[group];
                std::uint8_t(&back)[16] = all.back[group];
                std::uint8_t(&low)[16] = all.low[group];
                for (unsigned i = 0; i < 16; ++i) {
                    front[i] = back[i] = low[i] = k_shuffle_zero;
                }
                for (std::size_t word = 0; word < 4; ++word) {
                    const std::size_t high_at = 12 * group - high_start(group) + 3 * word;
                    front[4 * word] = static_cast<std::uint8_t>(high_at);
                    front[4 * word + 2] = static_cast<std::uint8_t>(high_at + 1);
                    back[4 * word + 2] = static_cast<std::uint8_t>(high_at + 2);
                    const std::size_t low_at = 3 * group - low_start(group) + (word < 2 ? 0 : 1);
                    for (std::size_t half = 0; half < 4; half += 2) {
                        // Low bits of the first word alone in an upper byte: a shift down by 0 is none that a
                        // multiplication could do.
                        low[4 * word + half] = word == 0 ? k_shuffle_zero : static_cast<std::uint8_t>(low_at);
                        low[4 * word + half + 1] = static_cast<std::uint8_t>(word == 0 ? low_at : low_at + 1);
                    }
                }
            }
            return all;
        }
        static constexpr tables k_tables = make();

        // Multiplied by these, the six low bits of each double word end at bit 16: shifts down by 8, 6, 4 and 10.
        static constexpr std::uint16_t k_to_bottom[8] = {256, 256, 1024, 1024, 4096, 4096, 64, 64};
    };

    static void widen_packed_block(const std::uint8_t* high, const std::uint8_t* low, std::uint8_t* packed) {
        using groups = packed_groups;
        const V to_bottom = V::broadcast(reinterpret_cast<const std::uint8_t*>(groups::k_to_bottom));
#pragma GCC unroll 8
        for (unsigned first = 0; first < groups::k_count; first += V::k_lanes) {
            const V highs = V::from_lanes([=](unsigned lane) { return high + groups::high_start(first + lane); });
            const V front = V::load(groups::k_tables.front[first]);
            const V back = V::load(groups::k_tables.back[first]);
            const V spread = V::load(groups::k_tables.low[first]);
            // Six bits; the first two stay, the next two move up by eight, the last two by sixteen.
            const V lows = V::broadcast(low + groups::low_start(first)).shuffle(spread).multiply_high_16(to_bottom) &
                           V::set_16(0x3f);
            const V placed = lows.multiply_16(V::set_32(0x00010101)) & V::set_32(0x00300c03);
            const V pair = highs.shuffle(front).multiply_add_16(V::set_32(0x10000004));  // 4 h0 + 4096 h1
            const V third = highs.shuffle(back).template shift_left_32<6>();
            (pair | third | placed).store(packed + k_packed_group_bytes * first);
        }
    }

    static void widen_10_packed(const std::uint8_t* high, const std::uint8_t* low, std::size_t width,
                                std::uint8_t* packed) {
        constexpr std::size_t block = packed_groups::k_count;
        const std::size_t lead = units_to_alignment(packed, k_packed_group_bytes, k_bytes);
        const auto widen_some = [&](std::size_t count) __attribute__((always_inline)) {
            widen_packed_block(high, low, packed);
            high += count * k_packed_group_samples;
            low += count * k_packed_group_low_bytes;
            packed += count * k_packed_group_bytes;
        };
        const std::size_t groups = run_blocks(width / k_packed_pixels, block, lead, widen_some);
        if (groups != 0) {
            std::uint8_t in[block * (k_packed_group_samples + k_packed_group_low_bytes)] = {};
            std::uint8_t out[block * k_packed_group_bytes];
            std::uint8_t* const in_low = in + block * k_packed_group_samples;
            std::memcpy(in, high, groups * k_packed_group_samples);
            std::memcpy(in_low, low, groups * k_packed_group_low_bytes);
            widen_packed_block(in, in_low, out);
            std::memcpy(packed, out, groups * k_packed_group_bytes);
        }
        scalar::widen_10_packed(high + groups * k_packed_group_samples, low + groups * k_packed_group_low_bytes,
                                width % k_packed_pixels, packed + groups * k_packed_group_bytes);
    }
};
