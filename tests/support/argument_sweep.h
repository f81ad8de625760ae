// SPDX-License-Identifier: BSD-3-Clause
//
// Calls with every combination of null pointers and wrong size fields.
#ifndef QVR_TESTS_SUPPORT_ARGUMENT_SWEEP_H
#define QVR_TESTS_SUPPORT_ARGUMENT_SWEEP_H

#include <gtest/gtest.h>

#include <vector>

#include "records.h"

namespace test {

// The right size, and wrong ones around it, those of other records among them.
inline std::vector<uint64_t> sizes_around(uint64_t right) {
    std::vector<uint64_t> sizes = {right};
    for (const uint64_t wrong :
         {uint64_t{0}, uint64_t{1}, uint64_t{9}, uint64_t{10}, uint64_t{11}, uint64_t{15}, uint64_t{16}, uint64_t{17},
          uint64_t{27}, uint64_t{28}, uint64_t{29}, uint64_t{35}, uint64_t{36}, uint64_t{37}, uint64_t{0x10000000a},
          uint64_t{0x100000024}, ~uint64_t{0}}) {
        if (wrong != right) {
            sizes.push_back(wrong);
        }
    }
    return sizes;
}

struct arguments {
    unsigned mask;                                       // pointers that are null, a bit each
    alignas(8) QVRUncompressed_UncompressedParams_t up;  // packed, and its fields are compared by reference
    alignas(8) QVRUncompressed_CompressedParams_t cp;
    uint32_t expected;  // null pointers are found before wrong sizes

    // The pointer itself, or null when its bit is set.
    template <class pointer>
    pointer unless_null(unsigned bit, pointer value) const {
        return (mask >> bit & 1) != 0 ? nullptr : value;
    }
};

// check() gets every combination: `pointers` bits of the mask, and wrong sizes of the frame record.
template <class work>
void for_each_frame_argument(unsigned pointers, const QVRUncompressed_UncompressedParams_t& up, const work& check) {
    for (unsigned mask = 0; mask < 1u << pointers; ++mask) {
        for (const uint64_t size : sizes_around(36)) {
            SCOPED_TRACE(testing::Message() << "null pointers " << mask << ", size " << size);
            arguments with = {mask, up, raw_alpha(), mask != 0 ? 2u : size != 36 ? 3u : 0u};
            with.up.size = size;
            check(with);
        }
    }
}

// The same, with wrong sizes of the stream record besides.
template <class work>
void for_each_argument(unsigned pointers, const QVRUncompressed_UncompressedParams_t& up, const work& check) {
    for_each_frame_argument(pointers, up, [&](arguments& with) {
        const uint32_t expected = with.expected;
        for (const uint64_t size : sizes_around(10)) {
            SCOPED_TRACE(testing::Message() << "stream record's size " << size);
            with.cp.size = size;
            with.expected = expected == 0 && size != 10 ? 3 : expected;
            check(with);
        }
    });
}

}  // namespace test

#endif  // QVR_TESTS_SUPPORT_ARGUMENT_SWEEP_H
