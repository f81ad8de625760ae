// SPDX-License-Identifier: BSD-3-Clause
//
// Raw clips and .qvr files for the tests, and small edits of them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "process.h"

// count bytes without a pattern, the same for the same seed.
bytes noise(std::size_t count, std::uint32_t seed = 1);

// Makes NAME.qvr of `frames` 4x2 RGB U8 frames (24 bytes of samples, 61 bytes of file each) and returns the samples.
bytes make_rgb_clip(const scratch_folder& folder, const std::string& name, unsigned frames);
constexpr std::size_t k_rgb_frame = 61;

void put_le32(bytes& in, std::size_t at, std::uint32_t value);
std::uint32_t get_le32(const bytes& in, std::size_t at);
