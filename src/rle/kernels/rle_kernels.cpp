// SPDX-License-Identifier: BSD-3-Clause
#include "rle/kernels/rle_kernels.h"

const rle_kernels& rle_kernels_for(cpu_features features) {
    if ((features & cpu_avx2) != 0) {
        return k_avx2_rle_kernels;
    }
    return (features & cpu_ssse3) != 0 ? k_ssse3_rle_kernels : k_scalar_rle_kernels;
}
