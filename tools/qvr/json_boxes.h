// SPDX-License-Identifier: BSD-3-Clause
//
// Frames, planes, boxes and findings as JSON. Offsets are those of the file.
#pragma once

#include "box_tree.h"
#include "json_output.h"
#include "qvr_file.h"

namespace qvr {

// {"schema": ..., "file": ..., "frame": ..., "offset": ..., "bytes": ...}
json json_frame(const char* schema, const frame_reader& reader);

// {"plane": ..., "code": "rg08", "content": "R G B, 8 bits", "width": ..., "height": ..., "layout": ...}
json json_plane(const plane_description& plane);

json json_findings(const std::vector<finding>& findings, std::uint64_t frame_offset);

json json_box(const box_tree& tree, const box& shown, std::uint64_t frame_offset);

}  // namespace qvr
