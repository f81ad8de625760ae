// SPDX-License-Identifier: BSD-3-Clause
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "failure.h"
#include "file_io.h"

namespace qvr {

namespace {

// A link is followed, so that the file it points to is replaced and not the link.
std::string resolved(const std::string& path) {
    const std::unique_ptr<char, void (*)(void*)> real(realpath(path.c_str(), nullptr), std::free);
    return real ? std::string(real.get()) : path;
}

}  // namespace

output_file::output_file(const std::string& path) : output_file(path, path == "-" ? "standard output" : path) {}

output_file::output_file(const std::string& path, const std::string& called) : shown_name(called) {
    if (path == "-") {
        descriptor = STDOUT_FILENO;
        return;
    }
    struct stat status = {};
    const bool exists = stat(path.c_str(), &status) == 0;
    if (exists && S_ISDIR(status.st_mode)) {
        throw failure(exit_code::io, {shown_name, {}}, "cannot write it: it is a directory", system_hint(EISDIR));
    }
    if (exists && !S_ISREG(status.st_mode)) {
        descriptor = open(path.c_str(), O_WRONLY | O_CLOEXEC);
        if (descriptor < 0) {
            fail("cannot open it for writing");
        }
        owned = true;
        return;
    }
    open_beside_target(path);
    if (exists && fchmod(descriptor, status.st_mode & 07777) != 0) {
        warn(shown_name, std::string("cannot keep its permissions: ") + std::strerror(errno));
    }
}

void output_file::open_beside_target(const std::string& path) {
    target = resolved(path);
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

output_file::~output_file() {
    if (owned) {
        close(descriptor);
    }
    if (!temporary.empty()) {
        unlink(temporary.c_str());
    }
}

void output_file::fail(const std::string& what) const {
    const int reason = errno;
    throw failure(exit_code::io, {shown_name, {}}, what + ": " + std::strerror(reason), system_hint(reason));
}

void output_file::write(const std::uint8_t* from, std::size_t count) {
    constexpr std::size_t k_step = std::size_t{64} << 20;
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
