// SPDX-License-Identifier: BSD-3-Clause
//
// Handles that come and go leave nothing behind: no memory, no thread, no open file.
#include <dirent.h>
#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <iterator>

#include "comes_true.h"
#include "frame_trip.h"

namespace {

std::size_t entries(const char* folder) {
    std::size_t count = 0;
    if (DIR* listed = opendir(folder)) {
        while (const dirent* entry = readdir(listed)) {
            count += entry->d_name[0] != '.' ? 1 : 0;
        }
        closedir(listed);
    }
    return count;
}

// A joined thread may linger in the process's list for a moment.
std::size_t threads_when_settled(std::size_t expected) {
    comes_true([&] { return entries("/proc/self/task") == expected; });
    return entries("/proc/self/task");
}

// Bytes handed out by the C library; always 0 under sanitizers with an allocator of their own, which look for leaks
// themselves.
std::size_t bytes_in_use() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

// The stack of a thread that was not joined stays one. Always 0 under sanitizers, which map memory as they like.
std::size_t mappings() {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    return 0;
#else
    std::ifstream maps("/proc/self/maps");
    return static_cast<std::size_t>(std::count(std::istreambuf_iterator<char>(maps), {}, '\n'));
#endif
}

void come_and_go(int rounds, std::uint32_t threads, frame_trip& trip) {
    for (int i = 0; i < rounds; ++i) {
        handle_pair with(threads);
        ASSERT_TRUE(with.complete());
        ASSERT_EQ(trip.encode(with.encoder), 0u);
        ASSERT_EQ(trip.decode(with.decoder), 0u);
    }
}

struct repetition {
    int rounds;
    std::uint32_t threads;
};

class growth : public testing::TestWithParam<repetition> {};

TEST_P(growth, of_nothing_when_handles_come_and_go) {
    const repetition how = GetParam();
    mallopt(M_ARENA_MAX, 1);  // or else threads that come and go make more of them for a while
    frame_trip trip({7, 2, 3});
    come_and_go(how.rounds / 20, how.threads, trip);  // what is kept for good is kept from now on
    const std::size_t threads = threads_when_settled(1);
    const std::size_t files = entries("/proc/self/fd");
    const std::size_t bytes = bytes_in_use();
    const std::size_t mapped = mappings();
    come_and_go(how.rounds, how.threads, trip);
    EXPECT_EQ(threads_when_settled(threads), threads);
    EXPECT_EQ(entries("/proc/self/fd"), files);
    // A block has 32 bytes or more, a stack a mapping or two: half a block or a mapping a round is none.
    EXPECT_LT(bytes_in_use(), bytes + 16u * static_cast<unsigned>(how.rounds));
    EXPECT_LT(mappings(), mapped + static_cast<unsigned>(how.rounds));
}

INSTANTIATE_TEST_SUITE_P(threads, growth, testing::Values(repetition{10000, 1}, repetition{400, 4}));

}  // namespace
