// SPDX-License-Identifier: BSD-3-Clause
#ifndef QVR_TESTS_DIFFERENTIAL_RNG_H
#define QVR_TESTS_DIFFERENTIAL_RNG_H

#include <cstdint>
#include <vector>

#include "model_types.h"

namespace differential {

// A small generator whose sequence is the same everywhere, so that a seed
// printed on one machine reproduces a case on another.
class rng {
  public:
    explicit rng(std::uint64_t seed) : state_(seed) {}

    std::uint64_t next() {
        state_ += 0x9E3779B97F4A7C15u;
        std::uint64_t value = state_;
        value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9u;
        value = (value ^ (value >> 27)) * 0x94D049BB133111EBu;
        return value ^ (value >> 31);
    }

    // 0 to limit - 1; 0 when the limit is 0.
    std::uint32_t below(std::uint64_t limit) { return limit == 0 ? 0 : static_cast<std::uint32_t>(next() % limit); }
    std::uint32_t between(std::uint32_t low, std::uint32_t high) { return low + below(std::uint64_t(high) - low + 1); }
    bool chance(unsigned percent) { return below(100) < percent; }
    std::uint32_t word() { return static_cast<std::uint32_t>(next()); }
    std::uint8_t byte() { return static_cast<std::uint8_t>(next() & 0xFF); }

    model::bytes noise(std::size_t size) {
        model::bytes data(size);
        for (std::uint8_t& value : data) {
            value = byte();
        }
        return data;
    }

    template <class item>
    const item& pick(const std::vector<item>& items) {
        return items[below(items.size())];
    }

  private:
    std::uint64_t state_;
};

}  // namespace differential

#endif
