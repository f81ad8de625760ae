// SPDX-License-Identifier: BSD-3-Clause
//
// Decoding a frame: into a destination of just its size, and again on one thread with the scalar kernels.
#include "frames.h"

namespace {

using namespace fuzz;

struct decoded {
    exact_buffer dst;
    outcome result;
    std::uint32_t written;
};

constexpr std::uint32_t k_not_written = 0xdeadbeef;

decoded decode(const setup& how, const uncompressed_params& up, const exact_buffer& stream, std::size_t dst_size,
               std::uint8_t fill) {
    decoded out = {exact_buffer(dst_size, fill), {}, k_not_written};
    coders& with = shared_coders(how.threads);
    out.result = run(with, how.features, [&] {
        return QVRUncompressed_DecodeFrame(with.decoder, &up, stream.data(), stream.size_32(), out.dst.data(),
                                           out.dst.size_32(), &out.written);
    });
    out.dst.check_borders();
    return out;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    split_input input(data, size);
    const setup chosen = choose_setup(input.choices);
    const uncompressed_params up = choose_decoder_params(input.stream, input.choices);
    const std::size_t needed = frame_size(up);
    const std::size_t dst_size = choose_size(needed, input.choices);

    const decoded first = decode(chosen, up, input.stream, dst_size, k_fills[0]);
    const decoded second = decode(k_reference, up, input.stream, dst_size, k_fills[1]);
    require(first.result == second.result, "threads and instruction sets give the same outcome");
    require(first.written == second.written, "threads and instruction sets give the same size");
    if (first.result.ok()) {
        require(first.written == needed, "the size of the raw frame is returned");
        require_same_output(first.dst, second.dst);
    } else {
        require(first.written == k_not_written, "a failure returns no size");
    }
    input.stream.check_borders();
    return 0;
}
