// SPDX-License-Identifier: BSD-3-Clause
//
// One frame taken apart and made again: everything that a decoder lets pass.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "codec.h"
#include "findings.h"
#include "qvr_file.h"

namespace qvr {

struct frame_verdict {
    std::vector<finding> findings;  // in file order; offsets count from the start of the frame
    std::size_t left_out = 0;       // findings beyond those that are listed
    bool has_errors = false;

    void add(finding found);
    // "identical", "different" or "damaged".
    const char* name() const;
};

class verifier {
  public:
    explicit verifier(unsigned threads) : in(threads), out(threads) {}

    // The frame that the reader stands at. Input/output failures are thrown, all others are findings.
    frame_verdict verify(const frame_reader& at);
    const codec_time& time() const { return in.time(); }

  private:
    // Decodes what the frame holds and encodes it again with the same choices; the view is valid until the next call.
    // Empty when one of the two failed.
    bytes_view make_again(const frame_reader& at, const compression& how, frame_verdict& verdict);

    decoder in;
    encoder out;
    frame current;
};

}  // namespace qvr
