// SPDX-License-Identifier: BSD-3-Clause
//
// Working memory of a handle: grown to what a call needs, kept for the next one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

class scratch_buffer {
  public:
    // At least `size` bytes with unspecified contents. Pointers from earlier calls end here.
    std::uint8_t* reserve(std::size_t size) {
        if (size > capacity) {
            capacity = 0;
            bytes.reset();
            bytes.reset(new std::uint8_t[size]);  // not value-initialised: it is written before it is read
            capacity = size;
        }
        return bytes.get();
    }

  private:
    std::unique_ptr<std::uint8_t[]> bytes;
    std::size_t capacity = 0;
};
