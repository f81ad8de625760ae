// SPDX-License-Identifier: BSD-3-Clause
#include "slot.h"

#include <algorithm>
#include <cstring>

namespace hostile {

namespace {

constexpr size_t k_first_capacity = 4096;
// Bytes at the open end that must stay as they are.
constexpr size_t k_watched = 64;
constexpr uint8_t k_watch_fill = 0x6b;

}  // namespace

slot::slot() : capacity_(0) {
    take(0, guard::behind);
}

void slot::take(size_t size, guard side) {
    if (capacity_ < size + k_watched) {
        capacity_ = std::max(k_first_capacity, size + k_watched);
        behind_ = std::make_unique<guarded_buffer>(capacity_, guard::behind);
        before_ = std::make_unique<guarded_buffer>(capacity_, guard::before);
    }
    size_ = size;
    data_ = side == guard::behind ? behind_->data() + capacity_ - size : before_->data();
    watched_ = side == guard::behind ? data_ - k_watched : data_ + size;
    std::memset(watched_, k_watch_fill, k_watched);
}

void slot::place(const bytes& content, guard side) {
    take(content.size(), side);
    std::copy(content.begin(), content.end(), data_);
}

void slot::place(size_t size, guard side, uint8_t fill) {
    take(size, side);
    std::fill_n(data_, size, fill);
}

bool slot::holds(const bytes& content) const {
    return content.size() == size_ && std::equal(content.begin(), content.end(), data_);
}

std::string slot::to_hex() const {
    return test::to_hex(data_, size_);
}

bool slot::surroundings_intact() const {
    return std::all_of(watched_, watched_ + k_watched, [](uint8_t value) { return value == k_watch_fill; });
}

}  // namespace hostile
