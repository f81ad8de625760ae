// SPDX-License-Identifier: BSD-3-Clause
#include "formats.h"

#include <strings.h>

#include <charconv>
#include <cstring>
#include <system_error>

#include "QVRUncompressed.h"
#include "failure.h"

namespace qvr {

namespace {

bool same_name(const std::string& given, const char* name) {
    return strcasecmp(given.c_str(), name) == 0;
}

template <class Row>
bool answers_to(const Row& row, const std::string& given) {
    if (same_name(given, row.name)) {
        return true;
    }
    for (const char* alias : row.aliases) {
        if (same_name(given, alias)) {
            return true;
        }
    }
    return false;
}

std::optional<std::uint32_t> as_number(const std::string& text) {
    std::uint32_t value = 0;
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, value);
    if (result.ec != std::errc() || result.ptr != end) {
        return std::nullopt;
    }
    return value;
}

template <class Rows>
std::optional<std::uint32_t> look_up(const Rows& rows, const std::string& given) {
    const std::optional<std::uint32_t> number = as_number(given);
    for (const auto& row : rows) {
        if (number ? row.value == *number : answers_to(row, given)) {
            return row.value;
        }
    }
    return std::nullopt;
}

const named_format* find_named(const std::string& given) {
    for (const named_format& row : all_named_formats()) {
        if (same_name(given, row.name)) {
            return &row;
        }
    }
    return nullptr;
}

format_choice parse_order(const std::string& given) {
    if (const named_format* named = find_named(given)) {
        return {named->order, named->type};
    }
    const std::optional<std::uint32_t> order = look_up(all_orders(), given);
    if (!order) {
        fail_usage("--order " + given + ": there is no such order", "'qvr formats' lists the orders and their names");
    }
    return {order, std::nullopt};
}

}  // namespace

const std::vector<order_info>& all_orders() {
    static const std::vector<order_info> rows = {
        {QVRUncompressed_OrderYCbYCr, "YUY2", {"YUYV", "YCbYCr"}, "4:2:2", false, "", "Y0 Cb Y1 Cr, interleaved"},
        {QVRUncompressed_OrderCbYCrY, "UYVY", {"CbYCrY"}, "4:2:2", false, "", "Cb Y0 Cr Y1, interleaved"},
        {QVRUncompressed_OrderARGB, "ARGB", {}, "4:4:4", true, "ARGB", "A R G B, interleaved"},
        {QVRUncompressed_OrderBGRA, "BGRA", {}, "4:4:4", true, "BGRA", "B G R A, interleaved"},
        {QVRUncompressed_OrderRGB, "RGB", {}, "4:4:4", false, "RGB", "R G B, interleaved"},
        {QVRUncompressed_OrderBGR, "BGR", {}, "4:4:4", false, "BGR", "B G R, interleaved"},
        {QVRUncompressed_OrderRGBA, "RGBA", {}, "4:4:4", true, "RGBA", "R G B A, interleaved"},
        {QVRUncompressed_OrderABGR, "ABGR", {}, "4:4:4", true, "ABGR", "A B G R, interleaved"},
        {QVRUncompressed_OrderYCbCr444,
         "YUV444",
         {"YCbCr444"},
         "4:4:4",
         false,
         "",
         "three samples a pixel, kept as is"},
        {QVRUncompressed_OrderPlanar420, "I420", {"YUV420", "Planar420"}, "4:2:0", false, "", "planes Y, Cb, Cr"},
        {QVRUncompressed_OrderCbYACrYA, "UYAVYA", {"CbYACrYA"}, "4:2:2", true, "", "Cb Y0 A0 Cr Y1 A1, interleaved"},
        {QVRUncompressed_OrderYCbCrA444, "YUVA444", {"YCbCrA444"}, "4:4:4", true, "", "three samples and A a pixel"},
        {QVRUncompressed_OrderPlanar420Alpha,
         "A420",
         {"YUVA420", "Planar420Alpha"},
         "4:2:0",
         true,
         "",
         "planes Y, Cb, Cr, A"},
        {QVRUncompressed_OrderAlpha, "Alpha", {"A", "Matte"}, "-", true, "A", "one alpha plane alone"},
        {QVRUncompressed_OrderYCbYCrPlanarAlpha,
         "YUY2+A",
         {"YUYV+A", "YCbYCrPlanarAlpha"},
         "4:2:2",
         true,
         "",
         "as YUY2, then a plane A"},
        {QVRUncompressed_OrderCbYCrYPlanarAlpha,
         "UYVY+A",
         {"CbYCrYPlanarAlpha"},
         "4:2:2",
         true,
         "",
         "as UYVY, then a plane A"},
    };
    return rows;
}

