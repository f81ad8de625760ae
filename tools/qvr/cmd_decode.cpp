// SPDX-License-Identifier: BSD-3-Clause
#include <memory>
#include <optional>

#include "codec.h"
#include "command.h"
#include "containers.h"
#include "qvr_file.h"

namespace qvr {

namespace {

constexpr const char* k_about = "Decode a .qvr file to a PNG picture or raw frames";

constexpr const char* k_more = R"(
OUT that ends in .png becomes a PNG picture: RGBA when the frame has alpha, RGB when it has none, grey for a lone
alpha plane. Frames of other orders and types are decoded to raw frames. Any other OUT gets the raw samples of all
frames one after the other, in the layout that 'qvr info' shows or in the one asked for; any order that holds the
same kind of samples will do (for example BGRA for a frame made from RGBA). No colour is ever converted.
OUT appears only when it is complete. '-' is standard input or output.

Examples:
  qvr decode photo.qvr photo.png
  qvr decode clip.qvr clip.yuv --order YUY2
  qvr decode clip.qvr frame7.raw --frame 7
  qvr decode clip.qvr - --order v210 | playout)";

struct decode_options {
    std::string input;
    std::string output;
    std::optional<std::uint32_t> only_frame;
    layout_options layout;
    run_options run;
};

void refuse_chunks(const frame_layout& own, const location& where) {
    if (own.colorComponentOrder == 0) {
        throw failure(exit_code::usage, where,
                      "the frame holds wrapped chunks of another codec, which cannot be decoded to samples",
                      "'qvr unwrap' takes them out; 'qvr info' shows them");
    }
}

class decoding {
  public:
    explicit decoding(const decode_options& given)
        : options(given),
          input(given.input),
          reader(input),
          codec(given.run.threads),
          sink(open_sink(given.output, given.layout.resolve())) {}

    void run() {
        while (reader.next()) {
            if (!options.only_frame || *options.only_frame == reader.number()) {
                require_room();
                decode_one();
            }
            if (options.only_frame && *options.only_frame == reader.number()) {
                break;
            }
        }
        require_some();
        sink->commit();
        const std::string name = options.output == "-" ? "standard output" : options.output;
        if (!options.run.quiet) {
            say(name + ": " + std::to_string(frames) + (frames == 1 ? " frame, " : " frames, ") +
                layout_text(current.layout) + ", " + std::to_string(codec.time().raw_bytes) + " bytes of samples");
        }
        if (options.run.time) {
            say(name + ": decode: " + time_text(codec.time(), frames));
        }
    }

  private:
    void decode_one() {
        const location where = reader.place();
        const frame_layout own = codec.read_layout(reader.bytes(), where);
        refuse_chunks(own, where);
        const frame_layout before = current.layout;
        current.layout = sink->wanted(own, where);
        codec.decode(reader.bytes(), current, where);
        if (frames > 0 && layout_text(before) != layout_text(current.layout)) {
            warn(input.name(), where.spot + ": the layout changes here to " + layout_text(current.layout));
        }
        sink->put(current);
        ++frames;
    }

    void require_room() {
        if (sink->holds_one_frame() && !options.only_frame && reader.more()) {
            throw failure(exit_code::usage, {input.name(), {}},
                          "the file holds more than one frame, but a PNG holds only one",
                          "choose one with --frame N, counted from 0, or decode to raw frames");
        }
    }

    void require_some() {
        if (frames > 0) {
            return;
        }
        if (reader.number() == 0) {
            throw failure(exit_code::data, {input.name(), {}}, "there is no frame in it: the file is empty");
        }
        throw failure(exit_code::usage, {input.name(), {}},
                      "there is no frame " + std::to_string(*options.only_frame) + ": the file holds " +
                          std::to_string(reader.number()) + ", counted from 0");
    }

    const decode_options& options;
    input_file input;
    frame_reader reader;
    decoder codec;
    std::unique_ptr<frame_sink> sink;
    frame current;
    unsigned long long frames = 0;
};

}  // namespace

void add_decode(command_line& to) {
    const auto options = std::make_shared<decode_options>();
    argument_list list = to.add_command("decode", k_about, [options] { decoding(*options).run(); });
    list.explain(k_more);
    list.positional("IN.qvr", options->input, "File to decode; '-' is standard input");
    list.positional("OUT", options->output, "NAME.png, or raw frames; '-' is standard output");
    list.number("--frame", options->only_frame, "Decode this frame alone, counted from 0");
    options->layout.add_format(list, "Order of the samples to write, by number or name; default: the frame's own",
                               "Type of the samples to write, by number or name; default: the frame's own");
    options->layout.add_strides(list);
    options->layout.add_container(list, "--to");
    options->layout.add_start(list);
    options->layout.add_rate(list);
    options->layout.add_strict(list);
    options->run.add(list);
}

}  // namespace qvr
