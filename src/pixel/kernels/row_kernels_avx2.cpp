// SPDX-License-Identifier: BSD-3-Clause
#include <immintrin.h>

#include "pixel/kernels/vector_kernels.h"

namespace {

struct vector_256 {
    static constexpr unsigned k_lanes = 2;

    __m256i v;

    static vector_256 load(const std::uint8_t* from) {
        return {_mm256_loadu_si256(reinterpret_cast<const __m256i*>(from))};
    }
    static __m128i load_lane(const std::uint8_t* from) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    }
    void store(std::uint8_t* to) const { _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), v); }
    template <class Address>
    static vector_256 from_lanes(Address address) {
        return {_mm256_inserti128_si256(_mm256_castsi128_si256(load_lane(address(0))), load_lane(address(1)), 1)};
    }

    // Lanes a and b hold a block each, which is to follow the other: a0 b0, a1 b1 ... become a0 a1 .. b0 b1 ..
    static void store_blocks(std::uint8_t* to, const vector_256 (&block)[1]) { block[0].store(to); }
    static void store_blocks(std::uint8_t* to, const vector_256 (&block)[2]) {
        lows(block[0], block[1]).store(to);
        highs(block[0], block[1]).store(to + 32);
    }
    static void store_blocks(std::uint8_t* to, const vector_256 (&block)[3]) {
        lows(block[0], block[1]).store(to);
        vector_256{_mm256_blend_epi32(block[2].v, block[0].v, 0xf0)}.store(to + 32);
        highs(block[1], block[2]).store(to + 64);
    }
    static void store_blocks(std::uint8_t* to, const vector_256 (&block)[4]) {
        lows(block[0], block[1]).store(to);
        lows(block[2], block[3]).store(to + 32);
        highs(block[0], block[1]).store(to + 64);
        highs(block[2], block[3]).store(to + 96);
    }

    static void to_blocks(vector_256 (&)[1]) {}
    static void to_blocks(vector_256 (&v)[3]) {  // a0 a1, a2 b0, b1 b2
        const vector_256 first = {_mm256_blend_epi32(v[0].v, v[1].v, 0xf0)};
        const vector_256 third = {_mm256_blend_epi32(v[1].v, v[2].v, 0xf0)};
        v[1] = {_mm256_permute2x128_si256(v[0].v, v[2].v, 0x21)};
        v[0] = first;
        v[2] = third;
    }

    static vector_256 zero() { return {_mm256_setzero_si256()}; }
    static vector_256 broadcast(const std::uint8_t* from) { return {_mm256_broadcastsi128_si256(load_lane(from))}; }
    static vector_256 set_16(int value) { return {_mm256_set1_epi16(static_cast<short>(value))}; }
    static vector_256 set_32(int value) { return {_mm256_set1_epi32(value)}; }
    template <std::size_t count>
    static vector_256 broadcast_bytes(const std::uint8_t* from) {
        if constexpr (count <= 4) {
            int value = 0;
            std::memcpy(&value, from, count);
            return {_mm256_set1_epi32(value)};
        } else {
            long long value = 0;
            std::memcpy(&value, from, count);
            return {_mm256_set1_epi64x(value)};
        }
    }

    vector_256 operator|(vector_256 other) const { return {_mm256_or_si256(v, other.v)}; }
    vector_256 operator&(vector_256 other) const { return {_mm256_and_si256(v, other.v)}; }
    vector_256 shuffle(vector_256 mask) const { return {_mm256_shuffle_epi8(v, mask.v)}; }
    template <int bits>
    vector_256 shift_right_16() const {
        return {_mm256_srli_epi16(v, bits)};
    }
    template <int bits>
    vector_256 shift_left_32() const {
        return {_mm256_slli_epi32(v, bits)};
    }
    vector_256 multiply_16(vector_256 other) const { return {_mm256_mullo_epi16(v, other.v)}; }
    vector_256 multiply_high_16(vector_256 other) const { return {_mm256_mulhi_epu16(v, other.v)}; }
    vector_256 multiply_add_8(vector_256 factors) const { return {_mm256_maddubs_epi16(v, factors.v)}; }
    vector_256 multiply_add_16(vector_256 factors) const { return {_mm256_madd_epi16(v, factors.v)}; }

    static vector_256 pack_16(vector_256 front, vector_256 back) { return {_mm256_packus_epi16(front.v, back.v)}; }
    static vector_256 pack_32(vector_256 front, vector_256 back) { return {_mm256_packs_epi32(front.v, back.v)}; }
    vector_256 interleave_lanes_32() const {
        return {_mm256_permutevar8x32_epi32(v, _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7))};
    }
    vector_256 interleave_lanes_64() const { return {swap_middle(v)}; }

    static vector_256 spread_8_to_16(const std::uint8_t* from) {
        const __m256i tops = _mm256_setr_epi8(-1, 0, -1, 1, -1, 2, -1, 3, -1, 4, -1, 5, -1, 6, -1, 7,  //
                                              -1, 8, -1, 9, -1, 10, -1, 11, -1, 12, -1, 13, -1, 14, -1, 15);
        return {_mm256_shuffle_epi8(broadcast(from).v, tops)};
    }
    static vector_256 spread_16_to_32(const std::uint8_t* from) {
        const __m256i tops = _mm256_setr_epi8(-1, -1, 0, 1, -1, -1, 2, 3, -1, -1, 4, 5, -1, -1, 6, 7,  //
                                              -1, -1, 8, 9, -1, -1, 10, 11, -1, -1, 12, 13, -1, -1, 14, 15);
        return {_mm256_shuffle_epi8(broadcast(from).v, tops)};
    }
    vector_256 fixed_to_float() const {
        const __m256 scale = _mm256_set1_ps(1.0f / 16384.0f);
        return {_mm256_castps_si256(_mm256_mul_ps(_mm256_cvtepi32_ps(_mm256_srai_epi32(v, 16)), scale))};
    }

    // Upper halves left behind would slow down every SSE instruction that follows.
    static void leave() { _mm256_zeroupper(); }

  private:
    static vector_256 lows(vector_256 a, vector_256 b) { return {_mm256_permute2x128_si256(a.v, b.v, 0x20)}; }
    static vector_256 highs(vector_256 a, vector_256 b) { return {_mm256_permute2x128_si256(a.v, b.v, 0x31)}; }
    static __m256i swap_middle(__m256i a) { return _mm256_permute4x64_epi64(a, _MM_SHUFFLE(3, 1, 2, 0)); }
};

}  // namespace

const row_kernels k_avx2_kernels = vector_kernels<vector_256>::k_table;
