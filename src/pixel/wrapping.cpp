// SPDX-License-Identifier: BSD-3-Clause
//
// The frame operations of encoder and decoder with payloads wrapped beside the planes.
#include "container/wrapping.h"

#include <cstring>
#include <vector>

#include "api/base/errors.h"
#include "api/base/validation.h"
#include "container/parse.h"
#include "pixel/decoder.h"
#include "pixel/encoder.h"

using container::box_entry;
using container::frame_layout_plan;

namespace {

void copy_bytes(std::uint8_t* to, const std::uint8_t* from, std::uint32_t size) {
    if (size != 0) {
        std::memcpy(to, from, size);
    }
}

// The alpha plane that stands beside a wrapped frame, in the caller's memory: for order 14 its own geometry, and for
// others, which only reading lets through, rows at the start of the buffer.
caller_plane lone_alpha_plane(const QVRUncompressed_UncompressedParams_t& up) {
    const std::uint64_t row = std::uint64_t{up.width} * traits_of_type(up.componentType).bytes;
    return {plane_role::alpha, up.width, up.height, row, up.rowBytes != 0 ? up.rowBytes : row, 0};
}

// The main plane has been compared with the caller's record, an alpha plane beside it has not. Rows of a raw one must
// be samples as the caller stores them, fit between his rows and be there; a coded one is bounded by its coder.
void check_raw_alpha(const container::plane_entry& stored, const caller_plane& caller, std::uint32_t type,
                     std::uint32_t src_size) {
    if (stored.traits().holds == plane_class::coded_alpha) {
        return;
    }
    if (traits_of_type(type).rule != narrowing::none) {
        throw_invalid_argument("planes with different bitdepth is not supported by this decoder");
    }
    const wide row = row_bytes(stored.type, stored.width);
    if (row > caller.stride || row * caller.height > src_size - stored.offset) {
        throw_invalid_argument("Alpha plane with different width or height is not supported by this decoder");
    }
}

}  // namespace

namespace encoder {

std::uint32_t encoder_impl::encode_and_wrap_frame(const QVRUncompressed_UncompressedParams_t& up,
                                                  const QVRUncompressed_CompressedParams_t& cp,
                                                  const QVRUncompressed_WrapParams_t* wraps, std::uint32_t count,
                                                  const std::uint8_t* src, std::uint32_t src_size,
                                                  const std::uint8_t* const* wrap_data, std::uint8_t* dst,
                                                  std::uint32_t dst_size) {
    const QVRUncompressed_WrapParams_t first = load_record(wraps);
    const bool stitched = first.wrapType == QVRUncompressed_WrapStitched;
    if (!stitched) {
        check_encoder_params(up, cp);
    }
    frame_layout_plan plan = container::plan_wrapped_frame(up, cp, wraps, count);
    if (plan.total > dst_size) {
        throw_invalid_argument("dst size is too small");
    }
    if (first.wrapType == QVRUncompressed_WrapQCX) {
        container::check_against_qcx(up, container::read_qcx_header(wrap_data[0], first.dataSize));
    }
    if (!stitched) {
        encode_wrapped_alpha(up, cp, plan, {src, src_size, dst});
    }
    const std::vector<box_entry>& boxes = stitched ? plan.stitch_boxes : plan.wrap_boxes;
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        copy_bytes(dst + boxes[i].offset, wrap_data[i], boxes[i].size);
    }
    container::write_container(plan, dst, dst_size);
    return checked_narrow(plan.total);
}

