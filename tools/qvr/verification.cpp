// SPDX-License-Identifier: BSD-3-Clause
#include "verification.h"

#include <algorithm>
#include <functional>
#include <utility>

#include "box_tree.h"
#include "coded_alpha.h"
#include "payload_check.h"
#include "plane_codes.h"

namespace qvr {

namespace {

constexpr std::size_t k_most_findings = 100;          // of a frame
constexpr std::size_t k_most_boxes_checked = 100000;  // likewise

// A box as far as its place goes. Planes are told apart by what they hold, however that is spelt.
using box_shape = std::pair<unsigned, std::string>;

std::vector<box_shape> shape_of(const box_tree& tree) {
    std::vector<box_shape> shape;
    for (const box& each : tree.boxes) {
        const bool passed_over = std::any_of(each.findings.begin(), each.findings.end(), [](const finding& found) {
            return found.kind == finding_kind::unknown_box;
        });
        if (!passed_over) {
            const std::string code = each.plane ? find_plane_code(unquoted(each.plane->code)).current : std::string();
            shape.emplace_back(each.depth, each.type + code);
        }
    }
    return shape;
}

// How the alpha of the frame is stored, as far as its table can be read.
compression choices_of(const box_tree& tree, bytes_view bytes) {
    for (const box& each : tree.boxes) {
        if (each.payload_plane &&
            find_plane_code(unquoted(plane_of(tree, each).code)).content == plane_content::coded_alpha) {
            return make_compression(true, static_cast<unsigned>(read_slice_table(each.payload(bytes)).slices.size()));
        }
    }
    return make_compression(false, 0);
}

// A failure of the work is a finding of the given kind; one of the machine is not.
bool attempt(finding_kind kind, frame_verdict& verdict, const std::function<void()>& work) {
    try {
        work();
        return true;
    } catch (const failure& problem) {
        if (problem.code() == exit_code::io) {
            throw;
        }
        verdict.add({kind, 0, problem.what()});
        return false;
    }
}

// Then nothing bears out the size that the plane claims, and memory for it could be asked for in vain.
bool has_broken_slices(const frame_verdict& verdict) {
    return std::any_of(verdict.findings.begin(), verdict.findings.end(), [](const finding& found) {
        return found.kind == finding_kind::slice_table || found.kind == finding_kind::slice_end ||
               found.kind == finding_kind::rows_uncovered;
    });
}

void compare(bytes_view found, bytes_view made, const box_tree& tree, frame_verdict& verdict) {
    const auto ends = std::mismatch(found.data, found.data + found.size, made.data, made.data + made.size);
    const auto first = static_cast<std::uint64_t>(ends.first - found.data);
    if (first == found.size && first == made.size) {
        return;
    }
    if (tree.complete && shape_of(tree) != shape_of(read_boxes(made, k_most_boxes_checked))) {
        verdict.add({finding_kind::box_order, 0, "the boxes stand in another order or arrangement"});
    }
    std::string text = "the encoder writes other bytes from here on";
    if (made.size != found.size) {
        text += ", and " + std::to_string(made.size) + " in all, not " + std::to_string(found.size);
    }
    verdict.add({finding_kind::different_bytes, first, text});
}

}  // namespace

void frame_verdict::add(finding found) {
    has_errors = has_errors || row_of(found.kind).grade == severity::error;
    if (findings.size() < k_most_findings) {
        findings.push_back(std::move(found));
    } else {
        ++left_out;
    }
}

const char* frame_verdict::name() const {
    return has_errors ? "damaged" : findings.empty() ? "identical" : "different";
}

frame_verdict verifier::verify(const frame_reader& at) {
    frame_verdict verdict;
    const bytes_view bytes = at.bytes();
    box_tree tree = read_boxes(bytes, k_most_boxes_checked);
    check_payloads(bytes, tree);
    for (const box& each : tree.boxes) {
        std::for_each(each.findings.begin(), each.findings.end(), [&](const finding& found) { verdict.add(found); });
    }
    if (!tree.complete) {
        verdict.add({finding_kind::many_boxes, 0,
                     "only " + std::to_string(k_most_boxes_checked) + " boxes were looked at one by one"});
    }
    if (has_broken_slices(verdict)) {
        return verdict;
    }
    const bytes_view made = make_again(at, choices_of(tree, bytes), verdict);
    if (made.data) {
        compare(bytes, made, tree, verdict);
    }
    return verdict;
}

bytes_view verifier::make_again(const frame_reader& at, const compression& how, frame_verdict& verdict) {
    wrapped_contents contents;
    std::vector<wrapped_payload> payloads;
    const bool taken_apart = attempt(finding_kind::undecodable, verdict, [&] {
        contents = in.read_wrapped(at.bytes(), at.place());
        if (!contents.records.empty()) {
            payloads = in.unwrap(at.bytes(), contents, current, at.place());
        } else if (contents.layout.colorComponentOrder != 0) {
            current.layout = contents.layout;
            in.decode(at.bytes(), current, at.place());
        }
    });
    if (!taken_apart) {
        return {};
    }
    if (contents.records.empty() && contents.layout.colorComponentOrder == 0) {
        verdict.add({finding_kind::no_chunks, 0, "there is no chunk in the plane of stitched chunks"});
        return {};
    }
    bytes_view made;
    attempt(finding_kind::not_encodable, verdict, [&] {
        made = payloads.empty() ? out.encode(current, how, at.place()) : out.wrap(payloads, current, how, at.place());
    });
    return made;
}

}  // namespace qvr
