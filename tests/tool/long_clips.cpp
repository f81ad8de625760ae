// SPDX-License-Identifier: BSD-3-Clause
#include "long_clips.h"

#include <unistd.h>

#include <filesystem>
#include <sstream>
#include <stdexcept>

#include "clips.h"
#include "comes_true.h"

bytes long_samples() {
    return noise(k_small_samples * k_long_frames, 7);
}

void make_long_clip(const scratch_folder& folder) {
    folder.write("long.raw", long_samples());
    const outcome made = folder.qvr(encode_small("long.raw", "long.qvr", {"-j", "1"}));
    if (made.code != 0 || folder.read("long.qvr").size() != k_small_frame * k_long_frames) {
        throw std::runtime_error("cannot make a clip for the test: " + made.err);
    }
}

words encode_small(const std::string& in, const std::string& out, const words& more) {
    return words{"encode", in, out, "--size", "4x2", "--order", "RGB24", "-q"} + more;
}

words operator+(words first, const words& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

bool comes_to(const scratch_folder& folder, const std::string& name, std::size_t size) {
    return comes_true([&] {
        std::error_code missing;
        const std::uintmax_t there = std::filesystem::file_size(folder.file(name), missing);
        return !missing && there >= size;
    });
}

void feed_bytes(int pipe, const bytes& from, std::size_t count) {
    if (write(pipe, from.data(), count) != static_cast<ssize_t>(count)) {
        throw std::runtime_error("cannot feed the command");
    }
}

std::vector<std::string> progress_lines(const std::string& text) {
    std::vector<std::string> found;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty() && line.front() == '{') {
            found.push_back(line);
        }
    }
    return found;
}
