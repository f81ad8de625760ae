// SPDX-License-Identifier: BSD-3-Clause
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "failure.h"
#include "file_io.h"

namespace qvr {

namespace {

std::string without_last_slashes(std::string path) {
    while (path.size() > 1 && path.back() == '/') {
        path.pop_back();
    }
    return path;
}

bool is_folder(const std::string& path) {
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

}  // namespace

output_folder::output_folder(const std::string& path) : target(without_last_slashes(path)) {
    struct stat status = {};
    exists = stat(target.c_str(), &status) == 0;
    if (exists && !S_ISDIR(status.st_mode)) {
        throw failure(exit_code::io, {target, {}}, "cannot write into it: it is not a directory",
                      "give --into a folder, or a name that nothing has yet");
    }
    // Inside a folder that is there, since it may be a file system of its own, which nothing can be moved into.
    const std::string stem = target + (exists ? "/.part-" : ".part-") + std::to_string(getpid()) + "-";
    for (unsigned attempt = 0;; ++attempt) {
        staging = stem + std::to_string(attempt);
        if (mkdir(staging.c_str(), 0777) == 0) {
            break;
        }
        if (errno != EEXIST || attempt >= 100) {
            fail(target, exists ? "cannot write into it" : "cannot create it");
        }
    }
    pending.emplace_back().watch(staging);
}

output_folder::~output_folder() {
    if (!staging.empty()) {
        std::error_code ignored;
        std::filesystem::remove_all(staging, ignored);
    }
}

void output_folder::fail(const std::string& path, const std::string& what) {
    const int reason = errno;
    throw failure(exit_code::io, {path, {}}, what + ": " + std::strerror(reason), system_hint(reason));
}

std::string output_folder::place(const std::string& name) {
    names.push_back(name);
    std::string path = staging + "/" + name;
    pending.emplace_back().watch(path);
    return path;
}

void output_folder::move_files() {
    // Looked at before the first file is moved, so that none is when one cannot be.
    for (const std::string& name : names) {
        if (is_folder(shown(name))) {
            throw failure(exit_code::io, {shown(name), {}}, "cannot write it: it is a directory",
                          "move it away, or give --into another folder");
        }
    }
    for (const std::string& name : names) {
        if (std::rename((staging + "/" + name).c_str(), shown(name).c_str()) != 0) {
            fail(shown(name), "cannot give it its name");
        }
    }
    rmdir(staging.c_str());
}

void output_folder::commit() {
    if (exists) {
        move_files();
    } else if (std::rename(staging.c_str(), target.c_str()) != 0) {
        fail(target, "cannot give it its name");
    }
    staging.clear();
    pending.clear();
}

}  // namespace qvr
