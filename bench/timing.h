// SPDX-License-Identifier: BSD-3-Clause
//
// Timing in turn. What is compared runs A B C A B C ..., so that whatever else the machine does, and whatever its clock
// does, meets all of them; ratios are taken round by round, and of the rounds' ratios the median and the quartiles.
#pragma once

#include <functional>
#include <vector>

namespace bench {

using job = std::function<void()>;

struct effort {
    int rounds;
    double turn_seconds;  // least time of a job's turn: it is called as often as that takes
};

struct spread {
    double low;  // quartiles
    double median;
    double high;
};

// Seconds a call: one row per job, one column per round. Each job is called beforehand, so that caches and pages are
// warm.
std::vector<std::vector<double>> time_in_turn(const std::vector<job>& jobs, const effort& how);

spread quartiles(std::vector<double> values);

// How many times the subject's speed is the reference's.
spread speed_ratio(const std::vector<double>& subject, const std::vector<double>& reference);

}  // namespace bench
