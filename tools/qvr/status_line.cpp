// SPDX-License-Identifier: BSD-3-Clause
#include "status_line.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string_view>

namespace qvr {

namespace {

constexpr const char* k_erase_line = "\r\033[K";

struct terminal_state {
    std::mutex mutex;
    bool shown = false;
};

terminal_state& terminal() {
    static terminal_state state;
    return state;
}

void erase(terminal_state& state) {
    if (state.shown) {
        std::fputs(k_erase_line, stderr);
        state.shown = false;
    }
}

}  // namespace

bool has_status_line() {
    const char* kind = std::getenv("TERM");
    return isatty(STDERR_FILENO) == 1 && kind && std::string_view(kind) != "dumb";
}

unsigned status_columns() {
    constexpr unsigned k_usual = 80;
    winsize size = {};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : k_usual;
}

void show_status(const std::string& line) {
    terminal_state& state = terminal();
    const std::lock_guard<std::mutex> lock(state.mutex);
    std::fputs((k_erase_line + line).c_str(), stderr);
    state.shown = true;
}

void clear_status() {
    terminal_state& state = terminal();
    const std::lock_guard<std::mutex> lock(state.mutex);
    erase(state);
}

void print_message(const std::string& text) {
    terminal_state& state = terminal();
    const std::lock_guard<std::mutex> lock(state.mutex);
    erase(state);
    std::fputs(text.c_str(), stderr);
}

}  // namespace qvr
