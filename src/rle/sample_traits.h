// SPDX-License-Identifier: BSD-3-Clause
//
// What the slice coder knows of a sample width. A token is
//
//   M      1 bit             0: the sample before is the prediction; 1: the straight line through the two before
//   L      Elias gamma       samples in the run, all with the same residual
//   T      1 bit             1: Z is Rice coded with k low bits; 0: Z is raw, bit_depth bits
//   Z                        zigzag code of the residual
#pragma once

#include <cstdint>

template <class Sample>
struct sample_traits;

template <>
struct sample_traits<std::uint8_t> {
    static constexpr unsigned k_depth = 8;
    static constexpr unsigned k_low_bits = 2;     // k
    static constexpr unsigned k_rice_limit = 20;  // from this Z on the raw form is no longer than the Rice form
    static constexpr std::uint8_t k_start = 127;  // what both samples before a slice are taken to be
};

template <>
struct sample_traits<std::uint16_t> {
    static constexpr unsigned k_depth = 16;
    static constexpr unsigned k_low_bits = 6;
    static constexpr unsigned k_rice_limit = 576;
    static constexpr std::uint16_t k_start = 32767;
};

// The rows of one slice in the raw plane.
template <class Byte>
struct slice_rows {
    Byte* first;           // first sample of the first row, at any alignment
    std::uint32_t width;   // samples
    std::uint32_t count;   // rows
    std::uint64_t stride;  // bytes
};
