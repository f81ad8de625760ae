// SPDX-License-Identifier: BSD-3-Clause
#include "rle/rle_params.h"

#include <algorithm>

#include "api/base/errors.h"

namespace {

constexpr std::uint32_t k_default_slices = 16;

}  // namespace

void validate(const rle_params& params) {
    if (params.width == 0) {
        throw_invalid_argument("Invalid width");
    }
    if (params.height == 0) {
        throw_invalid_argument("Invalid height");
    }
    if (params.bit_depth != 8 && params.bit_depth != 16) {
        throw_invalid_argument("only 8, and 16 bitdepth supported");
    }
    if (params.row_bytes != 0 && params.row_bytes < packed_row_bytes(params)) {
        throw_invalid_argument("row_bytes is too small, it should be at least ", packed_row_bytes(params),
                               " according to params");
    }
}

std::uint64_t packed_row_bytes(const rle_params& params) {
    return std::uint64_t{params.width} * (params.bit_depth == 8 ? 1 : 2);
}

std::uint64_t row_stride(const rle_params& params) {
    return params.row_bytes != 0 ? params.row_bytes : packed_row_bytes(params);
}

wide raw_plane_size(const rle_params& params) {
    return wide{row_stride(params)} * params.height;
}

std::uint32_t slice_count(const rle_params& params) {
    return std::min(params.height, params.slice_count != 0 ? params.slice_count : k_default_slices);
}

std::uint64_t worst_case_slice_size(const rle_params& params, std::uint32_t rows) {
    const std::uint32_t samples = params.width * rows;  // kept as is: the format counts samples modulo 2^32
    return (std::uint64_t{samples} * (params.bit_depth + 3) + 7) / 8;
}

wide worst_case_payload_size(const rle_params& params) {
    const std::uint32_t slices = slice_count(params);
    if (slices == 0) {
        return k_largest_index_table;
    }
    // All slices are of one of two heights: the first ones have a row more.
    const std::uint32_t larger = params.height % slices;
    const std::uint32_t rows = params.height / slices;
    return k_largest_index_table + wide{larger} * worst_case_slice_size(params, rows + 1) +
           wide{slices - larger} * worst_case_slice_size(params, rows);
}
