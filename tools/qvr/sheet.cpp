// SPDX-License-Identifier: BSD-3-Clause
#include "sheet.h"

#include <algorithm>
#include <cstdio>

#include "failure.h"

namespace qvr {

namespace {

constexpr colour k_ground = grey(0.13);
constexpr colour k_strip = grey(0.17);
constexpr colour k_frame = grey(0.28);
constexpr colour k_track = grey(0.23);
constexpr colour k_bright = grey(0.93);
constexpr colour k_plain = grey(0.80);
constexpr colour k_faint = grey(0.58);

constexpr int k_least_width = 1344;  // a picture of 1280 fills it
constexpr int k_row = 24;            // of the strip
constexpr int k_padding = 20;        // around what stands in the strip
constexpr int k_facts = 470;         // width of the left side
constexpr int k_caption = 14;        // from a caption's line to its picture
constexpr int k_card_width = 480;    // in place of a picture
constexpr int k_card_height = 270;

struct extent {
    int width;
    int height;
};

// A card takes what the pictures beside it leave.
extent size_of(const sheet& from, const sheet_pane& pane) {
    if (pane.instead.empty()) {
        return {from.picture->width(), from.picture->height()};
    }
    constexpr int k_room = k_least_width - 2 * k_sheet_margin;
    const auto beside = static_cast<int>(from.panes.size() - 1);
    return from.picture ? extent{std::max(k_room - beside * (from.picture->width() + k_sheet_gap), k_card_width),
                                 from.picture->height()}
                        : extent{k_room, k_card_height};
}

std::string share_text(double share) {
    if (share > 0 && share < 0.0005) {
        return "<0.1 %";  // not nothing
    }
    char text[20];
    std::snprintf(text, sizeof text, "%.1f %%", 100 * share);
    return text;
}

void draw_title(canvas& on, const sheet& from, int width) {
    const double room = width - 2.0 * k_sheet_margin;
    on.text(k_sheet_margin, 54, from.title, {24, k_bright, true, text_style::left, room});
    on.text(k_sheet_margin, 82, from.subtitle, {14, k_faint, false, text_style::left, room});
}

void draw_card(canvas& on, int x, int y, const extent& size, const std::vector<std::string>& lines) {
    on.fill({double(x), double(y), double(size.width), double(size.height)}, k_strip);
    double at = y + size.height / 2.0 - (static_cast<double>(lines.size()) - 1) * 12 + 5;
    for (const std::string& line : lines) {
        const bool first = &line == &lines.front();
        on.text(x + size.width / 2.0, at, line,
                {first ? 16.0 : 13.0, first ? k_bright : k_faint, first, text_style::centre, size.width - 24.0});
        at += 24;
    }
}

void draw_panes(canvas& on, const sheet& from, int x) {
    for (const sheet_pane& pane : from.panes) {
        const extent size = size_of(from, pane);
        on.text(x, k_sheet_top - k_caption, pane.caption,
                {13, k_plain, true, text_style::left, double(size.width) + k_sheet_gap - 8});
        // A line around it, so that black pictures have an edge too.
        on.fill({x - 1.0, k_sheet_top - 1.0, size.width + 2.0, size.height + 2.0}, k_frame);
        if (pane.instead.empty()) {
            from.picture->draw(on, x, k_sheet_top, pane.kind);
        } else {
            draw_card(on, x, k_sheet_top, size, pane.instead);
        }
        x += size.width + k_sheet_gap;
    }
}

void draw_facts(canvas& on, const sheet& from, double x, double y) {
    constexpr double k_names = 80;
    for (const auto& [name, text] : from.facts) {
        on.text(x, y, name, {13, k_faint});
        on.text(x + k_names, y, text, {13, k_plain, false, text_style::left, k_facts - k_names - 2.0 * k_padding});
        y += k_row;
    }
}

void draw_weights(canvas& on, const sheet& from, double x, double y, double width) {
    constexpr double k_names = 92;
    constexpr double k_texts = 256;
    constexpr double k_numbers = 208;
    constexpr double k_shares = 68;  // of these
    const double bars = width - k_names - k_texts - k_numbers;
    for (const weight& row : from.weights) {
        const double share =
            from.frame_bytes == 0 ? 0 : static_cast<double>(row.bytes) / static_cast<double>(from.frame_bytes);
        on.text(x, y, row.name, {13, k_plain, true, text_style::left, k_names - 8});
        on.text(x + k_names, y, row.text, {13, k_faint, false, text_style::left, k_texts - 16});
        const rectangle track = {x + k_names + k_texts, y - 11, bars, 14};
        on.fill(track, k_track, 3);
        // Never thinner than what can be seen.
        on.fill({track.x, track.y, std::max(2.0, std::min(1.0, share) * bars), track.height}, row.bar, 3);
        on.text(x + width - k_shares, y, grouped(row.bytes) + " bytes", {13, k_plain, false, text_style::right});
        on.text(x + width, y, share_text(share), {13, k_faint, false, text_style::right});
        y += k_row;
    }
}

void draw_strip(canvas& on, const sheet& from, const rectangle& area) {
    on.fill(area, k_strip, 6);
    const double x = area.x + k_padding;
    const double y = area.y + k_padding + 12;
    on.text(x, y, "Frame", {13, k_bright, true});
    on.text(x + k_facts, y, "Bytes of each plane", {13, k_bright, true});
    draw_facts(on, from, x, y + k_row + 4);
    draw_weights(on, from, x + k_facts, y + k_row + 4, area.width - k_facts - 2.0 * k_padding);
}

}  // namespace

std::string grouped(std::uint64_t value) {
    std::string digits = std::to_string(value);
    for (std::size_t at = digits.size(); at > 3; at -= 3) {
        digits.insert(at - 3, ",");
    }
    return digits;
}

void write_sheet(const sheet& from, output_file& to) {
    std::int64_t width = 2 * k_sheet_margin - k_sheet_gap;
    int pictures = 0;
    for (const sheet_pane& pane : from.panes) {
        const extent size = size_of(from, pane);
        width += size.width + k_sheet_gap;
        pictures = std::max(pictures, size.height);
    }
    const std::int64_t panes = width;
    width = std::max<std::int64_t>(width, k_least_width);
    const int rows = static_cast<int>(std::max(from.facts.size(), from.weights.size())) + 1;
    const int strip = rows * k_row + 2 * k_padding;
    const std::int64_t strip_top = std::int64_t{k_sheet_top} + pictures + k_sheet_gap;
    const std::int64_t height = strip_top + strip + k_sheet_margin;
    if (width > canvas::k_most || height > canvas::k_most) {
        throw failure(exit_code::usage, {to.name(), {}},
                      "the sheet would have " + std::to_string(width) + "x" + std::to_string(height) + " pixels",
                      "make the pictures smaller: --scale 1/4, or leave --scale and --full out");
    }
    canvas on(static_cast<int>(width), static_cast<int>(height), drawing_kind::png);
    on.fill(k_ground);
    draw_title(on, from, static_cast<int>(width));
    draw_panes(on, from, k_sheet_margin + static_cast<int>((width - panes) / 2));
    draw_strip(on, from,
               {double(k_sheet_margin), double(strip_top), double(width) - 2 * k_sheet_margin, double(strip)});
    on.write(to);
}

}  // namespace qvr
