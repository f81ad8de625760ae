// SPDX-License-Identifier: BSD-3-Clause
//
// Many frames at once, in order: one thread reads, several work, the calling thread writes.
#pragma once

#include <cstdint>
#include <exception>
#include <functional>
#include <string>
#include <vector>

#include "codec.h"
#include "failure.h"
#include "frame.h"
#include "warnings.h"

namespace qvr {

// One frame on its way. Its buffers are used again for later frames.
struct frame_job {
    unsigned long long number = 0;  // of the frame in the input
    location place;                 // for messages
    frame picture;
    std::vector<std::uint8_t> coded;  // may be longer than the frame's bitstream; coded_bytes counts
    std::size_t coded_bytes = 0;
    std::string checksum;  // of the bitstream, where one is wanted
    std::exception_ptr problem;
    warnings words;  // of reading it and working on it, said before it is written

    bytes_view bitstream() const { return {coded.data(), coded_bytes}; }
};

struct pipeline_steps {
    // Fills the job's number, place and what work needs; false when there is no further frame. Called on a thread of
    // its own. After a data failure it may be called again, for the frame behind the one that failed.
    std::function<bool(frame_job&)> read;
    // Called on several threads at once, for each worker (counted from 0) on one.
    std::function<void(unsigned worker, frame_job&)> work;
    // Called on the calling thread, in the order of reading.
    std::function<void(frame_job&)> write;
    // What to do with a frame whose data are bad, in the place of write. Without it the first one ends the work.
    std::function<void(const frame_job&, const failure&)> lose;
    // Called when the work ends early and `read` may still be waiting for input.
    std::function<void()> stop_reading;
};

// As many frames as there are workers, and two, are in memory at a time. Of several failures the one of the first frame
// is thrown, when all frames before it have been written and all threads have ended.
void run_pipeline(unsigned workers, const pipeline_steps& steps);

}  // namespace qvr
