// SPDX-License-Identifier: BSD-3-Clause
#include <cstdio>
#include <memory>

#include "command.h"
#include "containers.h"
#include "distinct.h"
#include "frame_work.h"
#include "json_output.h"

namespace qvr {

namespace {

constexpr const char* k_about = "Encode pictures, Y4M files or raw frames to a .qvr file";

constexpr const char* k_more = R"(
IN is a PNG, PAM, PPM, PGM or OpenEXR picture, a Y4M file, a numbered sequence of files as in frame.%04d.png or, when
--size is given, raw frames one after the other. OUT.qvr appears only when all frames are in it. '-' is standard
input or output. 'qvr formats' lists the kinds of files and what each keeps.

A picture becomes RGBA when it has alpha and RGB when it has none; --order can ask for ARGB, BGRA, RGB, BGR, RGBA,
ABGR or Alpha (the alpha channel alone, or the grey of a grey picture, which PAM and PGM become by themselves). No
colour is ever converted, and the type follows the picture's depth. Colour profile, gamma and texts are not part of a
frame. Y4M becomes I420, UYVY, YUV444, YUVA444 or Alpha.

Only types U8 and U16 store alpha. With any other type the alpha of an order that has it is left out. What is lost is
said in a warning; --strict refuses instead.

Examples:
  qvr encode photo.png photo.qvr --alpha-rle
  qvr encode clip.y4m clip.qvr
  qvr encode shot/frame.%04d.exr shot.qvr --start 1001
  qvr encode clip.yuv clip.qvr --size 1920x1080 --format UYVY
  qvr encode clip.v210 clip.qvr --size 1920x1080 --interlaced
  qvr encode long.yuv long.qvr --size 1920x1080 --format UYVY --resume -j 8
  capture | qvr encode - clip.qvr --size 1280x720 --order I420 --type U8)";

struct encode_options {
    std::string input;
    std::string output;
    bool alpha_rle = false;
    std::uint32_t slices = 0;
    bool json = false;
    layout_options layout;
    run_options run;
    work_options work;
    std::string manifest;
};

void say_losses(const encode_options& options, const frame_source& source, const frame_layout& layout,
                loss_log& losses) {
    const location where = {source.last_place().file, {}};
    if (!source.alpha_is_made_up()) {
        lose_unstored_alpha(layout, where, losses);
    }
    lose_rate(source.rate(), where, losses);
    if (options.alpha_rle) {
        tell_of_no_alpha_to_code(layout, where.file, losses);
    }
}

std::string sizes_text(std::uint64_t raw_bytes, std::uint64_t bytes) {
    char sizes[120];
    std::snprintf(sizes, sizeof sizes, ", %llu bytes raw -> %llu bytes (%.1f %%)",
                  static_cast<unsigned long long>(raw_bytes), static_cast<unsigned long long>(bytes),
                  100.0 * static_cast<double>(bytes) / static_cast<double>(raw_bytes));
    return sizes;
}

void run_encode(const encode_options& options) {
    if (options.json) {
        require_free_output(options.output);
    }
    require_distinct({{"IN", options.input}},
                     {{"OUT", options.output}, {"--manifest", options.manifest}, {"--json", options.json ? "-" : ""}});
    require_name_of("encode", "qvr", options.output);
    const layout_request request = options.layout.resolve();
    const compression how = make_compression(options.alpha_rle, options.slices);
    const auto open_input = [&] {
        return open_picture_input(options.input, request, "--size 1920x1080 --order UYVY --type U8",
                                  [&](const frame_source& source, const frame_layout& layout) {
                                      say_losses(options, source, layout, *request.losses);
                                  });
    };
    const work_ends ends = {"encode", input_text(options.input), open_input(),
                            open_stream_output(options.output, how, options.work.becomes(), options.manifest, nullptr),
                            open_input};
    const work_report report = do_work(ends, options.work, options.run);
    say_report(ends, report, options.run, sizes_text(report.raw_bytes, ends.output->bytes_written().value_or(0)));
    if (options.json) {
        print_result(ends.task, ends.output->name(), report.frames, report.time,
                     {{"bytes", ends.output->bytes_written().value_or(0)}, {"format", json_format(report.layout)}});
    }
}

}  // namespace

void add_encode(command_line& to) {
    const auto options = std::make_shared<encode_options>();
    argument_list list = to.add_command("encode", k_about, [options] { run_encode(*options); });
    list.explain(k_more);
    list.positional("IN", options->input, "Picture, Y4M file, sequence or raw frames; '-' is standard input");
    list.positional("OUT.qvr", options->output, "File to write; '-' is standard output");
    list.group("Alpha");
    list.flag("--alpha-rle", options->alpha_rle, "Code the alpha plane by run lengths");
    list.number("--slices", options->slices,
                "Slices of the coded alpha plane, each the work of one thread; default: 16", 255);
    list.needs("--slices", "--alpha-rle");
    list.group("Raw frames, and the order that a picture is put into");
    options->layout.add_format(list,
                               "Order of the samples, by number or name: see 'qvr formats'; default:\nwhat the name of "
                               "IN says, as in clip.v210, or what a picture or Y4M file holds",
                               "Type of a sample, by number or name: see 'qvr formats'; default:\nwhat the name of IN "
                               "says, or what a picture or Y4M file holds");
    list.text(
        "--size", options->layout.size, "WxH",
        "IN holds raw frames of this size in pixels; default: IN is a picture or a\nY4M file and says its size itself");
    options->layout.add_strides(list);
    list.flag("--interlaced", options->layout.interlaced, "Mark the frames as interlaced");
    list.group("Files to read");
    options->layout.add_container(list, "--from");
    options->layout.add_start(list, layout_options::side::input);
    options->layout.add_strict(list);
    list.group(nullptr);
    options->run.add(list, true);
    options->work.add(list);
    options->work.add_manifest(list, options->manifest);
    list.flag("--json", options->json, k_json_help);
}

}  // namespace qvr
