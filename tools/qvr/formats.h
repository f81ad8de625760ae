// SPDX-License-Identifier: BSD-3-Clause
//
// The one table of orders and types: the numbers of the public header, the names that people know them by, and what the
// tool says about them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace qvr {

struct order_info {
    std::uint32_t value;
    const char* name;                  // shown, and accepted like every alias
    std::vector<const char*> aliases;  // accepted in any case
    const char* subsampling;
    bool alpha;
    const char* channels;  // orders a PNG can be put into: the samples of a pixel in memory order; else empty
    const char* text;
};

struct type_info {
    std::uint32_t value;
    const char* name;
    std::vector<const char*> aliases;
    const char* text;
};

// A name that says order and type at once.
struct named_format {
    const char* name;
    std::uint32_t order;
    std::uint32_t type;
    const char* text;
};

const std::vector<order_info>& all_orders();
const std::vector<type_info>& all_types();
const std::vector<named_format>& all_named_formats();

// Null when the number is none of the table's.
const order_info* find_order(std::uint32_t value);
const type_info* find_type(std::uint32_t value);

// "7 RGBA" and "1 U8"; the number alone when the table does not know it.
std::string order_text(std::uint32_t value);
std::string type_text(std::uint32_t value);

// Whether the library takes the pair, and whether it stores the alpha of the pair's order.
bool is_supported(std::uint32_t order, std::uint32_t type);
bool stores_alpha(std::uint32_t order, std::uint32_t type);

struct format_choice {
    std::optional<std::uint32_t> order;
    std::optional<std::uint32_t> type;
};

// Reads what was given with --order and --type, or with --format; empty texts mean that the option was not given. A
// usage failure for unknown names and for a type that contradicts the one in the order's name.
format_choice parse_format(const std::string& order, const std::string& type, const std::string& format = {});

// A usage failure when the library does not take the pair.
void require_supported(std::uint32_t order, std::uint32_t type);

}  // namespace qvr
