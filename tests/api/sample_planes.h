// SPDX-License-Identifier: BSD-3-Clause
//
// A slow and plain second description of the raw layouts: any frame taken apart into samples and put together again.
#ifndef QVR_TESTS_API_SAMPLE_PLANES_H
#define QVR_TESTS_API_SAMPLE_PLANES_H

#include <cstdint>
#include <vector>

#include "codec.h"

namespace test {

// Rows of samples, each of the width that its type has in memory; packed ten-bit samples are held as type 3.
struct sample_planes {
    std::vector<bytes> main;
    std::vector<bytes> cb;
    std::vector<bytes> cr;
    std::vector<bytes> alpha;
};

inline bool operator==(const sample_planes& left, const sample_planes& right) {
    return left.main == right.main && left.cb == right.cb && left.cr == right.cr && left.alpha == right.alpha;
}

// The colour samples stand in the order of the bitstream.
sample_planes take_apart(const frame_params& up, const bytes& raw);
// Bytes that belong to no sample hold `fill`.
bytes put_together(const frame_params& up, const sample_planes& planes, uint8_t fill);
// Clears the bits that a bitstream of this type does not hold.
sample_planes as_stored(const sample_planes& planes, uint32_t type);
// The whole bitstream, with alpha stored raw where it is stored.
bytes stream_of(const frame_params& up, const sample_planes& planes);

bool has_alpha(uint32_t order);
// The order that the colour samples decode into when their alpha was not stored.
uint32_t order_without_alpha(uint32_t order);

}  // namespace test

#endif  // QVR_TESTS_API_SAMPLE_PLANES_H
