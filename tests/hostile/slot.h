// SPDX-License-Identifier: BSD-3-Clause
//
// Memory against an inaccessible page that serves one buffer after another: sweeps have no time to map pages each time.
#ifndef QVR_TESTS_HOSTILE_SLOT_H
#define QVR_TESTS_HOSTILE_SLOT_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "guarded_buffer.h"

namespace hostile {

using test::bytes;
using test::guard;
using test::guarded_buffer;

class slot {
  public:
    slot();

    // Whatever was placed before is gone.
    void place(const bytes& content, guard side);
    void place(size_t size, guard side, uint8_t fill);

    uint8_t* data() const { return data_; }
    uint32_t size() const { return static_cast<uint32_t>(size_); }
    bool holds(const bytes& content) const;
    std::string to_hex() const;
    // False when something was written at the end that no page guards.
    bool surroundings_intact() const;

  private:
    void take(size_t size, guard side);

    size_t capacity_;
    std::unique_ptr<guarded_buffer> behind_;
    std::unique_ptr<guarded_buffer> before_;
    uint8_t* data_ = nullptr;
    size_t size_ = 0;
    uint8_t* watched_ = nullptr;
};

}  // namespace hostile

#endif  // QVR_TESTS_HOSTILE_SLOT_H
