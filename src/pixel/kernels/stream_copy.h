// SPDX-License-Identifier: BSD-3-Clause
//
// Copying to memory that is not read again soon: past the caches, so that a destination larger than they are neither
// has its old contents loaded first nor drives out what is still needed.
#pragma once

#include <cstddef>
#include <cstdint>

// Any alignment. Other threads see the bytes after finish_streaming().
void stream_copy(std::uint8_t* to, const std::uint8_t* from, std::size_t size);
void finish_streaming();

// Whether a call that reads and writes this many bytes in all does better past the caches: when they do not hold them.
bool is_worth_streaming(std::uint64_t traffic);

// From now on as if the caches held `bytes`. For tests and benchmarks; not while a call runs.
void assume_cache_size(std::uint64_t bytes);
