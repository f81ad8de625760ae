// SPDX-License-Identifier: BSD-3-Clause
//
// A .qvr file from front to back, however damaged: what cannot be read does not hide what stands behind it.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "failure.h"
#include "qvr_file.h"

namespace qvr {

// What stands where a frame should be.
struct found_frame {
    const frame_reader& reader;  // its number, its place, the bytes that are there
    const failure* broken;       // why it is no whole frame, and the last that can be found; null for a whole one
};

// What is wrong with a frame, if anything.
using frame_problem = std::optional<failure>;

// Calls `look` for each frame, or for the one that is chosen alone. Problems are said on standard error as they come,
// but the first is kept, and thrown when all has been seen. An empty file is a data failure, a chosen frame that is not
// there a usage failure.
void scan_frames(const std::string& path, std::optional<std::uint32_t> only,
                 const std::function<frame_problem(const found_frame&)>& look);

}  // namespace qvr
