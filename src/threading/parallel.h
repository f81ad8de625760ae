// SPDX-License-Identifier: BSD-3-Clause
//
// Cutting work for the pool: how rows are shared out, and one loop that runs tasks either here or on the workers.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "threading/threaded_executor.h"

struct row_chunk {
    std::uint32_t first;
    std::uint32_t count;
};

// Chunk `index` of `rows` rows in `chunks` chunks: each has rows / chunks of them, and the first rows % chunks have one
// more. Chunks past the last row are empty.
inline row_chunk chunk_of_rows(std::uint32_t rows, std::uint32_t chunks, std::uint32_t index) {
    const std::uint32_t share = rows / chunks;
    const std::uint32_t larger = rows % chunks;
    return {index * share + std::min(index, larger), share + (index < larger ? 1 : 0)};
}

// In how many chunks the executor's threads take `rows` rows: one a thread, never an empty one.
inline std::uint32_t chunks_for(const threaded_executor& executor, std::uint32_t rows) {
    const std::size_t threads = std::max<std::size_t>(executor.thread_count(), 1);
    return static_cast<std::uint32_t>(std::min<std::size_t>(threads, rows));
}

// Calls task(0) .. task(count - 1): in order on this thread when there are fewer than two workers, else as one batch.
// Returns when all have ended; throws the first exception that one of them raised.
template <class Task>
void run_tasks(threaded_executor& executor, std::uint32_t count, const Task& task) {
    if (executor.thread_count() < 2) {
        for (std::uint32_t i = 0; i < count; ++i) {
            task(i);
        }
        return;
    }
    try {
        for (std::uint32_t i = 0; i < count; ++i) {
            // Two words: small enough that the queued callable needs no memory of its own.
            executor.submit([&task, i] { task(i); });
        }
    } catch (...) {
        executor.discard();  // the queued callables refer to this frame
        throw;
    }
    executor.wait();
}

// Calls work(chunk, index) for all rows, one chunk a thread.
template <class Work>
void run_row_chunks(threaded_executor& executor, std::uint32_t rows, const Work& work) {
    const std::uint32_t chunks = chunks_for(executor, rows);
    run_tasks(executor, chunks, [&](std::uint32_t i) { work(chunk_of_rows(rows, chunks, i), i); });
}
