// SPDX-License-Identifier: BSD-3-Clause
//
// Levels of the processor, and how the library is kept to one.
#pragma once

#include <string>
#include <vector>

#include "api/base/cpu_features.h"

namespace bench {

struct instruction_set {
    const char* name;
    unsigned features;  // this level's and all below
};

const std::vector<instruction_set>& all_instruction_sets();

// Those that the processor has and --cpu allows.
std::vector<instruction_set> usable_instruction_sets();

// What --cpu says: a name of a level, or "all". Once, before anything is timed.
void limit_instruction_sets(const std::string& name);

// Keeps handles that are made meanwhile to one level.
class instruction_set_limit {
  public:
    explicit instruction_set_limit(const instruction_set& level);
    ~instruction_set_limit();
    instruction_set_limit(const instruction_set_limit&) = delete;
    instruction_set_limit& operator=(const instruction_set_limit&) = delete;
};

}  // namespace bench
