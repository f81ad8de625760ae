// SPDX-License-Identifier: BSD-3-Clause
//
// Options of commands that work on many frames.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "arguments.h"
#include "file_io.h"
#include "frame_ends.h"
#include "frame_range.h"

namespace qvr {

struct work_options {
    std::uint32_t jobs = 0;  // 0: not given
    std::string progress = "auto";
    bool keep_going = false;
    bool resume = false;
    range_options range;

    void add(argument_list& to);
    static void add_manifest(argument_list& to, std::string& path);
    incomplete becomes() const { return resume ? incomplete::kept : incomplete::removed; }
};

// Processors that this process may use.
unsigned usable_processors();

// jobs and threads: what was asked for, 0 when nothing was. Many frames are worked on at once with one thread each; few
// share out the processors among them.
work_plan plan_work(unsigned jobs, unsigned threads, const std::optional<unsigned long long>& frames,
                    unsigned processors);

}  // namespace qvr
