// SPDX-License-Identifier: BSD-3-Clause
#include "pictures.h"

#include <png.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>

namespace {

using file_pointer = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

// A picture of the tests themselves that cannot be handled is a mistake in the tests.
[[noreturn]] void stop(png_structp, png_const_charp message) {
    std::fprintf(stderr, "test picture: %s\n", message);
    std::abort();
}

int colour_type(colours kind) {
    switch (kind) {
        case colours::grey:
            return PNG_COLOR_TYPE_GRAY;
        case colours::palette:
            return PNG_COLOR_TYPE_PALETTE;
        case colours::rgb:
            return PNG_COLOR_TYPE_RGB;
        case colours::grey_alpha:
            return PNG_COLOR_TYPE_GRAY_ALPHA;
        default:
            return PNG_COLOR_TYPE_RGB_ALPHA;
    }
}

void set_palette(png_structp png, png_infop info, unsigned transparent) {
    std::array<png_color, 256> entries;
    std::array<png_byte, 256> alpha;
    for (unsigned i = 0; i < entries.size(); ++i) {
        const bytes colour = palette_colour(static_cast<std::uint8_t>(i));
        entries[i] = {colour[0], colour[1], colour[2]};
        alpha[i] = static_cast<png_byte>(i);
    }
    png_set_PLTE(png, info, entries.data(), 256);
    if (transparent > 0) {
        png_set_tRNS(png, info, alpha.data(), static_cast<int>(transparent), nullptr);
    }
}

std::vector<png_bytep> row_pointers(bytes& samples, std::size_t height) {
    std::vector<png_bytep> rows;
    for (std::size_t row = 0; row < height; ++row) {
        rows.push_back(samples.data() + row * (samples.size() / height));
    }
    return rows;
}

}  // namespace

unsigned test_picture::channels() const {
    switch (kind) {
        case colours::grey:
        case colours::palette:
            return 1;
        case colours::grey_alpha:
            return 2;
        case colours::rgb:
            return 3;
        default:
            return 4;
    }
}

test_picture make_picture(colours kind, int depth, std::uint32_t width, std::uint32_t height) {
    test_picture made;
    made.width = width;
    made.height = height;
    made.depth = depth;
    made.kind = kind;
    const std::size_t count = std::size_t{width} * height * made.channels() * (depth == 16 ? 2 : 1);
    std::uint32_t state = 12345;
    for (std::size_t i = 0; i < count; ++i) {
        state = state * 1664525u + 1013904223u;
        const std::uint32_t pattern = (state >> 24) & 0xFF;
        made.samples.push_back(static_cast<std::uint8_t>(i % 7 == 3 ? 0xFF : i % 11 == 3 ? 0 : pattern));
    }
    return made;
}

bytes palette_colour(std::uint8_t index) {
    return {index, static_cast<std::uint8_t>(255 - index), static_cast<std::uint8_t>(7 * index)};
}

void write_picture(const std::string& path, const test_picture& from, bool interlaced, unsigned transparent) {
    const file_pointer file(std::fopen(path.c_str(), "wb"), std::fclose);
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, stop, nullptr);
    png_infop info = png_create_info_struct(png);
    png_init_io(png, file.get());
    png_set_IHDR(png, info, from.width, from.height, from.depth, colour_type(from.kind),
                 interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    if (from.kind == colours::palette) {
        set_palette(png, info, transparent);
    }
    png_write_info(png, info);
    png_set_swap(png);
    png_set_packing(png);  // depths below 8 are given one sample a byte
    bytes copy = from.samples;
    std::vector<png_bytep> rows = row_pointers(copy, from.height);
    png_write_image(png, rows.data());
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
}

test_picture read_picture(const std::string& path) {
    test_picture to;
    const file_pointer file(std::fopen(path.c_str(), "rb"), std::fclose);
    if (!file) {
        return to;
    }
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, stop, nullptr);
    png_infop info = png_create_info_struct(png);
    png_init_io(png, file.get());
    png_read_info(png, info);
    to.width = png_get_image_width(png, info);
    to.height = png_get_image_height(png, info);
    to.depth = png_get_bit_depth(png, info);
    for (const colours kind : {colours::grey, colours::palette, colours::rgb, colours::grey_alpha, colours::rgba}) {
        if (colour_type(kind) == png_get_color_type(png, info)) {
            to.kind = kind;
        }
    }
    png_set_swap(png);
    png_read_update_info(png, info);
    to.samples.resize(png_get_rowbytes(png, info) * to.height);
    std::vector<png_bytep> rows = row_pointers(to.samples, to.height);
    png_read_image(png, rows.data());
    png_read_end(png, nullptr);
    png_destroy_read_struct(&png, &info, nullptr);
    return to;
}
