// SPDX-License-Identifier: BSD-3-Clause
#include "pixel/kernels/row_kernels.h"

#include <array>

namespace {

struct instruction_set {
    cpu_features feature;
    void (*use)(row_kernels& kernels);
};

constexpr instruction_set k_instruction_sets[] = {{cpu_ssse3, use_ssse3}, {cpu_avx2, use_avx2}};

constexpr unsigned k_feature_sets = 2 * cpu_avx512;

std::array<row_kernels, k_feature_sets> make_all() {
    std::array<row_kernels, k_feature_sets> all{};
    for (unsigned features = 0; features < k_feature_sets; ++features) {
        use_scalar(all[features]);
        for (const instruction_set& each : k_instruction_sets) {
            if ((features & each.feature) != 0) {
                each.use(all[features]);
            }
        }
    }
    return all;
}

}  // namespace

const row_kernels& row_kernels_for(cpu_features features) {
    static const std::array<row_kernels, k_feature_sets> all = make_all();
    return all[features % k_feature_sets];
}
