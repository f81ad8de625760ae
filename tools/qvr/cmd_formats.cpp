// SPDX-License-Identifier: BSD-3-Clause
#include <cstdio>

#include "command.h"

namespace qvr {

namespace {

constexpr const char* k_about = "List the orders and types with their names";

constexpr const char* k_more = R"(
Wherever --order and --type are given, a number or any of these names will do, in upper or lower case.)";

std::string joined(const char* name, const std::vector<const char*>& aliases) {
    std::string text = name;
    for (const char* alias : aliases) {
        text += std::string(", ") + alias;
    }
    return text;
}

std::string types_of(const order_info& order) {
    std::string text;
    for (const type_info& type : all_types()) {
        if (is_supported(order.value, type.value)) {
            text += (text.empty() ? "" : " ") + std::to_string(type.value);
        }
    }
    return text;
}

void print_orders() {
    std::printf("Orders: which samples a pixel has and how they follow each other in memory (--order)\n\n");
    std::printf("  %3s  %-33s %-6s %-6s %-33s %s\n", "N", "names", "chroma", "alpha", "samples", "types");
    for (const order_info& row : all_orders()) {
        std::printf("  %3u  %-33s %-6s %-6s %-33s %s\n", row.value, joined(row.name, row.aliases).c_str(),
                    row.subsampling, row.alpha ? "yes" : "no", row.text, types_of(row).c_str());
    }
}

void print_types() {
    std::printf("\nTypes: how one sample is stored, little-endian (--type)\n\n");
    std::printf("  %3s  %-33s %-6s %s\n", "N", "names", "alpha", "sample");
    for (const type_info& row : all_types()) {
        const bool none = row.value == QVRUncompressed_TypeU10Packed;  // its only order has no alpha
        const char* alpha = none ? "-" : stores_alpha(QVRUncompressed_OrderRGBA, row.value) ? "kept" : "lost";
        std::printf("  %3u  %-33s %-6s %s\n", row.value, joined(row.name, row.aliases).c_str(), alpha, row.text);
    }
}

void print_named() {
    std::printf("\nNames that say both order and type (--order alone is enough)\n\n");
    std::printf("  %-10s %-10s %-14s %s\n", "name", "order", "type", "samples");
    for (const named_format& row : all_named_formats()) {
        std::printf("  %-10s %-10s %-14s %s\n", row.name, order_text(row.order).c_str(), type_text(row.type).c_str(),
                    row.text);
    }
}

void run_formats() {
    print_orders();
    print_types();
    print_named();
    finish_standard_output();
}

}  // namespace

void add_formats(command_line& to) {
    to.add_command("formats", k_about, run_formats).explain(k_more);
}

}  // namespace qvr
