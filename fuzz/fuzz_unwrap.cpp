// SPDX-License-Identifier: BSD-3-Clause
//
// Taking wrapped payloads out of a stream, with records as they were read and with records that are wrong.
#include <algorithm>

#include "frames.h"

namespace {

using namespace fuzz;

constexpr std::uint32_t k_not_written = 0xdeadbeef;
constexpr std::uint32_t k_most_payloads = 40;

// A call without its outputs. No record is left out even with a count of 0: the library reads the first one.
struct request {
    uncompressed_params up;
    std::vector<wrap_params> wraps;
    std::vector<std::size_t> room;  // of each payload's buffer
    std::uint32_t count;
    std::size_t dst_size;
};

struct unwrapped {
    exact_buffer dst;
    std::vector<exact_buffer> payloads;
    outcome result;
    std::uint32_t written;
};

// A payload that does not lie inside the source must be refused, so no buffer need be larger than the source.
std::vector<std::size_t> room_for(const std::vector<wrap_params>& wraps, const exact_buffer& stream) {
    std::vector<std::size_t> room;
    for (const wrap_params& wrap : wraps) {
        room.push_back(std::min<std::size_t>(wrap.dataSize, stream.size()));
    }
    return room;
}

void spoil(request& wanted, byte_source& choices) {
    wrap_params& first = wanted.wraps[0];
    switch (choices.below(24)) {
        case 1:
            first.wrapType = choices.below(5);
            break;
        case 2:
            // The buffer stays as large as the stream needs it.
            first.dataSize += 1;
            break;
        case 3:
            first.dataSize -= 1;
            break;
        case 4:
            wanted.count = 0;
            break;
        case 5:
            wanted.wraps.push_back({sizeof(wrap_params), 3, 0});
            wanted.room.push_back(0);
            ++wanted.count;
            break;
        case 6:
            wanted.count = 1;
            break;
        case 7:
            wanted.wraps.back().size ^= std::uint64_t{1} << choices.below(64);
            break;
        default:
            break;
    }
}

request choose_request(const exact_buffer& stream, byte_source& choices) {
    request wanted;
    wanted.up = choose_decoder_params(stream, choices);
    if (choices.below(4) != 3) {
        wanted.up.colorComponentOrder = QVRUncompressed_OrderAlpha;
    }
    const std::uint32_t found = QVRUncompressed_ReadWrapCount(stream.data(), stream.size_32());
    wanted.count = std::min(found, k_most_payloads);
    wanted.wraps.assign(std::max(wanted.count, 1u), {sizeof(wrap_params), 1, 0});
    uncompressed_params ignored = make_params(0, 0, 0, 0);
    QVRUncompressed_ReadWrapMetadata(shared_coders(1).decoder, stream.data(), stream.size_32(), &ignored,
                                     wanted.wraps.data(), wanted.count);
    wanted.room = room_for(wanted.wraps, stream);
    spoil(wanted, choices);
    wanted.dst_size = choose_size(frame_size(wanted.up), choices);
    return wanted;
}

unwrapped unwrap(const setup& how, const request& wanted, const exact_buffer& stream, std::uint8_t fill) {
    unwrapped out = {exact_buffer(wanted.dst_size, fill), {}, {}, k_not_written};
    std::vector<std::uint8_t*> targets;
    for (const std::size_t size : wanted.room) {
        out.payloads.emplace_back(size, fill);
        targets.push_back(out.payloads.back().data());
    }
    coders& with = shared_coders(how.threads);
    out.result = run(with, how.features, [&] {
        return QVRUncompressed_DecodeAndUnwrapFrame(with.decoder, &wanted.up, wanted.wraps.data(), wanted.count,
                                                    stream.data(), stream.size_32(), out.dst.data(), out.dst.size_32(),
                                                    targets.data(), &out.written);
    });
    out.dst.check_borders();
    for (const exact_buffer& payload : out.payloads) {
        payload.check_borders();
    }
    return out;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    split_input input(data, size);
    const setup chosen = choose_setup(input.choices);
    const request wanted = choose_request(input.stream, input.choices);

    const unwrapped first = unwrap(chosen, wanted, input.stream, k_fills[0]);
    const unwrapped second = unwrap(k_reference, wanted, input.stream, k_fills[1]);
    require(first.result == second.result, "threads and instruction sets give the same outcome");
    require(first.written == second.written, "threads and instruction sets give the same size");
    if (!first.result.ok()) {
        require(first.written == k_not_written, "a failure returns no size");
        return 0;
    }
    const bool stitched = wanted.wraps[0].wrapType == QVRUncompressed_WrapStitched;
    require(first.written == (stitched ? 0 : frame_size(wanted.up)), "the size of the raw frame is returned");
    require_same_output(first.dst, second.dst);
    for (std::size_t i = 0; i < first.payloads.size(); ++i) {
        require_same_output(first.payloads[i], second.payloads[i]);
    }
    input.stream.check_borders();
    return 0;
}
