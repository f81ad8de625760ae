// SPDX-License-Identifier: BSD-3-Clause
//
// Waiting for what another thread or process is about to do, on machines that may have much else to do.
#pragma once

#include <chrono>
#include <thread>

// False when it has not come true within a minute.
template <class Condition>
bool comes_true(Condition condition) {
    for (int i = 0; i < 12000; ++i) {
        if (condition()) {
            return true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return condition();
}
