// SPDX-License-Identifier: BSD-3-Clause
//
// A processor that has everything: its instructions are emulated.
#include "api/base/cpu_features.h"

cpu_features detected_cpu_features() {
    return static_cast<cpu_features>(cpu_ssse3 | cpu_avx2 | cpu_avx512);
}
