// SPDX-License-Identifier: BSD-3-Clause
#include <algorithm>
#include <filesystem>
#include <memory>

#include "codec.h"
#include "command.h"
#include "containers.h"
#include "distinct.h"
#include "json_output.h"

namespace qvr {

namespace {

constexpr const char* k_about = "Carry a compressed frame beside alpha, or stitched chunks, in a .qvr file";

constexpr const char* k_more = R"(
One of two things is wrapped, byte for byte, into one frame:
  --qcx FRAME --alpha MATTE   a compressed QCX frame, with an alpha plane beside it. MATTE is a PNG of 8 or 16 bits
                              (its alpha, or the grey of a grey PNG) or, with --size and --type, raw samples. It must
                              have the size of the compressed frame, and --interlaced must be given when that is
                              interlaced.
  --tiles CHUNK... --size     stitched chunks in the order given; what is in them is not looked at.
The list of chunks ends at the next option or at a last word that ends in .qvr, which is OUT.qvr then; a file of that
name may be a chunk as well, and is replaced only with --force. Under another name OUT comes before --tiles, behind
another option or behind '--'.
OUT.qvr appears only when it is complete. '-' is standard input or output. 'qvr unwrap' takes everything out again.

Examples:
  qvr wrap --qcx frame.bin --alpha matte.png out.qvr --alpha-rle
  qvr wrap --qcx frame.bin --alpha matte.raw --size 1920x1080 --type U16 --interlaced out.qvr
  qvr wrap --tiles a.bin b.bin c.bin --size 3840x2160 out.qvr)";

struct wrap_options {
    std::string qcx;
    std::string alpha;
    std::vector<std::string> tiles;
    std::string output;
    bool alpha_rle = false;
    std::uint32_t slices = 0;
    bool force = false;
    bool json = false;
    layout_options layout;
    run_options run;

    std::vector<std::string> inputs() const { return qcx.empty() ? tiles : std::vector<std::string>{qcx, alpha}; }
};

// Where the list of chunks ends cannot be seen by the parser: OUT.qvr right behind it arrives as its last word.
void check_and_settle_output(wrap_options& options) {
    if (options.qcx.empty() && options.tiles.empty()) {
        fail_usage("there is nothing to wrap",
                   "give --qcx FRAME --alpha MATTE, or --tiles CHUNK...; 'qvr wrap --help' shows both");
    }
    // The parser takes any word for the first chunk.
    if (!options.tiles.empty() && options.tiles.front().rfind("--", 0) == 0) {
        fail_usage("--tiles: there is no chunk behind it",
                   "name the chunks first: --tiles a.bin b.bin --size 1920x1080");
    }
    if (!options.tiles.empty() && options.layout.size.empty()) {
        fail_usage("--tiles needs --size", "the size in pixels of the chunks together: --size 1920x1080");
    }
    if (!options.output.empty()) {
        return;
    }
    const bool found =
        options.tiles.size() > 1 && (ends_in(options.tiles.back(), ".qvr") || options.tiles.back() == "-");
    if (!found) {
        fail_usage("OUT.qvr is missing", options.tiles.empty()
                                             ? "the last word names the file to write"
                                             : "behind a list of chunks only a name that ends in .qvr is taken for it; "
                                               "give another name before --tiles or behind '--'");
    }
    options.output = options.tiles.back();
    options.tiles.pop_back();
    std::error_code ignored;
    if (!options.force && std::filesystem::is_regular_file(options.output, ignored)) {
        throw failure(exit_code::usage, {options.output, {}}, "it is there already: is it OUT.qvr, or a chunk?",
                      "OUT.qvr to be replaced stands before --tiles or behind another option, or give --force");
    }
}

// A word too few on the command line must not cost an input.
void require_other_files(const wrap_options& options) {
    const std::vector<std::string> inputs = options.inputs();
    if (std::count(inputs.begin(), inputs.end(), "-") > 1) {
        fail_usage("standard input can be only one of the files to wrap");
    }
    std::vector<named_file> read;
    read.reserve(inputs.size());
    for (const std::string& input : inputs) {
        read.push_back({"a file to wrap", input});
    }
    require_distinct(read, {{"OUT.qvr", options.output}});
}

// Files one behind the other in one buffer.
class payload_buffer {
  public:
    void read(const std::string& path, std::uint32_t type) {
        constexpr std::size_t k_most = 0xFFFFFFFFu;
        input_file file(path);
        const std::size_t got = file.read_into(bytes, used, k_most - used);
        if (!file.at_end()) {
            throw failure(exit_code::usage, {file.name(), {}}, "it is too large to be wrapped: no frame may pass 4 GiB",
                          "wrap smaller chunks, or fewer into one frame");
        }
        types.push_back(type);
        sizes.push_back(got);
        used += got;
    }

    std::size_t size() const { return used; }
    std::size_t count() const { return sizes.size(); }

    // Valid until the next file is read.
    std::vector<wrapped_payload> payloads() const {
        std::vector<wrapped_payload> all;
        std::size_t at = 0;
        for (std::size_t i = 0; i < sizes.size(); ++i) {
            all.push_back({types[i], {bytes.data() + at, sizes[i]}});
            at += sizes[i];
        }
        return all;
    }

