// SPDX-License-Identifier: BSD-3-Clause
#include "formats.h"

#include <algorithm>
#include <map>

namespace model {

std::string decimal(exact value) {
    std::string digits;
    do {
        digits.push_back(static_cast<char>('0' + static_cast<int>(value % 10)));
        value /= 10;
    } while (value != 0);
    std::reverse(digits.begin(), digits.end());
    return digits;
}

unsigned bits_of_type(std::uint32_t type) {
    switch (type) {
        case 1:
            return 8;
        case 2:
            return 16;
        case 3:
            return 10;
        case 4:
            return 12;
        case 5:
            return 10;
        case 6:
            return 16;
        case 7:
            return 32;
        case 214:
            return 16;
        default:
            return 0;
    }
}

unsigned sample_bytes(std::uint32_t type) {
    if (type == 1) {
        return 1;
    }
    return type == 7 ? 4 : 2;
}

bool has_alpha(std::uint32_t order) {
    switch (order) {
        case 3:
        case 4:
        case 7:
        case 8:
        case 11:
        case 12:
        case 13:
        case 14:
        case 15:
        case 16:
            return true;
        default:
            return false;
    }
}

bool is_planar(std::uint32_t order) {
    return order == 10 || order == 13 || order == 14;
}

unsigned subsampling(std::uint32_t order) {
    static const unsigned table[16] = {422, 422, 444, 444, 444, 444, 444, 444, 444, 420, 422, 444, 420, 1, 422, 422};
    return order >= 1 && order <= 16 ? table[order - 1] : 0;
}

namespace {

enum class sampling { none, single, pairs, triples };

struct code_entry {
    plane_role role = plane_role::unknown;
    unsigned bits = 0;
    sampling samples = sampling::none;
};

std::map<code, code_entry> make_code_table() {
    std::map<code, code_entry> table;
    const std::map<std::string, unsigned> depths = {{"08", 8}, {"10", 10}, {"12", 12}, {"16", 16}};
    for (const auto& [suffix, bits] : depths) {
        table[" y" + suffix] = {plane_role::main, bits, sampling::single};
        table["cb" + suffix] = {plane_role::cb, bits, sampling::single};
        table["cr" + suffix] = {plane_role::cr, bits, sampling::single};
        table["rg" + suffix] = {plane_role::main, bits, sampling::triples};
        table["y4" + suffix] = {plane_role::main, bits, sampling::triples};
        table["y2" + suffix] = {plane_role::main, bits, sampling::pairs};
    }
    const std::map<std::string, unsigned> floats = {{"f", 32}, {"h", 16}};
    for (const auto& [suffix, bits] : floats) {
        table["  y" + suffix] = {plane_role::main, bits, sampling::single};
        table[" cb" + suffix] = {plane_role::cb, bits, sampling::single};
        table[" cr" + suffix] = {plane_role::cr, bits, sampling::single};
        table[" rg" + suffix] = {plane_role::main, bits, sampling::triples};
        table[" y4" + suffix] = {plane_role::main, bits, sampling::triples};
        table[" y2" + suffix] = {plane_role::main, bits, sampling::pairs};
    }
    table["rgS1"] = {plane_role::main, 16, sampling::triples};
    table["y4S1"] = {plane_role::main, 16, sampling::triples};
    table["y2S1"] = {plane_role::main, 16, sampling::pairs};
    table[" a08"] = {plane_role::alpha, 8, sampling::single};
    table[" a16"] = {plane_role::alpha, 16, sampling::single};
    table["rl08"] = {plane_role::alpha, 8, sampling::none};
    table["rl16"] = {plane_role::alpha, 16, sampling::none};
    table["stch"] = {plane_role::stitched, 0, sampling::none};
    return table;
}

const std::map<code, code_entry>& code_table() {
    static const std::map<code, code_entry> table = make_code_table();
    return table;
}

code_entry entry_of(const code& name) {
    const auto found = code_table().find(name);
    return found == code_table().end() ? code_entry{} : found->second;
}

// The two ways a depth is spelled: as a two-character suffix after the
// family, or as a single letter with a blank in front of the family.
code spell(const std::string& family, std::uint32_t type) {
    switch (type) {
        case 1:
            return family + "08";
        case 2:
            return family + "16";
        case 3:
            return family + "10";
        case 5:
            return family + "10";
        case 4:
            return family + "12";
        case 214:
            return family + "S1";
        case 6:
            return " " + family + "h";
        case 7:
            return " " + family + "f";
        default:
            return code();
    }
}

std::string family_of(std::uint32_t order) {
    switch (order) {
        case 1:
        case 2:
        case 11:
        case 15:
        case 16:
            return "y2";
        case 9:
        case 12:
            return "y4";
        case 3:
        case 4:
        case 5:
        case 6:
        case 7:
        case 8:
            return "rg";
        default:
            return std::string();
    }
}

}  // namespace

const std::vector<code>& known_codes() {
    static const std::vector<code> names = [] {
        std::vector<code> all;
        for (const auto& item : code_table()) {
            all.push_back(item.first);
        }
        return all;
    }();
    return names;
}

plane_role role_of(const code& name) {
    return entry_of(name).role;
}

unsigned bits_of_code(const code& name) {
    return entry_of(name).bits;
}

bool is_coded_alpha(const code& name) {
    return name == "rl08" || name == "rl16";
}

exact row_bytes(const code& name, std::uint32_t width) {
    const code_entry entry = entry_of(name);
    exact samples = 0;
    switch (entry.samples) {
        case sampling::none:
            samples = 0;
            break;
        case sampling::single:
            samples = width;
            break;
        case sampling::pairs:
            samples = exact(width) * 2 + width % 2;
            break;
        case sampling::triples:
            samples = exact(width) * 3;
            break;
    }
    return ceil_div(samples * entry.bits, 8);
}

code normalise(const code& stored) {
    static const std::map<code, code> legacy = {{"  f2", " y2f"}, {"  f4", " y4f"}, {"  h2", " y2h"}, {"  h4", " y4h"},
                                                {"rg f", " rgf"}, {"rg h", " rgh"}, {"cb f", " cbf"}, {"cb h", " cbh"},
                                                {"cr f", " crf"}, {"cr h", " crh"}};
    const auto old = legacy.find(stored);
    if (old != legacy.end()) {
        return old->second;
    }
    return code_table().count(stored) != 0 ? stored : code();
}

bool is_supported_pair(std::uint32_t order, std::uint32_t type) {
    if (order < 1 || order > 16) {
        return false;
    }
    switch (type) {
        case 1:
        case 2:
            return true;
        case 3:
        case 4:
        case 6:
        case 7:
            return order != 14;
        case 5:
            return order == 2;
        case 214:
            return !is_planar(order);
        default:
            return false;
    }
}

std::vector<code> format_planes(std::uint32_t order, std::uint32_t type) {
    if (!is_supported_pair(order, type)) {
        throw failure("combination of color component order and component type is not supported");
    }
    std::vector<code> planes;
    if (order == 10 || order == 13) {
        planes = {spell(" y", type), spell("cb", type), spell("cr", type)};
    } else if (order != 14) {
        planes = {spell(family_of(order), type)};
    }
    // Only integer depths of whole bytes have an alpha plane of their own.
    if (has_alpha(order) && (type == 1 || type == 2)) {
        planes.push_back(spell(" a", type));
    }
    return planes;
}

const std::set<std::set<code>>& allowed_plane_sets() {
    static const std::set<std::set<code>> sets = [] {
        const std::vector<code> alphas = {" a08", " a16", "rl08", "rl16"};
        std::set<std::set<code>> all;
        const auto add_with_alphas = [&](const std::set<code>& base) {
            all.insert(base);
            for (const code& alpha : alphas) {
                std::set<code> extended = base;
                extended.insert(alpha);
                all.insert(extended);
            }
        };
        for (const char* depth : {"08", "10", "12", "16"}) {
            const std::string d(depth);
            add_with_alphas({"y2" + d});
            add_with_alphas({"y4" + d});
            add_with_alphas({"rg" + d});
            add_with_alphas({" y" + d, "cb" + d, "cr" + d});
        }
        for (const char* lone : {"rgS1", "y4S1", "y2S1", " rgf", " rgh", " y4f", " y2f", " y4h", " y2h", "rl16", "rl08",
                                 " a16", " a08", "stch"}) {
            all.insert({lone});
        }
        all.insert({"  yf", " cbf", " crf"});
        all.insert({"  yh", " cbh", " crh"});
        return all;
    }();
    return sets;
}

void check_plane_set(const std::vector<code>& planes) {
    const std::set<code> set(planes.begin(), planes.end());
    if (set.size() != planes.size() || allowed_plane_sets().count(set) == 0) {
        throw failure("Invalid combination of planes");
    }
}

bool satisfies(const code& stored, const code& wanted) {
    static const std::map<code, code> also = {
        {" a08", "rl08"}, {" a16", "rl16"}, {" y2f", "y2S1"}, {" y4f", "y4S1"}, {" rgf", "rgS1"}};
    if (stored == wanted) {
        return true;
    }
    const auto other = also.find(wanted);
    return other != also.end() && other->second == stored;
}

namespace {

std::uint32_t type_by_suffix(const code& name) {
    const std::string two = name.substr(2);
    if (two == "08")
        return 1;
    if (two == "16")
        return 2;
    if (two == "10")
        return 3;
    if (two == "12")
        return 4;
    if (two == "S1")
        return 214;
    return name[3] == 'f' ? 7 : 6;
}

bool contains(const code& name, const char* part) {
    return name.find(part) != std::string::npos;
}

}  // namespace

described_format describe(const code& main_plane, std::size_t plane_count) {
    const bool with_alpha = plane_count == 2 || plane_count == 4;
    if (main_plane == "stch") {
        return {0, 0};
    }
    if (role_of(main_plane) == plane_role::alpha) {
        return {14, bits_of_code(main_plane) == 8 ? 1u : 2u};
    }
    if (role_of(main_plane) != plane_role::main) {
        throw failure("Plane type is not supported");
    }
    described_format result;
    result.type = type_by_suffix(main_plane);
    if (contains(main_plane, "y2")) {
        result.order = with_alpha ? 11 : 2;
    } else if (contains(main_plane, "y4")) {
        result.order = with_alpha ? 12 : 9;
    } else if (contains(main_plane, "rg")) {
        result.order = with_alpha ? 3 : 5;
    } else {
        result.order = with_alpha ? 13 : 10;
    }
    return result;
}

}  // namespace model
