// SPDX-License-Identifier: BSD-3-Clause
#include <cstdio>
#include <memory>

#include "command.h"
#include "containers.h"
#include "json_output.h"

namespace qvr {

namespace {

constexpr const char* k_about = "List the orders and types with their names, and the kinds of files";

constexpr const char* k_more = R"(
Wherever --order and --type are given, a number or any of these names will do, in upper or lower case. --format takes
a name of the third table, which says both. --from and --to take the kinds of files; mostly the first bytes of a file,
or the end of its name, say what it is. --json prints one document of schema qvr-formats/1.

Examples:
  qvr formats
  qvr formats --json)";

struct formats_options {
    bool as_json = false;
};

std::string joined(const char* name, const std::vector<const char*>& aliases) {
    std::string text = name;
    for (const char* alias : aliases) {
        text += std::string(", ") + alias;
    }
    return text;
}

std::vector<std::uint32_t> types_of(const order_info& order) {
    std::vector<std::uint32_t> types;
    for (const type_info& type : all_types()) {
        if (is_supported(order.value, type.value)) {
            types.push_back(type.value);
        }
    }
    return types;
}

std::string types_text(const order_info& order) {
    std::string text;
    for (const std::uint32_t type : types_of(order)) {
        text += (text.empty() ? "" : " ") + std::to_string(type);
    }
    return text;
}

void print_orders() {
    std::printf("Orders: which samples a pixel has and how they follow each other in memory (--order)\n\n");
    std::printf("  %3s  %-33s %-6s %-6s %-33s %s\n", "N", "names", "chroma", "alpha", "samples", "types");
    for (const order_info& row : all_orders()) {
        std::printf("  %3u  %-33s %-6s %-6s %-33s %s\n", row.value, joined(row.name, row.aliases).c_str(),
                    row.subsampling, row.alpha ? "yes" : "no", row.text, types_text(row).c_str());
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
    std::printf("\nNames that say both order and type (--format, or --order alone)\n\n");
    std::printf("  %-10s %-10s %-14s %s\n", "name", "order", "type", "samples");
    for (const named_format& row : all_named_formats()) {
        std::printf("  %-10s %-10s %-14s %s\n", row.name, order_text(row.order).c_str(), type_text(row.type).c_str(),
                    row.text);
    }
}

void print_containers() {
    std::printf("\nKinds of files (--from, --to)\n\n");
    std::printf("  %-6s %-6s %-11s %s\n", "name", "ends", "frames", "keeps");
    for (const container& row : all_containers()) {
        std::printf("  %-6s %-6s %-11s %s\n", row.name, *row.extension == '\0' ? "other" : row.extension,
                    row.one_frame ? "one" : "any number", row.keeps);
    }
}

template <class Row>
json names_of(const Row& row) {
    json names = {row.name};
    for (const char* alias : row.aliases) {
        names.push_back(alias);
    }
    return names;
}

json orders_as_json() {
    json list = json::array();
    for (const order_info& row : all_orders()) {
        list.push_back({{"order", row.value},
                        {"names", names_of(row)},
                        {"chroma", row.subsampling == std::string("-") ? json(nullptr) : json(row.subsampling)},
                        {"alpha", row.alpha},
                        {"samples", row.text},
                        {"types", types_of(row)}});
    }
    return list;
}

json types_as_json() {
    json list = json::array();
    for (const type_info& row : all_types()) {
        list.push_back({{"type", row.value},
                        {"names", names_of(row)},
                        {"stores_alpha", stores_alpha(QVRUncompressed_OrderRGBA, row.value)},
                        {"samples", row.text}});
    }
    return list;
}

json formats_as_json() {
    json document = json_document("qvr-formats/1");
    document["orders"] = orders_as_json();
    document["types"] = types_as_json();
    document["formats"] = json::array();
    for (const named_format& row : all_named_formats()) {
        document["formats"].push_back(
            {{"name", row.name}, {"order", row.order}, {"type", row.type}, {"samples", row.text}});
    }
    document["files"] = json::array();
    for (const container& row : all_containers()) {
        document["files"].push_back({{"name", row.name},
                                     {"extension", *row.extension == '\0' ? json(nullptr) : json(row.extension)},
                                     {"one_frame", row.one_frame},
                                     {"keeps_rate", row.keeps_rate},
                                     {"keeps", row.keeps}});
    }
    return document;
}

void run_formats(const formats_options& options) {
    if (options.as_json) {
        print_json(formats_as_json());
    } else {
        print_orders();
        print_types();
        print_named();
        print_containers();
    }
    finish_standard_output();
}

}  // namespace

void add_formats(command_line& to) {
    const auto options = std::make_shared<formats_options>();
    argument_list list = to.add_command("formats", k_about, [options] { run_formats(*options); });
    list.explain(k_more);
    list.flag("--json", options->as_json, k_json_help);
}

}  // namespace qvr
