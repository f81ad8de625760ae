// SPDX-License-Identifier: BSD-3-Clause
//
// What more threads bring: each number of threads beside one.
#include <algorithm>
#include <memory>

#include "cases.h"
#include "codec.h"
#include "formats.h"
#include "mattes.h"
#include "memory.h"

namespace bench {

namespace {

std::vector<std::uint32_t> thread_counts(std::uint32_t most) {
    std::vector<std::uint32_t> counts;
    for (const std::uint32_t count : {2u, 4u, 8u, 16u}) {
        if (count <= most) {
            counts.push_back(count);
        }
    }
    return counts;
}

std::string threads_text(std::uint32_t count) {
    return std::to_string(count) + " threads / 1";
}

// A frame that lies in the pools' memory, raw and encoded.
struct pooled_frame {
    frame_params up;
    stream_params cp;
    std::uint8_t* raw;
    std::uint8_t* stream;
    std::uint32_t written;
};

void time_encoding(recorder& record, const pooled_frame& frame, std::uint32_t most) {
    std::vector<std::unique_ptr<encoder>> with;
    const auto job_for = [&](std::uint32_t threads) {
        with.push_back(std::make_unique<encoder>(threads));
        return [&frame, handle = with.back().get()] { handle->encode(frame.up, frame.cp, frame.raw, frame.stream); };
    };
    for (const std::uint32_t threads : thread_counts(most)) {
        record.compare(job_for(threads), {{threads_text(threads), job_for(1)}});
    }
}

void time_decoding(recorder& record, const pooled_frame& frame, std::uint32_t most) {
    std::vector<std::unique_ptr<decoder>> with;
    const auto job_for = [&](std::uint32_t threads) {
        with.push_back(std::make_unique<decoder>(threads));
        return
            [&frame, handle = with.back().get()] { handle->decode(frame.up, frame.stream, frame.written, frame.raw); };
    };
    for (const std::uint32_t threads : thread_counts(most)) {
        record.compare(job_for(threads), {{threads_text(threads), job_for(1)}});
    }
}

pooled_frame encoded_frame(const format& pair, const frame_size& size, const char* matte_name) {
    pooled_frame frame{};
    frame.up = frame_record(pair.order, pair.type, size);
    frame.cp = matte_name != nullptr ? coded_alpha() : raw_alpha();
    const std::size_t room = std::max(raw_bytes(frame.up), stream_bytes(frame.up, frame.cp));
    frame.raw = raw_memory().at_least(room);
    frame.stream = stream_memory().at_least(room);
    if (matte_name != nullptr) {
        const std::vector<std::uint8_t> samples = to_samples(matte_named(matte_name).draw(size), pair.type);
        std::copy(samples.begin(), samples.end(), frame.raw);
    }
    frame.written = encoder().encode(frame.up, frame.cp, frame.raw, frame.stream);
    return frame;
}

}  // namespace

void add_threads(case_list& cases, const options& chosen) {
    struct thread_case {
        std::string name;
        format pair;
        const char* matte;
    };
    std::vector<thread_case> wanted;
    for (const format& pair : {format{7, 1}, format{2, 3}, format{5, 4}, format{2, 5}}) {
        wanted.push_back({to_text(pair), pair, nullptr});
    }
    for (const char* name : {"circle", "hair", "noisy-key"}) {
        wanted.push_back({std::string("coded-alpha/") + name + "-8-bit", {14, 1}, name});
        wanted.push_back({std::string("coded-alpha/") + name + "-16-bit", {14, 2}, name});
    }
    const frame_size size = chosen.largest();
    const std::uint32_t most = chosen.threads;
    for (const thread_case& row : wanted) {
        cases.push_back({"threads/encode/" + row.name + "/" + to_text(size), [=](recorder& record) {
                             time_encoding(record, encoded_frame(row.pair, size, row.matte), most);
                         }});
        cases.push_back({"threads/decode/" + row.name + "/" + to_text(size), [=](recorder& record) {
                             time_decoding(record, encoded_frame(row.pair, size, row.matte), most);
                         }});
    }
}

}  // namespace bench
