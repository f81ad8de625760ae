// SPDX-License-Identifier: BSD-3-Clause
//
// Each pair of order and type through the exported functions, beside memcpy of the same traffic.
#include <algorithm>

#include "cases.h"
#include "codec.h"
#include "formats.h"
#include "instruction_sets.h"
#include "memory.h"

namespace bench {

namespace {

void time_encoding(recorder& record, const format& pair, const frame_size& size) {
    const frame_params up = frame_record(pair.order, pair.type, size);
    const stream_params cp = raw_alpha();
    const std::size_t room = std::max(raw_bytes(up), stream_bytes(up, cp));
    const std::uint8_t* raw = raw_memory().at_least(room);
    std::uint8_t* stream = stream_memory().at_least(room);
    encoder with;
    const std::uint64_t traffic = bytes_read_of_raw(pair, size) + stream_bytes(up, cp);
    record.compare([&] { with.encode(up, cp, raw, stream); }, {{"memcpy", copy_of_traffic(stream, raw, traffic)}});
}

// The frame is encoded as `pair` and decoded as `to`.
void time_decoding(recorder& record, const format& pair, const format& to, const frame_size& size) {
    const frame_params from = frame_record(pair.order, pair.type, size);
    const frame_params up = frame_record(to.order, to.type, size);
    const stream_params cp = raw_alpha();
    const std::size_t room = std::max({raw_bytes(from), raw_bytes(up), stream_bytes(from, cp)});
    std::uint8_t* raw = raw_memory().at_least(room);
    std::uint8_t* stream = stream_memory().at_least(room);
    const std::uint32_t written = encoder().encode(from, cp, raw, stream);
    decoder with;
    // Of the stream, what the target has no place for is not read: alpha that was stored is always asked for here.
    const std::uint64_t traffic = std::uint64_t{written} + raw_bytes(up);
    record.compare([&] { with.decode(up, stream, written, raw); }, {{"memcpy", copy_of_traffic(raw, stream, traffic)}});
}

}  // namespace

void add_pairs(case_list& cases, const options& chosen) {
    for (const frame_size& size : chosen.sizes) {
        for (const format& pair : all_formats()) {
            cases.push_back({"pairs/encode/" + to_text(pair) + "/" + to_text(size),
                             [=](recorder& record) { time_encoding(record, pair, size); }});
        }
        for (const format& pair : all_formats()) {
            cases.push_back({"pairs/decode/" + to_text(pair) + "/" + to_text(size),
                             [=](recorder& record) { time_decoding(record, pair, decoded_format(pair), size); }});
        }
        // Fixed point has a second target: floats, in orders without alpha.
        for (const std::uint32_t order : {1u, 2u, 5u, 6u, 9u}) {
            cases.push_back(
                {"pairs/decode-as-float/" + to_text(format{order, 214}) + "/" + to_text(size), [=](recorder& record) {
                     time_decoding(record, {order, 214}, {order, 7}, size);
                 }});
        }
    }
}

void add_instruction_sets(case_list& cases, const options& chosen) {
    const format pairs[] = {{2, 3}, {2, 4}, {2, 5}, {5, 3}, {5, 4}, {7, 1}, {6, 1}, {1, 1}};
    for (const frame_size& size : chosen.sizes) {
        for (const format& pair : pairs) {
            for (const instruction_set& level : usable_instruction_sets()) {
                const std::string rest = to_text(pair) + "/" + to_text(size);
                const std::string group = std::string("instruction-sets/") + level.name;
                cases.push_back({group + "/encode/" + rest, [=](recorder& record) {
                                     const instruction_set_limit kept(level);
                                     time_encoding(record, pair, size);
                                 }});
                cases.push_back({group + "/decode/" + rest, [=](recorder& record) {
                                     const instruction_set_limit kept(level);
                                     time_decoding(record, pair, pair, size);
                                 }});
            }
        }
    }
}

}  // namespace bench
