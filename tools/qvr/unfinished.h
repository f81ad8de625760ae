// SPDX-License-Identifier: BSD-3-Clause
//
// What must not stay behind when the tool is interrupted.
#pragma once

#include <string>

namespace qvr {

// The name of an unfinished file or folder, which an interrupt removes while it is watched: files first, then folders.
// Different objects may be used from different threads.
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
