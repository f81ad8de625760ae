// SPDX-License-Identifier: BSD-3-Clause
//
// What the rows of the table of containers open, each from a file of its own.
#pragma once

#include <memory>
#include <string>

#include "frame.h"

namespace qvr {

// raw_frames.cpp
std::unique_ptr<frame_source> open_raw_source(std::unique_ptr<input_file> file, const layout_request& request);
std::unique_ptr<frame_sink> open_raw_sink(const std::string& path, const layout_request& request);

}  // namespace qvr
