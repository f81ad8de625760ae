// SPDX-License-Identifier: BSD-3-Clause
#include "threading/parallel.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <stdexcept>
#include <vector>

#include "threading/worker_count.h"

namespace {

std::vector<std::uint32_t> counts(std::uint32_t rows, std::uint32_t chunks) {
    std::vector<std::uint32_t> result;
    for (std::uint32_t i = 0; i < chunks; ++i) {
        result.push_back(chunk_of_rows(rows, chunks, i).count);
    }
    return result;
}

TEST(chunk_of_rows, the_first_chunks_take_one_row_more) {
    EXPECT_EQ(counts(10, 4), (std::vector<std::uint32_t>{3, 3, 2, 2}));
    EXPECT_EQ(counts(8, 4), (std::vector<std::uint32_t>{2, 2, 2, 2}));
    EXPECT_EQ(counts(3, 3), (std::vector<std::uint32_t>{1, 1, 1}));
    EXPECT_EQ(counts(2, 4), (std::vector<std::uint32_t>{1, 1, 0, 0}));
}

TEST(chunk_of_rows, chunks_follow_each_other_and_cover_every_row) {
    for (const std::uint32_t rows : {0u, 1u, 2u, 5u, 16u, 17u, 1080u, 0xffffffffu}) {
        for (const std::uint32_t chunks : {1u, 2u, 3u, 7u, 16u, 255u}) {
            std::uint64_t next = 0;
            for (std::uint32_t i = 0; i < chunks; ++i) {
                const row_chunk chunk = chunk_of_rows(rows, chunks, i);
                EXPECT_EQ(chunk.first, next & 0xffffffff);
                next += chunk.count;
            }
            EXPECT_EQ(next, rows) << rows << " rows in " << chunks;
        }
    }
}

TEST(chunks_for, one_a_thread_and_never_an_empty_one) {
    threaded_executor none(0);
    threaded_executor three(3);
    EXPECT_EQ(chunks_for(none, 10), 1u);
    EXPECT_EQ(chunks_for(none, 0), 0u);
    EXPECT_EQ(chunks_for(three, 10), 3u);
    EXPECT_EQ(chunks_for(three, 2), 2u);
    EXPECT_EQ(chunks_for(three, 0), 0u);
}

TEST(run_tasks, runs_each_index_once_with_and_without_workers) {
    for (const std::uint32_t workers : {0u, 2u, 5u}) {
        threaded_executor executor(workers);
        std::vector<std::atomic<int>> runs(9);
        run_tasks(executor, 9, [&](std::uint32_t i) { ++runs[i]; });
        for (const auto& each : runs) {
            EXPECT_EQ(each, 1) << workers << " workers";
        }
        run_tasks(executor, 0, [&](std::uint32_t) { FAIL(); });
    }
}

TEST(run_tasks, passes_an_exception_on_with_and_without_workers) {
    for (const std::uint32_t workers : {0u, 3u}) {
        threaded_executor executor(workers);
        const auto task = [](std::uint32_t i) {
            if (i == 4) {
                throw std::out_of_range("4");
            }
        };
        EXPECT_THROW(run_tasks(executor, 9, task), std::out_of_range) << workers << " workers";
    }
}

TEST(worker_count, one_thread_is_none_and_zero_asks_the_machine) {
    EXPECT_EQ(worker_count(1), 0u);
    EXPECT_EQ(worker_count(2), 2u);
    EXPECT_EQ(worker_count(300), 300u);
    const unsigned processors = std::thread::hardware_concurrency();
    EXPECT_EQ(worker_count(0), processors == 1 ? 0 : processors);
}

}  // namespace
