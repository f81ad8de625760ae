// SPDX-License-Identifier: BSD-3-Clause
//
// A coded alpha plane handed straight to its decoder. What comes out is coded again, by several setups, and must come
// back the same.
#include <cstring>

#include "api/base/errors.h"
#include "harness.h"
#include "rle/threaded_rle.h"

namespace {

using namespace fuzz;

threaded_executor& shared_pool(std::uint32_t threads) {
    static threaded_executor none(0);
    static threaded_executor two(2);
    static threaded_executor three(3);
    return threads == 1 ? none : threads == 2 ? two : three;
}

struct decoded {
    exact_buffer plane;
    std::string message;
};

decoded decode(const setup& how, const rle_params& params, const exact_buffer& payload, std::uint8_t fill,
               threaded_rle_decoder::uncovered rest) {
    const auto size = static_cast<std::size_t>(raw_plane_size(params));
    decoded out = {exact_buffer(size, fill), {}};
    const threaded_rle_decoder decoder(shared_pool(how.threads));
    try {
        const unsigned long written =
            decoder.decode_frame(params, payload.data(), payload.size(), out.plane.data(), size, rest);
        require(written == size, "the size of the plane is returned");
    } catch (const invalid_argument& refused) {
        out.message = refused.what();
        require(!out.message.empty(), "a refusal has a reason");
    }
    out.plane.check_borders();
    return out;
}

bytes encode(const setup& how, const rle_params& params, const exact_buffer& plane, std::uint8_t fill) {
    const exact_buffer payload(static_cast<std::size_t>(worst_case_payload_size(params)), fill);
    limit_cpu_features(how.features);
    threaded_rle_encoder encoder(shared_pool(how.threads));
    const unsigned long size = encoder.encode_frame(params, plane.data(), plane.size(), payload.data(), payload.size());
    payload.check_borders();
    require(size <= payload.size(), "the worst case is not passed");
    return {payload.data(), payload.data() + size};
}

void require_same_rows(const rle_params& params, const exact_buffer& first, const exact_buffer& second) {
    for (std::uint32_t i = 0; i < params.height; ++i) {
        const std::uint64_t at = i * row_stride(params);
        require(std::memcmp(first.data() + at, second.data() + at, packed_row_bytes(params)) == 0,
                "a plane comes back as it was");
    }
}

rle_params choose_params(byte_source& choices) {
    rle_params params = {1 + choices.below(64), 1 + choices.below(64), choices.below(2) == 0 ? 8u : 16u,
                         choices.below(80), 0};
    if (choices.below(4) == 3) {
        params.row_bytes = static_cast<std::uint32_t>(packed_row_bytes(params)) + choices.below(24);
    }
    return params;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    split_input input(data, size);
    const setup chosen = choose_setup(input.choices);
    const rle_params params = choose_params(input.choices);
    const auto rest =
        input.choices.below(2) == 0 ? threaded_rle_decoder::uncovered::keep : threaded_rle_decoder::uncovered::clear;

    const decoded first = decode(chosen, params, input.stream, k_fills[0], rest);
    const decoded second = decode(k_reference, params, input.stream, k_fills[1], rest);
    require(first.message == second.message, "threads give the same outcome");
    if (!first.message.empty()) {
        return 0;
    }
    require_same_output(first.plane, second.plane);

    const bytes coded = encode(chosen, params, first.plane, k_fills[0]);
    require(coded == encode(k_reference, params, first.plane, k_fills[1]),
            "threads and instruction sets give the same payload");
    const exact_buffer payload(coded.data(), coded.size());
    const decoded again = decode(chosen, params, payload, k_fills[1], rest);
    require(again.message.empty(), "what the encoder makes can be decoded");
    require_same_rows(params, first.plane, again.plane);
    return 0;
}
