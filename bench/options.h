// SPDX-License-Identifier: BSD-3-Clause
//
// The command line of the benchmark.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "timing.h"

namespace bench {

struct frame_size {
    std::uint32_t width;
    std::uint32_t height;
};

std::string to_text(const frame_size& size);

struct options {
    bool list = false;
    bool quick = false;
    std::string filter;
    std::string json_file;
    std::string cpu = "all";
    std::vector<frame_size> sizes = {{1920, 1080}, {3840, 2160}};
    std::uint32_t threads = 0;  // most that are tried; set to the processors there are when not given

    const frame_size& largest() const { return sizes.back(); }
    effort how() const { return quick ? effort{9, 0.001} : effort{21, 0.002}; }
};

// Prints and exits on --help and on what cannot be parsed.
options parse_options(int argc, char** argv);

}  // namespace bench
