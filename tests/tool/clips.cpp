// SPDX-License-Identifier: BSD-3-Clause
#include "clips.h"

#include <stdexcept>

bytes noise(std::size_t count, std::uint32_t seed) {
    bytes made(count);
    std::uint32_t state = seed;
    for (std::uint8_t& value : made) {
        state = state * 1664525u + 1013904223u;
        value = static_cast<std::uint8_t>(state >> 24);
    }
    return made;
}

bytes make_rgb_clip(const scratch_folder& folder, const std::string& name, unsigned frames) {
    const bytes samples = noise(std::size_t{24} * frames, 99);
    const outcome made =
        folder.qvr({"encode", "-", name, "--size", "4x2", "--order", "RGB", "--type", "U8", "-q"}, samples);
    if (made.code != 0) {
        throw std::runtime_error("cannot make a clip for the test: " + made.err);
    }
    return samples;
}

void put_le32(bytes& in, std::size_t at, std::uint32_t value) {
    for (unsigned i = 0; i < 4; ++i) {
        in.at(at + i) = static_cast<std::uint8_t>(value >> (8 * i));
    }
}

std::uint32_t get_le32(const bytes& in, std::size_t at) {
    std::uint32_t value = 0;
    for (unsigned i = 0; i < 4; ++i) {
        value |= static_cast<std::uint32_t>(in.at(at + i)) << (8 * i);
    }
    return value;
}
