// SPDX-License-Identifier: BSD-3-Clause
#include "container/frame_layout.h"

#include "api/base/errors.h"
#include "container/box_writer.h"
#include "rle/rle_params.h"

namespace container {

namespace {

// What stands before a plane's payload: its 'sinf' and the 'sdat' header, and the 'icmp' header when there is one.
constexpr std::uint32_t k_lone_plane_overhead = k_sinf_size + k_box_header_size;
constexpr std::uint32_t k_plane_overhead = k_lone_plane_overhead + k_box_header_size;

void write_sinf(box_writer& writer, const plane_entry& plane) {
    writer.write_header(k_sinf_size, k_sinf);
    writer.write_32(plane.width);
    writer.write_32(plane.height);
    writer.write_32(plane.type);
    writer.write_bytes(&plane.layout, 1);
}

void write_plane(box_writer& writer, const plane_entry& plane, const std::vector<box_entry>& stitch_boxes) {
    const std::uint32_t size = checked_narrow(plane.size);
    write_sinf(writer, plane);
    writer.write_header(size + k_box_header_size, k_sdat);
    if (plane.traits().holds != plane_class::stitched) {
        writer.skip(size);
        return;
    }
    for (const box_entry& box : stitch_boxes) {
        writer.write_header(box.size + k_box_header_size, box.type);
        writer.skip(box.size);
    }
}

}  // namespace

void plane_list::check_combination() const {
    std::array<std::uint32_t, k_most_planes> codes{};
    for (std::size_t i = 0; i < stored(); ++i) {
        codes[i] = entries[i].type;
    }
    if (!allowed_plane_sets(codes.data(), count)) {
        throw_invalid_argument("Invalid combination of planes");
    }
}

plane_roles frame_layout_plan::roles() const {
    plane_roles found;
    for (const plane_entry& plane : planes) {
        switch (plane.traits().holds) {
            case plane_class::unknown:
                throw_invalid_argument("unsupported plane type");
            case plane_class::cb:
                found.cb = &plane;
                break;
            case plane_class::cr:
                found.cr = &plane;
                break;
            case plane_class::alpha:
            case plane_class::coded_alpha:
                found.alpha = &plane;
                break;
            default:
                found.main = &plane;
        }
    }
    if (planes.size() == 1 && found.alpha != nullptr) {
        found.main = found.alpha;
    }
    return found;
}

void frame_layout_plan::set_last_plane_size(std::uint32_t size) {
    total = total - planes.back().size + size;
    planes.back().size = size;
}

void lay_out_frame(frame_layout_plan& plan) {
    wide position = k_box_header_size;
    for (box_entry& box : plan.wrap_boxes) {
        if (box.offset == 0) {
            box.offset = static_cast<std::uint64_t>(position + k_box_header_size);
        }
        position = wide{box.offset} + box.size;
    }
    const std::uint32_t overhead = plan.planes.size() == 1 ? k_lone_plane_overhead : k_plane_overhead;
    wide next = position + overhead;
    for (plane_entry& plane : plan.planes) {
        if (plane.size == 0) {
            plane.size = row_bytes(plane.type, plane.width) * plane.height;
        }
        if (plane.offset == 0) {
            plane.offset = next;
            next += overhead + plane.size;
        } else {
            // kept as is: no overhead is added behind a plane that already had its place
            next = plane.offset + plane.size;
        }
    }
    plan.total = plan.planes.back().offset + plan.planes.back().size;
}

void add_plane(frame_layout_plan& plan, std::uint32_t code, const QVRUncompressed_UncompressedParams_t& up,
               std::uint32_t slices) {
    plane_entry plane;
    plane.type = code;
    const bool chroma = plane.traits().is_chroma();
    plane.width = chroma ? half_up(up.width) : up.width;
    plane.height = chroma ? half_up(up.height) : up.height;
    plane.layout = static_cast<std::uint8_t>(up.frameLayout);
    if (plane.traits().holds == plane_class::coded_alpha) {
        plane.size = worst_case_payload_size({up.width, up.height, plane.traits().bits, slices, 0});
    }
    plan.planes.push_back(plane);
}

frame_layout_plan plan_frame(const QVRUncompressed_UncompressedParams_t& up,
                             const QVRUncompressed_CompressedParams_t& cp) {
    frame_layout_plan plan;
    for (const std::uint32_t code : format_planes(up.colorComponentOrder, up.componentType)) {
        if (code != 0) {
            add_plane(plan, cp.alphaCompression != 0 ? coded_form(code) : code, up, cp.rleSlices);
        }
    }
    plan.planes.check_combination();
    lay_out_frame(plan);
    return plan;
}

void write_container(const frame_layout_plan& plan, std::uint8_t* dst, std::uint32_t capacity) {
    if (plan.total > capacity) {
        throw_invalid_argument("buffer is too small");
    }
    box_writer writer(dst, capacity);
    writer.write_header(checked_narrow(plan.total), k_pack);
    for (const box_entry& box : plan.wrap_boxes) {
        writer.write_header(box.size + k_box_header_size, box.type);
        writer.skip(box.size);
    }
    for (const plane_entry& plane : plan.planes) {
        if (plan.planes.size() > 1) {
            writer.write_header(checked_narrow(plane.size) + k_plane_overhead, k_icmp);
        }
        write_plane(writer, plane, plan.stitch_boxes);
    }
}

}  // namespace container
