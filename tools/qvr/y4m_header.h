// SPDX-License-Identifier: BSD-3-Clause
//
// The first line of a Y4M file.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "frame.h"

namespace qvr {

struct y4m_header {
    frame_layout layout = empty_layout();
    unsigned depth = 8;  // bits of a sample in the file
    std::optional<frame_rate> rate;
    std::vector<std::string> left_out;  // what it says beyond that, in words for a warning
};

// The line begins with the name of the format, which is not looked at. Of another size or sampling than a frame can have
// it is a failure, with `file` in it.
y4m_header parse_y4m_header(const std::string& line, const std::string& file);

// The bits of a sample of a type; 0 for types that no Y4M file has.
unsigned y4m_depth(std::uint32_t type);

// A failure for 4:2:2 of odd width.
void require_pairs(const frame_layout& layout, const location& where);

}  // namespace qvr
