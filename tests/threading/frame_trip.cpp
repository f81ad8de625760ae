// SPDX-License-Identifier: BSD-3-Clause
#include "frame_trip.h"

#include <algorithm>
#include <cstdio>

namespace {

// Runs of equal values and steps between them, so that coded alpha has tokens of every kind.
std::uint8_t sample(std::size_t index) {
    return static_cast<std::uint8_t>(index / 7 * 3 + (index % 61 < 4 ? index * 37 : 0));
}

// The least that passes for a compressed frame: its dimensions, no alpha, and a compression that is known.
std::vector<std::uint8_t> compressed_frame(std::uint32_t width, std::uint32_t height) {
    std::vector<std::uint8_t> frame(61);
    frame[24] = static_cast<std::uint8_t>(height >> 8);
    frame[25] = static_cast<std::uint8_t>(height);
    frame[26] = static_cast<std::uint8_t>(width >> 8);
    frame[27] = static_cast<std::uint8_t>(width);
    frame[42] = 0x05;  // 1300
    frame[43] = 0x14;
    frame[60] = 0x77;
    return frame;
}

}  // namespace

std::vector<frame_case> all_pairs(std::uint32_t width, std::uint32_t height, std::uint32_t height_of_420) {
    std::vector<frame_case> pairs;
    for (std::uint32_t order = 1; order <= 16; ++order) {
        const bool half_height = order == 10 || order == 13;
        for (const std::uint32_t type : {1u, 2u, 3u, 4u, 5u, 6u, 7u, 214u}) {
            const frame_case pair = {order, type, 0, carried::alone, width, half_height ? height_of_420 : height};
            const QVRUncompressed_UncompressedParams_t frame = {36, order, type, width, pair.height, 0, 0, 0};
            const QVRUncompressed_CompressedParams_t how = {10, 0, 0};
            if (QVRUncompressed_GetCompressedBufSize(&frame, &how) != 0) {
                pairs.push_back(pair);
            }
        }
    }
    return pairs;
}

frame_trip::frame_trip(const frame_case& what)
    : frame_{36, what.order, what.type, what.width, what.height, 0, 0, 0},
      how_{10, static_cast<std::uint8_t>(what.slices != 0), what.slices},
      raw_(QVRUncompressed_GetUncompressedBufSize(&frame_)),
      decoded_(raw_.size()) {
    for (std::size_t i = 0; i < raw_.size(); ++i) {
        raw_[i] = sample(i);
    }
    if (what.how == carried::beside_a_compressed_frame) {
        add_payload(1, compressed_frame(what.width, what.height));
    } else if (what.how == carried::as_stitched_tiles) {
        for (std::uint8_t i = 0; i < 3; ++i) {
            add_payload(i == 0 ? 2 : 3, bytes(20u + i, i));
        }
    }
    taken_out_ = payloads_;
    read_wraps_ = wraps_;
    for (std::size_t i = 0; i < payloads_.size(); ++i) {
        sources_.push_back(payloads_[i].data());
        targets_.push_back(taken_out_[i].data());
    }
    stream_.resize(queries()[wraps_.empty() ? 1 : 2]);
}

void frame_trip::add_payload(std::uint32_t wrap_type, bytes payload) {
    wraps_.push_back({16, wrap_type, static_cast<std::uint32_t>(payload.size())});
    payloads_.push_back(std::move(payload));
}

std::array<std::uint32_t, 4> frame_trip::queries() const {
    const auto count = static_cast<std::uint32_t>(wraps_.size());
    return {QVRUncompressed_GetUncompressedBufSize(&frame_), QVRUncompressed_GetCompressedBufSize(&frame_, &how_),
            count == 0 ? 0 : QVRUncompressed_GetCompressedWrapBufSize(&frame_, &how_, wraps_.data(), count),
            QVRUncompressed_ReadWrapCount(stream_.data(), written_)};
}

std::uint32_t frame_trip::encode(QVRUncompressed_Encoder encoder) {
    std::fill(stream_.begin(), stream_.end(), std::uint8_t{0xcc});
    const auto raw_size = static_cast<std::uint32_t>(raw_.size());
    const auto room = static_cast<std::uint32_t>(stream_.size());
    if (wraps_.empty()) {
        return QVRUncompressed_EncodeFrame(encoder, &frame_, &how_, raw_.data(), raw_size, stream_.data(), room,
                                           &written_);
    }
    return QVRUncompressed_EncodeAndWrapFrame(encoder, &frame_, &how_, wraps_.data(),
                                              static_cast<std::uint32_t>(wraps_.size()), raw_.data(), raw_size,
                                              sources_.data(), stream_.data(), room, &written_);
}

std::uint32_t frame_trip::decode(QVRUncompressed_Decoder decoder) {
    std::fill(decoded_.begin(), decoded_.end(), std::uint8_t{0xdd});
    for (bytes& each : taken_out_) {
        std::fill(each.begin(), each.end(), std::uint8_t{0xdd});
    }
    read_ = {36, 99, 99, 99, 99, 99, 99, 99};
    return wraps_.empty() ? decode_alone(decoder) : unwrap(decoder);
}

std::uint32_t frame_trip::decode_alone(QVRUncompressed_Decoder decoder) {
    const std::uint32_t status = QVRUncompressed_ReadMetadata(decoder, stream_.data(), written_, &read_);
    if (status != 0) {
        return status;
    }
    return QVRUncompressed_DecodeFrame(decoder, &frame_, stream_.data(), written_, decoded_.data(),
                                       static_cast<std::uint32_t>(decoded_.size()), nullptr);
}

std::uint32_t frame_trip::unwrap(QVRUncompressed_Decoder decoder) {
    const auto count = static_cast<std::uint32_t>(wraps_.size());
    for (QVRUncompressed_WrapParams_t& each : read_wraps_) {
        each = {16, 99, 99};
    }
    const std::uint32_t status =
        QVRUncompressed_ReadWrapMetadata(decoder, stream_.data(), written_, &read_, read_wraps_.data(), count);
    if (status != 0) {
        return status;
    }
    return QVRUncompressed_DecodeAndUnwrapFrame(decoder, &frame_, read_wraps_.data(), count, stream_.data(), written_,
                                                decoded_.data(), static_cast<std::uint32_t>(decoded_.size()),
                                                targets_.data(), nullptr);
}

frame_trip::bytes frame_trip::came_back() const {
    bytes all = decoded_;
    for (const bytes& each : taken_out_) {
        all.insert(all.end(), each.begin(), each.end());
    }
    const auto* const record = reinterpret_cast<const std::uint8_t*>(&read_);
    all.insert(all.end(), record, record + sizeof read_);
    return all;
}

void frame_trip::set_stream(const bytes& encoded) {
    std::copy(encoded.begin(), encoded.end(), stream_.begin());
    written_ = static_cast<std::uint32_t>(encoded.size());
}

handle_pair::handle_pair(std::uint32_t threads) {
    const auto keep = [](const char* text, void* user_data) {
        auto& self = *static_cast<handle_pair*>(user_data);
        ++self.reports;
        std::snprintf(self.message, sizeof self.message, "%s", text);
    };
    const QVRUncompressed_CodecConfig_t config = {28, threads, this, keep};
    created = {QVRUncompressed_CreateEncoder(&config, &encoder), QVRUncompressed_CreateDecoder(&config, &decoder)};
}

handle_pair::~handle_pair() {
    QVRUncompressed_DestroyEncoder(encoder);
    QVRUncompressed_DestroyDecoder(decoder);
}
