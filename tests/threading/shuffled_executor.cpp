// SPDX-License-Identifier: BSD-3-Clause
//
// The thread pool without threads: the same class, whose batches run on the calling thread in a shuffled order. A program
// that is linked with this file leaves the library's own threaded_executor.cpp out.
#include "shuffled_executor.h"

#include <algorithm>
#include <numeric>
#include <random>
#include <utility>

#include "threading/threaded_executor.h"

namespace {

std::mt19937 generator;
std::uint32_t run = 0, out_of_order = 0;

}  // namespace

void shuffled::seed(std::uint32_t value) {
    generator.seed(value);
    run = out_of_order = 0;
}

std::uint32_t shuffled::tasks_run() {
    return run;
}

std::uint32_t shuffled::tasks_out_of_order() {
    return out_of_order;
}

threaded_executor::threaded_executor(std::uint32_t worker_count) {
    for (std::uint32_t i = 0; i < worker_count; ++i) {
        workers.push_back(std::make_unique<worker>());  // counted, and never started
    }
}

threaded_executor::~threaded_executor() = default;

bool threaded_executor::is_forked() const {
    return false;
}

void threaded_executor::submit(task work) {
    workers[0]->queue.push_back(std::move(work));
}

void threaded_executor::discard() noexcept {
    workers[0]->queue.clear();
}

void threaded_executor::wait() {
    if (workers.empty()) {
        return;
    }
    const std::vector<task> batch = std::exchange(workers[0]->queue, {});
    std::vector<std::size_t> order(batch.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::shuffle(order.begin(), order.end(), generator);
    for (auto at = order.begin(); at != order.end(); ++at) {
        ++run;
        out_of_order += std::any_of(at, order.end(), [&](std::size_t later) { return later < *at; }) ? 1 : 0;
        try {
            batch[*at]();
        } catch (...) {
            if (!first_error) {
                first_error = std::current_exception();
            }
        }
    }
    if (first_error) {
        std::rethrow_exception(std::exchange(first_error, nullptr));
    }
}
