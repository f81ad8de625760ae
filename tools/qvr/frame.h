// SPDX-License-Identifier: BSD-3-Clause
//
// A raw frame, and the small interface behind which each kind of file is read and written (containers.h).
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "QVRUncompressed.h"
#include "failure.h"
#include "file_io.h"
#include "formats.h"
#include "losses.h"

namespace qvr {

using frame_layout = QVRUncompressed_UncompressedParams_t;

// A record with its size field set and everything else 0.
frame_layout empty_layout();

struct frame {
    frame_layout layout = empty_layout();
    std::vector<std::uint8_t> samples;  // may be longer than the frame; `bytes` counts
    std::size_t bytes = 0;
};

// The exact size of the raw frame, or a bound from above where it would pass what 32 bits can say. The library's own
// answer holds only the low 32 bits, so nothing may ask it before this has been asked.
std::uint64_t raw_frame_bytes(const frame_layout& layout);

// A failure of the given code when the raw frame would pass 4 GiB; and when the bitstream that it can become would.
void require_raw_size(const frame_layout& layout, exit_code code, const location& where);
void require_size(const frame_layout& layout, const QVRUncompressed_CompressedParams_t& compression, exit_code code,
                  const location& where);

// "1920x1080 interlaced, order 2 UYVY, type 1 U8"
std::string layout_text(const frame_layout& layout);

// Frames in so many seconds.
struct frame_rate {
    std::uint32_t frames = 25;
    std::uint32_t seconds = 1;

    bool operator==(const frame_rate& other) const;
};

// Each source and each sink is used from one thread at a time; different ones are independent.
class frame_source {
  public:
    virtual ~frame_source() = default;
    // False when there is no further frame. The frame's memory is used again where it fits.
    virtual bool next(frame& to) = 0;
    // Passes over as many frames, without reading their samples where the file can be sought in; returns how many there
    // were to pass over. Damage on the way is a failure, or left to next().
    virtual std::uint64_t skip(std::uint64_t count);
    // Whether anything follows, be it a whole frame or not.
    virtual bool more() = 0;
    // How many frames next() would still give, where sizes and names of files tell.
    virtual std::optional<std::uint64_t> frames_left() const { return std::nullopt; }
    // Where the frame that next() gave last was found.
    virtual location last_place() const = 0;
    // Known from the beginning, if at all.
    virtual std::optional<frame_rate> rate() const { return std::nullopt; }
    // Whether the alpha of the frame that next() gave last was not in the file: opaque, because its order has alpha.
    virtual bool alpha_is_made_up() const { return false; }
    // Whether each frame is a file of its own, so that several sources can read the same frames side by side.
    virtual bool has_file_for_each() const { return false; }
};

// What an earlier run has left of an output.
struct kept_frames {
    unsigned long long count = 0;
    bool complete = false;
    std::string file;
};

class frame_sink {
  public:
    virtual ~frame_sink() = default;
    // The layout in which the sink wants a frame that has the layout `own`, or that a stream describes so: the same, or
    // another one that the library can bring it into. A failure when the sink cannot take the frame; what will be lost
    // of it is said.
    virtual frame_layout wanted(const frame_layout& own, const location& where) const = 0;
    virtual bool holds_one_frame() const = 0;
    // Takes a frame in the layout that it wanted.
    virtual void put(const frame& from) = 0;
    virtual void commit() = 0;
    // For sinks that were opened to keep what is incomplete: finds the whole frames that are there, all of the layout of
    // the first frame, which the function gives in the layout that the sink wants; it is called when there is something,
    // and compared. The last frame that is there must be put again, and is compared as well. Sinks that keep nothing
    // start anew.
    virtual kept_frames go_on(const std::function<frame()>&) { return {}; }
};

// Each says what is lost of a frame:
// its alpha, when it is to be put into a layout whose order has none,
void lose_alpha(const frame_layout& from, const frame_layout& to, const location& where, loss_log& losses);
// its alpha, when its type stores none,
void lose_unstored_alpha(const frame_layout& layout, const location& where, loss_log& losses);
// its rate, in files that keep none.
void lose_rate(const std::optional<frame_rate>& rate, const location& where, loss_log& losses);

// Warns when coding of alpha was asked for and the frames have none.
void tell_of_no_alpha_to_code(const frame_layout& layout, const std::string& file, loss_log& losses);

// What the command line says about the caller's side of frames.
struct layout_request {
    format_choice format;
    std::uint32_t width = 0;  // 0: not given
    std::uint32_t height = 0;
    std::uint32_t row_bytes = 0;
    std::uint32_t row_bytes2 = 0;
    bool interlaced = false;

    std::string container;               // a name of the table in containers.h; empty: found out
    std::optional<std::uint32_t> start;  // of a numbered sequence
    std::optional<frame_rate> rate;      // for files that keep one
    incomplete becomes = incomplete::removed;
    std::shared_ptr<loss_log> losses = std::make_shared<loss_log>(false);

    // For .qvr files among others.
    unsigned threads = 0;
    QVRUncompressed_CompressedParams_t how = {QVRUNCOMPRESSED_COMPRESSED_PARAMS_SIZE, 0, 0};
};

}  // namespace qvr
