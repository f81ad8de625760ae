// SPDX-License-Identifier: BSD-3-Clause
//
// Frame descriptions for the targets: as a stream has them, as choices have them, or as nobody should.
#pragma once

#include "harness.h"

namespace fuzz {

constexpr std::array<std::uint32_t, 8> k_types = {1, 2, 3, 4, 5, 6, 7, 214};
constexpr std::array<std::uint32_t, 10> k_extremes = {0,       1,          7,          8,          0xffff,
                                                      0x10000, 0x7fffffff, 0x80000000, 0xfffffffe, 0xffffffff};

// A record with its size field set and no strides.
uncompressed_params make_params(std::uint32_t order, std::uint32_t type, std::uint32_t width, std::uint32_t height);

// Bytes of the frame; those that no buffer here can have count as k_most_memory.
std::size_t frame_size(const uncompressed_params& up);

// Leaves the strides at 0, makes them a little wider than needed, or now and then too small.
void choose_strides(uncompressed_params& up, byte_source& choices);

// What a caller might ask a decoder for: mostly what the stream holds, in the same or another order and type.
uncompressed_params choose_decoder_params(const exact_buffer& stream, byte_source& choices);

// The size of a buffer that needs `needed` bytes: mostly just that.
std::size_t choose_size(std::size_t needed, byte_source& choices);

}  // namespace fuzz
