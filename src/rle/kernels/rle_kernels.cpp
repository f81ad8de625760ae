// SPDX-License-Identifier: BSD-3-Clause
#include "rle/kernels/rle_kernels.h"

#include <array>

namespace {

constexpr unsigned k_feature_sets = 2 * cpu_avx512;

std::array<rle_kernels, k_feature_sets> make_tables() {
    std::array<rle_kernels, k_feature_sets> tables;
    for (unsigned features = 0; features < k_feature_sets; ++features) {
        use_scalar(tables[features]);
        if ((features & cpu_ssse3) != 0) {
            use_ssse3(tables[features]);
        }
        if ((features & cpu_avx2) != 0) {
            use_avx2(tables[features]);
        }
    }
    return tables;
}

}  // namespace

const rle_kernels& rle_kernels_for(cpu_features features) {
    static const std::array<rle_kernels, k_feature_sets> tables = make_tables();
    return tables[features % k_feature_sets];
}
