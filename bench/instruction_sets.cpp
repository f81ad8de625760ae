// SPDX-License-Identifier: BSD-3-Clause
#include "instruction_sets.h"

namespace bench {

namespace {

unsigned chosen_features = ~0u;

void allow(unsigned features) {
    limit_cpu_features(static_cast<cpu_features>(features));
}

}  // namespace

const std::vector<instruction_set>& all_instruction_sets() {
    static const std::vector<instruction_set> rows = {
        {"scalar", cpu_scalar},
        {"ssse3", cpu_ssse3},
        {"avx2", cpu_ssse3 | cpu_avx2},
        {"avx512", cpu_ssse3 | cpu_avx2 | cpu_avx512},
    };
    return rows;
}

std::vector<instruction_set> usable_instruction_sets() {
    std::vector<instruction_set> usable;
    for (const instruction_set& row : all_instruction_sets()) {
        if ((row.features & ~static_cast<unsigned>(detected_cpu_features())) == 0) {
            usable.push_back(row);
        }
    }
    return usable;
}

void limit_instruction_sets(const std::string& name) {
    for (const instruction_set& row : all_instruction_sets()) {
        if (name == row.name) {
            chosen_features = row.features;
        }
    }
    allow(chosen_features);
}

instruction_set_limit::instruction_set_limit(const instruction_set& level) {
    allow(level.features & chosen_features);
}

instruction_set_limit::~instruction_set_limit() {
    allow(chosen_features);
}

}  // namespace bench
