// SPDX-License-Identifier: BSD-3-Clause
#include <algorithm>
#include <cstdio>
#include <memory>
#include <utility>

#include "box_tree.h"
#include "codec.h"
#include "command.h"
#include "frame_scan.h"
#include "frame_text.h"
#include "json_boxes.h"

namespace qvr {

namespace {

constexpr const char* k_about = "Show what a .qvr file holds: frames, formats, boxes and planes";

constexpr const char* k_more = R"(
For each frame: what the library says of it (the order is the one that needs no reordering: a frame made from BGRA
reads as ARGB), the payloads that are wrapped into it, and its boxes with their offsets in the file and sizes in
bytes. Of a wrapped QCX frame the fields of its header are shown; only some compressions fill its size. '!' marks a
box that is not as it should be, or is unusual. Frames that the library refuses are shown as far as they can be read;
the exit code is 1 then. 'qvr dump' shows more of the boxes, 'qvr verify' proves that a file is sound.

Examples:
  qvr info photo.qvr
  qvr info clip.qvr --frame 7
  qvr info clip.qvr --json)";

constexpr std::size_t k_most_payloads = 1000;

struct info_options {
    std::string input;
    std::optional<std::uint32_t> only_frame;
    bool json = false;
};

// Everything that is known of one frame, apart from how it is shown.
struct frame_report {
    const found_frame& found;
    std::optional<frame_layout> layout;
    std::vector<wrap_record> wrapped;
    box_tree tree;
    std::optional<failure> problem;
};

void print_format(const std::optional<frame_layout>& layout) {
    if (layout && layout->colorComponentOrder != 0) {
        std::printf("  format  %s\n", layout_text(*layout).c_str());
    } else if (layout) {
        std::printf("  format  %ux%u %s, wrapped chunks\n", layout->width, layout->height,
                    layout_name(layout->frameLayout));
    } else {
        std::printf("  format  unreadable\n");
    }
}

void print_wrapped(const std::vector<wrap_record>& records) {
    std::printf("  wrapped %zu payload%s\n", records.size(), records.size() == 1 ? "" : "s");
    for (std::size_t i = 0; i < std::min(records.size(), k_most_payloads); ++i) {
        std::printf("    payload %zu: type %u (%s), %u bytes\n", i, records[i].wrapType,
                    wrap_type_name(records[i].wrapType), records[i].dataSize);
    }
    if (records.size() > k_most_payloads) {
        std::printf("    (there are more payloads)\n");
    }
}

void print_report(const frame_report& report, bool first) {
    const frame_reader& reader = report.found.reader;
    if (first) {
        std::printf("%s\n", reader.place().file.c_str());
    }
    if (report.found.broken && reader.bytes().size < k_box_header) {
        return;  // not even a box header to show
    }
    print_frame_line(reader);
    print_format(report.layout);
    print_wrapped(report.wrapped);
    print_tree_head();
    for (const box& shown : report.tree.boxes) {
        print_box(shown, reader.offset());
    }
    print_tree_end(report.tree);
}

// The names of the header's constants.
const char* json_wrap_type(std::uint32_t type) {
    constexpr const char* k_names[] = {"QCX", "stitched", "tile"};
    return k_names[std::clamp<std::uint32_t>(type, 1, 3) - 1];
}

json json_payloads(const frame_report& report) {
    json payloads = json::array();
    for (std::size_t i = 0; i < std::min(report.wrapped.size(), k_most_payloads); ++i) {
        const wrap_record& record = report.wrapped[i];
        payloads.push_back({{"number", i},
                            {"type", record.wrapType},
                            {"type_name", json_wrap_type(record.wrapType)},
                            {"bytes", record.dataSize}});
    }
    return payloads;
}

json json_planes(const frame_report& report) {
    json planes = json::array();
    for (const box& each : report.tree.boxes) {
        if (each.payload_plane) {
            json plane = json_plane(plane_of(report.tree, each));
            plane["bytes"] = each.payload_bytes();
            planes.push_back(std::move(plane));
        }
    }
    return planes;
}

void print_json_report(const frame_report& report, bool /*first*/) {
    json document = json_frame("qvr-info/1", report.found.reader);
    document["format"] = report.layout ? json_format(*report.layout) : json(nullptr);
    document["planes"] = json_planes(report);
    document["payload_count"] = report.wrapped.size();
    document["payloads"] = json_payloads(report);
    document["error"] = json_error(report.problem ? &*report.problem : nullptr);
    print_json(document);
}

class inspection {
  public:
    explicit inspection(const info_options& given) : options(given), codec(1) {}

    void run() {
        scan_frames(options.input, options.only_frame, [this](const found_frame& found) { return inspect(found); });
    }

  private:
    frame_problem inspect(const found_frame& found) {
        frame_report report = {found, {}, {}, read_boxes(found.reader.bytes()), {}};
        if (found.broken) {
            report.problem = *found.broken;
        } else {
            ask_library(report);
        }
        (options.json ? print_json_report : print_report)(report, std::exchange(first, false));
        return report.problem;
    }

    void ask_library(frame_report& report) {
        try {
            const frame_reader& reader = report.found.reader;
            const wrapped_contents contents = codec.read_wrapped(reader.bytes(), reader.place());
            report.layout = contents.layout;
            report.wrapped = contents.records;
        } catch (const failure& problem) {
            report.problem = problem;
        }
    }

    const info_options& options;
    decoder codec;
    bool first = true;
};

}  // namespace

void add_info(command_line& to) {
    const auto options = std::make_shared<info_options>();
    argument_list list = to.add_command("info", k_about, [options] { inspection(*options).run(); });
    list.explain(k_more);
    list.positional("FILE.qvr", options->input, "File to look at; '-' is standard input");
    list.number("--frame", options->only_frame, "Show this frame alone, counted from 0; default: all frames");
    list.flag("--json", options->json, k_json_help);
}

}  // namespace qvr
