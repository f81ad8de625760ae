// SPDX-License-Identifier: BSD-3-Clause
//
// Buffers whose neighbouring page is inaccessible: one byte too far ends the test with a fault.
#ifndef QVR_TESTS_SUPPORT_GUARDED_BUFFER_H
#define QVR_TESTS_SUPPORT_GUARDED_BUFFER_H

#include <cstddef>
#include <cstdint>

#include "bytes.h"

namespace test {

enum class guard {
    behind,  // the inaccessible page begins right after the last byte
    before   // the inaccessible page ends right before the first byte
};

class guarded_buffer {
  public:
    explicit guarded_buffer(size_t size, guard side = guard::behind, uint8_t fill = 0xcc);
    explicit guarded_buffer(const bytes& content, guard side = guard::behind);
    ~guarded_buffer();
    guarded_buffer(const guarded_buffer&) = delete;
    guarded_buffer& operator=(const guarded_buffer&) = delete;

    uint8_t* data() { return data_; }
    const uint8_t* data() const { return data_; }
    size_t size() const { return size_; }
    uint32_t size32() const { return static_cast<uint32_t>(size_); }
    bytes copy() const { return bytes(data_, data_ + size_); }

    // From now on writing into the buffer is a fault, too.
    void make_read_only();

  private:
    void map(guard side);

    void* base_ = nullptr;
    uint8_t* open_ = nullptr;  // first accessible page
    size_t mapped_ = 0;
    uint8_t* data_ = nullptr;
    size_t size_ = 0;
};

// Address space that reads as zero and takes no memory until it is written.
class sparse_buffer {
  public:
    explicit sparse_buffer(size_t size);
    ~sparse_buffer();
    sparse_buffer(const sparse_buffer&) = delete;
    sparse_buffer& operator=(const sparse_buffer&) = delete;

    uint8_t* data() { return data_; }

  private:
    uint8_t* data_ = nullptr;
    size_t size_ = 0;
};

}  // namespace test

#endif  // QVR_TESTS_SUPPORT_GUARDED_BUFFER_H
