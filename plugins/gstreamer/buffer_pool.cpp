// SPDX-License-Identifier: BSD-3-Clause
#include "buffer_pool.h"

namespace qvr_gst {

GstBuffer* buffer_pool::acquire(std::uint32_t size) {
    if ((pool == nullptr || pool_size != size) && !begin(size)) {
        return nullptr;
    }
    GstBuffer* buffer = nullptr;
    gst_buffer_pool_acquire_buffer(pool, &buffer, nullptr);
    return buffer;
}

void buffer_pool::use(GstAllocator* allocator, const GstAllocationParams& params) {
    end();
    from = allocator;
    how = params;
}

void buffer_pool::end() {
    end_pool();
    gst_clear_object(&from);
}

void buffer_pool::end_pool() {
    if (pool != nullptr) {
        gst_buffer_pool_set_active(pool, FALSE);
        gst_clear_object(&pool);
    }
}

bool buffer_pool::begin(std::uint32_t size) {
    end_pool();
    pool = gst_buffer_pool_new();
    pool_size = size;
    GstStructure* config = gst_buffer_pool_get_config(pool);
    gst_buffer_pool_config_set_params(config, nullptr, size, 0, 0);
    gst_buffer_pool_config_set_allocator(config, from, &how);
    return gst_buffer_pool_set_config(pool, config) != FALSE && gst_buffer_pool_set_active(pool, TRUE) != FALSE;
}

}  // namespace qvr_gst
