// SPDX-License-Identifier: BSD-3-Clause
#include "container/parse.h"

#include <utility>

#include "api/base/errors.h"
#include "api/base/pixel_format.h"
#include "container/box_reader.h"

namespace container {

namespace {

void read_children(box_reader& reader) {
    while (reader.at_box()) {
        switch (reader.peek_header().type) {
            case k_sinf:
                if (!reader.found.planes.empty()) {
                    throw_invalid_buffer("only single 'sinf' box allowed outside of 'icmp' box");
                }
                reader.read_plane();
                break;
            case k_icmp:
                reader.read_icmp();
                break;
            case k_qcxf:
                reader.read_wrap_box();
                break;
            default:
                reader.skip_box();
        }
    }
}

// The order that a frame reads as: of all orders that the planes can be put into, one for each kind of frame.
struct metadata_order {
    plane_class main;
    std::uint32_t order;
    std::uint32_t order_with_alpha;
};

constexpr metadata_order k_metadata_orders[] = {
    {plane_class::alpha, 14, 14},    {plane_class::coded_alpha, 14, 14}, {plane_class::ycbcr_422, 2, 11},
    {plane_class::ycbcr_444, 9, 12}, {plane_class::rgb, 5, 3},           {plane_class::luma, 10, 13},
    {plane_class::stitched, 0, 0},
};

const metadata_order& order_of_main_plane(const plane_info* main) {
    for (const metadata_order& row : k_metadata_orders) {
        if (main != nullptr && row.main == main->traits().holds) {
            return row;
        }
    }
    throw_invalid_argument("Plane type is not supported");
}

bool is_half_of(const plane_info& chroma, const plane_info& luma) {
    return chroma.width == half_up(luma.width) && chroma.height == half_up(luma.height);
}

// Every plane of the caller's format must be there; surplus planes are fine.
void check_plane_match(const plane_list& planes, const QVRUncompressed_UncompressedParams_t& up) {
    const plane_codes& wanted = format_planes(up.colorComponentOrder, up.componentType);
    bool matches = traits_of_order(up.colorComponentOrder).planes != arrangement::alpha_only || planes.size() == 1;
    for (const std::uint32_t code : wanted) {
        bool served = code == 0;
        for (const plane_entry& plane : planes) {
            served = served || plane_serves(plane.type, code);
        }
        matches = matches && served;
    }
    if (!matches) {
        throw_invalid_argument("src metadata type is incompatible with color component order or component type");
    }
}

}  // namespace

frame_layout_plan parse_container(const std::uint8_t* source, std::uint32_t source_size) {
    box_reader reader(source, source_size);
    reader.read_pack();
    read_children(reader);
    if (reader.found.planes.empty()) {
        throw_invalid_buffer("at least one 'sinf' and one 'sdat' box expected");
    }
    try {
        reader.found.planes.check_combination();
    } catch (const invalid_argument& refused) {
        throw_invalid_buffer(refused.what());  // here it is the bitstream that is at fault
    }
    lay_out_frame(reader.found);
    return std::move(reader.found);
}

QVRUncompressed_UncompressedParams_t read_metadata(const frame_layout_plan& plan) {
    const plane_roles roles = plan.roles();
    const metadata_order& orders = order_of_main_plane(roles.main);
    const plane_info& main = *roles.main;
    const bool with_alpha = plan.planes.size() == 2 || plan.planes.size() == 4;
    QVRUncompressed_UncompressedParams_t up{};
    up.size = sizeof up;
    up.colorComponentOrder = with_alpha ? orders.order_with_alpha : orders.order;
    up.componentType = main.traits().component_type;
    up.width = main.width;
    up.height = main.height;
    up.frameLayout = main.layout;
    return up;
}

void check_plane_consistency(const frame_layout_plan& plan) {
    const plane_list& planes = plan.planes;
    for (const plane_entry& plane : planes) {
        if (plane.traits().bits != planes[0].traits().bits) {
            throw_invalid_argument("planes with different bitdepth is not supported by this decoder");
        }
        if (plane.layout != planes[0].layout) {
            throw_invalid_argument("planes with different frame layout is not supported by this decoder");
        }
    }
    const plane_roles roles = plan.roles();
    if (planes.size() >= 3) {
        if (!is_half_of(*roles.cb, *roles.main)) {
            throw_invalid_argument("Cb plane width and hight should be half of luma");
        }
        if (!is_half_of(*roles.cr, *roles.main)) {
            throw_invalid_argument("Cr plane width and hight should be half of luma");
        }
    }
    if (roles.alpha != nullptr &&
        (roles.alpha->width != roles.main->width || roles.alpha->height != roles.main->height)) {
        throw_invalid_argument("Alpha plane with different width or height is not supported by this decoder");
    }
}

bool converts_to_float(const plane_info& main, std::uint32_t component_type) {
    return main.traits().is_fixed_point() && component_type == 7;
}

void check_against_caller(const frame_layout_plan& plan, const QVRUncompressed_UncompressedParams_t& up) {
    const plane_info& main = *plan.roles().main;
    if (up.width != main.width) {
        throw_invalid_argument("width in src metadata is different than width in uncompressed params");
    }
    if (up.height != main.height) {
        throw_invalid_argument("height in src metadata is different than height in uncompressed params");
    }
    if (!converts_to_float(main, up.componentType) && traits_of_type(up.componentType).bits != main.traits().bits) {
        throw_invalid_argument("bit depth in src metadata is different than bit depth in uncompressed params");
    }
    check_plane_match(plan.planes, up);
    const bool has_alpha = traits_of_order(up.colorComponentOrder).has_alpha;
    if (has_alpha && up.componentType != 1 && up.componentType != 2) {
        throw_invalid_argument("Only 8 and 16 bit alpha is supported");
    }
}

}  // namespace container
