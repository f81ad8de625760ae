// SPDX-License-Identifier: BSD-3-Clause
#ifndef QVR_TESTS_MODEL_BOXES_H
#define QVR_TESTS_MODEL_BOXES_H

// The box tree of a bitstream: writing it from finished payloads and taking
// it apart.

#include "formats.h"
#include "model_types.h"
#include "sizes.h"

namespace model {

struct parsed_plane {
    code name;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint8_t layout = 0;
    std::uint64_t offset = 0;
    std::uint32_t size = 0;
};

struct parsed_box {
    std::string type;
    std::uint64_t offset = 0;
    std::uint32_t size = 0;
};

struct parsed_frame {
    std::vector<parsed_plane> planes;
    std::vector<parsed_box> wraps;
};

parsed_frame parse_frame(view source);

// The planes of a parsed frame by role; null when absent.
const parsed_plane* find_plane(const parsed_frame& frame, plane_role role);
// Like the above with role main, but a lone alpha plane and a stitched plane
// stand in for the main plane.
const parsed_plane& main_plane(const parsed_frame& frame);

frame_params metadata_of(const parsed_frame& frame);
frame_params read_metadata(view source);

// Width, height, depth and planes of a stream against the caller's record.
void check_consistency(const parsed_frame& stream, const frame_params& frame);

void put_u32(bytes& out, std::uint32_t value);
void put_box_header(bytes& out, exact size, const std::string& type);
void append(bytes& out, const bytes& more);

// The whole frame. Payloads are given in the order of the plan, and take the
// place of the planned sizes.
bytes write_frame(const frame_plan& plan, const std::vector<bytes>& wraps, const std::vector<bytes>& planes,
                  const std::vector<bytes>& stitched);

}  // namespace model

#endif
