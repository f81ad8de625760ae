// SPDX-License-Identifier: BSD-3-Clause
#include "api/base/errors.h"

// The destructors stand here so that each class has one home for its virtual table.

qvr_exception::qvr_exception(const char* message) : std::runtime_error(message) {}
qvr_exception::~qvr_exception() = default;

invalid_argument::invalid_argument(const char* message) : qvr_exception(message) {}
invalid_argument::~invalid_argument() = default;

invalid_buffer::invalid_buffer(const char* message) : qvr_exception(message) {}
invalid_buffer::~invalid_buffer() = default;

out_of_range::out_of_range(const char* message) : qvr_exception(message) {}
out_of_range::~out_of_range() = default;
