// SPDX-License-Identifier: BSD-3-Clause
//
// What can be found in a bitstream, each kind a row of one table.
//
//   error      the frame breaks a rule of the format or has lost something
//   warning    the format allows it, and everything can be read, but this encoder writes it otherwise
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace qvr {

enum class severity { warning, error };

enum class finding_kind : std::size_t {
    not_a_frame,
    undecodable,
    box_too_small,
    box_past_end,
    misplaced_box,
    unknown_plane,
    short_plane,
    surplus_bytes,
    padding,
    slice_table,
    slice_end,
    rows_uncovered,
    no_chunks,
    unknown_box,
    old_plane_code,
    plane_box_size,
    box_order,
    slice_partition,
    not_encodable,
    many_boxes,
    different_bytes
};

struct finding_row {
    finding_kind kind;
    const char* name;  // for programs: it never changes
    severity grade;
    const char* text;
};

// In the order of the kinds.
const std::vector<finding_row>& all_findings();
const finding_row& row_of(finding_kind kind);
const char* severity_name(severity grade);

struct finding {
    finding_kind kind;
    std::uint64_t offset;  // from the start of the frame
    std::string detail;
};

}  // namespace qvr
