// SPDX-License-Identifier: BSD-3-Clause
//
// The two ends of work on many frames: where jobs come from, and what becomes of them. A .qvr file, or whatever a
// frame_source reads and a frame_sink writes.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "codec.h"
#include "frame.h"
#include "job_pipeline.h"
#include "manifest.h"

namespace qvr {

// How many frames are worked on at once, and how many threads the codec has for each.
struct work_plan {
    unsigned jobs = 1;
    unsigned threads = 1;
};

// In which layout a frame is wanted that has the given one, or is described so.
using layout_choice = std::function<frame_layout(const frame_layout&, const location&)>;

class frame_input {
  public:
    virtual ~frame_input() = default;
    // How many frames read() would still give, where that can be known.
    virtual std::optional<unsigned long long> frames_left() = 0;
    // Passes over frames, and returns how many there were.
    virtual unsigned long long skip(unsigned long long count) = 0;
    // Makes what unpack() needs for each of the workers.
    virtual void prepare(const work_plan& plan) = 0;
    // Steps of the pipeline: the next frame as it is stored, and its samples in the layout that is wanted.
    virtual bool read(frame_job& to) = 0;
    virtual void unpack(unsigned worker, frame_job& in, const layout_choice& wanted) = 0;
    // Frames a second, where the input says it.
    virtual std::optional<frame_rate> rate() const { return std::nullopt; }
    // Of all codec calls. Only when the work has ended.
    virtual codec_time time() const { return {}; }
};

class frame_output {
  public:
    virtual ~frame_output() = default;
    virtual const std::string& name() const = 0;
    // What a file is called that takes only one frame, as in "a PNG"; null: it takes many.
    virtual const char* holds_one_frame() const { return nullptr; }
    // Makes what wanted() and pack() need for each of the workers. first: the number of the first frame.
    virtual void prepare(const work_plan& plan, unsigned long long first) = 0;

    // Finds what is kept, compares its first frame, and makes ready to go on: the next frame to be written is then the
    // last one that is kept, to be compared as well. first: gives the first frame in the layout that is wanted, not
    // packed; null when the input cannot be read twice.
    virtual kept_frames go_on(const std::function<frame_job()>& first) = 0;
    // Whether go_on() knows by the number of frames where to go on.
    virtual bool counts_what_is_kept() const { return true; }
    // Whether frame `number` is there already and need not be made.
    virtual bool has(unsigned long long) const { return false; }

    // Steps of the pipeline: in which layout a frame is wanted that has the layout `own`, what can be made of it by
    // several workers at once, and what must be done in order.
    virtual frame_layout wanted(unsigned, const frame_job&, const frame_layout& own) { return own; }
    virtual void pack(unsigned worker, frame_job& in) = 0;
    virtual void write(frame_job& in) = 0;
    // end: the number behind the last frame that was to be written; total: of all frames of the input, where known.
    virtual void commit(unsigned long long end, std::optional<unsigned long long> total) = 0;

    virtual codec_time time() const { return {}; }
    // How large the whole output is, where that is of interest.
    virtual std::optional<std::uint64_t> bytes_written() const { return std::nullopt; }
};

// stream_ends.cpp: .qvr files. described: what the command line makes of a frame and the layout that it says it has;
// wanted: the layout in which a frame is to be encoded. Either may be null: as it is. manifest: the path of one, or empty.
using stream_choice = std::function<frame_layout(const frame_layout&, const frame_job&)>;
std::unique_ptr<frame_input> open_stream_input(const std::string& path, stream_choice described);
std::unique_ptr<frame_output> open_stream_output(const std::string& path, const compression& how, incomplete becomes,
                                                 const std::string& manifest, layout_choice wanted);

// picture_ends.cpp: all that containers.h knows. check: called with the source when it has given a frame.
using frame_check = std::function<void(const frame_source&, const frame_layout&)>;
std::unique_ptr<frame_input> open_picture_input(const std::string& path, const layout_request& request,
                                                const char* raw_example, frame_check check);
std::unique_ptr<frame_output> open_picture_output(const std::string& path, const layout_request& request);

}  // namespace qvr
