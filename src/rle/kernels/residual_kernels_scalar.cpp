// SPDX-License-Identifier: BSD-3-Clause
#include <cstddef>
#include <cstring>

#include "rle/kernels/residual_kernels.h"

namespace {

template <class Sample>
Sample load(const std::uint8_t* samples, std::ptrdiff_t index) {
    Sample value;
    std::memcpy(&value, samples + index * static_cast<std::ptrdiff_t>(sizeof value), sizeof value);
    return value;
}

template <class Sample>
Sample zigzag(Sample difference) {
    const bool negative = difference >> (8 * sizeof(Sample) - 1) != 0;
    const auto doubled = static_cast<Sample>(difference << 1);
    return negative ? static_cast<Sample>(~doubled) : doubled;
}

template <class Sample>
void block_scalar(const std::uint8_t* samples, residual_block<Sample>& out) {
    out.second_order = 0;
    out.changes = 0;
    for (std::ptrdiff_t i = 0; i < std::ptrdiff_t{k_residual_block}; ++i) {
        const auto x = load<Sample>(samples, i);
        const auto p1 = load<Sample>(samples, i - 1);
        const auto p2 = load<Sample>(samples, i - 2);
        const auto first = zigzag(static_cast<Sample>(x - p1));
        const auto second = zigzag(static_cast<Sample>(x - 2 * p1 + p2));
        const bool takes_second = first != 0 && second <= first;
        out.codes[i] = takes_second ? second : first;
        out.second_order |= std::uint64_t{takes_second} << i;
        const bool changes = i > 0 && (out.codes[i] != out.codes[i - 1] ||
                                       (out.second_order >> i & 1) != (out.second_order >> (i - 1) & 1));
        out.changes |= std::uint64_t{changes} << i;
    }
}

}  // namespace

void use_scalar(residual_kernels& kernels) {
    kernels.block_8 = block_scalar<std::uint8_t>;
    kernels.block_16 = block_scalar<std::uint16_t>;
}
