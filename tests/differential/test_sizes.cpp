// SPDX-License-Identifier: BSD-3-Clause
#include "compare.h"
#include "generate.h"
#include "harness.h"

using namespace differential;

namespace {

std::vector<model::wrap_params> random_wraps(rng& random, std::uint32_t count) {
    std::vector<model::wrap_params> wraps;
    const std::uint32_t main_type = random.below(4);
    // One record is always readable, even with a count of 0.
    for (std::uint32_t i = 0; i < (count == 0 ? 1 : count); ++i) {
        wraps.push_back({random.chance(85) ? main_type : wild_value(random), wild_value(random)});
    }
    return wraps;
}

}  // namespace

TEST(differential_sizes, of_any_record) {
    run_cases(100000, [](rng& random, std::uint64_t) {
        model::frame_params frame = wild_frame(random);
        if (random.chance(30)) {
            frame.order = 14;
            frame.type = random.between(1, 2);
        }
        const std::uint32_t count = random.below(4);
        return compare_sizes(frame, random_stream(random), random_wraps(random, count), count);
    });
}

TEST(differential_sizes, of_encodable_frames) {
    run_cases(50000, [](rng& random, std::uint64_t number) {
        const model::frame_params frame = encodable_frame(random, number);
        const std::uint32_t count = random.below(3);
        return compare_sizes(frame, random_stream(random), random_wraps(random, count), count);
    });
}