void encoder_impl::encode_wrapped_alpha(const QVRUncompressed_UncompressedParams_t& up,
                                        const QVRUncompressed_CompressedParams_t& cp, frame_layout_plan& plan,
                                        const frame_buffers& frame) {
    if (cp.alphaCompression != 0) {
        // The coder has checks of its own, with texts of its own.
        code_alpha(alpha_plane_description(up, cp.rleSlices), frame.src, frame.src_size, plan, frame.dst);
        return;
    }
    if (frame.src == nullptr) {
        throw_invalid_argument("src buffer is null");
    }
    const frame_geometry geometry(up);
    geometry.check_strides();
    if (geometry.total() > frame.src_size) {
        throw_invalid_argument("src size is too small");
    }
    encode_planes(up, cp, geometry, plan, frame);
}

}  // namespace encoder

namespace decoder {

std::uint32_t decoder_impl::decode_and_unwrap_frame(const QVRUncompressed_UncompressedParams_t& up,
                                                    const QVRUncompressed_WrapParams_t* wraps, std::uint32_t count,
                                                    const std::uint8_t* src, std::uint32_t src_size, std::uint8_t* dst,
                                                    std::uint32_t dst_size, std::uint8_t* const* wrap_dst) {
    const QVRUncompressed_WrapParams_t first = load_record(wraps);
    if (first.wrapType == QVRUncompressed_WrapStitched) {
        unwrap_stitched(first, count, src, src_size, wrap_dst);
        return 0;
    }
    return unwrap_qcx(up, first, count, {src, src_size, dst}, dst_size, wrap_dst);
}

void decoder_impl::unwrap_stitched(const QVRUncompressed_WrapParams_t& first, std::uint32_t count,
                                   const std::uint8_t* src, std::uint32_t src_size, std::uint8_t* const* wrap_dst) {
    const frame_layout_plan plan = container::parse_container(src, src_size);
    const std::vector<box_entry>& boxes = plan.wrap_boxes;
    container::check_box_count(plan, count);
    // Kept as is: of all chunks only the first is compared with its record.
    if (!boxes.empty() && boxes[0].size != first.dataSize) {
        throw_invalid_buffer("Extra box size is not equal wrap params size");
    }
    for (std::uint32_t i = 0; i < count; ++i) {
        container::check_payload(boxes[i], src_size);
    }
    for (std::uint32_t i = 0; i < count; ++i) {
        copy_bytes(wrap_dst[i], src + boxes[i].offset, boxes[i].size);
    }
}

std::uint32_t decoder_impl::unwrap_qcx(const QVRUncompressed_UncompressedParams_t& up,
                                       const QVRUncompressed_WrapParams_t& first, std::uint32_t count,
                                       const frame_buffers& frame, std::uint32_t dst_size,
                                       std::uint8_t* const* wrap_dst) {
    const frame_geometry geometry(up);
    geometry.check_strides();
    if (frame.dst == nullptr) {
        throw_invalid_argument("dst buffer is null");
    }
    if (geometry.total() > dst_size) {
        throw_invalid_argument("dst size is too small");
    }
    const frame_layout_plan plan = container::parse_container(frame.src, frame.src_size);
    if (count != 1) {
        throw_invalid_buffer("Only single QCX wrap chunk supported for decode");
    }
    container::check_box_count(plan, 1);
    const box_entry& box = plan.wrap_boxes[0];
    if (box.size != first.dataSize) {
        throw_invalid_buffer("'QCXF' box size is not equal wrap params size");
    }
    if (box.type == container::k_qcxf && first.wrapType != QVRUncompressed_WrapQCX) {
        throw_invalid_buffer("'QCXF' box type is not equal to wrap params type");
    }
    const container::plane_roles roles = plan.roles();
    if (roles.alpha == nullptr) {
        throw_invalid_buffer("Alpha plane is not found");
    }
    container::check_against_caller(plan, up);
    const caller_plane target = lone_alpha_plane(up);
    check_raw_alpha(*roles.alpha, target, up.componentType, frame.src_size);
    container::check_payload(box, frame.src_size);

    copy_bytes(wrap_dst[0], frame.src + box.offset, box.size);
    decode_alpha_plane(up, target, *roles.alpha, frame);
    return checked_narrow(geometry.total());
}

}  // namespace decoder
