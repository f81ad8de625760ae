// SPDX-License-Identifier: BSD-3-Clause
//
// Which frames of an input are wanted: --range and --chunk.
#pragma once

#include <optional>
#include <string>

#include "arguments.h"

namespace qvr {

// Frames first up to and not with end, counted from 0. Without an end: all from first on.
struct frame_range {
    unsigned long long first = 0;
    std::optional<unsigned long long> end;

    // How many they are, where the end or the number of all frames is known.
    std::optional<unsigned long long> count(const std::optional<unsigned long long>& total) const;
};

struct range_options {
    std::string range;
    std::string chunk;

    void add(argument_list& to);
    // total: how many frames the input has, where that can be known. What was typed must fit into it.
    frame_range resolve(const std::optional<unsigned long long>& total, const std::string& input_name) const;
};

}  // namespace qvr
