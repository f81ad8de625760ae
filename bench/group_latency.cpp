// SPDX-License-Identifier: BSD-3-Clause
//
// What a call costs that moves next to nothing, and what a handle costs.
#include <thread>
#include <vector>

#include "cases.h"
#include "codec.h"
#include "memory.h"

namespace bench {

namespace {

const frame_size k_tiny = {16, 16};

struct tiny_frame {
    frame_params up = frame_record(7, 1, k_tiny);
    stream_params cp = raw_alpha();
    std::vector<std::uint8_t> raw = std::vector<std::uint8_t>(raw_bytes(up), 77);
    std::vector<std::uint8_t> stream = std::vector<std::uint8_t>(stream_bytes(up, cp));
    encoder to_stream;
    decoder to_raw;
    std::uint32_t written = to_stream.encode(up, cp, raw.data(), stream.data());

    std::uint64_t traffic() const { return raw.size() + stream.size(); }
};

void time_tiny_encoding(recorder& record) {
    tiny_frame frame;
    const std::vector<std::uint8_t> from(frame.traffic());
    std::vector<std::uint8_t> to(frame.traffic());
    record.compare([&] { frame.to_stream.encode(frame.up, frame.cp, frame.raw.data(), frame.stream.data()); },
                   {{"memcpy", copy_of_traffic(to.data(), from.data(), frame.traffic())}});
}

void time_tiny_decoding(recorder& record) {
    tiny_frame frame;
    const std::vector<std::uint8_t> from(frame.traffic());
    std::vector<std::uint8_t> to(frame.traffic());
    record.compare([&] { frame.to_raw.decode(frame.up, frame.stream.data(), frame.written, frame.raw.data()); },
                   {{"memcpy", copy_of_traffic(to.data(), from.data(), frame.traffic())}});
}

void time_metadata(recorder& record) {
    tiny_frame frame;
    record.compare([&] { frame.to_raw.read_metadata(frame.stream.data(), frame.written); },
                   {{"decoding it",
                     [&] { frame.to_raw.decode(frame.up, frame.stream.data(), frame.written, frame.raw.data()); }}});
}

void start_and_join(std::uint32_t threads) {
    std::vector<std::thread> all;
    for (std::uint32_t i = 0; i < threads; ++i) {
        all.emplace_back([] {});
    }
    for (std::thread& one : all) {
        one.join();
    }
}

// Making and ending a handle beside starting and joining as many threads as it has; beside one thread for a handle
// that has none.
template <class Handle>
void time_handle(recorder& record, std::uint32_t threads) {
    const std::uint32_t compared = threads == 1 ? 1 : threads;
    record.compare([&] { const Handle made(threads); },
                   {{std::to_string(compared) + (compared == 1 ? " thread" : " threads") + " started and joined",
                     [&] { start_and_join(compared); }}});
}

}  // namespace

void add_latency(case_list& cases, const options& chosen) {
    const std::string tiny = to_text(k_tiny);
    cases.push_back({"latency/encode/7-RGBA/1-U8/" + tiny, time_tiny_encoding});
    cases.push_back({"latency/decode/7-RGBA/1-U8/" + tiny, time_tiny_decoding});
    cases.push_back({"latency/read-metadata/7-RGBA/1-U8/" + tiny, time_metadata});
    for (const std::uint32_t threads : {1u, 2u, 4u, 16u}) {
        if (threads <= chosen.threads) {
            const std::string rest = std::to_string(threads) + "-threads/0x0";
            cases.push_back(
                {"latency/make-encoder/" + rest, [=](recorder& record) { time_handle<encoder>(record, threads); }});
            cases.push_back(
                {"latency/make-decoder/" + rest, [=](recorder& record) { time_handle<decoder>(record, threads); }});
        }
    }
}

}  // namespace bench
