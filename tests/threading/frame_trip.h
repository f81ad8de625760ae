// SPDX-License-Identifier: BSD-3-Clause
//
// A frame on its way through the exported functions, there and back. All memory is taken when it is made: what the calls
// take is the library's own.
#pragma once

#include <array>
#include <cstdint>
#include <ostream>
#include <vector>

#include "QVRUncompressed.h"

enum class carried { alone, beside_a_compressed_frame, as_stitched_tiles };

struct frame_case {
    std::uint32_t order, type;
    std::uint8_t slices = 0;  // of coded alpha; 0: alpha is stored as it is
    carried how = carried::alone;
    std::uint32_t width = 12, height = 9;
};

inline void PrintTo(const frame_case& shown, std::ostream* out) {
    constexpr const char* k_how[] = {"", ", beside a compressed frame", ", as stitched tiles"};
    *out << "order " << shown.order << ", type " << shown.type << ", " << shown.width << " x " << shown.height << ", "
         << unsigned{shown.slices} << " slices" << k_how[static_cast<int>(shown.how)];
}

// All pairs of order and type that are supported.
std::vector<frame_case> all_pairs(std::uint32_t width, std::uint32_t height, std::uint32_t height_of_420);

class frame_trip {
  public:
    using bytes = std::vector<std::uint8_t>;

    explicit frame_trip(const frame_case& what);

    // Encodes, and wraps where the case says so.
    std::uint32_t encode(QVRUncompressed_Encoder encoder);
    // Reads the metadata of what was encoded last, decodes and unwraps it; the first status that is not 0.
    std::uint32_t decode(QVRUncompressed_Decoder decoder);
    // The size queries and the number of payloads, one after the other.
    std::array<std::uint32_t, 4> queries() const;

    // What the last calls left, each output filled with another value before: an output is never a leftover.
    bytes stream() const { return {stream_.begin(), stream_.begin() + written_}; }
    bytes came_back() const;
    // Puts back what was encoded before.
    void set_stream(const bytes& encoded);

  private:
    std::uint32_t decode_alone(QVRUncompressed_Decoder decoder);
    std::uint32_t unwrap(QVRUncompressed_Decoder decoder);
    void add_payload(std::uint32_t wrap_type, bytes payload);

    QVRUncompressed_UncompressedParams_t frame_;
    QVRUncompressed_CompressedParams_t how_;
    bytes raw_, stream_, decoded_;
    std::uint32_t written_ = 0;
    QVRUncompressed_UncompressedParams_t read_ = {};
    std::vector<QVRUncompressed_WrapParams_t> wraps_, read_wraps_;
    std::vector<bytes> payloads_, taken_out_;
    std::vector<const std::uint8_t*> sources_;
    std::vector<std::uint8_t*> targets_;
};

// One pixel a row in five slices of coded alpha: the third holds a run that is too long ("rle run exceeds slice"), the
// fifth ends too early.
constexpr QVRUncompressed_UncompressedParams_t k_frame_of_broken_slices = {36, 14, 1, 1, 5, 0, 0, 0};
constexpr std::array<std::uint8_t, 54> k_two_broken_slices = {
    0x36, 0,    0,    0,    'p',  'a',  'c',  'k',  0x15, 0,    0,    0,    's',  'i',  'n',  'f',  1,    0,
    0,    0,    5,    0,    0,    0,    'r',  'l',  '0',  '8',  0,    0x19, 0,    0,    0,    's',  'd',  'a',
    't',  0x05, 0xbf, 0xff, 0xfe, 0xc9, 0x00, 0x17, 0xff, 0xff, 0xd9, 0x20, 0x00, 0x60, 0x60, 0x28, 0x60, 0x00};

// An encoder and a decoder, and what they had to report.
class handle_pair {
  public:
    explicit handle_pair(std::uint32_t threads);
    ~handle_pair();
    handle_pair(const handle_pair&) = delete;
    handle_pair& operator=(const handle_pair&) = delete;

    bool complete() const { return encoder != nullptr && decoder != nullptr; }

    QVRUncompressed_Encoder encoder = nullptr;
    QVRUncompressed_Decoder decoder = nullptr;
    std::array<std::uint32_t, 2> created = {};  // the statuses of making them
    int reports = 0;
    char message[128] = "";  // the last one
};
