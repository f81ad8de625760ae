// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "api/base/records.h"

// What encoding asks of its records before it looks at a pixel. Throws invalid_argument for the first broken rule.
// Orders and types that do not exist pass: looking up their planes refuses them.
void check_encoder_params(const QVRUncompressed_UncompressedParams_t& up, const QVRUncompressed_CompressedParams_t& cp);
