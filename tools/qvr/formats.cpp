// SPDX-License-Identifier: BSD-3-Clause
#include "formats.h"

#include <strings.h>

#include <cstring>

#include "QVRUncompressed.h"
#include "failure.h"
#include "numbers.h"

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

template <class Rows>
std::optional<std::uint32_t> look_up(const Rows& rows, const std::string& given) {
    const std::optional<std::uint32_t> number = parse_number<std::uint32_t>(given);
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
    if (const std::optional<std::uint32_t> order = look_up(all_orders(), given)) {
        return {order, std::nullopt};
    }
    const named_format* named = find_named(given);
    if (!named) {
        fail_usage("--order " + given + ": there is no such order", "'qvr formats' lists the orders and their names");
    }
    return {named->order, named->type};
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
        {"UYVY", QVRUncompressed_OrderCbYCrY, QVRUncompressed_TypeU8, "4:2:2, 8 bits, Cb Y Cr Y"},
        {"2vuy", QVRUncompressed_OrderCbYCrY, QVRUncompressed_TypeU8, "4:2:2, 8 bits, Cb Y Cr Y"},
        {"YUY2", QVRUncompressed_OrderYCbYCr, QVRUncompressed_TypeU8, "4:2:2, 8 bits, Y Cb Y Cr"},
        {"YUYV", QVRUncompressed_OrderYCbYCr, QVRUncompressed_TypeU8, "4:2:2, 8 bits, Y Cb Y Cr"},
        {"yuvs", QVRUncompressed_OrderYCbYCr, QVRUncompressed_TypeU8, "4:2:2, 8 bits, Y Cb Y Cr"},
        {"v210", QVRUncompressed_OrderCbYCrY, QVRUncompressed_TypeU10Packed, "4:2:2, 10 bits, six pixels in 16 bytes"},
        {"v216", QVRUncompressed_OrderCbYCrY, QVRUncompressed_TypeU16, "4:2:2, 16 bits"},
        {"Y210", QVRUncompressed_OrderYCbYCr, QVRUncompressed_TypeU10, "4:2:2, 10 bits in the top of 16, Y Cb Y Cr"},
        {"Y212", QVRUncompressed_OrderYCbYCr, QVRUncompressed_TypeU12, "4:2:2, 12 bits in the top of 16, Y Cb Y Cr"},
        {"Y216", QVRUncompressed_OrderYCbYCr, QVRUncompressed_TypeU16, "4:2:2, 16 bits, Y Cb Y Cr"},
        {"UYAVYA", QVRUncompressed_OrderCbYACrYA, QVRUncompressed_TypeU8, "4:2:2 with alpha, 8 bits"},
        {"YUV444", QVRUncompressed_OrderYCbCr444, QVRUncompressed_TypeU8, "4:4:4, 8 bits, Y Cb Cr"},
        {"YUVA444", QVRUncompressed_OrderYCbCrA444, QVRUncompressed_TypeU8, "4:4:4 with alpha, 8 bits, Cb Y Cr A"},
        {"I420", QVRUncompressed_OrderPlanar420, QVRUncompressed_TypeU8, "4:2:0, 8 bits, planes Y, Cb, Cr"},
        {"IYUV", QVRUncompressed_OrderPlanar420, QVRUncompressed_TypeU8, "4:2:0, 8 bits, planes Y, Cb, Cr"},
        {"A420", QVRUncompressed_OrderPlanar420Alpha, QVRUncompressed_TypeU8, "4:2:0, 8 bits, planes Y, Cb, Cr, A"},
        {"GRAY8", QVRUncompressed_OrderAlpha, QVRUncompressed_TypeU8, "one plane, 8 bits"},
        {"GRAY16", QVRUncompressed_OrderAlpha, QVRUncompressed_TypeU16, "one plane, 16 bits, little-endian"},
        {"RGB", QVRUncompressed_OrderRGB, QVRUncompressed_TypeU8, "R G B, 8 bits"},
        {"RGB24", QVRUncompressed_OrderRGB, QVRUncompressed_TypeU8, "R G B, 8 bits"},
        {"RGB48", QVRUncompressed_OrderRGB, QVRUncompressed_TypeU16, "R G B, 16 bits, little-endian"},
        {"BGR", QVRUncompressed_OrderBGR, QVRUncompressed_TypeU8, "B G R, 8 bits"},
        {"BGR24", QVRUncompressed_OrderBGR, QVRUncompressed_TypeU8, "B G R, 8 bits"},
        {"BGR48", QVRUncompressed_OrderBGR, QVRUncompressed_TypeU16, "B G R, 16 bits, little-endian"},
        {"RGBA", QVRUncompressed_OrderRGBA, QVRUncompressed_TypeU8, "R G B A, 8 bits"},
        {"RGBA32", QVRUncompressed_OrderRGBA, QVRUncompressed_TypeU8, "R G B A, 8 bits"},
        {"RGBA64", QVRUncompressed_OrderRGBA, QVRUncompressed_TypeU16, "R G B A, 16 bits, little-endian"},
        {"BGRA", QVRUncompressed_OrderBGRA, QVRUncompressed_TypeU8, "B G R A, 8 bits"},
        {"BGRA32", QVRUncompressed_OrderBGRA, QVRUncompressed_TypeU8, "B G R A, 8 bits"},
        {"BGRA64", QVRUncompressed_OrderBGRA, QVRUncompressed_TypeU16, "B G R A, 16 bits, little-endian"},
        {"ARGB", QVRUncompressed_OrderARGB, QVRUncompressed_TypeU8, "A R G B, 8 bits"},
        {"ARGB32", QVRUncompressed_OrderARGB, QVRUncompressed_TypeU8, "A R G B, 8 bits"},
        {"ARGB64", QVRUncompressed_OrderARGB, QVRUncompressed_TypeU16, "A R G B, 16 bits, little-endian"},
        {"ABGR", QVRUncompressed_OrderABGR, QVRUncompressed_TypeU8, "A B G R, 8 bits"},
        {"ABGR32", QVRUncompressed_OrderABGR, QVRUncompressed_TypeU8, "A B G R, 8 bits"},
        {"ABGR64", QVRUncompressed_OrderABGR, QVRUncompressed_TypeU16, "A B G R, 16 bits, little-endian"},
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

format_choice parse_format(const std::string& order, const std::string& type, const std::string& format) {
    if (!format.empty()) {
        const named_format* named = find_named(format);
        if (!named) {
            fail_usage("--format " + format + ": there is no such format",
                       "'qvr formats' lists the names; other pairs are given as --order and --type");
        }
        return {named->order, named->type};
    }
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
