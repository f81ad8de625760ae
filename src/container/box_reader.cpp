// SPDX-License-Identifier: BSD-3-Clause
#include "container/box_reader.h"

#include <algorithm>
#include <cstring>

#include "api/base/errors.h"

namespace container {

namespace {

// Fields of a 'sinf', from the start of the box.
constexpr std::uint32_t k_sinf_width = 8;
constexpr std::uint32_t k_sinf_height = 12;
constexpr std::uint32_t k_sinf_plane_type = 16;
constexpr std::uint32_t k_sinf_layout = 20;

// Offset of the type field in a box, which the messages about types name.
constexpr std::uint32_t k_type_field = 4;

// A coded plane holds one byte at least; any other plane its rows.
wide least_sdat_size(const plane_info& plane) {
    if (plane.traits().holds == plane_class::coded_alpha) {
        return k_box_header_size + 1;
    }
    return row_bytes(plane.type, plane.width) * plane.height + k_box_header_size;
}

}  // namespace

box_reader::box_reader(const std::uint8_t* src, std::uint32_t source_size) : source(src), limit(source_size) {
    if (src == nullptr) {
        throw_invalid_buffer("buffer is null");
    }
    if (source_size < k_box_header_size) {
        throw_invalid_buffer("buffer size should be at least ", k_box_header_size);
    }
}

std::uint32_t box_reader::load_32(std::uint64_t at) const {
    std::uint32_t value;
    std::memcpy(&value, source + at, sizeof value);
    return value;
}

box_header box_reader::peek_header() const {
    if (!at_box()) {
        throw_invalid_buffer("can't read box header(", k_box_header_size, " bytes) at offset ", offset);
    }
    return {load_32(offset), load_32(offset + k_type_field)};
}

box_header box_reader::expect_box(std::uint32_t type, const char* message) const {
    const box_header header = peek_header();
    if (header.type != type) {
        throw_invalid_buffer(message, offset + k_type_field);
    }
    return header;
}

void box_reader::expect_whole_header(const box_header& header) const {
    if (header.size < k_box_header_size) {
        const char name[5] = {static_cast<char>(header.type), static_cast<char>(header.type >> 8),
                              static_cast<char>(header.type >> 16), static_cast<char>(header.type >> 24), '\0'};
        throw_invalid_buffer("'", name, "' box size expected to be at least ", k_box_header_size, " at offset ",
                             offset);
    }
}

void box_reader::read_pack() {
    const box_header header = expect_box(k_pack, "'pack' box expected at offset ");
    if (header.size > limit) {
        throw_invalid_buffer("pack box size(", header.size, ") is greater than buffer size(", limit, ")");
    }
    offset += k_box_header_size;
    limit = header.size;
}

void box_reader::read_icmp() {
    const box_header header = peek_header();
    expect_whole_header(header);
    const std::uint64_t end = offset + header.size;
    offset += k_box_header_size;
    read_plane();
    offset = std::max(offset, end);
}

void box_reader::read_plane() {
    read_sdat(read_sinf());
}

plane_info box_reader::read_sinf() {
    const box_header header = expect_box(k_sinf, "'sinf' box expected at offset ");
    if (header.size < k_sinf_layout) {
        throw_invalid_buffer("sinf box size expected to be at least ", k_sinf_layout, " bytes at offset ", offset);
    }
    const bool has_layout = header.size > k_sinf_layout;
    const std::uint32_t fields = has_layout ? k_sinf_size : k_sinf_layout;
    if (offset + fields > limit) {
        throw_invalid_buffer("can't read ", fields, " bytes at offset ", offset);
    }
    plane_info plane;
    plane.width = load_32(offset + k_sinf_width);
    plane.height = load_32(offset + k_sinf_height);
    plane.type = normalised_plane_type(load_32(offset + k_sinf_plane_type));
    plane.layout = has_layout ? source[offset + k_sinf_layout] : std::uint8_t{0};
    if (plane.layout > 1) {
        throw_invalid_buffer("Undefined value of frame layout: ", plane.layout);
    }
    offset += header.size;
    return plane;
}

void box_reader::read_sdat(const plane_info& plane) {
    const box_header header = expect_box(k_sdat, "'sdat' box expected at offset ");
    const wide least = least_sdat_size(plane);
    if (header.size < least) {
        throw_invalid_buffer("'sdat' box size expected to be at least ", least, " at offset ", offset);
    }
    // kept as is: only the least size is compared with the limit, a larger one may run past it
    if (offset + least > limit) {
        throw_invalid_buffer("can't read ", least, " bytes at offset ", offset + k_box_header_size);
    }
    const std::uint64_t end = offset + header.size;
    offset += k_box_header_size;

    plane_entry entry;
    static_cast<plane_info&>(entry) = plane;
    entry.size = header.size - k_box_header_size;
    if (plane.traits().holds == plane_class::stitched) {
        read_stitched(end);
        entry.offset = offset;  // kept as is: the place behind the boxes, not the first of them
    } else {
        entry.offset = offset;
        offset = end;
    }
    found.planes.push_back(entry);
}

void box_reader::read_stitched(std::uint64_t end) {
    while (offset + k_box_header_size <= end) {
        switch (peek_header().type) {
            case k_qcxf:
            case k_stch:
            case k_tile:
                read_wrap_box();
                break;
            default:
                skip_box();
        }
    }
}

void box_reader::read_wrap_box() {
    const box_header header = peek_header();
    expect_whole_header(header);
    found.wrap_boxes.push_back({header.type, header.size - k_box_header_size, offset + k_box_header_size});
    offset += header.size;
}

void box_reader::skip_box() {
    offset += std::max(peek_header().size, k_box_header_size);
}

}  // namespace container
