// SPDX-License-Identifier: BSD-3-Clause
//
// Where libFuzzer finds the mutator; linked with the targets whose inputs are streams.
#include "mutator.h"

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t room);
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t room, unsigned seed);

std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t room, unsigned seed) {
    return fuzz::mutate_input(data, size, room, seed, LLVMFuzzerMutate);
}
