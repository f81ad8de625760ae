// SPDX-License-Identifier: BSD-3-Clause
#include "pixel/kernels/stream_copy.h"

#include <cpuid.h>
#include <emmintrin.h>

#include <algorithm>
#include <cstring>

namespace {

constexpr std::size_t k_line = 64;

// Stores go to four pages in turn, some lines to each: one stream of lines keeps fewer banks of the memory busy.
constexpr std::size_t k_ways = 4;
constexpr std::size_t k_run = 4 * k_line;
constexpr std::size_t k_page = 4096;

// What is read next, as a place in it for each place that is written.
constexpr unsigned k_ratio_bits = 16;
struct source_ahead {
    const std::uint8_t* begin;  // the end may lie behind all memory that there is, for which a prefetch is none
    std::uint64_t ratio;

    void fetch(std::size_t place, std::size_t size) const {
        const std::uint64_t last = (place + size) * ratio >> k_ratio_bits;
        for (std::uint64_t line = place * ratio >> k_ratio_bits; line < last; line += k_line) {
            _mm_prefetch(reinterpret_cast<const char*>(begin + line), _MM_HINT_T0);
        }
    }
};

void stream_lines(std::uint8_t* to, const std::uint8_t* from, std::size_t size) {
    for (std::size_t i = 0; i < size; i += sizeof(__m128i)) {
        _mm_stream_si128(reinterpret_cast<__m128i*>(to + i),
                         _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + i)));
    }
}

// The largest cache that processor `leaf` describes: Intel's and AMD's leaves have the same layout.
std::uint64_t largest_cache(unsigned leaf) {
    std::uint64_t largest = 0;
    for (unsigned index = 0; index < 8; ++index) {
        unsigned a = 0;
        unsigned b = 0;
        unsigned c = 0;
        unsigned d = 0;
        if (__get_cpuid_count(leaf, index, &a, &b, &c, &d) == 0 || (a & 31) == 0) {
            break;
        }
        const std::uint64_t ways = (b >> 22) + 1;
        const std::uint64_t partitions = (b >> 12 & 1023) + 1;
        const std::uint64_t line = (b & 4095) + 1;
        const std::uint64_t size = ways * partitions * line * (std::uint64_t{c} + 1);
        largest = size > largest ? size : largest;
    }
    return largest;
}

constexpr unsigned k_intel_leaf = 4;
constexpr unsigned k_amd_leaf = 0x8000001d;
constexpr std::uint64_t k_usual_cache = 32 << 20;

// Constant-initialised: calls before the constructor below go by the usual size.
std::uint64_t cache_size = k_usual_cache;

__attribute__((constructor(101))) void detect_cache_size() {
    const std::uint64_t intel = largest_cache(k_intel_leaf);
    const std::uint64_t found = intel != 0 ? intel : largest_cache(k_amd_leaf);
    cache_size = found != 0 ? found : k_usual_cache;
}

}  // namespace

void plain_copy(std::uint8_t* to, const std::uint8_t* from, std::size_t size) {
    std::memcpy(to, from, size);
}

void stream_tile(std::uint8_t* to, const std::uint8_t* tile, std::size_t size, const std::uint8_t* ahead,
                 std::size_t ahead_size) {
    // Lines that are only partly written go through the cache.
    const std::size_t to_line = (k_line - reinterpret_cast<std::uintptr_t>(to) % k_line) % k_line;
    std::size_t done = to_line < size ? to_line : size;
    std::memcpy(to, tile, done);
    const source_ahead fetched = {ahead, size == 0 ? 0 : (std::uint64_t{ahead_size} << k_ratio_bits) / size};
    for (std::size_t left = size - done; left >= k_line; left = size - done) {
        const bool is_short = left < k_ways * k_run;
        const std::size_t ways = is_short ? 1 : k_ways;
        const std::size_t run = is_short ? k_line : k_run;
        const std::size_t part = std::min(left / ways, k_page) / run * run;
        for (std::size_t at = 0; at < part; at += run) {
            for (std::size_t way = 0; way < ways; ++way) {
                const std::size_t place = done + way * part + at;
                fetched.fetch(place, run);
                stream_lines(to + place, tile + place, run);
            }
        }
        done += ways * part;
    }
    std::memcpy(to + done, tile + done, size - done);
}

void stream_copy(std::uint8_t* to, const std::uint8_t* from, std::size_t size) {
    stream_tile(to, from, size, from + k_run, size);
    finish_streaming();
}

void finish_streaming() {
    _mm_sfence();
}

bool is_worth_streaming(std::uint64_t traffic) {
    return traffic > cache_size;
}

void assume_cache_size(std::uint64_t bytes) {
    cache_size = bytes;
}
