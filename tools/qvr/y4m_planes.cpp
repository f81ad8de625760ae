// SPDX-License-Identifier: BSD-3-Clause
#include "y4m_planes.h"

#include <cstring>

namespace qvr {

namespace {

// Samples at any address, little-endian.
template <class Sample>
Sample load(const std::uint8_t* at) {
    Sample value;
    std::memcpy(&value, at, sizeof value);
    return value;
}

template <class Sample>
void store(std::uint8_t* at, unsigned value) {
    const auto narrow = static_cast<Sample>(value);
    std::memcpy(at, &narrow, sizeof narrow);
}

// Calls move(planar, frame) with the addresses of each sample in both.
template <class Sample, class Planar, class Frame, class Move>
void for_each_sample(const frame_layout& layout, Planar* planar, Frame* frame, const Move& move) {
    for (const y4m_plane& plane : y4m_planes(layout)) {
        for (std::size_t y = 0; y < plane.height; ++y) {
            Frame* at = frame + (plane.first + y * plane.row) * sizeof(Sample);
            for (std::size_t x = 0; x < plane.width; ++x) {
                move(planar, at);
                planar += sizeof(Sample);
                at += plane.step * sizeof(Sample);
            }
        }
    }
}

}  // namespace

const std::vector<y4m_kind>& all_y4m_kinds() {
    static const std::vector<y4m_kind> rows = {
        {QVRUncompressed_OrderPlanar420, "420", "420jpeg", "p"},
        {QVRUncompressed_OrderCbYCrY, "422", "422", "p"},
        {QVRUncompressed_OrderYCbCr444, "444", "444", "p"},
        {QVRUncompressed_OrderYCbCrA444, "444alpha", "444alpha", nullptr},
        {QVRUncompressed_OrderAlpha, "mono", "mono", ""},
    };
    return rows;
}

std::vector<y4m_plane> y4m_planes(const frame_layout& layout) {
    const std::size_t w = layout.width;
    const std::size_t h = layout.height;
    const std::size_t cw = (w + 1) / 2;
    const std::size_t ch = (h + 1) / 2;
    switch (layout.colorComponentOrder) {
        case QVRUncompressed_OrderPlanar420:
            return {{w, h, 0, 1, w}, {cw, ch, w * h, 1, cw}, {cw, ch, w * h + cw * ch, 1, cw}};
        case QVRUncompressed_OrderCbYCrY:
            return {{w, h, 1, 2, 2 * w}, {cw, h, 0, 4, 2 * w}, {cw, h, 2, 4, 2 * w}};
        case QVRUncompressed_OrderYCbCr444:
            return {{w, h, 0, 3, 3 * w}, {w, h, 1, 3, 3 * w}, {w, h, 2, 3, 3 * w}};
        // Its first two samples are swapped when stored, so that a frame reads as Y Cb Cr when its alpha is left out.
        case QVRUncompressed_OrderYCbCrA444:
            return {{w, h, 1, 4, 4 * w}, {w, h, 0, 4, 4 * w}, {w, h, 2, 4, 4 * w}, {w, h, 3, 4, 4 * w}};
        default:
            return {{w, h, 0, 1, w}};
    }
}

bool from_y4m(const frame_layout& layout, unsigned depth, const std::uint8_t* planar, std::uint8_t* frame) {
    if (depth == 8) {
        for_each_sample<std::uint8_t>(layout, planar, frame,
                                      [](const std::uint8_t* from, std::uint8_t* to) { *to = *from; });
        return true;
    }
    unsigned all = 0;
    for_each_sample<std::uint16_t>(layout, planar, frame, [&all, depth](const std::uint8_t* from, std::uint8_t* to) {
        const unsigned value = load<std::uint16_t>(from);
        all |= value;
        store<std::uint16_t>(to, value << (16 - depth));
    });
    return all >> depth == 0;
}

void to_y4m(const frame_layout& layout, unsigned depth, const std::uint8_t* frame, std::uint8_t* planar) {
    if (depth == 8) {
        for_each_sample<std::uint8_t>(layout, planar, frame,
                                      [](std::uint8_t* to, const std::uint8_t* from) { *to = *from; });
        return;
    }
    for_each_sample<std::uint16_t>(layout, planar, frame, [depth](std::uint8_t* to, const std::uint8_t* from) {
        store<std::uint16_t>(to, static_cast<unsigned>(load<std::uint16_t>(from)) >> (16 - depth));
    });
}

}  // namespace qvr
