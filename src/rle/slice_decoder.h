// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>
#include <cstdint>

#include "rle/sample_traits.h"

enum class slice_result : std::uint8_t {
    ok,
    too_short,    // tokens end before the last sample
    run_too_long  // a run goes past the last sample
};

// Decodes a slice into rows with `stride` bytes between them. The source goes on to the end of the payload: a slice may
// read on past the size that the index table names. Does not throw, so that the outcome of many slices can be reported
// in slice order whichever thread is first.
template <class Sample>
slice_result decode_slice(const std::uint8_t* source, std::size_t source_size, const slice_rows<std::uint8_t>& rows);

extern template slice_result decode_slice<std::uint8_t>(const std::uint8_t*, std::size_t,
                                                        const slice_rows<std::uint8_t>&);
extern template slice_result decode_slice<std::uint16_t>(const std::uint8_t*, std::size_t,
                                                         const slice_rows<std::uint8_t>&);
