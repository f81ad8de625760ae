// SPDX-License-Identifier: BSD-3-Clause
//
// The row kernels for any vector width, written once. An instruction set supplies a vector type V of V::k_lanes 16-byte
// lanes, in which shuffles, packs and unpacks stay inside their lane, and the few operations that cross lanes.
//
// Every kernel is a loop over blocks of a fixed size. What is left of a row takes the same way through a block of its
// own on the stack, so nothing is read or written past the row's ends, and no second version of the code is needed.
//
// Included by one source file for each instruction set; V has internal linkage there, and so have the kernels.
#pragma once

#include "pixel/kernels/vector_packed.h"
#include "pixel/kernels/vector_widen.h"

template <class V>
struct vector_kernels {
    // What a caller sees of a kernel: afterwards the processor is as it was for the code around.
    template <auto kernel, class... Arguments>
    static void entry(Arguments... arguments) {
        kernel(arguments...);
        V::leave();
    }

    // In the order of the table's members.
    static constexpr row_kernels k_table = {
        entry<vector_reorder<V>::pack>,
        entry<vector_reorder<V>::unpack>,
        entry<vector_narrow<V>::template narrow<2>>,
        entry<vector_narrow<V>::template narrow<4>>,
        entry<vector_widen<V>::template widen<2>>,
        entry<vector_widen<V>::template widen<4>>,
        entry<vector_narrow<V>::template pack_narrow<2>>,
        entry<vector_narrow<V>::template pack_narrow<4>>,
        entry<vector_widen<V>::template widen_unpack<2>>,
        entry<vector_widen<V>::template widen_unpack<4>>,
        entry<vector_packed<V>::narrow_10_packed>,
        entry<vector_packed<V>::widen_10_packed>,
        entry<vector_widen<V>::fixed_to_float>,
    };
};
