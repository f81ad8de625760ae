// SPDX-License-Identifier: BSD-3-Clause
//
// Where the frames of a file begin, and which is which.
#pragma once

#include <gst/gst.h>

#include <cstdint>
#include <limits>
#include <mutex>
#include <optional>
#include <vector>

namespace qvr_gst {

// While all frames are of one size, the place of a frame is its number times that size, whatever stands between them.
// Else numbers are counted from the start of the file, or from the last frame whose number was known, on.
class frame_index {
  public:
    void clear();
    // A frame that was met while parsing. The size of one that cannot be read is no evidence of what the others have.
    void add(std::uint64_t offset, std::uint32_t size, bool readable);
    // Where a frame begins, counted from 0. Frames beyond those known are looked for through `pad`, by their headers
    // alone. Empty behind the end and, with frames of several sizes, behind damage.
    std::optional<std::uint64_t> find(std::uint64_t frame, GstPad* pad);
    // The frame that begins there, if that can be known.
    std::optional<std::uint64_t> number_of(std::uint64_t offset);

  private:
    // Frames without a gap between them, the first of which has this number.
    struct run {
        std::uint64_t first = 0;
        std::vector<std::uint64_t> offsets;
        std::uint64_t end = 0;  // of the last one
    };
    static constexpr std::uint64_t k_nowhere = std::numeric_limits<std::uint64_t>::max();

    static void append(run& to, std::uint64_t offset, std::uint32_t size);
    void note_size(std::uint32_t size);
    std::optional<std::uint64_t> computed_number(std::uint64_t offset) const;

    std::mutex lock;
    run from_start;
    run later = {0, {}, k_nowhere};  // behind the last jump over damage or to a computed place
    std::uint32_t common_size = 0;
    bool one_size = true;
};

}  // namespace qvr_gst
