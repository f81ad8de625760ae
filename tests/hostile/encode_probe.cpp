// SPDX-License-Identifier: BSD-3-Clause
#include "encode_probe.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace hostile {

using namespace test;

namespace {

// Two pixels with alpha, in two planes.
const char* const k_good_frame = "10203040 50607080";
const char* const k_good_stream =
    "5a000000 'pack' 2b000000 'icmp' 15000000 'sinf' 02000000 01000000 'rg08' 00 0e000000 'sdat' 102030 506070"
    "27000000 'icmp' 15000000 'sinf' 02000000 01000000 20 613038 00 0a000000 'sdat' 40 80";

struct written_stream {
    std::string message = "ok";
    bytes stream;
    model::exact planned = 0;
};

written_stream by_model(const encode_question& asked) {
    written_stream result;
    const model::frame_params up = to_model(asked.up);
    const model::stream_params cp = {asked.cp.alphaCompression, asked.cp.rleSlices};
    const std::vector<model::wrap_params> wraps = to_model(asked.records);
    std::vector<model::view> payloads;
    for (size_t i = 0; i < asked.records.size(); ++i) {
        payloads.push_back(view_of(asked.payloads[i]));
    }
    const auto count = static_cast<uint32_t>(wraps.size());
    try {
        if (wraps.empty()) {
            result.stream = model::encode_frame(up, cp, view_of(asked.source), asked.room);
            result.planned = model::plan_frame(up, cp).total();
        } else {
            result.stream = model::encode_and_wrap(up, cp, wraps, count, view_of(asked.source), payloads, asked.room);
            result.planned = model::plan_wrapped_frame(up, cp, wraps, count).total();
        }
    } catch (const model::failure& failed) {
        result.message = failed.what();
    }
    return result;
}

// Refused before the destination is touched. A wrapped frame may have been copied when its alpha is refused.
bool is_early(const encode_question& asked, const std::string& message) {
    return leaves_destination_alone(message) && message.rfind("src buffer", 0) != 0 &&
           (asked.records.empty() || (message.rfind("src ", 0) != 0 && message.rfind("rowBytes", 0) != 0));
}

}  // namespace

encode_prober::encode_prober(uint32_t threads) : encoder_(threads) {}

uint32_t encode_prober::call(const encode_question& asked, uint32_t* written) {
    if (asked.records.empty()) {
        return QVRUncompressed_EncodeFrame(encoder_.handle(), &asked.up, &asked.cp, source_.data(), source_.size(),
                                           target_.data(), target_.size(), written);
    }
    std::vector<const uint8_t*> payloads;
    for (const bytes& payload : asked.payloads) {
        payloads.push_back(view_of(payload).data);
    }
    return QVRUncompressed_EncodeAndWrapFrame(encoder_.handle(), &asked.up, &asked.cp, asked.records.data(),
                                              static_cast<uint32_t>(asked.records.size()), source_.data(),
                                              source_.size(), payloads.data(), target_.data(), target_.size(), written);
}

std::string encode_prober::told(uint32_t status) {
    message_list heard;
    heard.swap(encoder_.messages());
    if (status == 0 && heard.empty()) {
        return "ok";
    }
    static const bytes frame = from_hex(k_good_frame);
    static const bytes stream = from_hex(k_good_stream);
    const frame_params up = frame_record(7, 1, 2, 1);
    const stream_params cp = raw_alpha();
    good_target_.place(stream.size(), guard::behind, 0x77);
    EXPECT_EQ(QVRUncompressed_EncodeFrame(encoder_.handle(), &up, &cp, frame.data(), 8, good_target_.data(),
                                          good_target_.size(), nullptr),
              0u);
    EXPECT_TRUE(good_target_.holds(stream)) << "the good frame that followed: " << good_target_.to_hex();
    encoder_.messages().clear();
    return status == 1 && heard.size() == 1
               ? heard[0]
               : "status " + std::to_string(status) + " with " + std::to_string(heard.size()) + " messages";
}

std::string encode_prober::ask_once(const encode_question& asked, guard side, uint8_t fill) {
    const written_stream expected = by_model(asked);
    source_.place(asked.source, side);
    target_.place(asked.room, side, fill);
    uint32_t written = k_untouched;
    const std::string actual = told(call(asked, &written));
    EXPECT_EQ(actual, expected.message);
    EXPECT_EQ(written, expected.message == "ok" ? expected.stream.size() : k_untouched);
    EXPECT_TRUE(source_.holds(asked.source) && source_.surroundings_intact()) << "the source was written";
    EXPECT_TRUE(target_.surroundings_intact()) << "bytes beside the destination were written";
    const uint8_t* const end = target_.data() + target_.size();
    const uint8_t* untouched = target_.data();
    if (actual == "ok") {
        EXPECT_EQ(to_hex(target_.data(), written), to_hex(expected.stream));
        untouched += static_cast<size_t>(expected.planned);
    } else if (!is_early(asked, actual)) {
        untouched = end;
    }
    EXPECT_TRUE(std::all_of(untouched, end, [fill](uint8_t value) { return value == fill; }))
        << "bytes of the destination were written that need not be";
    return actual;
}

std::string encode_prober::ask(const encode_question& asked) {
    const std::string first = ask_once(asked, guard::behind, 0x00);
    EXPECT_EQ(ask_once(asked, guard::before, 0xff), first);
    return first;
}

}  // namespace hostile
