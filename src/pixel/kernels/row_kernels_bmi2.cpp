// SPDX-License-Identifier: BSD-3-Clause
//
// Bit extract and deposit gather the fields of two packed words at a time.
#include <immintrin.h>

#include <cstring>

#include "pixel/kernels/row_kernels.h"

namespace {

// In each 32-bit word three samples at bits 0, 10 and 20: their top eight bits and their low two.
constexpr std::uint64_t k_high_fields = 0x3fcff3fc3fcff3fc;
constexpr std::uint64_t k_low_fields = 0x00300c0300300c03;

std::uint64_t load_64(const std::uint8_t* from) {
    std::uint64_t value;
    std::memcpy(&value, from, sizeof value);
    return value;
}

void narrow_10_packed_bmi2(const std::uint8_t* words, std::size_t width, std::uint8_t* high, std::uint8_t* low) {
    const std::size_t groups = width / k_packed_pixels;
    for (std::size_t i = 0; i < groups; ++i) {
        const std::uint64_t front = load_64(words);
        const std::uint64_t back = load_64(words + 8);
        const std::uint64_t high_front = _pext_u64(front, k_high_fields);
        const std::uint64_t high_back = _pext_u64(back, k_high_fields);
        const std::uint64_t lows = _pext_u64(front, k_low_fields) | _pext_u64(back, k_low_fields) << 12;
        std::memcpy(high, &high_front, 6);
        std::memcpy(high + 6, &high_back, 6);
        std::memcpy(low, &lows, 3);
        words += k_packed_group_bytes;
        high += k_packed_group_samples;
        low += k_packed_group_low_bytes;
    }
    scalar::narrow_10_packed(words, width % k_packed_pixels, high, low);
}

void widen_10_packed_bmi2(const std::uint8_t* high, const std::uint8_t* low, std::size_t width, std::uint8_t* words) {
    const std::size_t groups = width / k_packed_pixels;
    for (std::size_t i = 0; i < groups; ++i) {
        // Twelve high bytes as two overlapping words, six in each: the deposit takes no more than its mask has room
        // for.
        const std::uint64_t high_front = load_64(high);
        const std::uint64_t high_back = load_64(high + 4) >> 16;
        const std::uint64_t lows = low[0] | std::uint64_t{low[1]} << 8 | std::uint64_t{low[2]} << 16;
        const std::uint64_t front = _pdep_u64(high_front, k_high_fields) | _pdep_u64(lows, k_low_fields);
        const std::uint64_t back = _pdep_u64(high_back, k_high_fields) | _pdep_u64(lows >> 12, k_low_fields);
        std::memcpy(words, &front, 8);
        std::memcpy(words + 8, &back, 8);
        words += k_packed_group_bytes;
        high += k_packed_group_samples;
        low += k_packed_group_low_bytes;
    }
    scalar::widen_10_packed(high, low, width % k_packed_pixels, words);
}

}  // namespace

void use_bmi2(row_kernels& kernels) {
    kernels.narrow_10_packed = narrow_10_packed_bmi2;
    kernels.widen_10_packed = widen_10_packed_bmi2;
}
