// SPDX-License-Identifier: BSD-3-Clause
#include <tmmintrin.h>

#include <cstring>

#include "pixel/kernels/row_kernels.h"

namespace {

__m128i load(const std::uint8_t* from) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
}

void store(std::uint8_t* to, __m128i value) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), value);
}

__m128i load_32(const std::uint8_t* from) {
    int value;
    std::memcpy(&value, from, sizeof value);
    return _mm_cvtsi32_si128(value);
}

void store_32(std::uint8_t* to, __m128i value) {
    const int low = _mm_cvtsi128_si32(value);
    std::memcpy(to, &low, sizeof low);
}

__m128i load_64(const std::uint8_t* from) {
    return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(from));
}

void store_64(std::uint8_t* to, __m128i value) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(to), value);
}

// While this many groups are left, a vector of colours can be read or written without passing the row's end. Rows of
// the caller's samples are never shorter than their colours.
std::size_t groups_for_a_vector(const reorder_rule& rule) {
    return (16 + rule.colour_bytes - 1) / rule.colour_bytes;
}

// A map with alpha has four bytes of it in a vector, whatever the sample width.
constexpr std::size_t k_alpha_step = 4;

void pack_ssse3(const reorder_rule& rule, const std::uint8_t* caller, std::size_t groups, std::uint8_t* colour,
                std::uint8_t* alpha) {
    const __m128i pack = load(rule.masks.pack);
    const __m128i pack_alpha = load(rule.masks.pack_alpha);
    const std::size_t step = rule.masks.groups;
    const std::size_t least = groups_for_a_vector(rule);
    const bool splits = alpha != nullptr && rule.map.alpha >= 0;
    for (; groups >= least; groups -= step) {
        const __m128i samples = load(caller);
        store(colour, _mm_shuffle_epi8(samples, pack));  // what it writes past the colours is overwritten later
        if (splits) {
            store_32(alpha, _mm_shuffle_epi8(samples, pack_alpha));
            alpha += k_alpha_step;
        }
        caller += step * rule.group_bytes;
        colour += rule.masks.colour_bytes;
    }
    scalar::pack(rule, caller, groups, colour, alpha);
}

void unpack_ssse3(const reorder_rule& rule, const std::uint8_t* colour, const std::uint8_t* alpha, std::size_t groups,
                  std::uint8_t* caller) {
    const __m128i unpack_colour = load(rule.masks.unpack_colour);
    const __m128i unpack_alpha = load(rule.masks.unpack_alpha);
    const std::size_t step = rule.masks.groups;
    const std::size_t least = groups_for_a_vector(rule);
    for (; groups >= least; groups -= step) {
        __m128i samples = _mm_shuffle_epi8(load(colour), unpack_colour);
        if (rule.map.alpha >= 0) {
            samples = _mm_or_si128(samples, _mm_shuffle_epi8(load_32(alpha), unpack_alpha));
            alpha += k_alpha_step;
        }
        store(caller, samples);
        caller += step * rule.group_bytes;
        colour += rule.masks.colour_bytes;
    }
    scalar::unpack(rule, colour, alpha, groups, caller);
}

constexpr std::size_t k_narrow_step = 16;  // samples

// High bytes of 16 words.
__m128i high_bytes(__m128i front, __m128i back) {
    return _mm_packus_epi16(_mm_srli_epi16(front, 8), _mm_srli_epi16(back, 8));
}

void narrow_10_ssse3(const std::uint8_t* words, std::size_t samples, std::uint8_t* high, std::uint8_t* low) {
    const __m128i two_bits = _mm_set1_epi16(3);
    const __m128i pairs = _mm_set1_epi16(0x0401);      // s0 + 4 s1, bytes into words
    const __m128i quads = _mm_set1_epi32(0x00100001);  // p0 + 16 p1, words into double words
    const __m128i lowest_bytes = _mm_cvtsi32_si128(0x0c080400);
    for (; samples >= k_narrow_step; samples -= k_narrow_step) {
        const __m128i front = load(words);
        const __m128i back = load(words + 16);
        store(high, high_bytes(front, back));
        const __m128i lows = _mm_packus_epi16(_mm_and_si128(_mm_srli_epi16(front, 6), two_bits),
                                              _mm_and_si128(_mm_srli_epi16(back, 6), two_bits));
        const __m128i packed = _mm_madd_epi16(_mm_maddubs_epi16(lows, pairs), quads);
        store_32(low, _mm_shuffle_epi8(packed, lowest_bytes));
        words += 2 * k_narrow_step;
        high += k_narrow_step;
        low += k_narrow_step / 4;
    }
    scalar::narrow_10(words, samples, high, low);
}

