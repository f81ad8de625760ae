// SPDX-License-Identifier: BSD-3-Clause
//
// What decoding lets pass in the payloads of planes: rows and slices that do not end where they should, and bits that
// fill up a byte and are not zero.
#pragma once

#include "box_tree.h"
#include "codec.h"

namespace qvr {

// Adds what it finds to the boxes of the frame's tree.
void check_payloads(bytes_view frame, box_tree& tree);

}  // namespace qvr
