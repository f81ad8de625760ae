// SPDX-License-Identifier: BSD-3-Clause
//
// The tool's own look at the payload of a coded alpha plane: its table of slices, and where the runs of a slice end.
// It reads only, and decodes no sample.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "codec.h"

namespace qvr {

struct alpha_slice {
    std::uint64_t offset = 0;  // from the start of the payload
    std::uint64_t bytes = 0;   // as the table says
    std::uint64_t first_row = 0;
    std::uint64_t rows = 0;
};

struct slice_table {
    std::vector<alpha_slice> slices;
    std::uint64_t bytes = 0;   // of the table itself; the slices begin behind it
    std::uint64_t rows = 0;    // of all slices
    std::uint64_t end = 0;     // of the last slice
    bool padding_zero = true;  // the bits between the table and the first slice
    std::string problem;       // why it cannot be read; else empty
};

slice_table read_slice_table(bytes_view payload);

struct slice_extent {
    std::uint64_t bytes = 0;   // that the runs take
    bool padding_zero = true;  // the bits behind the last run
    std::string problem;       // why the runs do not fill the slice; else empty
};

// Follows the runs of a slice of so many samples from the first of the bytes on. bits: of a sample, 8 or 16.
slice_extent measure_slice(bytes_view from, std::uint64_t samples, unsigned bits);

}  // namespace qvr
