// SPDX-License-Identifier: BSD-3-Clause
//
// The picture that 'qvr view' makes of a frame: title, pictures side by side, and a strip with facts and weights.
//
//   title
//   caption      caption      caption       k_sheet_top: the pictures' upper edge
//   [picture]    [matte]      [over]        in the middle, k_sheet_gap from each other
//   facts        weights
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "canvas.h"
#include "display.h"

namespace qvr {

constexpr int k_sheet_margin = 32;
constexpr int k_sheet_top = 132;
constexpr int k_sheet_gap = 24;

// The checkerboard: squares of k_checker_size pixels of the sheet, the first of each picture light.
constexpr unsigned k_checker_size = 8;
constexpr float k_checker_light = 0.6f;
constexpr float k_checker_dark = 0.4f;

// Of frame pixels to pixels of the sheet: `shrink` to one, or one to `enlarge`; one of them is 1.
struct sheet_scale {
    std::uint32_t shrink = 1;
    std::uint32_t enlarge = 1;
};

// "1/4" or "3"; a usage failure for anything else.
sheet_scale parse_scale(const std::string& text);
// So that `pictures` of this size stand beside each other on a sheet that is pleasant to look at.
sheet_scale fitting_scale(std::uint32_t width, std::uint32_t height, unsigned pictures);
std::string scale_text(const sheet_scale& scale);

// A frame at the size of the sheet. Colours and mattes are averages of what they stand for.
class shown_picture {
  public:
    shown_picture(const display_view& of, const sheet_scale& by, bool premultiplied);

    int width() const { return static_cast<int>(columns * scale.enlarge); }
    int height() const { return static_cast<int>(rows * scale.enlarge); }

    enum kind { colours, matte, over_checkerboard };
    void draw(canvas& on, int x, int y, kind what) const;

  private:
    struct cell {
        float colour[3];    // alone
        float weighted[3];  // times alpha
        float alpha;
    };
    void add_row(const std::vector<pixel>& row, cell* to, bool premultiplied) const;
    std::uint32_t shade(const cell& of, unsigned x, unsigned y, kind what) const;

    sheet_scale scale;
    std::uint32_t columns = 0;
    std::uint32_t rows = 0;
    std::vector<cell> cells;
};

// A row of the strip's right side.
struct weight {
    std::string name;
    std::string text;
    std::uint64_t bytes;
    colour bar;
};

struct sheet_pane {
    std::string caption;
    shown_picture::kind kind = shown_picture::colours;
    std::vector<std::string> instead;  // lines in place of a picture that cannot be shown
};

struct sheet {
    std::string title;
    std::string subtitle;
    std::optional<shown_picture> picture;
    std::vector<sheet_pane> panes;
    std::vector<std::pair<std::string, std::string>> facts;
    std::vector<weight> weights;
    std::uint64_t frame_bytes = 0;
};

// "1,234,567"
std::string grouped(std::uint64_t value);

// Draws and writes a PNG. A usage failure when the sheet would be too large.
void write_sheet(const sheet& from, output_file& to);

}  // namespace qvr
