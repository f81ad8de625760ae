// SPDX-License-Identifier: BSD-3-Clause
#include "mattes.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>

#include "brush.h"

namespace bench {

namespace {

matte empty(const frame_size& size) {
    return {size.width, size.height, std::vector<float>(std::size_t{size.width} * size.height)};
}

template <class Coverage>
matte of_each_pixel(const frame_size& size, Coverage coverage) {
    matte drawn = empty(size);
    for (std::uint32_t y = 0; y < size.height; ++y) {
        for (std::uint32_t x = 0; x < size.width; ++x) {
            drawn.at(x, y) = static_cast<float>(std::clamp(coverage(x + 0.5, y + 0.5), 0.0, 1.0));
        }
    }
    return drawn;
}

double smooth(double t) {
    t = std::clamp(t, 0.0, 1.0);
    return t * t * (3 - 2 * t);
}

matte draw_solid(const frame_size& size) {
    return of_each_pixel(size, [](double, double) { return 1.0; });
}

matte draw_circle(const frame_size& size) {
    const double radius = 0.36 * size.height;
    const double feather = 0.07 * size.height;
    return of_each_pixel(size, [&](double x, double y) {
        const double distance = std::hypot(x - size.width / 2.0, y - size.height / 2.0);
        return 1 - smooth((distance - radius + feather / 2) / feather);
    });
}

// Letters of straight strokes and arcs, in boxes as wide as `unit` and twice as high.
void draw_letter(matte& on, unsigned letter, point at, double unit, double weight) {
    const auto place = [&](double x, double y) { return point{at.x + x * unit, at.y + y * unit}; };
    const auto stroke = [&](double x0, double y0, double x1, double y1) {
        draw_stroke(on, place(x0, y0), place(x1, y1), weight, weight);
    };
    constexpr double k_turn = 6.283185307179586;
    switch (letter % 6) {
        case 0:  // A
            stroke(0.1, 1.9, 0.5, 0.1);
            stroke(0.5, 0.1, 0.9, 1.9);
            stroke(0.25, 1.2, 0.75, 1.2);
            break;
        case 1:  // O
            draw_arc(on, place(0.5, 1), {0.4 * unit, 0.9 * unit}, 0, k_turn, weight);
            break;
        case 2:  // E
            stroke(0.15, 0.1, 0.15, 1.9);
            stroke(0.15, 0.1, 0.85, 0.1);
            stroke(0.15, 1.0, 0.7, 1.0);
            stroke(0.15, 1.9, 0.85, 1.9);
            break;
        case 3:  // S
            draw_arc(on, place(0.5, 0.55), {0.35 * unit, 0.45 * unit}, -0.1 * k_turn, -0.75 * k_turn, weight);
            draw_arc(on, place(0.5, 1.45), {0.35 * unit, 0.45 * unit}, -0.25 * k_turn, 0.4 * k_turn, weight);
            break;
        case 4:  // N
            stroke(0.12, 1.9, 0.12, 0.1);
            stroke(0.12, 0.1, 0.88, 1.9);
            stroke(0.88, 1.9, 0.88, 0.1);
            break;
        default:  // R
            stroke(0.15, 1.9, 0.15, 0.1);
            stroke(0.15, 0.1, 0.5, 0.1);
            stroke(0.15, 1.0, 0.5, 1.0);
            draw_arc(on, place(0.5, 0.55), {0.38 * unit, 0.45 * unit}, -0.25 * k_turn, 0.25 * k_turn, weight);
            stroke(0.45, 1.0, 0.9, 1.9);
            break;
    }
}

// A headline and lines of smaller text.
matte draw_title(const frame_size& size) {
    matte drawn = empty(size);
    random_numbers random(7);
    const auto line = [&](double top, double unit, double from, double to) {
        for (double x = from * size.width; x + unit < to * size.width; x += 1.25 * unit) {
            const auto letter = static_cast<unsigned>(random.bits() >> 40);
            if (letter % 7 != 6) {  // else a space
                draw_letter(drawn, letter % 7, {x, top * size.height}, unit, 0.1 * unit);
            }
        }
    };
    line(0.22, 0.085 * size.height, 0.12, 0.88);
    for (int row = 0; row < 5; ++row) {
        line(0.48 + 0.085 * row, 0.022 * size.height, 0.12, 0.88);
    }
    return drawn;
}

// A head and what stands off it.
matte draw_hair(const frame_size& size) {
    matte drawn = empty(size);
    random_numbers random(11);
    const double height = size.height;
    const point centre = {size.width / 2.0, 0.62 * height};
    const double head = 0.27 * height;
    draw_stroke(drawn, centre, {centre.x, height}, head, head);
    for (int strand = 0; strand < 1500; ++strand) {
        const double angle = random.between(-3.5, 0.36);
        const double bend = angle + random.between(-0.35, 0.35);
        const double length = random.between(0.05, 0.3) * height;
        const auto at = [&](double direction, double distance) {
            return point{centre.x + std::cos(direction) * distance, centre.y + std::sin(direction) * distance};
        };
        draw_curve(drawn, at(angle, 0.97 * head), at(angle, head + 0.5 * length), at(bend, head + length),
                   height * random.between(0.0005, 0.0011), height * 0.0001, random.between(0.5, 1));
    }
    return drawn;
}

// What keying leaves: figure and ground, neither of them clean.
matte draw_noisy_key(const frame_size& size) {
    random_numbers random(13);
    return of_each_pixel(size, [&](double x, double y) {
        const double wave = 0.06 * std::sin(y / size.height * 21) + 0.03 * std::sin(y / size.height * 67);
        const double edge = (std::abs(x / size.width - 0.5) - 0.22 - wave) * size.width;
        return (1 - smooth(edge / 4 + 0.5)) + random.between(-2.5 / 255, 2.5 / 255);
    });
}

matte draw_lower_third(const frame_size& size) {
    return of_each_pixel(size, [&](double x, double y) {
        const double down = y / size.height;
        const double across = x / size.width;
        return down < 0.72 || down > 0.92 ? 0 : 0.9 * (1 - smooth((across - 0.45) / 0.5));
    });
}

matte draw_ramps(const frame_size& size) {
    return of_each_pixel(
        size, [&](double x, double y) { return y < size.height / 2.0 ? x / size.width : 2 * y / size.height - 1; });
}

matte draw_noise(const frame_size& size) {
    random_numbers random(17);
    return of_each_pixel(size, [&](double, double) { return random.between(0, 1); });
}

}  // namespace

const std::vector<matte_kind>& all_mattes() {
    static const std::vector<matte_kind> rows = {
        {"solid", draw_solid},         {"circle", draw_circle},           {"title", draw_title}, {"hair", draw_hair},
        {"noisy-key", draw_noisy_key}, {"lower-third", draw_lower_third}, {"ramps", draw_ramps}, {"noise", draw_noise},
    };
    return rows;
}

const matte_kind& matte_named(const char* name) {
    for (const matte_kind& row : all_mattes()) {
        if (std::string(name) == row.name) {
            return row;
        }
    }
    throw std::runtime_error(std::string("no matte is named ") + name);
}

std::vector<std::uint8_t> to_samples(const matte& drawn, unsigned sample_bytes) {
    std::vector<std::uint8_t> samples;
    samples.reserve(drawn.coverage.size() * sample_bytes);
    for (const float coverage : drawn.coverage) {
        const auto value = static_cast<unsigned>(std::lround(coverage * (sample_bytes == 1 ? 255.0f : 65535.0f)));
        samples.push_back(static_cast<std::uint8_t>(value));
        if (sample_bytes == 2) {
            samples.push_back(static_cast<std::uint8_t>(value >> 8));
        }
    }
    return samples;
}

}  // namespace bench
