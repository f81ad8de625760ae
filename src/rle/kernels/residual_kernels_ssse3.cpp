// SPDX-License-Identifier: BSD-3-Clause
#include <tmmintrin.h>

#include <cstddef>

#include "rle/kernels/residual_kernels.h"

namespace {

__m128i load(const std::uint8_t* p) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

// The few operations in which 8 and 16 bits differ.
struct lanes_8 {
    using sample = std::uint8_t;
    static __m128i sub(__m128i a, __m128i b) { return _mm_sub_epi8(a, b); }
    static __m128i add(__m128i a, __m128i b) { return _mm_add_epi8(a, b); }
    static __m128i equal(__m128i a, __m128i b) { return _mm_cmpeq_epi8(a, b); }
    static __m128i negative(__m128i a) { return _mm_cmpgt_epi8(_mm_setzero_si128(), a); }
    static __m128i at_most(__m128i a, __m128i b) { return _mm_cmpeq_epi8(_mm_min_epu8(a, b), a); }
    static __m128i previous(__m128i current, __m128i before) { return _mm_alignr_epi8(current, before, 15); }
    static std::uint64_t mask(__m128i a) { return static_cast<std::uint16_t>(_mm_movemask_epi8(a)); }
};

struct lanes_16 {
    using sample = std::uint16_t;
    static __m128i sub(__m128i a, __m128i b) { return _mm_sub_epi16(a, b); }
    static __m128i add(__m128i a, __m128i b) { return _mm_add_epi16(a, b); }
    static __m128i equal(__m128i a, __m128i b) { return _mm_cmpeq_epi16(a, b); }
    static __m128i negative(__m128i a) { return _mm_cmpgt_epi16(_mm_setzero_si128(), a); }
    // Saturating: a - b is 0 exactly when a is not larger.
    static __m128i at_most(__m128i a, __m128i b) { return equal(_mm_subs_epu16(a, b), _mm_setzero_si128()); }
    static __m128i previous(__m128i current, __m128i before) { return _mm_alignr_epi8(current, before, 14); }
    static std::uint64_t mask(__m128i a) {
        return static_cast<std::uint8_t>(_mm_movemask_epi8(_mm_packs_epi16(a, _mm_setzero_si128())));
    }
};

template <class Lanes>
__m128i zigzag(__m128i difference) {
    return _mm_xor_si128(Lanes::add(difference, difference), Lanes::negative(difference));
}

template <class Lanes>
void block_ssse3(const std::uint8_t* samples, residual_block<typename Lanes::sample>& out) {
    constexpr std::ptrdiff_t width = sizeof(typename Lanes::sample);
    constexpr unsigned lanes = 16 / sizeof(typename Lanes::sample);
    std::uint64_t second_order = 0;
    std::uint64_t same_code = 0;
    __m128i before = _mm_setzero_si128();
    for (unsigned i = 0; i < k_residual_block; i += lanes) {
        const std::uint8_t* at = samples + std::ptrdiff_t{i} * width;
        const __m128i p1 = load(at - width);
        const __m128i d1 = Lanes::sub(load(at), p1);
        const __m128i d2 = Lanes::sub(d1, Lanes::sub(p1, load(at - 2 * width)));
        const __m128i z1 = zigzag<Lanes>(d1);
        const __m128i z2 = zigzag<Lanes>(d2);
        const __m128i flat = Lanes::equal(z1, _mm_setzero_si128());
        const __m128i second = _mm_andnot_si128(flat, Lanes::at_most(z2, z1));
        const __m128i code = _mm_or_si128(_mm_and_si128(second, z2), _mm_andnot_si128(second, z1));
        _mm_store_si128(reinterpret_cast<__m128i*>(out.codes + i), code);
        second_order |= Lanes::mask(second) << i;
        same_code |= Lanes::mask(Lanes::equal(code, Lanes::previous(code, before))) << i;
        before = code;
    }
    out.second_order = second_order;
    out.changes = (~same_code | (second_order ^ second_order << 1)) & ~std::uint64_t{1};
}

}  // namespace

void use_ssse3(residual_kernels& kernels) {
    kernels.block_8 = block_ssse3<lanes_8>;
    kernels.block_16 = block_ssse3<lanes_16>;
}
