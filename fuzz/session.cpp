// SPDX-License-Identifier: BSD-3-Clause
#include "session.h"

#include <algorithm>
#include <cstring>

#include "frames.h"

namespace fuzz {

namespace {

constexpr std::uint32_t k_not_written = 0xdeadbeef;
constexpr std::uint32_t k_qcx_header = 45;

// Not the bytes themselves, which would make stories long.
std::uint64_t digest(const std::uint8_t* data, std::size_t size) {
    std::uint64_t hash = 0xcbf29ce484222325;
    while (size != 0) {
        std::uint64_t word = 0;
        const std::size_t part = std::min(size, sizeof word);
        std::memcpy(&word, data, part);
        hash = (hash ^ word) * 0x100000001b3;
        hash ^= hash >> 29;
        data += part;
        size -= part;
    }
    return hash;
}

// A frame whose header says these dimensions.
void write_qcx_header(const exact_buffer& frame, const uncompressed_params& up) {
    if (frame.size() < k_qcx_header) {
        return;
    }
    constexpr std::uint32_t id = 1300;
    std::uint8_t* const at = frame.data();
    at[7] = 0;
    at[24] = static_cast<std::uint8_t>(up.height >> 8);
    at[25] = static_cast<std::uint8_t>(up.height);
    at[26] = static_cast<std::uint8_t>(up.width >> 8);
    at[27] = static_cast<std::uint8_t>(up.width);
    at[40] = 0;
    at[41] = 0;
    at[42] = static_cast<std::uint8_t>(id >> 8);
    at[43] = static_cast<std::uint8_t>(id & 0xff);
}

}  // namespace

session::session(const setup& chosen, byte_source steps)
    : how(chosen), script(steps), with(chosen.threads == 1 ? own.emplace(1u) : shared_coders(chosen.threads)) {}

bool session::step() {
    if (script.empty()) {
        return false;
    }
    switch (script.below(10)) {
        case 0:
            size_queries();
            break;
        case 1:
        case 2:
            encode();
            break;
        case 3:
        case 4:
            decode();
            break;
        case 5:
            read_metadata();
            break;
        case 6:
            wrap();
            break;
        case 7:
            unwrap();
            break;
        case 8:
            damage();
            break;
        case 9:
            if (renewals++ < 2) {
                with.renew_decoder();
            }
            break;
    }
    return true;
}

void session::tell(const char* name, std::uint64_t value) {
    told += name;
    told += ' ' + std::to_string(value) + '\n';
}

void session::tell(const exact_buffer& output) {
    output.check_borders();
    tell("bytes", digest(output.data(), output.size()));
}

template <class Call>
bool session::call(const char* name, const Call& function) {
    const outcome result = run(with, how.features, function);
    tell(name, result.status);
    told += result.message + '\n';
    return result.ok();
}

std::uint32_t session::any_dimension() {
    const std::uint32_t value = script.byte();
    return value < 240 ? value % 24 : k_extremes[value % k_extremes.size()];
}

uncompressed_params session::any_params() {
    uncompressed_params up = make_params(script.below(18), 0, any_dimension(), any_dimension());
    const std::uint32_t type = script.byte();
    up.componentType = type < 240 ? k_types[type % k_types.size()] : type;
    if (type % 16 < 12) {
        up.width &= ~1u;
        up.height &= ~1u;
    }
    up.frameLayout = script.byte() >> 7;
    const std::uint32_t kind = script.byte();
    if (kind >= 0xf0) {
        up.rowBytes = script.word();
        up.rowBytes2 = script.word();
    } else if (kind >= 0x80) {
        choose_strides(up, script);
    }
    up.size ^= kind == 0xef ? 1 : 0;
    return up;
}

compressed_params session::any_compression() {
    const std::uint32_t kind = script.byte();
    const std::uint64_t size = sizeof(compressed_params) + (kind == 0xff ? 1 : 0);
    return {size, static_cast<std::uint8_t>(kind & 1), static_cast<std::uint8_t>(script.byte())};
}

uncompressed_params session::params_of_stream() {
    const exact_buffer source(stream.data(), stream.size());
    return choose_decoder_params(source, script);
}

exact_buffer session::any_pixels(const uncompressed_params& up) {
    exact_buffer pixels(choose_size(frame_size(up), script), static_cast<std::uint8_t>(script.byte()));
    const std::uint32_t step = script.byte();
    const std::size_t varied = step == 0 ? 0 : std::min<std::size_t>(pixels.size(), 200);
    for (std::size_t i = 0; i < varied; ++i) {
        pixels.data()[i] = static_cast<std::uint8_t>((i * i * step) >> (step % 8));
    }
    return pixels;
}

void session::size_queries() {
    const uncompressed_params up = any_params();
    const compressed_params cp = any_compression();
    const std::uint32_t count = script.below(4);
    std::vector<wrap_params> wraps(count + 1);
    for (wrap_params& wrap : wraps) {
        wrap = {sizeof wrap, script.below(4), script.word()};
    }
    tell("raw size", QVRUncompressed_GetUncompressedBufSize(maybe_null(&up)));
    tell("size", QVRUncompressed_GetCompressedBufSize(maybe_null(&up), maybe_null(&cp)));
    tell("wrap size", QVRUncompressed_GetCompressedWrapBufSize(&up, &cp, maybe_null(wraps.data()), count));
}

void session::encode() {
    const uncompressed_params up = any_params();
    const compressed_params cp = any_compression();
    const std::size_t bound = QVRUncompressed_GetCompressedBufSize(&up, &cp);
    const exact_buffer dst(choose_size(std::min(bound, k_most_memory), script), 0);
    const exact_buffer pixels = any_pixels(up);
    std::uint32_t written = k_not_written;
    const bool good = call("encode", [&] {
        return QVRUncompressed_EncodeFrame(with.encoder, maybe_null(&up), maybe_null(&cp), maybe_null(pixels.data()),
                                           pixels.size_32(), maybe_null(dst.data()), dst.size_32(), &written);
    });
    take_stream(good, dst, written);
}

// What an encoding call has left becomes the bitstream of the calls after it.
void session::take_stream(bool good, const exact_buffer& dst, std::uint32_t written) {
    require(good == (written != k_not_written), "a size is returned by a success alone");
    dst.check_borders();
    if (good) {
        require(written <= dst.size(), "the size returned lies inside the destination");
        stream.assign(dst.data(), dst.data() + written);
        tell("bytes", digest(dst.data(), written));
    }
}

void session::decode() {
    const uncompressed_params up = script.one_in(4) ? any_params() : params_of_stream();
    const exact_buffer source(stream.data(), stream.size());
    const exact_buffer dst(choose_size(frame_size(up), script), 0);
    std::uint32_t written = k_not_written;
    const bool good = call("decode", [&] {
        return QVRUncompressed_DecodeFrame(with.decoder, maybe_null(&up), maybe_null(source.data()), source.size_32(),
                                           maybe_null(dst.data()), dst.size_32(), &written);
    });
    require(good == (written != k_not_written), "a size is returned by a success alone");
    if (good) {
        tell(dst);
    }
}

void session::read_metadata() {
    const exact_buffer source(stream.data(), stream.size());
    uncompressed_params up = make_params(99, 0, 0, 0);
    const bool good = call("metadata", [&] {
        return QVRUncompressed_ReadMetadata(with.decoder, maybe_null(source.data()), source.size_32(), maybe_null(&up));
    });
    require(good == (up.colorComponentOrder != 99), "the record is filled by a success alone");
    tell("order", up.colorComponentOrder);
    tell("type", up.componentType);
    tell("payloads", QVRUncompressed_ReadWrapCount(source.data(), source.size_32()));
}

std::vector<wrap_params> session::any_wraps(std::vector<exact_buffer>& payloads, const uncompressed_params& up) {
    const std::uint32_t type = script.below(8);
    const std::uint32_t count = type == 1 ? 1 + (script.one_in(16) ? 1u : 0u) : script.below(5);
    std::vector<wrap_params> wraps;
    for (std::uint32_t i = 0; i < std::max(count, 1u); ++i) {
        const std::uint32_t size = script.below(96);
        payloads.emplace_back(type == 1 && size < 80 ? k_qcx_header + size : size, static_cast<std::uint8_t>(i));
        wraps.push_back({sizeof(wrap_params), type < 4 ? type : 2, payloads.back().size_32()});
        write_qcx_header(payloads.back(), up);
    }
    if (count == 0) {
        payloads.clear();
    }
    return wraps;
}

void session::wrap() {
    uncompressed_params up = any_params();
    if (!script.one_in(8)) {
        up.colorComponentOrder = QVRUncompressed_OrderAlpha;
        up.componentType = 1 + up.componentType % 2;
    }
    const compressed_params cp = any_compression();
    std::vector<exact_buffer> payloads;
    const std::vector<wrap_params> wraps = any_wraps(payloads, up);
    const auto count = static_cast<std::uint32_t>(payloads.size());
    std::vector<const std::uint8_t*> sources;
    for (const exact_buffer& payload : payloads) {
        sources.push_back(payload.data());
    }
    sources.push_back(nullptr);
    const std::size_t bound = QVRUncompressed_GetCompressedWrapBufSize(&up, &cp, wraps.data(), count);
    const exact_buffer dst(choose_size(std::min(bound, k_most_memory), script), 0);
    const exact_buffer pixels = any_pixels(up);
    std::uint32_t written = k_not_written;
    const bool good = call("wrap", [&] {
        return QVRUncompressed_EncodeAndWrapFrame(with.encoder, &up, &cp, maybe_null(wraps.data()), count,
                                                  maybe_null(pixels.data()), pixels.size_32(), sources.data(),
                                                  maybe_null(dst.data()), dst.size_32(), &written);
    });
    take_stream(good, dst, written);
}

void session::unwrap() {
    uncompressed_params up = params_of_stream();
    const exact_buffer source(stream.data(), stream.size());
    uncompressed_params ignored = make_params(0, 0, 0, 0);
    const std::uint32_t found = std::min(QVRUncompressed_ReadWrapCount(source.data(), source.size_32()), 40u);
    std::vector<wrap_params> wraps(found + 1, {sizeof(wrap_params), 1, 0});
    call("payloads", [&] {
        return QVRUncompressed_ReadWrapMetadata(with.decoder, source.data(), source.size_32(), &ignored, wraps.data(),
                                                found);
    });
    std::vector<exact_buffer> payloads;
    std::vector<std::uint8_t*> targets;
    for (const wrap_params& wrap : wraps) {
        payloads.emplace_back(std::min<std::size_t>(wrap.dataSize, source.size()), std::uint8_t{0});
        targets.push_back(payloads.back().data());
    }
    if (!script.one_in(4)) {
        up.colorComponentOrder = QVRUncompressed_OrderAlpha;
    }
    const std::uint32_t count = script.one_in(8) ? found + 1 : found;
    const exact_buffer dst(choose_size(frame_size(up), script), 0);
    const bool good = call("unwrap", [&] {
        return QVRUncompressed_DecodeAndUnwrapFrame(with.decoder, &up, wraps.data(), count, source.data(),
                                                    source.size_32(), maybe_null(dst.data()), dst.size_32(),
                                                    targets.data(), nullptr);
    });
    if (good) {
        tell(dst);
        for (const exact_buffer& payload : payloads) {
            tell(payload);
        }
    }
}

void session::damage() {
    if (stream.empty()) {
        return;
    }
    const std::size_t at = (script.byte() | script.byte() << 8) % stream.size();
    switch (script.below(4)) {
        case 0:
            stream.resize(at);
            break;
        case 1:
            stream.erase(stream.begin() + static_cast<std::ptrdiff_t>(at));
            break;
        default:
            stream[at] = static_cast<std::uint8_t>(script.byte());
    }
}

}  // namespace fuzz
