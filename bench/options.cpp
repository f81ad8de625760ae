// SPDX-License-Identifier: BSD-3-Clause
#include "options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include "instruction_sets.h"

namespace bench {

namespace {

constexpr const char* k_about =
    "Times the library and, in turn with it, what else could do the same: memcpy, libyuv, LZ4, zstd, one thread.\n"
    "Results are ratios: 2.00 x means that the library takes half the reference's time.";

constexpr const char* k_more = R"(
Try:
  qvr_bench --quick                                   everything, with few repetitions
  qvr_bench --filter '^pairs/encode/7-RGBA/1-U8'      one pair of order and type, at each size
  qvr_bench --filter '^alpha/.*hair' --cpu ssse3      as on an older processor
  qvr_bench --list                                    the names that --filter is matched with)";

frame_size parse_size(const std::string& text) {
    frame_size size{};
    char end = 0;
    if (std::sscanf(text.c_str(), "%ux%u%c", &size.width, &size.height, &end) != 2 || size.width < 2 ||
        size.height < 2 || size.width > 16384 || size.height > 16384 || size.width % 2 != 0 || size.height % 2 != 0) {
        throw CLI::ValidationError("--size", "wants even numbers from 2 to 16384, as in 1920x1080");
    }
    return size;
}

std::vector<std::string> instruction_set_names() {
    std::vector<std::string> names = {"all"};
    for (const instruction_set& row : all_instruction_sets()) {
        names.emplace_back(row.name);
    }
    return names;
}

}  // namespace

std::string to_text(const frame_size& size) {
    return std::to_string(size.width) + "x" + std::to_string(size.height);
}

options parse_options(int argc, char** argv) {
    options chosen;
    std::vector<std::string> sizes;
    CLI::App app(k_about, "qvr_bench");
    app.footer(k_more);
    app.add_option("--filter", chosen.filter, "Only cases whose name this regular expression finds")
        ->type_name("REGEX");
    app.add_option("--size", sizes, "Frame size instead of 1920x1080 and 3840x2160; may be repeated, smallest first")
        ->type_name("WxH");
    app.add_option("--cpu", chosen.cpu, "Most that the library may use of the processor")
        ->check(CLI::IsMember(instruction_set_names()));
    app.add_option("--threads", chosen.threads, "Most threads that are tried (default: the processors there are)")
        ->check(CLI::Range(1u, 256u));
    app.add_option("--json", chosen.json_file, "Write all results to this file")->type_name("FILE");
    app.add_flag("--quick", chosen.quick, "Few repetitions: a first impression, wider spread");
    app.add_flag("--list", chosen.list, "Print the names of the cases and end");
    try {
        app.parse(argc, argv);
        if (!sizes.empty()) {
            chosen.sizes.clear();
        }
        for (const std::string& text : sizes) {
            chosen.sizes.push_back(parse_size(text));
        }
    } catch (const CLI::ParseError& error) {
        std::exit(app.exit(error));
    }
    if (chosen.threads == 0) {
        chosen.threads = std::max(1u, std::thread::hardware_concurrency());
    }
    return chosen;
}

}  // namespace bench
