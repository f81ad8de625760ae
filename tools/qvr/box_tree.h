// SPDX-License-Identifier: BSD-3-Clause
//
// The tool's own look at the boxes of a frame. It reads only, believes no size, and shows what it finds in a damaged
// frame with a note beside it where the library would give up.
//
//   'pack'                       the frame
//     'QCXF'                     a wrapped QCX frame
//     'sinf' 'sdat'              the only plane: its description, its samples
//     'icmp'                     one for each plane when there are several
//       'sinf' 'sdat'
//   An 'sdat' of plane type "stch" holds the boxes 'stch' and 'tile', wrapped chunks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "codec.h"
#include "findings.h"

namespace qvr {

constexpr std::size_t k_box_header = 8;

std::uint32_t read_le32(const std::uint8_t* from);

// Four bytes as a type in quotes; bytes that cannot be shown as \xNN.
std::string box_type_text(const std::uint8_t* from);

// "'pack'" without its quotes.
std::string unquoted(const std::string& text);

struct plane_description {
    std::size_t number = 0;
    std::string code;  // in quotes
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t layout = 0;
};

// The header of a QCX frame, as far as the container has to do with it.
struct qcx_description {
    std::uint32_t compression = 0;
    std::uint32_t width = 0;  // the header's own fields, which only some compressions fill
    std::uint32_t height = 0;
    std::uint32_t flags = 0;
};

// What a box carries for others.
struct wrapped_description {
    std::size_t number = 0;
    std::uint64_t bytes = 0;             // as declared
    std::optional<qcx_description> qcx;  // of a 'QCXF' whose header is there
};

struct box {
    unsigned depth = 0;
    std::uint64_t offset = 0;                  // from the start of the frame
    std::uint64_t size = 0;                    // as declared
    std::string type;                          // in quotes
    std::optional<plane_description> plane;    // of a 'sinf'
    std::optional<std::size_t> payload_plane;  // of an 'sdat': the plane whose samples it holds
    std::size_t plane_box = 0;                 // and the place of its 'sinf' in the tree
    std::optional<wrapped_description> wrapped;
    std::uint64_t extent = 0;       // bytes that are there, header included
    std::vector<finding> findings;  // what is wrong with it, or only unusual

    std::uint64_t payload_bytes() const { return extent < k_box_header ? 0 : extent - k_box_header; }
    // What is there of the content.
    bytes_view payload(bytes_view frame) const { return {frame.data + offset + k_box_header, payload_bytes()}; }
};

struct box_tree {
    std::vector<box> boxes;  // in file order
    bool complete = true;    // false when there are more boxes than anybody would read
};

// As many as anybody would read; 'verify' looks at more.
constexpr std::size_t k_most_boxes = 2000;

box_tree read_boxes(bytes_view frame, std::size_t most = k_most_boxes);

// The description that an 'sdat' belongs to.
const plane_description& plane_of(const box_tree& tree, const box& data);

}  // namespace qvr
