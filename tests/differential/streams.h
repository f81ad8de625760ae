// SPDX-License-Identifier: BSD-3-Clause
#ifndef QVR_TESTS_DIFFERENTIAL_STREAMS_H
#define QVR_TESTS_DIFFERENTIAL_STREAMS_H

// Bitstreams that no encoder of this product writes, valid and not.

#include <cstdint>
#include <string>
#include <vector>

#include "generate.h"
#include "model.h"
#include "rng.h"

namespace differential {

// A box tree that can lie about its sizes.
struct box_node {
    std::string type;
    model::bytes head;  // payload bytes in front of the children
    std::vector<box_node> children;
    model::bytes tail;  // payload bytes behind the children
    bool lies = false;
    std::uint32_t claimed = 0;  // the declared size when the box lies
};

model::bytes serialise(const box_node& node);

// A frame with planes of any allowed set, random dimensions and contents,
// with the freedoms that a reader grants: short and long 'sinf' boxes, unknown
// boxes, surplus bytes, legacy spellings, planes in any sequence.
box_node foreign_frame(rng& random);

// Swaps, doubles, drops and inserts boxes and makes sizes lie.
void damage_tree(rng& random, box_node& root);
// Flips bytes, overwrites fields and cuts the end off.
void damage_bytes(rng& random, model::bytes& stream);

// A run-length payload for a plane; `damage` makes it a wrong one.
model::bytes rle_payload(rng& random, std::uint32_t width, std::uint32_t height, std::uint32_t depth, bool damage);

// A record to decode the stream with: mostly one that fits it.
model::frame_params caller_for(rng& random, const model::bytes& stream);

}  // namespace differential

#endif
