// SPDX-License-Identifier: BSD-3-Clause
#include "json_boxes.h"

#include "plane_codes.h"

namespace qvr {

namespace {

json json_qcx(const qcx_description& qcx) {
    return {{"compression", qcx.compression},
            {"width", qcx.width},
            {"height", qcx.height},
            {"flags", qcx.flags},
            {"alpha", (qcx.flags & 1) != 0}};
}

}  // namespace

json json_frame(const char* schema, const frame_reader& reader) {
    json document = json_document(schema);
    document["file"] = reader.place().file;
    document["frame"] = reader.number();
    document["offset"] = reader.offset();
    document["bytes"] = reader.bytes().size;
    return document;
}

json json_plane(const plane_description& plane) {
    const std::string code = unquoted(plane.code);
    const std::string content = find_plane_code(code).text;
    return {
        {"plane", plane.number}, {"code", code},           {"content", content.empty() ? json(nullptr) : json(content)},
        {"width", plane.width},  {"height", plane.height}, {"layout", json_layout(plane.layout)}};
}

json json_findings(const std::vector<finding>& findings, std::uint64_t frame_offset) {
    json list = json::array();
    for (const finding& each : findings) {
        const finding_row& row = row_of(each.kind);
        list.push_back({{"name", row.name},
                        {"severity", severity_name(row.grade)},
                        {"offset", frame_offset + each.offset},
                        {"text", each.detail}});
    }
    return list;
}

json json_box(const box_tree& tree, const box& shown, std::uint64_t frame_offset) {
    json document = {{"depth", shown.depth},
                     {"type", unquoted(shown.type)},
                     {"offset", frame_offset + shown.offset},
                     {"bytes", shown.size}};
    if (shown.plane) {
        document.update(json_plane(*shown.plane));
    }
    if (shown.payload_plane) {
        document["plane"] = *shown.payload_plane;
        document["content"] = json_plane(plane_of(tree, shown))["content"];
    }
    if (shown.wrapped) {
        document["payload"] = shown.wrapped->number;
        if (shown.wrapped->qcx) {
            document["qcx"] = json_qcx(*shown.wrapped->qcx);
        }
    }
    document["findings"] = json_findings(shown.findings, frame_offset);
    return document;
}

}  // namespace qvr
