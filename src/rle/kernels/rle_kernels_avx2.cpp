// SPDX-License-Identifier: BSD-3-Clause
#include <immintrin.h>

#include "rle/kernels/run_finder.h"
#include "rle/kernels/slice_unpacker.h"

namespace {

__m256i load_256(const void* p) {
    return _mm256_loadu_si256(static_cast<const __m256i*>(p));
}
void store_256(void* p, __m256i a) {
    _mm256_storeu_si256(static_cast<__m256i*>(p), a);
}

// For every mask of 8 lanes, which of them are set, in order.
struct set_lanes_table {
    std::uint8_t lanes[256][8];
};
constexpr set_lanes_table make_set_lanes() {
    set_lanes_table table{};
    for (unsigned mask = 0; mask < 256; ++mask) {
        unsigned count = 0;
        for (unsigned lane = 0; lane < 8; ++lane) {
            if ((mask >> lane & 1) != 0) {
                table.lanes[mask][count++] = static_cast<std::uint8_t>(lane);
            }
        }
    }
    return table;
}
alignas(64) constexpr set_lanes_table k_set_lanes = make_set_lanes();

__m256i load_symbols(const std::uint16_t* symbols) {
    return _mm256_cvtepu16_epi32(_mm_load_si128(reinterpret_cast<const __m128i*>(symbols)));
}
__m256i load_symbols(const std::uint32_t* symbols) {
    return load_256(symbols);
}

// What 8 and 16 bits have in common.
struct lanes {
    using vector = __m256i;
    static vector load(const std::uint8_t* p) { return load_256(p); }
    static vector both(vector a, vector b) { return _mm256_and_si256(a, b); }
    static vector and_not(vector a, vector b) { return _mm256_andnot_si256(a, b); }
    static vector exclusive(vector a, vector b) { return _mm256_xor_si256(a, b); }
    static vector select(vector mask, vector a, vector b) { return _mm256_blendv_epi8(b, a, mask); }
    static bool all_set(vector a) { return _mm256_movemask_epi8(a) == -1; }

    // Moves the starts among 8 samples to the front and stores them all; the next ones overwrite what is too much.
    template <class Symbol>
    static std::uint32_t list(std::uint64_t changes, const Symbol* symbols, std::uint32_t first, run_list& runs) {
        std::uint32_t count = runs.count;
        for (std::uint32_t i = 0; i < k_sample_block; i += 8) {
            const auto mask = static_cast<std::uint8_t>(changes >> i);
            const __m256i chosen =
                _mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(k_set_lanes.lanes[mask])));
            store_256(runs.starts + count, _mm256_add_epi32(chosen, _mm256_set1_epi32(static_cast<int>(first + i))));
            store_256(runs.symbols + count, _mm256_permutevar8x32_epi32(load_symbols(symbols + i), chosen));
            count += static_cast<std::uint32_t>(__builtin_popcount(mask));
        }
        return count;
    }
};

struct lanes_8 : lanes {
    using sample = std::uint8_t;
    using symbol = std::uint16_t;
    static vector set(sample value) { return _mm256_set1_epi8(static_cast<char>(value)); }
    static vector sub(vector a, vector b) { return _mm256_sub_epi8(a, b); }
    static vector add(vector a, vector b) { return _mm256_add_epi8(a, b); }
    static vector equal(vector a, vector b) { return _mm256_cmpeq_epi8(a, b); }
    static vector negative(vector a) { return _mm256_cmpgt_epi8(_mm256_setzero_si256(), a); }
    static vector at_most(vector a, vector b) { return equal(_mm256_min_epu8(a, b), a); }
    static vector previous(vector current, vector before) {
        return _mm256_alignr_epi8(current, _mm256_permute2x128_si256(before, current, 0x21), 15);
    }
    static std::uint64_t mask(vector a, vector b) {
        return static_cast<std::uint64_t>(static_cast<std::uint32_t>(_mm256_movemask_epi8(b))) << 32 |
               static_cast<std::uint32_t>(_mm256_movemask_epi8(a));
    }
    static void store_symbols(vector code, vector second, symbol* out) {
        const vector ordered = _mm256_permute4x64_epi64(code, 0xd8);
        const vector order = both(_mm256_permute4x64_epi64(second, 0xd8), set(1));
        store_256(out, _mm256_unpacklo_epi8(ordered, order));
        store_256(out + 16, _mm256_unpackhi_epi8(ordered, order));
    }
};

