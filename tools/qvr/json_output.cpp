// SPDX-License-Identifier: BSD-3-Clause
#include "json_output.h"

#include <cstdio>

namespace qvr {

const char* const k_json_help = "Print JSON for programs on standard output, a line a document";

json json_document(const char* schema) {
    return {{"schema", schema}};
}

void print_json(const json& document) {
    const std::string line = document.dump(-1, ' ', false, json::error_handler_t::replace);
    std::printf("%s\n", line.c_str());
}

}  // namespace qvr
