// SPDX-License-Identifier: BSD-3-Clause
//
// Numbers as people and headers write them: decimal digits and nothing else.
#pragma once

#include <charconv>
#include <optional>
#include <string_view>
#include <system_error>

namespace qvr {

template <class Number>
std::optional<Number> parse_number(std::string_view text) {
    Number value = 0;
    const char* end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, value);
    return read.ec == std::errc() && read.ptr == end ? std::optional<Number>(value) : std::nullopt;
}

// "30000:1001" at its first ':'; where there is none, all of it is the first part.
struct halves {
    std::string_view first;
    std::optional<std::string_view> second;
};

inline halves split_at(std::string_view text, std::string_view any_of) {
    const std::size_t at = text.find_first_of(any_of);
    return at == std::string_view::npos ? halves{text, std::nullopt} : halves{text.substr(0, at), text.substr(at + 1)};
}

// Both numbers of a text in two parts.
template <class Number>
struct number_pair {
    Number first;
    Number second;
};

template <class Number>
std::optional<number_pair<Number>> parse_pair(std::string_view text, std::string_view any_of) {
    const halves parts = split_at(text, any_of);
    const std::optional<Number> first = parse_number<Number>(parts.first);
    const std::optional<Number> second = parts.second ? parse_number<Number>(*parts.second) : std::nullopt;
    return first && second ? std::optional<number_pair<Number>>({*first, *second}) : std::nullopt;
}

}  // namespace qvr
