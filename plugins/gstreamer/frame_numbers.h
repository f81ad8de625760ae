// SPDX-License-Identifier: BSD-3-Clause
//
// Frames by number: their times, and seeks and queries in frames (GST_FORMAT_DEFAULT) by way of those in time.
#pragma once

#include <gst/gst.h>

#include <cstdint>
#include <functional>

namespace qvr_gst {

struct frame_rate {
    gint numerator = 0;
    gint denominator = 1;

    // At a variable rate, 0/1, a number says nothing about a time.
    bool is_fixed() const { return numerator > 0; }
};

// Both need a fixed rate.
GstClockTime time_of(const frame_rate& rate, std::uint64_t frame);
std::uint64_t frame_at(const frame_rate& rate, GstClockTime time);

// From frames to time or back; -1 stays. False for other formats and at a variable rate.
bool convert_frames(const frame_rate& rate, GstFormat from, gint64 value, GstFormat to, gint64* result);

// A seek to a frame number becomes one to its time, and one backwards that names no place to begin at begins at the end
// (-1: not known). Takes the event, and gives it back where there is nothing to change.
GstEvent* seek_in_time(const frame_rate& rate, gint64 duration, GstEvent* seek);

// Whether a query is for duration, position or seeking in frames. Such are answered by what `ask` says of the same in
// time; false when it does not know, and at a variable rate.
bool asks_in_frames(GstQuery* query);
bool answer_in_frames(const frame_rate& rate, GstQuery* query, const std::function<bool(GstQuery*)>& ask);

}  // namespace qvr_gst
