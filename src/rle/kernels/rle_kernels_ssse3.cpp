// SPDX-License-Identifier: BSD-3-Clause
#include <tmmintrin.h>

#include "rle/kernels/run_finder.h"
#include "rle/kernels/slice_unpacker.h"

namespace {

// What 8 and 16 bits have in common.
struct lanes {
    using vector = __m128i;
    static vector load(const std::uint8_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
    static vector both(vector a, vector b) { return _mm_and_si128(a, b); }
    static vector and_not(vector a, vector b) { return _mm_andnot_si128(a, b); }
    static vector exclusive(vector a, vector b) { return _mm_xor_si128(a, b); }
    static vector select(vector mask, vector a, vector b) {
        return _mm_or_si128(_mm_and_si128(mask, a), _mm_andnot_si128(mask, b));
    }
    static bool all_set(vector a) { return _mm_movemask_epi8(a) == 0xffff; }
    static void store(void* p, vector a) { _mm_store_si128(static_cast<__m128i*>(p), a); }

    template <class Symbol>
    static std::uint32_t list(std::uint64_t changes, const Symbol* symbols, std::uint32_t first, run_list& runs) {
        std::uint32_t count = runs.count;
        for (; changes != 0; changes &= changes - 1) {
            const auto i = static_cast<std::uint32_t>(__builtin_ctzll(changes));
            runs.starts[count] = first + i;
            runs.symbols[count] = symbols[i];
            ++count;
        }
        return count;
    }
};

struct lanes_8 : lanes {
    using sample = std::uint8_t;
    using symbol = std::uint16_t;
    static vector set(sample value) { return _mm_set1_epi8(static_cast<char>(value)); }
    static vector sub(vector a, vector b) { return _mm_sub_epi8(a, b); }
    static vector add(vector a, vector b) { return _mm_add_epi8(a, b); }
    static vector equal(vector a, vector b) { return _mm_cmpeq_epi8(a, b); }
    static vector negative(vector a) { return _mm_cmpgt_epi8(_mm_setzero_si128(), a); }
    static vector at_most(vector a, vector b) { return equal(_mm_min_epu8(a, b), a); }
    static vector previous(vector current, vector before) { return _mm_alignr_epi8(current, before, 15); }
    static std::uint64_t mask(vector a, vector b) {
        return static_cast<std::uint32_t>(_mm_movemask_epi8(b) << 16 | _mm_movemask_epi8(a));
    }
    static void store_symbols(vector code, vector second, symbol* out) {
        const vector order = both(second, set(1));
        store(out, _mm_unpacklo_epi8(code, order));
        store(out + 8, _mm_unpackhi_epi8(code, order));
    }
};

struct lanes_16 : lanes {
    using sample = std::uint16_t;
    using symbol = std::uint32_t;
    static vector set(sample value) { return _mm_set1_epi16(static_cast<short>(value)); }
    static vector sub(vector a, vector b) { return _mm_sub_epi16(a, b); }
    static vector add(vector a, vector b) { return _mm_add_epi16(a, b); }
    static vector equal(vector a, vector b) { return _mm_cmpeq_epi16(a, b); }
    static vector negative(vector a) { return _mm_cmpgt_epi16(_mm_setzero_si128(), a); }
    // Saturating: a - b is 0 exactly when a is not larger.
    static vector at_most(vector a, vector b) { return equal(_mm_subs_epu16(a, b), _mm_setzero_si128()); }
    static vector previous(vector current, vector before) { return _mm_alignr_epi8(current, before, 14); }
    static std::uint64_t mask(vector a, vector b) {
        return static_cast<std::uint32_t>(_mm_movemask_epi8(_mm_packs_epi16(a, b)));
    }
    static void store_symbols(vector code, vector second, symbol* out) {
        const vector order = both(second, set(1));
        store(out, _mm_unpacklo_epi16(code, order));
        store(out + 4, _mm_unpackhi_epi16(code, order));
    }
};

}  // namespace

const rle_kernels k_ssse3_rle_kernels = {
    run_finder<lanes_8>::find,      run_finder<lanes_16>::find,      assemble_scalar<std::uint8_t>,
    assemble_scalar<std::uint16_t>, slice_unpacker<lanes_8>::decode, slice_unpacker<lanes_16>::decode,
};
