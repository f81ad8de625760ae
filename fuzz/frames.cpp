// SPDX-License-Identifier: BSD-3-Clause
#include "frames.h"

#include <algorithm>

#include "pixel/frame_geometry.h"

namespace fuzz {

uncompressed_params make_params(std::uint32_t order, std::uint32_t type, std::uint32_t width, std::uint32_t height) {
    return {sizeof(uncompressed_params), order, type, width, height, 0, 0, 0};
}

std::size_t frame_size(const uncompressed_params& up) {
    const wide total = frame_geometry(up).total();
    const std::uint32_t expected = up.size == sizeof up ? low_32(total) : 0;
    require(QVRUncompressed_GetUncompressedBufSize(&up) == expected, "the size query knows the frame's size");
    return static_cast<std::size_t>(std::min<wide>(total, k_most_memory));
}

void choose_strides(uncompressed_params& up, byte_source& choices) {
    const std::uint32_t kind = choices.byte();
    if (kind % 4 < 2) {
        return;
    }
    const frame_geometry geometry(up);
    std::size_t index = 0;
    for (const caller_plane& plane : geometry) {
        const std::uint64_t wider = plane.row_bytes + choices.below(20);
        const std::uint64_t stride = kind % 16 == 15 ? plane.row_bytes - 1 : wider;
        if (index == 0) {
            up.rowBytes = static_cast<std::uint32_t>(stride);
        } else if (index == 1) {
            up.rowBytes2 = static_cast<std::uint32_t>(stride);
        }
        ++index;
    }
}

uncompressed_params choose_decoder_params(const exact_buffer& stream, byte_source& choices) {
    const std::uint32_t kind = choices.below(16);
    const std::uint32_t order = choices.below(18);
    const std::uint32_t type = choices.byte();
    const std::uint32_t width = choices.below(65);
    const std::uint32_t height = choices.below(65);
    uncompressed_params up = make_params(order, k_types[type % k_types.size()], width, height);
    uncompressed_params stored = make_params(0, 0, 0, 0);
    coders& reader = shared_coders(1);
    const outcome read = run(reader, cpu_scalar, [&] {
        return QVRUncompressed_ReadMetadata(reader.decoder, stream.data(), stream.size_32(), &stored);
    });
    if (read.ok() && kind != 15) {
        up.width = stored.width;
        up.height = stored.height;
        if (type % 4 != 3) {
            up.componentType = stored.componentType;
        }
        if (kind % 2 == 0) {
            up.colorComponentOrder = stored.colorComponentOrder;
        }
    }
    choose_strides(up, choices);
    return up;
}

std::size_t choose_size(std::size_t needed, byte_source& choices) {
    const std::uint32_t kind = choices.below(16);
    switch (kind) {
        case 13:
            return needed - std::min<std::size_t>(needed, 1);
        case 14:
            return needed / 2;
        case 15:
            return needed + choices.byte();
        default:
            return needed;
    }
}

}  // namespace fuzz
