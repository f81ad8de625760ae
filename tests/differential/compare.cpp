// SPDX-License-Identifier: BSD-3-Clause
#include "compare.h"

#include <cstring>

#include "guarded.h"
#include "outcome.h"

namespace differential {

namespace {

model::view look(const guarded_buffer& buffer) {
    return {buffer.data(), buffer.size()};
}

}  // namespace

std::string compare_sizes(const model::frame_params& frame, const model::stream_params& stream,
                          const std::vector<model::wrap_params>& wraps, std::uint32_t count) {
    const std::string what = "sizes of " + describe(frame) + " " + describe(stream) + " wraps " + describe(wraps) +
                             " count " + std::to_string(count);
    announce(what);
    const guarded_record up(to_record(frame));
    const guarded_record cp(to_record(stream));
    const wrap_array records(wraps);
    std::string text;
    const auto check = [&](const char* name, std::uint32_t library, std::uint32_t expected) {
        if (library != expected) {
            text +=
                std::string(name) + " is " + std::to_string(library) + ", expected " + std::to_string(expected) + "\n";
        }
    };
    check("raw size", QVRUncompressed_GetUncompressedBufSize(up.get()), model::uncompressed_size(frame));
    check("stream size", QVRUncompressed_GetCompressedBufSize(up.get(), cp.get()),
          model::compressed_size(frame, stream));
    check("wrapped size", QVRUncompressed_GetCompressedWrapBufSize(up.get(), cp.get(), records.get(), count),
          model::compressed_wrap_size(frame, stream, wraps, count));
    if (!up.unchanged() || !cp.unchanged() || !records.unchanged()) {
        text += "a record was written\n";
    }
    return text.empty() ? text : text + what;
}

std::string compare_encode(rng& random, codec& handles, const model::frame_params& frame,
                           const model::stream_params& stream, const model::bytes& source, std::size_t capacity) {
    const std::string what = "encode " + describe(frame) + " " + describe(stream) + " threads " +
                             std::to_string(handles.threads()) + " room " + std::to_string(capacity) + " source " +
                             hex(source);
    announce(what);
    const guarded_record up(to_record(frame));
    const guarded_record cp(to_record(stream));
    const guarded_buffer src(source);
    const model::bytes before = random.noise(capacity);
    const guarded_buffer dst(before);
    const guarded_record<std::uint32_t> written(0xABCD1234u);
    const std::uint32_t status = QVRUncompressed_EncodeFrame(handles.encoder(), up.get(), cp.get(), src.data(),
                                                             static_cast<std::uint32_t>(src.size()), dst.data(),
                                                             static_cast<std::uint32_t>(dst.size()), written.get());
    outcome library(status, handles.take_messages(), written.value());

    expectation model;
    model.run([&] {
        model.stream = model::encode_frame(frame, stream, look(src), capacity);
        model.written = static_cast<std::uint32_t>(model.stream.size());
        model.planned = model::plan_frame(frame, stream).total();
    });
    std::string text = compare_outcomes(library, model) + compare_stream(model, before, dst);
    if (!up.unchanged() || !cp.unchanged() || !src.holds(source) || !src.front_intact()) {
        text += "an input was written\n";
    }
    return text.empty() ? text : text + what;
}

std::string compare_decode(rng& random, codec& handles, const model::frame_params& frame, const model::bytes& stream,
                           std::size_t capacity) {
    const std::string what = "decode " + describe(frame) + " threads " + std::to_string(handles.threads()) + " room " +
                             std::to_string(capacity) + " stream " + hex(stream);
    announce(what);
    const guarded_record up(to_record(frame));
    const guarded_buffer src(stream);
    const model::bytes before = random.noise(capacity);
    const guarded_buffer dst(before);
    const guarded_record<std::uint32_t> written(0xABCD1234u);
    const std::uint32_t status =
        QVRUncompressed_DecodeFrame(handles.decoder(), up.get(), src.data(), static_cast<std::uint32_t>(src.size()),
                                    dst.data(), static_cast<std::uint32_t>(dst.size()), written.get());
    outcome library(status, handles.take_messages(), written.value());

    expectation model;
    const guarded_buffer expected(before);
    model.run([&] { model.written = model::decode_frame(frame, look(src), {expected.data(), expected.size()}); });
    std::string text = compare_outcomes(library, model) + compare_target(model, before, expected.content(), dst);
    if (!up.unchanged() || !src.holds(stream) || !src.front_intact()) {
        text += "an input was written\n";
    }
    return text.empty() ? text : text + what;
}

namespace {

bool same_frame(const QVRUncompressed_UncompressedParams_t& left, const QVRUncompressed_UncompressedParams_t& right) {
    return std::memcmp(&left, &right, sizeof left) == 0;
}

QVRUncompressed_UncompressedParams_t random_record(rng& random) {
    model::frame_params frame;
    frame.order = random.word();
    frame.width = random.word();
    frame.row_bytes = random.word();
    return to_record(frame);
}

std::string compare_frame_metadata(rng& random, codec& handles, const guarded_buffer& src) {
    QVRUncompressed_UncompressedParams_t expected = random_record(random);
    const guarded_record up(expected);
    const std::uint32_t status =
        QVRUncompressed_ReadMetadata(handles.decoder(), src.data(), static_cast<std::uint32_t>(src.size()), up.get());
    expectation model;
    model.written = 0;
    model.run([&] { expected = to_record(model::read_metadata(look(src))); });
    std::string text = compare_outcomes(outcome(status, handles.take_messages(), unwritten(model)), model);
    if (!same_frame(up.value(), expected)) {
        text += "metadata is " + describe(to_model(up.value())) + ", expected " + describe(to_model(expected)) + "\n";
    }
    return text;
}

std::string compare_wrap_metadata(rng& random, codec& handles, const guarded_buffer& src, std::uint32_t count) {
    QVRUncompressed_UncompressedParams_t expected = random_record(random);
    std::vector<model::wrap_params> wraps;
    for (std::uint32_t i = 0; i < count; ++i) {
        wraps.push_back({random.word(), random.word()});
    }
    const guarded_record up(expected);
    const wrap_array records(wraps);
    const bool null_records = count == 0 && random.chance(50);
    const std::uint32_t status =
        QVRUncompressed_ReadWrapMetadata(handles.decoder(), src.data(), static_cast<std::uint32_t>(src.size()),
                                         up.get(), null_records ? nullptr : records.get(), count);
    expectation model;
    model.run([&] {
        const model::wrap_metadata metadata = model::read_wrap_metadata(look(src), count);
        expected = to_record(metadata.frame);
        if (!metadata.failure_text.empty()) {
            throw model::failure(metadata.failure_text);
        }
        wraps = metadata.wraps;
    });
    std::string text = compare_outcomes(outcome(status, handles.take_messages(), unwritten(model)), model);
    if (!same_frame(up.value(), expected)) {
        text += "wrap frame metadata is " + describe(to_model(up.value())) + ", expected " +
                describe(to_model(expected)) + "\n";
    }
    if (!records.holds(wraps)) {
        text += "wrap records are " + describe(records.values()) + ", expected " + describe(wraps) + "\n";
    }
    return text.empty() ? text : "with count " + std::to_string(count) + ": " + text;
}

}  // namespace

std::string compare_metadata(rng& random, codec& handles, const model::bytes& stream) {
    const std::string what = "metadata of " + hex(stream);
    announce(what);
    const guarded_buffer src(stream);
    std::string text = compare_frame_metadata(random, handles, src);
    const std::uint32_t found = model::read_wrap_count(look(src));
    const std::uint32_t library = QVRUncompressed_ReadWrapCount(src.data(), static_cast<std::uint32_t>(src.size()));
    if (library != found) {
        text += "wrap count is " + std::to_string(library) + ", expected " + std::to_string(found) + "\n";
    }
    for (const std::uint32_t count : {0u, found, found + 1}) {
        text += compare_wrap_metadata(random, handles, src, count);
    }
    if (!src.holds(stream) || !src.front_intact()) {
        text += "an input was written\n";
    }
    return text.empty() ? text : text + what;
}

}  // namespace differential
