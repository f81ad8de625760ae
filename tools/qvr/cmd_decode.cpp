// SPDX-License-Identifier: BSD-3-Clause
#include <memory>
#include <optional>

#include "command.h"
#include "containers.h"
#include "distinct.h"
#include "frame_work.h"
#include "json_output.h"

namespace qvr {

namespace {

constexpr const char* k_about = "Decode a .qvr file to pictures, a Y4M file or raw frames";

constexpr const char* k_more = R"(
The name of OUT says what it becomes: .png, .pam, .ppm, .pgm or .exr a picture (RGBA when the frame has alpha, RGB
when it has none, grey for a lone alpha plane), .y4m a Y4M file. A name with a number in it, as in frame.%04d.png,
stands for a file for each frame; each appears as soon as it is complete. Any other OUT, but none named like a picture
or clip that is not written (.tiff, .mov), gets the raw samples of all frames one after the other, in the layout that
'qvr info' shows, in the one that its name says (clip.yuy2), or in the one asked for; any order that holds the same
kind of samples will do (for example BGRA for a frame made from RGBA).
No colour is ever converted and no sample changed: what OUT cannot hold is refused. 'qvr formats' lists what each kind
of file keeps. What is lost besides is said in a warning; --strict refuses instead.
OUT appears only when it is complete. '-' is standard input or output.

Examples:
  qvr decode photo.qvr photo.png
  qvr decode clip.qvr clip.y4m --rate 30000:1001
  qvr decode titles.qvr frames/frame.%04d.png --start 1
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
    work_options work;
};

// The alpha plane beside a compressed frame is decoded like any other; the frame itself is not. Said once for a file.
void tell_of_payload(const frame_layout& own, const frame_job& in, warn_once& once) {
    const bytes_view stream = in.bitstream();
    const bool decodes = own.colorComponentOrder != 0;
    if (decodes && QVRUncompressed_ReadWrapCount(stream.data, static_cast<std::uint32_t>(stream.size)) > 0) {
        once(in.place.file, "only alpha planes are decoded; 'qvr unwrap' takes out the compressed frames beside them");
    }
}

void run_decode(const decode_options& options) {
    if (options.json) {
        require_free_output(options.output);
    }
    require_distinct({{"IN", options.input}}, {{"OUT", options.output}});
    layout_request request = options.layout.resolve();
    if (container_of_output(options.output, request).name == std::string("qvr")) {
        fail_usage(options.output + ": decoding does not make a .qvr file",
                   "'qvr convert' makes one of another; a name with another ending gets pictures or raw frames");
    }
    request.becomes = options.work.becomes();
    work_options work = options.work;
    if (options.only_frame) {
        work.range.range = std::to_string(*options.only_frame);
    }
    warn_once once;
    const auto open_input = [&] {
        return open_stream_input(options.input, [&](const frame_layout& own, const frame_job& in) {
            tell_of_payload(own, in, once);
            return own;
        });
    };
    const work_ends ends = {"decode", input_text(options.input), open_input(),
                            open_picture_output(options.output, request), open_input};
    const work_report report = do_work(ends, work, options.run);
    say_report(ends, report, options.run, ", " + std::to_string(report.raw_bytes) + " bytes of samples");
    if (options.json) {
        print_result(ends.task, ends.output->name(), report.frames, report.time,
                     {{"format", json_format(report.layout)}});
    }
}

}  // namespace

void add_decode(command_line& to) {
    const auto options = std::make_shared<decode_options>();
    argument_list list = to.add_command("decode", k_about, [options] { run_decode(*options); });
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
    options->layout.add_start(list, layout_options::side::output);
    options->layout.add_rate(list);
    options->layout.add_strict(list);
    list.group(nullptr);
    options->run.add(list, true);
    options->work.add(list);
    list.excludes("--frame", "--range");
    list.excludes("--frame", "--chunk");
    list.flag("--json", options->json, k_json_help);
}

}  // namespace qvr
