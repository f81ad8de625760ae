// SPDX-License-Identifier: BSD-3-Clause
//
// Writes the samples of a PNG as raw RGBA of 8 or 16 bits: png_to_rgba IN.png OUT.rgba
// It shares no code with the qvr tool, so that what the two say can be compared.
#include <png.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

[[noreturn]] static void stop(png_structp, png_const_charp message) {
    std::fprintf(stderr, "png_to_rgba: %s\n", message);
    std::exit(1);
}

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: png_to_rgba IN.png OUT.rgba\n");
        return 2;
    }
    using file_pointer = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;
    const file_pointer in(std::fopen(argv[1], "rb"), std::fclose);
    const file_pointer out(std::fopen(argv[2], "wb"), std::fclose);
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, stop, nullptr);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    if (!in || !out || !info) {
        stop(png, "cannot open the files");
    }
    png_init_io(png, in.get());
    png_read_info(png, info);
    png_set_expand(png);
    png_set_gray_to_rgb(png);
    png_set_add_alpha(png, 0xFFFF, PNG_FILLER_AFTER);
    png_set_swap(png);  // 16-bit samples little-endian
    png_set_interlace_handling(png);
    png_read_update_info(png, info);
    const size_t row_bytes = png_get_rowbytes(png, info);
    std::vector<std::vector<png_byte>> pixels(png_get_image_height(png, info), std::vector<png_byte>(row_bytes));
    std::vector<png_bytep> rows;
    for (std::vector<png_byte>& row : pixels) {
        rows.push_back(row.data());
    }
    png_read_image(png, rows.data());
    png_destroy_read_struct(&png, &info, nullptr);
    for (const std::vector<png_byte>& row : pixels) {
        if (std::fwrite(row.data(), 1, row_bytes, out.get()) != row_bytes) {
            stop(nullptr, "cannot write");
        }
    }
    return std::fflush(out.get()) == 0 ? 0 : 1;
}
