// SPDX-License-Identifier: BSD-3-Clause
#include "codec.h"

#include <chrono>
#include <cstdio>

#include "box_tree.h"
#include "payload_check.h"

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

// Of a frame that does not hold what the caller's format needs.
constexpr const char* k_mismatch = "src metadata";

constexpr advice k_advice[] = {
    {"Width must be multiple of 2", "crop or pad the picture to an even width, or use a 4:4:4 order"},
    {"Height must be multiple of 2", "crop or pad the picture to an even height, or use a 4:2:2 or 4:4:4 order"},
    {"Only 8 and 16 bit alpha supported for RLE", "leave --alpha-rle out: this type stores no alpha"},
    {"Only 8 and 16 bit alpha is supported", "ask for an order without alpha: this type stores none"},
    {"rowBytes2 is too small", "raise --row-bytes2, or leave it out for rows without a gap"},
    {"rowBytes is too small", "raise --row-bytes, or leave it out for rows without a gap"},
    {k_mismatch, "'qvr info' shows the format that the frame has"},
    {"combination of color component order", "'qvr formats' shows which types each order takes"},
    {"src buffer is too small according to metadata",
     "coded alpha takes no wide gaps between rows: lower --row-bytes2, or leave --alpha-rle out"},
    {"Can't wrap uncompressed alpha", "compress the frame without its alpha: the matte takes the place of it"},
    {"Uncompressed params width", "the matte must have exactly the size of the compressed frame"},
    {"Uncompressed params height", "the matte must have exactly the size of the compressed frame"},
    {"not compatible with interlaced QCX", "the compressed frame is interlaced: give --interlaced"},
    {"not compatible with progressive QCX", "the compressed frame is progressive: leave --interlaced out"},
    {"too small to parse QCX header", "the file was cut short, or it is no QCX frame", exit_code::data},
    {"Invalid compression ID in QCX header",
     "the file is no QCX frame, or one of a compression that no alpha can be put beside", exit_code::data},
    {"Only single QCX wrap chunk", "'qvr info' shows the payloads; only one QCX frame can stand beside an alpha plane",
     exit_code::data},
    {"bad_alloc", "the machine has not enough memory for this frame", exit_code::io},
};

// "UYVY U8 (4:2:2)"
std::string format_text(const frame_layout& of) {
    const order_info* order = find_order(of.colorComponentOrder);
    const type_info* type = find_type(of.componentType);
    if (!order || !type) {
        return "order " + order_text(of.colorComponentOrder) + ", type " + type_text(of.componentType);
    }
    const bool alone = order->subsampling == std::string("-");
    const std::string planes = alone ? "alpha alone" : order->subsampling + std::string(order->alpha ? ", alpha" : "");
    return std::string(order->name) + " " + type->name + " (" + planes + ")";
}

const advice* find_advice(const std::string& message) {
    for (const advice& entry : k_advice) {
        if (message.find(entry.message) != std::string::npos) {
            return &entry;
        }
    }
    return nullptr;
}

void make_room(frame& in, const location& where) {
    require_raw_size(in.layout, exit_code::data, where);
    in.bytes = QVRUncompressed_GetUncompressedBufSize(&in.layout);
    // A frame without samples still needs an address to be decoded to.
    if (in.samples.size() < in.bytes || in.samples.empty()) {
        in.samples.resize(in.bytes + 1);
    }
}

// 'pack', 'sinf' and 'sdat' around the boxes of stitched chunks.
constexpr std::uint64_t k_stitched_overhead = 37;

// The kinds of content that can be taken out; the library has no words of its own for the others.
void require_unwrappable(const wrapped_contents& found, const location& where) {
    const std::uint32_t first = found.records.front().wrapType;
    if (first == QVRUncompressed_WrapTile) {
        throw failure(exit_code::data, where, "the chunks begin with a 'tile' box, but the first must be a 'stch' box",
                      "the type of a box is damaged; 'qvr info' shows them");
    }
    if (first == QVRUncompressed_WrapQCX && found.layout.colorComponentOrder != QVRUncompressed_OrderAlpha) {
        throw failure(exit_code::data, where, "there is no lone alpha plane beside the QCX frame",
                      "'qvr info' shows what is in its place");
    }
}

}  // namespace

