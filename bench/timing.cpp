// SPDX-License-Identifier: BSD-3-Clause
#include "timing.h"

#include <algorithm>
#include <chrono>
#include <cmath>

namespace bench {

namespace {

double seconds_of(const job& work, long calls) {
    using clock = std::chrono::steady_clock;
    const clock::time_point start = clock::now();
    for (long i = 0; i < calls; ++i) {
        work();
    }
    return std::chrono::duration<double>(clock::now() - start).count();
}

// Calls that fill a turn. The first call of all warms up, and the number grows until the clock is no matter.
long calls_per_turn(const job& work, double turn_seconds) {
    work();
    for (long calls = 1;; calls *= 4) {
        const double seconds = seconds_of(work, calls);
        if (seconds >= turn_seconds / 4) {
            return std::max(1L, std::lround(static_cast<double>(calls) * turn_seconds / seconds));
        }
    }
}

}  // namespace

std::vector<std::vector<double>> time_in_turn(const std::vector<job>& jobs, const effort& how) {
    std::vector<long> calls;
    for (const job& work : jobs) {
        calls.push_back(calls_per_turn(work, how.turn_seconds));
    }
    std::vector<std::vector<double>> times(jobs.size());
    for (int round = 0; round < how.rounds; ++round) {
        for (std::size_t i = 0; i < jobs.size(); ++i) {
            times[i].push_back(seconds_of(jobs[i], calls[i]) / static_cast<double>(calls[i]));
        }
    }
    return times;
}

spread quartiles(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const auto at = [&values](double share) {
        const double place = share * static_cast<double>(values.size() - 1);
        const auto below = static_cast<std::size_t>(place);
        const std::size_t above = std::min(below + 1, values.size() - 1);
        return values[below] + (place - static_cast<double>(below)) * (values[above] - values[below]);
    };
    return {at(0.25), at(0.5), at(0.75)};
}

spread speed_ratio(const std::vector<double>& subject, const std::vector<double>& reference) {
    std::vector<double> ratios;
    for (std::size_t i = 0; i < subject.size(); ++i) {
        ratios.push_back(reference[i] / subject[i]);
    }
    return quartiles(ratios);
}

}  // namespace bench
