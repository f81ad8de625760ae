// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <vector>

namespace bench {

// Tokens in a bitstream of coded alpha alone, read by docs/format.md and not by the library's code.
std::uint64_t count_tokens(const std::vector<std::uint8_t>& stream, std::uint32_t width, unsigned sample_bytes);

}  // namespace bench
