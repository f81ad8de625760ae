// SPDX-License-Identifier: BSD-3-Clause
#include "cases.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace bench {

namespace {

using call_times = std::vector<std::vector<double>>;

// How far the quartiles of the subject's ratios lie apart, of the reference where that is most.
double widest_spread(const call_times& times) {
    double widest = 0;
    for (std::size_t i = 1; i < times.size(); ++i) {
        const spread ratio = speed_ratio(times[0], times[i]);
        widest = std::max(widest, (ratio.high - ratio.low) / ratio.median);
    }
    return widest;
}

// Something else on the machine can disturb a whole case. Then it is timed again, and the calmest time counts.
call_times calm_times(const std::vector<job>& jobs, const effort& how) {
    constexpr double k_calm = 0.1;
    constexpr int k_attempts = 3;
    call_times calmest = time_in_turn(jobs, how);
    for (int attempt = 1; attempt < k_attempts && widest_spread(calmest) > k_calm; ++attempt) {
        call_times again = time_in_turn(jobs, how);
        if (widest_spread(again) < widest_spread(calmest)) {
            calmest = std::move(again);
        }
    }
    return calmest;
}

spread scaled(const spread& value, double factor) {
    return {value.low * factor, value.median * factor, value.high * factor};
}

}  // namespace

double recorder::compare(const job& subject, const std::vector<reference>& references) {
    std::vector<job> jobs = {subject};
    for (const reference& beside : references) {
        jobs.push_back(beside.work);
    }
    const call_times times = calm_times(jobs, how_);
    for (std::size_t i = 0; i < references.size(); ++i) {
        add(references[i].name, "x", speed_ratio(times[0], times[i + 1]));
    }
    return quartiles(times[0]).median;
}

void recorder::compare_per_unit(const job& subject, double work, const reference& beside, double reference_work) {
    const call_times times = calm_times({subject, beside.work}, how_);
    add(beside.name, "x", scaled(speed_ratio(times[0], times[1]), work / reference_work));
}

void recorder::number(const std::string& measure, const std::string& unit, double value) {
    add(measure, unit, {value, value, value});
}

void recorder::add(const std::string& measure, const std::string& unit, const spread& value) {
    results_.push_back({case_name_, measure, unit, value});
    const bool ratio = unit == "x";
    std::printf("%-58s %8.*f %-8s %s", case_name_.c_str(), value.median < 10 ? 3 : 1, value.median, unit.c_str(),
                measure.c_str());
    if (ratio && value.low != value.high) {
        std::printf("   (%.2f .. %.2f)", value.low, value.high);
    }
    std::printf("\n");
    std::fflush(stdout);
}

}  // namespace bench
