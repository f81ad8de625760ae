// SPDX-License-Identifier: BSD-3-Clause
#include "bench.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <fstream>
#include <thread>

#include "codec.h"

namespace qvr {

namespace {

using steady = std::chrono::steady_clock;

constexpr unsigned k_least_rounds = 3;

// Where alpha lies among the samples of a pixel; 1 sample: in a plane of its own at the end of the frame.
struct alpha_row {
    std::uint32_t order;
    std::size_t samples;
    std::size_t at;
};

constexpr alpha_row k_alpha[] = {{QVRUncompressed_OrderARGB, 4, 0},
                                 {QVRUncompressed_OrderBGRA, 4, 3},
                                 {QVRUncompressed_OrderRGBA, 4, 3},
                                 {QVRUncompressed_OrderABGR, 4, 0},
                                 {QVRUncompressed_OrderCbYACrYA, 3, 2},
                                 {QVRUncompressed_OrderYCbCrA444, 4, 3},
                                 {QVRUncompressed_OrderPlanar420Alpha, 1, 0},
                                 {QVRUncompressed_OrderAlpha, 1, 0},
                                 {QVRUncompressed_OrderYCbYCrPlanarAlpha, 1, 0},
                                 {QVRUncompressed_OrderCbYCrYPlanarAlpha, 1, 0}};

// A disc with a soft edge, as mattes are: mostly 0 and 255, and slopes between.
std::uint8_t matte_level(const frame_layout& layout, std::size_t pixel) {
    const std::size_t row = pixel / layout.width;
    const double x = static_cast<double>(pixel % layout.width) - layout.width / 2.0;
    const double y = static_cast<double>(row) - layout.height / 2.0;
    const double radius = std::min(layout.width, layout.height) / 3.0;
    const double edge = radius / 10;
    return static_cast<std::uint8_t>(255 * std::clamp((radius - std::hypot(x, y)) / edge + 0.5, 0.0, 1.0));
}

void draw_matte(frame& on) {
    const frame_layout& layout = on.layout;
    for (const alpha_row& row : k_alpha) {
        if (row.order != layout.colorComponentOrder || !stores_alpha(row.order, layout.componentType)) {
            continue;
        }
        const std::size_t size = layout.componentType == QVRUncompressed_TypeU8 ? 1 : 2;
        const std::size_t pixels = std::size_t{layout.width} * layout.height;
        const std::size_t start = row.samples == 1 ? on.bytes - pixels * size : row.at * size;
        for (std::size_t i = 0; i < pixels; ++i) {
            std::memset(&on.samples[start + i * row.samples * size], matte_level(layout, i), size);
        }
    }
}

// Noise, which no codec of samples gains from, and a matte.
frame make_frame(const bench_setting& setting, std::uint32_t order, std::uint32_t type) {
    frame made;
    made.layout.colorComponentOrder = order;
    made.layout.componentType = type;
    made.layout.width = setting.width;
    made.layout.height = setting.height;
    require_size(made.layout, make_compression(setting.alpha_rle, 0), exit_code::usage, {});
    made.bytes = QVRUncompressed_GetUncompressedBufSize(&made.layout);
    made.samples.resize(made.bytes);
    std::uint32_t state = 1;
    for (std::uint8_t& sample : made.samples) {
        state = state * 1664525u + 1013904223u;
        sample = static_cast<std::uint8_t>(state >> 24);
    }
    draw_matte(made);
    return made;
}

double seconds_of_copy(const frame& from, std::vector<std::uint8_t>& to) {
    // Called through a pointer that may change, so that the copy is made although nobody reads it.
    void* (*volatile copy)(void*, const void*, std::size_t) = std::memcpy;
    const steady::time_point start = steady::now();
    copy(to.data(), from.samples.data(), from.bytes);
    return std::chrono::duration<double>(steady::now() - start).count();
}

double median(std::vector<double> of) {
    std::sort(of.begin(), of.end());
    // What a clock cannot see still takes a moment.
    return std::max(of[of.size() / 2], 1e-9);
}

class format_run {
  public:
    format_run(const bench_setting& setting, std::uint32_t order, std::uint32_t type)
        : how(make_compression(setting.alpha_rle && stores_alpha(order, type), 0)),
          to(setting.threads),
          from(setting.threads),
          source(make_frame(setting, order, type)),
          copied(source.bytes) {
        result.order = order;
        result.type = type;
        result.raw_bytes = source.bytes;
    }

    bench_result run(double seconds) {
        round();  // touches all memory and is not counted
        copies.clear();
        encodings.clear();
        decodings.clear();
        const steady::time_point start = steady::now();
        while (copies.size() < k_least_rounds ||
               std::chrono::duration<double>(steady::now() - start).count() < seconds) {
            round();
        }
        result.rounds = static_cast<unsigned>(copies.size());
        result.copy = median(copies);
        result.encode = median(encodings);
        result.decode = median(decodings);
        return result;
    }

  private:
    // One after the other, so that all three see the machine in the same state.
    void round() {
        copies.push_back(seconds_of_copy(source, copied));
        const double encoded = to.time().seconds;
        const bytes_view coded = to.encode(source, how, {});
        encodings.push_back(to.time().seconds - encoded);
        result.coded_bytes = coded.size;
        back.layout = target(coded);
        const double decoded = from.time().seconds;
        from.decode(coded, back, {});
        decodings.push_back(from.time().seconds - decoded);
    }

    // The same layout, but where the type has lost its alpha the one that the stream has.
    frame_layout target(bytes_view coded) {
        const order_info* order = find_order(result.order);
        const bool lost = order && order->alpha && !stores_alpha(result.order, result.type);
        return lost ? from.read_layout(coded, {}) : source.layout;
    }

    compression how;
    encoder to;
    decoder from;
    frame source;
    frame back;
    std::vector<std::uint8_t> copied;
    std::vector<double> copies;
    std::vector<double> encodings;
    std::vector<double> decodings;
    bench_result result;
};

std::string processor_name() {
    std::ifstream lines("/proc/cpuinfo");
    for (std::string line; std::getline(lines, line);) {
        const std::size_t colon = line.find(": ");
        if (line.rfind("model name", 0) == 0 && colon != std::string::npos) {
            return line.substr(colon + 2);
        }
    }
    return "unknown processor";
}

std::string library_version() {
    std::uint32_t part[3] = {};
    QVRUncompressed_GetVersion(&part[0], &part[1], &part[2], nullptr, nullptr);
    return std::to_string(part[0]) + "." + std::to_string(part[1]) + "." + std::to_string(part[2]);
}

}  // namespace

bench_report run_bench(const bench_setting& setting) {
    bench_report report;
    report.setting = setting;
    report.processor = processor_name();
    report.processors = std::thread::hardware_concurrency();
    report.version = library_version();
    for (const auto& [order, type] : setting.formats) {
        report.results.push_back(format_run(setting, order, type).run(setting.seconds));
    }
    return report;
}

}  // namespace qvr
