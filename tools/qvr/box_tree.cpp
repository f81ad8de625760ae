// SPDX-License-Identifier: BSD-3-Clause
#include "box_tree.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace qvr {

namespace {

constexpr std::size_t k_most_boxes = 2000;
constexpr std::size_t k_least_plane_box = 20;  // header, width, height and code; the layout byte may be absent

bool is_type(const std::uint8_t* from, const char* type) {
    return std::memcmp(from + 4, type, 4) == 0;
}

constexpr std::size_t k_qcx_header = 45;

// QCX headers are big-endian.
std::uint32_t read_be(const std::uint8_t* from, unsigned count) {
    std::uint32_t value = 0;
    for (unsigned i = 0; i < count; ++i) {
        value = value << 8 | from[i];
    }
    return value;
}

constexpr unsigned k_most_depth = 4;  // 'pack', 'icmp', 'sdat', 'tile' and no deeper

enum class content { bytes, boxes, chunks };

class tree_walker {
  public:
    explicit tree_walker(bytes_view frame) : whole(frame) {}

    box_tree walk() {
        walk_run(0, whole.size, 0, false);
        return std::move(tree);
    }

  private:
    // Boxes from start to end; what reaches past the end is cut there. The offset grows by at least a header each time.
    void walk_run(std::uint64_t start, std::uint64_t end, unsigned depth, bool chunks) {
        std::uint64_t at = start;
        while (end - at >= k_box_header) {
            if (tree.boxes.size() >= k_most_boxes) {
                tree.complete = false;
                return;
            }
            const std::uint8_t* bytes = whole.data + at;
            box found;
            found.depth = depth;
            found.offset = at;
            found.size = read_le32(bytes);
            found.type = box_type_text(bytes + 4);
            std::uint64_t extent = found.size;
            if (extent < k_box_header) {
                found.note = "smaller than a box header; read as 8 bytes";
                extent = k_box_header;
            } else if (extent > end - at) {
                found.note = "runs past the end by " + std::to_string(extent - (end - at));
                extent = end - at;
            }
            // Payloads are the end of the tree: what they hold is not the container's.
            const bool payload = is_type(bytes, "QCXF") ? chunks || depth == 1
                                                        : chunks && (is_type(bytes, "stch") || is_type(bytes, "tile"));
            if (payload) {
                describe_payload(found, bytes, extent);
            }
            const content inside = chunks || payload ? content::bytes : describe(found, bytes, extent);
            tree.boxes.push_back(std::move(found));
            if (inside != content::bytes && depth < k_most_depth) {
                walk_run(at + k_box_header, at + extent, depth + 1, inside == content::chunks);
            }
            at += extent;
            if (depth == 0) {
                return;  // one 'pack' is one frame
            }
        }
    }

    // Fills in what the type tells, and says whether the box holds boxes.
    content describe(box& found, const std::uint8_t* bytes, std::uint64_t extent) {
        if (is_type(bytes, "pack") || is_type(bytes, "icmp")) {
            return content::boxes;
        }
        if (is_type(bytes, "sinf")) {
            describe_plane(found, bytes, extent);
        } else if (is_type(bytes, "sdat")) {
            if (planes == 0) {
                add_note(found, "no 'sinf' before it");
                return content::bytes;
            }
            found.payload_plane = planes - 1;
            return last_code == "'stch'" ? content::chunks : content::bytes;
        }
        return content::bytes;
    }

    void describe_plane(box& found, const std::uint8_t* bytes, std::uint64_t extent) {
        if (extent < k_least_plane_box) {
            add_note(found, "too small to describe a plane");
            return;
        }
        plane_description plane;
        plane.number = planes++;
        plane.width = read_le32(bytes + 8);
        plane.height = read_le32(bytes + 12);
        plane.code = box_type_text(bytes + 16);
        plane.layout = extent > k_least_plane_box ? bytes[k_least_plane_box] : 0;
        last_code = plane.code;
        found.plane = std::move(plane);
    }

    void describe_payload(box& found, const std::uint8_t* bytes, std::uint64_t extent) {
        wrapped_description wrapped;
        wrapped.number = payloads++;
        wrapped.bytes = found.size < k_box_header ? 0 : found.size - k_box_header;
        if (is_type(bytes, "QCXF") && extent - k_box_header >= k_qcx_header) {
            const std::uint8_t* header = bytes + k_box_header;
            wrapped.qcx = {read_be(header + 40, 4), read_be(header + 26, 2), read_be(header + 24, 2), header[7]};
        }
        found.wrapped = wrapped;
    }

    static void add_note(box& found, const std::string& text) { found.note += found.note.empty() ? text : "; " + text; }

    bytes_view whole;
    box_tree tree;
    std::size_t planes = 0;
    std::size_t payloads = 0;
    std::string last_code;
};

struct stem {
    const char* letters;
    const char* text;
};

constexpr stem k_integer_stems[] = {{" y", "Y"},
                                    {"cb", "Cb"},
                                    {"cr", "Cr"},
                                    {" a", "alpha"},
                                    {"rl", "coded alpha"},
                                    {"rg", "R G B"},
                                    {"y4", "Y Cb Cr 4:4:4"},
                                    {"y2", "Y Cb Cr 4:2:2"}};
constexpr stem k_integer_depths[] = {
    {"08", "8 bits"}, {"10", "10 bits"}, {"12", "12 bits"}, {"16", "16 bits"}, {"S1", "16-bit fixed point"}};
constexpr stem k_float_stems[] = {
    {"  y", "Y"}, {" cb", "Cb"}, {" cr", "Cr"}, {" rg", "R G B"}, {" y4", "Y Cb Cr 4:4:4"}, {" y2", "Y Cb Cr 4:2:2"}};

template <std::size_t N>
const char* find_stem(const stem (&stems)[N], const std::string& letters) {
    for (const stem& row : stems) {
        if (letters == row.letters) {
            return row.text;
        }
    }
    return nullptr;
}

}  // namespace

std::uint32_t read_le32(const std::uint8_t* from) {
    return static_cast<std::uint32_t>(from[0]) | static_cast<std::uint32_t>(from[1]) << 8 |
           static_cast<std::uint32_t>(from[2]) << 16 | static_cast<std::uint32_t>(from[3]) << 24;
}

std::string box_type_text(const std::uint8_t* from) {
    std::string text = "'";
    for (int i = 0; i < 4; ++i) {
        if (from[i] >= 0x20 && from[i] < 0x7F) {
            text += static_cast<char>(from[i]);
        } else {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\x%02X", static_cast<unsigned>(from[i]));
            text += escaped;
        }
    }
    return text + "'";
}

box_tree read_boxes(bytes_view frame) {
    return tree_walker(frame).walk();
}

std::string plane_code_text(const std::string& quoted) {
    if (quoted.size() != 6) {
        return {};
    }
    const std::string code = quoted.substr(1, 4);
    if (code == "stch") {
        return "stitched chunks";
    }
    const char* content = find_stem(k_integer_stems, code.substr(0, 2));
    const char* depth = find_stem(k_integer_depths, code.substr(2));
    if (content && depth) {
        return std::string(content) + ", " + depth;
    }
    content = find_stem(k_float_stems, code.substr(0, 3));
    if (content && (code[3] == 'f' || code[3] == 'h')) {
        return std::string(content) + (code[3] == 'f' ? ", 32-bit float" : ", 16-bit float");
    }
    return {};
}

}  // namespace qvr
