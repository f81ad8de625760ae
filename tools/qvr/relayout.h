// SPDX-License-Identifier: BSD-3-Clause
//
// Frames in another layout, by way of the library: encoded and decoded in memory. So only what the library counts as the
// same samples is ever made of them.
#pragma once

#include <optional>

#include "codec.h"
#include "frame.h"

namespace qvr {

class relayout {
  public:
    explicit relayout(unsigned codec_threads) : threads(codec_threads) {}

    // Leaves the frame as it is when it has the layout.
    void into(const frame_layout& wanted, frame& in, const location& where);

  private:
    unsigned threads;
    // Made when a frame needs them.
    std::optional<encoder> to_stream;
    std::optional<decoder> from_stream;
    frame made;
};

}  // namespace qvr
