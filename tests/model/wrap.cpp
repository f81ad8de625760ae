// SPDX-License-Identifier: BSD-3-Clause
#include "wrap.h"

#include "rle.h"
#include "sizes.h"

namespace model {

namespace {

struct qcx_info {
    bool alpha = false;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    bool interlaced = false;
};

// Header fields of a QCX frame are big-endian.
std::uint32_t big_endian(view data, unsigned start, unsigned count) {
    std::uint32_t value = 0;
    for (unsigned i = 0; i < count; ++i) {
        value = value << 8 | data.at(start + i);
    }
    return value;
}

qcx_info parse_qcx(view data) {
    if (data.size < 45) {
        throw failure("Size is too small to parse QCX header");
    }
    qcx_info info;
    info.alpha = (data.at(7) & 1) != 0;
    switch (big_endian(data, 40, 4)) {
        case 1235:
        case 1237:
        case 1238:
        case 1253:
        case 1256:
            info.width = 1920;
            info.height = 1080;
            info.interlaced = false;
            break;
        case 1241:
        case 1242:
        case 1243:
            info.width = 1920;
            info.height = 1080;
            info.interlaced = true;
            break;
        case 1244:
        case 1260:
            info.width = 1440;
            info.height = 1080;
            info.interlaced = true;
            break;
        case 1259:
            info.width = 1440;
            info.height = 1080;
            info.interlaced = false;
            break;
        case 1250:
        case 1251:
        case 1252:
            info.width = 1280;
            info.height = 720;
            info.interlaced = false;
            break;
        case 1258:
            info.width = 960;
            info.height = 720;
            info.interlaced = false;
            break;
        case 1270:
        case 1271:
        case 1272:
        case 1273:
        case 1274:
        case 1300:
        case 1301:
            info.width = big_endian(data, 26, 2);
            info.height = big_endian(data, 24, 2);
            info.interlaced = false;
            break;
        default:
            throw failure("Invalid compression ID in QCX header");
    }
    return info;
}

void check_qcx(const qcx_info& info, const frame_params& frame) {
    if (info.alpha) {
        throw failure("Can't wrap uncompressed alpha and QCX with alpha flag set");
    }
    if (info.width != frame.width) {
        throw failure("Uncompressed params width " + decimal(frame.width) + " is not equal QCX width " +
                      decimal(info.width));
    }
    if (info.height != frame.height) {
        throw failure("Uncompressed params height " + decimal(frame.height) + " is not equal QCX height " +
                      decimal(info.height));
    }
    if (info.interlaced && frame.frame_layout != 1) {
        throw failure("Uncompressed params frame layout is not compatible with interlaced QCX");
    }
    if (!info.interlaced && frame.frame_layout != 0) {
        throw failure("Uncompressed params frame layout is not compatible with progressive QCX");
    }
}

bytes copy_of(view data) {
    return data.size == 0 ? bytes() : bytes(data.data, data.data + data.size);
}

bytes encode_lone_alpha(const frame_params& frame, const stream_params& stream, const planned_plane& plane,
                        view source) {
    if (is_coded_alpha(plane.name)) {
        return rle_encode(alpha_params(frame, stream.rle_slices), source, plane.payload);
    }
    if (source.data == nullptr) {
        throw failure("src buffer is null");
    }
    check_row_strides(frame);
    if (uncompressed_size_exact(frame) > source.size) {
        throw failure("src size is too small");
    }
    return pack_plane(frame.type, frame.width, frame.height, source, 0, first_stride(frame));
}

}  // namespace

bytes encode_and_wrap(const frame_params& frame, const stream_params& stream, const std::vector<wrap_params>& wraps,
                      std::uint32_t count, view source, const std::vector<view>& payloads, exact capacity) {
    const std::uint32_t first_type = wraps.at(0).type;
    if (first_type != 2) {
        check_encoder_rules(frame, stream);
    }
    const frame_plan plan = plan_wrapped_frame(frame, stream, wraps, count);
    if (plan.total() > capacity) {
        throw failure("dst size is too small");
    }
    std::vector<bytes> chunks;
    for (std::size_t i = 0; i < plan.wraps.size() + plan.stitched.size(); ++i) {
        chunks.push_back(copy_of(payloads.at(i)));
    }
    if (first_type == 2) {
        return write_frame(plan, {}, {}, chunks);
    }
    if (first_type == 1) {
        check_qcx(parse_qcx(payloads.at(0)), frame);
    }
    return write_frame(plan, chunks, {encode_lone_alpha(frame, stream, plan.planes.back(), source)}, {});
}

std::uint32_t read_wrap_count(view source) {
    try {
        return low32(parse_frame(source).wraps.size());
    } catch (const failure&) {
        return 0;
    }
}

namespace {

std::uint32_t type_of_box(const std::string& type) {
    if (type == "QCXF") {
        return 1;
    }
    return type == "stch" ? 2 : 3;
}

bytes copy_payload(view source, const parsed_box& box) {
    if (exact(box.offset) + box.size > source.size) {
        throw failure("can't read " + decimal(box.size) + " bytes at offset " + decimal(box.offset));
    }
    return copy_of({source.data + box.offset, box.size});
}

std::string found_text(std::size_t found, std::uint32_t expected) {
    return decimal(found) + " wrap boxes found in bytestream, but " + decimal(expected) +
           " expected according to wrap params";
}

}  // namespace

wrap_metadata read_wrap_metadata(view source, std::uint32_t count) {
    const parsed_frame stream = parse_frame(source);
    wrap_metadata result;
    result.frame = metadata_of(stream);
    if (count > stream.wraps.size()) {
        result.failure_text =
            "Can't read " + decimal(count) + " wrap boxes, only " + decimal(stream.wraps.size()) + " found";
        return result;
    }
    for (std::uint32_t i = 0; i < count; ++i) {
        result.wraps.push_back({type_of_box(stream.wraps[i].type), stream.wraps[i].size});
    }
    return result;
}

namespace {

unwrapped unwrap_stitched(const std::vector<wrap_params>& wraps, std::uint32_t count, view source) {
    const parsed_frame stream = parse_frame(source);
    if (count > stream.wraps.size()) {
        throw failure(found_text(stream.wraps.size(), count));
    }
    if (!stream.wraps.empty() && stream.wraps[0].size != wraps.at(0).size) {
        throw failure("Extra box size is not equal wrap params size");
    }
    unwrapped result;
    for (std::uint32_t i = 0; i < count; ++i) {
        result.payloads.push_back(copy_payload(source, stream.wraps[i]));
    }
    return result;
}

void check_wrapped_frame(const parsed_frame& stream, const wrap_params& first, std::uint32_t count) {
    if (count != 1) {
        throw failure("Only single QCX wrap chunk supported for decode");
    }
    if (stream.wraps.empty()) {
        throw failure(found_text(0, 1));
    }
    if (stream.wraps[0].size != first.size) {
        throw failure("'QCXF' box size is not equal wrap params size");
    }
    if (stream.wraps[0].type == "QCXF" && first.type != 1) {
        throw failure("'QCXF' box type is not equal to wrap params type");
    }
    if (find_plane(stream, plane_role::alpha) == nullptr) {
        throw failure("Alpha plane is not found");
    }
}

exact lone_alpha_stride(const frame_params& frame) {
    return frame.row_bytes != 0 ? exact(frame.row_bytes) : exact(sample_bytes(frame.type)) * frame.width;
}

// A raw alpha plane beside other planes is copied by its own rows, as many as
// the caller's frame has. What would not fit there, or is not there, is
// refused; a coded plane does not ask what its description says.
void copy_raw_alpha(const frame_params& frame, const parsed_plane& alpha, view source, target raw) {
    if (frame.type >= 3 && frame.type <= 5) {
        throw failure("planes with different bitdepth is not supported by this decoder");
    }
    const exact row = row_bytes(alpha.name, alpha.width);
    const exact stride = lone_alpha_stride(frame);
    if (row > stride || row * frame.height > source.size - alpha.offset) {
        throw failure("Alpha plane with different width or height is not supported by this decoder");
    }
    for (std::uint32_t y = 0; row != 0 && y < frame.height; ++y) {
        for (exact x = 0; x < row; ++x) {
            raw.at(stride * y + x) = source.at(alpha.offset + row * y + x);
        }
    }
}

}  // namespace

unwrapped decode_and_unwrap(const frame_params& frame, const std::vector<wrap_params>& wraps, std::uint32_t count,
                            view source, target raw) {
    if (wraps.at(0).type == 2) {
        return unwrap_stitched(wraps, count, source);
    }
    check_row_strides(frame);
    if (raw.data == nullptr) {
        throw failure("dst buffer is null");
    }
    if (uncompressed_size_exact(frame) > raw.size) {
        throw failure("dst size is too small");
    }
    const parsed_frame stream = parse_frame(source);
    check_wrapped_frame(stream, wraps.at(0), count);
    check_consistency(stream, frame);
    const parsed_plane& alpha = *find_plane(stream, plane_role::alpha);
    unwrapped result;
    if (is_coded_alpha(alpha.name)) {
        result.payloads.push_back(copy_payload(source, stream.wraps[0]));
        rle_decode(alpha_params(frame, 0), payload_of(source, alpha), raw);
    } else {
        copy_raw_alpha(frame, alpha, source, raw);
        result.payloads.push_back(copy_payload(source, stream.wraps[0]));
    }
    result.written = uncompressed_size(frame);
    return result;
}

}  // namespace model
