// SPDX-License-Identifier: BSD-3-Clause
#ifndef QVR_TESTS_MODEL_RLE_H
#define QVR_TESTS_MODEL_RLE_H

// The run-length payload of an alpha plane.

#include "model_types.h"

namespace model {

exact rle_raw_size(const rle_params& params);
exact rle_worst_case_size(const rle_params& params);

// The four rules on the parameters alone.
void check_rle_params(const rle_params& params);

// The stream of one slice, padded to whole bytes.
bytes rle_encode_slice(const std::vector<std::uint32_t>& samples, std::uint32_t bit_depth);
// The table in front of the slices. The count byte keeps eight bits only.
bytes rle_index_table(const std::vector<std::uint32_t>& sizes, const std::vector<std::uint32_t>& rows);

// A null source is given as a view without data. `capacity` is what the
// caller offers for the payload.
bytes rle_encode(const rle_params& params, view source, exact capacity);

// Writes the rows that the payload names and returns the raw plane size.
exact rle_decode(const rle_params& params, view payload, target plane);

}  // namespace model

#endif
