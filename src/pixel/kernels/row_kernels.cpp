// SPDX-License-Identifier: BSD-3-Clause
#include "pixel/kernels/row_kernels.h"

row_kernels make_row_kernels(cpu_features features) {
    row_kernels kernels;
    use_scalar(kernels);
    if ((features & cpu_ssse3) != 0) {
        use_ssse3(kernels);
    }
    return kernels;
}
