// SPDX-License-Identifier: BSD-3-Clause
#include <tmmintrin.h>

#include "pixel/kernels/vector_kernels.h"

namespace {

// One lane: nothing crosses, and blocks lie in memory as they are.
struct vector_128 {
    static constexpr unsigned k_lanes = 1;

    __m128i v;

    static vector_128 load(const std::uint8_t* from) {
        return {_mm_loadu_si128(reinterpret_cast<const __m128i*>(from))};
    }
    void store(std::uint8_t* to) const { _mm_storeu_si128(reinterpret_cast<__m128i*>(to), v); }
    template <class Address>
    static vector_128 from_lanes(Address address) {
        return load(address(0));
    }
    template <unsigned count>
    static void store_blocks(std::uint8_t* to, const vector_128 (&block)[count]) {
#pragma GCC unroll 4
        for (unsigned i = 0; i < count; ++i) {
            block[i].store(to + std::size_t{16} * i);
        }
    }

    // From memory order to a block a lane.
    template <unsigned count>
    static void to_blocks(vector_128 (&)[count]) {}

    static vector_128 zero() {
        return {_mm_setzero_si128()};
    }
    static vector_128 broadcast(const std::uint8_t* from) {
        return load(from);
    }
    static vector_128 set_16(int value) {
        return {_mm_set1_epi16(static_cast<short>(value))};
    }
    static vector_128 set_32(int value) {
        return {_mm_set1_epi32(value)};
    }
    // A few bytes at the front of every lane.
    template <std::size_t count>
    static vector_128 broadcast_bytes(const std::uint8_t* from) {
        int value = 0;
        std::memcpy(&value, from, count);
        return {_mm_cvtsi32_si128(value)};
    }

    vector_128 operator|(vector_128 other) const {
        return {_mm_or_si128(v, other.v)};
    }
    vector_128 operator&(vector_128 other) const {
        return {_mm_and_si128(v, other.v)};
    }
    vector_128 shuffle(vector_128 mask) const {
        return {_mm_shuffle_epi8(v, mask.v)};
    }
    template <int bits>
    vector_128 shift_right_16() const {
        return {_mm_srli_epi16(v, bits)};
    }
    template <int bits>
    vector_128 shift_left_32() const {
        return {_mm_slli_epi32(v, bits)};
    }
    vector_128 multiply_16(vector_128 other) const {
        return {_mm_mullo_epi16(v, other.v)};
    }
    vector_128 multiply_high_16(vector_128 other) const {
        return {_mm_mulhi_epu16(v, other.v)};
    }
    vector_128 multiply_add_8(vector_128 factors) const {
        return {_mm_maddubs_epi16(v, factors.v)};
    }
    vector_128 multiply_add_16(vector_128 factors) const {
        return {_mm_madd_epi16(v, factors.v)};
    }

    // Words of at most 255 into bytes, those of the first operand first.
    static vector_128 pack_16(vector_128 front, vector_128 back) {
        return {_mm_packus_epi16(front.v, back.v)};
    }
    // Double words of at most 32767 into words.
    static vector_128 pack_32(vector_128 front, vector_128 back) {
        return {_mm_packs_epi32(front.v, back.v)};
    }
    // The first piece of every lane, then the second of every lane ...
    vector_128 interleave_lanes_32() const {
        return *this;
    }
    vector_128 interleave_lanes_64() const {
        return *this;
    }

    // Samples into the upper halves of samples twice as wide.
    static vector_128 spread_8_to_16(const std::uint8_t* from) {
        return {_mm_unpacklo_epi8(_mm_setzero_si128(), load_half(from))};
    }
    static vector_128 spread_16_to_32(const std::uint8_t* from) {
        return {_mm_unpacklo_epi16(_mm_setzero_si128(), load_half(from))};
    }
    // Signed words in the upper halves, 14 fraction bits.
    vector_128 fixed_to_float() const {
        const __m128 scale = _mm_set1_ps(1.0f / 16384.0f);
        return {_mm_castps_si128(_mm_mul_ps(_mm_cvtepi32_ps(_mm_srai_epi32(v, 16)), scale))};
    }

    static void leave() {}

  private:
    static __m128i load_half(const std::uint8_t* from) {
        return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(from));
    }
};

}  // namespace

const row_kernels k_ssse3_kernels = vector_kernels<vector_128>::k_table;
