// SPDX-License-Identifier: BSD-3-Clause
//
// Warnings come in the order of the frames, however many of these are worked on at once.
#pragma once

#include <functional>
#include <set>
#include <string>
#include <vector>

namespace qvr {

// "qvr: warning: FILE: WHAT" on standard error, or wherever a warning_keeper has the thread's warnings.
void warn(const std::string& file, const std::string& what);

// What to do when a warning's turn has come.
using warnings = std::vector<std::function<void()>>;

// While one of these lives, what its thread warns of is added to a list instead. The newest one has it.
class warning_keeper {
  public:
    explicit warning_keeper(warnings& list);
    ~warning_keeper();
    warning_keeper(const warning_keeper&) = delete;
    warning_keeper& operator=(const warning_keeper&) = delete;

  private:
    warnings* before;
};

// Says what was kept, in its order; the list keeps it, so that it can be said of another frame as well.
void warn(const warnings& kept);

// Warnings that concern many frames alike are said of the first one. Outlives what was kept of it.
class warn_once {
  public:
    void operator()(const std::string& file, const std::string& what);

  private:
    std::set<std::string> said;  // used by the thread whose warnings are not kept
};

}  // namespace qvr
