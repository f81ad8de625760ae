// SPDX-License-Identifier: BSD-3-Clause
//
// A surface to draw on, in pixels from the top left corner, which becomes a PNG or an SVG.
#pragma once

#include <cairo.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "file_io.h"

namespace qvr {

struct colour {
    double red;
    double green;
    double blue;
};

constexpr colour grey(double level) {
    return {level, level, level};
}

struct rectangle {
    double x;
    double y;
    double width;
    double height;
};

struct text_style {
    double size;
    colour ink;
    bool bold = false;
    enum { left, centre, right } align = left;
    double room = 0;  // wider text is cut and ends in dots; 0: any
};

enum class drawing_kind { png, svg };

class canvas {
  public:
    static constexpr int k_most = 32000;  // pixels in a row or column

    canvas(int width, int height, drawing_kind kind);
    ~canvas();
    canvas(const canvas&) = delete;
    canvas& operator=(const canvas&) = delete;

    void fill(const colour& with);
    void fill(const rectangle& area, const colour& with, double radius = 0);
    void line(double x0, double y0, double x1, double y1, const colour& with, double width, bool dashed = false);
    // y: the line that the letters stand on.
    void text(double x, double y, const std::string& what, const text_style& style);
    double text_width(const std::string& what, const text_style& style);

    // Pixels of a PNG as 0xRRGGBB, put there as they are.
    void put_pixels(int x, int y, const std::vector<std::uint32_t>& row);

    void write(output_file& to);

  private:
    void use(const text_style& style);

    drawing_kind becomes;
    int wide;
    int high;
    std::string document;  // of an SVG
    std::unique_ptr<cairo_surface_t, void (*)(cairo_surface_t*)> surface;
    std::unique_ptr<cairo_t, void (*)(cairo_t*)> pen;
};

}  // namespace qvr
