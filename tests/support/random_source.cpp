// SPDX-License-Identifier: BSD-3-Clause
#include "random_source.h"

#include <cstdlib>
#include <string>

namespace test {

uint64_t base_seed() {
    static const uint64_t seed = [] {
        const char* text = std::getenv("QVR_TEST_SEED");
        return text != nullptr ? std::strtoull(text, nullptr, 0) : uint64_t{20260111};
    }();
    return seed;
}

random_source::random_source(uint64_t salt)
    : state_(base_seed() * 0x9e3779b97f4a7c15u + salt),
      trace_(__FILE__, __LINE__, "QVR_TEST_SEED=" + std::to_string(base_seed())) {}

uint64_t random_source::next() {
    state_ += 0x9e3779b97f4a7c15u;
    uint64_t z = state_;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9u;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebu;
    return z ^ (z >> 31);
}

uint32_t random_source::below(uint32_t limit) {
    return static_cast<uint32_t>((next() >> 32) % limit);
}

bytes random_source::content(size_t size) {
    bytes result(size);
    for (uint8_t& value : result) {
        value = static_cast<uint8_t>(next() >> 56);
    }
    return result;
}

bytes random_source::runs(size_t size) {
    bytes result;
    result.reserve(size);
    while (result.size() < size) {
        const uint32_t length = 1 + below(20);
        const uint32_t step = below(3) == 0 ? below(256) : 0;
        uint32_t value = below(256);
        for (uint32_t i = 0; i < length && result.size() < size; ++i, value += step) {
            result.push_back(static_cast<uint8_t>(value));
        }
    }
    return result;
}

}  // namespace test
