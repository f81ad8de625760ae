// SPDX-License-Identifier: BSD-3-Clause
//
// What the tool tells other programs: JSON Lines on standard output, each line a document of its own that names its
// schema, so that any number of frames can be told of in little memory. docs/json.md describes the documents.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "codec.h"
#include "frame.h"

namespace qvr {

using json = nlohmann::ordered_json;

extern const char* const k_json_help;  // of the option --json

// The start of a document: {"schema": "qvr-info/1"}.
json json_document(const char* schema);

// The document as one line, with its line feed. Bytes that are no UTF-8, as in names of files, become U+FFFD.
std::string json_line(const json& document);

// Writes the document as one line.
void print_json(const json& document);

// "progressive", "interlaced" or "unknown".
json json_layout(std::uint32_t layout);

// {"width": ..., "height": ..., "layout": ..., "order": ..., "order_name": ..., "type": ..., "type_name": ...}; the
// order and type of wrapped chunks are 0, their names null.
json json_format(const frame_layout& layout);

// {"message": ..., "hint": ...}, the hint null when there is none; null without a failure.
json json_error(const failure* problem);

// What a command has done: {"schema": "qvr-result/1", "command": ..., "output": ..., "frames": ..., "raw_bytes": ...,
// "codec_seconds": ..., and the facts}. Printed at the end, when all has gone well.
void print_result(const char* command, const std::string& output, unsigned long long frames, const codec_time& time,
                  const json& facts);

// Refuses --json when standard output is to carry frames.
void require_free_output(const std::string& output);

}  // namespace qvr