compression make_compression(bool alpha_rle, unsigned slices) {
    compression how = {};
    how.size = QVRUNCOMPRESSED_COMPRESSED_PARAMS_SIZE;
    how.alphaCompression = alpha_rle ? 1 : 0;
    how.rleSlices = static_cast<std::uint8_t>(slices);
    return how;
}

codec_time& codec_time::operator+=(const codec_time& other) {
    seconds += other.seconds;
    raw_bytes += other.raw_bytes;
    return *this;
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

void message_log::fail(std::uint32_t status, const std::string& action, const location& where,
                       const std::string& hint) const {
    const std::string reason =
        last_message.empty() ? "the library gave status " + std::to_string(status) + " and no reason" : last_message;
    const advice* found = find_advice(reason);
    throw failure(found ? found->code : exit_code::data, where, action + ": " + reason,
                  hint.empty() && found ? found->hint : hint);
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
    const std::size_t written = encode_into(buffer, from, how, where);
    return {buffer.data(), written};
}

std::size_t encoder::encode_into(std::vector<std::uint8_t>& to, const frame& from, const compression& how,
                                 const location& where) {
    require_size(from.layout, how, exit_code::usage, where);
    const std::uint32_t capacity = QVRUncompressed_GetCompressedBufSize(&from.layout, &how);
    if (to.size() < capacity) {
        to.resize(capacity);
    }
    log.forget();
    std::uint32_t written = 0;
    const steady::time_point start = steady::now();
    const std::uint32_t status =
        QVRUncompressed_EncodeFrame(codec.get(), &from.layout, &how, from.samples.data(), narrow(from.bytes), to.data(),
                                    narrow(to.size()), &written);
    spent.seconds += seconds_since(start);
    if (status != QVRUncompressed_StatusOk) {
        log.fail(status, "cannot encode", where);
    }
    spent.raw_bytes += from.bytes;
    return written;
}

bytes_view encoder::wrap(const std::vector<wrapped_payload>& payloads, const frame& beside, const compression& how,
                         const location& where) {
    const bool stitched = payloads.front().type == QVRUncompressed_WrapStitched;
    if (!stitched) {
        require_size(beside.layout, how, exit_code::usage, where);
    }
    std::vector<wrap_record> records;
    std::vector<const std::uint8_t*> data;
    std::uint64_t total = stitched ? k_stitched_overhead : QVRUncompressed_GetCompressedBufSize(&beside.layout, &how);
    std::uint64_t raw = beside.bytes;
    for (const wrapped_payload& payload : payloads) {
        records.push_back({QVRUNCOMPRESSED_WRAP_PARAMS_SIZE, payload.type, narrow(payload.data.size)});
        data.push_back(payload.data.data);
        raw += payload.data.size;
        total += k_box_header + payload.data.size;
    }
    if (total > 0xFFFFFFFFu) {
        throw failure(exit_code::usage, where, "the payloads are too large: no frame may pass 4 GiB",
                      "wrap them into several frames");
    }
    const auto count = static_cast<std::uint32_t>(records.size());
    buffer.resize(QVRUncompressed_GetCompressedWrapBufSize(&beside.layout, &how, records.data(), count) +
                  std::size_t{1});
    log.forget();
    std::uint32_t written = 0;
    const steady::time_point start = steady::now();
    const std::uint32_t status = QVRUncompressed_EncodeAndWrapFrame(
        codec.get(), &beside.layout, &how, records.data(), count, beside.samples.data(), narrow(beside.bytes),
        data.data(), buffer.data(), narrow(buffer.size()), &written);
    spent.seconds += seconds_since(start);
    if (status != QVRUncompressed_StatusOk) {
        log.fail(status, "cannot wrap", where);
    }
    spent.raw_bytes += raw;
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
    require_covered_rows(from, where);
    make_room(to, where);
    log.forget();
    const steady::time_point start = steady::now();
    const std::uint32_t status = QVRUncompressed_DecodeFrame(codec.get(), &to.layout, from.data, narrow(from.size),
                                                             to.samples.data(), narrow(to.samples.size()), nullptr);
    spent.seconds += seconds_since(start);
    if (status != QVRUncompressed_StatusOk) {
        log.fail(status, "cannot decode", where, mismatch_hint(from, to.layout));
    }
    spent.raw_bytes += to.bytes;
}

std::string decoder::mismatch_hint(bytes_view from, const frame_layout& asked) {
    frame_layout own = empty_layout();
    if (!log.says(k_mismatch) ||
        QVRUncompressed_ReadMetadata(codec.get(), from.data, narrow(from.size), &own) != QVRUncompressed_StatusOk) {
        return "";
    }
    return "the frame is " + format_text(own) + "; " + format_text(asked) +
           " cannot be made of it: samples can change places, but colours and depths are never converted";
}

wrapped_contents decoder::read_wrapped(bytes_view from, const location& where) {
    wrapped_contents found;
    // Each takes a box of its own, so that there are never more records than a multiple of the frame's bytes.
    const std::uint32_t count = QVRUncompressed_ReadWrapCount(from.data, narrow(from.size));
    found.records.resize(count, {QVRUNCOMPRESSED_WRAP_PARAMS_SIZE, 0, 0});
    log.forget();
    const std::uint32_t status = QVRUncompressed_ReadWrapMetadata(codec.get(), from.data, narrow(from.size),
                                                                  &found.layout, found.records.data(), count);
    if (status != QVRUncompressed_StatusOk) {
        log.fail(status, "cannot read the frame's description", where);
    }
    return found;
}

std::vector<wrapped_payload> decoder::unwrap(bytes_view from, const wrapped_contents& found, frame& beside,
                                             const location& where) {
    require_unwrappable(found, where);
    std::uint64_t total = 0;
    for (const wrap_record& record : found.records) {
        total += record.dataSize;
    }
    if (total > from.size) {
        throw failure(exit_code::data, where,
                      "the payloads are said to have " + std::to_string(total) + " bytes, but the frame has only " +
                          std::to_string(from.size),
                      "the size of a wrapped box is damaged; 'qvr info' shows them");
    }
    buffer.resize(static_cast<std::size_t>(total) + 1);
    std::vector<wrapped_payload> payloads;
    std::vector<std::uint8_t*> targets;
    std::size_t at = 0;
    for (const wrap_record& record : found.records) {
        targets.push_back(buffer.data() + at);
        payloads.push_back({record.wrapType, {targets.back(), record.dataSize}});
        at += record.dataSize;
    }
    const bool alpha = found.layout.colorComponentOrder == QVRUncompressed_OrderAlpha;
    beside.layout = found.layout;
    beside.bytes = 0;
    if (alpha) {
        require_covered_rows(from, where);
        make_room(beside, where);
    }
    log.forget();
    const steady::time_point start = steady::now();
    const std::uint32_t status = QVRUncompressed_DecodeAndUnwrapFrame(
        codec.get(), &beside.layout, found.records.data(), static_cast<std::uint32_t>(targets.size()), from.data,
        narrow(from.size), alpha ? beside.samples.data() : nullptr, narrow(beside.bytes), targets.data(), nullptr);
    spent.seconds += seconds_since(start);
    if (status != QVRUncompressed_StatusOk) {
        log.fail(status, "cannot unwrap", where);
    }
    spent.raw_bytes += total + beside.bytes;
    return payloads;
}

}  // namespace qvr
