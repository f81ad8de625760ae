// SPDX-License-Identifier: BSD-3-Clause
#include "frame_view.h"

#include <limits>

namespace qvr_gst {

namespace {

guint plane_rows(const GstVideoInfo& info, guint plane) {
    return static_cast<guint>(GST_VIDEO_INFO_COMP_HEIGHT(&info, plane));
}

// Cb and Cr of planar formats share a stride, and so do the other planes.
guint stride_owner(guint plane) {
    return plane == 1 || plane == 2 ? 1 : 0;
}

// The end of the memory that a plane lies in. Without a GstVideoMeta the whole buffer is mapped once.
const guint8* memory_end(const GstVideoFrame& frame, guint plane) {
    const GstMapInfo& map = frame.map[frame.meta != nullptr ? plane : 0];
    return map.data + map.size;
}

}  // namespace

mapped_frame::mapped_frame(const GstVideoInfo& info, GstBuffer* buffer, GstMapFlags flags)
    : mapped(buffer != nullptr && gst_video_frame_map(&video, &info, buffer, flags) != FALSE) {}

mapped_frame::~mapped_frame() {
    if (mapped) {
        gst_video_frame_unmap(&video);
    }
}

std::optional<frame_view> view_of(const GstVideoFrame& frame, const format_row& row) {
    auto* const start = static_cast<guint8*>(frame.data[0]);
    std::uint64_t size = 0;
    for (guint plane = 0; plane < GST_VIDEO_INFO_N_PLANES(&frame.info); ++plane) {
        const gint stride = frame.info.stride[plane];
        if (stride <= 0 || stride != frame.info.stride[stride_owner(plane)] || frame.data[plane] != start + size) {
            return std::nullopt;
        }
        size += static_cast<std::uint64_t>(stride) * plane_rows(frame.info, plane);
        if (start + size > memory_end(frame, plane)) {
            return std::nullopt;
        }
    }
    if (size > std::numeric_limits<std::uint32_t>::max()) {
        return std::nullopt;
    }
    const bool interlaced = GST_VIDEO_FRAME_IS_INTERLACED(&frame);
    const frame_params up = {
        sizeof up,
        row.order,
        row.type,
        static_cast<std::uint32_t>(GST_VIDEO_INFO_WIDTH(&frame.info)),
        static_cast<std::uint32_t>(GST_VIDEO_INFO_HEIGHT(&frame.info)),
        static_cast<std::uint32_t>(frame.info.stride[0]),
        interlaced ? std::uint32_t{QVRUncompressed_LayoutInterlaced} : std::uint32_t{QVRUncompressed_LayoutProgressive},
        static_cast<std::uint32_t>(frame.info.stride[1])};
    return frame_view{up, start, static_cast<std::uint32_t>(size)};
}

GstVideoInfo gapless(const GstVideoInfo& info) {
    GstVideoInfo result = info;
    result.size = 0;
    for (guint plane = 0; plane < GST_VIDEO_INFO_N_PLANES(&info); ++plane) {
        result.offset[plane] = result.size;
        result.size += static_cast<gsize>(info.stride[plane]) * plane_rows(info, plane);
    }
    return result;
}

void copy_field_flags(GstBuffer* from, GstBuffer* to) {
    constexpr guint k_field_flags = GST_VIDEO_BUFFER_FLAG_INTERLACED | GST_VIDEO_BUFFER_FLAG_TFF |
                                    GST_VIDEO_BUFFER_FLAG_RFF | GST_VIDEO_BUFFER_FLAG_ONEFIELD;
    GST_BUFFER_FLAG_SET(to, GST_BUFFER_FLAGS(from) & k_field_flags);
}

}  // namespace qvr_gst
