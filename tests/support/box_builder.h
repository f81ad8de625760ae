// SPDX-License-Identifier: BSD-3-Clause
//
// Bitstreams built box by box, right or wrong.
#ifndef QVR_TESTS_SUPPORT_BOX_BUILDER_H
#define QVR_TESTS_SUPPORT_BOX_BUILDER_H

#include <cstdint>
#include <string_view>

#include "bytes.h"

namespace test {

// A box with a true size.
bytes box(std::string_view type, const bytes& payload);
// A box whose size field holds whatever the test wants.
bytes box_with_size(std::string_view type, uint32_t size, const bytes& payload);

bytes pack(const bytes& children);
bytes sdat(const bytes& payload);
// The usual form of 21 bytes.
bytes sinf(uint32_t width, uint32_t height, std::string_view code, uint8_t layout = 0);
// The old form of 20 bytes, without the layout byte.
bytes short_sinf(uint32_t width, uint32_t height, std::string_view code);
// A form longer than 21 bytes: `extra` follows the layout byte.
bytes long_sinf(uint32_t width, uint32_t height, std::string_view code, uint8_t layout, const bytes& extra);

// 'sinf' and 'sdat', as a frame of a single plane holds them.
bytes bare_plane(uint32_t width, uint32_t height, std::string_view code, const bytes& payload, uint8_t layout = 0);
// The same inside an 'icmp'.
bytes component(uint32_t width, uint32_t height, std::string_view code, const bytes& payload, uint8_t layout = 0);

// A whole frame of a single plane.
bytes single_plane(uint32_t width, uint32_t height, std::string_view code, const bytes& payload, uint8_t layout = 0);

// The head of a wrapped compressed frame, `size` bytes long.
struct qcx_head {
    uint32_t id = 1300;
    uint16_t width = 0;
    uint16_t height = 0;
    bool alpha = false;
};
bytes qcx_frame(const qcx_head& head, size_t size = 45);

}  // namespace test

#endif  // QVR_TESTS_SUPPORT_BOX_BUILDER_H
