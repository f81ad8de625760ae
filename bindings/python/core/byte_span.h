// SPDX-License-Identifier: BSD-3-Clause
//
// The bytes of a Python object that are lent to the library.
#pragma once

#include <pybind11/pybind11.h>

#include <cstddef>
#include <cstdint>
#include <limits>

namespace qvr {

constexpr std::size_t k_most_bytes = std::numeric_limits<std::uint32_t>::max();

enum class access : int { read = PyBUF_SIMPLE, write = PyBUF_WRITABLE };

// Holds an object's buffer, so that it neither moves nor goes away. Made and ended with the interpreter lock held.
// Throws what Python raises, TypeError or BufferError, for objects without a contiguous buffer or a writable one.
class byte_span {
  public:
    byte_span(const pybind11::handle& object, access wanted) {
        if (PyObject_GetBuffer(object.ptr(), &view, static_cast<int>(wanted)) != 0) {
            throw pybind11::error_already_set();
        }
    }
    ~byte_span() { PyBuffer_Release(&view); }
    byte_span(const byte_span&) = delete;
    byte_span& operator=(const byte_span&) = delete;

    // Never null: the library refuses null pointers, but takes runs of no bytes.
    std::uint8_t* data() const { return view.buf != nullptr ? static_cast<std::uint8_t*>(view.buf) : &nothing; }
    std::size_t size() const { return static_cast<std::size_t>(view.len); }
    // As many of them as the library can be told of: bytes behind a frame do not matter to it.
    std::uint32_t size_32() const { return static_cast<std::uint32_t>(size() < k_most_bytes ? size() : k_most_bytes); }

  private:
    Py_buffer view{};
    static inline std::uint8_t nothing = 0;
};

}  // namespace qvr
