// SPDX-License-Identifier: BSD-3-Clause
//
// Where the planes of a raw frame lie in the caller's buffer. Size queries, stride checks, encoder, decoder and
// wrapping all read this one answer.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "api/base/checked.h"
#include "api/base/records.h"
#include "container/frame_layout.h"
#include "rle/rle_params.h"

enum class plane_role : std::uint8_t { main, cb, cr, alpha };

struct caller_plane {
    plane_role role;
    std::uint32_t width;      // pixels
    std::uint32_t height;     // rows
    std::uint64_t row_bytes;  // of one row without padding
    std::uint64_t stride;     // from row to row
    wide offset;              // in the buffer; fits 64 bits once the total has been compared with the buffer's size

    wide size() const { return wide{stride} * height; }
};

// Source and destination of a call; the destination's size has been compared with what is going to be written.
struct frame_buffers {
    const std::uint8_t* src;
    std::uint32_t src_size;
    std::uint8_t* dst;
    bool streams = false;  // past the caches, which do not hold the frame
};

class frame_geometry {
  public:
    explicit frame_geometry(const QVRUncompressed_UncompressedParams_t& up);

    // Throws invalid_argument when a stride is neither 0 nor at least a row.
    void check_strides() const;

    // Bytes of the whole frame.
    wide total() const;

    const caller_plane* begin() const { return planes.data(); }
    const caller_plane* end() const { return planes.data() + count; }

  private:
    void add(plane_role role, std::uint32_t width, std::uint32_t height, std::uint64_t row_bytes, std::uint32_t stride);

    std::array<caller_plane, k_most_planes> planes;
    std::size_t count = 0;
};

// The plane of the bitstream that a plane of the caller's is stored in; null when it is not stored.
const container::plane_entry* stored_plane(const container::plane_roles& roles, plane_role role);

// The frame's alpha plane as the run-length coder sees it.
rle_params alpha_plane_description(const QVRUncompressed_UncompressedParams_t& up, std::uint32_t slices);
