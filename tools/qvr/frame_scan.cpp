// SPDX-License-Identifier: BSD-3-Clause
#include "frame_scan.h"

#include <cstdio>

#include "box_tree.h"
#include "command.h"
#include "status_line.h"

namespace qvr {

namespace {

// The first is the tool's answer; those after it are said at once.
class problem_list {
  public:
    void add(const failure& problem) {
        if (first) {
            std::fflush(stdout);
            print_message(problem.text());
        } else {
            first = problem;
        }
    }
    bool any() const { return first.has_value(); }
    void throw_first() const {
        if (first) {
            throw failure(*first);
        }
    }

  private:
    std::optional<failure> first;
};

class scan {
  public:
    scan(const std::string& path, std::optional<std::uint32_t> chosen,
         const std::function<frame_problem(const found_frame&)>& visit)
        : input(path), reader(input), only(chosen), look(visit) {}

    void run() {
        bool more = true;
        while (more && !(only && found)) {
            const frame_problem broken = read_next(more);
            // Nothing behind it can be found, so it is told even when another frame was chosen.
            if (broken && (broken->code() != exit_code::data || !visit(&*broken))) {
                problems.add(*broken);
            } else if (more) {
                visit(nullptr);
            }
        }
        if (!found && !problems.any()) {
            reader.require_some();
            refuse_frame(input.name(), *only, reader.number());
        }
        finish_standard_output();
        problems.throw_first();
    }

  private:
    frame_problem read_next(bool& more) {
        try {
            more = only && reader.next_number() < *only ? reader.skip() : reader.next();
            return std::nullopt;
        } catch (const failure& problem) {
            more = false;
            return problem;
        }
    }

    // Whether `look` was asked.
    bool visit(const failure* problem) {
        if (only && *only != reader.number()) {
            return false;
        }
        found = true;
        if (const frame_problem wrong = look({reader, problem})) {
            problems.add(*wrong);
        }
        return true;
    }

    input_file input;
    frame_reader reader;
    std::optional<std::uint32_t> only;
    const std::function<frame_problem(const found_frame&)>& look;
    problem_list problems;
    bool found = false;
};

}  // namespace

void scan_frames(const std::string& path, std::optional<std::uint32_t> only,
                 const std::function<frame_problem(const found_frame&)>& look) {
    scan(path, only, look).run();
}

}  // namespace qvr
