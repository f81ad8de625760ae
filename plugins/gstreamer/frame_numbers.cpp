// SPDX-License-Identifier: BSD-3-Clause
#include "frame_numbers.h"

#include <memory>

namespace qvr_gst {

namespace {

struct unref_query {
    void operator()(GstQuery* query) const { gst_query_unref(query); }
};
using query_pointer = std::unique_ptr<GstQuery, unref_query>;

gint64 signed_time_of(const frame_rate& rate, gint64 frame) {
    const auto time = [&](gint64 number) {
        return static_cast<gint64>(time_of(rate, static_cast<std::uint64_t>(number)));
    };
    return frame < 0 ? -time(-frame) : time(frame);
}

gint64 signed_frame_at(const frame_rate& rate, gint64 time) {
    return time < 0 ? -1 : static_cast<gint64>(frame_at(rate, static_cast<GstClockTime>(time)));
}

// Counted from the end places are negative; elsewhere that is no place.
gint64 place_in_time(const frame_rate& rate, GstSeekType type, gint64 frame) {
    return frame < 0 && type != GST_SEEK_TYPE_END ? -1 : signed_time_of(rate, frame);
}

GstFormat format_of(GstQuery* query) {
    GstFormat format = GST_FORMAT_UNDEFINED;
    switch (GST_QUERY_TYPE(query)) {
        case GST_QUERY_DURATION:
            gst_query_parse_duration(query, &format, nullptr);
            break;
        case GST_QUERY_POSITION:
            gst_query_parse_position(query, &format, nullptr);
            break;
        case GST_QUERY_SEEKING:
            gst_query_parse_seeking(query, &format, nullptr, nullptr, nullptr);
            break;
        default:
            break;
    }
    return format;
}

query_pointer same_in_time(GstQuery* query) {
    switch (GST_QUERY_TYPE(query)) {
        case GST_QUERY_DURATION:
            return query_pointer(gst_query_new_duration(GST_FORMAT_TIME));
        case GST_QUERY_POSITION:
            return query_pointer(gst_query_new_position(GST_FORMAT_TIME));
        default:
            return query_pointer(gst_query_new_seeking(GST_FORMAT_TIME));
    }
}

void copy_answer(const frame_rate& rate, GstQuery* in_time, GstQuery* query) {
    gint64 first = 0;
    gint64 last = 0;
    gboolean seekable = FALSE;
    switch (GST_QUERY_TYPE(query)) {
        case GST_QUERY_DURATION:
            gst_query_parse_duration(in_time, nullptr, &last);
            gst_query_set_duration(query, GST_FORMAT_DEFAULT, signed_frame_at(rate, last));
            break;
        case GST_QUERY_POSITION:
            gst_query_parse_position(in_time, nullptr, &last);
            gst_query_set_position(query, GST_FORMAT_DEFAULT, signed_frame_at(rate, last));
            break;
        default:
            gst_query_parse_seeking(in_time, nullptr, &seekable, &first, &last);
            gst_query_set_seeking(query, GST_FORMAT_DEFAULT, seekable, signed_frame_at(rate, first),
                                  signed_frame_at(rate, last));
            break;
    }
}

}  // namespace

GstClockTime time_of(const frame_rate& rate, std::uint64_t frame) {
    return gst_util_uint64_scale(frame, GST_SECOND * static_cast<std::uint64_t>(rate.denominator),
                                 static_cast<std::uint64_t>(rate.numerator));
}

// Times are rounded down, so the frame of time_of(n) is looked for a nanosecond later.
std::uint64_t frame_at(const frame_rate& rate, GstClockTime time) {
    return gst_util_uint64_scale(time + 1, static_cast<std::uint64_t>(rate.numerator),
                                 GST_SECOND * static_cast<std::uint64_t>(rate.denominator));
}

bool convert_frames(const frame_rate& rate, GstFormat from, gint64 value, GstFormat to, gint64* result) {
    const bool to_time = from == GST_FORMAT_DEFAULT && to == GST_FORMAT_TIME;
    const bool to_frames = from == GST_FORMAT_TIME && to == GST_FORMAT_DEFAULT;
    if (!rate.is_fixed() || !(to_time || to_frames)) {
        return false;
    }
    *result = value < 0 ? -1 : to_time ? signed_time_of(rate, value) : signed_frame_at(rate, value);
    return true;
}

GstEvent* seek_in_time(const frame_rate& rate, gint64 duration, GstEvent* seek) {
    gdouble speed = 1;
    GstFormat format = GST_FORMAT_UNDEFINED;
    GstSeekFlags flags = GST_SEEK_FLAG_NONE;
    GstSeekType start_type = GST_SEEK_TYPE_NONE;
    GstSeekType stop_type = GST_SEEK_TYPE_NONE;
    gint64 start = 0;
    gint64 stop = 0;
    gst_event_parse_seek(seek, &speed, &format, &flags, &start_type, &start, &stop_type, &stop);
    const bool in_frames = format == GST_FORMAT_DEFAULT && rate.is_fixed();
    const bool from_end = speed < 0 && stop == -1 && stop_type != GST_SEEK_TYPE_END && duration > 0;
    if (!in_frames && !(from_end && format == GST_FORMAT_TIME)) {
        return seek;
    }
    if (in_frames) {
        start = place_in_time(rate, start_type, start);
        stop = place_in_time(rate, stop_type, stop);
    }
    if (from_end) {
        stop_type = GST_SEEK_TYPE_SET;
        stop = duration;
    }
    GstEvent* const result = gst_event_new_seek(speed, GST_FORMAT_TIME, flags, start_type, start, stop_type, stop);
    gst_event_set_seqnum(result, gst_event_get_seqnum(seek));
    gst_event_unref(seek);
    return result;
}

bool asks_in_frames(GstQuery* query) {
    return format_of(query) == GST_FORMAT_DEFAULT;
}

bool answer_in_frames(const frame_rate& rate, GstQuery* query, const std::function<bool(GstQuery*)>& ask) {
    const query_pointer in_time = same_in_time(query);
    if (!rate.is_fixed() || !ask(in_time.get())) {
        return false;
    }
    copy_answer(rate, in_time.get(), query);
    return true;
}

}  // namespace qvr_gst
