// SPDX-License-Identifier: BSD-3-Clause
#include "api/base/cpu_features.h"

namespace {

// Constant-initialised: a caller that runs even earlier than the constructor below gets the scalar kernels.
cpu_features detected = cpu_scalar;
unsigned allowed_features = ~0u;

// 101 is the first priority that is open to libraries.
__attribute__((constructor(101))) void detect_cpu_features() {
    __builtin_cpu_init();
    unsigned found = cpu_scalar;
    if (__builtin_cpu_supports("ssse3")) {
        found |= cpu_ssse3;
    }
    if (__builtin_cpu_supports("avx2")) {
        found |= cpu_avx2;
    }
    if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512dq") &&
        __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512vbmi") &&
        __builtin_cpu_supports("avx512vbmi2")) {
        found |= cpu_avx512;
    }
    detected = static_cast<cpu_features>(found);
}

}  // namespace

cpu_features detected_cpu_features() {
    return static_cast<cpu_features>(detected & allowed_features);
}

void limit_cpu_features(cpu_features allowed) {
    allowed_features = allowed;
}
