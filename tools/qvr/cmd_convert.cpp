// SPDX-License-Identifier: BSD-3-Clause
#include <filesystem>
#include <memory>

#include "command.h"
#include "container_files.h"
#include "containers.h"
#include "distinct.h"
#include "frame_work.h"
#include "json_output.h"
#include "sequence.h"

namespace qvr {

namespace {

constexpr const char* k_about = "Convert between kinds of files and orders of samples, without loss";

constexpr const char* k_more = R"(
IN and OUT are any of the kinds of files that 'qvr formats' lists: .qvr, Y4M, PNG, PAM, PPM, PGM, OpenEXR, raw frames,
or numbered sequences of them, as in frame.%04d.png. '-' is standard input or output; --from and --to say what it
holds where its first bytes, or the name, do not.

Samples are moved, never changed: there is no conversion of colours (RGB and YCbCr are not made of each other), no
scaling, no other chroma sampling, no other bit depth. What OUT cannot keep besides - alpha, interlacing, a frame
rate - is said in a warning, or refused with --strict.

Raw frames are described by --size and --format (or --order and --type) as IN, by --out-format (or --out-order and
--out-type) as OUT. A name that ends in a format, such as clip.uyvy, describes them as well.

Examples:
  qvr convert photo.png photo.pam
  qvr convert clip.uyvy clip.yuy2 --size 1920x1080
  qvr convert clip.uyvy clip.y4m --size 1920x1080 --rate 50
  qvr convert shot/frame.%04d.exr shot.qvr
  qvr convert plain.qvr coded.qvr --alpha-rle)";

struct convert_options {
    std::string input;
    std::string output;
    layout_options in;
    layout_options out;
    bool alpha_rle = false;
    std::uint32_t slices = 0;
    run_options run;
    work_options work;
    std::string manifest;
    bool json = false;
};

constexpr const char* k_raw_example = "--size 1920x1080 --format UYVY";

bool is_qvr(const container& kind) {
    return kind.name == std::string("qvr");
}

// One .qvr file, which several workers can decode. What standard input holds cannot be told without reading it.
bool is_stream(const std::string& path, const layout_request& request) {
    std::error_code ignored;
    if (sequence_pattern::of_input(path) || !std::filesystem::is_regular_file(path, ignored)) {
        return false;
    }
    input_file file(path);
    return is_qvr(container_of_input(path, file, request, k_raw_example));
}

std::unique_ptr<frame_input> open_input(const std::string& path, const layout_request& request) {
    if (!is_stream(path, request)) {
        return open_picture_input(path, request, k_raw_example, nullptr);
    }
    return open_stream_input(path, [request](const frame_layout& own, const frame_job& in) {
        return layout_from_qvr(own, in.bitstream(), in.place, request);
    });
}

std::unique_ptr<frame_output> open_output(const std::string& path, const layout_request& request,
                                          const std::string& manifest) {
    const bool stream = is_qvr(container_of_output(path, request)) && !sequence_pattern::parse(path);
    if (!manifest.empty() && sequence_pattern::parse(path)) {
        fail_usage("--manifest: a numbered sequence has none, only a .qvr file with all frames",
                   "leave it out, or name OUT like clip.qvr");
    }
    if (!stream && !manifest.empty()) {
        fail_usage("--manifest: only .qvr files have one", "leave it out, or name OUT like clip.qvr");
    }
    if (!stream) {
        return open_picture_output(path, request);
    }
    return open_stream_output(path, request.how, request.becomes, manifest,
                              [request, path](const frame_layout& own, const location&) {
                                  return layout_into_qvr(own, {path, {}}, request);
                              });
}

// The rate goes from file to file where both can say one.
void keep_rate(const frame_input& input, const convert_options& options, layout_request& to) {
    if (container_of_output(options.output, to).keeps_rate) {
        to.rate = to.rate ? to.rate : input.rate();
    } else {
        lose_rate(input.rate(), {input_text(options.input), {}}, *to.losses);
    }
}

void run_convert(convert_options& options) {
    if (options.json) {
        require_free_output(options.output);
    }
    require_distinct({{"IN", options.input}},
                     {{"OUT", options.output}, {"--manifest", options.manifest}, {"--json", options.json ? "-" : ""}});
    options.in.strict = options.out.strict;
    layout_request from = options.in.resolve();
    from.threads = options.run.threads;
    layout_request to = options.out.resolve();
    to.threads = options.run.threads;
    to.how = make_compression(options.alpha_rle, options.slices);
    to.becomes = options.work.becomes();
    const auto open_again = [&] { return open_input(options.input, from); };
    work_ends ends = {"convert", input_text(options.input), open_again(), nullptr, open_again};
    keep_rate(*ends.input, options, to);
    const bool codes = is_qvr(container_of_output(options.output, to));
    if (options.alpha_rle && !codes) {
        warn(options.output, "--alpha-rle changes nothing: only .qvr files hold coded alpha");
    }
    ends.output = open_output(options.output, to, options.manifest);
    const work_report report = do_work(ends, options.work, options.run);
    if (options.alpha_rle && codes) {
        tell_of_no_alpha_to_code(report.layout, ends.input_name, *to.losses);
    }
    say_report(ends, report, options.run, "");
    if (options.json) {
        print_result(ends.task, ends.output->name(), report.frames, report.time,
                     {{"format", json_format(report.layout)}});
    }
}

}  // namespace

void add_convert(command_line& to) {
    const auto options = std::make_shared<convert_options>();
    argument_list list = to.add_command("convert", k_about, [options] { run_convert(*options); });
    list.explain(k_more);
    list.positional("IN", options->input, "File to read; '-' is standard input");
    list.positional("OUT", options->output, "File to write; '-' is standard output");
    options->in.add_container(list, "--from");
    options->out.add_container(list, "--to");
    list.text("--size", options->in.size, "WxH",
              "IN holds raw frames of this size in pixels; default: IN says its size");
    options->in.add_format(
        list, "Order of the samples of IN, by number or name: see 'qvr formats';\ndefault: what IN or its name says",
        "Type of the samples of IN, by number or name: see 'qvr formats';\ndefault: what IN or its name says");
    options->in.add_strides(list);
    list.flag("--interlaced", options->in.interlaced, "Mark the frames as interlaced");
    options->in.add_start(list, layout_options::side::input);
    options->out.add_format(list, "Order of the samples of OUT; default: the one that fits IN",
                            "Type of the samples of OUT; default: that of IN", "--out-");
    options->out.add_strides(list, "--out-");
    options->out.add_start(list, layout_options::side::output, "--out-");
    options->out.add_rate(list);
    list.flag("--alpha-rle", options->alpha_rle, "Code the alpha plane of a .qvr file by run lengths");
    list.number("--slices", options->slices,
                "Slices of the coded alpha plane, each the work of one thread; default: 16", 255);
    list.needs("--slices", "--alpha-rle");
    options->out.add_strict(list);
    options->run.add(list, true, false);
    options->work.add(list);
    options->work.add_manifest(list, options->manifest);
    list.flag("--json", options->json, k_json_help);
}

}  // namespace qvr
