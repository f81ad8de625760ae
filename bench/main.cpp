// SPDX-License-Identifier: BSD-3-Clause
#include <cstdio>
#include <exception>
#include <regex>

#include "cases.h"
#include "goals.h"
#include "instruction_sets.h"
#include "options.h"
#include "report.h"

namespace {

using namespace bench;

case_list chosen_cases(const options& chosen) {
    case_list all;
    for (const auto add : {add_kernels, add_pairs, add_instruction_sets, add_libyuv, add_alpha, add_threads,
                           add_scaling, add_latency, add_allocations}) {
        add(all, chosen);
    }
    const std::regex filter(chosen.filter);
    case_list kept;
    for (bench_case& one : all) {
        if (std::regex_search(one.name, filter)) {
            kept.push_back(std::move(one));
        }
    }
    return kept;
}

void run(const options& chosen) {
    limit_instruction_sets(chosen.cpu);
    const case_list cases = chosen_cases(chosen);
    if (chosen.list) {
        for (const bench_case& one : cases) {
            std::puts(one.name.c_str());
        }
        return;
    }
    print_machine(chosen);
    recorder record(chosen.how());
    for (const bench_case& one : cases) {
        record.begin(one.name);
        one.run(record);
    }
    const std::vector<verdict> verdicts = judge(record.results());
    print_pair_tables(record.results());
    print_verdicts(verdicts);
    if (!chosen.json_file.empty()) {
        write_json(chosen.json_file, chosen, record.results(), verdicts);
    }
}

}  // namespace

int main(int argc, char** argv) {
    try {
        run(parse_options(argc, argv));
        return 0;
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "qvr_bench: %s\n", problem.what());
        return 1;
    }
}
