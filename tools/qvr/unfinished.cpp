// SPDX-License-Identifier: BSD-3-Clause
#include "unfinished.h"

#include <unistd.h>

#include <atomic>
#include <csignal>
#include <deque>

namespace qvr {

struct unfinished::entry {
    explicit entry(const std::string& of) : path(of) {}

    std::string path;
    std::atomic<bool> active{true};
    entry* before = nullptr;
};

// A signal handler may follow no more than plain links: entries are added in front, switched off, and never removed.
struct unfinished::list {
    static std::atomic<entry*>& newest() {
        static std::atomic<entry*> first{nullptr};
        return first;
    }

    static entry* add(const std::string& path) {
        // Never destroyed: a signal may come at any time.
        static std::deque<entry>& entries = *new std::deque<entry>;
        entry& added = entries.emplace_back(path);
        added.before = newest().load();
        newest().store(&added);
        return &added;
    }

    static void on_signal(int signal_number) {
        for (entry* at = newest().load(); at; at = at->before) {
            if (at->active.load() && unlink(at->path.c_str()) != 0) {
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
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction old = {};
        // What the caller of the tool has had ignored, as nohup does, stays ignored.
        if (sigaction(number, nullptr, &old) == 0 && old.sa_handler == SIG_DFL) {
            std::signal(number, list::on_signal);
        }
    }
}

void unfinished::forget() {
    if (watched) {
        watched->active.store(false);
        watched = nullptr;
    }
}

}  // namespace qvr
