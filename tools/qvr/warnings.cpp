// SPDX-License-Identifier: BSD-3-Clause
#include "warnings.h"

#include <utility>

#include "failure.h"
#include "status_line.h"

namespace qvr {

namespace {

thread_local warnings* keeper = nullptr;

void in_turn(std::function<void()> warning) {
    if (keeper) {
        keeper->push_back(std::move(warning));
    } else {
        warning();
    }
}

}  // namespace

void warn(const std::string& file, const std::string& what) {
    in_turn([file, what] { print_message("qvr: warning: " + printable(file) + ": " + printable(what) + "\n"); });
}

warning_keeper::warning_keeper(warnings& list) : before(std::exchange(keeper, &list)) {}

warning_keeper::~warning_keeper() {
    keeper = before;
}

void warn(const warnings& kept) {
    for (const std::function<void()>& warning : kept) {
        in_turn(warning);
    }
}

void warn_once::operator()(const std::string& file, const std::string& what) {
    in_turn([this, file, what] {
        if (said.insert(what).second) {
            warn(file, what);
        }
    });
}

}  // namespace qvr
