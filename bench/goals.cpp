// SPDX-License-Identifier: BSD-3-Clause
#include "goals.h"

#include <cmath>
#include <regex>

namespace bench {

namespace {

struct split_name {
    std::string what;
    std::string size;
};

split_name split(const std::string& name) {
    const std::size_t slash = name.rfind('/');
    return {name.substr(0, slash), name.substr(slash + 1)};
}

std::vector<const result*> chosen_by(const goal& row, const std::string& size, const std::vector<result>& results) {
    const std::regex cases(row.cases);
    const std::regex measure(row.measure);
    std::vector<const result*> chosen;
    for (const result& found : results) {
        const split_name name = split(found.name);
        if (name.size == size && std::regex_match(name.what, cases) && std::regex_match(found.measure, measure)) {
            chosen.push_back(&found);
        }
    }
    return chosen;
}

// The value that decides, and where it was found.
void decide(verdict& on, const std::vector<const result*>& among) {
    double logarithms = 0;
    const result* extreme = among.front();
    for (const result* found : among) {
        logarithms += std::log(found->value.median);
        const bool smaller = found->value.median < extreme->value.median;
        const bool larger = found->value.median > extreme->value.median;
        if (on.how == decided_by::largest ? larger : smaller) {
            extreme = found;
        }
    }
    if (on.how == decided_by::geometric_mean) {
        on.value = std::exp(logarithms / static_cast<double>(among.size()));
    } else {
        on.value = extreme->value.median;
        on.decided_at = split(extreme->name).what;
    }
    on.met = on.how == decided_by::largest ? on.value <= on.threshold : on.value >= on.threshold;
}

}  // namespace

std::vector<verdict> judge(const std::vector<result>& results) {
    std::vector<verdict> verdicts;
    for (const goal& row : all_goals()) {
        const std::pair<const char*, double> sizes[] = {{"1920x1080", row.at_1080}, {"3840x2160", row.at_2160}};
        for (const auto& [size, threshold] : sizes) {
            if (threshold < 0) {
                continue;
            }
            verdict next = {row.text, row.measure, size, threshold, false, false, 0, "", row.how};
            const std::vector<const result*> among = chosen_by(row, size, results);
            if (!among.empty()) {
                next.measured = true;
                decide(next, among);
            }
            verdicts.push_back(next);
        }
    }
    return verdicts;
}

}  // namespace bench
