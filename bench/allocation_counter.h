// SPDX-License-Identifier: BSD-3-Clause
#pragma once

namespace bench {

// Allocations of the whole program since it began, by any thread, with any function of the C or the C++ library.
unsigned long allocations_so_far();

}  // namespace bench
