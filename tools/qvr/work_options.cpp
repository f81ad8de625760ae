// SPDX-License-Identifier: BSD-3-Clause
#include "work_options.h"

#include <sched.h>

#include <algorithm>
#include <thread>

namespace qvr {

void work_options::add(argument_list& to) {
    constexpr std::uint32_t k_most_jobs = 1024;
    to.group("Long work");
    to.number("-j,--jobs", jobs,
              "Frames to work on at once; default: 0, as many as there are processors, divided\n"
              "by --threads",
              k_most_jobs);
    range.add(to);
    to.flag("--resume", resume,
            "Keep what is done when the work ends early, and go on with it when the\n"
            "same command is given again");
    to.flag("--keep-going", keep_going, "Leave frames with bad data out, say which, and exit with 1 at the end");
    to.text("--progress", progress, "FORM",
            "'auto' shows a line on a terminal and nothing elsewhere, 'json' writes JSON\n"
            "lines to standard error, 'none' is silent; default: auto");
    to.suggest("--progress", {"auto", "json", "none"});
    to.group(nullptr);
}

void work_options::add_manifest(argument_list& to, std::string& path) {
    to.text("--manifest", path, "FILE",
            "Write a list of the frames of the .qvr file with their sizes and checksums,\n"
            "one line of JSON each; default: none");
}

unsigned usable_processors() {
    cpu_set_t usable;
    if (sched_getaffinity(0, sizeof usable, &usable) == 0) {
        return static_cast<unsigned>(std::max(CPU_COUNT(&usable), 1));
    }
    return std::max(std::thread::hardware_concurrency(), 1u);
}

work_plan plan_work(unsigned jobs, unsigned threads, const std::optional<unsigned long long>& frames,
                    unsigned processors) {
    work_plan plan;
    plan.jobs = jobs != 0 ? jobs : std::max(processors / std::max(threads, 1u), 1u);
    if (frames && *frames < plan.jobs) {
        plan.jobs = static_cast<unsigned>(std::max(*frames, 1ull));
    }
    plan.threads = threads != 0 ? threads : std::max(processors / plan.jobs, 1u);
    return plan;
}

}  // namespace qvr
