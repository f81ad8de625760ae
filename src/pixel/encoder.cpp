// SPDX-License-Identifier: BSD-3-Clause
#include "pixel/encoder.h"

#include "api/base/errors.h"
#include "api/base/validation.h"
#include "pixel/kernels/stream_copy.h"
#include "threading/worker_count.h"

namespace encoder {

using container::frame_layout_plan;
using container::plane_entry;

encoder_impl::encoder_impl(std::uint32_t thread_count) : executor(worker_count(thread_count)), alpha_coder(executor) {}

std::uint32_t encoder_impl::encode_frame(const QVRUncompressed_UncompressedParams_t& up,
                                         const QVRUncompressed_CompressedParams_t& cp, const std::uint8_t* src,
                                         std::uint32_t src_size, std::uint8_t* dst, std::uint32_t dst_size) {
    check_encoder_params(up, cp);
    const frame_geometry geometry(up);
    geometry.check_strides();
    if (geometry.total() > src_size) {
        throw_invalid_argument("src size is too small");
    }
    frame_layout_plan plan = container::plan_frame(up, cp);
    if (plan.total > dst_size) {
        throw_invalid_argument("dst size is too small");
    }
    const auto traffic = static_cast<std::uint64_t>(geometry.total() + plan.total);
    encode_planes(up, cp, geometry, plan, {src, src_size, dst, is_worth_streaming(traffic)});
    // Headers come last: they carry the size of the coded alpha plane.
    container::write_container(plan, dst, dst_size);
    return checked_narrow(plan.total);
}

void encoder_impl::encode_planes(const QVRUncompressed_UncompressedParams_t& up,
                                 const QVRUncompressed_CompressedParams_t& cp, const frame_geometry& geometry,
                                 frame_layout_plan& plan, const frame_buffers& frame) {
    for (const caller_plane& plane : geometry) {
        if (plane.role == plane_role::alpha) {
            encode_alpha_plane(up, cp, plane, plan, frame);
        } else {
            encode_colour_plane(up, cp, plane, plan, frame);
        }
    }
}

void encoder_impl::encode_colour_plane(const QVRUncompressed_UncompressedParams_t& up,
                                       const QVRUncompressed_CompressedParams_t& cp, const caller_plane& plane,
                                       frame_layout_plan& plan, const frame_buffers& frame) {
    const order_traits& order = traits_of_order(up.colorComponentOrder);
    const container::plane_roles roles = plan.roles();
    const plane_entry& stored = *stored_plane(roles, plane.role);
    const row_codec codec(order.map, up.componentType, plane, stored, frame.streams);

    // Alpha that is interleaved in the caller's rows is split off into its own plane, or on the way to being coded into
    // working memory; where the bitstream has no plane for it, it is dropped.
    const plane_entry* split = order.interleaves_alpha() ? roles.alpha : nullptr;
    const bool coded = split != nullptr && split->traits().holds == plane_class::coded_alpha;
    const std::uint64_t coded_bytes = coded ? static_cast<std::uint64_t>(split->size) : 0;
    std::uint8_t* const work = scratch.reserve(coded_bytes);

    row_span<std::uint8_t> alpha;
    if (split != nullptr) {
        alpha = {coded ? work : frame.dst + static_cast<std::uint64_t>(split->offset),
                 std::uint64_t{plane.width} * traits_of_type(up.componentType).bytes};
    }
    threaded_pack_rows(codec, plane.height, {frame.src + static_cast<std::uint64_t>(plane.offset), plane.stride},
                       {frame.dst + static_cast<std::uint64_t>(stored.offset), codec.stored_bytes()}, alpha);
    if (coded) {
        code_alpha(alpha_plane_description(up, cp.rleSlices), work, coded_bytes, plan, frame.dst);
    }
}

void encoder_impl::encode_alpha_plane(const QVRUncompressed_UncompressedParams_t& up,
                                      const QVRUncompressed_CompressedParams_t& cp, const caller_plane& plane,
                                      frame_layout_plan& plan, const frame_buffers& frame) {
    const plane_entry* stored = plan.roles().alpha;
    if (stored == nullptr) {
        return;  // this component type stores no alpha
    }
    const std::uint8_t* const source = frame.src + static_cast<std::uint64_t>(plane.offset);
    if (stored->traits().holds == plane_class::coded_alpha) {
        // Kept as is: beside an interleaved plane the coder is told of as many bytes as it may write, so that a stride
        // much wider than the row is refused.
        const bool beside_interleaved =
            traits_of_order(up.colorComponentOrder).planes == arrangement::interleaved_plus_alpha;
        const wide source_size = beside_interleaved ? stored->size : plane.size();
        code_alpha(alpha_plane_description(up, cp.rleSlices), source, static_cast<std::uint64_t>(source_size), plan,
                   frame.dst);
        return;
    }
    const row_codec codec(k_in_stream_order, up.componentType, plane, *stored, frame.streams);
    threaded_pack_rows(codec, plane.height, {source, plane.stride},
                       {frame.dst + static_cast<std::uint64_t>(stored->offset), codec.stored_bytes()}, {});
}

void encoder_impl::code_alpha(const rle_params& params, const std::uint8_t* source, std::uint64_t source_size,
                              frame_layout_plan& plan, std::uint8_t* dst) {
    const plane_entry& stored = plan.planes.back();
    const unsigned long size =
        alpha_coder.encode_frame(params, source, source_size, dst + static_cast<std::uint64_t>(stored.offset),
                                 static_cast<std::uint64_t>(stored.size));
    plan.set_last_plane_size(checked_narrow(size));
}

void encoder_impl::threaded_pack_rows(const row_codec& codec, std::uint32_t rows, row_span<const std::uint8_t> caller,
                                      row_span<std::uint8_t> stored, row_span<std::uint8_t> alpha) {
    if (codec.stored_bytes() == 0) {
        return;  // rows without pixels, of which there may be billions
    }
    run_row_chunks(executor, rows, [&](row_chunk chunk, std::uint32_t) { codec.pack(chunk, caller, stored, alpha); });
}

}  // namespace encoder
