// SPDX-License-Identifier: BSD-3-Clause
//
// Handles that record the messages of their error callback, and calls that run on exactly sized, guarded buffers.
#ifndef QVR_TESTS_SUPPORT_CODEC_H
#define QVR_TESTS_SUPPORT_CODEC_H

#include <QVRUncompressed.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "bytes.h"
#include "records.h"

namespace test {

using frame_params = QVRUncompressed_UncompressedParams_t;
using stream_params = QVRUncompressed_CompressedParams_t;
using wrap_params = QVRUncompressed_WrapParams_t;

// What bytesWritten holds before each call, and must still hold after a failure.
constexpr uint32_t k_untouched = 0xa5a5a5a5u;
// What every byte of a destination holds before each call.
constexpr uint8_t k_fill = 0xcc;

using message_list = std::vector<std::string>;

// The error callback of the handles below; user_data is a message_list.
void record_message(const char* message, void* user_data);

class encoder {
  public:
    explicit encoder(uint32_t threads = 1);
    ~encoder();
    encoder(const encoder&) = delete;
    encoder& operator=(const encoder&) = delete;

    QVRUncompressed_Encoder handle() const { return handle_; }
    message_list& messages() { return *messages_; }

  private:
    std::unique_ptr<message_list> messages_;
    QVRUncompressed_Encoder handle_ = nullptr;
};

class decoder {
  public:
    explicit decoder(uint32_t threads = 1);
    ~decoder();
    decoder(const decoder&) = delete;
    decoder& operator=(const decoder&) = delete;

    QVRUncompressed_Decoder handle() const { return handle_; }
    message_list& messages() { return *messages_; }

  private:
    std::unique_ptr<message_list> messages_;
    QVRUncompressed_Decoder handle_ = nullptr;
};

struct outcome {
    uint32_t status = 0;
    message_list messages;           // of this call alone
    uint32_t written = k_untouched;  // bytesWritten
    bytes data;                      // the whole destination
    std::vector<bytes> payloads;     // unwrapped payloads

    // The part of the destination that counts.
    bytes frame() const;
};

// Without a destination size the one that the size query names is taken.
outcome encode(encoder& with, const frame_params& up, const stream_params& cp, const bytes& src,
               std::optional<uint32_t> dst_size = std::nullopt);
outcome decode(decoder& with, const frame_params& up, const bytes& stream,
               std::optional<uint32_t> dst_size = std::nullopt);

// The same on a handle of their own that uses the calling thread only.
outcome encode(const frame_params& up, const stream_params& cp, const bytes& src,
               std::optional<uint32_t> dst_size = std::nullopt);
outcome decode(const frame_params& up, const bytes& stream, std::optional<uint32_t> dst_size = std::nullopt);

struct metadata {
    uint32_t status = 0;
    message_list messages;
    frame_params up = {};
    std::vector<wrap_params> wraps;
};

metadata read_metadata(const bytes& stream);
metadata read_wrap_metadata(const bytes& stream, uint32_t wrap_count);
uint32_t read_wrap_count(const bytes& stream);

// `src` may be null. At least one record is needed; `count` replaces the number of records.
outcome wrap(encoder& with, const frame_params& up, const stream_params& cp, const std::vector<wrap_params>& records,
             const std::vector<bytes>& payloads, const bytes* src, std::optional<uint32_t> dst_size = std::nullopt,
             std::optional<uint32_t> count = std::nullopt);
// One destination buffer of its record's size is made for each record. `dst_size` of nullopt: dst is null.
outcome unwrap(decoder& with, const frame_params& up, const std::vector<wrap_params>& records, const bytes& stream,
               std::optional<uint32_t> dst_size, std::optional<uint32_t> count = std::nullopt);

// Status 0, no message.
void expect_success(const outcome& result);
// Status 1, exactly this one message, bytesWritten untouched.
void expect_failure(const outcome& result, std::string_view message);
// Success, and exactly these bytes in the counted part of the destination.
void expect_bytes(const outcome& result, std::string_view hex);

}  // namespace test

#endif  // QVR_TESTS_SUPPORT_CODEC_H
