// SPDX-License-Identifier: BSD-3-Clause
//
// The library's only source of parallelism: a fixed set of worker threads that run batches of tasks.
//
// A batch is submitted task by task and then released and awaited by one call to wait(). Tasks are dealt round-robin,
// one queue a worker, and never rebalanced: callers cut their work evenly, and which thread runs what is predictable.
//
//   idle ----submit()----> loaded ----wait()----> running ----last task done----> idle
//     \_______________________\____________ destructor ____________________________/----> stopped
//
// The child of a fork has no workers: there callers do the whole job, and the destructor waits for nobody.
//
// Workers sleep in "idle" and "loaded"; submit() wakes nobody. Everything the workers and the client share is guarded
// by one mutex, except that a worker runs and pops its own queue without it: nothing is pushed while a batch runs.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

class threaded_executor {
  public:
    using task = std::function<void()>;

    // Starts worker_count threads; none for 0. When one cannot be started, those that run are stopped and joined and
    // the error is passed on.
    explicit threaded_executor(std::uint32_t worker_count);
    // Stops and joins the workers. Tasks that were never released are destroyed without running.
    ~threaded_executor();
    threaded_executor(const threaded_executor&) = delete;
    threaded_executor& operator=(const threaded_executor&) = delete;

    // Below 2, callers do the whole job on their own thread.
    std::size_t thread_count() const { return is_forked() ? 0 : workers.size(); }

    // Adds a task to the batch. Only on the client's thread, while no batch runs, and only with workers.
    void submit(task work);
    // Forgets the tasks that were submitted and not yet released.
    void discard() noexcept;
    // Releases the batch, waits until every task has ended and throws the first exception that one of them raised.
    // Returns at once when nothing was submitted.
    void wait();

  private:
    // A queue and the thread that alone serves it; at a fixed address, because the thread refers to it.
    struct worker {
        std::vector<task> queue;
        std::thread thread;
    };

    // What the threads wait for. Apart, because the child of a fork may not destroy it: it would wait for its waiters.
    struct signals {
        std::condition_variable wake;
        std::condition_variable batch_done;
    };

    bool is_forked() const;
    void run_worker(worker& self);
    void run_queue(std::vector<task>& queue);
    void stop_workers() noexcept;

    std::vector<std::unique_ptr<worker>> workers;
    std::size_t next_queue = 0;
    std::uint64_t pending = 0;       // submitted and not yet accounted for by a worker
    std::exception_ptr first_error;  // of this batch; later ones are dropped
    std::mutex mutex;
    std::unique_ptr<signals> signal = std::make_unique<signals>();
    bool stop = false;
    bool running = false;
    int process = 0;  // that made the workers
};