struct lanes_16 : lanes {
    using sample = std::uint16_t;
    using symbol = std::uint32_t;
    static vector set(sample value) { return _mm256_set1_epi16(static_cast<short>(value)); }
    static vector sub(vector a, vector b) { return _mm256_sub_epi16(a, b); }
    static vector add(vector a, vector b) { return _mm256_add_epi16(a, b); }
    static vector equal(vector a, vector b) { return _mm256_cmpeq_epi16(a, b); }
    static vector negative(vector a) { return _mm256_srai_epi16(a, 15); }
    static vector at_most(vector a, vector b) { return equal(_mm256_min_epu16(a, b), a); }
    static vector previous(vector current, vector before) {
        return _mm256_alignr_epi8(current, _mm256_permute2x128_si256(before, current, 0x21), 14);
    }
    static std::uint64_t mask(vector a, vector b) {
        const vector bytes = _mm256_permute4x64_epi64(_mm256_packs_epi16(a, b), 0xd8);
        return static_cast<std::uint32_t>(_mm256_movemask_epi8(bytes));
    }
    static void store_symbols(vector code, vector second, symbol* out) {
        const vector ordered = _mm256_permute4x64_epi64(code, 0xd8);
        const vector order = both(_mm256_permute4x64_epi64(second, 0xd8), set(1));
        store_256(out, _mm256_unpacklo_epi16(ordered, order));
        store_256(out + 8, _mm256_unpackhi_epi16(ordered, order));
    }
};

template <class Lanes>
std::uint32_t find_runs_avx2(const std::uint8_t* samples, std::uint32_t count, std::uint32_t symbol, run_list& runs) {
    const std::uint32_t done = run_finder<Lanes>::find(samples, count, symbol, runs);
    _mm256_zeroupper();
    return done;
}

template <class Lanes>
void decode_avx2(slice_cursor* slices, std::uint32_t count) {
    slice_unpacker<Lanes>::decode(slices, count);
    _mm256_zeroupper();
}

// Bits at the low end of each lane, and how many.
struct fields {
    __m256i bits;
    __m256i length;
};

__m256i all_32(std::uint32_t value) {
    return _mm256_set1_epi32(static_cast<int>(value));
}

// T and Z of 8 codes.
template <class Sample>
fields residual_fields(__m256i code) {
    using traits = sample_traits<Sample>;
    constexpr unsigned k = traits::k_low_bits;
    // A Rice code is q = Z >> k one-bits, a zero bit and the low bits, and with the type bit takes q + k + 2 bits. The
    // raw form, type bit included, is as long as the first Rice code that is not used.
    const __m256i quotient = _mm256_srli_epi32(code, k);
    const __m256i length = _mm256_min_epi32(_mm256_add_epi32(quotient, all_32(k + 2)), all_32(1 + traits::k_depth));
    const __m256i power = _mm256_sllv_epi32(all_32(1), length);
    const __m256i low = _mm256_and_si256(code, all_32((1u << k) - 1));
    const __m256i rice = _mm256_add_epi32(_mm256_sub_epi32(power, all_32(2u << k)), low);
    const __m256i is_raw = _mm256_cmpgt_epi32(code, all_32(traits::k_rice_limit - 1));
    return {_mm256_blendv_epi8(rice, code, is_raw), length};
}

// The tokens of 8 runs in lanes of 32 bits; too long ones lose bits but not their length.
template <class Sample>
fields tokens_of(__m256i lengths, __m256i symbols) {
    using traits = sample_traits<Sample>;
    const __m256i order = _mm256_srli_epi32(symbols, traits::k_depth);
    const fields tail = residual_fields<Sample>(_mm256_and_si256(symbols, all_32((1u << traits::k_depth) - 1)));
    // Elias gamma: the exponent of the length as a floating-point number is its binary logarithm.
    const __m256i exponent = _mm256_srli_epi32(_mm256_castps_si256(_mm256_cvtepi32_ps(lengths)), 23);
    const __m256i gamma_length = _mm256_sub_epi32(_mm256_add_epi32(exponent, exponent), all_32(2 * 127 - 1));
    const __m256i head = _mm256_or_si256(_mm256_sllv_epi32(order, gamma_length), lengths);
    return {_mm256_or_si256(_mm256_sllv_epi32(head, tail.length), tail.bits),
            _mm256_add_epi32(_mm256_sub_epi32(gamma_length, all_32(~0u)), tail.length)};
}

