// SPDX-License-Identifier: BSD-3-Clause
//
// The C library's allocation functions, defined here once more: the program's own and its libraries' calls come here,
// those of operator new among them.
#include "allocation_counter.h"

#include <atomic>
#include <cerrno>
#include <cstddef>

extern "C" {

void* __libc_malloc(std::size_t bytes);
void* __libc_calloc(std::size_t count, std::size_t bytes);
void* __libc_realloc(void* old, std::size_t bytes);
void* __libc_memalign(std::size_t alignment, std::size_t bytes);

}  // extern "C"

namespace {

std::atomic<unsigned long> counted{0};

void count_one() {
    counted.fetch_add(1, std::memory_order_relaxed);
}

}  // namespace

extern "C" {

void* malloc(std::size_t bytes) noexcept {
    count_one();
    return __libc_malloc(bytes);
}

void* calloc(std::size_t count, std::size_t bytes) noexcept {
    count_one();
    return __libc_calloc(count, bytes);
}

void* realloc(void* old, std::size_t bytes) noexcept {
    count_one();
    return __libc_realloc(old, bytes);
}

void* memalign(std::size_t alignment, std::size_t bytes) noexcept {
    count_one();
    return __libc_memalign(alignment, bytes);
}

void* aligned_alloc(std::size_t alignment, std::size_t bytes) noexcept {
    return memalign(alignment, bytes);
}

int posix_memalign(void** to, std::size_t alignment, std::size_t bytes) noexcept {
    void* const made = memalign(alignment, bytes);
    if (made == nullptr) {
        return ENOMEM;
    }
    *to = made;
    return 0;
}

}  // extern "C"

namespace bench {

unsigned long allocations_so_far() {
    return counted.load();
}

}  // namespace bench
