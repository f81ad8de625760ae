// SPDX-License-Identifier: BSD-3-Clause
#include "json_output.h"

#include <cstdio>

#include "command.h"
#include "formats.h"
#include "frame_text.h"

namespace qvr {

namespace {

template <class Row>
json name_or_null(const Row* row) {
    return row ? json(row->name) : json(nullptr);
}

}  // namespace

const char* const k_json_help = "Print JSON for programs on standard output, a line a document that names its schema";

json json_document(const char* schema) {
    return {{"schema", schema}};
}

std::string json_line(const json& document) {
    return document.dump(-1, ' ', false, json::error_handler_t::replace) + "\n";
}

void print_json(const json& document) {
    std::fputs(json_line(document).c_str(), stdout);
}

json json_layout(std::uint32_t layout) {
    return layout > QVRUncompressed_LayoutInterlaced ? "unknown" : layout_name(layout);
}

json json_format(const frame_layout& layout) {
    const std::uint32_t order = layout.colorComponentOrder;
    const std::uint32_t type = layout.componentType;
    return {{"width", layout.width},
            {"height", layout.height},
            {"layout", json_layout(layout.frameLayout)},
            {"order", order},
            {"order_name", name_or_null(find_order(order))},
            {"type", type},
            {"type_name", name_or_null(find_type(type))}};
}

json json_error(const failure* problem) {
    if (!problem) {
        return nullptr;
    }
    return {{"message", problem->what()}, {"hint", problem->hint().empty() ? json(nullptr) : json(problem->hint())}};
}

void print_result(const char* command, const std::string& output, unsigned long long frames, const codec_time& time,
                  const json& facts) {
    json document = json_document("qvr-result/1");
    document.update({{"command", command},
                     {"output", output},
                     {"frames", frames},
                     {"raw_bytes", time.raw_bytes},
                     {"codec_seconds", time.seconds}});
    document.update(facts);
    print_json(document);
    finish_standard_output();
}

void require_free_output(const std::string& output) {
    if (output == "-") {
        fail_usage("--json and the frames cannot both go to standard output", "give the output a name");
    }
}

}  // namespace qvr
