// SPDX-License-Identifier: BSD-3-Clause
#include "json_lines.h"

#include <sstream>

std::vector<json> json_lines(const std::string& out) {
    std::vector<json> found;
    std::istringstream lines(out);
    for (std::string line; std::getline(lines, line);) {
        found.push_back(json::parse(line));
    }
    return found;
}
