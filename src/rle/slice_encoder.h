// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>
#include <cstdint>

#include "rle/kernels/rle_kernels.h"
#include "rle/sample_traits.h"

// Codes the samples of a slice, row after row, as one stream of runs, and returns the number of bytes written. The
// destination must hold the worst case; it is never overrun.
template <class Sample>
std::size_t encode_slice(const slice_rows<const std::uint8_t>& rows, std::uint8_t* destination, std::size_t capacity,
                         const rle_kernels& kernels);

extern template std::size_t encode_slice<std::uint8_t>(const slice_rows<const std::uint8_t>&, std::uint8_t*,
                                                       std::size_t, const rle_kernels&);
extern template std::size_t encode_slice<std::uint16_t>(const slice_rows<const std::uint8_t>&, std::uint8_t*,
                                                        std::size_t, const rle_kernels&);
