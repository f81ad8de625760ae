// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>
#include <cstdint>

#include "rle/kernels/rle_kernels.h"
#include "rle/sample_traits.h"

enum class slice_result : std::uint8_t {
    ok,
    too_short,    // tokens end before the last sample
    run_too_long  // a run goes past the last sample
};

struct coded_slice {
    const std::uint8_t* source;
    std::size_t source_size;        // to the end of the payload: a slice may read on past the size that its table names
    slice_rows<std::uint8_t> rows;  // with `stride` bytes between them
    slice_result result;
};

// Decodes one or two slices, together because a processor has time for two at once. Does not throw, so that the outcome
// of many slices can be reported in slice order whichever thread is first.
template <class Sample>
void decode_slices(coded_slice* slices, std::uint32_t count, const rle_kernels& kernels);

extern template void decode_slices<std::uint8_t>(coded_slice*, std::uint32_t, const rle_kernels&);
extern template void decode_slices<std::uint16_t>(coded_slice*, std::uint32_t, const rle_kernels&);
