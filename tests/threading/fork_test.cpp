// SPDX-License-Identifier: BSD-3-Clause
//
// Handles in the child of a fork, where their workers are not: they work and end all the same.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <memory>

#include "frame_trip.h"
#include "threading/parallel.h"

namespace {

// Whether the child says yes. One that waits for threads it does not have is ended by the alarm.
bool in_child(const std::function<bool()>& work) {
    const pid_t child = fork();
    if (child == 0) {
        alarm(30);
        _exit(work() ? 0 : 1);
    }
    int status = -1;
    return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

TEST(fork, an_executor_runs_its_tasks_on_the_calling_thread_and_waits_for_nobody) {
    auto executor = std::make_unique<threaded_executor>(4);
    const auto sum = [&] {
        std::atomic<int> total{0};
        run_tasks(*executor, 10, [&](std::uint32_t i) { total += static_cast<int>(i); });
        return total == 45;
    };
    EXPECT_TRUE(sum());
    EXPECT_TRUE(in_child([&] {
        const bool serial = executor->thread_count() == 0 && sum();
        executor.reset();
        return serial;
    }));
    // The parent has lost nothing by it.
    EXPECT_EQ(executor->thread_count(), 4u);
    EXPECT_TRUE(sum());
}

TEST(fork, handles_give_the_same_bytes_and_can_be_ended) {
    for (const frame_case& what : {frame_case{7, 1, 5}, frame_case{2, 5}, frame_case{14, 2, 9}}) {
        auto handles = std::make_unique<handle_pair>(3);
        ASSERT_TRUE(handles->complete());
        frame_trip trip(what);
        ASSERT_EQ(trip.encode(handles->encoder), 0u);
        ASSERT_EQ(trip.decode(handles->decoder), 0u);
        const frame_trip::bytes stream = trip.stream();
        const frame_trip::bytes samples = trip.came_back();
        EXPECT_TRUE(in_child([&] {
            const bool coded = trip.encode(handles->encoder) == 0 && trip.decode(handles->decoder) == 0;
            handles.reset();
            return coded && trip.stream() == stream && trip.came_back() == samples;
        })) << testing::PrintToString(what);
    }
}

}  // namespace