void narrow_12_ssse3(const std::uint8_t* words, std::size_t samples, std::uint8_t* high, std::uint8_t* low) {
    const __m128i four_bits = _mm_set1_epi16(15);
    const __m128i pairs = _mm_set1_epi16(0x1001);  // s0 + 16 s1
    for (; samples >= k_narrow_step; samples -= k_narrow_step) {
        const __m128i front = load(words);
        const __m128i back = load(words + 16);
        store(high, high_bytes(front, back));
        const __m128i lows = _mm_packus_epi16(_mm_and_si128(_mm_srli_epi16(front, 4), four_bits),
                                              _mm_and_si128(_mm_srli_epi16(back, 4), four_bits));
        store_64(low, _mm_packus_epi16(_mm_maddubs_epi16(lows, pairs), _mm_setzero_si128()));
        words += 2 * k_narrow_step;
        high += k_narrow_step;
        low += k_narrow_step / 2;
    }
    scalar::narrow_12(words, samples, high, low);
}

// Each word gets the low byte that holds its bits; a multiplication shifts them to the top, the mask leaves only them.
__m128i widen_8_words(__m128i high_words, __m128i low_bytes, __m128i shifts, __m128i mask) {
    return _mm_or_si128(high_words, _mm_and_si128(_mm_mullo_epi16(low_bytes, shifts), mask));
}

void widen_10_ssse3(const std::uint8_t* high, const std::uint8_t* low, std::size_t samples, std::uint8_t* words) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i front_bytes = _mm_setr_epi8(0, -1, 0, -1, 0, -1, 0, -1, 1, -1, 1, -1, 1, -1, 1, -1);
    const __m128i back_bytes = _mm_setr_epi8(2, -1, 2, -1, 2, -1, 2, -1, 3, -1, 3, -1, 3, -1, 3, -1);
    const __m128i shifts = _mm_setr_epi16(64, 16, 4, 1, 64, 16, 4, 1);
    const __m128i mask = _mm_set1_epi16(0xc0);
    for (; samples >= k_narrow_step; samples -= k_narrow_step) {
        const __m128i highs = load(high);
        const __m128i lows = load_32(low);
        store(words, widen_8_words(_mm_unpacklo_epi8(zero, highs), _mm_shuffle_epi8(lows, front_bytes), shifts, mask));
        store(words + 16,
              widen_8_words(_mm_unpackhi_epi8(zero, highs), _mm_shuffle_epi8(lows, back_bytes), shifts, mask));
        words += 2 * k_narrow_step;
        high += k_narrow_step;
        low += k_narrow_step / 4;
    }
    scalar::widen_10(high, low, samples, words);
}

void widen_12_ssse3(const std::uint8_t* high, const std::uint8_t* low, std::size_t samples, std::uint8_t* words) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i front_bytes = _mm_setr_epi8(0, -1, 0, -1, 1, -1, 1, -1, 2, -1, 2, -1, 3, -1, 3, -1);
    const __m128i back_bytes = _mm_setr_epi8(4, -1, 4, -1, 5, -1, 5, -1, 6, -1, 6, -1, 7, -1, 7, -1);
    const __m128i shifts = _mm_setr_epi16(16, 1, 16, 1, 16, 1, 16, 1);
    const __m128i mask = _mm_set1_epi16(0xf0);
    for (; samples >= k_narrow_step; samples -= k_narrow_step) {
        const __m128i highs = load(high);
        const __m128i lows = load_64(low);
        store(words, widen_8_words(_mm_unpacklo_epi8(zero, highs), _mm_shuffle_epi8(lows, front_bytes), shifts, mask));
        store(words + 16,
              widen_8_words(_mm_unpackhi_epi8(zero, highs), _mm_shuffle_epi8(lows, back_bytes), shifts, mask));
        words += 2 * k_narrow_step;
        high += k_narrow_step;
        low += k_narrow_step / 2;
    }
    scalar::widen_12(high, low, samples, words);
}

void fixed_to_float_ssse3(const std::uint8_t* words, std::size_t samples, std::uint8_t* floats) {
    constexpr std::size_t step = 8;
    const __m128 scale = _mm_set1_ps(1.0f / 16384.0f);
    const __m128i zero = _mm_setzero_si128();
    const auto convert = [&](__m128i in_top_halves) {
        return _mm_castps_si128(_mm_mul_ps(_mm_cvtepi32_ps(_mm_srai_epi32(in_top_halves, 16)), scale));
    };
    for (; samples >= step; samples -= step) {
        const __m128i fixed = load(words);
        store(floats, convert(_mm_unpacklo_epi16(zero, fixed)));
        store(floats + 16, convert(_mm_unpackhi_epi16(zero, fixed)));
        words += 2 * step;
        floats += 4 * step;
    }
    scalar::fixed_to_float(words, samples, floats);
}

}  // namespace

void use_ssse3(row_kernels& kernels) {
    kernels.pack = pack_ssse3;
    kernels.unpack = unpack_ssse3;
    kernels.narrow_10 = narrow_10_ssse3;
    kernels.narrow_12 = narrow_12_ssse3;
    kernels.widen_10 = widen_10_ssse3;
    kernels.widen_12 = widen_12_ssse3;
    kernels.fixed_to_float = fixed_to_float_ssse3;
}
