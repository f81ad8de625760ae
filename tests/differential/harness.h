// SPDX-License-Identifier: BSD-3-Clause
#ifndef QVR_TESTS_DIFFERENTIAL_HARNESS_H
#define QVR_TESTS_DIFFERENTIAL_HARNESS_H

// Runs numbered random cases. QVR_TEST_SEED replaces the seed,
// QVR_TEST_ITERATIONS the number of cases of each test, QVR_TEST_FIRST the
// number of the first one, and QVR_TEST_FAILURES the number of failures after
// which a test gives up.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "rng.h"

namespace differential {

inline std::uint64_t setting(const char* name, std::uint64_t otherwise) {
    const char* const text = std::getenv(name);
    return text == nullptr || *text == 0 ? otherwise : std::strtoull(text, nullptr, 10);
}

// `body` takes a generator of its own for each case and the case's number,
// and returns what is wrong. `most` bounds the number of slow cases.
template <class work>
void run_cases(std::uint64_t usual_count, work body, std::uint64_t most = UINT64_MAX) {
    const std::uint64_t seed = setting("QVR_TEST_SEED", 20260704);
    const std::uint64_t first = setting("QVR_TEST_FIRST", 0);
    const std::uint64_t count = std::min(setting("QVR_TEST_ITERATIONS", usual_count), most);
    const std::uint64_t enough = setting("QVR_TEST_FAILURES", 5);
    std::uint64_t failures = 0;
    for (std::uint64_t number = first; number < first + count && failures < enough; ++number) {
        rng random(seed * 0x100000001B3u + number);
        const std::string text = body(random, number);
        if (!text.empty()) {
            ++failures;
            ADD_FAILURE() << "QVR_TEST_SEED=" << seed << " QVR_TEST_FIRST=" << number << " QVR_TEST_ITERATIONS=1\n"
                          << text;
        }
    }
}

}  // namespace differential

#endif
