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

    // Appends the low `count` bits of value, 1 to 56; the bits above them must be zero. Stores eight bytes every time
    // and moves on by those that are full, which is faster than asking whether there are any.
    void write_short(std::uint64_t value, unsigned count) {
        pending = pending << count | value;
        waiting += count;
        const std::uint64_t first_bit_first = __builtin_bswap64(pending << (-waiting & 63));
        const std::size_t full = waiting / 8;
        store(first_bit_first, full);
        waiting %= 8;
    }

    // The same for 1 to 64 bits.
    void write(std::uint64_t value, unsigned count) {
        if (count > 32) {
            write_short(value >> 32, count - 32);
            write_short(value & 0xffffffff, 32);
        } else {
            write_short(value, count);
        }
    }

    // Pads with zero bits to a whole byte and returns the number of bytes written in all.
    std::size_t finish() {
        if (waiting != 0) {
            write_short(0, 8 - waiting);
        }
        return static_cast<std::size_t>(position - begin);
    }

  private:
    // Only the first `full` of the eight bytes count.
    void store(std::uint64_t bytes, std::size_t full) {
        const auto room = static_cast<std::size_t>(end - position);
        if (room >= sizeof bytes) {
            std::memcpy(position, &bytes, sizeof bytes);
        } else if (full <= room) {
            std::memcpy(position, &bytes, full);
        } else {
            // The worst case that the destination was checked for cannot be passed; if it were, nothing must be harmed.
            throw_invalid_argument("dst buffer is too small according to metadata");
        }
        position += full;
    }

    std::uint8_t* begin;
    std::uint8_t* position;
    std::uint8_t* end;
    std::uint64_t pending = 0;  // the last bits are at its low end; older ones, above them, are stored already
    unsigned waiting = 0;       // of its bits are not yet part of a full byte; less than 8
};
