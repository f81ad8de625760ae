// SPDX-License-Identifier: BSD-3-Clause
#include "report.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <thread>

#include "formats.h"
#include "instruction_sets.h"

namespace bench {

namespace {

std::string processor_name() {
    std::ifstream info("/proc/cpuinfo");
    for (std::string line; std::getline(info, line);) {
        if (line.compare(0, 10, "model name") == 0) {
            return line.substr(line.find(':') + 2);
        }
    }
    return "unknown";
}

long cache_bytes(int level) {
    return std::max(0L, ::sysconf(level));
}

std::string best_instruction_set() {
    return usable_instruction_sets().back().name;
}

void print_pair_table(const std::map<std::string, double>& ratios, const std::string& group, const std::string& size) {
    constexpr std::uint32_t k_types[] = {1, 2, 3, 4, 5, 6, 7, 214};
    std::printf("\n%s, %s, speed beside memcpy of the same traffic\n%22s", group.c_str(), size.c_str(), "");
    for (const std::uint32_t type : k_types) {
        std::printf(" %10s", type_text(type).c_str());
    }
    double logarithms = 0;
    int count = 0;
    std::pair<std::string, double> worst{"", 1e9};
    for (std::uint32_t order = 1; order <= 16; ++order) {
        std::printf("\n%-22s", order_text(order).c_str());
        for (const std::uint32_t type : k_types) {
            const auto found = ratios.find(group + "/" + to_text(format{order, type}) + "/" + size);
            if (found == ratios.end()) {
                std::printf(" %10s", "");
                continue;
            }
            std::printf(" %10.2f", found->second);
            logarithms += std::log(found->second);
            ++count;
            worst = found->second < worst.second ? std::pair{to_text(format{order, type}), found->second} : worst;
        }
    }
    std::printf("\ngeometric mean of %d: %.3f   worst: %s, %.3f\n", count, std::exp(logarithms / count),
                worst.first.c_str(), worst.second);
}

nlohmann::json to_json(const result& found) {
    return {{"name", found.name},     {"measure", found.measure},     {"unit", found.unit},
            {"low", found.value.low}, {"median", found.value.median}, {"high", found.value.high}};
}

nlohmann::json to_json(const verdict& row) {
    nlohmann::json made = {{"goal", row.text},
                           {"beside", row.measure},
                           {"size", row.size},
                           {"threshold", row.threshold},
                           {"measured", row.measured}};
    if (row.measured) {
        made["value"] = row.value;
        made["met"] = row.met;
        made["decided_at"] = row.decided_at;
    }
    return made;
}

}  // namespace

void print_machine(const options& chosen) {
    std::printf("%s, %u processors, L2 %ld KiB, L3 %ld MiB; library with %s%s\n\n", processor_name().c_str(),
                std::thread::hardware_concurrency(), cache_bytes(_SC_LEVEL2_CACHE_SIZE) >> 10,
                cache_bytes(_SC_LEVEL3_CACHE_SIZE) >> 20, best_instruction_set().c_str(),
                chosen.quick ? "; quick" : "");
}

void print_pair_tables(const std::vector<result>& results) {
    std::map<std::string, double> ratios;
    std::vector<std::pair<std::string, std::string>> tables;  // group and size
    for (const result& found : results) {
        if (found.name.compare(0, 13, "pairs/encode/") == 0 || found.name.compare(0, 13, "pairs/decode/") == 0) {
            ratios[found.name] = found.value.median;
            const std::pair table{found.name.substr(0, found.name.find('/', 6)),
                                  found.name.substr(found.name.rfind('/') + 1)};
            if (tables.empty() || tables.back() != table) {
                tables.push_back(table);
            }
        }
    }
    for (const auto& [group, size] : tables) {
        print_pair_table(ratios, group, size);
    }
}

void print_verdicts(const std::vector<verdict>& verdicts) {
    std::printf("\nGoals\n");
    int met = 0;
    int measured = 0;
    for (const verdict& row : verdicts) {
        met += row.met ? 1 : 0;
        measured += row.measured ? 1 : 0;
        if (!row.measured) {
            continue;
        }
        const char* relation = row.how == decided_by::largest ? "<=" : ">=";
        std::printf("%-6s  %6.3f %s %-5.4g  %-52s %-9s  %-16s %s\n", row.met ? "met" : "MISSED", row.value, relation,
                    row.threshold, row.text.c_str(), row.size.c_str(), row.measure.c_str(), row.decided_at.c_str());
    }
    std::printf("%d of %d met, %zu not measured\n", met, measured,
                verdicts.size() - static_cast<std::size_t>(measured));
}

void write_json(const std::string& file, const options& chosen, const std::vector<result>& results,
                const std::vector<verdict>& verdicts) {
    nlohmann::json all;
    all["machine"] = {{"processor", processor_name()},
                      {"processors", std::thread::hardware_concurrency()},
                      {"l2_bytes", cache_bytes(_SC_LEVEL2_CACHE_SIZE)},
                      {"l3_bytes", cache_bytes(_SC_LEVEL3_CACHE_SIZE)}};
    all["library"] = {{"instruction_set", best_instruction_set()}, {"compiler", __VERSION__}};
    all["rounds"] = chosen.how().rounds;
    all["results"] = nlohmann::json::array();
    for (const result& found : results) {
        all["results"].push_back(to_json(found));
    }
    all["goals"] = nlohmann::json::array();
    for (const verdict& row : verdicts) {
        all["goals"].push_back(to_json(row));
    }
    std::ofstream out(file);
    out << all.dump(1) << '\n';
    if (!out.flush()) {
        throw std::runtime_error(file + ": cannot be written");
    }
}

}  // namespace bench
