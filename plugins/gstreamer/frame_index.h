// SPDX-License-Identifier: BSD-3-Clause
//
// Where the frames of a file begin, and which is which.
#pragma once

#include <gst/gst.h>

#include <cstdint>
#include <mutex>
#include <optional>
#include <vector>

namespace qvr_gst {

class frame_index {
  public:
    void clear();
    // A frame that was met while parsing.
    void add(std::uint64_t offset, std::uint32_t size);
    // Where a frame begins, counted from 0. Frames beyond those known are looked for through `pad`, by their headers
    // alone; while all known ones are of one size the place is tried first. Empty behind the end and behind damage.
    std::optional<std::uint64_t> find(std::uint64_t frame, GstPad* pad);
    // The frame that begins there, if it has been met or found.
    std::optional<std::uint64_t> number_of(std::uint64_t offset);

  private:
    // Frames without a gap between them, the first of which has this number.
    struct run {
        std::uint64_t first = 0;
        std::vector<std::uint64_t> offsets;
        std::uint64_t end = 0;  // of the last one
    };
    void append(run& to, std::uint64_t offset, std::uint32_t size);

    std::mutex lock;
    run from_start;
    run from_seek;  // from the last place that was guessed, on
    std::uint32_t common_size = 0;
    bool one_size = true;
};

}  // namespace qvr_gst
