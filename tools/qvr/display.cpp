// SPDX-License-Identifier: BSD-3-Clause
#include "display.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace qvr {

namespace {

struct matrix_row {
    const char* name;
    const char* text;
    float red;
    float blue;
};

constexpr matrix_row k_matrices[] = {{"bt601", "Rec. 601", 0.299f, 0.114f},
                                     {"bt709", "Rec. 709", 0.2126f, 0.0722f},
                                     {"bt2020", "Rec. 2020", 0.2627f, 0.0593f}};

// Interleaved orders: where the samples of a pixel stand, -1 for none, and how many a pixel or pair has.
struct interleaved_row {
    std::uint32_t order;
    int at[k_components];
    unsigned samples;   // in a pixel, or of 4:2:2 in a pair of pixels
    unsigned pair_gap;  // 4:2:2: from the luma of one pixel to that of the next; else 0
};

constexpr interleaved_row k_interleaved[] = {
    {QVRUncompressed_OrderCbYCrY, {1, 0, 2, -1}, 4, 2},   {QVRUncompressed_OrderCbYACrYA, {1, 0, 3, 2}, 6, 3},
    {QVRUncompressed_OrderARGB, {1, 2, 3, 0}, 4, 0},      {QVRUncompressed_OrderRGB, {0, 1, 2, -1}, 3, 0},
    {QVRUncompressed_OrderYCbCr444, {0, 1, 2, -1}, 3, 0}, {QVRUncompressed_OrderYCbCrA444, {0, 1, 2, 3}, 4, 0},
    {QVRUncompressed_OrderAlpha, {-1, -1, -1, 0}, 1, 0}};

void place_interleaved(const interleaved_row& row, const frame_layout& layout, sample_grid* grids) {
    // A 4:2:2 row of odd width ends in a Cr more, so that its last pixel has both.
    const std::size_t stride = row.pair_gap != 0 ? std::size_t{layout.width} * row.pair_gap + layout.width % 2
                                                 : std::size_t{layout.width} * row.samples;
    for (std::size_t i = 0; i < k_components; ++i) {
        if (row.at[i] < 0) {
            continue;
        }
        sample_grid& grid = grids[i];
        const bool chroma = row.pair_gap != 0 && (i == 1 || i == 2);
        grid.start = static_cast<std::size_t>(row.at[i]);
        grid.step = row.pair_gap == 0 || chroma ? row.samples : row.pair_gap;
        grid.stride = stride;
        grid.shift_x = chroma ? 1 : 0;
        grid.width = chroma ? (layout.width + 1) / 2 : layout.width;
        grid.height = layout.height;
    }
}

void place_planes(const frame_layout& layout, sample_grid* grids) {
    const bool alpha = layout.colorComponentOrder == QVRUncompressed_OrderPlanar420Alpha;
    std::size_t start = 0;
    for (std::size_t i = 0; i < (alpha ? k_components : k_components - 1); ++i) {
        const unsigned shift = i == 1 || i == 2 ? 1 : 0;
        sample_grid& grid = grids[i];
        grid.width = (layout.width + shift) >> shift;
        grid.height = (layout.height + shift) >> shift;
        grid.start = start;
        grid.step = 1;
        grid.stride = grid.width;
        grid.shift_x = grid.shift_y = shift;
        start += grid.stride * grid.height;
    }
}

// "CbYCr": the name of each sample of a pixel, one behind the other.
void reorder(const std::string& names, sample_grid* grids) {
    const sample_grid stored[] = {grids[0], grids[1], grids[2]};
    std::size_t at = 0;
    for (const sample_grid& grid : stored) {
        const std::size_t target = names[at] == 'Y' ? 0 : names.compare(at, 2, "Cb") == 0 ? 1 : 2;
        grids[target] = grid;
        at += target == 0 ? 1 : 2;
    }
}

float half_number(std::uint16_t bits) {
    const int exponent = bits >> 10 & 31;
    const int fraction = bits & 1023;
    float value = exponent == 0    ? std::ldexp(static_cast<float>(fraction), -24)
                  : exponent == 31 ? (fraction == 0 ? INFINITY : NAN)
                                   : std::ldexp(static_cast<float>(fraction + 1024), exponent - 25);
    return (bits & 0x8000) != 0 ? -value : value;
}

float clamped(float value) {
    return value > 0 ? std::min(value, 1.0f) : 0.0f;  // what is no number is black
}

// Linear light as a screen wants it (IEC 61966-2-1).
float encoded(float light) {
    return light <= 0.0031308f ? 12.92f * light : 1.055f * std::pow(light, 1 / 2.4f) - 0.055f;
}

bool is_integer(std::uint32_t type) {
    return type == QVRUncompressed_TypeU8 || type == QVRUncompressed_TypeU16 || type == QVRUncompressed_TypeU10 ||
           type == QVRUncompressed_TypeU12;
}

// Integers are seen on a scale of 8 bits, whatever stands in the bits below.
float largest(std::uint32_t type) {
    switch (type) {
        case QVRUncompressed_TypeU8:
            return 255.0f;
        case QVRUncompressed_TypeU10:
            return 1023 / 4.0f;
        case QVRUncompressed_TypeU12:
            return 4095 / 16.0f;
        case QVRUncompressed_TypeU16:
            return 65535 / 256.0f;
        default:
            return 1.0f;
    }
}

}  // namespace

