// SPDX-License-Identifier: BSD-3-Clause
//
// What encode, decode and convert have in common: many frames from one end to the other, at once and in order, with
// progress, from where an earlier run has stopped, past frames that are damaged.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "command.h"
#include "frame_ends.h"
#include "work_options.h"

namespace qvr {

struct work_ends {
    const char* task;  // "encode"
    std::string input_name;
    std::unique_ptr<frame_input> input;
    std::unique_ptr<frame_output> output;
    // Opens the input once more, to look at its first frame.
    std::function<std::unique_ptr<frame_input>()> open_again;
};

struct work_report {
    unsigned long long frames = 0;  // in the output
    unsigned long long kept = 0;    // of these, made by an earlier run
    frame_layout layout = empty_layout();
    std::uint64_t raw_bytes = 0;  // of the frames made by this run
    codec_time time;
    std::vector<unsigned long long> lost;
    bool told = false;  // as JSON lines
};

// Commits the output, also when frames are lost.
work_report do_work(const work_ends& ends, const work_options& options, const run_options& run);

// Says what was done; sizes: what to add for a run that made all frames itself. Then a data failure with the numbers of
// the frames that are lost, if there are any.
void say_report(const work_ends& ends, const work_report& report, const run_options& run, const std::string& sizes);

// "clip.qvr", "standard input"
std::string input_text(const std::string& path);

}  // namespace qvr
