// SPDX-License-Identifier: BSD-3-Clause
//
// A GStreamer frame as the library sees it.
#pragma once

#include <gst/video/video.h>

#include <cstdint>
#include <optional>

#include "formats.h"

namespace qvr_gst {

// A frame mapped while the object lives.
class mapped_frame {
  public:
    // buffer: may be null, and then it is not mapped.
    mapped_frame(const GstVideoInfo& info, GstBuffer* buffer, GstMapFlags flags);
    ~mapped_frame();
    mapped_frame(const mapped_frame&) = delete;
    mapped_frame& operator=(const mapped_frame&) = delete;

    // False when the buffer does not hold such a frame.
    explicit operator bool() const { return mapped; }
    const GstVideoFrame& frame() const { return video; }
    bool copy_to(mapped_frame& to) const { return gst_video_frame_copy(&to.video, &video) != FALSE; }

  private:
    GstVideoFrame video = {};
    bool mapped;
};

struct frame_view {
    frame_params up;
    std::uint8_t* data;
    std::uint32_t size;
};

// The frame as one buffer whose planes follow each other without a gap. Empty when they do not, when their strides are
// not the two that the library knows, or when the last row is shorter than its stride.
std::optional<frame_view> view_of(const GstVideoFrame& frame, const format_row& row);

// A layout of the same frame that view_of() takes. It differs from the usual one in planes of 4:2:0 with an odd height.
GstVideoInfo gapless(const GstVideoInfo& info);

// What a buffer's flags say of its fields goes with the frame; the bitstream has no place for it.
void copy_field_flags(GstBuffer* from, GstBuffer* to);

}  // namespace qvr_gst
