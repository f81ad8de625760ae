// SPDX-License-Identifier: BSD-3-Clause
//
// Memory that the cases share, so that all of them meet the same pages, and the reference for moving it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "timing.h"

namespace bench {

// Page-aligned memory that only grows. Pages are touched, and new memory holds noise.
class memory_pool {
  public:
    std::uint8_t* at_least(std::size_t bytes);

  private:
    struct release {
        void operator()(std::uint8_t* bytes) const;
    };
    std::unique_ptr<std::uint8_t, release> bytes_;
    std::size_t size_ = 0;
};

memory_pool& raw_memory();     // for raw frames
memory_pool& stream_memory();  // for bitstreams

// Deterministic noise.
void fill_with_noise(std::uint8_t* to, std::size_t bytes, std::uint64_t seed);

// memcpy of the same traffic: as many bytes read and written in sum. It copies between the two memories that the case
// itself uses, so that both find the caches alike.
job copy_of_traffic(std::uint8_t* to, const std::uint8_t* from, std::uint64_t traffic);

}  // namespace bench
