// SPDX-License-Identifier: BSD-3-Clause
#include "codec.h"

#include <cstdio>
#include <stdexcept>

namespace bench {

namespace {

void print_message(const char* message, void*) {
    std::fprintf(stderr, "qvr_bench: %s\n", message);
}

QVRUncompressed_CodecConfig_t config_record(std::uint32_t threads) {
    return {sizeof(QVRUncompressed_CodecConfig_t), threads, nullptr, print_message};
}

void expect_ok(std::uint32_t status, const char* what) {
    if (status != QVRUncompressed_StatusOk) {
        throw std::runtime_error(std::string(what) + " failed with status " + std::to_string(status));
    }
}

}  // namespace

frame_params frame_record(std::uint32_t order, std::uint32_t type, const frame_size& size) {
    return {sizeof(frame_params), order, type, size.width, size.height, 0, 0, 0};
}

stream_params raw_alpha() {
    return {sizeof(stream_params), 0, 0};
}

stream_params coded_alpha(std::uint8_t slices) {
    return {sizeof(stream_params), 1, slices};
}

std::uint32_t raw_bytes(const frame_params& up) {
    return QVRUncompressed_GetUncompressedBufSize(&up);
}

std::uint32_t stream_bytes(const frame_params& up, const stream_params& cp) {
    return QVRUncompressed_GetCompressedBufSize(&up, &cp);
}

encoder::encoder(std::uint32_t threads) {
    const QVRUncompressed_CodecConfig_t config = config_record(threads);
    expect_ok(QVRUncompressed_CreateEncoder(&config, &handle_), "making an encoder");
}

std::uint32_t encoder::encode(const frame_params& up, const stream_params& cp, const std::uint8_t* raw,
                              std::uint8_t* to) {
    std::uint32_t written = 0;
    expect_ok(QVRUncompressed_EncodeFrame(handle_, &up, &cp, raw, raw_bytes(up), to, stream_bytes(up, cp), &written),
              "encoding");
    return written;
}

decoder::decoder(std::uint32_t threads) {
    const QVRUncompressed_CodecConfig_t config = config_record(threads);
    expect_ok(QVRUncompressed_CreateDecoder(&config, &handle_), "making a decoder");
}

void decoder::decode(const frame_params& up, const std::uint8_t* stream, std::uint32_t size, std::uint8_t* to) {
    std::uint32_t written = 0;
    expect_ok(QVRUncompressed_DecodeFrame(handle_, &up, stream, size, to, raw_bytes(up), &written), "decoding");
}

frame_params decoder::read_metadata(const std::uint8_t* stream, std::uint32_t size) {
    frame_params up{};
    up.size = sizeof up;
    expect_ok(QVRUncompressed_ReadMetadata(handle_, stream, size, &up), "reading metadata");
    return up;
}

}  // namespace bench
