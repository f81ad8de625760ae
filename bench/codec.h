// SPDX-License-Identifier: BSD-3-Clause
//
// The exported functions as the benchmark calls them. Whatever they refuse ends the benchmark.
#pragma once

#include <cstdint>

#include "QVRUncompressed.h"
#include "options.h"

namespace bench {

using frame_params = QVRUncompressed_UncompressedParams_t;
using stream_params = QVRUncompressed_CompressedParams_t;

frame_params frame_record(std::uint32_t order, std::uint32_t type, const frame_size& size);
stream_params raw_alpha();
stream_params coded_alpha(std::uint8_t slices = 0);

std::uint32_t raw_bytes(const frame_params& up);
std::uint32_t stream_bytes(const frame_params& up, const stream_params& cp);

class encoder {
  public:
    explicit encoder(std::uint32_t threads = 1);
    ~encoder() { QVRUncompressed_DestroyEncoder(handle_); }
    encoder(const encoder&) = delete;
    encoder& operator=(const encoder&) = delete;

    // Returns the bytes of the stream. to: stream_bytes(up, cp) of room.
    std::uint32_t encode(const frame_params& up, const stream_params& cp, const std::uint8_t* raw, std::uint8_t* to);

  private:
    QVRUncompressed_Encoder handle_ = nullptr;
};

class decoder {
  public:
    explicit decoder(std::uint32_t threads = 1);
    ~decoder() { QVRUncompressed_DestroyDecoder(handle_); }
    decoder(const decoder&) = delete;
    decoder& operator=(const decoder&) = delete;

    void decode(const frame_params& up, const std::uint8_t* stream, std::uint32_t size, std::uint8_t* to);
    frame_params read_metadata(const std::uint8_t* stream, std::uint32_t size);

  private:
    QVRUncompressed_Decoder handle_ = nullptr;
};

}  // namespace bench
