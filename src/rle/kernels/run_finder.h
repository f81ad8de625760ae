// SPDX-License-Identifier: BSD-3-Clause
//
// Samples into runs with vectors of any size. Vector says what the instruction set has: a type of its own in an unnamed
// namespace, so that no two instruction sets share a function.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "rle/kernels/rle_kernels.h"

template <class Vector>
class run_finder {
    using sample = typename Vector::sample;
    using vector = typename Vector::vector;
    using symbol_type = typename Vector::symbol;

    static constexpr std::uint32_t k_lanes = sizeof(vector) / sizeof(sample);
    static constexpr unsigned k_depth = 8 * sizeof(sample);
    static constexpr std::uint32_t k_stride = 4 * k_lanes < k_sample_block ? k_sample_block : 4 * k_lanes;

    struct block {
        std::uint64_t changes;  // bit i: sample i starts a run
        alignas(sizeof(vector)) symbol_type symbols[k_sample_block];
    };

  public:
    static std::uint32_t find(const std::uint8_t* samples, std::uint32_t count, std::uint32_t symbol, run_list& runs) {
        runs.count = 0;
        std::uint32_t done = 0;
        while (done < count && runs.count <= k_run_capacity - k_sample_block) {
            const std::uint8_t* at = samples + std::size_t{done} * sizeof(sample);
            const std::uint32_t left = count - done;
            block residuals;
            if (left < k_sample_block) {
                find_short(at, left, symbol, residuals);
            } else {
                find_block(at, symbol, residuals);
            }
            if (residuals.changes != 0) {
                symbol = residuals.symbols[63 - __builtin_clzll(residuals.changes)];
                runs.count = Vector::list(residuals.changes, residuals.symbols, done, runs);
            } else if (static_cast<sample>(symbol) == 0 && left > k_sample_block) {
                done += straight(at + k_sample_block * sizeof(sample), left - k_sample_block);
            }
            done += left < k_sample_block ? left : k_sample_block;
        }
        return done;
    }

  private:
    static vector zigzag(vector difference) {
        return Vector::exclusive(Vector::add(difference, difference), Vector::negative(difference));
    }

    // Two vectors at a time, because that is how masks of 16-bit lanes are made.
    static void find_block(const std::uint8_t* samples, std::uint32_t symbol, block& out) {
        std::uint64_t second_order = 0;
        std::uint64_t same_code = 0;
        vector before = Vector::set(static_cast<sample>(symbol));
        for (std::uint32_t i = 0; i < k_sample_block; i += 2 * k_lanes) {
            vector second[2];
            vector same[2];
            for (std::uint32_t j = 0; j < 2; ++j) {
                const std::uint32_t first = i + j * k_lanes;
                const vector code = codes(samples + first * sizeof(sample), second[j]);
                same[j] = Vector::equal(code, Vector::previous(code, before));
                Vector::store_symbols(code, second[j], out.symbols + first);
                before = code;
            }
            second_order |= Vector::mask(second[0], second[1]) << i;
            same_code |= Vector::mask(same[0], same[1]) << i;
        }
        const std::uint64_t order_before = symbol >> k_depth & 1;
        out.changes = ~same_code | (second_order ^ (second_order << 1 | order_before));
        out.changes |= static_cast<std::uint64_t>(symbol == k_no_symbol);
    }

    static vector codes(const std::uint8_t* at, vector& second) {
        const vector p1 = Vector::load(at - sizeof(sample));
        const vector d1 = Vector::sub(Vector::load(at), p1);
        const vector d2 = Vector::sub(d1, Vector::sub(p1, Vector::load(at - 2 * sizeof(sample))));
        const vector z1 = zigzag(d1);
        const vector z2 = zigzag(d2);
        second = Vector::and_not(Vector::equal(d1, Vector::set(0)), Vector::at_most(z2, z1));
        return Vector::select(second, z2, z1);
    }

    // Fewer samples than a block has, copied so that none is read behind them.
    static void find_short(const std::uint8_t* samples, std::uint32_t count, std::uint32_t symbol, block& out) {
        sample padded[2 + k_sample_block] = {};
        std::memcpy(padded, samples - 2 * sizeof(sample), (2 + count) * sizeof(sample));
        find_block(reinterpret_cast<const std::uint8_t*>(padded + 2), symbol, out);
        out.changes &= (std::uint64_t{1} << count) - 1;
    }

    // How many samples, in whole strides, go on as the last two before them have begun: on the same level or slope.
    static std::uint32_t straight(const std::uint8_t* samples, std::uint32_t count) {
        sample last[2];
        std::memcpy(last, samples - sizeof last, sizeof last);
        const auto slope = static_cast<sample>(last[1] - last[0]);
        return slope == 0 ? count_while(samples, count, same_level{Vector::set(last[1])})
                          : count_while(samples, count, same_slope{Vector::set(slope)});
    }
    struct same_level {
        vector level;
        vector operator()(const std::uint8_t* at) const { return Vector::equal(Vector::load(at), level); }
    };
    struct same_slope {
        vector slope;
        vector operator()(const std::uint8_t* at) const {
            return Vector::equal(Vector::sub(Vector::load(at), Vector::load(at - sizeof(sample))), slope);
        }
    };
    template <class Goes_on>
    static std::uint32_t count_while(const std::uint8_t* samples, std::uint32_t count, Goes_on goes_on) {
        std::uint32_t done = 0;
        for (; count - done >= k_stride; done += k_stride) {
            const std::uint8_t* at = samples + std::size_t{done} * sizeof(sample);
            vector all = goes_on(at);
            for (std::uint32_t i = k_lanes; i < k_stride; i += k_lanes) {
                all = Vector::both(all, goes_on(at + i * sizeof(sample)));
            }
            if (!Vector::all_set(all)) {
                break;
            }
        }
        return done;
    }
};
