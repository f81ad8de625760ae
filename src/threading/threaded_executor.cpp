// SPDX-License-Identifier: BSD-3-Clause
#include "threading/threaded_executor.h"

#include <unistd.h>

#include <utility>

threaded_executor::threaded_executor(std::uint32_t worker_count) : process(getpid()) {
    // One worker at a time: a count that the machine cannot serve fails on the first thread too many, before memory for
    // all of them has been asked for.
    try {
        for (std::uint32_t i = 0; i < worker_count; ++i) {
            auto next = std::make_unique<worker>();
            worker& self = *next;
            workers.push_back(std::move(next));
            self.thread = std::thread([this, &self] { run_worker(self); });
        }
    } catch (...) {
        stop_workers();
        throw;
    }
}

threaded_executor::~threaded_executor() {
    if (!is_forked()) {
        stop_workers();
        return;
    }
    for (auto& each : workers) {
        static_cast<void>(each.release());
    }
    static_cast<void>(signal.release());
}

bool threaded_executor::is_forked() const {
    return !workers.empty() && getpid() != process;
}

void threaded_executor::stop_workers() noexcept {
    {
        const std::lock_guard<std::mutex> lock(mutex);
        stop = true;
    }
    signal->wake.notify_all();
    for (const auto& each : workers) {
        if (each->thread.joinable()) {
            each->thread.join();
        }
    }
}

void threaded_executor::submit(task work) {
    const std::lock_guard<std::mutex> lock(mutex);
    workers[next_queue]->queue.push_back(std::move(work));
    next_queue = (next_queue + 1) % workers.size();
    ++pending;
}

void threaded_executor::discard() noexcept {
    const std::lock_guard<std::mutex> lock(mutex);
    for (const auto& each : workers) {
        each->queue.clear();
    }
    next_queue = 0;
    pending = 0;
}

void threaded_executor::wait() {
    std::unique_lock<std::mutex> lock(mutex);
    next_queue = 0;
    if (pending == 0) {
        return;
    }
    running = true;
    signal->wake.notify_all();
    signal->batch_done.wait(lock, [this] { return pending == 0; });
    running = false;
    if (first_error) {
        std::rethrow_exception(std::exchange(first_error, nullptr));
    }
}

void threaded_executor::run_worker(worker& self) {
    std::unique_lock<std::mutex> lock(mutex);
    for (;;) {
        signal->wake.wait(lock, [&] { return stop || (running && !self.queue.empty()); });
        if (stop) {
            return;
        }
        lock.unlock();
        const std::uint64_t count = self.queue.size();
        run_queue(self.queue);
        lock.lock();
        // The worker whose subtraction leaves nothing has finished the batch. Under the mutex, so that the client
        // cannot miss the signal between its test and its sleep.
        pending -= count;
        if (pending == 0) {
            signal->batch_done.notify_one();
        }
    }
}

void threaded_executor::run_queue(std::vector<task>& queue) {
    for (task& each : queue) {
        try {
            each();
        } catch (...) {
            const std::lock_guard<std::mutex> lock(mutex);
            if (!first_error) {
                first_error = std::current_exception();
            }
        }
        each = nullptr;
    }
    queue.clear();
}
