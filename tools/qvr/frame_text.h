// SPDX-License-Identifier: BSD-3-Clause
//
// What 'info' and 'dump' say of a frame to people.
#pragma once

#include <cstdint>

#include "box_tree.h"
#include "qvr_file.h"

namespace qvr {

// "progressive", "interlaced" or "unknown layout".
const char* layout_name(std::uint32_t layout);

// "QCX frame"
const char* wrap_type_name(std::uint32_t type);

// "frame 3: offset 183, 61 bytes"
void print_frame_line(const frame_reader& at);

void print_tree_head();
// One line for a box. frame_offset: of the frame in the file.
void print_box(const box& shown, std::uint64_t frame_offset);
void print_tree_end(const box_tree& tree);

}  // namespace qvr
