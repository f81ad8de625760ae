// SPDX-License-Identifier: BSD-3-Clause
//
// What the strip of a sheet says about a frame.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "box_tree.h"
#include "display.h"
#include "sheet.h"

namespace qvr {

// What one plane of the tree holds: a component alone, or all of the colours of each pixel.
struct plane_in_words {
    std::string text;  // "Cb, 8 bits"
    std::optional<component> alone;
    bool chunks = false;  // nothing that can be shown
};

// Null when the frame has no such plane.
const plane_description* find_plane(const box_tree& tree, std::size_t number);
plane_in_words content_of(const plane_description& plane);

std::vector<std::pair<std::string, std::string>> frame_facts(const frame_layout& layout, const box_tree& tree);

// One row for each plane and payload, and one for the boxes around them.
std::vector<weight> frame_weights(const box_tree& tree, std::uint64_t frame_bytes);

}  // namespace qvr
