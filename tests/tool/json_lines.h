// SPDX-License-Identifier: BSD-3-Clause
//
// What a command printed with --json.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

using json = nlohmann::json;

// One document a line. Anything that is no JSON throws.
std::vector<json> json_lines(const std::string& out);
