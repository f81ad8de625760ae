// SPDX-License-Identifier: BSD-3-Clause
#include "frame.h"

#include "packing.h"
#include "sizes.h"

namespace model {

namespace {

bool alpha_in_pixels(std::uint32_t order) {
    return has_alpha(order) && !is_planar(order) && order != 15 && order != 16;
}

bytes take(view source, exact start, exact length) {
    bytes result;
    for (exact i = 0; i < length; ++i) {
        result.push_back(source.at(start + i));
    }
    return result;
}

void put(target raw, exact start, const bytes& data) {
    for (std::size_t i = 0; i < data.size(); ++i) {
        raw.at(start + i) = data[i];
    }
}

view part(view source, exact start, exact length) {
    return {source.data + static_cast<std::size_t>(start), static_cast<std::size_t>(length)};
}

std::uint32_t half_up(std::uint32_t value) {
    return low32(ceil_div(value, 2));
}

exact component_row(const frame_params& frame) {
    return exact(sample_bytes(frame.type)) * frame.width;
}

// Where the planes of a caller buffer start.
struct caller_planes {
    exact cb = 0;
    exact cr = 0;
    exact alpha = 0;
};

caller_planes place_planes(const frame_params& frame) {
    caller_planes at;
    const exact first = first_stride(frame) * frame.height;
    at.alpha = first;
    if (frame.order == 14) {
        at.alpha = 0;
    } else if (is_planar(frame.order)) {
        const exact chroma = second_stride(frame) * half_up(frame.height);
        at.cb = first;
        at.cr = first + chroma;
        at.alpha = first + 2 * chroma;
    }
    return at;
}

// In planar orders the alpha plane shares the stride of the first plane.
exact alpha_stride(const frame_params& frame) {
    return is_planar(frame.order) ? first_stride(frame) : second_stride(frame);
}

}  // namespace

rle_params alpha_params(const frame_params& frame, std::uint32_t slices) {
    rle_params params;
    params.width = frame.width;
    params.height = frame.height;
    params.bit_depth = bits_of_type(frame.type);
    params.slice_count = slices;
    if (frame.order == 13 || frame.order == 14) {
        params.row_bytes = frame.row_bytes;
    } else if (frame.order == 15 || frame.order == 16) {
        params.row_bytes = frame.row_bytes2;
    }
    return params;
}

bytes pack_plane(std::uint32_t type, std::uint32_t width, std::uint32_t height, view source, exact start,
                 exact stride) {
    bytes plane;
    const exact row = exact(sample_bytes(type)) * width;
    for (std::uint32_t y = 0; row != 0 && y < height; ++y) {
        append(plane, pack_plane_row(type, take(source, start + stride * y, row)));
    }
    return plane;
}

void unpack_plane(std::uint32_t type, const parsed_plane& plane, view source, target raw, exact start, exact stride) {
    const exact row = row_bytes(plane.name, plane.width);
    for (std::uint32_t y = 0; row != 0 && y < plane.height; ++y) {
        put(raw, start + stride * y, unpack_plane_row(type, plane.width, take(source, plane.offset + row * y, row)));
    }
}

view payload_of(view source, const parsed_plane& plane) {
    const exact rest = plane.offset < source.size ? source.size - plane.offset : 0;
    return part(source, plane.offset, rest < plane.size ? rest : exact(plane.size));
}

namespace {

bytes encode_alpha_plane(const frame_params& frame, const stream_params& stream, const planned_plane& plane,
                         view source) {
    const exact start = place_planes(frame).alpha;
    if (!is_coded_alpha(plane.name)) {
        return pack_plane(frame.type, frame.width, frame.height, source, start, alpha_stride(frame));
    }
    // The coder is told of one plane in planar orders. For a separate plane
    // behind interleaved rows it is told of as many bytes as the payload may
    // take, which a very wide stride exceeds.
    const exact length = is_planar(frame.order) ? first_stride(frame) * frame.height : plane.payload;
    const rle_params params = alpha_params(frame, stream.rle_slices);
    check_rle_params(params);
    if (rle_raw_size(params) > length) {
        throw failure("src buffer is too small according to metadata");
    }
    return rle_encode(params, part(source, start, rle_raw_size(params)), plane.payload);
}

std::vector<bytes> encode_planar(const frame_params& frame, const stream_params& stream, const frame_plan& plan,
                                 view source) {
    const caller_planes at = place_planes(frame);
    const std::uint32_t cw = half_up(frame.width);
    const std::uint32_t ch = half_up(frame.height);
    std::vector<bytes> payloads;
    if (plan.planes.size() > 1) {
        payloads.push_back(pack_plane(frame.type, frame.width, frame.height, source, 0, first_stride(frame)));
        payloads.push_back(pack_plane(frame.type, cw, ch, source, at.cb, second_stride(frame)));
        payloads.push_back(pack_plane(frame.type, cw, ch, source, at.cr, second_stride(frame)));
    }
    if (role_of(plan.planes.back().name) == plane_role::alpha) {
        payloads.push_back(encode_alpha_plane(frame, stream, plan.planes.back(), source));
    }
    return payloads;
}

std::vector<bytes> encode_interleaved(const frame_params& frame, const stream_params& stream, const frame_plan& plan,
                                      view source) {
    bytes colour;
    bytes alpha;
    const exact row = packed_row_size(frame);
    for (std::uint32_t y = 0; row != 0 && y < frame.height; ++y) {
        const stored_row stored =
            pack_interleaved_row(frame.order, frame.type, frame.width, take(source, first_stride(frame) * y, row));
        append(colour, stored.colour);
        append(alpha, stored.alpha);
    }
    std::vector<bytes> payloads = {colour};
    const planned_plane& last = plan.planes.back();
    if (role_of(last.name) != plane_role::alpha) {
        return payloads;
    }
    if (!alpha_in_pixels(frame.order)) {
        payloads.push_back(encode_alpha_plane(frame, stream, last, source));
    } else if (is_coded_alpha(last.name)) {
        const rle_params params = alpha_params(frame, stream.rle_slices);
        check_rle_params(params);
        payloads.push_back(rle_encode(params, {alpha.data(), alpha.size()}, last.payload));
    } else {
        payloads.push_back(alpha);
    }
    return payloads;
}

}  // namespace

bytes encode_frame(const frame_params& frame, const stream_params& stream, view source, exact capacity) {
    check_encoder_rules(frame, stream);
    check_row_strides(frame);
    if (uncompressed_size_exact(frame) > source.size) {
        throw failure("src size is too small");
    }
    const frame_plan plan = plan_frame(frame, stream);
    if (plan.total() > capacity) {
        throw failure("dst size is too small");
    }
    const std::vector<bytes> payloads = is_planar(frame.order) ? encode_planar(frame, stream, plan, source)
                                                               : encode_interleaved(frame, stream, plan, source);
    return write_frame(plan, {}, payloads, {});
}

namespace {

void check_depths_and_layouts(const parsed_frame& stream) {
    const parsed_plane& first = stream.planes.front();
    for (const parsed_plane& plane : stream.planes) {
        if (bits_of_code(plane.name) != bits_of_code(first.name)) {
            throw failure("planes with different bitdepth is not supported by this decoder");
        }
        if (plane.layout != first.layout) {
            throw failure("planes with different frame layout is not supported by this decoder");
        }
    }
}

bool same_dimensions(const parsed_plane& one, const parsed_plane& other) {
    return one.width == other.width && one.height == other.height;
}

bool is_half(const parsed_plane& chroma, const parsed_plane& luma) {
    return chroma.width == half_up(luma.width) && chroma.height == half_up(luma.height);
}

void check_planes(const parsed_frame& stream) {
    const char* const alpha_text = "Alpha plane with different width or height is not supported by this decoder";
    check_depths_and_layouts(stream);
    if (stream.planes.size() == 2 && !same_dimensions(stream.planes[0], stream.planes[1])) {
        throw failure(alpha_text);
    }
    if (stream.planes.size() < 3) {
        return;
    }
    const parsed_plane& luma = main_plane(stream);
    if (!is_half(*find_plane(stream, plane_role::cb), luma)) {
        throw failure("Cb plane width and hight should be half of luma");
    }
    if (!is_half(*find_plane(stream, plane_role::cr), luma)) {
        throw failure("Cr plane width and hight should be half of luma");
    }
    if (stream.planes.size() >= 4 && !same_dimensions(*find_plane(stream, plane_role::alpha), luma)) {
        throw failure(alpha_text);
    }
}

target part(target raw, exact start) {
    return {raw.data + static_cast<std::size_t>(start), raw.size - static_cast<std::size_t>(start)};
}

void decode_alpha_plane(const frame_params& frame, const parsed_plane& plane, view source, target raw) {
    const exact start = place_planes(frame).alpha;
    if (is_coded_alpha(plane.name)) {
        const rle_params params = alpha_params(frame, 0);
        check_rle_params(params);
        rle_decode(params, payload_of(source, plane), part(raw, start));
    } else {
        unpack_plane(frame.type, plane, source, raw, start, alpha_stride(frame));
    }
}

void decode_planar(const frame_params& frame, const parsed_frame& stream, view source, target raw) {
    const caller_planes at = place_planes(frame);
    if (stream.planes.size() > 1) {
        unpack_plane(frame.type, main_plane(stream), source, raw, 0, first_stride(frame));
        unpack_plane(frame.type, *find_plane(stream, plane_role::cb), source, raw, at.cb, second_stride(frame));
        unpack_plane(frame.type, *find_plane(stream, plane_role::cr), source, raw, at.cr, second_stride(frame));
    }
    if (has_alpha(frame.order)) {
        decode_alpha_plane(frame, *find_plane(stream, plane_role::alpha), source, raw);
    }
}

// The alpha rows that are merged into the caller's pixels. Rows that a coded
// plane does not name are zero.
bytes gather_alpha(const frame_params& frame, const parsed_plane& plane, view source) {
    if (!is_coded_alpha(plane.name)) {
        return take(source, plane.offset, row_bytes(plane.name, plane.width) * plane.height);
    }
    const rle_params params = alpha_params(frame, 0);
    check_rle_params(params);
    bytes rows(static_cast<std::size_t>(rle_raw_size(params)), 0);
    rle_decode(params, payload_of(source, plane), {rows.data(), rows.size()});
    return rows;
}

void decode_interleaved(const frame_params& frame, const parsed_frame& stream, view source, target raw) {
    const parsed_plane& colour = main_plane(stream);
    bytes alpha;
    if (alpha_in_pixels(frame.order)) {
        alpha = gather_alpha(frame, *find_plane(stream, plane_role::alpha), source);
    } else if (has_alpha(frame.order)) {
        decode_alpha_plane(frame, *find_plane(stream, plane_role::alpha), source, raw);
    }
    const bool fixed = frame.type == 7 && bits_of_code(colour.name) == 16;
    const exact stored = row_bytes(colour.name, colour.width);
    const auto length = static_cast<std::size_t>(packed_row_size(frame));
    const exact alpha_row = component_row(frame);
    for (std::uint32_t y = 0; length != 0 && y < frame.height; ++y) {
        stored_row row;
        row.colour = take(source, colour.offset + stored * y, stored);
        if (!alpha.empty()) {
            row.alpha = take({alpha.data(), alpha.size()}, alpha_row * y, alpha_row);
        }
        put(raw, first_stride(frame) * y,
            unpack_interleaved_row(frame.order, frame.type, frame.width, row, length, fixed));
    }
}

}  // namespace

std::uint32_t decode_frame(const frame_params& frame, view source, target raw) {
    check_row_strides(frame);
    if (uncompressed_size_exact(frame) > raw.size) {
        throw failure("dst size is too small");
    }
    const parsed_frame stream = parse_frame(source);
    check_planes(stream);
    check_consistency(stream, frame);
    if (is_planar(frame.order)) {
        decode_planar(frame, stream, source, raw);
    } else {
        decode_interleaved(frame, stream, source, raw);
    }
    return uncompressed_size(frame);
}

}  // namespace model
