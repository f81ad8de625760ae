// SPDX-License-Identifier: BSD-3-Clause
//
// Changes to a bitstream: box sizes and boxes, found in a good stream by its structure.
#ifndef QVR_TESTS_HOSTILE_CHANGED_H
#define QVR_TESTS_HOSTILE_CHANGED_H

#include <cstdint>
#include <string>
#include <vector>

#include "bytes.h"

namespace hostile {

using test::bytes;

uint32_t load_32(const bytes& stream, size_t at);
void store_32(bytes& stream, size_t at, uint32_t value);
bytes with_32(bytes stream, size_t at, uint32_t value);
bytes first_bytes(const bytes& stream, size_t count);

struct found_box {
    std::string type;
    size_t offset = 0;
    uint32_t size = 0;
    std::vector<size_t> parents;  // offsets of the boxes it lies in, the outermost first
};

// Every box of a good stream, parents before their children.
std::vector<found_box> boxes_of(const bytes& stream);

struct place {
    size_t offset = 0;
    std::vector<size_t> parents;  // the boxes that grow when something is put there
};

// Before and behind every box, and in front of the contents of every box that holds boxes.
std::vector<place> places_of(const bytes& stream);

bytes inserted(bytes stream, const place& where, const bytes& what);

// What a size field of `size` is set to.
std::vector<uint32_t> bad_sizes(uint32_t size);

// What a width, a height or a stride is set to.
const std::vector<uint32_t>& extremes();

}  // namespace hostile

#endif  // QVR_TESTS_HOSTILE_CHANGED_H
