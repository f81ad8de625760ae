// SPDX-License-Identifier: BSD-3-Clause
//
// Still pictures as plain samples, rows without a gap: what PNG, Netpbm and OpenEXR files have in common.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "file_io.h"
#include "frame.h"

namespace qvr {

struct picture {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    unsigned channels = 0;   // 1 grey, 2 grey and alpha, 3 RGB, 4 RGBA
    std::uint32_t type = 0;  // QVRUncompressed_ComponentType of the samples
    std::vector<std::uint8_t> samples;
    location place;                     // for messages, of the picture that is read; may be empty
    std::vector<std::string> left_out;  // what the file holds beyond that, in words for a warning

    bool has_alpha() const { return channels == 2 || channels == 4; }
    unsigned bytes_per_sample() const;
    std::uint64_t row_bytes() const { return std::uint64_t{width} * channels * bytes_per_sample(); }
};

// A picture of the given shape, without samples.
picture shape_of(const frame_layout& layout);

// The bytes of all samples. A data failure when they pass 4 GiB.
std::size_t require_picture_size(const picture& shape, const std::string& file, const char* name);

// What deflate makes of a byte at most.
constexpr std::uint64_t k_most_inflation = 1032;

// A data failure when so many bytes cannot come out of a file with `file_bytes`. So no header asks for memory that
// nothing in the file bears out.
void require_inflated_size(std::uint64_t bytes, std::uint64_t file_bytes, const std::string& file, const char* name);

// How one kind of picture file is read and written.
struct picture_format {
    const char* article;               // "a"
    const char* name;                  // "PNG"
    const char* extension;             // ".png"
    std::vector<std::uint32_t> types;  // component types that it keeps
    const char* types_text;            // "8 or 16 bits"
    std::vector<unsigned> channels;    // numbers of channels that are written: of 1, 3 and 4
    const char* channels_text;         // "RGB, RGBA or a lone alpha plane"
    std::uint32_t grey_order;          // what a grey picture becomes when no order is asked for: RGB or Alpha
    bool many;                         // a file may hold several pictures, one behind the other
    void (*read)(input_file&, picture& to);
    void (*write)(output_file&, const picture& shape, const std::uint8_t* samples);

    std::string called() const { return std::string(article) + " " + name; }
};

std::unique_ptr<frame_source> open_picture_source(const picture_format& format, std::unique_ptr<input_file> file,
                                                  const layout_request& request);
std::unique_ptr<frame_sink> open_picture_sink(const picture_format& format, const std::string& path,
                                              const layout_request& request);

}  // namespace qvr
