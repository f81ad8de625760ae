// SPDX-License-Identifier: BSD-3-Clause
#include "formats.h"

#include "codec.h"

namespace bench {

namespace {

struct order_row {
    std::uint32_t order;
    const char* name;
    std::uint32_t without_alpha;  // 0 when it has none
    bool alpha_plane;             // apart from the colours
};

const order_row k_orders[] = {
    {1, "YCbYCr", 0, false},
    {2, "CbYCrY", 0, false},
    {3, "ARGB", 5, false},
    {4, "BGRA", 5, false},
    {5, "RGB", 0, false},
    {6, "BGR", 0, false},
    {7, "RGBA", 5, false},
    {8, "ABGR", 5, false},
    {9, "YCbCr444", 0, false},
    {10, "Planar420", 0, false},
    {11, "CbYACrYA", 2, false},
    {12, "YCbCrA444", 9, false},
    {13, "Planar420Alpha", 10, true},
    {14, "Alpha", 0, true},
    {15, "YCbYCrPlanarAlpha", 2, true},
    {16, "CbYCrYPlanarAlpha", 2, true},
};

struct type_row {
    std::uint32_t type;
    const char* name;
    bool stores_alpha;
};

const type_row k_types[] = {
    {1, "U8", true},         {2, "U16", true},   {3, "U10", false},   {4, "U12", false},
    {5, "U10Packed", false}, {6, "Half", false}, {7, "Float", false}, {214, "Fixed16", false},
};

const order_row& row_of_order(std::uint32_t order) {
    return k_orders[order - 1];
}

const type_row& row_of_type(std::uint32_t type) {
    for (const type_row& row : k_types) {
        if (row.type == type) {
            return row;
        }
    }
    return k_types[0];
}

bool drops_alpha(const format& pair) {
    return row_of_order(pair.order).without_alpha != 0 && !row_of_type(pair.type).stores_alpha;
}

std::vector<format> supported_pairs() {
    std::vector<format> pairs;
    for (const order_row& order : k_orders) {
        for (const type_row& type : k_types) {
            if (stream_bytes(frame_record(order.order, type.type, {2, 2}), raw_alpha()) != 0) {
                pairs.push_back({order.order, type.type});
            }
        }
    }
    return pairs;
}

}  // namespace

const std::vector<format>& all_formats() {
    static const std::vector<format> pairs = supported_pairs();
    return pairs;
}

std::string order_text(std::uint32_t order) {
    return std::to_string(order) + "-" + row_of_order(order).name;
}

std::string type_text(std::uint32_t type) {
    return std::to_string(type) + "-" + row_of_type(type).name;
}

std::string to_text(const format& pair) {
    return order_text(pair.order) + "/" + type_text(pair.type);
}

format decoded_format(const format& pair) {
    return {drops_alpha(pair) ? row_of_order(pair.order).without_alpha : pair.order, pair.type};
}

std::uint64_t bytes_read_of_raw(const format& pair, const frame_size& size) {
    const bool skips_plane = drops_alpha(pair) && row_of_order(pair.order).alpha_plane;
    const format read = skips_plane ? decoded_format(pair) : pair;
    return raw_bytes(frame_record(read.order, read.type, size));
}

}  // namespace bench
