// SPDX-License-Identifier: BSD-3-Clause
//
// Writes boxes front to back into a buffer whose room the frame's plan has already been checked against.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "api/base/errors.h"

namespace container {

class box_writer {
  public:
    // Throws invalid_buffer for a null destination.
    box_writer(std::uint8_t* destination, std::size_t capacity) : position(destination), end(destination + capacity) {
        if (destination == nullptr) {
            throw_invalid_buffer("buffer is null");
        }
    }

    void write_bytes(const void* bytes, std::size_t count) {
        require(count);
        std::memcpy(position, bytes, count);
        position += count;
    }
    // Little-endian, as the machine is.
    void write_32(std::uint32_t value) { write_bytes(&value, sizeof value); }
    void write_header(std::uint32_t size, std::uint32_t type) {
        write_32(size);
        write_32(type);
    }
    // Leaves room for a payload that another stage fills.
    void skip(std::size_t count) {
        require(count);
        position += count;
    }

  private:
    // A plan and its boxes that disagree would be an error of this library; it must not become a write out of bounds.
    void require(std::size_t count) const {
        if (count > static_cast<std::size_t>(end - position)) {
            throw_invalid_argument("buffer is too small");
        }
    }

    std::uint8_t* position;
    std::uint8_t* end;
};

}  // namespace container
