// SPDX-License-Identifier: BSD-3-Clause
//
// Random test content that can be had again: the seed is part of every failure message of the test that uses it.
#ifndef QVR_TESTS_SUPPORT_RANDOM_SOURCE_H
#define QVR_TESTS_SUPPORT_RANDOM_SOURCE_H

#include <gtest/gtest.h>

#include <cstdint>

#include "bytes.h"

namespace test {

// QVR_TEST_SEED when it is set, else a fixed number, so that an ordinary run is always the same.
uint64_t base_seed();

// Make one on the stack of the test body: while it lives, failures print the seed.
class random_source {
  public:
    explicit random_source(uint64_t salt = 0);
    random_source(const random_source&) = delete;
    random_source& operator=(const random_source&) = delete;

    uint64_t next();
    // 0 to limit - 1; limit must not be 0.
    uint32_t below(uint32_t limit);
    bytes content(size_t size);
    // Runs of equal and of evenly rising values between noise, as alpha planes hold them.
    bytes runs(size_t size);

  private:
    uint64_t state_;
    testing::ScopedTrace trace_;
};

}  // namespace test

#endif  // QVR_TESTS_SUPPORT_RANDOM_SOURCE_H
