// SPDX-License-Identifier: BSD-3-Clause
//
// Bytes into bits, most significant bit first. Looking past the end shows zeros; taking bits there is remembered, and
// whoever reads tokens asks exhausted() before believing one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

class bit_reader {
  public:
    bit_reader(const std::uint8_t* source, std::size_t size, std::uint64_t first_bit = 0)
        : bytes(source), byte_count(size), position(first_bit) {}

    // The next `count` bits, 1 to 57, without taking them.
    std::uint64_t peek(unsigned count) const { return window() >> (64 - count); }
    void skip(std::uint64_t count) { position += count; }
    std::uint64_t read(unsigned count) {
        const std::uint64_t value = peek(count);
        skip(count);
        return value;
    }

    // An Elias gamma code. No more than 32 leading zeros are counted, so a run of zeros reads as a 33-bit number that
    // may itself be 0.
    std::uint64_t read_gamma() {
        const std::uint64_t ahead = peek(32);
        const unsigned zeros = ahead == 0 ? 32 : static_cast<unsigned>(__builtin_clzll(ahead)) - 32;
        skip(zeros);
        return read(zeros + 1);
    }

    // A run of one-bits, however long, and the zero bit that ends it.
    std::uint64_t read_unary() {
        std::uint64_t ones = 0;
        for (;;) {
            const unsigned run = static_cast<unsigned>(__builtin_clzll(~(peek(32) << 32)));
            ones += run;
            skip(run);
            if (run < 32) {
                skip(1);
                return ones;
            }
        }
    }

    // Whether bits past the end have been taken.
    bool exhausted() const { return position > std::uint64_t{byte_count} * 8; }
    std::uint64_t bits_read() const { return position; }

  private:
    // At least 57 bits from the current position on, at the top of the word.
    std::uint64_t window() const {
        const std::uint64_t at = position / 8;
        std::uint64_t word = 0;
        if (at + sizeof word <= byte_count) {
            std::memcpy(&word, bytes + at, sizeof word);
        } else if (at < byte_count) {
            std::memcpy(&word, bytes + at, byte_count - at);
        }
        return __builtin_bswap64(word) << (position % 8);
    }

    const std::uint8_t* bytes;
    std::size_t byte_count;
    std::uint64_t position;  // in bits
};

// The zigzag code puts small magnitudes of either sign first: 0, -1, 1, -2, 2 ... as 0, 1, 2, 3, 4 ...
constexpr std::uint64_t zigzag_decode(std::uint64_t code) {
    return (code >> 1) ^ (0 - (code & 1));  // two's complement
}
