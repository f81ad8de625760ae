// SPDX-License-Identifier: BSD-3-Clause
//
// What must not stay behind when the tool is interrupted.
#pragma once

#include <string>

namespace qvr {

// The name of an unfinished file or folder, which an interrupt removes while it is watched. Later names are removed
// before earlier ones, so that a folder goes after its files.
class unfinished {
  public:
    unfinished() = default;
    ~unfinished() { forget(); }
    unfinished(const unfinished&) = delete;
    unfinished& operator=(const unfinished&) = delete;

    void watch(const std::string& path);
    void forget();

  private:
    struct entry;
    struct list;
    entry* watched = nullptr;
};

}  // namespace qvr
