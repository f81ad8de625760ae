// SPDX-License-Identifier: BSD-3-Clause
#include "sheet_facts.h"

#include <cstdio>

#include "frame_text.h"
#include "plane_codes.h"

namespace qvr {

namespace {

constexpr std::size_t k_most_rows = 12;

struct content_row {
    const char* begins;  // of plane_code::text
    std::optional<component> alone;
    colour bar;
};

const content_row k_contents[] = {{"Y,", component::first, {0.62, 0.68, 0.74}},
                                  {"Cb,", component::second, {0.36, 0.53, 0.85}},
                                  {"Cr,", component::third, {0.83, 0.42, 0.40}},
                                  {"alpha", component::alpha, {0.91, 0.71, 0.34}},
                                  {"coded alpha", component::alpha, {0.91, 0.71, 0.34}},
                                  {"R G B", {}, {0.42, 0.70, 0.54}},
                                  {"Y Cb Cr", {}, {0.38, 0.66, 0.70}}};
constexpr colour k_payload_bar = {0.66, 0.51, 0.80};
constexpr colour k_header_bar = grey(0.5);

const content_row* row_of(const std::string& text) {
    for (const content_row& row : k_contents) {
        if (text.rfind(row.begins, 0) == 0) {
            return &row;
        }
    }
    return nullptr;
}

std::string size_text(std::uint32_t width, std::uint32_t height) {
    return std::to_string(width) + "x" + std::to_string(height);
}

bool is_coded(const std::string& text) {
    return text.rfind("coded alpha", 0) == 0;
}

std::uint64_t payload_bytes(const box& of) {
    return of.size < k_box_header ? 0 : of.size - k_box_header;
}

weight plane_weight(const plane_description& plane, std::uint64_t bytes) {
    const std::string text = find_plane_code(unquoted(plane.code)).text;
    const content_row* row = row_of(text);
    weight made = {"Plane " + std::to_string(plane.number), (text.empty() ? plane.code : text), bytes,
                   row ? row->bar : k_payload_bar};
    const double raw = static_cast<double>(plane.width) * plane.height * (plane.code.find("16") == 3 ? 2 : 1);
    if (is_coded(text) && raw > 0) {
        char share[40];
        std::snprintf(share, sizeof share, ": %.1f %% of raw", 100 * static_cast<double>(bytes) / raw);
        made.text += share;
    } else if (plane.number > 0) {
        made.text += ", " + size_text(plane.width, plane.height);
    }
    return made;
}

weight payload_weight(const box& of) {
    const bool frame = of.wrapped->qcx.has_value();
    std::string text =
        frame ? "compressed frame, ID " + std::to_string(of.wrapped->qcx->compression) : "wrapped, " + of.type;
    return {"Payload " + std::to_string(of.wrapped->number), text, of.wrapped->bytes, k_payload_bar};
}

std::string alpha_fact(const box_tree& tree) {
    for (const box& candidate : tree.boxes) {
        if (candidate.plane && content_of(*candidate.plane).alone == component::alpha) {
            const std::string text = content_of(*candidate.plane).text;
            const std::string depth = text.substr(text.find(',') + 2);
            return depth + (is_coded(text) ? ", coded by run lengths" : ", stored as it is");
        }
    }
    return "none";
}

}  // namespace

const plane_description* find_plane(const box_tree& tree, std::size_t number) {
    for (const box& candidate : tree.boxes) {
        if (candidate.plane && candidate.plane->number == number) {
            return &*candidate.plane;
        }
    }
    return nullptr;
}

plane_in_words content_of(const plane_description& plane) {
    plane_in_words content;
    content.text = find_plane_code(unquoted(plane.code)).text;
    const content_row* row = row_of(content.text);
    content.chunks = row == nullptr;
    content.alone = row ? row->alone : std::nullopt;
    return content;
}

std::vector<std::pair<std::string, std::string>> frame_facts(const frame_layout& layout, const box_tree& tree) {
    std::vector<std::pair<std::string, std::string>> facts = {
        {"Size", size_text(layout.width, layout.height) + " pixels"}};
    facts.emplace_back("Fields", layout.frameLayout == QVRUncompressed_LayoutInterlaced
                                     ? "interlaced, shown woven together"
                                     : "none, progressive");
    const order_info* order = find_order(layout.colorComponentOrder);
    const type_info* type = find_type(layout.componentType);
    if (order && type) {
        facts.emplace_back("Order", std::string(order->name) + ": " + order->text);
        facts.emplace_back("Type", std::string(type->name) + ": " + type->text);
    }
    facts.emplace_back("Alpha", alpha_fact(tree));
    return facts;
}

std::vector<weight> frame_weights(const box_tree& tree, std::uint64_t frame_bytes) {
    std::vector<weight> rows;
    weight rest = {"More", "", 0, k_payload_bar};
    std::size_t more = 0;
    std::uint64_t counted = 0;
    const auto add = [&](const weight& row) {
        counted += row.bytes;
        if (rows.size() < k_most_rows) {
            rows.push_back(row);
        } else {
            rest.bytes += row.bytes;
            rest.text = std::to_string(++more) + " boxes of this kind";
        }
    };
    for (const box& shown : tree.boxes) {
        const plane_description* plane = shown.payload_plane ? find_plane(tree, *shown.payload_plane) : nullptr;
        if (shown.wrapped) {
            add(payload_weight(shown));
        } else if (plane && !content_of(*plane).chunks) {
            add(plane_weight(*plane, payload_bytes(shown)));
        }
    }
    if (more > 0) {
        rows.push_back(rest);
    }
    rows.push_back({"Headers", "boxes around them", frame_bytes > counted ? frame_bytes - counted : 0, k_header_bar});
    return rows;
}

}  // namespace qvr
