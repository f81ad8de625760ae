// SPDX-License-Identifier: BSD-3-Clause
#include "pixel/kernels/stream_copy.h"

#include <cpuid.h>
#include <emmintrin.h>

#include <cstring>

namespace {

constexpr std::size_t k_line = 64;

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

void stream_copy(std::uint8_t* to, const std::uint8_t* from, std::size_t size) {
    // Lines that are only partly written go through the cache.
    const std::size_t to_line = (k_line - reinterpret_cast<std::uintptr_t>(to) % k_line) % k_line;
    const std::size_t head = to_line < size ? to_line : size;
    std::memcpy(to, from, head);
    std::size_t done = head;
    for (; size - done >= k_line; done += k_line) {
        for (std::size_t i = 0; i < k_line; i += sizeof(__m128i)) {
            _mm_stream_si128(reinterpret_cast<__m128i*>(to + done + i),
                             _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + done + i)));
        }
    }
    std::memcpy(to + done, from + done, size - done);
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
