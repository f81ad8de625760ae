// SPDX-License-Identifier: BSD-3-Clause
#include "generate.h"

namespace differential {

const std::vector<format_pair>& all_pairs() {
    static const std::vector<format_pair> pairs = [] {
        std::vector<format_pair> all;
        for (std::uint32_t order = 1; order <= 16; ++order) {
            for (const std::uint32_t type : {1u, 2u, 3u, 4u, 5u, 6u, 7u, 214u}) {
                if (model::is_supported_pair(order, type)) {
                    all.push_back({order, type});
                }
            }
        }
        return all;
    }();
    return pairs;
}

std::uint32_t small_dimension(rng& random) {
    const std::uint32_t kind = random.below(40);
    if (kind == 0) {
        return 0;
    }
    if (kind < 6) {
        return 1;
    }
    if (kind < 8) {
        return random.between(60, 150);
    }
    return random.between(1, kind < 25 ? 12 : 40);
}

std::uint32_t wild_value(rng& random) {
    static const std::vector<std::uint32_t> corners = {
        0,          1,          2,          3,          5,          6,          7,          8,
        9,          0x7F,       0xFF,       0x100,      0xFFFF,     0x10000,    0x55555555, 0x55555556,
        0x3FFFFFFF, 0x40000000, 0x7FFFFFFF, 0x80000000, 0xAAAAAAAA, 0xFFFFFFF0, 0xFFFFFFFE, 0xFFFFFFFF};
    switch (random.below(4)) {
        case 0:
            return random.word();
        case 1:
            return random.below(64);
        default:
            return random.pick(corners);
    }
}

void random_strides(rng& random, model::frame_params& frame, unsigned percent_too_small) {
    model::frame_params tight = frame;
    tight.row_bytes = 0;
    tight.row_bytes2 = 0;
    const auto choose = [&](model::exact least) -> std::uint32_t {
        if (least > 100000) {
            return 0;
        }
        const std::uint32_t minimum = model::low32(least);
        if (random.chance(percent_too_small)) {
            return minimum > 1 ? minimum - 1 - random.below(minimum - 1) : 0;
        }
        switch (random.below(5)) {
            case 0:
            case 1:
                return 0;
            case 2:
                return minimum;
            case 3:
                return minimum + random.between(1, 40);
            default:
                return (minimum + 63) / 64 * 64;
        }
    };
    frame.row_bytes = choose(model::first_stride(tight));
    frame.row_bytes2 = choose(model::second_stride(tight));
    if (random.chance(1)) {
        frame.row_bytes2 = random.between(500, 3000);
    }
}

model::frame_params encodable_frame(rng& random, std::uint64_t pair_index) {
    const format_pair& pair = all_pairs()[pair_index % all_pairs().size()];
    model::frame_params frame;
    frame.order = pair.order;
    frame.type = pair.type;
    frame.width = small_dimension(random);
    frame.height = small_dimension(random);
    frame.frame_layout = random.chance(97) ? random.below(2) : random.word();
    // Odd sizes are refused for subsampled orders; keep a few of them.
    const unsigned sub = model::subsampling(frame.order);
    if ((sub == 420 || sub == 422) && !random.chance(3)) {
        frame.width += frame.width % 2;
    }
    if (sub == 420 && !random.chance(3)) {
        frame.height += frame.height % 2;
    }
    random_strides(random, frame, 2);
    return frame;
}

model::stream_params random_stream(rng& random) {
    static const std::vector<std::uint8_t> slices = {0, 1, 2, 3, 16, 255};
    model::stream_params stream;
    stream.alpha_compression = random.chance(50) ? 0 : random.chance(80) ? 1 : 200;
    stream.rle_slices = random.chance(85) ? random.pick(slices) : random.byte();
    return stream;
}

model::frame_params wild_frame(rng& random) {
    model::frame_params frame;
    frame.order = random.chance(85) ? random.below(18) : wild_value(random);
    frame.type = random.chance(85) ? random.below(9) : random.chance(50) ? 214 : wild_value(random);
    frame.width = wild_value(random);
    frame.height = wild_value(random);
    frame.row_bytes = random.chance(60) ? 0 : wild_value(random);
    frame.row_bytes2 = random.chance(60) ? 0 : wild_value(random);
    frame.frame_layout = random.chance(80) ? random.below(3) : wild_value(random);
    return frame;
}

namespace {

std::uint32_t random_slope(rng& random) {
    return random.chance(70) ? random.between(0, 12) : random.word();
}

}  // namespace

model::bytes raw_content(rng& random, std::size_t size) {
    model::bytes data;
    const std::uint32_t style = random.below(5);
    while (data.size() < size) {
        const std::uint32_t kind = style < 3 ? style : random.below(4);
        const std::size_t run = style < 3 ? size : random.between(1, 30);
        std::uint8_t value = random.chance(20) ? 127 : random.byte();
        const auto slope = static_cast<std::uint8_t>(kind == 0 ? 0 : random_slope(random) & 0xFF);
        for (std::size_t i = 0; i < run && data.size() < size; ++i) {
            data.push_back(kind == 2 ? random.byte() : value);
            value = static_cast<std::uint8_t>(value + slope);
        }
    }
    return data;
}

model::bytes raw_content_16(rng& random, std::size_t size) {
    model::bytes data;
    const std::uint32_t style = random.below(5);
    while (data.size() < size) {
        const std::uint32_t kind = style < 3 ? style : random.below(4);
        const std::size_t run = style < 3 ? size : random.between(1, 30);
        std::uint32_t value = random.chance(20) ? 32767 : random.word();
        const std::uint32_t slope = kind == 0 ? 0 : random_slope(random);
        for (std::size_t i = 0; i < run && data.size() < size; ++i) {
            const std::uint32_t sample = kind == 2 ? random.word() : value;
            data.push_back(static_cast<std::uint8_t>(sample & 0xFF));
            data.push_back(static_cast<std::uint8_t>((sample >> 8) & 0xFF));
            value += slope;
        }
    }
    data.resize(size);
    return data;
}

std::size_t around(rng& random, model::exact size) {
    // What is too large to allocate is offered too little.
    if (size > 4000000) {
        return random.below(100);
    }
    const auto exact_size = static_cast<std::size_t>(size);
    switch (random.below(20)) {
        case 0:
            return exact_size == 0 ? 0 : exact_size - 1;
        case 1:
            return 0;
        case 2:
        case 3:
            return exact_size + random.between(1, 50);
        default:
            return exact_size;
    }
}

}  // namespace differential
