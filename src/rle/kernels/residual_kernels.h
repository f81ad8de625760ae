// SPDX-License-Identifier: BSD-3-Clause
//
// Choosing the residual of every sample, a block of 64 at a time.
//
// With x the sample, p1 the one before and p2 the one before that, all modulo 2^bit_depth:
//   Z1 = zigzag(x - p1)             first order, good on flat parts
//   Z2 = zigzag(x - 2 p1 + p2)      second order, good on ramps
// Z1 is taken when it is 0 or smaller than Z2, else Z2.
#pragma once

#include <cstdint>

#include "api/base/cpu_features.h"

constexpr unsigned k_residual_block = 64;

template <class Sample>
struct residual_block {
    std::uint64_t second_order;  // bit i: sample i takes Z2
    std::uint64_t changes;       // bit i: sample i differs from sample i - 1 in order or code; bit 0 is always clear,
                                 // because only the caller knows what came before the block
    alignas(16) Sample codes[k_residual_block];
};

// samples: 64 of them at any alignment, with two more before them.
struct residual_kernels {
    void (*block_8)(const std::uint8_t* samples, residual_block<std::uint8_t>& out);
    void (*block_16)(const std::uint8_t* samples, residual_block<std::uint16_t>& out);

    void operator()(const std::uint8_t* samples, residual_block<std::uint8_t>& out) const { block_8(samples, out); }
    void operator()(const std::uint8_t* samples, residual_block<std::uint16_t>& out) const { block_16(samples, out); }
};

// The best kernels for a processor with these features.
residual_kernels make_residual_kernels(cpu_features features);

// Each instruction set replaces what it does better.
void use_scalar(residual_kernels& kernels);
void use_ssse3(residual_kernels& kernels);
