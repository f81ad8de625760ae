// SPDX-License-Identifier: BSD-3-Clause
#include "findings.h"

namespace qvr {

const std::vector<finding_row>& all_findings() {
    constexpr severity error = severity::error;
    constexpr severity warning = severity::warning;
    static const std::vector<finding_row> rows = {
        {finding_kind::not_a_frame, "not-a-frame", error, "no whole frame, so that nothing behind it can be found"},
        {finding_kind::undecodable, "undecodable", error, "the library refuses the frame"},
        {finding_kind::box_too_small, "box-too-small", error, "a box smaller than its own header"},
        {finding_kind::box_past_end, "box-past-end", error, "a box that ends behind what it stands in"},
        {finding_kind::misplaced_box, "misplaced-box", error, "a known box where it does not belong"},
        {finding_kind::unknown_plane, "unknown-plane", error, "a plane of no known type"},
        {finding_kind::short_plane, "short-plane", error, "a plane with fewer bytes than its rows have"},
        {finding_kind::surplus_bytes, "surplus-bytes", error, "bytes that belong to no box, row or slice"},
        {finding_kind::padding, "padding", error, "bits that fill up a byte and are not zero"},
        {finding_kind::slice_table, "slice-table", error, "a slice table of coded alpha that cannot be right"},
        {finding_kind::slice_end, "slice-end", error, "a slice of coded alpha whose runs do not end where it does"},
        {finding_kind::rows_uncovered, "rows-uncovered", error, "rows of coded alpha that no slice covers"},
        {finding_kind::no_chunks, "no-chunks", error, "a plane of stitched chunks without a chunk"},
        {finding_kind::unknown_box, "unknown-box", warning, "a box of a type that readers pass over"},
        {finding_kind::old_plane_code, "old-plane-code", warning, "an older spelling of a plane type"},
        {finding_kind::plane_box_size, "plane-box-size", warning, "a 'sinf' box of another size than 21 bytes"},
        {finding_kind::box_order, "box-order", warning, "the boxes in another order or arrangement"},
        {finding_kind::slice_partition, "slice-partition", warning, "coded alpha cut into other slices"},
        {finding_kind::not_encodable, "not-encodable", warning, "a frame that can be read but is never written"},
        {finding_kind::many_boxes, "many-boxes", warning, "more boxes than are looked at one by one"},
        {finding_kind::different_bytes, "different-bytes", warning, "bytes other than the encoder writes"},
    };
    return rows;
}

const finding_row& row_of(finding_kind kind) {
    return all_findings()[static_cast<std::size_t>(kind)];
}

const char* severity_name(severity grade) {
    return grade == severity::error ? "error" : "warning";
}

}  // namespace qvr
