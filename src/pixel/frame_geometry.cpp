// SPDX-License-Identifier: BSD-3-Clause
#include "pixel/frame_geometry.h"

#include "api/base/errors.h"
#include "api/base/pixel_format.h"

frame_geometry::frame_geometry(const QVRUncompressed_UncompressedParams_t& up) {
    const order_traits& order = traits_of_order(up.colorComponentOrder);
    const std::uint64_t sample_bytes = traits_of_type(up.componentType).bytes;
    const std::uint64_t plane_row = up.width * sample_bytes;
    switch (order.planes) {
        case arrangement::planar_420:
            add(plane_role::main, up.width, up.height, plane_row, up.rowBytes);
            for (const plane_role chroma : {plane_role::cb, plane_role::cr}) {
                add(chroma, half_up(up.width), half_up(up.height), half_up(up.width) * sample_bytes, up.rowBytes2);
            }
            if (order.has_alpha) {
                add(plane_role::alpha, up.width, up.height, plane_row, up.rowBytes);
            }
            break;
        case arrangement::alpha_only:
            add(plane_role::alpha, up.width, up.height, plane_row, up.rowBytes);
            break;
        case arrangement::interleaved:
        case arrangement::interleaved_plus_alpha:
            add(plane_role::main, up.width, up.height,
                static_cast<std::uint64_t>(interleaved_row_bytes(up.colorComponentOrder, up.componentType, up.width)),
                up.rowBytes);
            if (order.planes == arrangement::interleaved_plus_alpha) {
                add(plane_role::alpha, up.width, up.height, plane_row, up.rowBytes2);
            }
    }
}

void frame_geometry::add(plane_role role, std::uint32_t width, std::uint32_t height, std::uint64_t row_bytes,
                         std::uint32_t stride) {
    planes[count] = {role, width, height, row_bytes, stride != 0 ? stride : row_bytes, total()};
    ++count;
}

wide frame_geometry::total() const {
    return count == 0 ? 0 : planes[count - 1].offset + planes[count - 1].size();
}

void frame_geometry::check_strides() const {
    // The second stride is that of the second plane, whichever it is; planes behind share one of the two.
    constexpr const char* k_fields[] = {"rowBytes", "rowBytes2"};
    for (std::size_t i = 0; i < count && i < 2; ++i) {
        if (planes[i].stride < planes[i].row_bytes) {
            throw_invalid_argument(k_fields[i], " is too small, it should be at least ", planes[i].row_bytes,
                                   " according to uncompressed params");
        }
    }
}

const container::plane_entry* stored_plane(const container::plane_roles& roles, plane_role role) {
    switch (role) {
        case plane_role::main:
            return roles.main;
        case plane_role::cb:
            return roles.cb;
        case plane_role::cr:
            return roles.cr;
        case plane_role::alpha:
            return roles.alpha;
    }
    return nullptr;
}

rle_params alpha_plane_description(const QVRUncompressed_UncompressedParams_t& up, std::uint32_t slices) {
    std::uint32_t row_bytes = 0;
    switch (traits_of_order(up.colorComponentOrder).planes) {
        case arrangement::planar_420:
        case arrangement::alpha_only:
            // Order 10 has no alpha and keeps the default.
            row_bytes = traits_of_order(up.colorComponentOrder).has_alpha ? up.rowBytes : 0;
            break;
        case arrangement::interleaved_plus_alpha:
            row_bytes = up.rowBytes2;
            break;
        case arrangement::interleaved:
            break;
    }
    return {up.width, up.height, traits_of_type(up.componentType).bits, slices, row_bytes};
}
