// SPDX-License-Identifier: BSD-3-Clause
#include "pixel/kernels/row_kernels.h"

const row_kernels& row_kernels_for(cpu_features features) {
    struct instruction_set {
        cpu_features feature;
        const row_kernels& kernels;
    };
    static constexpr instruction_set k_best_first[] = {
        {cpu_avx512, k_avx512_kernels}, {cpu_avx2, k_avx2_kernels}, {cpu_ssse3, k_ssse3_kernels}};
    for (const instruction_set& each : k_best_first) {
        if ((features & each.feature) != 0) {
            return each.kernels;
        }
    }
    return k_scalar_kernels;
}
