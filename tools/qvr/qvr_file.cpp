// SPDX-License-Identifier: BSD-3-Clause
#include "qvr_file.h"

#include <cstring>

#include "box_tree.h"

namespace qvr {

namespace {

constexpr const char* k_cut_short = "the file was cut short, or the size in the frame's first four bytes is damaged";

}  // namespace

void frame_reader::fail(const std::string& what, const std::string& hint) const {
    throw failure(exit_code::data, place(), what, hint);
}

std::size_t frame_reader::read_header() {
    index = whole_frames;
    start += size;
    size = 0;
    if (lost) {
        return 0;
    }
    size = file.read_into(buffer, 0, k_box_header);
    if (size == 0) {
        return 0;
    }
    lost = true;  // until the header has proven good
    if (size < k_box_header) {
        fail("only " + std::to_string(size) + " bytes are left, fewer than a box header has", k_cut_short);
    }
    const std::string type = box_type_text(buffer.data() + 4);
    if (type != "'pack'") {
        fail("a 'pack' box should begin here, but the type is " + type,
             index == 0 ? "this is not a .qvr file; 'qvr encode' makes one"
                        : "the size of the frame before this one may be damaged; 'qvr info' shows it");
    }
    const std::size_t declared = read_le32(buffer.data());
    if (declared < k_box_header) {
        fail("the 'pack' box says that it has " + std::to_string(declared) + " bytes, fewer than its own header",
             "the size in the frame's first four bytes is damaged");
    }
    return declared;
}

void frame_reader::require_whole(std::size_t declared) {
    if (size < declared) {
        fail("the 'pack' box says that the frame has " + std::to_string(declared) + " bytes, but the file ends after " +
                 std::to_string(size),
             k_cut_short);
    }
    lost = false;
    ++whole_frames;
}

bool frame_reader::next() {
    const std::size_t declared = read_header();
    if (declared == 0) {
        return false;
    }
    size += file.read_into(buffer, k_box_header, declared - k_box_header);
    require_whole(declared);
    return true;
}

bool frame_reader::skip() {
    const std::size_t declared = read_header();
    if (declared == 0) {
        return false;
    }
    size += file.skip(declared - k_box_header);
    require_whole(declared);
    return true;
}

unsigned long long frame_reader::skip_some(unsigned long long count) {
    unsigned long long skipped = 0;
    while (skipped < count && skip()) {
        ++skipped;
    }
    return skipped;
}

void frame_reader::find(unsigned long long wanted) {
    if (skip_some(wanted) < wanted || !next()) {
        require_some();
        refuse_frame(file.name(), wanted, whole_frames);
    }
}

void frame_reader::require_some() const {
    if (start == 0) {
        refuse_empty(file.name());
    }
}

}  // namespace qvr
