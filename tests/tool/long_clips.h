// SPDX-License-Identifier: BSD-3-Clause
//
// A sequence of sixty small frames, and what tests of long work do with it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "process.h"

using words = std::vector<std::string>;

constexpr unsigned k_long_frames = 60;
constexpr std::size_t k_small_samples = 24;  // bytes of samples of a 4x2 RGB U8 frame
constexpr std::size_t k_small_frame = 61;    // and of such a frame in a .qvr file

// The samples of the sequence.
bytes long_samples();
// long.raw and long.qvr, the latter made in one go by one job.
void make_long_clip(const scratch_folder& folder);

// "qvr encode IN OUT --size 4x2 --order RGB24 -q MORE"
words encode_small(const std::string& in, const std::string& out, const words& more = {});
words operator+(words first, const words& second);

// Waits until a file of the folder has so many bytes.
bool comes_to(const scratch_folder& folder, const std::string& name, std::size_t size);
void feed_bytes(int pipe, const bytes& from, std::size_t count);

// Every line of standard error that is JSON.
std::vector<std::string> progress_lines(const std::string& text);
