// SPDX-License-Identifier: BSD-3-Clause
//
// What the tool tells other programs: JSON Lines on standard output, each line a document of its own that names its
// schema.
#pragma once

#include <nlohmann/json.hpp>

namespace qvr {

using json = nlohmann::ordered_json;

extern const char* const k_json_help;  // of the option --json

// The start of a document: {"schema": "qvr-info/1"}.
json json_document(const char* schema);

// Writes the document as one line. Bytes that are no UTF-8, as in names of files, become U+FFFD.
void print_json(const json& document);

}  // namespace qvr
