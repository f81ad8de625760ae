// SPDX-License-Identifier: BSD-3-Clause
//
// Measures how fast this machine encodes and decodes, beside memcpy in the same run.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "file_io.h"
#include "frame.h"

namespace qvr {

struct bench_setting {
    std::vector<std::pair<std::uint32_t, std::uint32_t>> formats;  // order and type
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t threads = 1;  // 0: one for each processor
    bool alpha_rle = false;
    double seconds = 0;  // for each format; three rounds are made in any case
};

// Seconds are the medians of the rounds, each of which copies, encodes and decodes the frame once.
struct bench_result {
    std::uint32_t order = 0;
    std::uint32_t type = 0;
    std::uint64_t raw_bytes = 0;
    std::uint64_t coded_bytes = 0;
    unsigned rounds = 0;
    double copy = 0;
    double encode = 0;
    double decode = 0;

    double megabytes_per_second(double seconds) const { return static_cast<double>(raw_bytes) / 1e6 / seconds; }
};

struct bench_report {
    bench_setting setting;
    std::string processor;  // its name, or "unknown processor"
    unsigned processors = 0;
    std::string version;  // of the library: "2.7.4"
    std::vector<bench_result> results;
};

bench_report run_bench(const bench_setting& setting);

// "UYVY U8"
std::string format_name(const bench_result& result);
// "1920x1080, 1 thread"
std::string setting_text(const bench_report& report);

std::string bench_table(const bench_report& report);
void print_bench_json(const bench_report& report);
// A PNG, or an SVG when the file's name says so.
void write_bench_plot(const bench_report& report, const std::string& path);

}  // namespace qvr
