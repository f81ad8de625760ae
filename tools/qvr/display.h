// SPDX-License-Identifier: BSD-3-Clause
//
// Samples as colours for a screen. A stream does not say how its samples are meant; these choices do.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "frame.h"

namespace qvr {

// As the options of the same names spell them; "auto": what the kind of samples suggests.
struct display_choice {
    std::string matrix = "bt709";
    std::string range = "auto";          // limited for YCbCr, full for RGB
    std::string transfer = "auto";       // linear for RGB that is not integer, else display
    std::string yuv444_order = "YCbCr";  // of the three samples of a 4:4:4 YCbCr pixel
};

enum class component { first, second, third, alpha };  // R G B or Y Cb Cr
constexpr std::size_t k_components = 4;

// 0 to 1 each; without alpha 1.
struct pixel {
    float colour[3];
    float alpha;
};

// Where the samples of one component lie in a raw frame, counted in samples.
struct sample_grid {
    std::size_t start = 0;
    std::size_t step = 0;  // from sample to sample; 0: the frame has no such component
    std::size_t stride = 0;
    unsigned shift_x = 0;  // log2 of the pixels that share a sample
    unsigned shift_y = 0;
    std::uint32_t width = 0;  // samples
    std::uint32_t height = 0;
};

// Reads frames of the layouts that a decoder reports: orders 2, 3, 5 and 9 to 14 without gaps between rows.
class display_view {
  public:
    // The frame must live as long. only: that component alone as grey, code by code, without range and transfer.
    display_view(const frame& of, const display_choice& choice, std::optional<component> only = {});

    std::uint32_t width() const { return shown_width; }
    std::uint32_t height() const { return shown_height; }
    bool has_colour() const { return coloured; }
    bool has_alpha() const;
    // What was chosen, for people: "Rec. 709, limited range"
    std::string text() const;
    // to: width() pixels
    void read_row(std::uint32_t y, pixel* to) const;

  private:
    float number(std::size_t index) const;
    float read(const sample_grid& grid, std::uint32_t x, std::uint32_t y) const;
    float level(float sample, bool chroma) const;
    pixel colour_at(std::uint32_t x, std::uint32_t y) const;

    const frame& from;
    std::optional<component> alone;
    sample_grid grids[k_components];
    bool coloured = false;
    bool ycbcr = false;
    bool integer = true;
    bool limited = false;
    bool linear = false;
    float red_weight = 0;
    float blue_weight = 0;
    float white = 1;  // the largest integer sample, on the scale of number()
    std::string matrix_text;
    std::uint32_t shown_width = 0;
    std::uint32_t shown_height = 0;
};

}  // namespace qvr
