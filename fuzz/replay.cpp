// SPDX-License-Identifier: BSD-3-Clause
//
// The main() of a fuzzer where libFuzzer is not there: hands each file that is named, and each file of each folder, to
// the target once. So the corpus is an ordinary test.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "harness.h"

namespace {

std::vector<std::filesystem::path> files_of(const std::filesystem::path& named) {
    if (!std::filesystem::is_directory(named)) {
        return {named};
    }
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(named)) {
        if (entry.is_regular_file()) {
            files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

bool replay(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        std::fprintf(stderr, "cannot read %s\n", path.c_str());
        return false;
    }
    const std::vector<char> content{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    std::vector<std::uint8_t> input(content.size());
    std::transform(content.begin(), content.end(), input.begin(),
                   [](char value) { return static_cast<std::uint8_t>(value); });
    // Before the target runs: should it not come back, this is the one.
    std::printf("%s\n", path.c_str());
    std::fflush(stdout);
    LLVMFuzzerTestOneInput(input.data(), input.size());
    return true;
}

}  // namespace

int main(int count, char** arguments) {
    std::size_t replayed = 0;
    for (int i = 1; i < count; ++i) {
        for (const auto& path : files_of(arguments[i])) {
            if (!replay(path)) {
                return 1;
            }
            ++replayed;
        }
    }
    std::printf("%zu inputs replayed\n", replayed);
    return replayed == 0 ? 1 : 0;
}
