// SPDX-License-Identifier: BSD-3-Clause
//
// The description of one alpha plane, shared by run-length encoder and decoder, and what follows from it.
#pragma once

#include <cstdint>

#include "api/base/checked.h"

struct rle_params {
    std::uint32_t width;        // samples in a row
    std::uint32_t height;       // rows
    std::uint32_t bit_depth;    // 8: one byte a sample; 16: one 16-bit word in host order
    std::uint32_t slice_count;  // asked for when encoding; 0: 16
    std::uint32_t row_bytes;    // from row to row of the raw plane; 0: rows without a gap
};

// Throws invalid_argument on the first rule that the parameters break.
void validate(const rle_params& params);

// Bytes of a row without padding, and from row to row.
std::uint64_t packed_row_bytes(const rle_params& params);
std::uint64_t row_stride(const rle_params& params);

// Bytes of the raw plane, padding behind the last row included.
wide raw_plane_size(const rle_params& params);

// Slices that the plane is really cut into: never more than rows. 0 for a plane without rows.
std::uint32_t slice_count(const rle_params& params);

// The largest index table, in bytes: a count byte, and for each of 255 slices two values of up to 26 bits.
constexpr std::uint32_t k_largest_index_table = (8 + 2 * 255 * 26 + 7) / 8;

// What coding a slice of this many rows can reach: every sample a token of its own, of bit_depth + 3 bits.
std::uint64_t worst_case_slice_size(const rle_params& params, std::uint32_t rows);

// What coding the plane can reach, index table included.
wide worst_case_payload_size(const rle_params& params);
