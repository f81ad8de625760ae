// SPDX-License-Identifier: BSD-3-Clause
#include <memory>

#include "compare.h"
#include "guarded.h"
#include "outcome.h"

namespace differential {

namespace {

model::view look(const guarded_buffer& buffer) {
    return {buffer.data(), buffer.size()};
}

// An array of pointers in guarded memory; never null, even when empty.
template <class pointer>
guarded_buffer pointers_to(const std::vector<std::unique_ptr<guarded_buffer>>& buffers) {
    std::vector<pointer> all;
    for (const auto& buffer : buffers) {
        all.push_back(buffer->data());
    }
    return guarded_buffer(all.data(), all.size() * sizeof(pointer));
}

// A compressed frame may be copied before the alpha source is looked at.
bool is_early_wrap(const expectation& model) {
    return is_early(model) && model.message.rfind("src ", 0) != 0 && model.message.rfind("rowBytes", 0) != 0;
}

std::string describe(const wrap_case& input, codec& handles) {
    std::string text = "wrap " + differential::describe(input.frame) + " " + differential::describe(input.stream) +
                       " wraps " + differential::describe(input.wraps) + " count " + std::to_string(input.count) +
                       " threads " + std::to_string(handles.threads()) + " room " + std::to_string(input.capacity) +
                       (input.null_source ? " null source of " : " source ") + hex(input.source);
    if (!input.payloads.empty()) {
        text += " first payload " + hex(input.payloads[0]);
    }
    return text;
}

std::string describe(const unwrap_case& input, codec& handles) {
    return "unwrap " + differential::describe(input.frame) + " wraps " + differential::describe(input.wraps) +
           " count " + std::to_string(input.count) + " threads " + std::to_string(handles.threads()) + " room " +
           std::to_string(input.capacity) + (input.null_target ? " null target" : "") + " stream " + hex(input.stream);
}

}  // namespace

std::string compare_wrap(rng& random, codec& handles, const wrap_case& input) {
    const std::string what = describe(input, handles);
    announce(what);
    const guarded_record up(to_record(input.frame));
    const guarded_record cp(to_record(input.stream));
    const wrap_array records(input.wraps);
    const guarded_buffer src(input.source);
    std::vector<std::unique_ptr<guarded_buffer>> payloads;
    std::vector<model::view> payload_views;
    for (std::uint32_t i = 0; i < input.count; ++i) {
        payloads.push_back(std::make_unique<guarded_buffer>(input.payloads[i]));
        payload_views.push_back(look(*payloads.back()));
    }
    const guarded_buffer data = pointers_to<const std::uint8_t*>(payloads);
    const model::bytes before = random.noise(input.capacity);
    const guarded_buffer dst(before);
    const guarded_record<std::uint32_t> written(untouched_size);
    const model::view source = {input.null_source ? nullptr : src.data(), src.size()};
    const std::uint32_t status = QVRUncompressed_EncodeAndWrapFrame(
        handles.encoder(), up.get(), cp.get(), records.get(), input.count, source.data,
        static_cast<std::uint32_t>(source.size), reinterpret_cast<const std::uint8_t* const*>(data.data()), dst.data(),
        static_cast<std::uint32_t>(dst.size()), written.get());
    const outcome library(status, handles.take_messages(), written.value());

    expectation model;
    model.run([&] {
        model.stream = model::encode_and_wrap(input.frame, input.stream, input.wraps, input.count, source,
                                              payload_views, input.capacity);
        model.written = static_cast<std::uint32_t>(model.stream.size());
        model.planned = model::plan_wrapped_frame(input.frame, input.stream, input.wraps, input.count).total();
    });
    std::string text = compare_outcomes(library, model);
    if (model.ok || is_early_wrap(model)) {
        text += compare_stream(model, before, dst);
    }
    bool intact = up.unchanged() && cp.unchanged() && records.unchanged() && src.holds(input.source);
    for (std::uint32_t i = 0; i < input.count; ++i) {
        intact = intact && payloads[i]->holds(input.payloads[i]);
    }
    if (!intact || !dst.front_intact()) {
        text += "an input was written\n";
    }
    return text.empty() ? text : text + what;
}

namespace {

// Each buffer is as large as the box that is to be copied into it, which is
// what metadata tells a caller. Boxes that run past the stream cannot be
// copied, so their buffers need not hold them.
std::vector<std::size_t> buffer_sizes(const unwrap_case& input) {
    std::vector<std::size_t> sizes(input.count, 3);
    try {
        const model::parsed_frame frame = model::parse_frame({input.stream.data(), input.stream.size()});
        for (std::size_t i = 0; i < sizes.size() && i < frame.wraps.size(); ++i) {
            const model::parsed_box& box = frame.wraps[i];
            if (box.offset + box.size <= input.stream.size()) {
                sizes[i] = box.size;
            }
        }
    } catch (const model::failure&) {
        // The call fails before it copies.
    }
    return sizes;
}

std::string compare_payloads(const expectation& model, const std::vector<std::unique_ptr<guarded_buffer>>& buffers,
                             const std::vector<model::bytes>& before, const std::vector<model::bytes>& copied) {
    std::string text;
    for (std::size_t i = 0; i < buffers.size(); ++i) {
        const bool copy_expected = model.ok && i < copied.size();
        const bool unspecified = !model.ok && (!is_early(model) || model.message.rfind("can't read", 0) == 0);
        if (!unspecified && !buffers[i]->holds(copy_expected ? copied[i] : before[i])) {
            text += "payload " + std::to_string(i) + " differs\n";
        }
        if (!buffers[i]->front_intact()) {
            text += "bytes in front of a payload were written\n";
        }
    }
    return text;
}

}  // namespace

std::string compare_unwrap(rng& random, codec& handles, const unwrap_case& input) {
    const std::string what = describe(input, handles);
    announce(what);
    const guarded_record up(to_record(input.frame));
    const wrap_array records(input.wraps);
    const guarded_buffer src(input.stream);
    std::vector<std::unique_ptr<guarded_buffer>> buffers;
    std::vector<model::bytes> payloads_before;
    for (const std::size_t size : buffer_sizes(input)) {
        payloads_before.push_back(random.noise(size));
        buffers.push_back(std::make_unique<guarded_buffer>(payloads_before.back()));
    }
    const guarded_buffer pointers = pointers_to<std::uint8_t*>(buffers);
    const model::bytes before = random.noise(input.capacity);
    const guarded_buffer dst(before);
    const guarded_buffer expected(before);
    const guarded_record<std::uint32_t> written(untouched_size);
    const std::uint32_t status = QVRUncompressed_DecodeAndUnwrapFrame(
        handles.decoder(), up.get(), records.get(), input.count, src.data(), static_cast<std::uint32_t>(src.size()),
        input.null_target ? nullptr : dst.data(), static_cast<std::uint32_t>(dst.size()),
        reinterpret_cast<std::uint8_t* const*>(pointers.data()), written.get());
    const outcome library(status, handles.take_messages(), written.value());

    expectation model;
    std::vector<model::bytes> copied;
    model.run([&] {
        const model::target raw = {input.null_target ? nullptr : expected.data(), expected.size()};
        const model::unwrapped result = model::decode_and_unwrap(input.frame, input.wraps, input.count, look(src), raw);
        copied = result.payloads;
        model.written = result.written;
    });
    std::string text = compare_outcomes(library, model) + compare_target(model, before, expected.content(), dst) +
                       compare_payloads(model, buffers, payloads_before, copied);
    if (!up.unchanged() || !records.unchanged() || !src.holds(input.stream)) {
        text += "an input was written\n";
    }
    return text.empty() ? text : text + what;
}

}  // namespace differential
