// SPDX-License-Identifier: BSD-3-Clause
//
// Where every box and every payload of a frame lies. Laying a frame out for encoding and parsing one for decoding both
// end in the same plan, and everything behind works from the plan alone.
//
//   'pack'                                   whole frame; its size is the total
//     'QCXF' payload                         wrapped frames, if any
//     'sinf' 'sdat' payload                  a single plane, or
//     'icmp' { 'sinf' 'sdat' payload } ...   two planes and more
//
// All offsets count from the first byte of the frame. There is no padding anywhere.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "api/base/records.h"
#include "container/plane_types.h"

namespace container {

constexpr std::uint32_t k_box_header_size = 8;
constexpr std::uint32_t k_sinf_size = 21;  // as written; readers also take 20, without the layout byte

constexpr std::uint32_t k_pack = fourcc("pack");
constexpr std::uint32_t k_icmp = fourcc("icmp");
constexpr std::uint32_t k_sinf = fourcc("sinf");
constexpr std::uint32_t k_sdat = fourcc("sdat");
constexpr std::uint32_t k_qcxf = fourcc("QCXF");
constexpr std::uint32_t k_stch = fourcc("stch");
constexpr std::uint32_t k_tile = fourcc("tile");

struct plane_info {
    std::uint32_t type = 0;    // plane-type code
    std::uint32_t width = 0;   // pixels
    std::uint32_t height = 0;  // rows
    std::uint8_t layout = 0;   // 0 progressive, 1 interlaced

    const plane_type_traits& traits() const { return traits_of_plane(type); }
};

// A plane and where its payload lies. While a plan is made, an offset or size of 0 is one still to be assigned.
struct plane_entry : plane_info {
    wide offset = 0;
    wide size = 0;
};

// A box that carries a wrapped payload.
struct box_entry {
    std::uint32_t type;
    std::uint32_t size;    // of the payload
    std::uint64_t offset;  // of the payload
};

// The planes of a frame. No allowed set has more than four, so further ones are only counted: a bitstream that names a
// million planes is refused without a list of them.
class plane_list {
  public:
    void push_back(const plane_entry& plane) {
        if (count < entries.size()) {
            entries[count] = plane;
        }
        ++count;
    }
    std::size_t size() const { return count; }
    bool empty() const { return count == 0; }
    plane_entry& operator[](std::size_t index) { return entries[index]; }
    const plane_entry& operator[](std::size_t index) const { return entries[index]; }
    plane_entry& back() { return entries[count - 1]; }
    const plane_entry& back() const { return entries[count - 1]; }
    plane_entry* begin() { return entries.data(); }
    plane_entry* end() { return entries.data() + stored(); }
    const plane_entry* begin() const { return entries.data(); }
    const plane_entry* end() const { return entries.data() + stored(); }

    // Throws invalid_argument unless a frame may carry these planes.
    void check_combination() const;

  private:
    std::size_t stored() const { return count < entries.size() ? count : entries.size(); }

    std::array<plane_entry, k_most_planes> entries;
    std::size_t count = 0;
};

// Places in a frame's plane list; null for a plane that the frame does not have.
struct plane_roles {
    const plane_entry* main = nullptr;  // luma, an interleaved plane, stitched chunks, or a lone alpha plane
    const plane_entry* cb = nullptr;
    const plane_entry* cr = nullptr;
    const plane_entry* alpha = nullptr;
};

struct frame_layout_plan {
    plane_list planes;
    std::vector<box_entry> wrap_boxes;    // directly in the 'pack'; in a parsed plan also those of a stitched plane
    std::vector<box_entry> stitch_boxes;  // inside the payload of a stitched plane, in a plan for encoding
    wide total = 0;                       // size of the whole frame

    // Throws invalid_argument for a plane of unknown type.
    plane_roles roles() const;
    // The last plane turned out to be this long once it was coded.
    void set_last_plane_size(std::uint32_t size);
};

// Assigns the offsets and sizes that are still open, and the total.
void lay_out_frame(frame_layout_plan& plan);

// The planes of a frame as it would be encoded. Throws invalid_argument for a pair of order and type that is not
// supported.
frame_layout_plan plan_frame(const QVRUncompressed_UncompressedParams_t& up,
                             const QVRUncompressed_CompressedParams_t& cp);

// Appends a plane that covers the whole frame, or for chroma a half of it each way. A coded alpha plane gets the
// largest size that coding can reach with this number of slices.
void add_plane(frame_layout_plan& plan, std::uint32_t code, const QVRUncompressed_UncompressedParams_t& up,
               std::uint32_t slices);

// Writes every box header of the plan around the payloads, which are in place. Throws invalid_argument when the frame
// does not fit the capacity.
void write_container(const frame_layout_plan& plan, std::uint8_t* dst, std::uint32_t capacity);

}  // namespace container
