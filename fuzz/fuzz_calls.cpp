// SPDX-License-Identifier: BSD-3-Clause
//
// A script of calls on one pair of handles: whatever failed before, the next call works. The script runs twice, as
// chosen and on one thread with the scalar kernels, and both must tell the same story.
#include "session.h"

namespace {

using namespace fuzz;

constexpr unsigned k_most_calls = 7;

std::string play(const setup& how, const split_input& input) {
    session with(how, byte_source(input.stream.data(), input.stream.size()));
    for (unsigned i = 0; i < k_most_calls && with.step(); ++i) {
    }
    return with.story();
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    split_input input(data, size);
    setup chosen = choose_setup(input.choices);
    if (input.choices.below(8) != 0) {
        chosen.threads = 1;  // waking workers takes longer than most calls
    }
    require(play(chosen, input) == play(k_reference, input), "the same script gives the same outcomes");
    return 0;
}
