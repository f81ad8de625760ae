// SPDX-License-Identifier: BSD-3-Clause
//
//   title
//   processor, setting, legend
//   UYVY U8   |=========        encode, one group of two bars for each format; a line across both at memcpy's speed
//             |===========      decode
//             0    5    10      gigabytes of samples a second
#include <algorithm>
#include <cmath>
#include <cstdio>

#include "bench.h"
#include "canvas.h"
#include "command.h"

namespace qvr {

namespace {

constexpr colour k_paper = grey(1);
constexpr colour k_grid = grey(0.88);
constexpr colour k_ink = grey(0.13);
constexpr colour k_faint = grey(0.42);
constexpr colour k_encode = {0.20, 0.43, 0.70};
constexpr colour k_decode = {0.32, 0.65, 0.58};
constexpr colour k_copy = {0.80, 0.25, 0.20};

constexpr int k_width = 1100;
constexpr int k_left = 170;  // of the bars
constexpr int k_right = 200;
constexpr int k_top = 130;
constexpr int k_group = 48;
constexpr int k_bar = 16;
constexpr int k_bottom = 70;
constexpr double k_bars_width = k_width - k_left - k_right;

double gigabytes(const bench_result& result, double seconds) {
    return result.megabytes_per_second(seconds) / 1000;
}

double fastest(const bench_report& report) {
    double most = 0;
    for (const bench_result& result : report.results) {
        most = std::max(most, gigabytes(result, std::min({result.copy, result.encode, result.decode})));
    }
    return most;
}

// 1, 2 or 5 times a power of ten, so that there are four to ten steps.
double step_for(double most) {
    const double power = std::pow(10, std::floor(std::log10(most)));
    for (const double step : {power / 10, power / 5, power / 2}) {
        if (most / step <= 10) {
            return step;
        }
    }
    return power;
}

std::string short_number(double value) {
    char text[20];
    std::snprintf(text, sizeof text, "%.4g", value);
    return text;
}

class plot {
  public:
    plot(const bench_report& of, canvas& to)
        : report(of), on(to), step(step_for(fastest(of))), most(std::ceil(fastest(of) / step) * step) {}

    void draw() {
        on.fill(k_paper);
        draw_head();
        draw_grid();
        double y = k_top;
        for (const bench_result& result : report.results) {
            draw_group(result, y);
            y += k_group;
        }
    }

  private:
    double place(double speed) const { return k_left + speed / most * k_bars_width; }
    double bottom() const { return k_top + k_group * static_cast<double>(report.results.size()); }

    void draw_head() {
        const double room = k_width - 60;
        on.text(30, 42, "Encoding and decoding with QVRUncompressed " + report.version,
                {21, k_ink, true, text_style::left, room});
        on.text(30, 68,
                report.processor + "; frames of " + setting_text(report) + ", " + short_number(report.setting.seconds) +
                    " s for each format",
                {13, k_faint, false, text_style::left, room});
        double x = 30;
        for (const auto& [name, ink] : {std::pair{"encode", k_encode}, {"decode", k_decode}, {"memcpy", k_copy}}) {
            on.fill({x, 89, 12, 12}, ink, 2);
            on.text(x + 18, 100, name, {13, k_ink});
            x += 90;
        }
    }

    void draw_grid() {
        for (int i = 0; i * step <= most * 1.001; ++i) {
            const double x = std::round(place(i * step)) + 0.5;
            on.line(x, k_top - 8, x, bottom(), k_grid, 1);
            on.text(x, bottom() + 20, short_number(i * step), {12, k_faint, false, text_style::centre});
        }
        on.text(k_left + k_bars_width / 2, bottom() + 46, "gigabytes of raw samples a second",
                {12, k_faint, false, text_style::centre});
    }

    void draw_group(const bench_result& result, double y) {
        on.text(k_left - 14, y + k_bar + 5, format_name(result), {13, k_ink, false, text_style::right, k_left - 30.0});
        draw_bar(result, result.encode, y, k_encode);
        draw_bar(result, result.decode, y + k_bar + 2, k_decode);
        const double x = place(gigabytes(result, result.copy));
        on.line(x, y - 5, x, y + 2 * k_bar + 7, k_copy, 2.5);
    }

    void draw_bar(const bench_result& result, double seconds, double y, const colour& ink) {
        const double end = std::max(place(gigabytes(result, seconds)), k_left + 1.0);  // to be seen, however slow
        on.fill({double(k_left), y, end - k_left, double(k_bar)}, ink, 2);
        char text[60];
        std::snprintf(text, sizeof text, "%.1f GB/s  %.2f x memcpy", gigabytes(result, seconds), result.copy / seconds);
        const double clear = std::max(end, place(gigabytes(result, result.copy)));
        const text_style style = {11.5, k_faint};
        on.fill({clear + 6, y, on.text_width(text, style) + 4, double(k_bar)}, k_paper);  // no grid behind it
        on.text(clear + 8, y + k_bar - 4, text, style);
    }

    const bench_report& report;
    canvas& on;
    double step;
    double most;
};

}  // namespace

void write_bench_plot(const bench_report& report, const std::string& path) {
    const int height = k_top + k_group * static_cast<int>(report.results.size()) + k_bottom;
    canvas on(k_width, height, ends_in(path, ".svg") ? drawing_kind::svg : drawing_kind::png);
    plot(report, on).draw();
    output_file file(path);
    on.write(file);
    file.commit();
}

}  // namespace qvr
