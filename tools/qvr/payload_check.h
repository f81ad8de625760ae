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

// A data failure when the slices of a coded alpha plane leave rows of it out: these cannot be known, and nothing bears
// out the size that the plane claims.
void require_covered_rows(bytes_view frame, const location& where);

}  // namespace qvr
