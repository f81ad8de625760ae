// SPDX-License-Identifier: BSD-3-Clause
#include "cases.h"

#include <cstdio>

namespace bench {

namespace {

spread scaled(const spread& value, double factor) {
    return {value.low * factor, value.median * factor, value.high * factor};
}

}  // namespace

double recorder::compare(const job& subject, const std::vector<reference>& references) {
    std::vector<job> jobs = {subject};
    for (const reference& beside : references) {
        jobs.push_back(beside.work);
    }
    const std::vector<std::vector<double>> times = time_in_turn(jobs, how_);
    for (std::size_t i = 0; i < references.size(); ++i) {
        add(references[i].name, "x", speed_ratio(times[0], times[i + 1]));
    }
    return quartiles(times[0]).median;
}

void recorder::compare_per_unit(const job& subject, double work, const reference& beside, double reference_work) {
    const std::vector<std::vector<double>> times = time_in_turn({subject, beside.work}, how_);
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
