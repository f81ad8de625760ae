// SPDX-License-Identifier: BSD-3-Clause
//
// Cases and what they find out.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "options.h"
#include "timing.h"

namespace bench {

// One finding of one case.
struct result {
    std::string name;     // of the case: group/.../WxH
    std::string measure;  // what it is beside, or what is counted
    std::string unit;     // "x" for ratios
    spread value;         // three times the same where nothing is timed
};

struct reference {
    std::string name;
    job work;
};

// Takes what a case finds, and prints it at once.
class recorder {
  public:
    explicit recorder(const effort& how) : how_(how) {}

    void begin(const std::string& case_name) { case_name_ = case_name; }
    // The subject's speed beside each reference's. Returns the subject's median time of a call.
    double compare(const job& subject, const std::vector<reference>& references);
    // The same when times are not to be compared call for call: `work` units are done in a call of the subject,
    // `reference_work` in one of the reference.
    void compare_per_unit(const job& subject, double work, const reference& beside, double reference_work);
    void number(const std::string& measure, const std::string& unit, double value);

    const std::vector<result>& results() const { return results_; }

  private:
    void add(const std::string& measure, const std::string& unit, const spread& value);

    effort how_;
    std::string case_name_;
    std::vector<result> results_;
};

struct bench_case {
    std::string name;
    std::function<void(recorder&)> run;
};
using case_list = std::vector<bench_case>;

// The groups. Each appends its cases; nothing is prepared before a case runs.
void add_kernels(case_list& cases, const options& chosen);
void add_pairs(case_list& cases, const options& chosen);
void add_instruction_sets(case_list& cases, const options& chosen);
void add_libyuv(case_list& cases, const options& chosen);
void add_alpha(case_list& cases, const options& chosen);
void add_threads(case_list& cases, const options& chosen);
void add_scaling(case_list& cases, const options& chosen);
void add_latency(case_list& cases, const options& chosen);
void add_allocations(case_list& cases, const options& chosen);

}  // namespace bench
