// SPDX-License-Identifier: BSD-3-Clause
#include "frame_work.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>
#include <vector>

#include "progress.h"

namespace qvr {

namespace {

std::string frames_text(unsigned long long count) {
    return std::to_string(count) + (count == 1 ? " frame" : " frames");
}

// One run of the pipeline.
class frame_work {
  public:
    frame_work(const work_ends& between, const work_options& given, const run_options& run)
        : ends(between),
          input(*ends.input),
          output(*ends.output),
          options(given),
          total(input.frames_left()),
          range(options.range.resolve(total, ends.input_name)),
          expected(range.count(total)),
          plan(plan_work(options.jobs, run.threads, expected, usable_processors())),
          number(range.first),
          form(progress::parse(options.progress, run.quiet)) {}

    work_report run() {
        input.prepare(plan);
        output.prepare(plan, range.first);
        if (options.resume) {
            require_rereadable();
            go_on();
        }
        skip(number);
        progress shown(form, ends.task, output.name(), expected, report.kept + count_present(), plan);
        run_pipeline(plan.jobs, steps(shown));
        require_all_read();
        // What was read to its end has been counted; a number told before that may be a guess.
        output.commit(number, range.end ? total : number);
        shown.end();
        report.told = form == progress::form::events;
        report.kept += present;
        report.frames += present;
        report.time = input.time();
        report.time += output.time();
        return std::move(report);
    }

  private:
    // What is read a second time must be there a second time. Standard input may be fed again; a numbered sequence is
    // no file itself.
    void require_rereadable() const {
        std::error_code none;
        const std::filesystem::file_status status = std::filesystem::status(ends.input_name, none);
        if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
            throw failure(exit_code::usage, {ends.input_name, {}},
                          "--resume needs an input that can be read again, and this is a pipe or device",
                          "name a regular file, give '-' and feed it from the beginning, or leave --resume out");
        }
    }

    // The first and the last frame that are kept are made again: when they come out the same, so will those between.
    void go_on() {
        if (options.keep_going && output.counts_what_is_kept()) {
            fail_usage(
                "--resume with --keep-going: where frames are left out of a file, their number does not say where "
                "to go on",
                "leave one of them out, or write a numbered sequence of files");
        }
        const kept_frames kept = output.go_on(ends.input_name == input_text("-")
                                                  ? nullptr
                                                  : std::function<frame_job()>([this] { return first_frame(); }));
        if (expected && (kept.count > *expected || (kept.complete && kept.count != *expected))) {
            throw failure(exit_code::usage, {output.name(), {}},
                          "cannot go on: " + kept.file + " has " + frames_text(kept.count) + " already, but " +
                              frames_text(*expected) + " are to be in it",
                          "give the input and the options as they were; or remove " + kept.file + " to start again");
        }
        if (kept.count > 0) {
            report.kept = kept.count - 1;
            report.frames = kept.count - 1;
            number += kept.count - 1;
        }
    }

    frame_job first_frame() {
        const std::unique_ptr<frame_input> first = ends.open_again();
        first->prepare({1, 1});
        frame_job job;
        job.number = range.first;
        const unsigned long long there = first->skip(range.first);
        if (there < range.first || !first->read(job)) {
            refuse_frame(ends.input_name, range.first, there);
        }
        first->unpack(0, job, [&](const frame_layout& own, const location&) { return output.wanted(0, job, own); });
        return job;
    }

    void skip(unsigned long long count) {
        const unsigned long long there = input.skip(count);
        if (there < count) {
            refuse_frame(ends.input_name, std::max(there, range.first), there);
        }
    }

    // Only where the input says how many frames there are: a range may promise any number.
    unsigned long long count_present() const {
        unsigned long long found = 0;
        for (unsigned long long i = 0; options.resume && total && i < expected.value_or(0); ++i) {
            found += output.has(range.first + i) ? 1 : 0;
        }
        return found - std::min(found, 1ull);
    }

    pipeline_steps steps(progress& shown) {
        pipeline_steps to_do;
        to_do.read = [this](frame_job& job) { return read(job); };
        to_do.work = [this](unsigned worker, frame_job& job) { work(worker, job); };
        to_do.write = [this, &shown](frame_job& job) { write(job, shown); };
        if (options.keep_going) {
            to_do.lose = [this, &shown](const frame_job& job, const failure& problem) {
                report.lost.push_back(job.number);
                shown.frame_lost(job.number, problem);
            };
        }
        to_do.stop_reading = stop_waiting_for_input;
        return to_do;
    }

