// SPDX-License-Identifier: BSD-3-Clause
//
// The two steps of coding alpha that vector instructions do better: samples into runs, and runs into tokens.
//
// With x the sample, p1 the one before and p2 the one before that, all modulo 2^bit_depth:
//   Z1 = zigzag(x - p1)             first order, good on flat parts
//   Z2 = zigzag(x - 2 p1 + p2)      second order, good on ramps
// Z1 is taken when it is 0 or smaller than Z2, else Z2. The order and the code together are the sample's symbol, and
// a run is as many samples as have the same symbol.
#pragma once

#include <cstddef>
#include <cstdint>

#include "api/base/cpu_features.h"
#include "rle/sample_traits.h"

constexpr std::uint32_t k_sample_block = 64;        // kernels look at so many samples at once
constexpr std::uint32_t k_most_samples = 1u << 16;  // in one call
constexpr std::uint32_t k_run_capacity = 512;       // of a list
constexpr std::uint32_t k_no_symbol = ~0u;          // before the first sample of a slice
constexpr std::uint32_t k_longest_piece = 56;       // bits
constexpr std::uint32_t k_vector_slack = 8;         // vectors may write so many elements behind the last one

// Where runs start and what their samples have in common: order << bit_depth | code.
struct run_list {
    std::uint32_t count;
    std::uint32_t starts[k_run_capacity + k_vector_slack];
    std::uint32_t symbols[k_run_capacity + k_vector_slack];
};

// Bits to be written one piece after the other, right-aligned.
struct piece_list {
    std::uint32_t count;
    std::uint64_t bits[k_run_capacity];
    std::uint64_t lengths[k_run_capacity];  // 1 to k_longest_piece
};

// Lists the runs that start among count samples (1 to k_most_samples, at any alignment, with two more before them),
// where `symbol` is that of the sample before. Returns how many samples it has looked at: fewer than count, and then
// whole blocks, when the list might not hold what the next block brings.
using find_runs_kernel = std::uint32_t (*)(const std::uint8_t* samples, std::uint32_t count, std::uint32_t symbol,
                                           run_list& runs);

// Turns all runs of a list but the last, whose end is not known, into tokens. How many of them share a piece is the
// kernel's own affair. The list must not be empty.
using assemble_kernel = void (*)(const run_list& runs, piece_list& pieces);

// Appends the tokens of runs first to last - 1, a piece each: none is longer than 1 + 33 + 17 bits.
template <class Sample>
void assemble_some(const run_list& runs, std::uint32_t first, std::uint32_t last, piece_list& pieces);
extern template void assemble_some<std::uint8_t>(const run_list&, std::uint32_t, std::uint32_t, piece_list&);
extern template void assemble_some<std::uint16_t>(const run_list&, std::uint32_t, std::uint32_t, piece_list&);

// The definition: a piece for each token.
template <class Sample>
void assemble_scalar(const run_list& runs, piece_list& pieces);
extern template void assemble_scalar<std::uint8_t>(const run_list&, piece_list&);
extern template void assemble_scalar<std::uint16_t>(const run_list&, piece_list&);

// How far the decoding of a slice has come.
struct slice_cursor {
    const std::uint8_t* source;  // to the end of the payload
    std::size_t source_size;
    std::uint64_t position;    // in bits
    const std::uint8_t* rows;  // without gaps
    std::uint8_t* out;         // the next of them
    std::uint64_t left;        // samples
    std::uint32_t last;        // the sample before, modulo 2^bit_depth
    std::uint32_t slope;       // and what it is more than the one before it
};

// Decodes tokens of the slices, together, until one of them comes to a place that must be looked at more closely: near
// the start of its rows, an end of them or of its source, or at a token that is unusually long or wrong. May do nothing at all. Bytes of the
// slice's rows that are not decoded yet may be overwritten.
using decode_kernel = void (*)(slice_cursor* slices, std::uint32_t count);
constexpr std::uint32_t k_slices_together = 2;  // at most

struct rle_kernels {
    find_runs_kernel find_runs_8;
    find_runs_kernel find_runs_16;
    assemble_kernel assemble_8;
    assemble_kernel assemble_16;
    decode_kernel decode_8;
    decode_kernel decode_16;
};

template <class Sample>
find_runs_kernel find_runs(const rle_kernels& kernels) {
    return sizeof(Sample) == 1 ? kernels.find_runs_8 : kernels.find_runs_16;
}
template <class Sample>
assemble_kernel assemble(const rle_kernels& kernels) {
    return sizeof(Sample) == 1 ? kernels.assemble_8 : kernels.assemble_16;
}

template <class Sample>
decode_kernel decode(const rle_kernels& kernels) {
    return sizeof(Sample) == 1 ? kernels.decode_8 : kernels.decode_16;
}

// A table for each instruction set. Constants: not a line of an instruction set's code runs on a processor without it.
extern const rle_kernels k_scalar_rle_kernels;
extern const rle_kernels k_ssse3_rle_kernels;
extern const rle_kernels k_avx2_rle_kernels;

// The best kernels for a processor with these features.
const rle_kernels& rle_kernels_for(cpu_features features);
