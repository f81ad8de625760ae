// SPDX-License-Identifier: BSD-3-Clause
//
// Well-known kinds of files that are neither read nor written here, so that a message can name them.
#pragma once

#include <string>

#include "file_io.h"

namespace qvr {

// "a TIFF"; null when it is none of them.
const char* foreign_by_ending(const std::string& path);
const char* foreign_by_content(input_file& file);

}  // namespace qvr
