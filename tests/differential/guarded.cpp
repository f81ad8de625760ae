// SPDX-License-Identifier: BSD-3-Clause
#include "guarded.h"

#include <sys/mman.h>
#include <unistd.h>

#include <map>
#include <stdexcept>
#include <vector>

namespace differential {

namespace {

constexpr std::uint8_t front_byte = 0x5C;

std::size_t page_size() {
    static const auto size = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return size;
}

// Mappings are kept for reuse, by their number of usable pages.
std::map<std::size_t, std::vector<std::uint8_t*>>& free_mappings() {
    static std::map<std::size_t, std::vector<std::uint8_t*>> mappings;
    return mappings;
}

std::uint8_t* take_mapping(std::size_t pages) {
    std::vector<std::uint8_t*>& unused = free_mappings()[pages];
    if (!unused.empty()) {
        std::uint8_t* mapping = unused.back();
        unused.pop_back();
        return mapping;
    }
    const std::size_t length = (pages + 2) * page_size();
    void* memory = mmap(nullptr, length, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
        throw std::runtime_error("no memory for a guarded buffer");
    }
    auto* mapping = static_cast<std::uint8_t*>(memory);
    if (mprotect(mapping + page_size(), pages * page_size(), PROT_READ | PROT_WRITE) != 0) {
        throw std::runtime_error("no access to a guarded buffer");
    }
    return mapping;
}

}  // namespace

guarded_buffer::guarded_buffer(const model::bytes& content) : guarded_buffer(content.data(), content.size()) {}

guarded_buffer::guarded_buffer(const void* content, std::size_t size) {
    place(size);
    if (size != 0) {
        std::memcpy(data_, content, size);
    }
}

guarded_buffer::~guarded_buffer() {
    free_mappings()[pages_].push_back(mapping_);
}

void guarded_buffer::place(std::size_t size) {
    pages_ = (size + page_size() - 1) / page_size();
    if (pages_ == 0) {
        pages_ = 1;
    }
    mapping_ = take_mapping(pages_);
    size_ = size;
    std::uint8_t* first = mapping_ + page_size();
    data_ = first + pages_ * page_size() - size;
    std::memset(first, front_byte, static_cast<std::size_t>(data_ - first));
}

bool guarded_buffer::holds(const model::bytes& expected) const {
    return expected.size() == size_ && (size_ == 0 || std::memcmp(data_, expected.data(), size_) == 0);
}

bool guarded_buffer::front_intact() const {
    for (const std::uint8_t* byte = mapping_ + page_size(); byte != data_; ++byte) {
        if (*byte != front_byte) {
            return false;
        }
    }
    return true;
}

}  // namespace differential
