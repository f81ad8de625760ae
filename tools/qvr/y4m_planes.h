// SPDX-License-Identifier: BSD-3-Clause
//
// Frames of Y4M files, which are planes one behind the other, as frames of the library and back. Samples of more than 8
// bits stand in the low bits of a Y4M file's words and in the top bits of the library's.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "frame.h"

namespace qvr {

// What Y4M calls the sampling of an order that it can hold.
struct y4m_kind {
    std::uint32_t order;
    const char* tag;         // behind "C", followed by the depth
    const char* tag_8_bit;   // behind "C" when samples have 8 bits
    const char* depth_mark;  // between tag and depth; null: there are only 8 bits
};

const std::vector<y4m_kind>& all_y4m_kinds();

// One plane of a frame: where its samples lie among the samples of the library's frame.
struct y4m_plane {
    std::size_t width;
    std::size_t height;
    std::size_t first;
    std::size_t step;  // from sample to sample
    std::size_t row;   // from row to row
};

// In the sequence in which a Y4M file has them; for orders of all_y4m_kinds().
std::vector<y4m_plane> y4m_planes(const frame_layout& layout);

// depth: bits of a sample in the file. `planar` and `frame` have the same number of samples. False when a sample has
// more bits than that.
bool from_y4m(const frame_layout& layout, unsigned depth, const std::uint8_t* planar, std::uint8_t* frame);
void to_y4m(const frame_layout& layout, unsigned depth, const std::uint8_t* frame, std::uint8_t* planar);

}  // namespace qvr
