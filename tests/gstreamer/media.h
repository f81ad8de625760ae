// SPDX-License-Identifier: BSD-3-Clause
//
// Raw formats, frames and pipelines for the tests of the plug-in.
#pragma once

#include <gst/gst.h>

#include <cstdint>
#include <string>
#include <vector>

#include "bytes.h"
#include "codec.h"

namespace media {

using test::bytes;

// A GStreamer format as its documentation describes it, and what the library calls it.
struct raw_format {
    const char* name;
    std::uint32_t order;
    std::uint32_t type;
    std::uint32_t pixel_bytes;     // of the first or only plane; 0: v210
    std::uint32_t even;            // dimensions that must be even: 0, 1 (width), 2 (both)
    bool alpha = false;            // holds alpha
    std::uint8_t low_mask = 0xff;  // what is kept of the low byte of a 16-bit word
    const char* packed_444 = "off";
};

const std::vector<raw_format>& formats();
const raw_format& format_named(const std::string& name);

// "video/x-raw,format=...", with the frame rate 25/1.
std::string caps_text(const raw_format& format, std::uint32_t width, std::uint32_t height);

struct frame {
    bytes pixels;  // without padding at the ends of rows
    GstClockTime pts = GST_CLOCK_TIME_NONE;
    std::string caps;
};

// The pixels of a buffer that is as `caps` say.
bytes pixels_of(GstBuffer* buffer, const std::string& caps);

bytes bytes_of(GstBuffer* buffer);
GstBuffer* buffer_of(const bytes& content);
// A frame as `caps` say, in GStreamer's usual strides, of pixels without padding.
GstBuffer* buffer_of_pixels(const bytes& pixels, const std::string& caps);

// A buffer of random content, padding included, with the bits that the format does not keep at zero.
GstBuffer* random_buffer(const raw_format& format, const std::string& caps, std::uint64_t salt);

// What the library makes of a frame, by itself.
test::frame_params params_of(const raw_format& format, std::uint32_t width, std::uint32_t height);
bytes encoded(const raw_format& format, std::uint32_t width, std::uint32_t height, const bytes& pixels,
              bool alpha_rle = false);

// A frame of two stitched chunks.
bytes wrapped_chunks(std::uint32_t width, std::uint32_t height);

struct ending {
    bool eos = false;
    bool segment_done = false;
    std::string error;
    std::vector<std::string> warnings;
};

class pipeline {
  public:
    explicit pipeline(const std::string& description);
    ~pipeline();
    pipeline(const pipeline&) = delete;
    pipeline& operator=(const pipeline&) = delete;

    // Back to the start, with the elements ready to be used again.
    void stop() { gst_element_set_state(top, GST_STATE_READY); }
    // Plays until the end of the stream or segment, an error or 30 seconds.
    ending run();
    // Goes to PAUSED and waits until the first frame is there.
    bool pause();
    bool seek(GstFormat format, gint64 to, GstSeekFlags flags);
    // From start to stop, or from stop to start at a negative speed; -1 leaves the stop open.
    bool seek(gdouble speed, GstFormat format, gint64 start, gint64 stop, GstSeekFlags flags);
    gint64 duration(GstFormat format) const;
    // Frames that an appsink has had and not given yet.
    std::vector<frame> take(const char* sink);
    // The frame that a paused appsink shows.
    frame shown(const char* sink);
    GstElement* element(const char* name) const;

  private:
    GstElement* top;
    GstBus* bus;
};

// A file in a folder of the test's own, which goes away with the object.
class temporary_file {
  public:
    temporary_file();
    explicit temporary_file(const bytes& content);
    ~temporary_file();
    temporary_file(const temporary_file&) = delete;
    temporary_file& operator=(const temporary_file&) = delete;

    const std::string& path() const { return path_; }
    bytes read() const;

  private:
    std::string path_;
};

}  // namespace media
