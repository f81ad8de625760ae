// SPDX-License-Identifier: BSD-3-Clause
#include "box_tree.h"

#include <cstdio>
#include <cstring>

#include "plane_codes.h"

namespace qvr {

namespace {

constexpr std::size_t k_least_plane_box = 20;  // header, width, height and code; the layout byte may be absent
constexpr std::size_t k_plane_box = 21;        // as it is written
constexpr std::size_t k_qcx_header = 45;
constexpr unsigned k_most_depth = 4;  // 'pack', 'icmp', 'sdat', 'tile' and no deeper

bool is_type(const std::uint8_t* from, const char* type) {
    return std::memcmp(from + 4, type, 4) == 0;
}

// QCX headers are big-endian.
std::uint32_t read_be(const std::uint8_t* from, unsigned count) {
    std::uint32_t value = 0;
    for (unsigned i = 0; i < count; ++i) {
        value = value << 8 | from[i];
    }
    return value;
}

// Which box stands in which. Readers pass over every other one.
struct box_place {
    const char* type;
    const char* parent;
};

constexpr box_place k_box_places[] = {
    {"pack", ""},     {"QCXF", "pack"}, {"sinf", "pack"}, {"sdat", "pack"}, {"icmp", "pack"},
    {"sinf", "icmp"}, {"sdat", "icmp"}, {"stch", "sdat"}, {"tile", "sdat"},
};

enum class content { bytes, boxes, chunks };

// A run of boxes: those of the file, or those in another box.
struct box_run {
    std::uint64_t start;
    std::uint64_t end;
    unsigned depth;
    const char* parent;  // the type of the box around it
    std::size_t owner;   // its place in the tree
    bool chunks;
    std::size_t planes_before;
};

class tree_walker {
  public:
    tree_walker(bytes_view frame, std::size_t most_boxes) : whole(frame), most(most_boxes) {}

    box_tree walk() {
        walk_run({0, whole.size, 0, "", 0, false, 0});
        return std::move(tree);
    }

  private:
    // What reaches past the end is cut there. The offset grows by at least a header each time.
    void walk_run(const box_run& run) {
        std::uint64_t at = run.start;
        while (run.end - at >= k_box_header) {
            if (tree.boxes.size() >= most) {
                tree.complete = false;
                return;
            }
            at += walk_box(run, at);
            if (run.depth == 0) {
                return;  // one 'pack' is one frame
            }
        }
        if (at < run.end && run.depth > 0) {
            add_finding(tree.boxes[run.owner], finding_kind::surplus_bytes,
                        std::to_string(run.end - at) + " bytes behind its last box", at);
        }
    }

    // The bytes that it takes.
    std::uint64_t walk_box(const box_run& run, std::uint64_t at) {
        const std::uint8_t* bytes = whole.data + at;
        box found;
        found.depth = run.depth;
        found.offset = at;
        found.size = read_le32(bytes);
        found.type = box_type_text(bytes + 4);
        settle_extent(found, run.end - at);
        check_place(found, bytes, run.parent);
        if (is_type(bytes, "sinf") && std::strcmp(run.parent, "icmp") == 0 && planes > run.planes_before) {
            add_finding(found, finding_kind::misplaced_box, "the second plane of an 'icmp', passed over");
        }
        // Payloads are the end of the tree: what they hold is not the container's.
        const bool payload = is_type(bytes, "QCXF") ? run.chunks || run.depth == 1
                                                    : run.chunks && (is_type(bytes, "stch") || is_type(bytes, "tile"));
        if (payload) {
            describe_payload(found, bytes);
        }
        const content inside = run.chunks || payload ? content::bytes : describe(found, bytes);
        const std::uint64_t extent = found.extent;
        tree.boxes.push_back(std::move(found));
        if (inside != content::bytes && run.depth < k_most_depth) {
            const bool chunks = inside == content::chunks;
            const char* type = chunks ? "sdat" : is_type(bytes, "icmp") ? "icmp" : "pack";
            walk_run({at + k_box_header, at + extent, run.depth + 1, type, tree.boxes.size() - 1, chunks, planes});
        }
        return extent;
    }

