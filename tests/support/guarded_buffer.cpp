// SPDX-License-Identifier: BSD-3-Clause
#include "guarded_buffer.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <new>

namespace test {

namespace {

size_t page_size() {
    static const size_t size = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    return size;
}

}  // namespace

guarded_buffer::guarded_buffer(size_t size, guard side, uint8_t fill) : size_(size) {
    map(side);
    if (size_ != 0) {
        std::memset(data_, fill, size_);
    }
}

guarded_buffer::guarded_buffer(const bytes& content, guard side) : size_(content.size()) {
    map(side);
    if (size_ != 0) {
        std::memcpy(data_, content.data(), size_);
    }
}

guarded_buffer::~guarded_buffer() {
    munmap(base_, mapped_);
}

void guarded_buffer::map(guard side) {
    const size_t page = page_size();
    // An empty buffer still gets one page of its own, so that its address is a valid one.
    const size_t usable = size_ == 0 ? page : (size_ + page - 1) / page * page;
    mapped_ = usable + page;
    base_ = mmap(nullptr, mapped_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (base_ == MAP_FAILED) {
        throw std::bad_alloc();
    }
    uint8_t* start = static_cast<uint8_t*>(base_);
    uint8_t* closed = side == guard::behind ? start + usable : start;
    data_ = side == guard::behind ? start + usable - size_ : start + page;
    open_ = side == guard::behind ? start : start + page;
    if (mprotect(closed, page, PROT_NONE) != 0) {
        munmap(base_, mapped_);
        throw std::bad_alloc();
    }
}

void guarded_buffer::make_read_only() {
    if (mprotect(open_, mapped_ - page_size(), PROT_READ) != 0) {
        throw std::bad_alloc();
    }
}

sparse_buffer::sparse_buffer(size_t size) : size_(size) {
    void* base = mmap(nullptr, size_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (base == MAP_FAILED) {
        throw std::bad_alloc();
    }
    data_ = static_cast<uint8_t*>(base);
}

sparse_buffer::~sparse_buffer() {
    munmap(data_, size_);
}

}  // namespace test
