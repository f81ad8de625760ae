// SPDX-License-Identifier: BSD-3-Clause
//
// Allocations per call once a handle has seen its first frames.
#include <stdexcept>
#include <vector>

#include "allocation_counter.h"
#include "cases.h"
#include "codec.h"
#include "formats.h"

namespace bench {

namespace {

constexpr int k_calls = 20;

double allocations_per_call(const job& call) {
    for (int i = 0; i < 3; ++i) {
        call();
    }
    const unsigned long before = allocations_so_far();
    for (int i = 0; i < k_calls; ++i) {
        call();
    }
    return static_cast<double>(allocations_so_far() - before) / k_calls;
}

void count_allocations(recorder& record, const format& pair, const stream_params& cp, const frame_size& size,
                       std::uint32_t threads) {
    const frame_params from = frame_record(pair.order, pair.type, size);
    const format back = decoded_format(pair);
    const frame_params to = frame_record(back.order, back.type, size);
    std::vector<std::uint8_t> raw(raw_bytes(from), 77);
    std::vector<std::uint8_t> stream(stream_bytes(from, cp));
    encoder with(threads);
    decoder out(threads);
    const std::uint32_t written = with.encode(from, cp, raw.data(), stream.data());
    record.number("allocations, encoding", "a call",
                  allocations_per_call([&] { with.encode(from, cp, raw.data(), stream.data()); }));
    record.number("allocations, decoding", "a call",
                  allocations_per_call([&] { out.decode(to, stream.data(), written, raw.data()); }));
}

}  // namespace

void add_allocations(case_list& cases, const options& chosen) {
    struct counted_case {
        format pair;
        stream_params cp;
    };
    const counted_case wanted[] = {
        {{7, 1}, raw_alpha()}, {{2, 5}, raw_alpha()},   {{8, 3}, raw_alpha()},   {{10, 4}, raw_alpha()},
        {{5, 7}, raw_alpha()}, {{7, 1}, coded_alpha()}, {{7, 2}, coded_alpha()}, {{14, 1}, coded_alpha()},
    };
    const frame_size size = chosen.sizes.front();
    for (const counted_case& row : wanted) {
        for (const std::uint32_t threads : {1u, 2u}) {
            const char* coded = row.cp.alphaCompression != 0 ? "coded-alpha/" : "raw-alpha/";
            cases.push_back({"allocations/" + std::string(coded) + to_text(row.pair) + "/" + std::to_string(threads) +
                                 "-threads/" + to_text(size),
                             [=](recorder& record) { count_allocations(record, row.pair, row.cp, size, threads); }});
        }
    }
}

}  // namespace bench
