// SPDX-License-Identifier: BSD-3-Clause
#include "threading/threaded_executor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

TEST(threaded_executor, no_workers_means_a_thread_count_of_zero) {
    const threaded_executor executor(0);
    EXPECT_EQ(executor.thread_count(), 0u);
}

TEST(threaded_executor, runs_every_task_once) {
    threaded_executor executor(4);
    EXPECT_EQ(executor.thread_count(), 4u);
    std::vector<std::atomic<int>> runs(1000);
    for (auto& each : runs) {
        executor.submit([&each] { ++each; });
    }
    executor.wait();
    for (const auto& each : runs) {
        EXPECT_EQ(each, 1);
    }
}

TEST(threaded_executor, deals_round_robin_and_keeps_each_queue_in_order) {
    threaded_executor executor(3);
    for (int batch = 0; batch < 3; ++batch) {  // every batch starts with the first worker again
        std::mutex mutex;
        std::map<std::thread::id, std::vector<int>> by_thread;
        for (int i = 0; i < 7; ++i) {
            executor.submit([&, i] {
                const std::lock_guard<std::mutex> lock(mutex);
                by_thread[std::this_thread::get_id()].push_back(i);
            });
        }
        executor.wait();
        std::vector<std::vector<int>> dealt;
        for (const auto& each : by_thread) {
            dealt.push_back(each.second);
        }
        std::sort(dealt.begin(), dealt.end());
        EXPECT_EQ(dealt, (std::vector<std::vector<int>>{{0, 3, 6}, {1, 4}, {2, 5}}));
    }
}

TEST(threaded_executor, tasks_run_on_workers_and_not_on_the_client) {
    threaded_executor executor(2);
    std::atomic<bool> on_client{false};
    const std::thread::id client = std::this_thread::get_id();
    for (int i = 0; i < 8; ++i) {
        executor.submit([&] { on_client = on_client || std::this_thread::get_id() == client; });
    }
    executor.wait();
    EXPECT_FALSE(on_client);
}

TEST(threaded_executor, nothing_runs_before_the_batch_is_released) {
    threaded_executor executor(2);
    std::atomic<int> runs{0};
    executor.submit([&] { ++runs; });
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(runs, 0);
    executor.wait();
    EXPECT_EQ(runs, 1);
}

TEST(threaded_executor, fewer_tasks_than_workers_complete) {
    threaded_executor executor(8);
    std::atomic<int> runs{0};
    executor.submit([&] { ++runs; });
    executor.submit([&] { ++runs; });
    executor.wait();
    EXPECT_EQ(runs, 2);
}

TEST(threaded_executor, an_empty_batch_is_not_waited_for) {
    threaded_executor executor(2);
    executor.wait();
    executor.wait();
    threaded_executor nobody(0);
    nobody.wait();
}

std::string message_of_wait(threaded_executor& executor) {
    try {
        executor.wait();
    } catch (const std::exception& failure) {
        return failure.what();
    }
    return "";
}

TEST(threaded_executor, an_exception_reaches_the_client_after_all_other_tasks_have_run) {
    threaded_executor executor(2);
    std::atomic<int> runs{0};
    for (int i = 0; i < 10; ++i) {
        executor.submit([&, i] {
            if (i == 3) {
                throw std::runtime_error("task 3");
            }
            ++runs;
        });
    }
    EXPECT_EQ(message_of_wait(executor), "task 3");
    EXPECT_EQ(runs, 9);
    executor.submit([&] { ++runs; });
    EXPECT_EQ(message_of_wait(executor), "");  // the next batch starts without errors
    EXPECT_EQ(runs, 10);
}

TEST(threaded_executor, of_two_exceptions_the_first_recorded_is_thrown) {
    threaded_executor executor(2);
    std::atomic<bool> first_has_thrown{false};
    executor.submit([] { throw std::runtime_error("first"); });
    executor.submit([&] {
        while (!first_has_thrown) {
            std::this_thread::yield();
        }
        throw std::runtime_error("second");
    });
    // Behind the first task on the same worker: it runs once the exception has been recorded.
    executor.submit([&] { first_has_thrown = true; });
    EXPECT_EQ(message_of_wait(executor), "first");
    EXPECT_EQ(message_of_wait(executor), "");
}

TEST(threaded_executor, an_empty_callable_counts_as_a_task_that_throws) {
    threaded_executor executor(2);
    executor.submit(threaded_executor::task());
    EXPECT_THROW(executor.wait(), std::bad_function_call);
}

TEST(threaded_executor, exceptions_of_any_type_are_carried) {
    threaded_executor executor(2);
    executor.submit([] { throw 42; });
    EXPECT_THROW(executor.wait(), int);
}

struct counted {
    std::atomic<int>* destroyed;
    ~counted() { ++*destroyed; }
};

TEST(threaded_executor, tasks_never_released_are_destroyed_without_running) {
    std::atomic<int> runs{0};
    std::atomic<int> destroyed{0};
    {
        threaded_executor executor(2);
        const auto token = std::make_shared<counted>(counted{&destroyed});
        destroyed = 0;  // the temporary above
        executor.submit([&, token] { ++runs; });
    }
    EXPECT_EQ(runs, 0);
    EXPECT_EQ(destroyed, 1);
}

TEST(threaded_executor, tasks_are_destroyed_by_the_end_of_the_batch) {
    threaded_executor executor(2);
    const auto token = std::make_shared<int>(0);
    executor.submit([token] {});
    executor.wait();
    EXPECT_EQ(token.use_count(), 1);
}

TEST(threaded_executor, discarded_tasks_never_run_and_the_next_batch_is_dealt_from_the_start) {
    threaded_executor executor(2);
    std::atomic<int> runs{0};
    executor.submit([&] { ++runs; });
    executor.discard();
    executor.wait();
    EXPECT_EQ(runs, 0);
    executor.submit([&] { ++runs; });
    executor.wait();
    EXPECT_EQ(runs, 1);
}

TEST(threaded_executor, many_small_batches_in_a_row) {
    threaded_executor executor(3);
    std::atomic<int> runs{0};
    for (int batch = 0; batch < 2000; ++batch) {
        for (int i = 0; i < batch % 5; ++i) {
            executor.submit([&] { ++runs; });
        }
        executor.wait();
    }
    EXPECT_EQ(runs, 4000);
}

TEST(threaded_executor, starts_and_stops_many_times) {
    for (unsigned i = 0; i < 100; ++i) {
        threaded_executor executor(i % 5);
        if (i % 2 == 1 && executor.thread_count() > 0) {
            executor.submit([] {});
            executor.wait();
        }
    }
}

}  // namespace
