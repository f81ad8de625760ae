// SPDX-License-Identifier: BSD-3-Clause
#include "codec.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "guarded_buffer.h"

namespace test {

namespace {

// Takes the messages that came in since the call began.
template <class handle_type>
message_list take_messages(handle_type& from) {
    message_list taken;
    taken.swap(from.messages());
    return taken;
}

}  // namespace

void record_message(const char* message, void* user_data) {
    static_cast<message_list*>(user_data)->push_back(message);
}

encoder::encoder(uint32_t threads) : messages_(std::make_unique<message_list>()) {
    const QVRUncompressed_CodecConfig_t config = config_record(threads, messages_.get(), record_message);
    if (QVRUncompressed_CreateEncoder(&config, &handle_) != 0 || handle_ == nullptr) {
        throw std::runtime_error("no encoder");
    }
}

encoder::~encoder() {
    QVRUncompressed_DestroyEncoder(handle_);
}

decoder::decoder(uint32_t threads) : messages_(std::make_unique<message_list>()) {
    const QVRUncompressed_CodecConfig_t config = config_record(threads, messages_.get(), record_message);
    if (QVRUncompressed_CreateDecoder(&config, &handle_) != 0 || handle_ == nullptr) {
        throw std::runtime_error("no decoder");
    }
}

decoder::~decoder() {
    QVRUncompressed_DestroyDecoder(handle_);
}

bytes outcome::frame() const {
    const size_t size = written < data.size() ? written : data.size();
    return bytes(data.begin(), data.begin() + static_cast<std::ptrdiff_t>(size));
}

outcome encode(encoder& with, const frame_params& up, const stream_params& cp, const bytes& src,
               std::optional<uint32_t> dst_size) {
    const guarded_buffer source(src);
    guarded_buffer target(dst_size ? *dst_size : QVRUncompressed_GetCompressedBufSize(&up, &cp), guard::behind, k_fill);
    outcome result;
    take_messages(with);
    result.status = QVRUncompressed_EncodeFrame(with.handle(), &up, &cp, source.data(), source.size32(), target.data(),
                                                target.size32(), &result.written);
    result.messages = take_messages(with);
    result.data = target.copy();
    return result;
}

outcome decode(decoder& with, const frame_params& up, const bytes& stream, std::optional<uint32_t> dst_size) {
    const guarded_buffer source(stream);
    guarded_buffer target(dst_size ? *dst_size : QVRUncompressed_GetUncompressedBufSize(&up), guard::behind, k_fill);
    outcome result;
    take_messages(with);
    result.status = QVRUncompressed_DecodeFrame(with.handle(), &up, source.data(), source.size32(), target.data(),
                                                target.size32(), &result.written);
    result.messages = take_messages(with);
    result.data = target.copy();
    return result;
}

outcome encode(const frame_params& up, const stream_params& cp, const bytes& src, std::optional<uint32_t> dst_size) {
    encoder own;
    return encode(own, up, cp, src, dst_size);
}

outcome decode(const frame_params& up, const bytes& stream, std::optional<uint32_t> dst_size) {
    decoder own;
    return decode(own, up, stream, dst_size);
}

metadata read_metadata(const bytes& stream) {
    decoder own;
    const guarded_buffer source(stream);
    metadata result;
    result.up.size = 36;
    result.status = QVRUncompressed_ReadMetadata(own.handle(), source.data(), source.size32(), &result.up);
    result.messages = take_messages(own);
    return result;
}

metadata read_wrap_metadata(const bytes& stream, uint32_t wrap_count) {
    decoder own;
    const guarded_buffer source(stream);
    metadata result;
    result.up.size = 36;
    result.wraps.assign(wrap_count, wrap_record(77, 0x5a5a5a5a));
    result.status = QVRUncompressed_ReadWrapMetadata(own.handle(), source.data(), source.size32(), &result.up,
                                                     wrap_count == 0 ? nullptr : result.wraps.data(), wrap_count);
    result.messages = take_messages(own);
    return result;
}

uint32_t read_wrap_count(const bytes& stream) {
    const guarded_buffer source(stream);
    return QVRUncompressed_ReadWrapCount(source.data(), source.size32());
}

outcome wrap(encoder& with, const frame_params& up, const stream_params& cp, const std::vector<wrap_params>& records,
             const std::vector<bytes>& payloads, const bytes* src, std::optional<uint32_t> dst_size,
             std::optional<uint32_t> count) {
    const uint32_t record_count = count ? *count : static_cast<uint32_t>(records.size());
    std::vector<std::unique_ptr<guarded_buffer>> sources;
    // One entry more than needed: the array itself must not be null.
    std::vector<const uint8_t*> pointers;
    for (const bytes& payload : payloads) {
        sources.push_back(std::make_unique<guarded_buffer>(payload));
        pointers.push_back(sources.back()->data());
    }
    pointers.push_back(nullptr);
    const guarded_buffer source(src != nullptr ? *src : bytes{});
    guarded_buffer target(
        dst_size ? *dst_size : QVRUncompressed_GetCompressedWrapBufSize(&up, &cp, records.data(), record_count),
        guard::behind, k_fill);
    outcome result;
    take_messages(with);
    result.status = QVRUncompressed_EncodeAndWrapFrame(
        with.handle(), &up, &cp, records.data(), record_count, src != nullptr ? source.data() : nullptr,
        source.size32(), pointers.data(), target.data(), target.size32(), &result.written);
    result.messages = take_messages(with);
    result.data = target.copy();
    return result;
}

outcome unwrap(decoder& with, const frame_params& up, const std::vector<wrap_params>& records, const bytes& stream,
               std::optional<uint32_t> dst_size, std::optional<uint32_t> count) {
    const uint32_t record_count = count ? *count : static_cast<uint32_t>(records.size());
    std::vector<std::unique_ptr<guarded_buffer>> targets;
    std::vector<uint8_t*> pointers;
    for (const wrap_params& record : records) {
        targets.push_back(std::make_unique<guarded_buffer>(record.dataSize, guard::behind, k_fill));
        pointers.push_back(targets.back()->data());
    }
    pointers.push_back(nullptr);
    const guarded_buffer source(stream);
    guarded_buffer target(dst_size ? *dst_size : 0, guard::behind, k_fill);
    outcome result;
    take_messages(with);
    result.status = QVRUncompressed_DecodeAndUnwrapFrame(
        with.handle(), &up, records.data(), record_count, source.data(), source.size32(),
        dst_size ? target.data() : nullptr, target.size32(), pointers.data(), &result.written);
    result.messages = take_messages(with);
    result.data = target.copy();
    for (const auto& payload : targets) {
        result.payloads.push_back(payload->copy());
    }
    return result;
}

void expect_success(const outcome& result) {
    EXPECT_EQ(result.status, 0u);
    EXPECT_EQ(result.messages, message_list{});
}

void expect_failure(const outcome& result, std::string_view message) {
    EXPECT_EQ(result.status, 1u);
    EXPECT_EQ(result.messages, message_list{std::string(message)});
    EXPECT_EQ(result.written, k_untouched);
}

void expect_bytes(const outcome& result, std::string_view hex) {
    expect_success(result);
    const bytes expected = from_hex(hex);
    EXPECT_EQ(result.written, expected.size());
    EXPECT_EQ(to_hex(result.frame()), to_hex(expected));
}

}  // namespace test
