// SPDX-License-Identifier: BSD-3-Clause
#include "brush.h"

#include <algorithm>
#include <cmath>

namespace bench {

namespace {

// First and last pixel of a span that lies inside the frame; empty when last < first.
struct pixel_span {
    std::int64_t first;
    std::int64_t last;
};

pixel_span pixels_of(double least, double most, std::uint32_t count) {
    return {std::max<std::int64_t>(0, std::lround(std::floor(least)) - 1),
            std::min<std::int64_t>(std::int64_t{count} - 1, std::lround(std::ceil(most)) + 1)};
}

}  // namespace

void draw_stroke(matte& on, point from, point to, double from_radius, double to_radius, double opacity) {
    const double widest = std::max(from_radius, to_radius);
    const pixel_span columns = pixels_of(std::min(from.x, to.x) - widest, std::max(from.x, to.x) + widest, on.width);
    const pixel_span rows = pixels_of(std::min(from.y, to.y) - widest, std::max(from.y, to.y) + widest, on.height);
    const double dx = to.x - from.x;
    const double dy = to.y - from.y;
    const double squared = std::max(dx * dx + dy * dy, 1e-9);
    for (std::int64_t y = rows.first; y <= rows.last; ++y) {
        for (std::int64_t x = columns.first; x <= columns.last; ++x) {
            const double px = static_cast<double>(x) - from.x;
            const double py = static_cast<double>(y) - from.y;
            const double along = std::clamp((px * dx + py * dy) / squared, 0.0, 1.0);
            const double distance = std::hypot(px - along * dx, py - along * dy);
            const double radius = from_radius + along * (to_radius - from_radius);
            // A stroke thinner than a pixel covers only part of each.
            const double covered = std::clamp(radius - distance + 0.5, 0.0, std::min(1.0, 2 * radius)) * opacity;
            float& pixel = on.at(static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y));
            pixel = std::max(pixel, static_cast<float>(covered));
        }
    }
}

void draw_arc(matte& on, point centre, point radii, double from_angle, double to_angle, double stroke_radius) {
    constexpr int k_pieces = 24;
    const auto at = [&](int piece) {
        const double angle = from_angle + (to_angle - from_angle) * piece / k_pieces;
        return point{centre.x + radii.x * std::cos(angle), centre.y + radii.y * std::sin(angle)};
    };
    for (int piece = 0; piece < k_pieces; ++piece) {
        draw_stroke(on, at(piece), at(piece + 1), stroke_radius, stroke_radius);
    }
}

void draw_curve(matte& on, point from, point control, point to, double from_radius, double to_radius, double opacity) {
    constexpr int k_pieces = 32;
    const auto at = [&](int piece) {
        const double t = static_cast<double>(piece) / k_pieces;
        const double a = (1 - t) * (1 - t);
        const double b = 2 * t * (1 - t);
        const double c = t * t;
        return point{a * from.x + b * control.x + c * to.x, a * from.y + b * control.y + c * to.y};
    };
    const auto radius = [&](int piece) { return from_radius + (to_radius - from_radius) * piece / k_pieces; };
    for (int piece = 0; piece < k_pieces; ++piece) {
        draw_stroke(on, at(piece), at(piece + 1), radius(piece), radius(piece + 1), opacity);
    }
}

}  // namespace bench
