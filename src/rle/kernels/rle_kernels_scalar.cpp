// SPDX-License-Identifier: BSD-3-Clause
#include <cstddef>
#include <cstring>

#include "rle/kernels/rle_kernels.h"
#include "rle/kernels/token.h"

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
std::uint32_t symbol_of(const std::uint8_t* samples, std::ptrdiff_t index) {
    const auto x = load<Sample>(samples, index);
    const auto p1 = load<Sample>(samples, index - 1);
    const auto p2 = load<Sample>(samples, index - 2);
    const auto first = zigzag(static_cast<Sample>(x - p1));
    const auto second = zigzag(static_cast<Sample>(x - 2 * p1 + p2));
    const bool takes_first = first == 0 || first < second;
    return takes_first ? first : 1u << sample_traits<Sample>::k_depth | second;
}

template <class Sample>
std::uint32_t find_runs_scalar(const std::uint8_t* samples, std::uint32_t count, std::uint32_t symbol, run_list& runs) {
    runs.count = 0;
    for (std::uint32_t i = 0; i < count; ++i) {
        if (i % k_sample_block == 0 && runs.count > k_run_capacity - k_sample_block) {
            return i;
        }
        const std::uint32_t next = symbol_of<Sample>(samples, i);
        if (next != symbol) {
            runs.starts[runs.count] = i;
            runs.symbols[runs.count] = next;
            ++runs.count;
            symbol = next;
        }
    }
    return count;
}

// Looking closely at every token is the definition of decoding.
void decode_nothing(slice_cursor*, std::uint32_t) {}

}  // namespace

template <class Sample>
void assemble_some(const run_list& runs, std::uint32_t first, std::uint32_t last, piece_list& pieces) {
    for (std::uint32_t i = first; i < last; ++i) {
        const token whole = make_token<Sample>(runs.symbols[i], runs.starts[i + 1] - runs.starts[i]);
        pieces.bits[pieces.count] = whole.head << whole.tail_length | whole.tail;
        pieces.lengths[pieces.count] = whole.head_length + whole.tail_length;
        ++pieces.count;
    }
}

template void assemble_some<std::uint8_t>(const run_list&, std::uint32_t, std::uint32_t, piece_list&);
template void assemble_some<std::uint16_t>(const run_list&, std::uint32_t, std::uint32_t, piece_list&);

template <class Sample>
void assemble_scalar(const run_list& runs, piece_list& pieces) {
    pieces.count = 0;
    assemble_some<Sample>(runs, 0, runs.count - 1, pieces);
}

template void assemble_scalar<std::uint8_t>(const run_list&, piece_list&);
template void assemble_scalar<std::uint16_t>(const run_list&, piece_list&);

const rle_kernels k_scalar_rle_kernels = {
    find_runs_scalar<std::uint8_t>,
    find_runs_scalar<std::uint16_t>,
    assemble_scalar<std::uint8_t>,
    assemble_scalar<std::uint16_t>,
    decode_nothing,
    decode_nothing,
};
