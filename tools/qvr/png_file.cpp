// SPDX-License-Identifier: BSD-3-Clause
//
// libpng reports errors by jumping. Every call that may do so is made inside a "step", a function without objects to
// destroy, which run_step() calls; exceptions of the file callbacks are carried past libpng in the same way.
#include "png_file.h"

#include <png.h>

#include <algorithm>
#include <csetjmp>
#include <cstdio>
#include <exception>

#include "failure.h"
#include "warnings.h"

namespace qvr {

namespace {

struct png_job {
    png_structp png = nullptr;
    png_infop info = nullptr;
    input_file* input = nullptr;
    output_file* output = nullptr;
    const char* name = "";
    std::exception_ptr problem;
    char message[200] = "";
    picture shape;
    std::uint64_t packed_bytes = 0;  // of all rows, as they are before deflate
    std::vector<png_bytep> rows;
};

void on_error(png_structp png, png_const_charp message) {
    auto* job = static_cast<png_job*>(png_get_error_ptr(png));
    std::snprintf(job->message, sizeof job->message, "%s", message);
    png_longjmp(png, 1);
}

void on_warning(png_structp png, png_const_charp message) {
    const auto* job = static_cast<const png_job*>(png_get_error_ptr(png));
    warn(job->name, message);
}

void on_read(png_structp png, png_bytep to, png_size_t count) {
    auto* job = static_cast<png_job*>(png_get_io_ptr(png));
    bool whole = false;
    try {
        whole = job->input->read(to, count) == count;
    } catch (...) {
        job->problem = std::current_exception();
    }
    if (!whole) {
        png_error(png, "the file ends too early");
    }
}

void on_write(png_structp png, png_bytep from, png_size_t count) {
    auto* job = static_cast<png_job*>(png_get_io_ptr(png));
    try {
        job->output->write(from, count);
    } catch (...) {
        job->problem = std::current_exception();
    }
    if (job->problem) {
        png_error(png, "write failed");
    }
}

void on_flush(png_structp) {}

bool run_step(png_job& job, void (*step)(png_job&)) {
    if (setjmp(png_jmpbuf(job.png)) != 0) {
        return false;
    }
    step(job);
    return true;
}

void read_header(png_job& job) {
    png_set_read_fn(job.png, &job, on_read);
    png_read_info(job.png, job.info);
    job.packed_bytes = std::uint64_t{png_get_rowbytes(job.png, job.info)} * png_get_image_height(job.png, job.info);
    png_set_expand(job.png);
    png_set_swap(job.png);
    png_set_interlace_handling(job.png);
    png_read_update_info(job.png, job.info);
    job.shape.width = png_get_image_width(job.png, job.info);
    job.shape.height = png_get_image_height(job.png, job.info);
    job.shape.channels = png_get_channels(job.png, job.info);
    job.shape.type = png_get_bit_depth(job.png, job.info) == 8 ? QVRUncompressed_TypeU8 : QVRUncompressed_TypeU16;
}

void read_rows(png_job& job) {
    png_read_image(job.png, job.rows.data());
    png_read_end(job.png, nullptr);
}

void write_all(png_job& job) {
    constexpr int k_color_types[] = {PNG_COLOR_TYPE_GRAY, PNG_COLOR_TYPE_GRAY_ALPHA, PNG_COLOR_TYPE_RGB,
                                     PNG_COLOR_TYPE_RGB_ALPHA};
    png_set_write_fn(job.png, &job, on_write, on_flush);
    png_set_IHDR(job.png, job.info, job.shape.width, job.shape.height,
                 static_cast<int>(job.shape.bytes_per_sample() * 8), k_color_types[job.shape.channels - 1],
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(job.png, job.info);
    png_set_swap(job.png);
    png_write_image(job.png, job.rows.data());
    png_write_end(job.png, nullptr);
}

class png_handle {
  public:
    png_handle(png_job& of, bool reading) : job(of), reads(reading) {
        job.png = reading ? png_create_read_struct(PNG_LIBPNG_VER_STRING, &of, on_error, on_warning)
                          : png_create_write_struct(PNG_LIBPNG_VER_STRING, &of, on_error, on_warning);
        job.info = job.png ? png_create_info_struct(job.png) : nullptr;
        if (!job.info) {
            end();
            throw failure(exit_code::io, {job.name, {}}, "not enough memory for a PNG");
        }
    }
    ~png_handle() { end(); }
    png_handle(const png_handle&) = delete;
    png_handle& operator=(const png_handle&) = delete;

    void step(void (*what)(png_job&), exit_code code, const char* action) {
        if (run_step(job, what)) {
            return;
        }
        if (job.problem) {
            std::rethrow_exception(job.problem);
        }
        throw failure(code, {job.name, {}}, std::string(action) + job.message,
                      code == exit_code::data ? "the PNG is damaged or was cut short" : "");
    }

  private:
    void end() {
        if (reads) {
            png_destroy_read_struct(&job.png, &job.info, nullptr);
        } else {
            png_destroy_write_struct(&job.png, &job.info);
        }
    }

    png_job& job;
    bool reads;
};

void point_rows(png_job& job, std::uint8_t* samples) {
    job.rows.resize(job.shape.height);
    for (std::size_t row = 0; row < job.rows.size(); ++row) {
        job.rows[row] = samples + row * static_cast<std::size_t>(job.shape.row_bytes());
    }
}

}  // namespace

const picture_format k_png_format = {
    "a",
    "PNG",
    ".png",
    {QVRUncompressed_TypeU8, QVRUncompressed_TypeU16},
    "8 or 16 bits",
    {1, 3, 4},
    "RGB, RGBA or a lone alpha plane",
    QVRUncompressed_OrderRGB,
    false,
    read_png,
    write_png,
};

bool begins_like_png(input_file& file) {
    const std::vector<std::uint8_t>& head = file.peek(8);
    return head.size() >= 8 && png_sig_cmp(head.data(), 0, 8) == 0;
}

void read_png(input_file& file, picture& to) {
    png_job job;
    job.input = &file;
    job.name = file.name().c_str();
    png_handle handle(job, true);
    const std::optional<std::uint64_t> left = file.bytes_left();
    handle.step(read_header, exit_code::data, "cannot read the PNG: ");
    const std::size_t sample_bytes = require_picture_size(job.shape, file.name(), "PNG");
    // Of a pipe as much is looked at as must be there.
    const auto least = static_cast<std::size_t>(job.packed_bytes / k_most_inflation);
    require_inflated_size(job.packed_bytes, left ? *left : file.peek(least).size(), file.name(), "PNG");
    job.shape.samples.swap(to.samples);
    job.shape.samples.resize(sample_bytes);
    point_rows(job, job.shape.samples.data());
    handle.step(read_rows, exit_code::data, "cannot read the PNG: ");
    to = std::move(job.shape);
}

void write_png(output_file& file, const picture& shape, const std::uint8_t* samples) {
    png_job job;
    job.output = &file;
    job.name = file.name().c_str();
    job.shape.width = shape.width;
    job.shape.height = shape.height;
    job.shape.channels = shape.channels;
    job.shape.type = shape.type;
    // libpng takes rows to write as pointers to non-const and leaves them as they are.
    point_rows(job, const_cast<std::uint8_t*>(samples));
    png_handle handle(job, false);
    handle.step(write_all, exit_code::usage, "cannot write the PNG: ");
}

}  // namespace qvr
