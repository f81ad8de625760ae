// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <thread>

// Worker threads for a configured count: 0 asks for one a processor, and one alone would only hand work to and fro.
inline std::uint32_t worker_count(std::uint32_t configured) {
    const std::uint32_t count = configured != 0 ? configured : std::thread::hardware_concurrency();
    return count == 1 ? 0 : count;
}
