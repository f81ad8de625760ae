// SPDX-License-Identifier: BSD-3-Clause
#include <immintrin.h>

#include "pixel/kernels/vector_kernels.h"

namespace {

struct vector_512 {
    static constexpr unsigned k_lanes = 4;

    __m512i v;

    static vector_512 load(const std::uint8_t* from) { return {_mm512_loadu_si512(from)}; }
    void store(std::uint8_t* to) const { _mm512_storeu_si512(to, v); }
    template <class Address>
    static vector_512 from_lanes(Address address) {
        const __m512i low = _mm512_inserti32x4(_mm512_castsi128_si512(load_lane(address(0))), load_lane(address(1)), 1);
        return {_mm512_inserti32x4(_mm512_inserti32x4(low, load_lane(address(2)), 2), load_lane(address(3)), 3)};
    }

    // Lanes hold a block each, `count` vectors of it; in memory the blocks follow each other.
    template <unsigned count>
    static void store_blocks(std::uint8_t* to, const vector_512 (&block)[count]) {
        vector_512 in_order[count];
        regroup<count>(block, in_order, [](unsigned piece) { return place{piece % count, piece / count}; });
#pragma GCC unroll 4
        for (unsigned i = 0; i < count; ++i) {
            in_order[i].store(to + std::size_t{64} * i);
        }
    }
    template <unsigned count>
    static void to_blocks(vector_512 (&block)[count]) {
        vector_512 in_order[count];
#pragma GCC unroll 4
        for (unsigned i = 0; i < count; ++i) {
            in_order[i] = block[i];
        }
        regroup<count>(in_order, block, [](unsigned piece) {
            const unsigned at = piece % k_lanes * count + piece / k_lanes;
            return place{at / k_lanes, at % k_lanes};
        });
    }

    static vector_512 zero() {
        return {_mm512_setzero_si512()};
    }
    static vector_512 broadcast(const std::uint8_t* from) {
        return {_mm512_broadcast_i32x4(load_lane(from))};
    }
    static vector_512 set_16(int value) {
        return {_mm512_set1_epi16(static_cast<short>(value))};
    }
    static vector_512 set_32(int value) {
        return {_mm512_set1_epi32(value)};
    }
    template <std::size_t count>
    static vector_512 broadcast_bytes(const std::uint8_t* from) {
        if constexpr (count == 16) {
            return broadcast(from);
        } else {
            long long value = 0;
            std::memcpy(&value, from, count);
            return {_mm512_set1_epi64(value)};
        }
    }

    vector_512 operator|(vector_512 other) const {
        return {_mm512_or_si512(v, other.v)};
    }
    vector_512 operator&(vector_512 other) const {
        return {_mm512_and_si512(v, other.v)};
    }
    vector_512 shuffle(vector_512 mask) const {
        return {_mm512_shuffle_epi8(v, mask.v)};
    }
    template <int bits>
    vector_512 shift_right_16() const {
        return {_mm512_srli_epi16(v, bits)};
    }
    template <int bits>
    vector_512 shift_left_32() const {
        return {_mm512_slli_epi32(v, bits)};
    }
    vector_512 multiply_16(vector_512 other) const {
        return {_mm512_mullo_epi16(v, other.v)};
    }
    vector_512 multiply_high_16(vector_512 other) const {
        return {_mm512_mulhi_epu16(v, other.v)};
    }
    vector_512 multiply_add_8(vector_512 factors) const {
        return {_mm512_maddubs_epi16(v, factors.v)};
    }
    vector_512 multiply_add_16(vector_512 factors) const {
        return {_mm512_madd_epi16(v, factors.v)};
    }

    static vector_512 pack_16(vector_512 front, vector_512 back) {
        return {_mm512_packus_epi16(front.v, back.v)};
    }
    static vector_512 pack_32(vector_512 front, vector_512 back) {
        return {_mm512_packs_epi32(front.v, back.v)};
    }
    vector_512 interleave_lanes_32() const {
        const __m512i order = _mm512_setr_epi32(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15);
        return {_mm512_permutexvar_epi32(order, v)};
    }
    vector_512 interleave_lanes_64() const {
        return {_mm512_permutexvar_epi64(_mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7), v)};
    }

    static vector_512 spread_8_to_16(const std::uint8_t* from) {
        return {_mm512_slli_epi16(_mm512_cvtepu8_epi16(load_half(from)), 8)};
    }
    static vector_512 spread_16_to_32(const std::uint8_t* from) {
        return {_mm512_slli_epi32(_mm512_cvtepu16_epi32(load_half(from)), 16)};
    }
    vector_512 fixed_to_float() const {
        const __m512 scale = _mm512_set1_ps(1.0f / 16384.0f);
        return {_mm512_castps_si512(_mm512_mul_ps(_mm512_cvtepi32_ps(_mm512_srai_epi32(v, 16)), scale))};
    }

    static void leave() {
        _mm256_zeroupper();
    }

  private:
    static __m128i load_lane(const std::uint8_t* from) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    }
    static __m256i load_half(const std::uint8_t* from) {
        return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
    }

    // Where a 16-byte piece is.
    struct place {
        unsigned vector;
        unsigned lane;
    };

    // Piece p of the vectors `to`, lane after lane, is the piece of `from` that source(p) names.
    template <unsigned count, class Source>
    static void regroup(const vector_512 (&from)[count], vector_512 (&to)[count], Source source) {
        for (unsigned out = 0; out < count; ++out) {
            // Each permutation takes from two vectors; a third and fourth need a second one.
            alignas(64) long long order[8];
            unsigned from_second_pair = 0;
#pragma GCC unroll 4
            for (std::size_t lane = 0; lane < k_lanes; ++lane) {
                const place at = source(out * k_lanes + static_cast<unsigned>(lane));
                const unsigned first = at.vector % 2 * 8 + at.lane * 2;
                order[2 * lane] = first;
                order[2 * lane + 1] = first + 1;
                from_second_pair |= (at.vector >= 2 ? 3u : 0u) << (2 * lane);
            }
            const __m512i indices = _mm512_load_si512(order);
            to[out].v = _mm512_permutex2var_epi64(from[0].v, indices, from[count > 1 ? 1 : 0].v);
            if constexpr (count > 2) {
                const __m512i second = _mm512_permutex2var_epi64(from[2].v, indices, from[count - 1].v);
                to[out].v = _mm512_mask_blend_epi64(static_cast<__mmask8>(from_second_pair), to[out].v, second);
            }
        }
    }
};

}  // namespace

const row_kernels k_avx512_kernels = vector_kernels<vector_512>::k_table;
