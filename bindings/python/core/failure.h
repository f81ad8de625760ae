// SPDX-License-Identifier: BSD-3-Clause
//
// Failures as Python exceptions. The classes are those of qvruncompressed/_errors.py.
#pragma once

#include <pybind11/pybind11.h>

#include <string>

namespace qvr {

// Throws the exception of that class with that message. The interpreter lock must be held.
[[noreturn]] inline void raise(const char* class_name, const std::string& message) {
    const pybind11::object type = pybind11::module_::import("qvruncompressed._errors").attr(class_name);
    PyErr_SetString(type.ptr(), message.c_str());
    throw pybind11::error_already_set();
}

}  // namespace qvr
