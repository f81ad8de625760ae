// SPDX-License-Identifier: BSD-3-Clause
#include <memory>
#include <optional>

#include "codec.h"
#include "command.h"
#include "containers.h"
#include "distinct.h"
#include "json_output.h"
#include "qvr_file.h"
#include "sheet_facts.h"

namespace qvr {

namespace {

constexpr const char* k_about = "Draw a frame as one picture: colours, matte, over a checkerboard, sizes";

constexpr const char* k_more = R"(
The sheet is for looking at: colours are converted for a screen, large frames are scaled down. 'qvr decode' gives
the samples themselves. With alpha there are three pictures: the colours alone, the matte, and both over a
checkerboard. The strip below says what the frame is and how many bytes each of its planes and payloads takes.

A stream says which samples it holds, not how they are meant. By default YCbCr integers are limited-range Rec. 709
and RGB integers full-range, both ready for a screen; RGB of half, float and fixed point is linear light. YCbCr of
these types has Y from 0 to 1 and Cb and Cr around 0. Fields of an interlaced frame are shown woven together.
Compressed frames and chunks of other codecs cannot be shown; their alpha and sizes can.

Examples:
  qvr view photo.qvr -o sheet.png
  qvr view clip.qvr -o sheet.png --frame 2 --matrix bt601 --range full
  qvr view photo.qvr -o alpha.png --plane 1 --full)";

struct view_options {
    std::string input;
    std::string output;
    std::uint32_t frame = 0;
    std::optional<std::uint32_t> plane;
    std::string scale;
    bool full = false;
    bool quiet = false;
    bool json = false;
    std::string alpha = "straight";
    display_choice display;
};

// In place of a picture that nothing here can decode.
sheet_pane card(const wrapped_contents& found) {
    const bool frame = found.records.front().wrapType == QVRUncompressed_WrapQCX;
    const std::size_t count = found.records.size();
    const std::string what = frame        ? "A compressed frame of another codec"
                             : count == 1 ? "A chunk of another codec"
                                          : std::to_string(count) + " chunks of another codec";
    const std::string them = count == 1 ? "it" : "them";
    return {frame ? "Compressed frame" : "Stitched chunks",
            shown_picture::colours,
            {what, "carried byte for byte; nothing here can decode " + them, "'qvr unwrap' gives " + them + " back"}};
}

class viewing {
  public:
    explicit viewing(const view_options& given)
        : options(given), input(given.input), reader(input), codec(0), output(given.output) {}

    void run() {
        if (options.json) {
            require_free_output(options.output);
        }
        reader.find(options.frame);
        tree = read_boxes(reader.bytes());
        const wrapped_contents found = codec.read_wrapped(reader.bytes(), reader.place());
        made.title = input.name() == "standard input" ? input.name() : base_name(input.name());
        made.subtitle = "frame " + grouped(reader.number()) + ", " + grouped(reader.bytes().size) +
                        " bytes at offset " + grouped(reader.offset());
        made.frame_bytes = reader.bytes().size;
        made.facts = frame_facts(found.layout, tree);
        made.weights = frame_weights(tree, made.frame_bytes);
        if (options.plane) {
            add_plane(found.layout);
        } else {
            add_pictures(found);
        }
        write_sheet(made, output);
        output.commit();
        if (!options.quiet) {
            say(output.name() + ": " + made.title + ", " + made.subtitle);
        }
        if (options.json) {
            print_json_result();
        }
    }

  private:
    void print_json_result() const {
        json pictures = json::array();
        for (const sheet_pane& pane : made.panes) {
            pictures.push_back(pane.caption);
        }
        print_result("view", options.output, 1, codec.time(),
                     {{"frame", reader.number()}, {"offset", reader.offset()}, {"pictures", pictures}});
    }

    void add_pictures(const wrapped_contents& found) {
        if (!found.records.empty()) {
            made.panes.push_back(card(found));
        }
        if (found.layout.colorComponentOrder == 0) {
            return;
        }
        decode(found.layout);
        const display_view view(decoded, options.display);
        add_picture(view, view.has_colour() && view.has_alpha() ? 3 : 1);
        if (view.has_colour()) {
            made.panes.push_back({"Picture", shown_picture::colours, {}});
            made.facts.emplace_back("Shown as", view.text());
        }
        if (view.has_alpha()) {
            made.panes.push_back({"Matte", shown_picture::matte, {}});
        }
        if (view.has_colour() && view.has_alpha()) {
            made.panes.push_back({"Over checkerboard", shown_picture::over_checkerboard, {}});
        }
    }

