// SPDX-License-Identifier: BSD-3-Clause
//
// Encoding a frame, decoding it, and encoding it again. The stream gives the pixels; it is repeated until the frame is
// full.
#include <cstring>

#include "api/base/pixel_format.h"
#include "frames.h"
#include "pixel/frame_geometry.h"

namespace {

using namespace fuzz;

struct frame_case {
    uncompressed_params up;
    compressed_params cp;
};

frame_case choose_case(byte_source& choices) {
    frame_case out = {make_params(1 + choices.below(16), k_types[choices.below(8)], 0, 0), {sizeof out.cp, 0, 0}};
    out.up.width = choices.below(65);
    out.up.height = choices.below(33);
    const std::uint32_t flags = choices.byte();
    if ((flags & 0xf) != 0xf) {
        out.up.width &= ~1u;
        out.up.height &= ~1u;
    }
    if ((flags & 0xc0) != 0) {
        out.up.height %= 9;
    }
    out.up.frameLayout = flags >> 4 & 1;
    out.cp.alphaCompression = static_cast<std::uint8_t>(flags >> 5 & 1);
    out.cp.rleSlices = static_cast<std::uint8_t>(choices.below(70));
    choose_strides(out.up, choices);
    return out;
}

exact_buffer make_pixels(std::size_t size, const exact_buffer& stream) {
    exact_buffer pixels(size, 0);
    std::size_t done = std::min(size, stream.size());
    std::memcpy(pixels.data(), stream.data(), done);
    while (done < size && done != 0) {
        const std::size_t part = std::min(size - done, done);
        std::memcpy(pixels.data() + done, pixels.data(), part);
        done += part;
    }
    return pixels;
}

struct encoded {
    outcome result;
    bytes stream;
};

encoded encode(const setup& how, const frame_case& frame, const exact_buffer& pixels, std::uint8_t fill) {
    const exact_buffer dst(QVRUncompressed_GetCompressedBufSize(&frame.up, &frame.cp), fill);
    coders& with = shared_coders(how.threads);
    std::uint32_t written = 0;
    encoded out;
    out.result = run(with, how.features, [&] {
        return QVRUncompressed_EncodeFrame(with.encoder, &frame.up, &frame.cp, pixels.data(), pixels.size_32(),
                                           dst.data(), dst.size_32(), &written);
    });
    dst.check_borders();
    require(written <= dst.size(), "the bound holds");
    out.stream.assign(dst.data(), dst.data() + written);
    return out;
}

// Encoded by the setup that was chosen and by the reference, with the same result.
encoded encode_twice(const setup& how, const frame_case& frame, const exact_buffer& pixels) {
    const encoded first = encode(how, frame, pixels, k_fills[0]);
    const encoded second = encode(k_reference, frame, pixels, k_fills[1]);
    require(first.result == second.result, "threads and instruction sets give the same outcome");
    require(first.stream == second.stream, "threads and instruction sets give the same stream");
    return first;
}

struct decoded {
    outcome result;
    exact_buffer pixels;
};

decoded decode(const setup& how, const uncompressed_params& up, const bytes& coded, std::uint8_t fill) {
    const exact_buffer stream(coded.data(), coded.size());
    decoded out = {{}, exact_buffer(frame_size(up), fill)};
    coders& with = shared_coders(how.threads);
    out.result = run(with, how.features, [&] {
        return QVRUncompressed_DecodeFrame(with.decoder, &up, stream.data(), stream.size_32(), out.pixels.data(),
                                           out.pixels.size_32(), nullptr);
    });
    out.pixels.check_borders();
    return out;
}

// The bits of a 16-bit word that a type keeps.
std::uint16_t kept_bits(std::uint32_t type) {
    switch (type) {
        case QVRUncompressed_TypeU10:
            return 0xffc0;
        case QVRUncompressed_TypeU12:
            return 0xfff0;
        default:
            return 0xffff;
    }
}

void require_same_row(std::uint32_t type, const std::uint8_t* before, const std::uint8_t* after, std::size_t count) {
    if (kept_bits(type) == 0xffff) {
        require(std::memcmp(before, after, count) == 0, "a row comes back as it was");
        return;
    }
    for (std::size_t i = 0; i < count; i += 2) {
        std::uint16_t word[2];
        std::memcpy(word, before + i, 2);
        std::memcpy(word + 1, after + i, 2);
        require((word[0] & kept_bits(type)) == word[1], "a row comes back as it was, without its low bits");
    }
}

// Rows of six pixels in four words: the last group may not be whole, then only those before it are compared.
void require_same_packed_row(const std::uint8_t* before, const std::uint8_t* after, std::uint32_t width) {
    for (std::size_t i = 0; i < width / 6 * 16u; i += 4) {
        std::uint32_t word[2];
        std::memcpy(word, before + i, 4);
        std::memcpy(word + 1, after + i, 4);
        require((word[0] & 0x3fffffff) == word[1], "a packed row comes back as it was");
    }
}

void require_same_frame(const uncompressed_params& up, const exact_buffer& before, const exact_buffer& after) {
    for (const caller_plane& plane : frame_geometry(up)) {
        for (std::uint64_t y = 0; y < plane.height; ++y) {
            const std::uint64_t at = static_cast<std::uint64_t>(plane.offset) + y * plane.stride;
            if (up.componentType == QVRUncompressed_TypeU10Packed) {
                require_same_packed_row(before.data() + at, after.data() + at, plane.width);
            } else {
                require_same_row(up.componentType, before.data() + at, after.data() + at, plane.row_bytes);
            }
        }
    }
}

bool stores_alpha(std::uint32_t type) {
    return type == QVRUncompressed_TypeU8 || type == QVRUncompressed_TypeU16;
}

// The frame as its own description has it, encoded again, is the same stream.
void check_second_generation(const setup& how, const frame_case& frame, const bytes& stream) {
    coders& with = shared_coders(1);
    frame_case again = frame;
    const outcome read = run(with, cpu_scalar, [&] {
        return QVRUncompressed_ReadMetadata(with.decoder, stream.data(), static_cast<std::uint32_t>(stream.size()),
                                            &again.up);
    });
    require(read.ok(), "what the encoder makes can be read");
    require(again.up.width == frame.up.width && again.up.height == frame.up.height &&
                again.up.frameLayout == frame.up.frameLayout,
            "dimensions and layout come back");
    const decoded second = decode(how, again.up, stream, 0);
    require(second.result.ok(), "a frame can be decoded as its description has it");
    const encoded result = encode_twice(how, again, second.pixels);
    require(result.result.ok() && result.stream == stream, "the second generation is the same stream");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    split_input input(data, size);
    const setup chosen = choose_setup(input.choices);
    const frame_case frame = choose_case(input.choices);
    const exact_buffer pixels = make_pixels(frame_size(frame.up), input.stream);
    const encoded made = encode_twice(chosen, frame, pixels);
    if (!made.result.ok()) {
        return 0;
    }
    const decoded first = decode(chosen, frame.up, made.stream, k_fills[0]);
    const decoded second = decode(k_reference, frame.up, made.stream, k_fills[1]);
    require(first.result == second.result, "threads and instruction sets give the same outcome");
    const bool lost_alpha =
        traits_of_order(frame.up.colorComponentOrder).has_alpha && !stores_alpha(frame.up.componentType);
    require(first.result.ok() == !lost_alpha, "what the encoder makes can be decoded, but for alpha not stored");
    if (first.result.ok()) {
        require_same_output(first.pixels, second.pixels);
        require_same_frame(frame.up, pixels, first.pixels);
    }
    check_second_generation(chosen, frame, made.stream);
    return 0;
}
