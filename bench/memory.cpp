// SPDX-License-Identifier: BSD-3-Clause
#include "memory.h"

#include <cstdlib>
#include <cstring>
#include <new>

namespace bench {

void memory_pool::release::operator()(std::uint8_t* bytes) const {
    std::free(bytes);
}

std::uint8_t* memory_pool::at_least(std::size_t bytes) {
    constexpr std::size_t k_page = 4096;
    if (bytes > size_) {
        bytes_.reset();
        size_ = (bytes + k_page - 1) / k_page * k_page;
        bytes_.reset(static_cast<std::uint8_t*>(std::aligned_alloc(k_page, size_)));
        if (!bytes_) {
            throw std::bad_alloc();
        }
        fill_with_noise(bytes_.get(), size_, size_);
    }
    return bytes_.get();
}

memory_pool& raw_memory() {
    static memory_pool pool;
    return pool;
}

memory_pool& stream_memory() {
    static memory_pool pool;
    return pool;
}

void fill_with_noise(std::uint8_t* to, std::size_t bytes, std::uint64_t seed) {
    std::uint64_t state = seed * 0x9E3779B97F4A7C15ull | 1;
    for (std::size_t i = 0; i < bytes; i += sizeof state) {
        state ^= state << 13;
        state ^= state >> 7;
        state ^= state << 17;
        std::memcpy(to + i, &state, bytes - i < sizeof state ? bytes - i : sizeof state);
    }
}

job copy_of_traffic(std::uint8_t* to, const std::uint8_t* from, std::uint64_t traffic) {
    return [=] { std::memcpy(to, from, traffic / 2); };
}

}  // namespace bench
