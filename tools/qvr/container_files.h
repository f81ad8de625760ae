// SPDX-License-Identifier: BSD-3-Clause
//
// What the rows of the table of containers open, each from a file of its own.
#pragma once

#include <memory>
#include <string>

#include "codec.h"
#include "frame.h"

namespace qvr {

// raw_frames.cpp
std::unique_ptr<frame_source> open_raw_source(std::unique_ptr<input_file> file, const layout_request& request);
std::unique_ptr<frame_sink> open_raw_sink(const std::string& path, const layout_request& request);

// y4m_frames.cpp
bool begins_like_y4m(input_file& file);
std::unique_ptr<frame_source> open_y4m_source(std::unique_ptr<input_file> file, const layout_request& request);
std::unique_ptr<frame_sink> open_y4m_sink(const std::string& path, const layout_request& request);

// qvr_frames.cpp
// The layout to decode a frame of the given description into, and the one to encode a frame from: as the command line
// asks. What is lost then is said.
frame_layout layout_from_qvr(const frame_layout& own, bytes_view stream, const location& where,
                             const layout_request& request);
frame_layout layout_into_qvr(const frame_layout& own, const location& where, const layout_request& request);
bool begins_like_qvr(input_file& file);
std::unique_ptr<frame_source> open_qvr_source(std::unique_ptr<input_file> file, const layout_request& request);
std::unique_ptr<frame_sink> open_qvr_sink(const std::string& path, const layout_request& request);

}  // namespace qvr
