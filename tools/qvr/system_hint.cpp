// SPDX-License-Identifier: BSD-3-Clause
#include <cerrno>

#include "failure.h"

namespace qvr {

namespace {

struct hint_row {
    int error;
    const char* hint;
};

constexpr hint_row k_hints[] = {
    {ENOENT, "look at the name and its folder, which must exist"},
    {ENOTDIR, "look at the name: a part of it is a file, not a folder"},
    {EISDIR, "name a file in the folder"},
    {EACCES, "'ls -l' shows who may read and write there"},
    {EROFS, "write to another disk: this one can only be read"},
    {EMFILE, "'ulimit -n' shows how many files may be open at once"},
    {EIO, "the disk or the network reports an error: 'dmesg' may tell more"},
    {ENOSPC, "make room or write to another disk; nothing incomplete was left behind"},
    {EDQUOT, "make room or write to another disk; nothing incomplete was left behind"},
};

}  // namespace

std::string system_hint(int error) {
    for (const hint_row& row : k_hints) {
        if (row.error == error) {
            return row.hint;
        }
    }
    return {};
}

}  // namespace qvr
