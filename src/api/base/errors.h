// SPDX-License-Identifier: BSD-3-Clause
//
// The exceptions that carry a failure from where it is found to the exported boundary, and the helpers that throw
// them. Messages are joined from fixed pieces and plain decimal numbers.
#pragma once

#include <stdexcept>
#include <string>

#include "api/base/checked.h"

// Common base; never thrown by itself.
class qvr_exception : public std::runtime_error {
  public:
    explicit qvr_exception(const char* message);
    ~qvr_exception() override;
};

// The caller's parameters, buffer sizes and format combinations, and run-length payloads.
class invalid_argument : public qvr_exception {
  public:
    explicit invalid_argument(const char* message);
    ~invalid_argument() override;
};

// A bitstream whose boxes are malformed or not the ones expected.
class invalid_buffer : public qvr_exception {
  public:
    explicit invalid_buffer(const char* message);
    ~invalid_buffer() override;
};

// A value that the run-length index table cannot hold.
class out_of_range : public qvr_exception {
  public:
    explicit out_of_range(const char* message);
    ~out_of_range() override;
};

namespace message {

inline void append(std::string& text, const char* piece) {
    text += piece;
}
inline void append(std::string& text, wide number) {
    text += decimal(number);
}

template <class... Pieces>
std::string join(Pieces... pieces) {
    std::string text;
    (append(text, pieces), ...);
    return text;
}

}  // namespace message

template <class... Pieces>
[[noreturn]] void throw_invalid_argument(Pieces... pieces) {
    throw invalid_argument(message::join(pieces...).c_str());
}

template <class... Pieces>
[[noreturn]] void throw_invalid_buffer(Pieces... pieces) {
    throw invalid_buffer(message::join(pieces...).c_str());
}
