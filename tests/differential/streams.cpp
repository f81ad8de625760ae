// SPDX-License-Identifier: BSD-3-Clause
#include "streams.h"

#include <algorithm>
#include <iterator>
#include <map>

namespace differential {

namespace {

void put_u32(model::bytes& out, std::uint32_t value) {
    for (unsigned i = 0; i < 4; ++i) {
        out.push_back(static_cast<std::uint8_t>((value >> (8 * i)) & 0xFF));
    }
}

void append(model::bytes& out, const model::bytes& more) {
    out.insert(out.end(), more.begin(), more.end());
}

box_node leaf(const std::string& type, model::bytes payload) {
    box_node node;
    node.type = type;
    node.head = std::move(payload);
    return node;
}

std::string stored_spelling(rng& random, const std::string& code) {
    static const std::map<std::string, std::string> legacy = {
        {" y2f", "  f2"}, {" y4f", "  f4"}, {" y2h", "  h2"}, {" y4h", "  h4"}, {" rgf", "rg f"},
        {" rgh", "rg h"}, {" cbf", "cb f"}, {" cbh", "cb h"}, {" crf", "cr f"}, {" crh", "cr h"}};
    const auto old = legacy.find(code);
    if (old != legacy.end() && random.chance(40)) {
        return old->second;
    }
    return random.chance(1) ? "zzzz" : code;
}

box_node sinf_box(rng& random, const std::string& code, std::uint32_t width, std::uint32_t height,
                  std::uint8_t layout) {
    model::bytes fields;
    put_u32(fields, width);
    put_u32(fields, height);
    const std::string name = stored_spelling(random, code);
    fields.insert(fields.end(), name.begin(), name.end());
    // 20 bytes have no layout field; more than 21 have bytes nobody reads.
    if (layout != 0 || random.chance(85)) {
        fields.push_back(random.chance(1) ? random.byte() : layout);
        if (random.chance(10)) {
            append(fields, random.noise(random.between(1, 9)));
        }
    }
    return leaf("sinf", fields);
}

box_node unknown_box(rng& random) {
    static const std::vector<std::string> names = {"none", "pack", "sdat", "tile", "stch", "\1\2\3\4"};
    return leaf(random.pick(names), random.noise(random.below(20)));
}

box_node stitched_sdat(rng& random) {
    static const std::vector<std::string> names = {"stch", "tile", "QCXF", "none"};
    box_node sdat = leaf("sdat", {});
    const std::uint32_t count = random.below(5);
    for (std::uint32_t i = 0; i < count; ++i) {
        sdat.children.push_back(leaf(random.pick(names), random.noise(random.below(30))));
    }
    sdat.tail = random.chance(20) ? random.noise(random.below(8)) : model::bytes();
    return sdat;
}

struct plane_shape {
    std::uint32_t width;
    std::uint32_t height;
    std::uint8_t layout;
};

box_node sdat_box(rng& random, const std::string& code, const plane_shape& shape) {
    if (code == "stch") {
        return stitched_sdat(random);
    }
    if (model::is_coded_alpha(code)) {
        return leaf("sdat",
                    rle_payload(random, shape.width, shape.height, model::bits_of_code(code), random.chance(15)));
    }
    const auto size = static_cast<std::size_t>(model::row_bytes(code, shape.width) * shape.height);
    box_node node = leaf("sdat", random.noise(size));
    if (random.chance(5)) {
        node.tail = random.noise(random.between(1, 20));
    }
    return node;
}

std::vector<box_node> plane_boxes(rng& random, const std::string& code, const plane_shape& frame) {
    plane_shape shape = frame;
    const model::plane_role role = model::role_of(code);
    if (role == model::plane_role::cb || role == model::plane_role::cr) {
        shape.width = frame.width / 2 + frame.width % 2;
        shape.height = frame.height / 2 + frame.height % 2;
    }
    // A frame without samples can be too wide to give it a single row.
    const bool small = frame.width <= 1000 && frame.height <= 1000;
    if (small && random.chance(2)) {
        shape.width = small_dimension(random);
    }
    if (small && random.chance(2)) {
        shape.height = small_dimension(random);
    }
    if (random.chance(2)) {
        shape.layout = static_cast<std::uint8_t>(1 - shape.layout);
    }
    return {sinf_box(random, code, shape.width, shape.height, shape.layout), sdat_box(random, code, shape)};
}

void insert_anywhere(rng& random, std::vector<box_node>& boxes, box_node box) {
    boxes.insert(boxes.begin() + random.below(boxes.size() + 1), std::move(box));
}

std::vector<std::string> random_codes(rng& random) {
    static const std::vector<std::vector<std::string>> sets = [] {
        std::vector<std::vector<std::string>> all;
        for (const auto& set : model::allowed_plane_sets()) {
            all.emplace_back(set.begin(), set.end());
        }
        return all;
    }();
    std::vector<std::string> codes;
    if (random.chance(5)) {
        codes = {"stch"};
    } else if (random.chance(60)) {
        // The planes of a pair, in the writer's sequence.
        const format_pair& pair = random.pick(all_pairs());
        codes = model::format_planes(pair.order, pair.type);
        std::string& last = codes.back();
        if (model::role_of(last) == model::plane_role::alpha && random.chance(60)) {
            last = "rl" + last.substr(2);
        }
    } else {
        codes = random.pick(sets);
    }
    if (random.chance(30)) {
        std::swap(codes[random.below(codes.size())], codes[random.below(codes.size())]);
    }
    if (random.chance(2)) {
        codes.push_back(random.pick(model::known_codes()));
    }
    return codes;
}

}  // namespace

model::bytes serialise(const box_node& node) {
    model::bytes payload = node.head;
    for (const box_node& child : node.children) {
        append(payload, serialise(child));
    }
    append(payload, node.tail);
    model::bytes out;
    put_u32(out, node.lies ? node.claimed : static_cast<std::uint32_t>(payload.size() + 8));
    out.insert(out.end(), node.type.begin(), node.type.end());
    append(out, payload);
    return out;
}

box_node foreign_frame(rng& random) {
    const std::vector<std::string> codes = random_codes(random);
    plane_shape shape = {small_dimension(random), small_dimension(random), static_cast<std::uint8_t>(random.below(2))};
    if (random.chance(1)) {
        // Frames without a sample may be as wide or high as they like.
        shape = random.chance(50) ? plane_shape{0, wild_value(random), 0} : plane_shape{wild_value(random), 0, 0};
    }
    box_node root = leaf("pack", {});
    const bool grouped = codes.size() > 1 || random.chance(10);
    for (const std::string& code : codes) {
        std::vector<box_node> boxes = plane_boxes(random, code, shape);
        if (grouped) {
            box_node group = leaf("icmp", {});
            group.children = boxes;
            group.tail = random.chance(5) ? random.noise(random.below(12)) : model::bytes();
            root.children.push_back(group);
        } else {
            root.children.insert(root.children.end(), boxes.begin(), boxes.end());
        }
    }
    if (grouped && random.chance(5)) {
        insert_anywhere(random, root.children, unknown_box(random));
    }
    if (random.chance(20)) {
        root.children.insert(root.children.begin(), leaf("QCXF", random.noise(random.below(60))));
    }
    root.tail = random.chance(10) ? random.noise(random.below(8)) : model::bytes();
    return root;
}

namespace {

std::vector<box_node>& some_children(rng& random, box_node& root) {
    box_node* node = &root;
    while (!node->children.empty() && random.chance(50)) {
        box_node& next = node->children[random.below(node->children.size())];
        if (next.children.empty()) {
            break;
        }
        node = &next;
    }
    return node->children;
}

std::vector<box_node*> boxes_of_type(box_node& root, const std::string& type) {
    std::vector<box_node*> found;
    for (box_node& child : root.children) {
        if (child.type == type) {
            found.push_back(&child);
        }
        for (box_node* deeper : boxes_of_type(child, type)) {
            found.push_back(deeper);
        }
    }
    return found;
}

void lie(rng& random, box_node& node) {
    const auto honest = static_cast<std::uint32_t>(serialise(node).size());
    static const std::vector<std::uint32_t> claims = {0, 1, 7, 8, 9, 19, 20, 21, 0x7FFFFFFF, 0xFFFFFFF8, 0xFFFFFFFF};
    node.lies = true;
    node.claimed = random.chance(50) ? random.pick(claims) : honest + random.between(0, 40) - 20;
}

// Any width and height at all, on one plane or on every one.
void claim_dimensions(rng& random, box_node& root) {
    model::bytes fields;
    put_u32(fields, wild_value(random));
    put_u32(fields, wild_value(random));
    const bool all = random.chance(50);
    for (box_node* sinf : boxes_of_type(root, "sinf")) {
        if (sinf->head.size() >= fields.size() && (all || random.chance(50))) {
            std::copy(fields.begin(), fields.end(), sinf->head.begin());
        }
    }
}

}  // namespace

void damage_tree(rng& random, box_node& root) {
    static const std::vector<std::string> names = {"sinf", "sdat", "icmp", "QCXF", "stch", "tile", "pack", "none"};
    if (random.chance(10)) {
        claim_dimensions(random, root);
        return;
    }
    std::vector<box_node>& boxes = some_children(random, root);
    if (boxes.empty() || random.chance(5)) {
        lie(random, root);
        return;
    }
    const std::uint32_t index = random.below(boxes.size());
    switch (random.below(8)) {
        case 0:
            boxes.erase(boxes.begin() + index);
            break;
        case 1:
            insert_anywhere(random, boxes, box_node(boxes[index]));
            break;
        case 2:
            std::swap(boxes[index], boxes[random.below(boxes.size())]);
            break;
        case 3:
            insert_anywhere(random, boxes, unknown_box(random));
            break;
        case 4:
            boxes[index].type = random.pick(names);
            break;
        case 5:
            insert_anywhere(random, boxes, leaf("QCXF", random.noise(random.below(40))));
            break;
        case 6:
            for (box_node* sdat : boxes_of_type(root, "sdat")) {
                if (random.chance(50)) {
                    lie(random, *sdat);
                }
            }
            break;
        default:
            lie(random, boxes[index]);
            break;
    }
}

void damage_bytes(rng& random, model::bytes& stream) {
    if (stream.empty()) {
        return;
    }
    const auto near_front = [&](std::size_t room) {
        const std::size_t limit = random.chance(70) ? std::min<std::size_t>(stream.size(), 120) : stream.size();
        return limit < room ? 0 : random.below(limit - room + 1);
    };
    switch (random.below(4)) {
        case 0:
            stream[near_front(1)] ^= static_cast<std::uint8_t>(1u << random.below(8));
            break;
        case 1:
            stream[near_front(1)] = random.byte();
            break;
        case 2:
            if (stream.size() >= 4) {
                model::bytes field;
                put_u32(field, wild_value(random));
                std::copy(field.begin(), field.end(), stream.begin() + near_front(4));
            }
            break;
        default:
            stream.resize(random.chance(50) ? random.below(stream.size() + 1)
                                            : stream.size() - std::min<std::size_t>(stream.size(), random.below(30)));
            break;
    }
}

namespace {

bool fits(const format_pair& pair, const std::vector<std::string>& stored) {
    for (const std::string& wanted : model::format_planes(pair.order, pair.type)) {
        const auto match = [&](const std::string& code) { return model::satisfies(code, wanted); };
        if (std::none_of(stored.begin(), stored.end(), match)) {
            return false;
        }
    }
    return true;
}

}  // namespace

model::frame_params caller_for(rng& random, const model::bytes& stream) {
    model::frame_params frame;
    frame.order = random.below(18);
    frame.type = random.chance(95) ? random.below(8) : 214;
    try {
        const model::parsed_frame parsed = model::parse_frame({stream.data(), stream.size()});
        const model::frame_params described = model::metadata_of(parsed);
        frame.width = random.chance(98) ? described.width : small_dimension(random);
        frame.height = random.chance(98) ? described.height : small_dimension(random);
        std::vector<std::string> stored;
        for (const model::parsed_plane& plane : parsed.planes) {
            stored.push_back(plane.name);
        }
        std::vector<format_pair> fitting;
        std::copy_if(all_pairs().begin(), all_pairs().end(), std::back_inserter(fitting),
                     [&](const format_pair& pair) { return fits(pair, stored); });
        if (!fitting.empty() && random.chance(90)) {
            const format_pair& pair = random.pick(fitting);
            frame.order = pair.order;
            frame.type = pair.type;
        } else if (random.chance(50)) {
            frame.type = described.type;
        }
    } catch (const model::failure&) {
        frame.width = small_dimension(random);
        frame.height = small_dimension(random);
    }
    random_strides(random, frame, 2);
    return frame;
}

}  // namespace differential
