// SPDX-License-Identifier: BSD-3-Clause
#include "box_builder.h"

#include <stdexcept>

namespace test {

namespace {

bytes word(std::string_view text) {
    if (text.size() != 4) {
        throw std::logic_error("a box type or plane code in a test is not four characters long");
    }
    return bytes(text.begin(), text.end());
}

void put(bytes& target, size_t offset, const bytes& value) {
    for (size_t i = 0; i < value.size() && offset + i < target.size(); ++i) {
        target[offset + i] = value[i];
    }
}

}  // namespace

bytes box_with_size(std::string_view type, uint32_t size, const bytes& payload) {
    return le32(size) + word(type) + payload;
}

bytes box(std::string_view type, const bytes& payload) {
    return box_with_size(type, static_cast<uint32_t>(payload.size() + 8), payload);
}

bytes pack(const bytes& children) {
    return box("pack", children);
}

bytes sdat(const bytes& payload) {
    return box("sdat", payload);
}

bytes sinf(uint32_t width, uint32_t height, std::string_view code, uint8_t layout) {
    return box("sinf", le32(width) + le32(height) + word(code) + bytes{layout});
}

bytes short_sinf(uint32_t width, uint32_t height, std::string_view code) {
    return box("sinf", le32(width) + le32(height) + word(code));
}

bytes long_sinf(uint32_t width, uint32_t height, std::string_view code, uint8_t layout, const bytes& extra) {
    return box("sinf", le32(width) + le32(height) + word(code) + bytes{layout} + extra);
}

bytes bare_plane(uint32_t width, uint32_t height, std::string_view code, const bytes& payload, uint8_t layout) {
    return sinf(width, height, code, layout) + sdat(payload);
}

bytes component(uint32_t width, uint32_t height, std::string_view code, const bytes& payload, uint8_t layout) {
    return box("icmp", bare_plane(width, height, code, payload, layout));
}

bytes single_plane(uint32_t width, uint32_t height, std::string_view code, const bytes& payload, uint8_t layout) {
    return pack(bare_plane(width, height, code, payload, layout));
}

bytes qcx_frame(const qcx_head& head, size_t size) {
    // The rest of the frame is opaque to the library: numbered bytes show that it is copied as it is.
    bytes frame = counting(size, 0x30);
    put(frame, 7, {static_cast<uint8_t>(head.alpha ? 0xff : 0xfe)});
    put(frame, 24, be16(head.height));
    put(frame, 26, be16(head.width));
    put(frame, 40, be32(head.id));
    return frame;
}

}  // namespace test
