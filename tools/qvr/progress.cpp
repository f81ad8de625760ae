// SPDX-License-Identifier: BSD-3-Clause
#include "progress.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>

#include "failure.h"
#include "json_output.h"
#include "status_line.h"

namespace qvr {

namespace {

constexpr auto k_line_interval = std::chrono::milliseconds(100);
constexpr auto k_json_interval = std::chrono::milliseconds(500);

void print_event(const json& event) {
    print_message(json_line(event));
}

template <class Value>
json or_null(const std::optional<Value>& value) {
    return value ? json(*value) : json(nullptr);
}

double rounded(double value) {
    return static_cast<double>(std::llround(value * 1000)) / 1000;
}

// "1:02:03", "2:03"
std::string clock_text(double seconds) {
    const auto all = static_cast<unsigned long long>(std::llround(seconds));
    char text[40];
    if (all >= 3600) {
        std::snprintf(text, sizeof text, "%llu:%02llu:%02llu", all / 3600, all / 60 % 60, all % 60);
    } else {
        std::snprintf(text, sizeof text, "%llu:%02llu", all / 60, all % 60);
    }
    return text;
}

std::string bar_text(double part) {
    constexpr std::size_t k_width = 20;
    const auto filled = std::min(k_width, static_cast<std::size_t>(part * k_width));
    return "[" + std::string(filled, '#') + std::string(k_width - filled, '-') + "]";
}

}  // namespace

progress::form progress::parse(const std::string& mode, bool quiet) {
    if (mode == "json") {
        return form::events;
    }
    if (mode != "auto" && mode != "none") {
        fail_usage("--progress " + mode + ": there is no such form", "there are auto, json and none");
    }
    return mode == "auto" && !quiet && has_status_line() ? form::line : form::none;
}

progress::progress(form shown, std::string task, std::string what, std::optional<unsigned long long> total,
                   unsigned long long kept, const work_plan& plan)
    : shown_as(shown), task_name(std::move(task)), file(std::move(what)), total_frames(total), frames_kept(kept) {
    if (shown_as == form::events) {
        print_event({{"event", "start"},
                     {"schema", "qvr-progress/1"},
                     {"task", task_name},
                     {"output", file},
                     {"frames_total", or_null(total_frames)},
                     {"frames_kept", frames_kept},
                     {"jobs", plan.jobs},
                     {"threads", plan.threads}});
    }
}

progress::~progress() {
    if (shown_as == form::line) {
        clear_status();
    }
}

double progress::seconds() const {
    return std::chrono::duration<double>(steady::now() - start).count();
}

std::optional<double> progress::seconds_left() const {
    const unsigned long long behind = frames_kept + frames_done + frames_lost;
    if (!total_frames || frames_done == 0 || *total_frames < behind) {
        return std::nullopt;
    }
    return seconds() / static_cast<double>(frames_done + frames_lost) * static_cast<double>(*total_frames - behind);
}

void progress::frame_done(unsigned long long number, std::uint64_t bytes) {
    last_number = number;
    ++frames_done;
    raw_bytes += bytes;
    show();
}

void progress::frame_lost(unsigned long long number, const failure& problem) {
    ++frames_lost;
    if (shown_as == form::events) {
        print_event({{"event", "frame_failed"},
                     {"frame", number},
                     {"message", problem.message()},
                     {"hint", problem.hint().empty() ? json(nullptr) : json(problem.hint())}});
    } else {
        print_message(problem.text());
    }
}

void progress::show() {
    const steady::time_point now = steady::now();
    const auto interval = shown_as == form::line ? k_line_interval : k_json_interval;
    const bool first = frames_done == 1;
    if (shown_as == form::none || (!first && now - last_shown < interval)) {
        return;
    }
    last_shown = now;
    if (shown_as == form::line) {
        show_line();
    } else {
        show_json();
    }
}

void progress::show_line() const {
    const unsigned long long behind = frames_kept + frames_done + frames_lost;
    const double spent = std::max(seconds(), 1e-6);
    std::string line = file + " ";
    if (total_frames && *total_frames > 0) {
        const double part = static_cast<double>(behind) / static_cast<double>(*total_frames);
        line += bar_text(part) + " " + std::to_string(behind) + "/" + std::to_string(*total_frames);
    } else {
        line += std::to_string(behind);
    }
    char rates[80];
    std::snprintf(rates, sizeof rates, " frames  %.1f/s  %.0f MB/s  ", static_cast<double>(frames_done) / spent,
                  static_cast<double>(raw_bytes) / 1e6 / spent);
    const std::optional<double> left = seconds_left();
    line += rates + (left ? clock_text(*left) + " left" : clock_text(spent));
    if (frames_lost > 0) {
        line += "  " + std::to_string(frames_lost) + " lost";
    }
    // A line that wraps around could not be written over. The numbers at its end matter more than the file's name.
    const std::size_t room = std::max(status_columns(), 2u) - 1;
    show_status(line.size() > room ? line.substr(line.size() - room) : line);
}

void progress::show_json() const {
    const double spent = seconds();
    const std::optional<double> left = seconds_left();
    print_event({{"event", "progress"},
                 {"frame", last_number},
                 {"frames_done", frames_done},
                 {"frames_lost", frames_lost},
                 {"raw_bytes", raw_bytes},
                 {"seconds", rounded(spent)},
                 {"frames_per_second", spent > 0 ? rounded(static_cast<double>(frames_done) / spent) : 0.0},
                 {"seconds_left", left ? json(rounded(*left)) : json(nullptr)}});
}

void progress::end() {
    if (shown_as == form::events) {
        print_event({{"event", "end"},
                     {"frames_kept", frames_kept},
                     {"frames_done", frames_done},
                     {"frames_lost", frames_lost},
                     {"raw_bytes", raw_bytes},
                     {"seconds", rounded(seconds())}});
    }
}

}  // namespace qvr
