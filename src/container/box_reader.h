// SPDX-License-Identifier: BSD-3-Clause
//
// The one cursor over the bytes of a bitstream: nothing is read at an offset that has not been compared with the limit.
#pragma once

#include <cstdint>

#include "container/frame_layout.h"

namespace container {

struct box_header {
    std::uint32_t size;  // of the whole box, this header included
    std::uint32_t type;
};

// All failures throw invalid_buffer.
class box_reader {
  public:
    box_reader(const std::uint8_t* source, std::uint32_t source_size);

    // Whether another header fits before the limit; what is shorter is ignored.
    bool at_box() const { return offset + k_box_header_size <= limit; }
    // The header at the current offset, which stays where it is.
    box_header peek_header() const;

    // Enters the outermost box: from here on its end is the limit.
    void read_pack();
    // One plane inside a box of its own.
    void read_icmp();
    // One plane: its description and its data, which must follow.
    void read_plane();
    // Records the box as a wrapped payload and passes over it.
    void read_wrap_box();
    // Passes over a box that means nothing here. One that claims to be shorter than its own header counts as a header:
    // the walk always moves on.
    void skip_box();

    frame_layout_plan found;  // planes and wrapped boxes so far, in bitstream order

  private:
    plane_info read_sinf();
    void read_sdat(const plane_info& plane);
    void read_stitched(std::uint64_t end);

    // The header at the current offset, which must be of this type.
    box_header expect_box(std::uint32_t type, const char* message) const;
    // Refuses a box that claims to be shorter than its own header.
    void expect_whole_header(const box_header& header) const;
    std::uint32_t load_32(std::uint64_t at) const;

    const std::uint8_t* source;
    std::uint64_t limit;       // the buffer's size, then the outermost box's
    std::uint64_t offset = 0;  // may stand past the limit after a box that runs over it; then nothing more is read
};

}  // namespace container
