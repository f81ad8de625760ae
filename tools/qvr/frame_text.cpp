// SPDX-License-Identifier: BSD-3-Clause
#include "frame_text.h"

#include <cinttypes>
#include <cstdio>
#include <string>

#include "plane_codes.h"

namespace qvr {

namespace {

std::string payload_text(const wrapped_description& shown) {
    std::string text = "payload " + std::to_string(shown.number) + ": " + std::to_string(shown.bytes) + " bytes";
    if (shown.qcx) {
        char fields[120];
        std::snprintf(fields, sizeof fields, ", compression %u, header size %ux%u, flags 0x%02X (%s)",
                      shown.qcx->compression, shown.qcx->width, shown.qcx->height, shown.qcx->flags,
                      (shown.qcx->flags & 1) != 0 ? "alpha of its own" : "no alpha");
        text += fields;
    }
    return text;
}

std::string plane_text(const plane_description& plane) {
    const std::string content = find_plane_code(unquoted(plane.code)).text;
    return "plane " + std::to_string(plane.number) + ": " + plane.code + " " +
           (content.empty() ? "unknown code" : "(" + content + ")") + ", " + std::to_string(plane.width) + "x" +
           std::to_string(plane.height) + ", " + layout_name(plane.layout);
}

std::string box_text(const box& shown) {
    std::string text;
    if (shown.plane) {
        text = plane_text(*shown.plane);
    } else if (shown.payload_plane) {
        const std::uint64_t payload = shown.size < k_box_header ? 0 : shown.size - k_box_header;
        text = "plane " + std::to_string(*shown.payload_plane) + ": payload of " + std::to_string(payload) + " bytes";
    } else if (shown.wrapped) {
        text = payload_text(*shown.wrapped);
    }
    const char* before = text.empty() ? "! " : "  ! ";
    for (const finding& each : shown.findings) {
        text += before + each.detail;
        before = "; ";
    }
    return text;
}

}  // namespace

const char* layout_name(std::uint32_t layout) {
    switch (layout) {
        case QVRUncompressed_LayoutProgressive:
            return "progressive";
        case QVRUncompressed_LayoutInterlaced:
            return "interlaced";
        default:
            return "unknown layout";
    }
}

const char* wrap_type_name(std::uint32_t type) {
    switch (type) {
        case QVRUncompressed_WrapQCX:
            return "QCX frame";
        case QVRUncompressed_WrapStitched:
            return "stitched, first chunk";
        case QVRUncompressed_WrapTile:
            return "stitched, further chunk";
        default:
            return "unknown";
    }
}

void print_frame_line(const frame_reader& at) {
    std::printf("frame %llu: offset %" PRIu64 ", %zu bytes\n", at.number(), at.offset(), at.bytes().size);
}

void print_tree_head() {
    std::printf("  %-16s %14s %14s\n", "boxes", "offset", "bytes");
}

void print_box(const box& shown, std::uint64_t frame_offset) {
    const std::string name = std::string(2 * std::size_t{shown.depth} + 2, ' ') + shown.type;
    const std::string text = box_text(shown);
    std::printf("  %-16s %14" PRIu64 " %14" PRIu64 "%s%s\n", name.c_str(), frame_offset + shown.offset, shown.size,
                text.empty() ? "" : "  ", text.c_str());
}

void print_tree_end(const box_tree& tree) {
    if (!tree.complete) {
        std::printf("  (there are more boxes)\n");
    }
}

}  // namespace qvr
