// SPDX-License-Identifier: BSD-3-Clause
#include "frame_index.h"

#include <algorithm>

#include "stream.h"

namespace qvr_gst {

namespace {

// Size of the frame that begins at `offset`; 0 when none does.
std::uint32_t frame_size_at(GstPad* pad, std::uint64_t offset) {
    GstBuffer* buffer = nullptr;
    if (gst_pad_pull_range(pad, offset, k_header_size, &buffer) != GST_FLOW_OK) {
        return 0;
    }
    std::uint8_t header[k_header_size];
    const bool whole = gst_buffer_extract(buffer, 0, header, sizeof header) == sizeof header;
    gst_buffer_unref(buffer);
    return whole && starts_frame(header, trust::known_box) ? frame_size(header) : 0;
}

}  // namespace

void frame_index::clear() {
    const std::lock_guard<std::mutex> guard(lock);
    from_start = {};
    later = {0, {}, k_nowhere};
    common_size = 0;
    one_size = true;
}

void frame_index::add(std::uint64_t offset, std::uint32_t size, bool readable) {
    const std::lock_guard<std::mutex> guard(lock);
    if (readable) {
        note_size(size);
    }
    if (offset != from_start.end && offset != later.end) {
        if (const std::optional<std::uint64_t> number = computed_number(offset)) {
            later = {*number, {}, offset};
        }
    }
    append(from_start, offset, size);
    append(later, offset, size);
}

void frame_index::append(run& to, std::uint64_t offset, std::uint32_t size) {
    if (offset == to.end) {
        to.offsets.push_back(offset);
        to.end = offset + size;
    }
}

void frame_index::note_size(std::uint32_t size) {
    one_size = one_size && (common_size == 0 || size == common_size);
    common_size = size;
}

std::optional<std::uint64_t> frame_index::computed_number(std::uint64_t offset) const {
    if (!one_size || common_size == 0 || offset % common_size != 0) {
        return std::nullopt;
    }
    return offset / common_size;
}

std::optional<std::uint64_t> frame_index::find(std::uint64_t frame, GstPad* pad) {
    const std::lock_guard<std::mutex> guard(lock);
    if (one_size && common_size != 0 && frame < G_MAXINT64 / common_size &&
        frame_size_at(pad, frame * common_size) == common_size) {
        return frame * common_size;
    }
    while (frame >= from_start.offsets.size()) {
        const std::uint32_t size = frame_size_at(pad, from_start.end);
        if (size == 0) {
            return std::nullopt;
        }
        note_size(size);
        append(from_start, from_start.end, size);
    }
    return from_start.offsets[frame];
}

std::optional<std::uint64_t> frame_index::number_of(std::uint64_t offset) {
    const std::lock_guard<std::mutex> guard(lock);
    if (const std::optional<std::uint64_t> number = computed_number(offset)) {
        return number;
    }
    for (const run* each : {&from_start, &later}) {
        const auto found = std::lower_bound(each->offsets.begin(), each->offsets.end(), offset);
        if (found != each->offsets.end() && *found == offset) {
            return each->first + static_cast<std::uint64_t>(found - each->offsets.begin());
        }
    }
    return std::nullopt;
}

}  // namespace qvr_gst
