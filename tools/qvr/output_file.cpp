// SPDX-License-Identifier: BSD-3-Clause
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <vector>

#include "failure.h"
#include "file_io.h"
#include "warnings.h"

namespace qvr {

std::string base_name(const std::string& path) {
    return path.substr(path.find_last_of('/') + 1);
}

std::string behind_links(const std::string& path) {
    constexpr int k_most_links = 40;
    std::error_code ignored;
    std::filesystem::path at = path;
    for (int i = 0; i < k_most_links && std::filesystem::is_symlink(at, ignored); ++i) {
        at = at.parent_path() / std::filesystem::read_symlink(at, ignored);
    }
    return at.string();
}

output_file::output_file(const std::string& path, incomplete becomes)
    : output_file(path, path == "-" ? "standard output" : path, becomes) {}

output_file::output_file(const std::string& path, const std::string& called, incomplete becomes)
    : shown_name(called), becomes_kept(becomes == incomplete::kept || becomes == incomplete::compared) {
    struct stat status = {};
    const bool exists = path != "-" && stat(path.c_str(), &status) == 0;
    if (exists && S_ISDIR(status.st_mode)) {
        throw failure(exit_code::io, {shown_name, {}}, "cannot write it: it is a directory", system_hint(EISDIR));
    }
    if (becomes_kept && (path == "-" || (exists && !S_ISREG(status.st_mode)))) {
        throw failure(exit_code::usage, {shown_name, {}}, "--resume needs a file: nothing is kept of a pipe or device",
                      "name a file, or leave --resume out");
    }
    if (path == "-") {
        descriptor = STDOUT_FILENO;
        return;
    }
    if (exists && !S_ISREG(status.st_mode)) {
        descriptor = open(path.c_str(), O_WRONLY | O_CLOEXEC);
        if (descriptor < 0) {
            fail("cannot open it for writing");
        }
        owned = true;
        return;
    }
    // The file that a link points to is replaced, and not the link.
    target = behind_links(path);
    if (becomes_kept) {
        open_kept(becomes == incomplete::compared ? "" : target + ".part");
    } else if (becomes == incomplete::begun_again) {
        open_again();
    } else {
        open_beside_target();
    }
    if (exists && !kept_is_complete() && fchmod(descriptor, status.st_mode & 07777) != 0) {
        warn(shown_name, std::string("cannot keep its permissions: ") + std::strerror(errno));
    }
}

void output_file::open_beside_target() {
    for (unsigned attempt = 0; descriptor < 0; ++attempt) {
        temporary = target + ".part-" + std::to_string(getpid()) + "-" + std::to_string(attempt);
        descriptor = open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (descriptor < 0 && (errno != EEXIST || attempt >= 100)) {
            fail("cannot create it");
        }
    }
    owned = true;
    pending.watch(temporary);
}

void output_file::open_again() {
    temporary = target + ".part";
    descriptor = open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (descriptor < 0) {
        fail("cannot create it");
    }
    owned = true;
    pending.watch(temporary);
}

void output_file::open_kept(const std::string& part) {
    temporary = part;
    struct stat status = {};
    const bool started = !part.empty() && stat(part.c_str(), &status) == 0;
    if (!started && stat(target.c_str(), &status) == 0) {
        temporary.clear();
    }
    descriptor = open(kept_path().c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    if (descriptor < 0) {
        fail("cannot create it");
    }
    owned = true;
    lock();
    if (fstat(descriptor, &status) != 0 || lseek(descriptor, 0, SEEK_END) < 0) {
        fail("cannot look at it");
    }
    kept = found = static_cast<std::uint64_t>(status.st_size);
}

// Two runs that go on with the same file would spoil it.
void output_file::lock() {
    lock_descriptor = open(kept_path().c_str(), O_RDONLY | O_CLOEXEC);
    if (lock_descriptor >= 0 && flock(lock_descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
        throw failure(exit_code::io, {shown_name, {}}, "another run is writing to " + kept_path() + " now",
                      "wait for its end, or end it");
    }
    struct stat named = {};
    struct stat held = {};
    if (stat(kept_path().c_str(), &named) != 0 || fstat(descriptor, &held) != 0 || named.st_ino != held.st_ino) {
        throw failure(exit_code::io, {shown_name, {}}, "another run has just finished it");
    }
}

void output_file::go_on(std::uint64_t from, std::uint64_t whole) {
    if (whole < found && kept_is_complete()) {
        throw failure(exit_code::usage, {shown_name, {}},
                      "cannot go on: " + std::to_string(found - whole) + " bytes follow its last whole frame",
                      "remove it to make it again, or leave --resume out");
    }
    kept = whole;
    written = from;
    if (lseek(descriptor, static_cast<off_t>(whole), SEEK_SET) < 0) {
        fail("cannot go on in it");
    }
}

void output_file::cut_off_rest() {
    if (found > kept && ftruncate(descriptor, static_cast<off_t>(kept)) != 0) {
        fail("cannot cut off what is not whole");
    }
    found = kept;
}

std::size_t output_file::compare_kept(const std::uint8_t* with, std::size_t count) {
    constexpr std::size_t k_step = std::size_t{1} << 20;
    std::vector<std::uint8_t> there;
    std::size_t compared = 0;
    while (compared < count && written < kept) {
        there.resize(std::min({count - compared, k_step, static_cast<std::size_t>(kept - written)}));
        const ssize_t n = pread(descriptor, there.data(), there.size(), static_cast<off_t>(written));
        if (n <= 0) {
            fail("cannot read what is kept of it");
        }
        const auto step = static_cast<std::size_t>(n);
        if (std::memcmp(there.data(), with + compared, step) != 0) {
            throw failure(exit_code::usage, {shown_name, {}},
                          "cannot go on: " + kept_path() + " was made of another input or with other options",
                          "give the command as it was, or remove " + kept_path() + " to start again");
        }
        compared += step;
        written += step;
    }
    if (compared < count && kept_is_complete()) {
        throw failure(exit_code::usage, {shown_name, {}},
                      "it is complete already, and with fewer frames than there are",
                      "remove it to make it again, or leave --resume out");
    }
    return compared;
}

output_file::~output_file() {
    if (owned) {
        close(descriptor);
    }
    // An empty file is nothing to go on with.
    if (!temporary.empty() && (!becomes_kept || (owned && kept == 0 && written == 0))) {
        unlink(temporary.c_str());
    }
    if (lock_descriptor >= 0) {
        close(lock_descriptor);
    }
}

void output_file::fail(const std::string& what) const {
    const int reason = errno;
    const char* kept_hint = "make room and give the same command again: it goes on behind the last whole frame";
    throw failure(exit_code::io, {shown_name, {}}, what + ": " + std::strerror(reason),
                  becomes_kept && reason == ENOSPC ? kept_hint : system_hint(reason));
}

void output_file::write(const std::string& text) {
    write(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
}

void output_file::write(const std::uint8_t* from, std::size_t count) {
    constexpr std::size_t k_step = std::size_t{64} << 20;
    const std::size_t there = becomes_kept ? compare_kept(from, count) : 0;
    from += there;
    count -= there;
    if (count > 0) {
        cut_off_rest();
    }
    while (count > 0) {
        const ssize_t n = ::write(descriptor, from, std::min(count, k_step));
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n < 0) {
            fail("cannot write it");
        }
        from += n;
        count -= static_cast<std::size_t>(n);
        written += static_cast<std::uint64_t>(n);
    }
}

void output_file::commit() {
    if (written < kept) {
        throw failure(exit_code::usage, {shown_name, {}},
                      "cannot go on: there is more in " + kept_path() + " than this input gives",
                      "give the command as it was, or remove " + kept_path() + " to start again");
    }
    cut_off_rest();
    if (owned) {
        owned = false;
        // Some file systems report a full disk only here.
        if (close(descriptor) != 0) {
            fail("cannot write it");
        }
    }
    if (temporary.empty()) {
        return;
    }
    if (std::rename(temporary.c_str(), target.c_str()) != 0) {
        fail("cannot give it its name");
    }
    temporary.clear();
    pending.forget();
}

}  // namespace qvr
