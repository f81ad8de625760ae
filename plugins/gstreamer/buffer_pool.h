// SPDX-License-Identifier: BSD-3-Clause
//
// Buffers of one size that come back when downstream is done with them.
#pragma once

#include <gst/gst.h>

#include <cstdint>

namespace qvr_gst {

class buffer_pool {
  public:
    buffer_pool() = default;
    ~buffer_pool() { end(); }
    buffer_pool(const buffer_pool&) = delete;
    buffer_pool& operator=(const buffer_pool&) = delete;

    // A buffer of that many bytes; null when there is no memory. Buffers of another size than before make a new pool.
    GstBuffer* acquire(std::uint32_t size);
    // Takes over the allocator, which may be null.
    void use(GstAllocator* allocator, const GstAllocationParams& params);
    void end();

  private:
    bool begin(std::uint32_t size);
    void end_pool();

    GstBufferPool* pool = nullptr;
    std::uint32_t pool_size = 0;
    GstAllocator* from = nullptr;
    GstAllocationParams how = {};
};

}  // namespace qvr_gst
