// SPDX-License-Identifier: BSD-3-Clause
//
// Copying to memory that is not read again soon: past the caches, so that a destination larger than they are neither
// has its old contents loaded first nor drives out what is still needed.
#pragma once

#include <cstddef>
#include <cstdint>

// Both take any alignment.
void plain_copy(std::uint8_t* to, const std::uint8_t* from, std::size_t size);
void stream_copy(std::uint8_t* to, const std::uint8_t* from, std::size_t size);

// The same for what was made in a tile of the nearest cache. Meanwhile `ahead`, of which the tile's next content will be
// made, is fetched there; what lies behind all that is ever read of it does no harm. After the last tile comes
// finish_streaming(): only from there on other threads see the stores in order.
void stream_tile(std::uint8_t* to, const std::uint8_t* tile, std::size_t size, const std::uint8_t* ahead,
                 std::size_t ahead_size);
void finish_streaming();

// Whether a call that reads and writes this many bytes in all does better past the caches: when they do not hold them.
bool is_worth_streaming(std::uint64_t traffic);

// From now on as if the caches held `bytes`. For tests and benchmarks; not while a call runs.
void assume_cache_size(std::uint64_t bytes);
