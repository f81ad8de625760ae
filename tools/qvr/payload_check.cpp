// SPDX-License-Identifier: BSD-3-Clause
#include "payload_check.h"

#include <algorithm>

#include "coded_alpha.h"
#include "plane_codes.h"

namespace qvr {

namespace {

// The payload of one plane, and where findings about it go. Offsets count from the start of the payload.
struct plane_payload {
    const plane_description& plane;
    plane_code code;
    bytes_view bytes;
    box& owner;

    void report(finding_kind kind, std::uint64_t at, const std::string& text) const {
        owner.findings.push_back({kind, owner.offset + k_box_header + at, text});
    }
};

void check_row_padding(const plane_payload& of, std::uint64_t row, std::uint64_t rows) {
    const std::uint64_t spare = row * 8 - row_bits(of.code, of.plane.width);
    if (spare == 0) {
        return;
    }
    const auto mask = static_cast<std::uint8_t>(0xFF << (8 - spare));
    std::uint64_t bad = 0;
    std::uint64_t first = 0;
    for (std::uint64_t y = rows; y-- > 0;) {
        if ((of.bytes.data[(y + 1) * row - 1] & mask) != 0) {
            ++bad;
            first = y;
        }
    }
    if (bad > 0) {
        of.report(finding_kind::padding, (first + 1) * row - 1,
                  "bits behind the last sample are not zero, in row " + std::to_string(first) + " first, in " +
                      std::to_string(bad) + " of " + std::to_string(rows) + " rows");
    }
}

void check_rows(const plane_payload& of) {
    const std::uint64_t row = row_bytes(of.code, of.plane.width);
    const std::uint64_t there =
        row == 0 ? of.plane.height : std::min<std::uint64_t>(of.plane.height, of.bytes.size / row);
    const std::uint64_t used = there * row;
    if (there < of.plane.height) {
        of.report(finding_kind::short_plane, used,
                  "bytes for " + std::to_string(there) + " of " + std::to_string(of.plane.height) + " rows");
    } else if (used < of.bytes.size) {
        of.report(finding_kind::surplus_bytes, used,
                  std::to_string(of.bytes.size - used) + " bytes behind the last row");
    }
    if (row > 0) {
        check_row_padding(of, row, there);
    }
}

// The first slices have a row more when the rows cannot be dealt out evenly.
bool is_even_partition(const slice_table& table, std::uint32_t height) {
    const std::uint64_t count = table.slices.size();
    for (std::uint64_t i = 0; i < count; ++i) {
        if (table.slices[i].rows != height / count + (i < height % count ? 1 : 0)) {
            return false;
        }
    }
    return count <= height;
}

void check_slice(const plane_payload& of, const alpha_slice& slice, std::size_t number) {
    const std::string name = "slice " + std::to_string(number);
    if (slice.offset > of.bytes.size) {
        of.report(finding_kind::slice_end, of.bytes.size, name + " begins behind the end of the payload");
        return;
    }
    const bytes_view from = {of.bytes.data + slice.offset, of.bytes.size - static_cast<std::size_t>(slice.offset)};
    const slice_extent extent = measure_slice(from, slice.rows * of.plane.width, of.code.bits);
    if (!extent.problem.empty()) {
        of.report(finding_kind::slice_end, slice.offset, name + ": " + extent.problem);
        return;
    }
    if (extent.bytes > slice.bytes) {
        of.report(finding_kind::slice_end, slice.offset,
                  name + ": its runs take " + std::to_string(extent.bytes) + " bytes, but the table gives it " +
                      std::to_string(slice.bytes));
    } else if (extent.bytes < slice.bytes) {
        of.report(finding_kind::surplus_bytes, slice.offset + extent.bytes,
                  std::to_string(slice.bytes - extent.bytes) + " bytes behind the last run of " + name);
    }
    if (!extent.padding_zero) {
        of.report(finding_kind::padding, slice.offset + extent.bytes - 1,
                  name + ": bits behind its last run are not zero");
    }
}

std::string uncovered_text(const slice_table& table, std::uint32_t height) {
    return "the slices cover " + std::to_string(table.rows) + " of " + std::to_string(height) +
           " rows; the others cannot be known";
}

void check_slices(const plane_payload& of) {
    const slice_table table = read_slice_table(of.bytes);
    if (!table.problem.empty()) {
        of.report(finding_kind::slice_table, 0, table.problem);
        return;
    }
    if (table.rows > of.plane.height) {
        of.report(finding_kind::slice_table, 0,
                  "the slices have " + std::to_string(table.rows) + " rows, the plane only " +
                      std::to_string(of.plane.height));
        return;
    }
    if (table.rows < of.plane.height) {
        of.report(finding_kind::rows_uncovered, 0, uncovered_text(table, of.plane.height));
    } else if (!is_even_partition(table, of.plane.height)) {
        of.report(finding_kind::slice_partition, 0, "the rows are not dealt out evenly to the slices");
    }
    if (!table.padding_zero) {
        of.report(finding_kind::padding, table.bytes - 1, "bits behind the slice table are not zero");
    }
    for (std::size_t i = 0; i < table.slices.size(); ++i) {
        check_slice(of, table.slices[i], i);
    }
    if (table.end < of.bytes.size) {
        of.report(finding_kind::surplus_bytes, table.end,
                  std::to_string(of.bytes.size - table.end) + " bytes behind the last slice");
    } else if (table.end > of.bytes.size) {
        of.report(finding_kind::slice_end, of.bytes.size,
                  "the last slice ends " + std::to_string(table.end - of.bytes.size) + " bytes behind the payload");
    }
}

bool is_misplaced(const box& of) {
    return std::any_of(of.findings.begin(), of.findings.end(),
                       [](const finding& found) { return found.kind == finding_kind::misplaced_box; });
}

}  // namespace

void check_payloads(bytes_view frame, box_tree& tree) {
    for (box& each : tree.boxes) {
        if (!each.payload_plane) {
            continue;
        }
        const plane_description& plane = plane_of(tree, each);
        const plane_payload payload = {plane, find_plane_code(unquoted(plane.code)), each.payload(frame), each};
        if (payload.code.content == plane_content::rows) {
            check_rows(payload);
        } else if (payload.code.content == plane_content::coded_alpha) {
            check_slices(payload);
        }
    }
}

void require_covered_rows(bytes_view frame, const location& where) {
    const box_tree tree = read_boxes(frame);
    for (const box& each : tree.boxes) {
        if (!each.payload_plane || is_misplaced(tree.boxes[each.plane_box])) {
            continue;
        }
        const plane_description& plane = plane_of(tree, each);
        if (find_plane_code(unquoted(plane.code)).content != plane_content::coded_alpha) {
            continue;
        }
        const slice_table table = read_slice_table(each.payload(frame));
        if (table.problem.empty() && table.rows < plane.height) {
            throw failure(exit_code::data, where, "cannot decode: " + uncovered_text(table, plane.height),
                          "the frame is damaged; 'qvr verify' shows all that is wrong with it");
        }
    }
}

}  // namespace qvr
