// SPDX-License-Identifier: BSD-3-Clause
#include <cstdio>

#include "bench.h"
#include "json_output.h"

namespace qvr {

namespace {

json speed_json(const bench_result& result, double seconds) {
    return {{"seconds", seconds},
            {"mb_per_s", result.megabytes_per_second(seconds)},
            {"frames_per_s", 1 / seconds},
            {"to_memcpy", result.copy / seconds}};
}

json result_json(const bench_result& result) {
    return {{"order", result.order},
            {"order_name", find_order(result.order)->name},
            {"type", result.type},
            {"type_name", find_type(result.type)->name},
            {"raw_bytes", result.raw_bytes},
            {"coded_bytes", result.coded_bytes},
            {"rounds", result.rounds},
            {"memcpy", speed_json(result, result.copy)},
            {"encode", speed_json(result, result.encode)},
            {"decode", speed_json(result, result.decode)}};
}

}  // namespace

std::string format_name(const bench_result& result) {
    return std::string(find_order(result.order)->name) + " " + find_type(result.type)->name;
}

std::string setting_text(const bench_report& report) {
    const bench_setting& setting = report.setting;
    const std::string threads = setting.threads == 0   ? std::to_string(report.processors) + " threads"
                                : setting.threads == 1 ? "1 thread"
                                                       : std::to_string(setting.threads) + " threads";
    return std::to_string(setting.width) + "x" + std::to_string(setting.height) + ", " + threads +
           (setting.alpha_rle ? ", alpha coded by run lengths" : "");
}

std::string bench_table(const bench_report& report) {
    std::string table = report.processor + ", " + std::to_string(report.processors) + " processors; library " +
                        report.version + "; " + setting_text(report) + "\n\n";
    char line[200];
    std::snprintf(line, sizeof line, "%-16s %9s %7s  %8s  %26s  %26s\n", "", "", "", "memcpy",
                  "-------- encode --------", "-------- decode --------");
    table += line;
    std::snprintf(line, sizeof line, "%-16s %9s %7s  %8s  %8s %8s %8s  %8s %8s %8s\n", "format", "MB/frame", "size %",
                  "MB/s", "MB/s", "memcpy=1", "frames/s", "MB/s", "memcpy=1", "frames/s");
    table += line;
    for (const bench_result& row : report.results) {
        const double size = 100 * static_cast<double>(row.coded_bytes) / static_cast<double>(row.raw_bytes);
        std::snprintf(line, sizeof line, "%-16s %9.2f %7.1f  %8.0f  %8.0f %8.2f %8.1f  %8.0f %8.2f %8.1f\n",
                      format_name(row).c_str(), static_cast<double>(row.raw_bytes) / 1e6, size,
                      row.megabytes_per_second(row.copy), row.megabytes_per_second(row.encode), row.copy / row.encode,
                      1 / row.encode, row.megabytes_per_second(row.decode), row.copy / row.decode, 1 / row.decode);
        table += line;
    }
    return table;
}

void print_bench_json(const bench_report& report) {
    const bench_setting& setting = report.setting;
    json results = json::array();
    for (const bench_result& result : report.results) {
        results.push_back(result_json(result));
    }
    json document = json_document("qvr-bench/1");
    document.update({{"library", report.version},
                     {"processor", report.processor},
                     {"processors", report.processors},
                     {"threads", setting.threads},
                     {"width", setting.width},
                     {"height", setting.height},
                     {"alpha_rle", setting.alpha_rle},
                     {"seconds", setting.seconds},
                     {"results", results}});
    print_json(document);
}

}  // namespace qvr
