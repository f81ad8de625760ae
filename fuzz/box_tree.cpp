// SPDX-License-Identifier: BSD-3-Clause
#include "box_tree.h"

#include <cstring>

#include "container/frame_layout.h"

namespace fuzz {

namespace {

constexpr unsigned k_deepest = 4;
constexpr std::size_t k_longest_plane = 2048;

bool holds_boxes(std::uint32_t type, const std::uint8_t* payload, std::size_t size) {
    if (type == container::k_pack || type == container::k_icmp) {
        return true;
    }
    if (type != container::k_sdat || size < k_header) {
        return false;
    }
    std::uint32_t first;
    std::memcpy(&first, payload + 4, sizeof first);
    return first == container::k_stch || first == container::k_tile || first == container::k_qcxf;
}

void append_32(bytes& out, std::uint32_t value) {
    for (unsigned shift = 0; shift < 32; shift += 8) {
        out.push_back(static_cast<std::uint8_t>(value >> shift));
    }
}

bool has_fields(const box& which) {
    return which.type == container::k_sinf && which.inside.rest.size() >= k_layout_field;
}

}  // namespace

box_list parse_boxes(const std::uint8_t* data, std::size_t size, unsigned depth) {
    box_list list;
    std::size_t at = 0;
    while (size - at >= k_header) {
        box next;
        std::memcpy(&next.declared, data + at, 4);
        std::memcpy(&next.type, data + at + 4, 4);
        const std::size_t room = size - at - k_header;
        std::size_t payload = 0;
        if (next.declared < k_header) {
            next.lies = true;
        } else if (next.declared - k_header > room) {
            next.lies = true;
            payload = room;
        } else {
            payload = next.declared - k_header;
        }
        at += k_header;
        if (depth < k_deepest && holds_boxes(next.type, data + at, payload)) {
            next.inside = parse_boxes(data + at, payload, depth + 1);
        } else {
            next.inside.rest.assign(data + at, data + at + payload);
        }
        at += payload;
        list.boxes.push_back(std::move(next));
    }
    list.rest.assign(data + at, data + size);
    return list;
}

std::size_t size_of(const box& which) {
    std::size_t size = k_header + which.inside.rest.size();
    for (const box& child : which.inside.boxes) {
        size += size_of(child);
    }
    return size;
}

void write_boxes(const box_list& list, bytes& out) {
    for (const box& each : list.boxes) {
        append_32(out, each.lies ? each.declared : static_cast<std::uint32_t>(size_of(each)));
        append_32(out, each.type);
        write_boxes(each.inside, out);
    }
    out.insert(out.end(), list.rest.begin(), list.rest.end());
}

void collect_lists(box_list& list, std::vector<box_list*>& out) {
    if (list.boxes.empty()) {
        return;
    }
    out.push_back(&list);
    for (box& each : list.boxes) {
        collect_lists(each.inside, out);
    }
}

void forget_lies(box_list& list) {
    for (box& each : list.boxes) {
        each.lies = false;
        forget_lies(each.inside);
    }
}

std::uint32_t load_field(const bytes& payload, std::size_t at) {
    std::uint32_t value = 0;
    if (payload.size() >= at + sizeof value) {
        std::memcpy(&value, payload.data() + at, sizeof value);
    }
    return value;
}

void store_field(bytes& payload, std::size_t at, std::uint32_t value) {
    if (payload.size() >= at + sizeof value) {
        std::memcpy(payload.data() + at, &value, sizeof value);
    }
}

void fit_planes(box_list& list) {
    for (std::size_t i = 0; i < list.boxes.size(); ++i) {
        fit_planes(list.boxes[i].inside);
        if (i == 0 || !has_fields(list.boxes[i - 1]) || list.boxes[i].type != container::k_sdat) {
            continue;
        }
        const bytes& description = list.boxes[i - 1].inside.rest;
        const std::uint32_t code = normalised_plane_type(load_field(description, k_code_field));
        const wide needed =
            row_bytes(code, load_field(description, k_width_field)) * load_field(description, k_height_field);
        const plane_class holds = traits_of_plane(code).holds;
        const bool raw =
            holds != plane_class::unknown && holds != plane_class::coded_alpha && holds != plane_class::stitched;
        if (raw && needed <= k_longest_plane && list.boxes[i].inside.boxes.empty()) {
            list.boxes[i].inside.rest.resize(static_cast<std::size_t>(needed), 0x5c);
        }
    }
}

}  // namespace fuzz
