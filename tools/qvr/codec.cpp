// SPDX-License-Identifier: BSD-3-Clause
#include "codec.h"

#include <chrono>
#include <cstdio>

namespace qvr {

namespace {

using steady = std::chrono::steady_clock;

double seconds_since(steady::time_point start) {
    return std::chrono::duration<double>(steady::now() - start).count();
}

std::uint32_t narrow(std::size_t size) {
    return size > 0xFFFFFFFFu ? 0xFFFFFFFFu : static_cast<std::uint32_t>(size);
}

// Messages that speak of what the command line asks for, or of the machine. All others speak of the bytes of a
// bitstream.
struct advice {
    const char* message;
    const char* hint;
    exit_code code = exit_code::usage;
};

constexpr advice k_advice[] = {
    {"Width must be multiple of 2", "crop or pad the picture to an even width, or use a 4:4:4 order"},
    {"Height must be multiple of 2", "crop or pad the picture to an even height, or use a 4:2:2 or 4:4:4 order"},
    {"Only 8 and 16 bit alpha supported for RLE", "leave --alpha-rle out: this type stores no alpha"},
    {"Only 8 and 16 bit alpha is supported", "ask for an order without alpha: this type stores none"},
    {"rowBytes2 is too small", "raise --row-bytes2, or leave it out for rows without a gap"},
    {"rowBytes is too small", "raise --row-bytes, or leave it out for rows without a gap"},
    {"bit depth in src metadata", "'qvr info' shows the type that the frame has; leave --type out to decode to it"},
    {"src metadata type is incompatible",
     "'qvr info' shows the order that the frame has; no colour conversion is made, so only orders of the same kind "
     "can be asked for"},
    {"combination of color component order", "'qvr formats' shows which types each order takes"},
    {"src buffer is too small according to metadata",
     "coded alpha takes no wide gaps between rows: lower --row-bytes2, or leave --alpha-rle out"},
    {"bad_alloc", "the machine has not enough memory for this frame", exit_code::io},
};

const advice* find_advice(const std::string& message) {
    for (const advice& entry : k_advice) {
        if (message.find(entry.message) != std::string::npos) {
            return &entry;
        }
    }
    return nullptr;
}

}  // namespace

compression make_compression(bool alpha_rle, unsigned slices) {
    compression how = {};
    how.size = QVRUNCOMPRESSED_COMPRESSED_PARAMS_SIZE;
    how.alphaCompression = alpha_rle ? 1 : 0;
    how.rleSlices = static_cast<std::uint8_t>(slices);
    return how;
}

std::string time_text(const codec_time& time, unsigned long long frames) {
    const double megabytes = static_cast<double>(time.raw_bytes) / 1e6;
    char text[160];
    std::snprintf(text, sizeof text, "%llu frame%s, %.1f MB raw in %.4f s of codec calls: %.0f MB/s", frames,
                  frames == 1 ? "" : "s", megabytes, time.seconds, time.seconds > 0 ? megabytes / time.seconds : 0.0);
    return text;
}

QVRUncompressed_CodecConfig_t message_log::config(unsigned threads) {
    QVRUncompressed_CodecConfig_t config = {};
    config.size = QVRUNCOMPRESSED_CODEC_CONFIG_SIZE;
    config.threadCount = threads;
    config.userData = this;
    config.errorCallback = receive;
    return config;
}

void message_log::receive(const char* message, void* user_data) {
    static_cast<message_log*>(user_data)->last_message = message;
}

void message_log::fail(std::uint32_t status, const std::string& action, const location& where) const {
    const std::string reason =
        last_message.empty() ? "the library gave status " + std::to_string(status) + " and no reason" : last_message;
    const advice* found = find_advice(reason);
    throw failure(found ? found->code : exit_code::data, where, action + ": " + reason, found ? found->hint : "");
}

void message_log::fail_creation() const {
    throw failure(exit_code::io, {},
                  "cannot start the codec: " + (last_message.empty() ? "no reason given" : last_message),
                  "ask for fewer threads with --threads");
}

encoder::encoder(unsigned threads) {
    const QVRUncompressed_CodecConfig_t config = log.config(threads);
    QVRUncompressed_Encoder handle = nullptr;
    // Only the handle tells whether it was made: the status is 0 even when memory or threads run out.
    const std::uint32_t status = QVRUncompressed_CreateEncoder(&config, &handle);
    codec.reset(handle);
    if (status != QVRUncompressed_StatusOk || !handle) {
        log.fail_creation();
    }
}

bytes_view encoder::encode(const frame& from, const compression& how, const location& where) {
    require_size(from.layout, how, exit_code::usage, where);
    const std::uint32_t capacity = QVRUncompressed_GetCompressedBufSize(&from.layout, &how);
    if (buffer.size() < capacity) {
        buffer.resize(capacity);
    }
    log.forget();
    std::uint32_t written = 0;
    const steady::time_point start = steady::now();
    const std::uint32_t status =
        QVRUncompressed_EncodeFrame(codec.get(), &from.layout, &how, from.samples.data(), narrow(from.bytes),
                                    buffer.data(), narrow(buffer.size()), &written);
    spent.seconds += seconds_since(start);
    if (status != QVRUncompressed_StatusOk) {
        log.fail(status, "cannot encode", where);
    }
    spent.raw_bytes += from.bytes;
    return {buffer.data(), written};
}

decoder::decoder(unsigned threads) {
    const QVRUncompressed_CodecConfig_t config = log.config(threads);
    QVRUncompressed_Decoder handle = nullptr;
    const std::uint32_t status = QVRUncompressed_CreateDecoder(&config, &handle);
    codec.reset(handle);
    if (status != QVRUncompressed_StatusOk || !handle) {
        log.fail_creation();
    }
}

frame_layout decoder::read_layout(bytes_view from, const location& where) {
    frame_layout layout = empty_layout();
    log.forget();
    const std::uint32_t status = QVRUncompressed_ReadMetadata(codec.get(), from.data, narrow(from.size), &layout);
    if (status != QVRUncompressed_StatusOk) {
        log.fail(status, "cannot read the frame's description", where);
    }
    return layout;
}

void decoder::decode(bytes_view from, frame& to, const location& where) {
    require_raw_size(to.layout, exit_code::data, where);
    to.bytes = QVRUncompressed_GetUncompressedBufSize(&to.layout);
    // A frame without samples still needs an address to be decoded to.
    if (to.samples.size() < to.bytes || to.samples.empty()) {
        to.samples.resize(to.bytes + 1);
    }
    log.forget();
    const steady::time_point start = steady::now();
    const std::uint32_t status = QVRUncompressed_DecodeFrame(codec.get(), &to.layout, from.data, narrow(from.size),
                                                             to.samples.data(), narrow(to.samples.size()), nullptr);
    spent.seconds += seconds_since(start);
    if (status != QVRUncompressed_StatusOk) {
        log.fail(status, "cannot decode", where);
    }
    spent.raw_bytes += to.bytes;
}

}  // namespace qvr
