// SPDX-License-Identifier: BSD-3-Clause
#include "canvas.h"

#include <cairo-svg.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>

#include "failure.h"
#include "png_file.h"

namespace qvr {

namespace {

constexpr const char* k_font = "DejaVu Sans";
constexpr double k_pi = 3.14159265358979323846;

cairo_status_t append(void* document, const unsigned char* from, unsigned count) {
    try {
        static_cast<std::string*>(document)->append(reinterpret_cast<const char*>(from), count);
    } catch (const std::bad_alloc&) {
        return CAIRO_STATUS_NO_MEMORY;
    }
    return CAIRO_STATUS_SUCCESS;
}

cairo_surface_t* make_surface(int width, int height, drawing_kind kind, std::string& document) {
    return kind == drawing_kind::png ? cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height)
                                     : cairo_svg_surface_create_for_stream(append, &document, width, height);
}

// Names of files may be no UTF-8, which the drawing library refuses for good.
std::string drawable(cairo_t* pen, std::string text) {
    cairo_glyph_t* glyphs = nullptr;
    int count = 0;
    const cairo_status_t status =
        cairo_scaled_font_text_to_glyphs(cairo_get_scaled_font(pen), 0, 0, text.data(), static_cast<int>(text.size()),
                                         &glyphs, &count, nullptr, nullptr, nullptr);
    cairo_glyph_free(glyphs);
    if (status == CAIRO_STATUS_INVALID_STRING) {
        std::replace_if(
            text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) > 0x7E; }, '?');
    }
    return text;
}

double extent(cairo_t* pen, const std::string& text) {
    cairo_text_extents_t extents;
    cairo_text_extents(pen, text.c_str(), &extents);
    return extents.x_advance;
}

// Shortened at its end until it fits; a character of several bytes goes as a whole.
std::string fitted(cairo_t* pen, const std::string& text, double room) {
    std::string shorter = text;
    while (room > 0 && !shorter.empty() && extent(pen, shorter == text ? text : shorter + "...") > room) {
        do {
            shorter.pop_back();
        } while (!shorter.empty() && (static_cast<unsigned char>(shorter.back()) & 0xC0) == 0x80);
    }
    return shorter == text ? text : shorter + "...";
}

void set_ink(cairo_t* pen, const colour& ink) {
    cairo_set_source_rgb(pen, ink.red, ink.green, ink.blue);
}

void require_good(cairo_status_t status) {
    if (status == CAIRO_STATUS_NO_MEMORY) {
        throw std::bad_alloc();
    }
    if (status != CAIRO_STATUS_SUCCESS) {
        throw failure(exit_code::io, {}, std::string("cannot draw: ") + cairo_status_to_string(status));
    }
}

}  // namespace