    bool read(frame_job& job) {
        for (bool passed = true; passed;) {
            job.number = number;
            job.place = {};
            job.coded_bytes = 0;
            if (range.end && number >= *range.end) {
                return false;
            }
            // The first frame that is there is made again, to be compared.
            passed = output.has(number) && std::exchange(any_compared, true);
            // Counted whether it can be read or not.
            ++number;
            if (passed ? input.skip(1) == 0 : !input.read(job)) {
                --number;
                return false;
            }
            present += passed ? 1 : 0;
        }
        if (output.holds_one_frame() && std::exchange(any_read, true)) {
            throw failure(
                exit_code::usage, {ends.input_name, {}},
                std::string("the file holds more than one frame, but ") + output.holds_one_frame() + " holds only one",
                "write a numbered sequence: name OUT like frame.%04d.png, or choose one with --range N, counted from "
                "0");
        }
        return true;
    }

    void work(unsigned worker, frame_job& job) {
        input.unpack(worker, job,
                     [&](const frame_layout& own, const location&) { return output.wanted(worker, job, own); });
        output.pack(worker, job);
    }

    void write(frame_job& job, progress& shown) {
        const std::string text = layout_text(job.picture.layout);
        if (!last_layout.empty() && text != last_layout) {
            warn(job.place.file,
                 job.place.spot + (job.place.spot.empty() ? "" : ": ") + "the layout changes here to " + text);
        }
        last_layout = text;
        output.write(job);
        ++report.frames;
        report.layout = job.picture.layout;
        report.raw_bytes += job.picture.bytes;
        shown.frame_done(job.number, job.picture.bytes);
    }

    void require_all_read() const {
        if (range.end && number < *range.end && report.lost.empty()) {
            refuse_frame(ends.input_name, number, number);
        }
        if (report.frames + present == 0 && !report.lost.empty()) {
            throw failure(exit_code::data, {ends.input_name, {}}, "none of its frames could be read");
        }
        if (output.holds_one_frame() && !any_read) {
            throw failure(exit_code::usage, {output.name(), {}},
                          std::string("there is no frame to write, but ") + output.holds_one_frame() + " holds one",
                          "the chunk is empty: give fewer chunks, or choose a frame with --range N, counted from 0");
        }
    }

    const work_ends& ends;
    frame_input& input;
    frame_output& output;
    const work_options& options;
    std::optional<unsigned long long> total;
    frame_range range;
    std::optional<unsigned long long> expected;  // how many frames are wanted
    work_plan plan;
    unsigned long long number;  // of the next frame to read
    progress::form form;
    unsigned long long present = 0;  // frames that were there already, each in a file of its own
    bool any_read = false;
    bool any_compared = false;
    std::string last_layout;
    work_report report;
};

// A data failure with the numbers of the frames that are lost, if there are any.
void require_none_lost(const work_report& report, const std::string& output_name) {
    constexpr std::size_t k_most_named = 20;
    if (report.lost.empty()) {
        return;
    }
    std::string numbers;
    for (std::size_t i = 0; i < std::min(report.lost.size(), k_most_named); ++i) {
        numbers += (i == 0 ? "" : ", ") + std::to_string(report.lost[i]);
    }
    throw failure(exit_code::data, {output_name, {}},
                  frames_text(report.lost.size()) + " of " + std::to_string(report.lost.size() + report.frames) +
                      " left out, because the data are bad: " + numbers +
                      (report.lost.size() > k_most_named ? " and others" : ""),
                  "the messages above say what is wrong with each; all others are whole");
}

}  // namespace

work_report do_work(const work_ends& ends, const work_options& options, const run_options& run) {
    return frame_work(ends, options, run).run();
}

void say_report(const work_ends& ends, const work_report& report, const run_options& run, const std::string& sizes) {
    const std::string& name = ends.output->name();
    const unsigned long long made = report.frames - report.kept;
    if (!run.quiet && !report.told) {
        say(name + ": " + frames_text(report.frames) +
            (report.kept > 0 ? ", " + std::to_string(report.kept) + " of them made before" : "") +
            (made > 0 ? ", " + layout_text(report.layout) : "") + (made == report.frames && made > 0 ? sizes : ""));
    }
    if (run.time) {
        say(name + ": " + ends.task + ": " + time_text(report.time, made));
    }
    require_none_lost(report, name);
}

std::string input_text(const std::string& path) {
    return path == "-" ? "standard input" : path;
}

}  // namespace qvr
