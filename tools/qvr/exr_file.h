// SPDX-License-Identifier: BSD-3-Clause
//
// OpenEXR pictures: channels R, G, B and A, or Y, of half or single precision.
#pragma once

#include "file_io.h"
#include "picture.h"

namespace qvr {

extern const picture_format k_exr_format;

bool begins_like_exr(input_file& file);

}  // namespace qvr
