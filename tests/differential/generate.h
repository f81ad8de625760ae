// SPDX-License-Identifier: BSD-3-Clause
#ifndef QVR_TESTS_DIFFERENTIAL_GENERATE_H
#define QVR_TESTS_DIFFERENTIAL_GENERATE_H

// Random frames, raw buffers and alpha contents.

#include <cstdint>
#include <vector>

#include "model.h"
#include "rng.h"

namespace differential {

struct format_pair {
    std::uint32_t order;
    std::uint32_t type;
};

// All supported pairs.
const std::vector<format_pair>& all_pairs();

std::uint32_t small_dimension(rng& random);
std::uint32_t wild_value(rng& random);

// A record that mostly is one the encoder takes. `pair_index` counts through
// the pairs so that each gets its share of the cases.
model::frame_params encodable_frame(rng& random, std::uint64_t pair_index);
// Strides of 0, the least, wider, and now and then too small.
void random_strides(rng& random, model::frame_params& frame, unsigned percent_too_small);
model::stream_params random_stream(rng& random);
// A record with any values at all.
model::frame_params wild_frame(rng& random);

// Bytes that are flat, ramps, noise, or a mix in runs.
model::bytes raw_content(rng& random, std::size_t size);
// Puts such content where it meets the run-length coder: as 16-bit ramps too.
model::bytes raw_content_16(rng& random, std::size_t size);

// Mostly exactly `size`; else one short, none at all, or larger.
std::size_t around(rng& random, model::exact size);

}  // namespace differential

#endif
