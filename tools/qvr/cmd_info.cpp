// SPDX-License-Identifier: BSD-3-Clause
#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <memory>

#include "box_tree.h"
#include "codec.h"
#include "command.h"
#include "qvr_file.h"

namespace qvr {

namespace {

constexpr const char* k_about = "Show what a .qvr file holds: frames, formats, boxes and planes";

constexpr const char* k_more = R"(
For each frame: what the library says of it (the order is the one that needs no reordering: a frame made from BGRA
reads as ARGB), the payloads that are wrapped into it, and its boxes with their offsets in the file and sizes in
bytes. Of a wrapped QCX frame the fields of its header are shown; only some compressions fill its size. '!' marks a
box that is not as it should be. Frames that the library refuses are shown as far as they can be read; the exit code
is 1 then.

Example:
  qvr info photo.qvr)";

struct info_options {
    std::string input;
};

// Everything that is known of one frame, apart from how it is shown.
struct frame_report {
    unsigned long long number = 0;
    std::uint64_t offset = 0;
    std::uint64_t size = 0;
    std::optional<frame_layout> layout;
    std::vector<wrap_record> wrapped;
    box_tree tree;
};

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

std::string box_text(const box& shown) {
    std::string text;
    if (shown.plane) {
        const plane_description& plane = *shown.plane;
        const std::string content = plane_code_text(plane.code);
        text = "plane " + std::to_string(plane.number) + ": " + plane.code + " " +
               (content.empty() ? "unknown code" : "(" + content + ")") + ", " + std::to_string(plane.width) + "x" +
               std::to_string(plane.height) + ", " + layout_name(plane.layout);
    } else if (shown.payload_plane) {
        const std::uint64_t payload = shown.size < k_box_header ? 0 : shown.size - k_box_header;
        text = "plane " + std::to_string(*shown.payload_plane) + ": payload of " + std::to_string(payload) + " bytes";
    } else if (shown.wrapped) {
        text = payload_text(*shown.wrapped);
    }
    if (!shown.note.empty()) {
        text += (text.empty() ? "! " : "  ! ") + shown.note;
    }
    return text;
}

void print_tree(const frame_report& report) {
    std::printf("  %-16s %14s %14s\n", "boxes", "offset", "bytes");
    for (const box& shown : report.tree.boxes) {
        const std::string name = std::string(2 * std::size_t{shown.depth} + 2, ' ') + shown.type;
        const std::string text = box_text(shown);
        std::printf("  %-16s %14" PRIu64 " %14" PRIu64 "%s%s\n", name.c_str(), report.offset + shown.offset, shown.size,
                    text.empty() ? "" : "  ", text.c_str());
    }
    if (!report.tree.complete) {
        std::printf("  (there are more boxes)\n");
    }
}

void print_wrapped(const std::vector<wrap_record>& records) {
    constexpr std::size_t k_most = 1000;
    std::printf("  wrapped %zu payload%s\n", records.size(), records.size() == 1 ? "" : "s");
    for (std::size_t i = 0; i < std::min(records.size(), k_most); ++i) {
        std::printf("    payload %zu: type %u (%s), %u bytes\n", i, records[i].wrapType,
                    wrap_type_name(records[i].wrapType), records[i].dataSize);
    }
    if (records.size() > k_most) {
        std::printf("    (there are more payloads)\n");
    }
}

void print_report(const frame_report& report) {
    std::printf("frame %llu: offset %" PRIu64 ", %" PRIu64 " bytes\n", report.number, report.offset, report.size);
    if (report.layout && report.layout->colorComponentOrder != 0) {
        std::printf("  format  %s\n", layout_text(*report.layout).c_str());
    } else if (report.layout) {
        std::printf("  format  %ux%u %s, wrapped chunks\n", report.layout->width, report.layout->height,
                    layout_name(report.layout->frameLayout));
    } else {
        std::printf("  format  unreadable\n");
    }
    print_wrapped(report.wrapped);
    print_tree(report);
}

class inspection {
  public:
    explicit inspection(const info_options& options) : input(options.input), reader(input), codec(1) {}

    void run() {
        std::printf("%s\n", input.name().c_str());
        while (next_frame()) {
            frame_report report = report_boxes();
            try {
                const wrapped_contents found = codec.read_wrapped(reader.bytes(), reader.place());
                report.layout = found.layout;
                report.wrapped = found.records;
            } catch (const failure& problem) {
                // One frame that cannot be read does not hide those behind it.
                keep(problem);
            }
            print_report(report);
            ++frames;
        }
        if (frames == 0 && !first_problem) {
            throw failure(exit_code::data, {input.name(), {}}, "there is no frame in it: the file is empty");
        }
        finish_standard_output();
        if (first_problem) {
            throw failure(*first_problem);
        }
    }

  private:
    bool next_frame() {
        try {
            return reader.next();
        } catch (const failure& problem) {
            if (problem.code() == exit_code::data && reader.bytes().size >= k_box_header) {
                print_report(report_boxes());
            }
            keep(problem);
            return false;
        }
    }

    frame_report report_boxes() const {
        frame_report report;
        report.number = reader.number();
        report.offset = reader.offset();
        report.size = reader.bytes().size;
        report.tree = read_boxes(reader.bytes());
        return report;
    }

    // The first is the tool's answer; those after it are said at once.
    void keep(const failure& problem) {
        if (first_problem) {
            std::fflush(stdout);
            std::fputs(problem.text().c_str(), stderr);
        } else {
            first_problem = problem;
        }
    }

    input_file input;
    frame_reader reader;
    decoder codec;
    unsigned long long frames = 0;
    std::optional<failure> first_problem;
};

void run_info(const info_options& options) {
    inspection(options).run();
}

}  // namespace

void add_info(command_line& to) {
    const auto options = std::make_shared<info_options>();
    argument_list list = to.add_command("info", k_about, [options] { run_info(*options); });
    list.explain(k_more);
    list.positional("FILE.qvr", options->input, "File to look at; '-' is standard input");
}

}  // namespace qvr
