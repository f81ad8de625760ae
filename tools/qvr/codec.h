// SPDX-License-Identifier: BSD-3-Clause
//
// The library's handles as objects that end by themselves, report failures as exceptions and time their calls.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "QVRUncompressed.h"
#include "failure.h"
#include "frame.h"

namespace qvr {

using compression = QVRUncompressed_CompressedParams_t;

compression make_compression(bool alpha_rle, unsigned slices);

struct bytes_view {
    const std::uint8_t* data = nullptr;
    std::size_t size = 0;
};

using wrap_record = QVRUncompressed_WrapParams_t;

// One wrapped payload: its QVRUncompressed_WrapType and its bytes.
struct wrapped_payload {
    std::uint32_t type = 0;
    bytes_view data;
};

// What the library says of a frame and of the payloads that are wrapped into it.
struct wrapped_contents {
    frame_layout layout = empty_layout();
    std::vector<wrap_record> records;
};

// What the codec calls of one or more handles took together, files and pictures not counted.
struct codec_time {
    double seconds = 0;
    std::uint64_t raw_bytes = 0;

    codec_time& operator+=(const codec_time& other);
};

// "4 frames, 54.9 MB raw in 0.0202 s of codec calls: 2716 MB/s"
std::string time_text(const codec_time& time, unsigned long long frames);

// Receives the library's messages. It must not move: the library holds its address.
class message_log {
  public:
    message_log() = default;
    message_log(const message_log&) = delete;
    message_log& operator=(const message_log&) = delete;

    QVRUncompressed_CodecConfig_t config(unsigned threads);
    // Fails with the library's words, the right exit code and what can be done about it, unless a better hint is given.
    [[noreturn]] void fail(std::uint32_t status, const std::string& action, const location& where,
                           const std::string& hint = {}) const;
    // For a handle that was not made.
    [[noreturn]] void fail_creation() const;
    void forget() { last_message.clear(); }
    bool says(const char* words) const { return last_message.find(words) != std::string::npos; }

  private:
    static void receive(const char* message, void* user_data);

    std::string last_message;
};

class encoder {
  public:
    explicit encoder(unsigned threads);
    // The view is valid until the next call.
    bytes_view encode(const frame& from, const compression& how, const location& where);
    // Into a buffer that grows when it must and may be longer than the bitstream; returns the size of that.
    std::size_t encode_into(std::vector<std::uint8_t>& to, const frame& from, const compression& how,
                            const location& where);
    // Wraps payloads, of which there is at least one; `beside` is an alpha plane, or with stitched chunks only a
    // layout.
    bytes_view wrap(const std::vector<wrapped_payload>& payloads, const frame& beside, const compression& how,
                    const location& where);
    const codec_time& time() const { return spent; }

  private:
    struct end_handle {
        void operator()(QVRUncompressed_Encoder handle) const { QVRUncompressed_DestroyEncoder(handle); }
    };
    message_log log;
    std::unique_ptr<QVRUncompressed_Encoder_s, end_handle> codec;
    std::vector<std::uint8_t> buffer;
    codec_time spent;
};

class decoder {
  public:
    explicit decoder(unsigned threads);
    frame_layout read_layout(bytes_view from, const location& where);
    // Decodes into the layout that `to` has.
    void decode(bytes_view from, frame& to, const location& where);
    wrapped_contents read_wrapped(bytes_view from, const location& where);
    // Takes out all that read_wrapped() has found in the same frame, and into `beside` the alpha plane when its layout
    // is one. The views are valid until the next call.
    std::vector<wrapped_payload> unwrap(bytes_view from, const wrapped_contents& found, frame& beside,
                                        const location& where);
    const codec_time& time() const { return spent; }

  private:
    // What to say when the frame does not hold what `asked` needs; empty when that is not why it was refused.
    std::string mismatch_hint(bytes_view from, const frame_layout& asked);

    struct end_handle {
        void operator()(QVRUncompressed_Decoder handle) const { QVRUncompressed_DestroyDecoder(handle); }
    };
    message_log log;
    std::unique_ptr<QVRUncompressed_Decoder_s, end_handle> codec;
    std::vector<std::uint8_t> buffer;
    codec_time spent;
};

}  // namespace qvr
