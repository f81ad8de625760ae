// SPDX-License-Identifier: BSD-3-Clause
//
// What the library is to reach, and whether it does.
#pragma once

#include <string>
#include <vector>

#include "cases.h"

namespace bench {

// Of the cases that a goal names, which value counts.
enum class decided_by { smallest, largest, geometric_mean };

// A row holds at 1920x1080 and at 3840x2160, each with a threshold of its own, a negative one where there is none. The value must
// not be below the threshold, or, decided by the largest, not above it.
struct goal {
    const char* text;
    const char* cases;    // regular expression for the name without its size
    const char* measure;  // regular expression
    decided_by how;
    double at_1080;
    double at_2160;
};

const std::vector<goal>& all_goals();

struct verdict {
    std::string text;
    std::string measure;
    std::string size;
    double threshold;
    bool measured;  // something that the goal names was run
    bool met;
    double value;
    std::string decided_at;  // name of the case, empty for a mean
    decided_by how;
};

std::vector<verdict> judge(const std::vector<result>& results);

}  // namespace bench
