// SPDX-License-Identifier: BSD-3-Clause
#ifndef QVR_TESTS_DIFFERENTIAL_COMPARE_H
#define QVR_TESTS_DIFFERENTIAL_COMPARE_H

// Each function here gives the library and the model the same input and
// returns an empty string when they agree, else what differs and how to make
// the case again.

#include <string>
#include <vector>

#include "library.h"
#include "model.h"
#include "rng.h"

namespace differential {

std::string compare_sizes(const model::frame_params& frame, const model::stream_params& stream,
                          const std::vector<model::wrap_params>& wraps, std::uint32_t count);

std::string compare_encode(rng& random, codec& handles, const model::frame_params& frame,
                           const model::stream_params& stream, const model::bytes& source, std::size_t capacity);

std::string compare_decode(rng& random, codec& handles, const model::frame_params& frame, const model::bytes& stream,
                           std::size_t capacity);

// Frame metadata, wrap count, and wrap metadata for some counts.
std::string compare_metadata(rng& random, codec& handles, const model::bytes& stream);

struct wrap_case {
    model::frame_params frame;
    model::stream_params stream;
    std::vector<model::wrap_params> wraps;
    std::uint32_t count = 0;
    std::vector<model::bytes> payloads;
    bool null_source = false;
    model::bytes source;
    std::size_t capacity = 0;
};
std::string compare_wrap(rng& random, codec& handles, const wrap_case& input);

struct unwrap_case {
    model::frame_params frame;
    std::vector<model::wrap_params> wraps;
    std::uint32_t count = 0;
    model::bytes stream;
    bool null_target = false;
    std::size_t capacity = 0;
};
std::string compare_unwrap(rng& random, codec& handles, const unwrap_case& input);

}  // namespace differential

#endif
