// SPDX-License-Identifier: BSD-3-Clause
//
// How far long work has come: a line on a terminal, JSON lines for programs, nothing in a pipe.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "frame_ends.h"

namespace qvr {

// Used from one thread.
class progress {
  public:
    enum class form { none, line, events };

    // mode: what --progress was given: "auto", "json" or "none".
    static form parse(const std::string& mode, bool quiet);

    // task: "encode"; what: the file that is being made. total: how many frames there are, where that is known, of which
    // `kept` were done by an earlier run.
    progress(form shown, std::string task, std::string what, std::optional<unsigned long long> total,
             unsigned long long kept, const work_plan& plan);
    ~progress();
    progress(const progress&) = delete;
    progress& operator=(const progress&) = delete;

    // Frame `number` of the input is done; `bytes` is the size of its raw samples.
    void frame_done(unsigned long long number, std::uint64_t bytes);
    void frame_lost(unsigned long long number, const failure& problem);
    // All has been done.
    void end();

    unsigned long long lost() const { return frames_lost; }

  private:
    using steady = std::chrono::steady_clock;

    double seconds() const;
    std::optional<double> seconds_left() const;
    void show();
    void show_line() const;
    void show_json() const;

    form shown_as;
    std::string task_name;
    std::string file;
    std::optional<unsigned long long> total_frames;
    unsigned long long frames_kept;
    unsigned long long frames_done = 0;  // by this run
    unsigned long long frames_lost = 0;
    unsigned long long last_number = 0;
    std::uint64_t raw_bytes = 0;
    steady::time_point start = steady::now();
    steady::time_point last_shown = steady::time_point::min();
};

}  // namespace qvr
