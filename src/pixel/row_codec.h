// SPDX-License-Identifier: BSD-3-Clause
//
// One plane's rows between the caller's layout and the bitstream's. What is to be done is decided once a frame:
//
//   caller's row  --reorder-->  samples in bitstream order  --narrow-->  stored row
//                 <--reorder--                              <--widen---
//
// Either step may be missing; without both, rows are copied. Kernels do both in one pass.
#pragma once

#include <cstddef>
#include <cstdint>

#include "api/base/pixel_format.h"
#include "container/frame_layout.h"
#include "pixel/frame_geometry.h"
#include "pixel/kernels/row_kernels.h"
#include "threading/parallel.h"

// Rows of one plane with a stride between them; null, with a stride of 0, when there are none.
template <class Byte>
struct row_span {
    Byte* first = nullptr;
    std::uint64_t stride = 0;

    Byte* row(std::uint64_t index) const { return first == nullptr ? nullptr : first + index * stride; }
};

class row_codec {
  public:
    // map: how the caller's samples are ordered; type: the caller's component type; streams: results go past the caches.
    row_codec(const pixel_map& map, std::uint32_t type, const caller_plane& caller, const container::plane_info& stored,
              bool streams);

    // Packs or unpacks a chunk of rows. alpha: rows split off from, or merged into, the caller's; null rows drop it.
    // Nothing is read or written between rows.
    void pack(row_chunk chunk, row_span<const std::uint8_t> caller, row_span<std::uint8_t> stored,
              row_span<std::uint8_t> alpha) const;
    void unpack(row_chunk chunk, row_span<const std::uint8_t> stored, row_span<const std::uint8_t> alpha,
                row_span<std::uint8_t> caller) const;

    std::uint64_t stored_bytes() const { return stored_row; }

  private:
    bool reorders() const { return rule.map.samples != 0; }
    bool changes_width() const { return narrow_rule != narrowing::none || to_float; }
    bool is_one_row(std::uint64_t caller_stride, std::uint64_t stored_stride, std::uint64_t alpha_stride) const;
    void narrow(const std::uint8_t* words, std::uint8_t* stored) const;
    void widen(const std::uint8_t* stored, std::uint8_t* words) const;
    void convert(const std::uint8_t* stored, std::uint8_t* floats) const;
    void widen_some(const std::uint8_t* stored, std::uint64_t first, std::uint64_t count, std::uint8_t* words) const;
    void finish_group(const std::uint8_t* stored, std::uint8_t* caller) const;
    void copy_rows(row_chunk chunk, row_span<const std::uint8_t> from, row_span<std::uint8_t> to) const;
    void pack_groups(const std::uint8_t* caller, std::uint64_t count, std::uint8_t* colour, std::uint8_t* alpha) const;
    void unpack_groups(const std::uint8_t* colour, const std::uint8_t* alpha, std::uint64_t count,
                       std::uint8_t* caller) const;

    reorder_rule rule;
    narrowing narrow_rule;
    bool to_float;
    std::uint32_t width;
    std::uint64_t caller_row;  // bytes, without padding
    std::uint64_t stored_row;  // bytes
    std::uint64_t samples;     // in a stored row
    unsigned sample_bytes;     // between the two steps
    std::uint64_t groups;      // whole ones in a row, where samples are reordered
    bool streams;
    const row_kernels& kernels;
};
