// SPDX-License-Identifier: BSD-3-Clause
#ifndef QVR_TESTS_MODEL_FORMATS_H
#define QVR_TESTS_MODEL_FORMATS_H

// Component orders, component types, plane-type codes and the relations
// between them. Codes are kept as four-character strings; the empty string
// stands for an unknown code.

#include "model_types.h"

#include <set>
#include <string>
#include <vector>

namespace model {

using code = std::string;

enum class plane_role { unknown, main, cb, cr, alpha, stitched };

unsigned bits_of_type(std::uint32_t type);
unsigned sample_bytes(std::uint32_t type);
bool has_alpha(std::uint32_t order);
bool is_planar(std::uint32_t order);
// 422, 420, 444 or 1; 0 outside the known orders.
unsigned subsampling(std::uint32_t order);

// All codes that the format knows, in table order.
const std::vector<code>& known_codes();
plane_role role_of(const code& name);
unsigned bits_of_code(const code& name);
bool is_coded_alpha(const code& name);
// Bytes of one packed row; 0 for planes that have no rows.
exact row_bytes(const code& name, std::uint32_t width);
// What a reader makes of four stored bytes: legacy spellings become current
// ones, anything else unknown becomes the empty string.
code normalise(const code& stored);

// The planes of a pair; throws for a pair that is not supported.
std::vector<code> format_planes(std::uint32_t order, std::uint32_t type);
bool is_supported_pair(std::uint32_t order, std::uint32_t type);

const std::set<std::set<code>>& allowed_plane_sets();
// Throws "Invalid combination of planes".
void check_plane_set(const std::vector<code>& planes);

// True when a stream plane satisfies a wanted plane.
bool satisfies(const code& stored, const code& wanted);

// The order and type that metadata reports for a main plane.
struct described_format {
    std::uint32_t order = 0;
    std::uint32_t type = 0;
};
described_format describe(const code& main_plane, std::size_t plane_count);

}  // namespace model

#endif
