// SPDX-License-Identifier: BSD-3-Clause
//
// What --help says, taken apart: the measure for all that is made from the same description.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "process.h"

struct help_entry {
    std::vector<std::string> names;  // "-q", "--quiet"
    std::string head;                // all that stands left of the description
    std::string text;                // the description, its lines joined
};

// Of each command, in the order of the help.
using help_entries = std::vector<std::pair<std::string, std::vector<help_entry>>>;

std::vector<std::string> lines_of(const std::string& text);
help_entries read_all_help(const scratch_folder& folder);