const std::vector<type_info>& all_types() {
    static const std::vector<type_info> rows = {
        {QVRUncompressed_TypeU8, "U8", {"8bit", "uint8"}, "8-bit integer"},
        {QVRUncompressed_TypeU16, "U16", {"16bit", "uint16"}, "16-bit integer"},
        {QVRUncompressed_TypeU10, "U10", {"10bit"}, "10-bit integer in the top bits of 16"},
        {QVRUncompressed_TypeU12, "U12", {"12bit"}, "12-bit integer in the top bits of 16"},
        {QVRUncompressed_TypeU10Packed, "U10Packed", {"packed10"}, "three 10-bit integers in 32 bits; UYVY only"},
        {QVRUncompressed_TypeHalf, "Half", {"f16", "float16"}, "16-bit floating point"},
        {QVRUncompressed_TypeFloat, "Float", {"f32", "float32"}, "32-bit floating point"},
        {QVRUncompressed_TypeFixed16, "Fixed16", {"s1.14"}, "signed 16-bit fixed point, 14 fraction bits"},
    };
    return rows;
}

const std::vector<named_format>& all_named_formats() {
    static const std::vector<named_format> rows = {
        {"v210", QVRUncompressed_OrderCbYCrY, QVRUncompressed_TypeU10Packed, "4:2:2, 10 bits, six pixels in 16 bytes"},
        {"v216", QVRUncompressed_OrderCbYCrY, QVRUncompressed_TypeU16, "4:2:2, 16 bits"},
        {"RGB24", QVRUncompressed_OrderRGB, QVRUncompressed_TypeU8, "R G B, 8 bits"},
        {"BGR24", QVRUncompressed_OrderBGR, QVRUncompressed_TypeU8, "B G R, 8 bits"},
        {"RGB48", QVRUncompressed_OrderRGB, QVRUncompressed_TypeU16, "R G B, 16 bits, little-endian"},
        {"RGBA64", QVRUncompressed_OrderRGBA, QVRUncompressed_TypeU16, "R G B A, 16 bits, little-endian"},
    };
    return rows;
}

const order_info* find_order(std::uint32_t value) {
    for (const order_info& row : all_orders()) {
        if (row.value == value) {
            return &row;
        }
    }
    return nullptr;
}

const type_info* find_type(std::uint32_t value) {
    for (const type_info& row : all_types()) {
        if (row.value == value) {
            return &row;
        }
    }
    return nullptr;
}

std::string order_text(std::uint32_t value) {
    const order_info* row = find_order(value);
    return std::to_string(value) + (row ? std::string(" ") + row->name : std::string());
}

std::string type_text(std::uint32_t value) {
    const type_info* row = find_type(value);
    return std::to_string(value) + (row ? std::string(" ") + row->name : std::string());
}

bool is_supported(std::uint32_t order, std::uint32_t type) {
    if (!find_order(order) || !find_type(type)) {
        return false;
    }
    switch (type) {
        case QVRUncompressed_TypeU8:
        case QVRUncompressed_TypeU16:
            return true;
        case QVRUncompressed_TypeU10Packed:
            return order == QVRUncompressed_OrderCbYCrY;
        case QVRUncompressed_TypeFixed16:
            return order != QVRUncompressed_OrderPlanar420 && order != QVRUncompressed_OrderPlanar420Alpha &&
                   order != QVRUncompressed_OrderAlpha;
        default:
            return order != QVRUncompressed_OrderAlpha;
    }
}

bool stores_alpha(std::uint32_t order, std::uint32_t type) {
    const order_info* row = find_order(order);
    return row && row->alpha && (type == QVRUncompressed_TypeU8 || type == QVRUncompressed_TypeU16);
}

format_choice parse_format(const std::string& order, const std::string& type) {
    format_choice choice;
    if (!order.empty()) {
        choice = parse_order(order);
    }
    if (type.empty()) {
        return choice;
    }
    const std::optional<std::uint32_t> given = look_up(all_types(), type);
    if (!given) {
        fail_usage("--type " + type + ": there is no such type",
                   "'qvr formats' lists the types; 8-bit samples are 1 or U8, 16-bit samples 2 or U16");
    }
    if (choice.type && *choice.type != *given) {
        fail_usage("--type " + type + " contradicts --order " + order + ", which is type " + type_text(*choice.type),
                   "leave --type out, or give the order alone: --order " + std::to_string(*choice.order));
    }
    choice.type = given;
    return choice;
}

void require_supported(std::uint32_t order, std::uint32_t type) {
    if (!is_supported(order, type)) {
        fail_usage("order " + order_text(order) + " does not go with type " + type_text(type),
                   "'qvr formats' shows which types each order takes");
    }
}

}  // namespace qvr
