// SPDX-License-Identifier: BSD-3-Clause
//
// What shuffled_executor.cpp, which stands in for the library's thread pool, lets a test choose and see.
#pragma once

#include <cstdint>

namespace shuffled {

void seed(std::uint32_t value);
// Since the last seed: tasks run, and those of them that ran before one that had been submitted earlier.
std::uint32_t tasks_run();
std::uint32_t tasks_out_of_order();

}  // namespace shuffled