// Every two lanes of 32 bits into one of 64.
fields joined(fields tokens) {
    const __m256i first = _mm256_blend_epi32(tokens.bits, _mm256_setzero_si256(), 0xaa);
    const __m256i shifted = _mm256_sllv_epi64(first, _mm256_srli_epi64(tokens.length, 32));
    return {_mm256_or_si256(shifted, _mm256_srli_epi64(tokens.bits, 32)),
            _mm256_sad_epu8(tokens.length, _mm256_setzero_si256())};  // the sum of its bytes
}

// Lanes of 64 bits by twos, into the first and the third.
fields joined_again(fields pairs) {
    const __m256i second_length = _mm256_bsrli_epi128(pairs.length, 8);
    const __m256i shifted = _mm256_sllv_epi64(pairs.bits, second_length);
    return {_mm256_or_si256(shifted, _mm256_bsrli_epi128(pairs.bits, 8)),
            _mm256_add_epi64(pairs.length, second_length)};
}

bool none_above(__m256i values, std::uint32_t limit) {
    return _mm256_movemask_epi8(_mm256_cmpgt_epi32(values, all_32(limit))) == 0;
}

std::uint32_t store_pairs(fields pairs, piece_list& pieces, std::uint32_t out) {
    store_256(pieces.bits + out, pairs.bits);
    store_256(pieces.lengths + out, pairs.length);
    return out + 4;
}

std::uint32_t store_quads(fields quads, piece_list& pieces, std::uint32_t out) {
    const auto put = [&pieces](std::uint32_t at, __m128i bits, __m128i length) {
        _mm_storel_epi64(reinterpret_cast<__m128i*>(pieces.bits + at), bits);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(pieces.lengths + at), length);
    };
    put(out, _mm256_castsi256_si128(quads.bits), _mm256_castsi256_si128(quads.length));
    put(out + 1, _mm256_extracti128_si256(quads.bits, 1), _mm256_extracti128_si256(quads.length, 1));
    return out + 2;
}

// Groups of 8 tokens, from the run `done` to the first group with a token that takes more than half a piece. Four tokens
// share a piece where they fit, else two.
template <class Sample>
std::uint32_t assemble_groups(const run_list& runs, std::uint32_t done, piece_list& pieces) {
    std::uint32_t out = pieces.count;
    for (; done + 8 < runs.count; done += 8) {
        const __m256i starts = load_256(runs.starts + done);
        const __m256i lengths = _mm256_sub_epi32(load_256(runs.starts + done + 1), starts);
        const fields singles = tokens_of<Sample>(lengths, load_256(runs.symbols + done));
        if (!none_above(singles.length, k_longest_piece / 2)) {
            break;
        }
        const fields pairs = joined(singles);
        const fields quads = joined_again(pairs);
        out = none_above(quads.length, k_longest_piece) ? store_quads(quads, pieces, out)
                                                        : store_pairs(pairs, pieces, out);
    }
    pieces.count = out;
    return done;
}

template <class Sample>
void assemble_avx2(const run_list& runs, piece_list& pieces) {
    pieces.count = 0;
    std::uint32_t done = 0;
    for (;;) {
        done = assemble_groups<Sample>(runs, done, pieces);
        _mm256_zeroupper();
        if (done + 8 >= runs.count) {
            break;
        }
        assemble_some<Sample>(runs, done, done + 8, pieces);
        done += 8;
    }
    assemble_some<Sample>(runs, done, runs.count - 1, pieces);
}

}  // namespace

const rle_kernels k_avx2_rle_kernels = {
    find_runs_avx2<lanes_8>,      find_runs_avx2<lanes_16>, assemble_avx2<std::uint8_t>,
    assemble_avx2<std::uint16_t>, decode_avx2<lanes_8>,     decode_avx2<lanes_16>,
};
