// SPDX-License-Identifier: BSD-3-Clause
//
// Bits into bytes, most significant bit first.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "api/base/errors.h"

class bit_writer {
  public:
    bit_writer(std::uint8_t* destination, std::size_t capacity)
        : begin(destination), position(destination), end(destination + capacity) {}

    // Appends the low `count` bits of value, 1 to 64; the bits above them must be zero.
    void write(std::uint64_t value, unsigned count) {
        if (count < unused) {
            unused -= count;
            pending |= value << unused;
            return;
        }
        const unsigned left = count - unused;
        store(pending | value >> left, sizeof pending);
        unused = 64 - left;
        pending = left == 0 ? 0 : value << unused;
    }

    // Pads with zero bits to a whole byte and returns the number of bytes written in all.
    std::size_t finish() {
        store(pending, (64 - unused + 7) / 8);
        pending = 0;
        unused = 64;
        return static_cast<std::size_t>(position - begin);
    }

  private:
    void store(std::uint64_t bits, std::size_t bytes) {
        // The worst case that the destination was checked for cannot be passed; if it were, nothing must be harmed.
        if (bytes > static_cast<std::size_t>(end - position)) {
            throw_invalid_argument("dst buffer is too small according to metadata");
        }
        const std::uint64_t first_bit_first = __builtin_bswap64(bits);
        std::memcpy(position, &first_bit_first, bytes);
        position += bytes;
    }

    std::uint8_t* begin;
    std::uint8_t* position;
    std::uint8_t* end;
    std::uint64_t pending = 0;  // filled from the top
    unsigned unused = 64;       // of its bits; never 0
};

// floor(log2(value)) for value > 0: the number of zeros that open the Elias gamma code of value, which takes twice that
// and one more bit in all.
inline unsigned gamma_zeros(std::uint64_t value) {
    return 63u - static_cast<unsigned>(__builtin_clzll(value));
}
