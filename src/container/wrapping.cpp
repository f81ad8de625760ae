// SPDX-License-Identifier: BSD-3-Clause
#include "container/wrapping.h"

#include "api/base/errors.h"

namespace container {

namespace {

// The chunks of a stitched plane lie inside its payload, each behind a header of its own.
void plan_stitched(frame_layout_plan& plan, const QVRUncompressed_UncompressedParams_t& up,
                   const QVRUncompressed_WrapParams_t* wraps, std::uint32_t count) {
    wide size = 0;
    for (std::uint32_t i = 0; i < count; ++i) {
        const QVRUncompressed_WrapParams_t chunk = load_record(wraps + i);
        plan.stitch_boxes.push_back({i == 0 ? k_stch : k_tile, chunk.dataSize, 0});
        size += wide{chunk.dataSize} + k_box_header_size;
    }
    add_plane(plan, fourcc("stch"), up, 0);
    plan.planes.back().size = size;
}

// Only a plan that fits a buffer is ever followed, and in that one no offset exceeds 32 bits.
void place_stitched(frame_layout_plan& plan) {
    auto position = static_cast<std::uint64_t>(plan.planes.back().offset);
    for (box_entry& box : plan.stitch_boxes) {
        box.offset = position + k_box_header_size;
        position = box.offset + box.size;
    }
}

void plan_alpha(frame_layout_plan& plan, const QVRUncompressed_UncompressedParams_t& up,
                const QVRUncompressed_CompressedParams_t& cp) {
    if (up.colorComponentOrder != 14 || (up.componentType != 1 && up.componentType != 2)) {
        throw_invalid_argument("8/16 bit single alpha plane expected");
    }
    const std::uint32_t code = format_planes(up.colorComponentOrder, up.componentType)[0];
    add_plane(plan, cp.alphaCompression != 0 ? coded_form(code) : code, up, cp.rleSlices);
}

std::uint32_t big_endian_16(const std::uint8_t* bytes) {
    return static_cast<std::uint32_t>(bytes[0]) << 8 | bytes[1];
}

std::uint32_t big_endian_32(const std::uint8_t* bytes) {
    return big_endian_16(bytes) << 16 | big_endian_16(bytes + 2);
}

struct qcx_compression {
    std::uint32_t id;
    std::uint32_t width;  // 0: this compression has any dimensions, and its header says which
    std::uint32_t height;
    bool interlaced;
};

constexpr qcx_compression k_qcx_compressions[] = {
    {1235, 1920, 1080, false}, {1237, 1920, 1080, false}, {1238, 1920, 1080, false}, {1253, 1920, 1080, false},
    {1256, 1920, 1080, false}, {1241, 1920, 1080, true},  {1242, 1920, 1080, true},  {1243, 1920, 1080, true},
    {1244, 1440, 1080, true},  {1259, 1440, 1080, false}, {1260, 1440, 1080, true},  {1250, 1280, 720, false},
    {1251, 1280, 720, false},  {1252, 1280, 720, false},  {1258, 960, 720, false},   {1270, 0, 0, false},
    {1271, 0, 0, false},       {1272, 0, 0, false},       {1273, 0, 0, false},       {1274, 0, 0, false},
    {1300, 0, 0, false},       {1301, 0, 0, false},
};

// The header's fields, big-endian.
constexpr std::uint32_t k_qcx_header_size = 45;
constexpr std::uint32_t k_qcx_flags = 7;  // bit 0: the frame has alpha of its own
constexpr std::uint32_t k_qcx_height = 24;
constexpr std::uint32_t k_qcx_width = 26;
constexpr std::uint32_t k_qcx_compression_id = 40;

// The wrapType that reading reports for a box; 0 for one that carries no payload.
std::uint32_t wrap_type_of_box(std::uint32_t box_type) {
    switch (box_type) {
        case k_qcxf:
            return QVRUncompressed_WrapQCX;
        case k_stch:
            return QVRUncompressed_WrapStitched;
        case k_tile:
            return QVRUncompressed_WrapTile;
        default:
            return 0;
    }
}

}  // namespace

frame_layout_plan plan_wrapped_frame(const QVRUncompressed_UncompressedParams_t& up,
                                     const QVRUncompressed_CompressedParams_t& cp,
                                     const QVRUncompressed_WrapParams_t* wraps, std::uint32_t count) {
    const QVRUncompressed_WrapParams_t first = load_record(wraps);
    for (std::uint32_t i = 0; i < count; ++i) {
        if (load_record(wraps + i).wrapType == 0) {
            throw_invalid_argument("Unknown wrap type");
        }
    }
    frame_layout_plan plan;
    if (first.wrapType == QVRUncompressed_WrapStitched) {
        plan_stitched(plan, up, wraps, count);
    } else {
        if (first.wrapType == QVRUncompressed_WrapQCX) {
            if (count != 1) {
                throw_invalid_argument("Single QCX wrap params expected");
            }
            plan.wrap_boxes.push_back({k_qcxf, first.dataSize, 0});
        }
        plan_alpha(plan, up, cp);
    }
    plan.planes.check_combination();
    lay_out_frame(plan);
    place_stitched(plan);
    return plan;
}

qcx_header_info read_qcx_header(const std::uint8_t* frame, std::uint32_t size) {
    if (size < k_qcx_header_size) {
        throw_invalid_argument("Size is too small to parse QCX header");
    }
    const std::uint32_t id = big_endian_32(frame + k_qcx_compression_id);
    for (const qcx_compression& known : k_qcx_compressions) {
        if (known.id == id) {
            const bool from_header = known.width == 0;
            return {from_header ? big_endian_16(frame + k_qcx_width) : known.width,
                    from_header ? big_endian_16(frame + k_qcx_height) : known.height, (frame[k_qcx_flags] & 1) != 0,
                    known.interlaced};
        }
    }
    throw_invalid_argument("Invalid compression ID in QCX header");
}

void check_against_qcx(const QVRUncompressed_UncompressedParams_t& up, const qcx_header_info& qcx) {
    if (qcx.has_alpha) {
        throw_invalid_argument("Can't wrap uncompressed alpha and QCX with alpha flag set");
    }
    if (up.width != qcx.width) {
        throw_invalid_argument("Uncompressed params width ", wide{up.width}, " is not equal QCX width ", qcx.width);
    }
    if (up.height != qcx.height) {
        throw_invalid_argument("Uncompressed params height ", wide{up.height}, " is not equal QCX height ", qcx.height);
    }
    if (qcx.interlaced && up.frameLayout != QVRUncompressed_LayoutInterlaced) {
        throw_invalid_argument("Uncompressed params frame layout is not compatible with interlaced QCX");
    }
    if (!qcx.interlaced && up.frameLayout != QVRUncompressed_LayoutProgressive) {
        throw_invalid_argument("Uncompressed params frame layout is not compatible with progressive QCX");
    }
}

void read_wrap_params(const frame_layout_plan& plan, QVRUncompressed_WrapParams_t* wraps, std::uint32_t count) {
    if (count > plan.wrap_boxes.size()) {
        throw_invalid_argument("Can't read ", count, " wrap boxes, only ", plan.wrap_boxes.size(), " found");
    }
    for (std::uint32_t i = 0; i < count; ++i) {
        const box_entry& box = plan.wrap_boxes[i];
        wraps[i].wrapType = wrap_type_of_box(box.type);
        wraps[i].dataSize = box.size;
    }
}

void check_box_count(const frame_layout_plan& plan, std::uint32_t count) {
    if (count > plan.wrap_boxes.size()) {
        throw_invalid_buffer(plan.wrap_boxes.size(), " wrap boxes found in bytestream, but ", count,
                             " expected according to wrap params");
    }
}

void check_payload(const box_entry& box, std::uint32_t source_size) {
    if (box.offset > source_size || box.size > source_size - box.offset) {
        throw_invalid_buffer("can't read ", box.size, " bytes at offset ", box.offset);
    }
}

}  // namespace container