  private:
    std::vector<std::uint8_t> bytes{0};  // never without an address
    std::size_t used = 0;
    std::vector<std::uint32_t> types;
    std::vector<std::size_t> sizes;
};

void read_matte(const wrap_options& options, frame& to) {
    layout_request request = options.layout.resolve();
    request.format.order = QVRUncompressed_OrderAlpha;
    const bool raw = request.width != 0;
    if (raw && !request.format.type) {
        fail_usage("a matte of raw samples needs --type", "--type U8 or --type U16");
    }
    const std::unique_ptr<frame_source> source = open_source(options.alpha, request, "--size 1920x1080 --type U8");
    source->next(to);
    if (raw && source->more()) {
        throw failure(exit_code::data, {source->last_place().file, {}},
                      "it holds more than the " + std::to_string(to.bytes) + " bytes of one matte",
                      "do --size and --type describe it? They say " + layout_text(to.layout));
    }
}

// The layout that stitched chunks make together.
frame_layout stitched_layout(const wrap_options& options) {
    const layout_request request = options.layout.resolve();
    frame_layout layout = empty_layout();
    layout.width = request.width;
    layout.height = request.height;
    layout.frameLayout = request.interlaced ? QVRUncompressed_LayoutInterlaced : QVRUncompressed_LayoutProgressive;
    return layout;
}

std::string summary(const wrap_options& options, const frame& beside, const payload_buffer& inputs) {
    const std::string bytes = std::to_string(inputs.size()) + " bytes";
    if (!options.qcx.empty()) {
        return "a QCX frame of " + bytes + " beside alpha, " + layout_text(beside.layout);
    }
    const std::size_t count = options.tiles.size();
    return std::to_string(count) + (count == 1 ? " chunk of " : " chunks of together ") + bytes + ", " +
           std::to_string(beside.layout.width) + "x" + std::to_string(beside.layout.height) +
           (options.layout.interlaced ? " interlaced" : " progressive");
}

void run_wrap(wrap_options& options) {
    check_and_settle_output(options);
    if (options.json) {
        require_free_output(options.output);
    }
    require_name_of("wrap", "qvr", options.output);
    require_other_files(options);
    payload_buffer inputs;
    frame beside;
    if (options.qcx.empty()) {
        beside.layout = stitched_layout(options);
        for (const std::string& path : options.tiles) {
            inputs.read(path, QVRUncompressed_WrapStitched);
        }
    } else {
        read_matte(options, beside);
        inputs.read(options.qcx, QVRUncompressed_WrapQCX);
    }
    encoder codec(options.run.threads);
    const bytes_view made = codec.wrap(inputs.payloads(), beside, make_compression(options.alpha_rle, options.slices),
                                       {options.qcx == "-" ? "standard input" : options.qcx, {}});
    output_file output(options.output);
    output.write(made.data, made.size);
    output.commit();
    if (!options.run.quiet) {
        say(output.name() + ": " + summary(options, beside, inputs) + " -> " + std::to_string(made.size) + " bytes");
    }
    if (options.run.time) {
        say(output.name() + ": wrap: " + time_text(codec.time(), 1));
    }
    if (options.json) {
        print_result("wrap", output.name(), 1, codec.time(),
                     {{"bytes", made.size},
                      {"payloads", inputs.count()},
                      {"payload_bytes", inputs.size()},
                      {"format", json_format(beside.layout)}});
    }
}

}  // namespace

void add_wrap(command_line& to) {
    const auto options = std::make_shared<wrap_options>();
    argument_list list = to.add_command("wrap", k_about, [options] { run_wrap(*options); });
    list.explain(k_more);
    list.settled_positional("OUT.qvr", options->output, "File to write; '-' is standard output");
    list.group("What is wrapped: --qcx with --alpha, or --tiles");
    list.text("--qcx", options->qcx, "FRAME", "The compressed QCX frame; default: none");
    list.text("--alpha", options->alpha, "MATTE", "The alpha plane beside it: a PNG, or raw samples; default: none");
    list.texts("--tiles", options->tiles, "CHUNK", "The chunks, one or more, in their order; default: none");
    list.group("Its format");
    list.text("--size", options->layout.size, "WxH",
              "Size in pixels of the chunks together, or of a raw MATTE; default: that of a PNG");
    list.text("--type", options->layout.type, "N|NAME",
              "Type of the samples of a raw MATTE: U8 or U16; default: that of a PNG");
    list.suggest("--type", {"U8", "U16"});
    list.flag("--interlaced", options->layout.interlaced, "Mark the frame as interlaced");
    list.flag("--alpha-rle", options->alpha_rle, "Code the alpha plane by run lengths");
    list.number("--slices", options->slices,
                "Slices of the coded alpha plane, each the work of one thread; default: 16", 255);
    list.group(nullptr);
    list.excludes("--qcx", "--tiles");
    list.needs("--qcx", "--alpha");
    list.needs("--alpha", "--qcx");
    list.needs("--type", "--qcx");
    list.needs("--alpha-rle", "--qcx");
    list.needs("--slices", "--alpha-rle");
    options->run.add(list, false);
    list.flag("--force", options->force, "Replace OUT.qvr even when it stands behind chunks and may be one of them");
    list.flag("--json", options->json, k_json_help);
}

}  // namespace qvr
