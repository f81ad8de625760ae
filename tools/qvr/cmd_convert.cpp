// SPDX-License-Identifier: BSD-3-Clause
#include <filesystem>
#include <memory>

#include "codec.h"
#include "command.h"
#include "containers.h"
#include "relayout.h"

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
};

void require_distinct(const convert_options& options) {
    std::error_code ignored;
    if (std::filesystem::is_regular_file(options.input, ignored) &&
        std::filesystem::equivalent(options.input, options.output, ignored)) {
        fail_usage("IN and OUT are the same file: " + options.input, "write to a file of another name");
    }
}

class converting {
  public:
    explicit converting(const convert_options& given) : options(given), layouts(given.run.threads) {
        layout_request from = options.in.resolve();
        from.threads = options.run.threads;
        source = open_source(options.input, from, "--size 1920x1080 --format UYVY");
        layout_request to = options.out.resolve();
        to.threads = options.run.threads;
        to.how = make_compression(options.alpha_rle, options.slices);
        keep_rate(to);
        sink = open_sink(options.output, to);
    }

    void run() {
        frame current;
        unsigned long long frames = 0;
        frame_layout written = empty_layout();
        while (source->next(current)) {
            const location where = source->last_place();
            if (frames == 1 && sink->holds_one_frame()) {
                throw failure(exit_code::usage, {where.file, {}},
                              "it holds more than one frame, but OUT takes only one",
                              "write a numbered sequence: name OUT like frame.%04d.png");
            }
            written = sink->wanted(current.layout, where);
            sink->put(layouts.into(written, current, where));
            ++frames;
        }
        sink->commit();
        if (!options.run.quiet) {
            const std::string name = options.output == "-" ? "standard output" : options.output;
            say(name + ": " + std::to_string(frames) + (frames == 1 ? " frame, " : " frames, ") + layout_text(written));
        }
    }

  private:
    // The rate goes from file to file where both can say one.
    void keep_rate(layout_request& to) const {
        if (container_of_output(options.output, to).keeps_rate) {
            to.rate = to.rate ? to.rate : source->rate();
        } else {
            lose_rate(source->rate(), {source->last_place().file, {}}, *to.losses);
        }
    }

    const convert_options& options;
    relayout layouts;
    std::unique_ptr<frame_source> source;
    std::unique_ptr<frame_sink> sink;
};

void run_convert(convert_options& options) {
    require_distinct(options);
    options.in.strict = options.out.strict;
    converting(options).run();
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
    list.text("--size", options->in.size, "WxH", "IN holds raw frames of this size in pixels");
    options->in.add_format(list, "Order of the samples of IN, by number or name: see 'qvr formats'",
                           "Type of the samples of IN, by number or name: see 'qvr formats'");
    options->in.add_strides(list);
    list.flag("--interlaced", options->in.interlaced, "Mark the frames as interlaced");
    options->in.add_start(list);
    options->out.add_format(list, "Order of the samples of OUT; default: the one that fits IN",
                            "Type of the samples of OUT; default: that of IN", "--out-");
    options->out.add_strides(list, "--out-");
    options->out.add_start(list, "--out-");
    options->out.add_rate(list);
    list.flag("--alpha-rle", options->alpha_rle, "Code the alpha plane of a .qvr file by run lengths");
    list.number("--slices", options->slices,
                "Slices of the coded alpha plane, each the work of one thread; default: 16", 255);
    list.needs("--slices", "--alpha-rle");
    options->out.add_strict(list);
    options->run.add(list, false);
}

}  // namespace qvr
