// SPDX-License-Identifier: BSD-3-Clause
//
// Buffers that are let go, and mappings that end, by themselves.
#pragma once

#include <gst/gst.h>

#include <cstdint>
#include <memory>

namespace qvr_gst {

struct unref_buffer {
    void operator()(GstBuffer* buffer) const { gst_buffer_unref(buffer); }
};
using buffer_pointer = std::unique_ptr<GstBuffer, unref_buffer>;

// The bytes of a buffer, which must outlive the object; one that is written must have a single owner.
class mapped_buffer {
  public:
    // of: may be null, and then it is not mapped.
    mapped_buffer(GstBuffer* of, GstMapFlags flags)
        : buffer(of), mapped(of != nullptr && gst_buffer_map(of, &map, flags) != FALSE) {}
    ~mapped_buffer() {
        if (mapped) {
            gst_buffer_unmap(buffer, &map);
        }
    }
    mapped_buffer(const mapped_buffer&) = delete;
    mapped_buffer& operator=(const mapped_buffer&) = delete;

    // False also for what is more than the library counts.
    explicit operator bool() const { return mapped && map.size <= G_MAXUINT32; }
    std::uint8_t* data() const { return map.data; }
    std::uint32_t size() const { return static_cast<std::uint32_t>(map.size); }

  private:
    GstBuffer* buffer;
    GstMapInfo map = {};
    bool mapped;
};

}  // namespace qvr_gst
