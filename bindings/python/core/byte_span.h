// SPDX-License-Identifier: BSD-3-Clause
//
// The bytes of a Python object that are lent to the library.
#pragma once

#include <pybind11/pybind11.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>

#include "failure.h"

namespace qvr {

constexpr std::size_t k_most_bytes = std::numeric_limits<std::uint32_t>::max();

enum class access : int { read = PyBUF_FULL_RO, write = PyBUF_FULL };

// Whether a buffer's format, as Python's module struct writes it, has objects. Names of fields stand between colons.
inline bool has_objects(const char* format) {
    bool named = false;
    for (; format != nullptr && *format != '\0'; ++format) {
        named = named != (*format == ':');
        if (*format == 'O' && !named) {
            return true;
        }
    }
    return false;
}

// Holds an object's buffer, so that it neither moves nor goes away. Made and ended with the interpreter lock held.
// Throws TypeError for what is no buffer, and ArgumentError for a buffer that is no run of bytes: one with gaps, or of
// Python objects, which would be read as addresses.
class byte_span {
  public:
    byte_span(const pybind11::handle& object, access wanted) {
        if (PyObject_GetBuffer(object.ptr(), &view, static_cast<int>(wanted)) != 0) {
            refuse_failed(object);
        }
        const bool objects = has_objects(view.format);
        if (objects || PyBuffer_IsContiguous(&view, 'C') == 0) {
            PyBuffer_Release(&view);
            refuse(object, objects ? "it holds Python objects" : "it has gaps");
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
    [[noreturn]] static void refuse(const pybind11::handle& object, const std::string& reason) {
        raise("ArgumentError",
              std::string("this ") + Py_TYPE(object.ptr())->tp_name + " cannot be read as a run of bytes: " + reason);
    }

    // NumPy and others raise plain errors for arrays that they cannot lend, such as dates.
    [[noreturn]] static void refuse_failed(const pybind11::handle& object) {
        if (PyErr_ExceptionMatches(PyExc_ValueError) == 0 && PyErr_ExceptionMatches(PyExc_BufferError) == 0) {
            throw pybind11::error_already_set();
        }
        const pybind11::error_already_set error;
        refuse(object, pybind11::str(error.value()));
    }

    Py_buffer view{};
    static inline std::uint8_t nothing = 0;
};

}  // namespace qvr
