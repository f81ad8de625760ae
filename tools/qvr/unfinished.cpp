// SPDX-License-Identifier: BSD-3-Clause
#include "unfinished.h"

#include <unistd.h>

#include <atomic>
#include <csignal>
#include <deque>
#include <mutex>

namespace qvr {

enum class entry_state { idle, watched, taken };

struct unfinished::entry {
    std::string path;  // changes only while the entry is idle
    std::atomic<entry_state> state{entry_state::idle};
    entry* before = nullptr;

    bool change(entry_state from, entry_state to) { return state.compare_exchange_strong(from, to); }
};

// A signal handler may follow no more than plain links: entries are added in front and never removed, but used again.
struct unfinished::list {
    static std::atomic<entry*>& newest() {
        static std::atomic<entry*> first{nullptr};
        return first;
    }

    static entry* add(const std::string& path) {
        // Never destroyed: a signal may come at any time.
        static std::deque<entry>& entries = *new std::deque<entry>;
        static std::mutex& mutex = *new std::mutex;
        const std::lock_guard<std::mutex> lock(mutex);
        for (entry& candidate : entries) {
            if (candidate.state.load() == entry_state::idle) {
                return start(candidate, path);
            }
        }
        entry& added = entries.emplace_back();
        added.before = newest().load();
        newest().store(&added);
        return start(added, path);
    }

    static entry* start(entry& at, const std::string& path) {
        at.path = path;
        at.state.store(entry_state::watched);
        return &at;
    }

    static void on_signal(int signal_number) {
        for (entry* at = newest().load(); at; at = at->before) {
            if (at->change(entry_state::watched, entry_state::taken)) {
                unlink(at->path.c_str());
            }
        }
        for (entry* at = newest().load(); at; at = at->before) {
            if (at->state.load() == entry_state::taken) {
                rmdir(at->path.c_str());
            }
        }
        std::signal(signal_number, SIG_DFL);
        raise(signal_number);
    }
};

void unfinished::watch(const std::string& path) {
    forget();
    watched = list::add(path);
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE, SIGXCPU, SIGXFSZ}) {
        struct sigaction old = {};
        // What the caller of the tool has had ignored, as nohup does, stays ignored.
        if (sigaction(number, nullptr, &old) == 0 && old.sa_handler == SIG_DFL) {
            std::signal(number, list::on_signal);
        }
    }
}

void unfinished::forget() {
    if (watched) {
        // An entry that a signal has taken stays so: the process is about to end.
        watched->change(entry_state::watched, entry_state::idle);
        watched = nullptr;
    }
}

}  // namespace qvr
