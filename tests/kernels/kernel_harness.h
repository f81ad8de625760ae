// SPDX-License-Identifier: BSD-3-Clause
//
// Runs a kernel of every instruction set that the machine has against the scalar one: sources and destinations at every
// alignment, each ended and in a second run begun by an inaccessible page, destinations filled twice with different
// bytes so that every byte written, and no other, is seen.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "api/base/cpu_features.h"
#include "bytes.h"

namespace test {

// None, and each instruction set of this processor with all below it.
std::vector<cpu_features> feature_levels();

struct kernel_call {
    std::vector<bytes> sources;
    std::vector<std::size_t> source_margins;  // readable bytes that belong before each source; may be empty
    std::vector<std::size_t> destination_sizes;
    std::function<void(cpu_features, const std::uint8_t* const* sources, std::uint8_t* const* destinations)> run;
};

// The destinations as the scalar kernel leaves them.
std::vector<bytes> scalar_result(const kernel_call& call);

// One failure for each subset, placement and fill that disagrees with the scalar kernel.
void expect_same_as_scalar(const kernel_call& call);

}  // namespace test
