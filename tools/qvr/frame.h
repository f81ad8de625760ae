// SPDX-License-Identifier: BSD-3-Clause
//
// A raw frame, and the small interface behind which each kind of picture file is read and written.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "QVRUncompressed.h"
#include "failure.h"
#include "file_io.h"
#include "formats.h"

namespace qvr {

using frame_layout = QVRUncompressed_UncompressedParams_t;

// A record with its size field set and everything else 0.
frame_layout empty_layout();

struct frame {
    frame_layout layout = empty_layout();
    std::vector<std::uint8_t> samples;  // may be longer than the frame; `bytes` counts
    std::size_t bytes = 0;
};

// The exact size of the raw frame, or a bound from above where it would pass what 32 bits can say. The library's own
// answer holds only the low 32 bits, so nothing may ask it before this has been asked.
std::uint64_t raw_frame_bytes(const frame_layout& layout);

// A failure of the given code when the raw frame would pass 4 GiB; and when the bitstream that it can become would.
void require_raw_size(const frame_layout& layout, exit_code code, const location& where);
void require_size(const frame_layout& layout, const QVRUncompressed_CompressedParams_t& compression, exit_code code,
                  const location& where);

// "1920x1080 interlaced, order 2 UYVY, type 1 U8"
std::string layout_text(const frame_layout& layout);

class frame_source {
  public:
    virtual ~frame_source() = default;
    // False when there is no further frame. The frame's memory is used again where it fits.
    virtual bool next(frame& to) = 0;
    // Where the frame that next() gave last was found.
    virtual location last_place() const = 0;
};

class frame_sink {
  public:
    virtual ~frame_sink() = default;
    // The layout in which the sink wants a frame that the stream describes as `own`. A failure when it cannot take it.
    virtual frame_layout wanted(const frame_layout& own, const location& where) const = 0;
    virtual bool holds_one_frame() const = 0;
    virtual void put(const frame& from) = 0;
    virtual void commit() = 0;
};

// What the command line says about the caller's side of a frame.
struct layout_request {
    format_choice format;
    std::uint32_t width = 0;  // 0: not given
    std::uint32_t height = 0;
    std::uint32_t row_bytes = 0;
    std::uint32_t row_bytes2 = 0;
    bool interlaced = false;
};

// A size means raw frames; without one the file is a PNG. raw_example: options of raw frames, for a hint.
std::unique_ptr<frame_source> open_source(const std::string& path, input_file& file, const layout_request& request,
                                          const char* raw_example);
std::unique_ptr<frame_source> open_raw_source(input_file& file, const layout_request& request);
std::unique_ptr<frame_source> open_png_source(input_file& file, const layout_request& request);
std::unique_ptr<frame_sink> open_raw_sink(const std::string& path, const layout_request& request);
std::unique_ptr<frame_sink> open_png_sink(const std::string& path, const layout_request& request);

}  // namespace qvr
