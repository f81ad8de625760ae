// SPDX-License-Identifier: BSD-3-Clause
//
// Run-length coding of a whole alpha plane: cut into slices, each coded by itself, on the pool where there is one.
//
//   index table | slice 0 | slice 1 | ... | slice N-1        each slice starts on a byte boundary
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "rle/rle_params.h"
#include "rle/sample_traits.h"
#include "threading/threaded_executor.h"

class threaded_rle_encoder {
  public:
    explicit threaded_rle_encoder(threaded_executor& pool) : executor(pool) {}

    // Codes the raw plane src into dst and returns the payload's size in bytes. dst must hold the worst case. The bytes
    // do not depend on the number of threads. Throws invalid_argument before anything is written, out_of_range behind
    // it.
    unsigned long encode_frame(const rle_params& params, const void* src, unsigned long src_size, void* dst,
                               unsigned long dst_size);

  private:
    struct slice_job {
        slice_rows<const std::uint8_t> rows;
        std::uint8_t* out;
        std::size_t capacity;
        std::size_t size;  // once coded
    };

    void cut(const rle_params& params, const std::uint8_t* src, std::uint8_t* out);
    std::size_t write_table(std::uint8_t* dst) const;

    threaded_executor& executor;
    std::vector<slice_job> jobs;  // kept from call to call, so that only a plane of more slices takes memory
};

class threaded_rle_decoder {
  public:
    // What becomes of rows that no slice of the payload covers.
    enum class uncovered { keep, clear };

    explicit threaded_rle_decoder(threaded_executor& pool) : executor(pool) {}

    // Decodes a payload into the raw plane dst and returns the plane's size in bytes, whatever the payload held. The
    // slices are the payload's own; params.slice_count is not looked at. Throws invalid_argument.
    unsigned long decode_frame(const rle_params& params, const void* src, unsigned long src_size, void* dst,
                               unsigned long dst_size, uncovered rest = uncovered::keep) const;

  private:
    threaded_executor& executor;
};