canvas::canvas(int width, int height, drawing_kind kind)
    : becomes(kind),
      wide(width),
      high(height),
      surface(make_surface(width, height, kind, document), cairo_surface_destroy),
      pen(cairo_create(surface.get()), cairo_destroy) {
    require_good(cairo_status(pen.get()));
    // The same letters on every machine, whatever its screens want.
    const std::unique_ptr<cairo_font_options_t, void (*)(cairo_font_options_t*)> options(cairo_font_options_create(),
                                                                                         cairo_font_options_destroy);
    cairo_font_options_set_antialias(options.get(), CAIRO_ANTIALIAS_GRAY);
    cairo_font_options_set_hint_style(options.get(), CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_hint_metrics(options.get(), CAIRO_HINT_METRICS_OFF);
    cairo_set_font_options(pen.get(), options.get());
}

// The surface is finished before the document that it writes to goes.
canvas::~canvas() {
    pen.reset();
    surface.reset();
}

void canvas::fill(const colour& with) {
    set_ink(pen.get(), with);
    cairo_paint(pen.get());
}

void canvas::fill(const rectangle& area, const colour& with, double radius) {
    cairo_t* to = pen.get();
    const double corner = std::min({radius, area.width / 2, area.height / 2});
    set_ink(to, with);
    if (corner <= 0) {
        cairo_rectangle(to, area.x, area.y, area.width, area.height);
    } else {
        const double right = area.x + area.width - corner;
        const double bottom = area.y + area.height - corner;
        cairo_new_sub_path(to);
        cairo_arc(to, right, area.y + corner, corner, -k_pi / 2, 0);
        cairo_arc(to, right, bottom, corner, 0, k_pi / 2);
        cairo_arc(to, area.x + corner, bottom, corner, k_pi / 2, k_pi);
        cairo_arc(to, area.x + corner, area.y + corner, corner, k_pi, 1.5 * k_pi);
        cairo_close_path(to);
    }
    cairo_fill(to);
}

void canvas::line(double x0, double y0, double x1, double y1, const colour& with, double width, bool dashed) {
    cairo_t* to = pen.get();
    const double dash = 5;
    cairo_set_dash(to, &dash, dashed ? 1 : 0, 0);
    cairo_set_line_width(to, width);
    set_ink(to, with);
    cairo_move_to(to, x0, y0);
    cairo_line_to(to, x1, y1);
    cairo_stroke(to);
}

void canvas::use(const text_style& style) {
    cairo_select_font_face(pen.get(), k_font, CAIRO_FONT_SLANT_NORMAL,
                           style.bold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(pen.get(), style.size);
    set_ink(pen.get(), style.ink);
}

double canvas::text_width(const std::string& what, const text_style& style) {
    use(style);
    return extent(pen.get(), drawable(pen.get(), what));
}

void canvas::text(double x, double y, const std::string& what, const text_style& style) {
    use(style);
    const std::string shown = fitted(pen.get(), drawable(pen.get(), what), style.room);
    const double width = style.align == text_style::left ? 0 : extent(pen.get(), shown);
    cairo_move_to(pen.get(), style.align == text_style::centre ? x - width / 2 : x - width, y);
    cairo_show_text(pen.get(), shown.c_str());
}

void canvas::put_pixels(int x, int y, const std::vector<std::uint32_t>& row) {
    cairo_surface_flush(surface.get());
    std::uint8_t* start = cairo_image_surface_get_data(surface.get()) +
                          std::ptrdiff_t{y} * cairo_image_surface_get_stride(surface.get()) + std::ptrdiff_t{x} * 4;
    std::memcpy(start, row.data(), row.size() * sizeof row[0]);
    cairo_surface_mark_dirty_rectangle(surface.get(), x, y, static_cast<int>(row.size()), 1);
}

void canvas::write(output_file& to) {
    require_good(cairo_status(pen.get()));
    if (becomes == drawing_kind::svg) {
        cairo_surface_finish(surface.get());
        require_good(cairo_surface_status(surface.get()));
        to.write(document);
        return;
    }
    cairo_surface_flush(surface.get());
    picture shape;
    shape.width = static_cast<std::uint32_t>(wide);
    shape.height = static_cast<std::uint32_t>(high);
    shape.channels = 3;
    shape.type = QVRUncompressed_TypeU8;
    shape.samples.reserve(shape.row_bytes() * shape.height);
    for (int y = 0; y < high; ++y) {
        const std::uint8_t* row = cairo_image_surface_get_data(surface.get()) +
                                  std::ptrdiff_t{y} * cairo_image_surface_get_stride(surface.get());
        for (int x = 0; x < wide; ++x) {
            std::uint32_t value = 0;
            std::memcpy(&value, row + std::ptrdiff_t{x} * 4, sizeof value);
            for (const unsigned shift : {16u, 8u, 0u}) {
                shape.samples.push_back(static_cast<std::uint8_t>(value >> shift));
            }
        }
    }
    write_png(to, shape, shape.samples.data());
}

}  // namespace qvr
