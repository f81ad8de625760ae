// SPDX-License-Identifier: BSD-3-Clause
#include "pixel/decoder.h"

#include <algorithm>

#include "api/base/errors.h"
#include "container/parse.h"
#include "pixel/kernels/stream_copy.h"
#include "threading/worker_count.h"

namespace decoder {

using container::plane_entry;

decoder_impl::decoder_impl(std::uint32_t thread_count)
    : executor(worker_count(thread_count)), alpha_decoder(executor) {}

std::uint32_t decoder_impl::decode_frame(const QVRUncompressed_UncompressedParams_t& up, const std::uint8_t* src,
                                         std::uint32_t src_size, std::uint8_t* dst, std::uint32_t dst_size) {
    const frame_geometry geometry(up);
    geometry.check_strides();
    if (geometry.total() > dst_size) {
        throw_invalid_argument("dst size is too small");
    }
    const container::frame_layout_plan plan = container::parse_container(src, src_size);
    container::check_plane_consistency(plan);
    container::check_against_caller(plan, up);

    const container::plane_roles roles = plan.roles();
    // Metadata may claim any size; what is read is about as much as what is written.
    const auto traffic = static_cast<std::uint64_t>(2 * geometry.total());
    const frame_buffers frame = {src, src_size, dst, is_worth_streaming(traffic)};
    for (const caller_plane& plane : geometry) {
        if (plane.role == plane_role::alpha) {
            decode_alpha_plane(up, plane, *roles.alpha, frame);
        } else {
            decode_colour_plane(up, plane, roles, frame);
        }
    }
    return checked_narrow(geometry.total());
}

void decoder_impl::decode_colour_plane(const QVRUncompressed_UncompressedParams_t& up, const caller_plane& plane,
                                       const container::plane_roles& roles, const frame_buffers& frame) {
    const order_traits& order = traits_of_order(up.colorComponentOrder);
    const plane_entry& stored = *stored_plane(roles, plane.role);
    const row_codec codec(order.map, up.componentType, plane, stored, frame.streams);

    // Alpha that the caller wants interleaved is merged from its plane, or when that is coded from working memory.
    const plane_entry* merged = order.interleaves_alpha() ? roles.alpha : nullptr;
    const bool coded = merged != nullptr && merged->traits().holds == plane_class::coded_alpha;
    const rle_params alpha_plane = alpha_plane_description(up, 0);
    const std::uint64_t coded_bytes = coded ? static_cast<std::uint64_t>(raw_plane_size(alpha_plane)) : 0;
    row_span<const std::uint8_t> alpha;
    if (coded) {
        std::uint8_t* const work = scratch.reserve(coded_bytes);
        decode_coded_alpha(alpha_plane, *merged, frame, work, threaded_rle_decoder::uncovered::clear);
        alpha = {work, row_stride(alpha_plane)};
    } else if (merged != nullptr) {
        alpha = {frame.src + static_cast<std::uint64_t>(merged->offset),
                 static_cast<std::uint64_t>(row_bytes(merged->type, merged->width))};
    }
    threaded_unpack_rows(codec, plane.height,
                         {frame.src + static_cast<std::uint64_t>(stored.offset), codec.stored_bytes()}, alpha,
                         {frame.dst + static_cast<std::uint64_t>(plane.offset), plane.stride});
}

void decoder_impl::decode_alpha_plane(const QVRUncompressed_UncompressedParams_t& up, const caller_plane& plane,
                                      const plane_entry& stored, const frame_buffers& frame) {
    std::uint8_t* const target = frame.dst + static_cast<std::uint64_t>(plane.offset);
    if (stored.traits().holds == plane_class::coded_alpha) {
        decode_coded_alpha(alpha_plane_description(up, 0), stored, frame, target,
                           threaded_rle_decoder::uncovered::keep);
        return;
    }
    const row_codec codec(k_in_stream_order, up.componentType, plane, stored, frame.streams);
    threaded_unpack_rows(codec, plane.height,
                         {frame.src + static_cast<std::uint64_t>(stored.offset), codec.stored_bytes()}, {},
                         {target, plane.stride});
}

void decoder_impl::decode_coded_alpha(const rle_params& params, const plane_entry& stored, const frame_buffers& frame,
                                      std::uint8_t* target, threaded_rle_decoder::uncovered rest) {
    // A coded plane may claim more than there is; what is there is decoded.
    const auto offset = static_cast<std::uint64_t>(stored.offset);
    const std::uint64_t payload =
        std::min<std::uint64_t>(static_cast<std::uint64_t>(stored.size), frame.src_size - offset);
    alpha_decoder.decode_frame(params, frame.src + offset, payload, target,
                               static_cast<std::uint64_t>(raw_plane_size(params)), rest);
}

void decoder_impl::threaded_unpack_rows(const row_codec& codec, std::uint32_t rows, row_span<const std::uint8_t> stored,
                                        row_span<const std::uint8_t> alpha, row_span<std::uint8_t> caller) {
    if (codec.stored_bytes() == 0) {
        return;  // rows without pixels, of which there may be billions
    }
    run_row_chunks(executor, rows, [&](row_chunk chunk, std::uint32_t) { codec.unpack(chunk, stored, alpha, caller); });
}

}  // namespace decoder
