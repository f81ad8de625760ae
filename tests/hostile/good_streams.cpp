// SPDX-License-Identifier: BSD-3-Clause
#include "good_streams.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "box_builder.h"

namespace hostile {

using namespace test;

namespace {

bytes checked(const outcome& made) {
    if (made.status != 0) {
        throw std::logic_error("a good stream is none: " + made.messages.at(0));
    }
    return made.frame();
}

good_stream plain(const std::string& name, const frame_params& up, const stream_params& cp, const bytes& raw) {
    return {name, checked(encode(up, cp, raw)), up, {wrap_record(1, 0)}, raw, {}};
}

good_stream wrapped(const std::string& name, const frame_params& up, const stream_params& cp,
                    const std::vector<wrap_params>& records, const std::vector<bytes>& payloads, const bytes& raw) {
    encoder with;
    return {name, checked(wrap(with, up, cp, records, payloads, &raw)), up, records, raw, payloads};
}

// 12-bit samples in the top bits of their words.
bytes words_of_12_bits(size_t count) {
    bytes words;
    for (size_t i = 0; i < count; ++i) {
        words.push_back(static_cast<uint8_t>(i << 4));
        words.push_back(static_cast<uint8_t>(0x35 + i * 7));
    }
    return words;
}

// Constant stretches, ramps, jumps: each kind of token.
bytes alpha_rows(size_t count) {
    bytes rows;
    for (size_t i = 0; i < count; ++i) {
        rows.push_back(static_cast<uint8_t>(i % 11 < 5 ? 0xff : i % 11 < 9 ? i * 3 : i * 89));
    }
    return rows;
}

std::vector<good_stream> make() {
    std::vector<good_stream> all;
    all.push_back(plain("single_plane", frame_record(5, 1, 4, 2), raw_alpha(), counting(24, 1)));
    all.push_back(plain("narrowed_plane", frame_record(2, 4, 6, 3), raw_alpha(), words_of_12_bits(36)));
    all.push_back(plain("two_planes", frame_record(7, 1, 5, 3), raw_alpha(), counting(60, 1)));
    all.push_back(plain("planar_with_alpha", frame_record(13, 1, 6, 4), raw_alpha(), counting(60, 1)));
    all.push_back(plain("coded_alpha_8", frame_record(14, 1, 9, 7), coded_alpha(3), alpha_rows(63)));
    all.push_back(plain("coded_alpha_16", frame_record(16, 2, 6, 5), coded_alpha(2), counting(120) + alpha_rows(60)));
    all.push_back(plain("coded_alpha_in_pixels", frame_record(3, 1, 8, 4), coded_alpha(2), alpha_rows(128)));
    const std::vector<wrap_params> frame = {wrap_record(1, 50)};
    all.push_back(wrapped("qcx_with_raw_alpha", frame_record(14, 1, 4, 2), raw_alpha(), frame,
                          {qcx_frame({1300, 4, 2, false}, 50)}, counting(8, 1)));
    all.push_back(wrapped("qcx_with_coded_alpha", frame_record(14, 2, 5, 4), coded_alpha(2), frame,
                          {qcx_frame({1300, 5, 4, false}, 50)}, alpha_rows(40)));
    all.push_back(wrapped("stitched", frame_record(14, 1, 4, 2), raw_alpha(),
                          {wrap_record(2, 10), wrap_record(3, 20), wrap_record(3, 30)},
                          {counting(10, 1), counting(20, 11), counting(30, 31)}, {}));
    return all;
}

}  // namespace

const std::vector<good_stream>& good_streams() {
    static const std::vector<good_stream> all = make();
    return all;
}

const good_stream& good(const std::string& name) {
    for (const good_stream& family : good_streams()) {
        if (family.name == name) {
            return family;
        }
    }
    throw std::logic_error("no good stream " + name);
}

const std::vector<std::string>& family_names() {
    static const std::vector<std::string> names = {
        "single_plane",   "narrowed_plane",        "two_planes",         "planar_with_alpha",    "coded_alpha_8",
        "coded_alpha_16", "coded_alpha_in_pixels", "qcx_with_raw_alpha", "qcx_with_coded_alpha", "stitched"};
    return names;
}

question ask_about(const good_stream& family, const bytes& stream) {
    return {stream, family.up, family.records};
}

bool proves_good(const good_stream& family) {
    decoder with;
    const bool stitched = family.raw.empty();
    if (read_metadata(family.stream).status != 0) {
        return false;
    }
    if (!stitched && (family.payloads.empty() ? decode(with, family.up, family.stream).frame() != family.raw : false)) {
        return false;
    }
    if (family.payloads.empty()) {
        return read_wrap_count(family.stream) == 0;
    }
    const outcome taken =
        unwrap(with, family.up, family.records, family.stream, static_cast<uint32_t>(stitched ? 0 : family.raw.size()));
    return read_wrap_count(family.stream) == family.payloads.size() && taken.status == 0 &&
           taken.payloads == family.payloads && taken.data == family.raw;
}

}  // namespace hostile
