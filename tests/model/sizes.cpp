// SPDX-License-Identifier: BSD-3-Clause
#include "sizes.h"

#include "rle.h"

namespace model {

exact packed_row_size(const frame_params& frame) {
    const exact width = frame.width;
    const exact odd = width % 2;
    if (frame.type == 5) {
        return ceil_div(width, 6) * 16;
    }
    const exact size = sample_bytes(frame.type);
    switch (frame.order) {
        case 1:
        case 15:
            return size * 2 * (width + odd);
        case 2:
        case 16:
            return size * (2 * width + odd);
        case 3:
        case 4:
        case 7:
        case 8:
        case 12:
            return size * 4 * width;
        case 5:
        case 6:
        case 9:
            return size * 3 * width;
        case 11:
            return size * (3 * width + odd);
        default:
            return 0;
    }
}

namespace {

exact plane_row(const frame_params& frame) {
    return exact(sample_bytes(frame.type)) * frame.width;
}

exact chroma_row(const frame_params& frame) {
    return exact(sample_bytes(frame.type)) * ceil_div(frame.width, 2);
}

void check_stride(const char* field, std::uint32_t given, exact needed) {
    if (given != 0 && given < needed) {
        throw failure(std::string(field) + " is too small, it should be at least " + decimal(needed) +
                      " according to uncompressed params");
    }
}

}  // namespace

exact first_stride(const frame_params& frame) {
    if (frame.row_bytes != 0) {
        return frame.row_bytes;
    }
    return is_planar(frame.order) ? plane_row(frame) : packed_row_size(frame);
}

exact second_stride(const frame_params& frame) {
    if (frame.row_bytes2 != 0) {
        return frame.row_bytes2;
    }
    return is_planar(frame.order) ? chroma_row(frame) : plane_row(frame);
}

void check_row_strides(const frame_params& frame) {
    if (is_planar(frame.order)) {
        check_stride("rowBytes", frame.row_bytes, plane_row(frame));
        if (frame.order != 14) {
            check_stride("rowBytes2", frame.row_bytes2, chroma_row(frame));
        }
        return;
    }
    check_stride("rowBytes", frame.row_bytes, packed_row_size(frame));
    if (frame.order == 15 || frame.order == 16) {
        check_stride("rowBytes2", frame.row_bytes2, plane_row(frame));
    }
}

void check_encoder_rules(const frame_params& frame, const stream_params& stream) {
    if (has_alpha(frame.order) && stream.alpha_compression != 0 && frame.type != 1 && frame.type != 2) {
        throw failure("Only 8 and 16 bit alpha supported for RLE compression");
    }
    const unsigned sub = subsampling(frame.order);
    if ((sub == 420 || sub == 422) && frame.width % 2 != 0) {
        throw failure("Width must be multiple of 2 for 422 and 420 subsampling");
    }
    if (sub == 420 && frame.height % 2 != 0) {
        throw failure("Height must be multiple of 2 for 420 subsampling");
    }
}

exact uncompressed_size_exact(const frame_params& frame) {
    const exact first = first_stride(frame) * frame.height;
    const exact chroma = second_stride(frame) * ceil_div(frame.height, 2);
    switch (frame.order) {
        case 14:
            return first;
        case 10:
            return first + 2 * chroma;
        case 13:
            return 2 * (first + chroma);
        case 15:
        case 16:
            return first + second_stride(frame) * frame.height;
        default:
            return first;
    }
}

exact frame_plan::total() const {
    exact end = 8;
    for (const planned_box& box : wraps) {
        end += 8 + box.payload;
    }
    const exact overhead = planes.size() == 1 ? 29 : 37;
    for (const planned_plane& plane : planes) {
        end += overhead + plane.payload;
    }
    return end;
}

namespace {

exact coded_alpha_bound(const frame_params& frame, const stream_params& stream, unsigned bits) {
    rle_params params;
    params.width = frame.width;
    params.height = frame.height;
    params.bit_depth = bits;
    params.slice_count = stream.rle_slices;
    return rle_worst_case_size(params);
}

planned_plane plan_plane(const frame_params& frame, const stream_params& stream, const code& name) {
    planned_plane plane;
    plane.name = name;
    plane.width = frame.width;
    plane.height = frame.height;
    const plane_role role = role_of(name);
    if (role == plane_role::cb || role == plane_role::cr) {
        plane.width = low32(ceil_div(frame.width, 2));
        plane.height = low32(ceil_div(frame.height, 2));
    }
    plane.layout = static_cast<std::uint8_t>(frame.frame_layout & 0xFF);
    plane.payload = is_coded_alpha(name) ? coded_alpha_bound(frame, stream, bits_of_code(name))
                                         : row_bytes(name, plane.width) * plane.height;
    return plane;
}

code coded_form(const code& alpha) {
    return "rl" + alpha.substr(2);
}

}  // namespace

frame_plan plan_frame(const frame_params& frame, const stream_params& stream) {
    std::vector<code> names = format_planes(frame.order, frame.type);
    if (stream.alpha_compression != 0 && role_of(names.back()) == plane_role::alpha) {
        names.back() = coded_form(names.back());
    }
    check_plane_set(names);
    frame_plan plan;
    for (const code& name : names) {
        plan.planes.push_back(plan_plane(frame, stream, name));
    }
    return plan;
}

void check_wrap_records(const std::vector<wrap_params>& wraps, std::uint32_t count) {
    for (std::uint32_t i = 0; i < count; ++i) {
        if (wraps.at(i).type == 0) {
            throw failure("Unknown wrap type");
        }
    }
}

namespace {

frame_plan plan_stitched(const frame_params& frame, const std::vector<wrap_params>& wraps, std::uint32_t count) {
    frame_plan plan;
    planned_plane plane;
    plane.name = "stch";
    plane.width = frame.width;
    plane.height = frame.height;
    plane.layout = static_cast<std::uint8_t>(frame.frame_layout & 0xFF);
    for (std::uint32_t i = 0; i < count; ++i) {
        plan.stitched.push_back({i == 0 ? "stch" : "tile", wraps.at(i).size});
        plane.payload += exact(wraps.at(i).size) + 8;
    }
    plan.planes.push_back(plane);
    return plan;
}

}  // namespace

frame_plan plan_wrapped_frame(const frame_params& frame, const stream_params& stream,
                              const std::vector<wrap_params>& wraps, std::uint32_t count) {
    check_wrap_records(wraps, count);
    const std::uint32_t first_type = wraps.at(0).type;
    if (first_type == 1 && count != 1) {
        throw failure("Single QCX wrap params expected");
    }
    if (first_type == 2) {
        return plan_stitched(frame, wraps, count);
    }
    if (frame.order != 14 || (frame.type != 1 && frame.type != 2)) {
        throw failure("8/16 bit single alpha plane expected");
    }
    frame_plan plan = plan_frame(frame, stream);
    if (first_type == 1) {
        plan.wraps.push_back({"QCXF", wraps.at(0).size});
    }
    return plan;
}

std::uint32_t uncompressed_size(const frame_params& frame) {
    return low32(uncompressed_size_exact(frame));
}

std::uint32_t compressed_size(const frame_params& frame, const stream_params& stream) {
    try {
        return low32(plan_frame(frame, stream).total());
    } catch (const failure&) {
        return 0;
    }
}

std::uint32_t compressed_wrap_size(const frame_params& frame, const stream_params& stream,
                                   const std::vector<wrap_params>& wraps, std::uint32_t count) {
    try {
        return low32(plan_wrapped_frame(frame, stream, wraps, count).total());
    } catch (const failure&) {
        return 0;
    }
}

}  // namespace model
