// SPDX-License-Identifier: BSD-3-Clause
#include <algorithm>
#include <cctype>
#include <cinttypes>
#include <cstdio>
#include <memory>

#include "box_tree.h"
#include "coded_alpha.h"
#include "command.h"
#include "frame_scan.h"
#include "frame_text.h"
#include "json_boxes.h"
#include "plane_codes.h"

namespace qvr {

namespace {

constexpr const char* k_about = "Show the boxes of a .qvr file, slice tables of coded alpha, and bytes";

constexpr const char* k_more = R"(
Each box stands on a line with its type, its offset in the file and its size; what it stands in is indented less.
Below the 'sdat' of coded alpha stands its slice table: where each slice lies, and which rows it holds. --hex shows
the first bytes of each payload. The boxes are read without the library, and no size is believed, so that damaged
frames are shown as far as they go; '!' marks what is not as it should be, or is unusual. The exit code is 1 when a
box is wrong; 'qvr verify' looks at more than boxes.

Examples:
  qvr dump photo.qvr
  qvr dump clip.qvr --frame 7 --hex 64
  qvr dump clip.qvr --json)";

struct dump_options {
    std::string input;
    std::optional<std::uint32_t> only_frame;
    std::uint32_t hex_bytes = 0;
    bool json = false;
};

// The table of a box that holds coded alpha.
std::optional<slice_table> slices_of(const box_tree& tree, const box& shown, bytes_view frame) {
    if (!shown.payload_plane) {
        return std::nullopt;
    }
    const plane_code code = find_plane_code(unquoted(plane_of(tree, shown).code));
    if (code.content != plane_content::coded_alpha) {
        return std::nullopt;
    }
    return read_slice_table(shown.payload(frame));
}

bool is_payload(const box& shown) {
    return shown.payload_plane || shown.wrapped;
}

// What is to be shown of the payload's bytes.
bytes_view head_of(const box& shown, bytes_view frame, std::size_t most) {
    const bytes_view payload = shown.payload(frame);
    return {payload.data, std::min(payload.size, most)};
}

void print_slices(const slice_table& table, std::uint64_t start) {
    if (!table.problem.empty()) {
        std::printf("      ! %s\n", table.problem.c_str());
        return;
    }
    std::printf("      slice table of %" PRIu64 " bytes, %zu slices\n", table.bytes, table.slices.size());
    std::printf("      %8s %14s %14s %10s %10s\n", "slice", "offset", "bytes", "first row", "rows");
    for (std::size_t i = 0; i < table.slices.size(); ++i) {
        const alpha_slice& slice = table.slices[i];
        std::printf("      %8zu %14" PRIu64 " %14" PRIu64 " %10" PRIu64 " %10" PRIu64 "\n", i, start + slice.offset,
                    slice.bytes, slice.first_row, slice.rows);
    }
}

void print_hex(bytes_view bytes, std::uint64_t start) {
    constexpr std::size_t k_line = 16;
    for (std::size_t line = 0; line < bytes.size; line += k_line) {
        std::printf("      %14" PRIu64 " ", start + line);
        std::string text;
        for (std::size_t i = line; i < line + k_line; ++i) {
            if (i < bytes.size) {
                std::printf(" %02x", static_cast<unsigned>(bytes.data[i]));
                text += std::isprint(bytes.data[i]) != 0 ? static_cast<char>(bytes.data[i]) : '.';
            } else {
                std::printf("   ");
            }
        }
        std::printf("  |%s|\n", text.c_str());
    }
}

std::string hex_text(bytes_view bytes) {
    std::string text;
    for (std::size_t i = 0; i < bytes.size; ++i) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", static_cast<unsigned>(bytes.data[i]));
        text += digits;
    }
    return text;
}

json json_slices(const slice_table& table, std::uint64_t start) {
    json slices = json::array();
    for (std::size_t i = 0; i < table.slices.size(); ++i) {
        const alpha_slice& slice = table.slices[i];
        slices.push_back({{"slice", i},
                          {"offset", start + slice.offset},
                          {"bytes", slice.bytes},
                          {"first_row", slice.first_row},
                          {"rows", slice.rows}});
    }
    return {{"bytes", table.bytes},
            {"slices", std::move(slices)},
            {"problem", table.problem.empty() ? json(nullptr) : json(table.problem)}};
}

class dumping {
  public:
    explicit dumping(const dump_options& given) : options(given) {}

    void run() {
        scan_frames(options.input, options.only_frame, [this](const found_frame& found) { return dump(found); });
    }

  private:
    frame_problem dump(const found_frame& found) {
        const box_tree tree = read_boxes(found.reader.bytes());
        if (options.json) {
            print_json_frame(found, tree);
        } else {
            print_frame(found, tree);
        }
        shown = true;
        return found.broken ? frame_problem(*found.broken) : first_error(tree, found.reader);
    }

    static frame_problem first_error(const box_tree& tree, const frame_reader& reader) {
        for (const box& each : tree.boxes) {
            for (const finding& wrong : each.findings) {
                if (row_of(wrong.kind).grade == severity::error) {
                    return failure(exit_code::data, reader.place(),
                                   "the " + each.type + " box at " + std::to_string(reader.offset() + each.offset) +
                                       ": " + wrong.detail,
                                   "'qvr verify' shows everything that is wrong");
                }
            }
        }
        return std::nullopt;
    }

    void print_frame(const found_frame& found, const box_tree& tree) const {
        const frame_reader& reader = found.reader;
        if (!shown) {
            std::printf("%s\n", reader.place().file.c_str());
        }
        print_frame_line(reader);
        print_tree_head();
        for (const box& each : tree.boxes) {
            print_box(each, reader.offset());
            const std::uint64_t start = reader.offset() + each.offset + k_box_header;
            if (const std::optional<slice_table> table = slices_of(tree, each, reader.bytes())) {
                print_slices(*table, start);
            }
            if (is_payload(each)) {
                print_hex(head_of(each, reader.bytes(), options.hex_bytes), start);
            }
        }
        print_tree_end(tree);
        if (found.broken) {
            std::printf("  ! %s\n", found.broken->what());
        }
    }

    void print_json_frame(const found_frame& found, const box_tree& tree) const {
        const frame_reader& reader = found.reader;
        json document = json_frame("qvr-dump/1", reader);
        json boxes = json::array();
        for (const box& each : tree.boxes) {
            json shown_box = json_box(tree, each, reader.offset());
            const std::uint64_t start = reader.offset() + each.offset + k_box_header;
            if (const std::optional<slice_table> table = slices_of(tree, each, reader.bytes())) {
                shown_box["slice_table"] = json_slices(*table, start);
            }
            if (options.hex_bytes > 0 && is_payload(each)) {
                shown_box["hex"] = hex_text(head_of(each, reader.bytes(), options.hex_bytes));
            }
            boxes.push_back(std::move(shown_box));
        }
        document["boxes"] = std::move(boxes);
        document["complete"] = tree.complete;
        document["error"] = json_error(found.broken);
        print_json(document);
    }

    const dump_options& options;
    bool shown = false;
};

}  // namespace

void add_dump(command_line& to) {
    const auto options = std::make_shared<dump_options>();
    argument_list list = to.add_command("dump", k_about, [options] { dumping(*options).run(); });
    list.explain(k_more);
    list.positional("FILE.qvr", options->input, "File to look at; '-' is standard input");
    list.number("--frame", options->only_frame, "Show this frame alone, counted from 0; default: all frames");
    list.number("--hex", options->hex_bytes, "Show the first N bytes of each payload; default: 0");
    list.flag("--json", options->json, k_json_help);
}

}  // namespace qvr
