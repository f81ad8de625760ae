// SPDX-License-Identifier: BSD-3-Clause
//
// Damage that a parser of boxes cares about. Without it nearly every change of a byte would end at the first size that
// does not add up.
#pragma once

#include <random>

#include "harness.h"

namespace fuzz {

// Changes `size` bytes of data in place, in room for `room`, and returns how many there are now: libFuzzer's own way.
using byte_mutator = std::size_t (*)(std::uint8_t* data, std::size_t size, std::size_t room);

// The same for a whole input: stream and choices.
std::size_t mutate_input(std::uint8_t* data, std::size_t size, std::size_t room, unsigned seed,
                         byte_mutator change_bytes);

}  // namespace fuzz
