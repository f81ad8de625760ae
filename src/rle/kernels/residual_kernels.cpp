// SPDX-License-Identifier: BSD-3-Clause
#include "rle/kernels/residual_kernels.h"

residual_kernels make_residual_kernels(cpu_features features) {
    residual_kernels kernels;
    use_scalar(kernels);
    if ((features & cpu_ssse3) != 0) {
        use_ssse3(kernels);
    }
    return kernels;
}
