// SPDX-License-Identifier: BSD-3-Clause
//
// Coding whole planes in tests: plain calls, and the message of a call that fails.
#pragma once

#include <string>

#include "api/base/errors.h"
#include "bytes.h"
#include "rle/threaded_rle.h"

namespace test {

// Payload of a plane, coded with this many workers.
inline bytes coded(const rle_params& params, const bytes& plane, unsigned workers = 0) {
    threaded_executor executor(workers);
    bytes payload(static_cast<std::size_t>(worst_case_payload_size(params)));
    payload.resize(threaded_rle_encoder(executor).encode_frame(params, plane.data(), plane.size(), payload.data(),
                                                               payload.size()));
    return payload;
}

// Plane of a payload, decoded into memory filled with `fill`.
inline bytes decoded(const rle_params& params, const bytes& payload, unsigned workers = 0, std::uint8_t fill = 0xcc,
                     threaded_rle_decoder::uncovered rest = threaded_rle_decoder::uncovered::keep) {
    threaded_executor executor(workers);
    bytes plane = repeat(fill, static_cast<std::size_t>(raw_plane_size(params)));
    const unsigned long size = threaded_rle_decoder(executor).decode_frame(params, payload.data(), payload.size(),
                                                                           plane.data(), plane.size(), rest);
    plane.resize(size);
    return plane;
}

template <class Failure, class Call>
std::string message_of(Call call) {
    try {
        call();
    } catch (const Failure& failure) {
        return failure.what();
    }
    return "no failure of this class";
}

// The worked example: an 8-bit plane of 4 x 2 samples, both rows 0 1 2 3, in one slice.
inline bytes example_plane() {
    return from_hex("00 01 02 03  00 01 02 03");
}
inline bytes example_payload() {
    return from_hex("01 bf ff fc 6f ff ff 90  df ad 54 39 6a a0");
}
constexpr rle_params k_example = {4, 2, 8, 1, 0};

}  // namespace test