    static void settle_extent(box& found, std::uint64_t room) {
        found.extent = found.size;
        if (found.size < k_box_header) {
            add_finding(found, finding_kind::box_too_small, "smaller than a box header; read as 8 bytes");
            found.extent = k_box_header;
        } else if (found.size > room) {
            add_finding(found, finding_kind::box_past_end, "runs past the end by " + std::to_string(found.size - room));
            found.extent = room;
        }
    }

    static void check_place(box& found, const std::uint8_t* bytes, const char* parent) {
        bool known = false;
        for (const box_place& row : k_box_places) {
            if (is_type(bytes, row.type)) {
                known = true;
                if (std::strcmp(row.parent, parent) == 0) {
                    return;
                }
            }
        }
        add_finding(found, known ? finding_kind::misplaced_box : finding_kind::unknown_box,
                    known ? "does not belong here" : "not known, passed over");
    }

    // Fills in what the type tells, and says whether the box holds boxes.
    content describe(box& found, const std::uint8_t* bytes) {
        if (is_type(bytes, "pack") || is_type(bytes, "icmp")) {
            return content::boxes;
        }
        if (is_type(bytes, "sinf")) {
            describe_plane(found, bytes);
        } else if (is_type(bytes, "sdat")) {
            return describe_data(found);
        }
        return content::bytes;
    }

    void describe_plane(box& found, const std::uint8_t* bytes) {
        if (found.extent < k_least_plane_box) {
            add_finding(found, finding_kind::unknown_plane, "too small to describe a plane");
            return;
        }
        if (found.size != k_plane_box) {
            add_finding(found, finding_kind::plane_box_size, "written with 21 bytes today");
        }
        plane_description plane;
        plane.number = planes++;
        plane.width = read_le32(bytes + 8);
        plane.height = read_le32(bytes + 12);
        plane.code = box_type_text(bytes + 16);
        plane.layout = found.extent > k_least_plane_box ? bytes[k_least_plane_box] : 0;
        const std::string code = unquoted(plane.code);
        code_of_data = find_plane_code(code);
        if (code_of_data.content == plane_content::unknown) {
            add_finding(found, finding_kind::unknown_plane, "a plane of no known type");
        } else if (code_of_data.current != code) {
            add_finding(found, finding_kind::old_plane_code, "written '" + code_of_data.current + "' today");
        }
        data_is_due = true;
        plane_box = tree.boxes.size();
        found.plane = std::move(plane);
    }

    content describe_data(box& found) {
        if (!data_is_due) {
            add_finding(found, finding_kind::misplaced_box, "no 'sinf' before it");
            return content::bytes;
        }
        data_is_due = false;
        found.payload_plane = planes - 1;
        found.plane_box = plane_box;
        return code_of_data.content == plane_content::chunks ? content::chunks : content::bytes;
    }

    void describe_payload(box& found, const std::uint8_t* bytes) {
        wrapped_description wrapped;
        wrapped.number = payloads++;
        wrapped.bytes = found.size < k_box_header ? 0 : found.size - k_box_header;
        if (is_type(bytes, "QCXF") && found.payload_bytes() >= k_qcx_header) {
            const std::uint8_t* header = bytes + k_box_header;
            wrapped.qcx = {read_be(header + 40, 4), read_be(header + 26, 2), read_be(header + 24, 2), header[7]};
        }
        found.wrapped = wrapped;
    }

    static void add_finding(box& found, finding_kind kind, const std::string& text, std::uint64_t at) {
        found.findings.push_back({kind, at, text});
    }
    static void add_finding(box& found, finding_kind kind, const std::string& text) {
        add_finding(found, kind, text, found.offset);
    }

    bytes_view whole;
    std::size_t most;
    box_tree tree;
    std::size_t planes = 0;
    std::size_t payloads = 0;
    bool data_is_due = false;  // a plane has been described whose 'sdat' is still to come
    plane_code code_of_data;   // of that plane
    std::size_t plane_box = 0;
};

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

std::string unquoted(const std::string& text) {
    return text.size() < 2 ? text : text.substr(1, text.size() - 2);
}

box_tree read_boxes(bytes_view frame, std::size_t most) {
    return tree_walker(frame, most).walk();
}

const plane_description& plane_of(const box_tree& tree, const box& data) {
    return *tree.boxes[data.plane_box].plane;
}

}  // namespace qvr
