// SPDX-License-Identifier: BSD-3-Clause
//
// Compiling this file is the test: the header stands alone in C++11, twice over.
#include <QVRUncompressed.h>

static_assert(sizeof(QVRUncompressed_UncompressedParams_t) == 36, "frame record");
static_assert(noexcept(QVRUncompressed_GetVersion(nullptr, nullptr, nullptr, nullptr, nullptr)), "never throws");
