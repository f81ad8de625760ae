// SPDX-License-Identifier: BSD-3-Clause
//
// Streams that hold one coded alpha plane each, in every way a caller can ask for it, and payloads made bit by bit.
#ifndef QVR_TESTS_HOSTILE_CODED_CARRIERS_H
#define QVR_TESTS_HOSTILE_CODED_CARRIERS_H

#include <cstdint>
#include <string>
#include <vector>

#include "probe.h"

namespace hostile {

// A way to hand a coded plane of 4 x 2 samples to the decoder.
struct carrier {
    uint32_t order = 14;
    uint32_t type = 1;        // 1 or 2
    uint32_t padding = 0;     // bytes behind each row of the alpha plane, where it has rows of its own
    bool beside_qcx = false;  // then it is taken out together with a wrapped frame
    question with(const bytes& payload) const;
    // What the decoder says: of the call that the carrier is meant for.
    std::string outcome(prober& by, const bytes& payload) const;
    std::string name() const;
};

// Of both depths, each order with alpha; with and without padding where that makes a difference.
const std::vector<carrier>& carriers();

// An index table as bits, each value a group of its own with all its 24 bits. Differences past 24 bits throw.
std::string table_bits(const std::vector<uint32_t>& sizes, const std::vector<uint32_t>& rows);
// The same, filled up to a byte.
bytes table(const std::vector<uint32_t>& sizes, const std::vector<uint32_t>& rows);
// True when each value is within 24 bits of the one before.
bool fits_table(const std::vector<uint32_t>& values);

// A run of first order with a difference of 0: it repeats the sample before.
std::string run_bits(uint64_t length, uint32_t type);

}  // namespace hostile

#endif  // QVR_TESTS_HOSTILE_CODED_CARRIERS_H
