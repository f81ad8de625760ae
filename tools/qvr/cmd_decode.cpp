// SPDX-License-Identifier: BSD-3-Clause
#include <memory>
#include <optional>

#include "codec.h"
#include "command.h"
#include "containers.h"
#include "json_output.h"
#include "qvr_file.h"

namespace qvr {

namespace {

constexpr const char* k_about = "Decode a .qvr file to pictures, a Y4M file or raw frames";

constexpr const char* k_more = R"(
The name of OUT says what it becomes: .png, .pam, .ppm, .pgm or .exr a picture (RGBA when the frame has alpha, RGB
when it has none, grey for a lone alpha plane), .y4m a Y4M file. A name with a number in it, as in frame.%04d.png,
stands for a file for each frame; each appears as soon as it is complete. Any other OUT gets the raw samples of all
frames one after the other, in the layout that 'qvr info' shows, in the one that its name says (clip.yuy2), or in the
one asked for; any order that holds the same kind of samples will do (for example BGRA for a frame made from RGBA).
No colour is ever converted and no sample changed: what OUT cannot hold is refused. 'qvr formats' lists what each kind
of file keeps. What is lost besides is said in a warning; --strict refuses instead.
OUT appears only when it is complete. '-' is standard input or output.

Examples:
  qvr decode photo.qvr photo.png
  qvr decode clip.qvr clip.y4m --rate 30000:1001
  qvr decode clip.qvr frames/frame.%04d.png --start 1
  qvr decode clip.qvr clip.yuv --order YUY2
  qvr decode clip.qvr frame7.raw --frame 7
  qvr decode clip.qvr - --format v210 | playout)";

struct decode_options {
    std::string input;
    std::string output;
    std::optional<std::uint32_t> only_frame;
    bool json = false;
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

std::unique_ptr<frame_sink> open_output(const decode_options& options) {
    const layout_request request = options.layout.resolve();
    if (container_of_output(options.output, request).name == std::string("qvr")) {
        fail_usage(options.output + ": decoding does not make a .qvr file",
                   "'qvr convert' makes one of another; a name with another ending gets pictures or raw frames");
    }
    return open_sink(options.output, request);
}

class decoding {
  public:
    explicit decoding(const decode_options& given)
        : options(given), input(given.input), reader(input), codec(given.run.threads), sink(open_output(given)) {}

    void run() {
        if (options.json) {
            require_free_output(options.output);
        }
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
        if (options.json) {
            print_result("decode", name, frames, codec.time(), {{"format", json_format(current.layout)}});
        }
    }

  private:
    void decode_one() {
        const location where = reader.place();
        const frame_layout own = codec.read_layout(reader.bytes(), where);
        refuse_chunks(own, where);
        tell_of_payload(where);
        const frame_layout before = current.layout;
        current.layout = sink->wanted(own, where);
        codec.decode(reader.bytes(), current, where);
        if (frames > 0 && layout_text(before) != layout_text(current.layout)) {
            warn(input.name(), where.spot + ": the layout changes here to " + layout_text(current.layout));
        }
        sink->put(current);
        ++frames;
    }

    // The alpha plane beside a compressed frame is decoded like any other; the frame itself is not.
    void tell_of_payload(const location& where) {
        const bytes_view bytes = reader.bytes();
        const bool carries = QVRUncompressed_ReadWrapCount(bytes.data, static_cast<std::uint32_t>(bytes.size)) > 0;
        if (carries && !payload_told) {
            warn(input.name(), where.spot +
                                   ": only the alpha plane is decoded; 'qvr unwrap' takes out the compressed frame "
                                   "beside it");
        }
        payload_told = payload_told || carries;
    }

    void require_room() {
        if (sink->holds_one_frame() && !options.only_frame && reader.more()) {
            const container& kind = container_of_output(options.output, options.layout.resolve());
            throw failure(exit_code::usage, {input.name(), {}},
                          std::string("the file holds more than one frame, but ") + kind.called + " holds only one",
                          "choose one with --frame N, counted from 0, or decode to a numbered sequence: name it like "
                          "frame.%04d.png");
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
    bool payload_told = false;  // once for a file
};

}  // namespace

void add_decode(command_line& to) {
    const auto options = std::make_shared<decode_options>();
    argument_list list = to.add_command("decode", k_about, [options] { decoding(*options).run(); });
    list.explain(k_more);
    list.positional("IN.qvr", options->input, "File to decode; '-' is standard input");
    list.positional("OUT", options->output, "Picture, Y4M file, sequence or raw frames; '-' is standard output");
    list.number("--frame", options->only_frame, "Decode this frame alone, counted from 0; default: all frames");
    list.group("Samples to write");
    options->layout.add_format(list, "Order of the samples to write, by number or name; default: the frame's own",
                               "Type of the samples to write, by number or name; default: the frame's own");
    options->layout.add_strides(list);
    list.group("Files to write");
    options->layout.add_container(list, "--to");
    options->layout.add_start(list);
    options->layout.add_rate(list);
    options->layout.add_strict(list);
    list.group(nullptr);
    options->run.add(list);
    list.flag("--json", options->json, k_json_help);
}

}  // namespace qvr
