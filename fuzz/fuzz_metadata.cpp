// SPDX-License-Identifier: BSD-3-Clause
//
// Reading the description of a frame and of its wrapped payloads.
#include <cstring>

#include "api/base/errors.h"
#include "container/parse.h"
#include "frames.h"

namespace {

using namespace fuzz;

// What the decoder relies on: rows of raw planes and the first byte of coded ones lie inside the source.
void check_plan(const exact_buffer& stream) {
    try {
        const container::frame_layout_plan plan = container::parse_container(stream.data(), stream.size_32());
        for (const container::plane_entry& plane : plan.planes) {
            if (plane.traits().holds == plane_class::stitched) {
                continue;
            }
            const bool coded = plane.traits().holds == plane_class::coded_alpha;
            const wide least = coded ? 1 : row_bytes(plane.type, plane.width) * plane.height;
            require(plane.offset + least <= stream.size(), "planes lie inside the source");
            require(plane.size >= least, "planes are as large as their rows");
        }
        for (const container::box_entry& box : plan.wrap_boxes) {
            require(box.offset <= stream.size(), "payloads begin inside the source");
        }
        require(plan.wrap_boxes.size() <= stream.size() / 8, "no more boxes than headers");
    } catch (const invalid_buffer&) {
    }
}

void check_wraps(coders& reader, const exact_buffer& stream, std::uint32_t found, std::uint32_t asked,
                 const uncompressed_params& expected) {
    uncompressed_params up = make_params(0, 0, 0, 0);
    std::vector<wrap_params> wraps(asked, {sizeof(wrap_params), 77, 77});
    const outcome result = run(reader, cpu_scalar, [&] {
        return QVRUncompressed_ReadWrapMetadata(reader.decoder, stream.data(), stream.size_32(), &up, wraps.data(),
                                                asked);
    });
    require(std::memcmp(&up, &expected, sizeof up) == 0, "the frame's record is filled first");
    require(result.ok() == (asked <= found), "as many payloads can be read as are counted");
    for (const wrap_params& wrap : wraps) {
        require(wrap.size == sizeof(wrap_params), "size fields stay");
        require(result.ok() ? wrap.wrapType >= 1 && wrap.wrapType <= 3 : wrap.dataSize == 77,
                "records are all or none");
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    split_input input(data, size);
    const exact_buffer& stream = input.stream;
    const setup chosen = choose_setup(input.choices);
    coders& reader = shared_coders(chosen.threads);
    check_plan(stream);

    const uncompressed_params untouched = make_params(99, 99, 99, 99);
    uncompressed_params up = untouched;
    const outcome result = run(reader, chosen.features, [&] {
        return QVRUncompressed_ReadMetadata(reader.decoder, stream.data(), stream.size_32(), &up);
    });
    const std::uint32_t found = QVRUncompressed_ReadWrapCount(stream.data(), stream.size_32());
    if (!result.ok()) {
        require(std::memcmp(&up, &untouched, sizeof up) == 0, "a failure leaves the record untouched");
        require(found == 0, "what is no frame has no payloads");
        return 0;
    }
    require(up.size == sizeof up && up.rowBytes == 0 && up.rowBytes2 == 0, "strides are left at their defaults");
    require(up.frameLayout <= 1 && up.colorComponentOrder <= 14, "the record can be used");
    frame_size(up);
    const compressed_params cp = {sizeof cp, 0, 0};
    QVRUncompressed_GetCompressedBufSize(&up, &cp);
    if (found > 1000) {
        return 0;
    }
    const std::uint32_t fewer = found == 0 ? 0 : input.choices.byte() % found;
    for (const std::uint32_t asked : {found, found + 1, fewer}) {
        check_wraps(reader, stream, found, asked, up);
    }
    stream.check_borders();
    return 0;
}
