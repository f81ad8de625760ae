// SPDX-License-Identifier: BSD-3-Clause
//
// Raw frames, clips and pictures as the ends of work on many frames. Where each frame is a file of its own, the workers
// read and write the files themselves, since unpacking a picture may take far longer than anything else.
#include <algorithm>
#include <cstring>
#include <deque>
#include <filesystem>
#include <map>
#include <mutex>
#include <system_error>
#include <utility>
#include <vector>

#include "containers.h"
#include "frame_ends.h"
#include "relayout.h"
#include "sequence.h"

namespace qvr {

namespace {

// An empty file is what a power cut leaves of one.
bool is_filled_file(const std::string& path) {
    std::error_code ignored;
    return std::filesystem::is_regular_file(path, ignored) && std::filesystem::file_size(path, ignored) > 0;
}

bool identical(const frame_layout& a, const frame_layout& b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

// Brings frames into the layouts that are wanted, each worker with a codec of its own.
class worker_layouts {
  public:
    void assign(const work_plan& plan) {
        for (unsigned i = 0; i < plan.jobs; ++i) {
            all.emplace_back(plan.threads);
        }
    }

    void into(const layout_choice& wanted, unsigned worker, frame_job& in) {
        all[worker].into(wanted(in.picture.layout, in.place), in.picture, in.place);
    }

  private:
    std::deque<relayout> all;
};

// From a stream of frames, read one after the other.
class picture_input : public frame_input {
  public:
    picture_input(std::unique_ptr<frame_source> from, frame_check to_check)
        : source(std::move(from)), check(std::move(to_check)) {}

    std::optional<unsigned long long> frames_left() override { return source->frames_left(); }
    unsigned long long skip(unsigned long long count) override { return source->skip(count); }
    std::optional<frame_rate> rate() const override { return source->rate(); }
    void prepare(const work_plan& plan) override { layouts.assign(plan); }

    bool read(frame_job& to) override {
        if (!source->next(to.picture)) {
            return false;
        }
        to.place = source->last_place();
        if (check) {
            check(*source, to.picture.layout);
        }
        return true;
    }

    void unpack(unsigned worker, frame_job& in, const layout_choice& wanted) override {
        layouts.into(wanted, worker, in);
    }

  private:
    std::unique_ptr<frame_source> source;
    frame_check check;
    worker_layouts layouts;
};

// From files with one frame each: read() only counts.
class picture_files_input : public frame_input {
  public:
    picture_files_input(std::function<std::unique_ptr<frame_source>()> opener, std::unique_ptr<frame_source> opened,
                        frame_check to_check)
        : open(std::move(opener)), check(std::move(to_check)), left(opened->frames_left().value_or(0)) {}

    std::optional<unsigned long long> frames_left() override { return left; }

    unsigned long long skip(unsigned long long count) override {
        const unsigned long long skipped = std::min(count, left);
        left -= skipped;
        return skipped;
    }

    void prepare(const work_plan& plan) override {
        readers.resize(plan.jobs);
        layouts.assign(plan);
    }

    bool read(frame_job&) override { return skip(1) == 1; }

    void unpack(unsigned worker, frame_job& in, const layout_choice& wanted) override {
        reader& own = readers[worker];
        if (!own.source) {
            own = {open(), 0};
        }
        own.source->skip(in.number - own.next);
        // A source that fails is not asked again.
        std::unique_ptr<frame_source> source = std::move(own.source);
        if (!source->next(in.picture)) {
            throw failure(exit_code::io, {},
                          "frame " + std::to_string(in.number) + " has gone while it was looked for");
        }
        in.place = source->last_place();
        if (check) {
            check(*source, in.picture.layout);
        }
        own = {std::move(source), in.number + 1};
        layouts.into(wanted, worker, in);
    }

  private:
    struct reader {
        std::unique_ptr<frame_source> source;
        unsigned long long next = 0;
    };
    std::function<std::unique_ptr<frame_source>()> open;
    frame_check check;
    unsigned long long left;
    std::vector<reader> readers;
    worker_layouts layouts;
};

// Into one file, frame after frame.
class picture_output : public frame_output {
  public:
    picture_output(const std::string& path, const layout_request& request)
        : shown_name(path == "-" ? "standard output" : path),
          called(container_of_output(path, request).called),
          sink(open_sink(path, request)) {}

    const std::string& name() const override { return shown_name; }
    const char* holds_one_frame() const override { return sink->holds_one_frame() ? called : nullptr; }
    void prepare(const work_plan&, unsigned long long) override {}

    kept_frames go_on(const std::function<frame_job()>& first) override {
        return sink->go_on([&] {
            if (!first) {
                throw failure(exit_code::usage, {shown_name, {}}, "--resume needs an input that can be read again",
                              "name a file instead of standard input, or leave --resume out");
            }
            return first().picture;
        });
    }

    // Most frames are like the one before, so that the sink is asked rarely, and never while it writes.
    frame_layout wanted(unsigned, const frame_job& in, const frame_layout& own) override {
        const std::lock_guard<std::mutex> lock(memory);
        if (!asked || !identical(own, asked_for)) {
            const std::lock_guard<std::mutex> writing(sink_use);
            warnings found;
            const warning_keeper keep(found);
            answer = sink->wanted(own, in.place);
            losses.swap(found);
            asked_for = own;
            asked = true;
        }
        warn(losses);
        return answer;
    }

    void pack(unsigned, frame_job&) override {}

    void write(frame_job& in) override {
        const std::lock_guard<std::mutex> writing(sink_use);
        sink->put(in.picture);
    }

    void commit(unsigned long long, std::optional<unsigned long long>) override { sink->commit(); }

  private:
    std::string shown_name;
    const char* called;
    std::unique_ptr<frame_sink> sink;
    std::mutex memory;
    std::mutex sink_use;
    bool asked = false;
    frame_layout asked_for = empty_layout();
    frame_layout answer = empty_layout();
    warnings losses;  // that come with the answer
};

// Into files with one frame each. A file has the number of its frame, whichever frames are wanted.
class picture_files_output : public frame_output {
  public:
    picture_files_output(sequence_pattern to, const layout_request& asked)
        : files(std::move(to)), request(asked), compared(asked), keeps(request.becomes == incomplete::kept) {
        request.becomes = incomplete::removed;
        compared.becomes = incomplete::compared;
    }

    const std::string& name() const override { return files.text(); }
    void prepare(const work_plan& plan, unsigned long long) override { sinks.resize(plan.jobs); }
    kept_frames go_on(const std::function<frame_job()>&) override { return {}; }

    bool counts_what_is_kept() const override { return false; }
    bool has(unsigned long long number) const override { return keeps && is_filled_file(path(number)); }

    frame_layout wanted(unsigned worker, const frame_job& in, const frame_layout& own) override {
        // What is there already is made again only to be compared.
        sinks[worker] = open_sink(path(in.number), has(in.number) ? compared : request);
        return sinks[worker]->wanted(own, in.place);
    }

    void pack(unsigned worker, frame_job& in) override {
        sinks[worker]->put(in.picture);
        const std::lock_guard<std::mutex> lock(mutex);
        filled[in.number] = std::move(sinks[worker]);
    }

    // Files get their names in order, so that none is there behind a frame that has failed.
    void write(frame_job& in) override {
        std::unique_ptr<frame_sink> sink;
        {
            const std::lock_guard<std::mutex> lock(mutex);
            sink = std::move(filled.extract(in.number).mapped());
        }
        sink->commit();
    }

    void commit(unsigned long long, std::optional<unsigned long long>) override {}

  private:
    std::string path(unsigned long long number) const { return files.path(request.start.value_or(0) + number); }

    sequence_pattern files;
    layout_request request;
    layout_request compared;
    bool keeps;
    std::vector<std::unique_ptr<frame_sink>> sinks;  // of the workers
    std::mutex mutex;
    std::map<unsigned long long, std::unique_ptr<frame_sink>> filled;  // by number of their frames
};

}  // namespace

std::unique_ptr<frame_input> open_picture_input(const std::string& path, const layout_request& request,
                                                const char* raw_example, frame_check check) {
    const auto open = [path, request, raw_example] { return open_source(path, request, raw_example); };
    std::unique_ptr<frame_source> source = open();
    if (source->has_file_for_each()) {
        return std::make_unique<picture_files_input>(open, std::move(source), std::move(check));
    }
    return std::make_unique<picture_input>(std::move(source), std::move(check));
}

std::unique_ptr<frame_output> open_picture_output(const std::string& path, const layout_request& request) {
    if (const std::optional<sequence_pattern> files = sequence_pattern::parse(path)) {
        return std::make_unique<picture_files_output>(*files, request);
    }
    return std::make_unique<picture_output>(path, request);
}

}  // namespace qvr
