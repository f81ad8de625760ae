// SPDX-License-Identifier: BSD-3-Clause
//
// Antialiased strokes, and random numbers that are the same everywhere.
#pragma once

#include <cstdint>

#include "mattes.h"

namespace bench {

struct point {
    double x;
    double y;
};

class random_numbers {
  public:
    explicit random_numbers(std::uint64_t seed) : state_(seed * 0x9E3779B97F4A7C15ull | 1) {}
    std::uint64_t bits() {
        state_ ^= state_ << 13;
        state_ ^= state_ >> 7;
        state_ ^= state_ << 17;
        return state_ * 0x2545F4914F6CDD1Dull;
    }
    double between(double least, double most) {
        return least + (most - least) * (static_cast<double>(bits() >> 11) * 0x1p-53);
    }

  private:
    std::uint64_t state_;
};

// A straight stroke with round ends, from radius to radius, where it covers more than what is there.
void draw_stroke(matte& on, point from, point to, double from_radius, double to_radius, double opacity = 1);

// Part of an ellipse's outline, angles in radians.
void draw_arc(matte& on, point centre, point radii, double from_angle, double to_angle, double stroke_radius);

// A curve with two end points and a control point, growing thin towards its end.
void draw_curve(matte& on, point from, point control, point to, double from_radius, double to_radius, double opacity);

}  // namespace bench
