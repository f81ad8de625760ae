// SPDX-License-Identifier: BSD-3-Clause
#include "job_pipeline.h"

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

namespace qvr {

namespace {

struct slot {
    frame_job job;
    bool done = false;
};

// The slots on their way from free to read, worked on, written and free again.
class job_queue {
  public:
    explicit job_queue(std::size_t size) {
        for (std::size_t i = 0; i < size; ++i) {
            slots.push_back(std::make_unique<slot>());
            free.push_back(slots.back().get());
        }
    }

    // Each gives nothing when no more is to come.
    slot* take_free() {
        std::unique_lock<std::mutex> lock(mutex);
        changed_free.wait(lock, [this] { return stopped || !free.empty(); });
        return stopped ? nullptr : take_front(free);
    }

    slot* take_read() {
        std::unique_lock<std::mutex> lock(mutex);
        changed_read.wait(lock, [this] { return stopped || ended || !read.empty(); });
        return stopped || read.empty() ? nullptr : take_front(read);
    }

    slot* take_done() {
        std::unique_lock<std::mutex> lock(mutex);
        changed_done.wait(lock, [this] { return in_order.empty() ? ended : in_order.front()->done; });
        return in_order.empty() ? nullptr : take_front(in_order);
    }

    void give_read(slot* filled) {
        const std::lock_guard<std::mutex> lock(mutex);
        filled->done = filled->job.problem != nullptr;
        in_order.push_back(filled);
        if (filled->done) {
            changed_done.notify_one();
        } else {
            read.push_back(filled);
            changed_read.notify_one();
        }
    }

    void give_done(slot* finished) {
        const std::lock_guard<std::mutex> lock(mutex);
        finished->done = true;
        changed_done.notify_one();
    }

    void give_free(slot* written) {
        const std::lock_guard<std::mutex> lock(mutex);
        free.push_back(written);
        changed_free.notify_one();
    }

    void end() { set(ended); }
    void stop() { set(stopped); }

  private:
    static slot* take_front(std::deque<slot*>& from) {
        slot* taken = from.front();
        from.pop_front();
        return taken;
    }

    void set(bool& state) {
        const std::lock_guard<std::mutex> lock(mutex);
        state = true;
        changed_free.notify_all();
        changed_read.notify_all();
        changed_done.notify_all();
    }

    std::mutex mutex;
    std::condition_variable changed_free;
    std::condition_variable changed_read;
    std::condition_variable changed_done;
    std::vector<std::unique_ptr<slot>> slots;
    std::deque<slot*> free;
    std::deque<slot*> read;      // to be worked on
    std::deque<slot*> in_order;  // read and not yet written
    bool ended = false;          // nothing more is read
    bool stopped = false;        // nothing more is wanted
};

// The text of a data failure; of any other problem none.
std::string data_failure(const std::exception_ptr& problem) {
    try {
        std::rethrow_exception(problem);
    } catch (const failure& found) {
        return found.code() == exit_code::data ? found.text() : "";
    } catch (...) {
        return "";
    }
}

// The threads, which have ended when this has.
class crew {
  public:
    crew(unsigned workers, const pipeline_steps& to_do) : steps(to_do), queue(std::size_t{workers} + 2) {
        try {
            threads.emplace_back([this] { read_all(); });
            for (unsigned worker = 0; worker < workers; ++worker) {
                threads.emplace_back([this, worker] { work_all(worker); });
            }
        } catch (const std::system_error& error) {
            end();
            throw failure(exit_code::io, {}, std::string("cannot start a thread: ") + error.what(),
                          "ask for fewer jobs with -j");
        }
    }

    ~crew() { end(); }
    crew(const crew&) = delete;
    crew& operator=(const crew&) = delete;

    void write_all() {
        while (slot* at = queue.take_done()) {
            finish(at->job);
            queue.give_free(at);
        }
        complete = true;
    }

  private:
    void read_all() {
        bool more = true;
        std::string last_words;
        while (slot* at = more ? queue.take_free() : nullptr) {
            at->job.problem = nullptr;
            at->job.words.clear();
            try {
                const warning_keeper keep(at->job.words);
                more = steps.read(at->job);
                if (!more) {
                    break;
                }
            } catch (...) {
                at->job.problem = std::current_exception();
                const std::string words = steps.lose ? data_failure(at->job.problem) : "";
                more = !words.empty();
                // What fails in the same words again has not gone on, and has been told.
                if (more && words == std::exchange(last_words, words)) {
                    break;
                }
            }
            queue.give_read(at);
        }
        queue.end();
    }

    void work_all(unsigned worker) {
        while (slot* at = queue.take_read()) {
            try {
                const warning_keeper keep(at->job.words);
                steps.work(worker, at->job);
            } catch (...) {
                at->job.problem = std::current_exception();
            }
            queue.give_done(at);
        }
    }

    void finish(frame_job& job) {
        warn(job.words);
        if (!job.problem) {
            steps.write(job);
            return;
        }
        try {
            std::rethrow_exception(job.problem);
        } catch (const failure& found) {
            if (!steps.lose || found.code() != exit_code::data) {
                throw;
            }
            steps.lose(job, found);
        }
    }

    void end() {
        queue.stop();
        if (!complete && steps.stop_reading) {
            steps.stop_reading();
        }
        for (std::thread& thread : threads) {
            if (thread.joinable()) {
                thread.join();
            }
        }
    }

    const pipeline_steps& steps;
    job_queue queue;
    bool complete = false;
    std::vector<std::thread> threads;
};

}  // namespace

void run_pipeline(unsigned workers, const pipeline_steps& steps) {
    crew at_work(workers, steps);
    at_work.write_all();
}

}  // namespace qvr
