// SPDX-License-Identifier: BSD-3-Clause
//
// Orders and types as the names of cases have them, and what of a frame is really read and written.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "options.h"

namespace bench {

struct format {
    std::uint32_t order;
    std::uint32_t type;
};

// All 106 pairs.
const std::vector<format>& all_formats();

std::string order_text(std::uint32_t order);  // "7-RGBA"
std::string type_text(std::uint32_t type);    // "1-U8"
std::string to_text(const format& pair);      // "7-RGBA/1-U8"

// What a stream that was made from the format is decoded to: the same, or without the alpha that was not stored.
format decoded_format(const format& pair);

// Bytes that encoding reads of a raw frame: all, but for planes of alpha that is not stored.
std::uint64_t bytes_read_of_raw(const format& pair, const frame_size& size);

}  // namespace bench
