// SPDX-License-Identifier: BSD-3-Clause
#include <cstdio>
#include <memory>

#include "bench.h"
#include "command.h"
#include "json_output.h"

namespace qvr {

namespace {

constexpr const char* k_about = "Measure how fast this machine encodes and decodes";

constexpr const char* k_more = R"(
For each format a frame of noise with a soft matte as its alpha is copied, encoded and decoded in turns; the table
shows the median of each. 'memcpy=1' is the speed as a share of memcpy's in the same run. Megabytes are those of
the raw samples. Without --order and --type a dozen usual formats are measured; one of them alone means all formats
that it goes with. For figures to rely on, let nothing else run and give --seconds 2 or more.

Examples:
  qvr bench
  qvr bench --order UYVY --size 3840x2160 --threads 0
  qvr bench --order RGBA --type U8 --alpha-rle --json
  qvr bench --plot speed.svg)";

struct bench_options {
    layout_options layout;
    std::uint32_t threads = 1;
    bool alpha_rle = false;
    double seconds = 0.2;
    bool json = false;
    std::string plot;
};

constexpr std::pair<std::uint32_t, std::uint32_t> k_usual[] = {
    {QVRUncompressed_OrderCbYCrY, QVRUncompressed_TypeU8},
    {QVRUncompressed_OrderYCbYCr, QVRUncompressed_TypeU8},
    {QVRUncompressed_OrderCbYCrY, QVRUncompressed_TypeU10Packed},
    {QVRUncompressed_OrderCbYCrY, QVRUncompressed_TypeU16},
    {QVRUncompressed_OrderPlanar420, QVRUncompressed_TypeU8},
    {QVRUncompressed_OrderYCbCr444, QVRUncompressed_TypeU10},
    {QVRUncompressed_OrderRGB, QVRUncompressed_TypeU8},
    {QVRUncompressed_OrderRGB, QVRUncompressed_TypeU12},
    {QVRUncompressed_OrderRGBA, QVRUncompressed_TypeU8},
    {QVRUncompressed_OrderRGBA, QVRUncompressed_TypeU16},
    {QVRUncompressed_OrderRGB, QVRUncompressed_TypeHalf},
    {QVRUncompressed_OrderAlpha, QVRUncompressed_TypeU8}};

bench_setting setting_of(const bench_options& options) {
    const layout_request asked = options.layout.resolve();
    const format_choice& format = asked.format;
    bench_setting setting;
    if (!format.order && !format.type) {
        setting.formats.assign(std::begin(k_usual), std::end(k_usual));
    } else {
        for (const order_info& order : all_orders()) {
            for (const type_info& type : all_types()) {
                if (format.order.value_or(order.value) == order.value &&
                    format.type.value_or(type.value) == type.value && is_supported(order.value, type.value)) {
                    setting.formats.emplace_back(order.value, type.value);
                }
            }
        }
    }
    if (setting.formats.empty()) {
        require_supported(*format.order, *format.type);
    }
    setting.width = asked.width;
    setting.height = asked.height;
    setting.threads = options.threads;
    setting.alpha_rle = options.alpha_rle;
    setting.seconds = options.seconds;
    return setting;
}

void run(const bench_options& options) {
    if (!options.plot.empty() && !ends_in(options.plot, ".svg") && !ends_in(options.plot, ".png")) {
        fail_usage("--plot " + options.plot + ": this is neither an SVG nor a PNG",
                   "give a name that ends in .svg or .png");
    }
    const bench_report report = run_bench(setting_of(options));
    if (options.json) {
        print_bench_json(report);
    } else {
        std::fputs(bench_table(report).c_str(), stdout);
    }
    finish_standard_output();
    if (!options.plot.empty()) {
        write_bench_plot(report, options.plot);
    }
}

}  // namespace

void add_bench(command_line& to) {
    const auto options = std::make_shared<bench_options>();
    options->layout.size = "1920x1080";
    argument_list list = to.add_command("bench", k_about, [options] { run(*options); });
    list.explain(k_more);
    options->layout.add_format(list, "Only this order, by number or name; default: see below",
                               "Only this type, by number or name; default: see below");
    list.text("--size", options->layout.size, "WxH", "Size of the frame; default: 1920x1080");
    list.flag("--alpha-rle", options->alpha_rle, "Code alpha by run lengths where the format stores any");
    constexpr std::uint32_t k_most_threads = 1024;
    list.number("--threads", options->threads,
                "Threads of the codec, 0: one for each processor; default: 1, as memcpy has", k_most_threads);
    list.number("--seconds", options->seconds, "Time for each format; default: 0.2, and three rounds at least", 0,
                3600);
    list.flag("--json", options->json, k_json_help);
    list.text("--plot", options->plot, "FILE",
              "Draw the speeds into NAME.svg or NAME.png as well; default: no picture");
}

}  // namespace qvr
