// SPDX-License-Identifier: BSD-3-Clause
#include <algorithm>
#include <cmath>

#include "failure.h"
#include "numbers.h"
#include "sheet.h"

namespace qvr {

namespace {

constexpr std::uint32_t k_most_scale = 256;

std::uint32_t eight_bits(float level) {
    return static_cast<std::uint32_t>(std::lround(std::clamp(level, 0.0f, 1.0f) * 255));
}

std::uint32_t packed(const float (&levels)[3]) {
    return eight_bits(levels[0]) << 16 | eight_bits(levels[1]) << 8 | eight_bits(levels[2]);
}

}  // namespace

sheet_scale parse_scale(const std::string& text) {
    const bool shrinks = text.rfind("1/", 0) == 0;
    const std::uint32_t by = parse_number<std::uint32_t>(std::string_view(text).substr(shrinks ? 2 : 0)).value_or(0);
    if (by == 0 || by > k_most_scale) {
        fail_usage("--scale " + text + ": this is not a scale",
                   "write 1/4 for a quarter, or 3 for three times the size");
    }
    return shrinks ? sheet_scale{by, 1} : sheet_scale{1, by};
}

sheet_scale fitting_scale(std::uint32_t width, std::uint32_t height, unsigned pictures) {
    const std::uint32_t most_width = pictures > 1 ? 640 : 1280;
    constexpr std::uint32_t k_most_height = 720;
    const std::uint32_t least = most_width / 2;  // smaller frames are enlarged up to here
    const auto rounded_up = [](std::uint32_t a, std::uint32_t b) { return a / b + (a % b != 0 ? 1 : 0); };
    const std::uint32_t shrink = std::max(rounded_up(width, most_width), rounded_up(height, k_most_height));
    return {shrink, std::clamp(std::min(least / width, least / height), 1u, 64u)};
}

std::string scale_text(const sheet_scale& scale) {
    if (scale.enlarge > 1) {
        return "each pixel as " + std::to_string(scale.enlarge) + "x" + std::to_string(scale.enlarge);
    }
    return scale.shrink > 1 ? "1/" + std::to_string(scale.shrink) + " of its size" : "in full size";
}

shown_picture::shown_picture(const display_view& of, const sheet_scale& by, bool premultiplied)
    : scale(by),
      columns((of.width() + by.shrink - 1) / by.shrink),
      rows((of.height() + by.shrink - 1) / by.shrink),
      cells(std::size_t{columns} * rows) {
    std::vector<pixel> row(of.width());
    for (std::uint32_t y = 0; y < of.height(); ++y) {
        of.read_row(y, row.data());
        add_row(row, &cells[std::size_t{y / scale.shrink} * columns], premultiplied);
    }
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const auto x = static_cast<std::uint32_t>(i % columns) * scale.shrink;
        const auto y = static_cast<std::uint32_t>(i / columns) * scale.shrink;
        // The last row and column may stand for fewer pixels.
        const auto count = static_cast<float>(std::min(scale.shrink, of.width() - x)) *
                           static_cast<float>(std::min(scale.shrink, of.height() - y));
        cell& sum = cells[i];
        sum.alpha /= count;
        for (unsigned c = 0; c < 3; ++c) {
            sum.colour[c] /= count;
            sum.weighted[c] /= count;
        }
    }
}

void shown_picture::add_row(const std::vector<pixel>& row, cell* to, bool premultiplied) const {
    for (std::size_t x = 0; x < row.size(); ++x) {
        const pixel& from = row[x];
        cell& sum = to[x / scale.shrink];
        sum.alpha += from.alpha;
        for (unsigned c = 0; c < 3; ++c) {
            sum.colour[c] += from.colour[c];
            sum.weighted[c] += from.colour[c] * (premultiplied ? 1 : from.alpha);
        }
    }
}

std::uint32_t shown_picture::shade(const cell& of, unsigned x, unsigned y, kind what) const {
    if (what == colours) {
        return packed(of.colour);
    }
    if (what == matte) {
        return packed({of.alpha, of.alpha, of.alpha});
    }
    const bool light = (x / k_checker_size + y / k_checker_size) % 2 == 0;
    const float behind = (light ? k_checker_light : k_checker_dark) * (1 - of.alpha);
    return packed({of.weighted[0] + behind, of.weighted[1] + behind, of.weighted[2] + behind});
}

void shown_picture::draw(canvas& on, int x, int y, kind what) const {
    std::vector<std::uint32_t> row(static_cast<std::size_t>(width()));
    for (unsigned line = 0; line < static_cast<unsigned>(height()); ++line) {
        const cell* from = &cells[std::size_t{line / scale.enlarge} * columns];
        for (unsigned i = 0; i < row.size(); ++i) {
            row[i] = shade(from[i / scale.enlarge], i, line, what);
        }
        on.put_pixels(x, y + static_cast<int>(line), row);
    }
}

}  // namespace qvr
