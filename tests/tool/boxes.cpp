// SPDX-License-Identifier: BSD-3-Clause
#include "boxes.h"

#include "clips.h"

namespace {

void put_be(bytes& in, std::size_t at, std::size_t count, std::uint32_t value) {
    for (std::size_t i = 0; i < count && at + i < in.size(); ++i) {
        in[at + i] = static_cast<std::uint8_t>(value >> (8 * (count - 1 - i)));
    }
}

}  // namespace

void append_box(bytes& to, const std::string& type, const bytes& payload) {
    const std::size_t at = to.size();
    to.resize(at + 4);
    put_le32(to, at, static_cast<std::uint32_t>(payload.size() + 8));
    to.insert(to.end(), type.begin(), type.end());
    to.insert(to.end(), payload.begin(), payload.end());
}

bytes plane_payload(std::uint32_t width, std::uint32_t height, const std::string& code) {
    bytes payload(8);
    put_le32(payload, 0, width);
    put_le32(payload, 4, height);
    payload.insert(payload.end(), code.begin(), code.end());
    payload.push_back(0);
    return payload;
}

bytes packed(const bytes& content) {
    bytes frame;
    append_box(frame, "pack", content);
    return frame;
}

bytes qcx_frame(std::uint32_t compression, std::uint32_t width, std::uint32_t height, std::size_t size) {
    bytes frame = noise(size, compression);
    if (size > 7) {
        frame[7] = static_cast<std::uint8_t>(frame[7] & 0xFE);
    }
    put_be(frame, 24, 2, height);
    put_be(frame, 26, 2, width);
    put_be(frame, 40, 4, compression);
    return frame;
}
