// SPDX-License-Identifier: BSD-3-Clause
//
// What a file cannot keep of a frame is said before it is lost.
#pragma once

#include <mutex>
#include <set>
#include <string>

#include "failure.h"

namespace qvr {

// One for the inputs and one for the outputs of a command. May be used from several threads.
class loss_log {
  public:
    explicit loss_log(bool refuse) : strict(refuse) {}

    // Warns, the first time that the same is said; with --strict it is a usage failure. way_out: what the hint of that
    // failure says, when there is more to say than to leave --strict out.
    void lose(const location& where, const std::string& what, const std::string& way_out = {});

  private:
    bool strict;
    std::mutex mutex;
    std::set<std::string> said;
};

}  // namespace qvr
