// SPDX-License-Identifier: BSD-3-Clause
#ifndef QVR_TESTS_MODEL_PACKING_H
#define QVR_TESTS_MODEL_PACKING_H

// One row at a time between the caller's layout and the stored layout.

#include "model_types.h"

namespace model {

struct stored_row {
    bytes colour;
    bytes alpha;  // empty unless the caller's pixels carry alpha
};

// A row of an interleaved caller plane, without padding.
stored_row pack_interleaved_row(std::uint32_t order, std::uint32_t type, std::uint32_t width, const bytes& row);
// A row of a caller plane that holds one component.
bytes pack_plane_row(std::uint32_t type, const bytes& row);

// The inverse. `length` is the number of bytes of the caller's row; fixed
// says that the stored samples are 16-bit fixed point to be made float.
bytes unpack_interleaved_row(std::uint32_t order, std::uint32_t type, std::uint32_t width, const stored_row& row,
                             std::size_t length, bool fixed);
bytes unpack_plane_row(std::uint32_t type, std::uint32_t width, const bytes& row);

}  // namespace model

#endif
