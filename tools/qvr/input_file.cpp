// SPDX-License-Identifier: BSD-3-Clause
#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "failure.h"
#include "file_io.h"

namespace qvr {

namespace {

constexpr std::size_t k_growth = std::size_t{16} << 20;

// Readable once reads are to end. Without one, when the system has none left, they end by themselves.
int stop_descriptor() {
    static const int descriptor = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    return descriptor;
}

// Waits until there is something to read, or the end of the input. Regular files always have one of them.
bool wait_for_input(int descriptor) {
    pollfd watched[] = {{descriptor, POLLIN, 0}, {stop_descriptor(), POLLIN, 0}};
    while (poll(watched, 2, -1) < 0 && errno == EINTR) {
    }
    return (watched[1].revents & POLLIN) == 0;
}

}  // namespace

void stop_waiting_for_input() {
    eventfd_write(stop_descriptor(), 1);
}

input_file::input_file(const std::string& path) : shown_name(path == "-" ? "standard input" : path) {
    if (path == "-") {
        descriptor = STDIN_FILENO;
        return;
    }
    descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) {
        const int reason = errno;
        throw failure(exit_code::io, {shown_name, {}},
                      std::string("cannot open it for reading: ") + std::strerror(reason), system_hint(reason));
    }
    owned = true;
}

input_file::~input_file() {
    if (owned) {
        close(descriptor);
    }
}

std::size_t input_file::read_from_system(std::uint8_t* to, std::size_t count) {
    std::size_t got = 0;
    while (got < count && wait_for_input(descriptor)) {
        const ssize_t n = ::read(descriptor, to + got, std::min(count - got, k_growth));
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n < 0) {
            const int reason = errno;
            throw failure(exit_code::io, {shown_name, {}}, std::string("cannot read it: ") + std::strerror(reason),
                          system_hint(reason));
        }
        if (n == 0) {
            break;
        }
        got += static_cast<std::size_t>(n);
    }
    return got;
}

std::size_t input_file::read(std::uint8_t* to, std::size_t count) {
    const std::size_t from_head = std::min(count, head.size());
    std::copy_n(head.begin(), from_head, to);
    head.erase(head.begin(), head.begin() + static_cast<std::ptrdiff_t>(from_head));
    return from_head + read_from_system(to + from_head, count - from_head);
}

std::size_t input_file::read_into(std::vector<std::uint8_t>& buffer, std::size_t start, std::size_t count) {
    std::size_t got = 0;
    while (got < count) {
        const std::size_t have = buffer.size() - std::min(buffer.size(), start + got);
        const std::size_t step = have > 0 ? std::min(count - got, have) : std::min(count - got, k_growth + got);
        buffer.resize(std::max(buffer.size(), start + got + step));
        const std::size_t n = read(buffer.data() + start + got, step);
        got += n;
        if (n < step) {
            break;
        }
    }
    return got;
}

const std::vector<std::uint8_t>& input_file::peek(std::size_t count) {
    if (head.size() < count) {
        const std::size_t had = head.size();
        head.resize(count);
        head.resize(had + read_from_system(head.data() + had, count - had));
    }
    return head;
}

std::optional<std::uint64_t> input_file::bytes_left() const {
    struct stat status = {};
    const off_t at = lseek(descriptor, 0, SEEK_CUR);
    if (at < 0 || fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        return std::nullopt;
    }
    return head.size() + static_cast<std::uint64_t>(std::max(status.st_size, at) - at);
}

std::uint64_t input_file::skip(std::uint64_t count) {
    std::uint64_t skipped = std::min<std::uint64_t>(count, head.size());
    head.erase(head.begin(), head.begin() + static_cast<std::ptrdiff_t>(skipped));
    if (const std::optional<std::uint64_t> left = bytes_left()) {
        const std::uint64_t step = std::min(count - skipped, *left);
        if (lseek(descriptor, static_cast<off_t>(step), SEEK_CUR) >= 0) {
            return skipped + step;
        }
    }
    std::vector<std::uint8_t> dropped(static_cast<std::size_t>(std::min<std::uint64_t>(count - skipped, k_growth)));
    while (skipped < count) {
        const std::size_t step = static_cast<std::size_t>(std::min<std::uint64_t>(count - skipped, dropped.size()));
        const std::size_t got = read_from_system(dropped.data(), step);
        skipped += got;
        if (got < step) {
            break;
        }
    }
    return skipped;
}

}  // namespace qvr
