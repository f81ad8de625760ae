// SPDX-License-Identifier: BSD-3-Clause
//
// What a file cannot keep of a frame is said before it is lost.
#pragma once

#include <string>

#include "failure.h"
#include "warnings.h"

namespace qvr {

// One for the inputs and one for the outputs of a command.
class loss_log {
  public:
    explicit loss_log(bool refuse) : strict(refuse) {}

    // Warns once of the same; with --strict it is a usage failure. way_out: what the hint of that failure says, when
    // there is more to say than to leave --strict out.
    void lose(const location& where, const std::string& what, const std::string& way_out = {});
    // Warns once where nothing is lost, and --strict has nothing to refuse.
    void tell(const std::string& file, const std::string& what) { once(file, what); }

  private:
    bool strict;
    warn_once once;
};

}  // namespace qvr