display_view::display_view(const frame& of, const display_choice& choice, std::optional<component> only)
    : from(of), alone(only), shown_width(of.layout.width), shown_height(of.layout.height) {
    const std::uint32_t order = of.layout.colorComponentOrder;
    const bool rgb = order == QVRUncompressed_OrderRGB || order == QVRUncompressed_OrderARGB;
    for (const interleaved_row& row : k_interleaved) {
        if (row.order == order) {
            place_interleaved(row, of.layout, grids);
        }
    }
    if (order == QVRUncompressed_OrderPlanar420 || order == QVRUncompressed_OrderPlanar420Alpha) {
        place_planes(of.layout, grids);
    }
    if (order == QVRUncompressed_OrderYCbCr444 || order == QVRUncompressed_OrderYCbCrA444) {
        reorder(choice.yuv444_order, grids);
    }
    if (alone) {
        const sample_grid& grid = grids[static_cast<std::size_t>(*alone)];
        shown_width = grid.width;
        shown_height = grid.height;
    }
    coloured = grids[0].step != 0;
    ycbcr = coloured && !rgb;
    integer = is_integer(of.layout.componentType);
    limited = integer && (choice.range == "auto" ? ycbcr : choice.range == "limited");
    linear = choice.transfer == "auto" ? rgb && !integer : choice.transfer == "linear";
    white = largest(of.layout.componentType);
    for (const matrix_row& row : k_matrices) {
        if (choice.matrix == row.name) {
            red_weight = row.red;
            blue_weight = row.blue;
            matrix_text = row.text;
        }
    }
}

bool display_view::has_alpha() const {
    return !alone && grids[static_cast<std::size_t>(component::alpha)].step != 0;
}

std::string display_view::text() const {
    if (alone || !coloured) {
        return "codes as grey";
    }
    std::string said = ycbcr ? matrix_text : "R G B";
    if (integer) {
        said += limited ? ", limited range" : ", full range";
    }
    return said + (linear ? ", from linear light" : "");
}

// Integers on a scale of 8 bits.
float display_view::number(std::size_t index) const {
    const std::uint32_t type = from.layout.componentType;
    if (type == QVRUncompressed_TypeU8) {
        return from.samples[index];
    }
    if (type == QVRUncompressed_TypeFloat) {
        float value = 0;
        std::memcpy(&value, from.samples.data() + 4 * index, sizeof value);
        return value;
    }
    std::uint16_t word = 0;
    std::memcpy(&word, from.samples.data() + 2 * index, sizeof word);
    if (type == QVRUncompressed_TypeHalf) {
        return half_number(word);
    }
    if (type == QVRUncompressed_TypeFixed16) {
        return static_cast<float>(static_cast<std::int16_t>(word)) / 16384;
    }
    return static_cast<float>(word) / 256;
}

float display_view::read(const sample_grid& grid, std::uint32_t x, std::uint32_t y) const {
    return number(grid.start + (y >> grid.shift_y) * grid.stride + (x >> grid.shift_x) * grid.step);
}

// Floating and fixed point: 0 to 1, and chroma around 0.
float display_view::level(float sample, bool chroma) const {
    if (!integer) {
        return sample;
    }
    if (limited) {
        return chroma ? (sample - 128) / 224 : (sample - 16) / 219;
    }
    return (chroma ? sample - 128 : sample) / white;
}

pixel display_view::colour_at(std::uint32_t x, std::uint32_t y) const {
    float value[3] = {};
    for (std::size_t i = 0; i < 3; ++i) {
        const bool chroma = ycbcr && i > 0;
        value[i] = level(read(grids[i], x, y), chroma);
    }
    pixel made = {{value[0], value[1], value[2]}, 1};
    if (ycbcr) {
        const float red = value[0] + 2 * (1 - red_weight) * value[2];
        const float blue = value[0] + 2 * (1 - blue_weight) * value[1];
        const float green = (value[0] - red_weight * red - blue_weight * blue) / (1 - red_weight - blue_weight);
        made = {{red, green, blue}, 1};
    }
    for (float& channel : made.colour) {
        channel = linear ? encoded(clamped(channel)) : clamped(channel);
    }
    return made;
}

void display_view::read_row(std::uint32_t y, pixel* to) const {
    if (alone) {
        const bool chroma = *alone == component::second || *alone == component::third;
        const sample_grid& grid = grids[static_cast<std::size_t>(*alone)];
        for (std::uint32_t x = 0; x < shown_width; ++x) {
            const float sample = number(grid.start + y * grid.stride + x * grid.step);
            const float grey = clamped(integer ? sample / white : sample + (chroma ? 0.5f : 0.0f));
            to[x] = {{grey, grey, grey}, 1};
        }
        return;
    }
    const sample_grid& alpha = grids[static_cast<std::size_t>(component::alpha)];
    for (std::uint32_t x = 0; x < shown_width; ++x) {
        to[x] = coloured ? colour_at(x, y) : pixel{{1, 1, 1}, 1};
        if (alpha.step != 0) {
            to[x].alpha = clamped(read(alpha, x, y) / white);
        }
    }
}

}  // namespace qvr