    void add_plane(const frame_layout& layout) {
        const plane_description* plane = find_plane(tree, *options.plane);
        if (!plane) {
            throw failure(exit_code::usage, reader.place(),
                          "there is no plane " + std::to_string(*options.plane) + " in the frame",
                          "'qvr info' shows the planes, counted from 0");
        }
        const plane_in_words content = content_of(*plane);
        if (content.chunks) {
            throw failure(exit_code::usage, reader.place(),
                          "plane " + std::to_string(*options.plane) + " holds chunks of another codec, not samples",
                          "'qvr unwrap' takes them out");
        }
        decode(layout);
        const display_view view(decoded, options.display, content.alone);
        if (view.width() == 0) {
            throw failure(exit_code::data, reader.place(),
                          "plane " + std::to_string(*options.plane) + " is passed over, since it does not belong here",
                          "'qvr info' shows where it stands");
        }
        add_picture(view, 1);
        made.panes.push_back(
            {"Plane " + std::to_string(plane->number) + ": " + content.text, shown_picture::colours, {}});
        made.facts.emplace_back("Shown as", view.text());
    }

    void decode(const frame_layout& layout) {
        if (layout.width == 0 || layout.height == 0) {
            throw failure(exit_code::usage, reader.place(), "a frame without pixels cannot be shown",
                          "'qvr info' shows its size");
        }
        decoded.layout = layout;
        decoded.layout.rowBytes = 0;
        decoded.layout.rowBytes2 = 0;
        codec.decode(reader.bytes(), decoded, reader.place());
    }

    void add_picture(const display_view& view, unsigned pictures) {
        const sheet_scale scale = options.full             ? sheet_scale{}
                                  : !options.scale.empty() ? parse_scale(options.scale)
                                                           : fitting_scale(view.width(), view.height(), pictures);
        for (const std::uint32_t side : {view.width(), view.height()}) {
            if (std::uint64_t{side} / scale.shrink * scale.enlarge > canvas::k_most) {
                throw failure(exit_code::usage, reader.place(), "the picture is too large for a sheet at this scale",
                              "make it smaller: --scale 1/4, or leave --scale and --full out");
            }
        }
        made.picture.emplace(view, scale, options.alpha == "premultiplied");
        made.facts.emplace_back("Scale", scale_text(scale));
    }

    const view_options& options;
    input_file input;
    frame_reader reader;
    decoder codec;
    output_file output;
    frame decoded;
    box_tree tree;
    sheet made;
};

void add_meaning(argument_list& list, view_options& options) {
    list.group("How the samples are meant");
    list.choice("--matrix", options.display.matrix, {"bt601", "bt709", "bt2020"}, "NAME", "Matrix of YCbCr samples");
    list.choice("--range", options.display.range, {"auto", "limited", "full"}, "NAME",
                "Range of integer samples, auto being limited for YCbCr,\nfull for RGB");
    list.choice("--transfer", options.display.transfer, {"auto", "display", "linear"}, "NAME",
                "Ready for a screen or linear light, auto being linear\n"
                "for RGB of half, float and fixed point, else display");
    list.choice("--yuv444-order", options.display.yuv444_order, {"YCbCr", "YCrCb", "CbYCr", "CrYCb", "CbCrY", "CrCbY"},
                "NAME", "The three samples of a 4:4:4 YCbCr pixel");
    list.choice("--alpha", options.alpha, {"straight", "premultiplied"}, "NAME",
                "Premultiplied when the colours are already multiplied by alpha");
    list.group(nullptr);
}

}  // namespace

void add_view(command_line& to) {
    const auto options = std::make_shared<view_options>();
    argument_list list = to.add_command("view", k_about, [options] {
        require_distinct({{"IN", options->input}}, {{"OUT", options->output}});
        require_name_of("view", "png", options->output);
        viewing(*options).run();
    });
    list.explain(k_more);
    list.positional("IN.qvr", options->input, "File to look at; '-' is standard input");
    list.text("-o,--output", options->output, "FILE.png", "Picture to write; '-' is standard output");
    list.require("--output");
    list.number("--frame", options->frame, "Frame to show, counted from 0; default: 0");
    list.number("--plane", options->plane,
                "Show this plane alone, as 'qvr info' counts them; default: the whole frame");
    list.text("--scale", options->scale, "1/N|N", "Shrink to 1/4, or enlarge 3 times; default: what fits a sheet");
    list.flag("--full", options->full, "One pixel of the sheet for each of the frame, as --scale 1");
    list.excludes("--full", "--scale");
    list.flag("-q,--quiet", options->quiet, "Print nothing when all goes well");
    list.flag("--json", options->json, k_json_help);
    add_meaning(list, *options);
}

}  // namespace qvr
