// SPDX-License-Identifier: BSD-3-Clause
//
// What is printed behind the single results, and the file for machines.
#pragma once

#include <string>
#include <vector>

#include "cases.h"
#include "goals.h"
#include "options.h"

namespace bench {

// The processor and what of it is used.
void print_machine(const options& chosen);

// Orders by types, a table for each size and direction, with the geometric mean and the worst pair.
void print_pair_tables(const std::vector<result>& results);

void print_verdicts(const std::vector<verdict>& verdicts);

void write_json(const std::string& file, const options& chosen, const std::vector<result>& results,
                const std::vector<verdict>& verdicts);

}  // namespace bench
