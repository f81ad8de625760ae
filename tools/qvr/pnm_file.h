// SPDX-License-Identifier: BSD-3-Clause
//
// Netpbm pictures: PAM, PPM and PGM in their binary forms, one or several in a file. Their samples have 8 bits, or stand
// in the low bits of big-endian 16-bit words; 10- and 12-bit samples are known by their largest value, 1023 or 4095.
#pragma once

#include "file_io.h"
#include "picture.h"

namespace qvr {

extern const picture_format k_pam_format;
extern const picture_format k_ppm_format;
extern const picture_format k_pgm_format;
extern const picture_format k_pnm_format;

bool begins_like_pam(input_file& file);
bool begins_like_ppm(input_file& file);
bool begins_like_pgm(input_file& file);
bool begins_like_pnm(input_file& file);

}  // namespace qvr
