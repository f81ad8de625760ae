// SPDX-License-Identifier: BSD-3-Clause
//
// Files put together of text and samples.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>

#include "process.h"

bytes text(const std::string& characters);
bytes joined(std::initializer_list<bytes> parts);

// 16-bit samples as they stand in memory and Y4M files, and as they stand in Netpbm files.
bytes little_endian(std::initializer_list<unsigned> words);
bytes big_endian(std::initializer_list<unsigned> words);

// The arguments run without a failure and without a word.
void expect_silent(const scratch_folder& folder, const std::vector<std::string>& arguments);

// The arguments fail with the code, saying the message and the hint, and leave no further file.
void expect_failure(const scratch_folder& folder, const std::vector<std::string>& arguments, int code,
                    const std::string& message, const std::string& hint);
