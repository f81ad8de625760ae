// SPDX-License-Identifier: BSD-3-Clause
#ifndef QVR_TESTS_MODEL_WRAP_H
#define QVR_TESTS_MODEL_WRAP_H

// Payloads of other codecs inside the container.

#include "frame.h"
#include "model_types.h"

namespace model {

// `payloads` holds one view for each of the `count` records. The first record
// is looked at even when the count is 0.
bytes encode_and_wrap(const frame_params& frame, const stream_params& stream, const std::vector<wrap_params>& wraps,
                      std::uint32_t count, view source, const std::vector<view>& payloads, exact capacity);

std::uint32_t read_wrap_count(view source);

// The frame record is complete before the count is compared, so a failure
// that concerns only the count leaves it filled.
struct wrap_metadata {
    frame_params frame;
    std::vector<wrap_params> wraps;
    std::string failure_text;  // empty on success
};
wrap_metadata read_wrap_metadata(view source, std::uint32_t count);

struct unwrapped {
    std::uint32_t written = 0;
    std::vector<bytes> payloads;
};
unwrapped decode_and_unwrap(const frame_params& frame, const std::vector<wrap_params>& wraps, std::uint32_t count,
                            view source, target raw);

}  // namespace model

#endif
