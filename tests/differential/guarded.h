// SPDX-License-Identifier: BSD-3-Clause
#ifndef QVR_TESTS_DIFFERENTIAL_GUARDED_H
#define QVR_TESTS_DIFFERENTIAL_GUARDED_H

// Memory that ends exactly where an inaccessible page begins, so that a read
// or write of one byte too many faults at once. The bytes in front of it, up
// to the start of the page, are watched, and an inaccessible page lies there
// too.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include "model_types.h"

namespace differential {

class guarded_buffer {
  public:
    explicit guarded_buffer(const model::bytes& content);
    guarded_buffer(const void* content, std::size_t size);
    ~guarded_buffer();
    guarded_buffer(const guarded_buffer&) = delete;
    guarded_buffer& operator=(const guarded_buffer&) = delete;

    std::uint8_t* data() const { return data_; }
    std::size_t size() const { return size_; }
    model::bytes content() const { return model::bytes(data_, data_ + size_); }
    bool holds(const model::bytes& expected) const;
    // False when something wrote in front of the buffer.
    bool front_intact() const;

  private:
    void place(std::size_t size);

    std::size_t pages_ = 0;
    std::uint8_t* mapping_ = nullptr;
    std::uint8_t* data_ = nullptr;
    std::size_t size_ = 0;
};

// A record in guarded memory.
template <class record>
class guarded_record {
  public:
    explicit guarded_record(const record& value) : original_(value), buffer_(&value, sizeof value) {}

    record* get() const { return reinterpret_cast<record*>(buffer_.data()); }
    record value() const {
        record result;
        std::memcpy(&result, buffer_.data(), sizeof result);
        return result;
    }
    bool unchanged() const {
        return buffer_.front_intact() && std::memcmp(buffer_.data(), &original_, sizeof original_) == 0;
    }

  private:
    record original_;
    guarded_buffer buffer_;
};

}  // namespace differential

#endif
