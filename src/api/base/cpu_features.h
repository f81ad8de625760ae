// SPDX-License-Identifier: BSD-3-Clause
//
// What the processor can do, asked once when the library is loaded.
#pragma once

// One bit for each instruction set that has kernels of its own, each a step above the one before: a processor that has
// one has all below it. Kernel tables are chosen by such a set, so tests and benchmarks can leave any of them out.
enum cpu_features : unsigned {
    cpu_scalar = 0,
    cpu_ssse3 = 1u << 0,
    cpu_avx2 = 1u << 1,
    cpu_avx512 = 1u << 2,  // F, BW, DQ, VL, VBMI and VBMI2: all of them or none
};

// The processor's features. Set before any constructor of the program that does not ask for a higher priority.
cpu_features detected_cpu_features();

// From now on detected_cpu_features() leaves out what `allowed` does not name. For tests and fuzzers that compare
// instruction sets through the public functions; not while a call runs.
void limit_cpu_features(cpu_features allowed);
