// SPDX-License-Identifier: BSD-3-Clause
#include "probe.h"

#include <gtest/gtest.h>

#include <cstring>
#include <ostream>

#include "box_builder.h"

namespace hostile {

using namespace test;

namespace {

// Colour and coded alpha that meet in the caller's pixels: the working memory of the handle has a part in it.
const char* const k_good_frame =
    "00010203 01040506 02070809 030a0b0c"
    "000d0e0f 01101112 02131415 03161718";

bytes good_stream() {
    return pack(component(4, 2, "rg08", counting(24, 1)) +
                component(4, 2, "rl08", from_hex("01bffffc6fffff90dfad54396aa0")));
}

// Frames larger than this are asked for with an empty destination.
constexpr model::exact k_largest_frame = 65536;
// Behind a destination that begins at the inaccessible page, to see what is written there.
constexpr size_t k_slack = 8;

size_t room_for(const frame_params& up) {
    const model::exact size = model::uncompressed_size_exact(to_model(up));
    return size <= k_largest_frame ? static_cast<size_t>(size) : 0;
}

template <class work>
std::string model_says(work body) {
    try {
        body();
        return "ok";
    } catch (const model::failure& failed) {
        return failed.what();
    }
}

// A buffer must hold the payload that the stream has for it, whatever the records say. A payload that does not lie
// inside the stream cannot be copied, and needs no room.
std::vector<size_t> payload_rooms(const question& asked) {
    std::vector<size_t> rooms(asked.records.size(), 3);
    model_says([&] {
        const model::parsed_frame frame = model::parse_frame(view_of(asked.stream));
        for (size_t i = 0; i < rooms.size() && i < frame.wraps.size(); ++i) {
            if (frame.wraps[i].offset + frame.wraps[i].size <= asked.stream.size()) {
                rooms[i] = frame.wraps[i].size;
            }
        }
    });
    return rooms;
}

void compare(const char* what, const std::string& actual, const std::string& expected) {
    if (actual != expected) {
        ADD_FAILURE() << what << ": " << actual << "\n  expected: " << expected;
    }
}

// Every byte of a buffer that was written to, and of those beside it that no page guards.
void compare(const char* what, const slot& actual, const bytes& expected) {
    if (!actual.holds(expected)) {
        ADD_FAILURE() << what << ": " << actual.to_hex() << "\n  expected: " << to_hex(expected);
    }
}

void expect_surroundings_intact(const char* what, const slot& buffer) {
    if (!buffer.surroundings_intact()) {
        ADD_FAILURE() << what << ": bytes outside were written";
    }
}

template <class record>
bool same_bytes(const record& one, const record& other) {
    return std::memcmp(&one, &other, sizeof one) == 0;
}

}  // namespace

model::view view_of(const bytes& data) {
    static const uint8_t nothing = 0;  // an empty buffer is not an absent one
    return {data.empty() ? &nothing : data.data(), data.size()};
}

bool operator==(const answers& one, const answers& other) {
    return one.metadata == other.metadata && one.wrap_metadata == other.wrap_metadata && one.decode == other.decode &&
           one.unwrap == other.unwrap && one.wrap_count == other.wrap_count;
}

std::ostream& operator<<(std::ostream& out, const answers& value) {
    return out << "\n  metadata: " << value.metadata << "\n  wrap metadata: " << value.wrap_metadata
               << "\n  decode: " << value.decode << "\n  unwrap: " << value.unwrap
               << "\n  wrap count: " << value.wrap_count << "\n";
}

answers refused_by_all(const std::string& message) {
    return {message, message, message, message, 0};
}

bool leaves_destination_alone(const std::string& message) {
    for (const char* late : {"rle ", "Invalid width", "Invalid height", "row_bytes "}) {
        if (message.rfind(late, 0) == 0) {
            return false;
        }
    }
    return true;
}

prober::prober(uint32_t threads) : decoder_(threads), threaded_(threads != 1) {
    good_source_.place(good_stream(), guard::behind);
}

void prober::expect_good_decode() {
    static const bytes expected = from_hex(k_good_frame);
    const frame_params up = frame_record(3, 1, 4, 2);
    good_target_.place(expected.size(), guard::behind, 0x77);
    uint32_t written = 0;
    const uint32_t status =
        QVRUncompressed_DecodeFrame(decoder_.handle(), &up, good_source_.data(), good_source_.size(),
                                    good_target_.data(), good_target_.size(), &written);
    EXPECT_EQ(status, 0u) << "of the good stream that followed";
    EXPECT_EQ(written, 32u) << "of the good stream that followed";
    compare("the good stream that followed", good_target_, expected);
    decoder_.messages().clear();
}

std::string prober::told(uint32_t status) {
    message_list heard;
    heard.swap(decoder_.messages());
    if (status == 0 && heard.empty()) {
        return "ok";
    }
    // Waking the workers for every refused parameter takes more time than all the rest: once a question is enough.
    if (threaded_ && status == 1 && heard.size() == 1 && leaves_destination_alone(heard[0])) {
        good_decode_owed_ = true;
    } else {
        expect_good_decode();
    }
    if (status == 1 && heard.size() == 1) {
        return heard[0];
    }
    return "status " + std::to_string(status) + " with " + std::to_string(heard.size()) + " messages";
}

std::string prober::ask_metadata(const question& asked) {
    frame_params up = frame_record(77, 78, 79, 80, 81, 82, 83);
    frame_params expected_up = up;
    const std::string expected =
        model_says([&] { expected_up = to_record(model::read_metadata(view_of(asked.stream))); });
    const std::string actual = told(QVRUncompressed_ReadMetadata(handle(), source_.data(), source_.size(), &up));
    compare("metadata", actual, expected);
    EXPECT_TRUE(same_bytes(up, expected_up)) << "metadata record";
    return actual;
}

std::string prober::ask_wrap_metadata(const question& asked) {
    const auto count = static_cast<uint32_t>(asked.records.size());
    frame_params up = frame_record(77, 78, 79, 80, 81, 82, 83);
    frame_params expected_up = up;
    std::vector<wrap_params> records(count, wrap_record(77, 78));
    std::vector<wrap_params> expected_records = records;
    const std::string expected = model_says([&] {
        const model::wrap_metadata read = model::read_wrap_metadata(view_of(asked.stream), count);
        expected_up = to_record(read.frame);
        if (!read.failure_text.empty()) {
            throw model::failure(read.failure_text);
        }
        for (uint32_t i = 0; i < count; ++i) {
            expected_records[i] = to_record(read.wraps[i]);
        }
    });
    const std::string actual =
        told(QVRUncompressed_ReadWrapMetadata(handle(), source_.data(), source_.size(), &up, records.data(), count));
    compare("wrap metadata", actual, expected);
    EXPECT_TRUE(same_bytes(up, expected_up)) << "wrap metadata record";
    for (uint32_t i = 0; i < count; ++i) {
        EXPECT_TRUE(same_bytes(records[i], expected_records[i])) << "wrap record " << i;
    }
    return actual;
}

std::string prober::ask_decode(const question& asked, guard side, uint8_t fill) {
    const size_t room = room_for(asked.up) + (side == guard::before ? k_slack : 0);
    bytes expected_target(room, fill);
    expected_target.reserve(1);  // it must not be null
    uint32_t expected_written = k_untouched;
    const std::string expected = model_says([&] {
        expected_written =
            model::decode_frame(to_model(asked.up), view_of(asked.stream), {expected_target.data(), room});
    });
    target_.place(room, side, fill);
    uint32_t written = k_untouched;
    const std::string actual = told(QVRUncompressed_DecodeFrame(handle(), &asked.up, source_.data(), source_.size(),
                                                                target_.data(), target_.size(), &written));
    compare("decode", actual, expected);
    EXPECT_EQ(written, expected_written);
    expect_surroundings_intact("decode", target_);
    if (leaves_destination_alone(expected)) {
        compare("decoded", target_, expected_target);
    }
    return actual;
}

std::vector<uint8_t*> prober::place_payloads(const question& asked, guard side, uint8_t fill) {
    const std::vector<size_t> rooms = payload_rooms(asked);
    std::vector<uint8_t*> pointers;
    while (payloads_.size() < rooms.size()) {
        payloads_.emplace_back();
    }
    for (size_t i = 0; i < rooms.size(); ++i) {
        payloads_[i].place(rooms[i], side, fill);
        pointers.push_back(payloads_[i].data());
    }
    return pointers;
}

std::string prober::ask_unwrap(const question& asked, guard side, uint8_t fill) {
    const auto count = static_cast<uint32_t>(asked.records.size());
    const size_t room = room_for(asked.up) + (side == guard::before ? k_slack : 0);
    bytes expected_target(room, fill);
    expected_target.reserve(1);
    model::unwrapped expected_result;
    expected_result.written = k_untouched;
    const std::string expected = model_says([&] {
        expected_result = model::decode_and_unwrap(to_model(asked.up), to_model(asked.records), count,
                                                   view_of(asked.stream), {expected_target.data(), room});
    });
    const std::vector<uint8_t*> pointers = place_payloads(asked, side, fill);
    target_.place(room, side, fill);
    uint32_t written = k_untouched;
    const std::string actual = told(QVRUncompressed_DecodeAndUnwrapFrame(
        handle(), &asked.up, asked.records.data(), count, source_.data(), source_.size(), target_.data(),
        target_.size(), pointers.data(), &written));
    compare("unwrap", actual, expected);
    EXPECT_EQ(written, expected_result.written);
    expect_surroundings_intact("unwrap", target_);
    for (size_t i = 0; i < pointers.size(); ++i) {
        expect_surroundings_intact("payload", payloads_[i]);
        if (leaves_destination_alone(expected)) {
            compare(
                "payload", payloads_[i],
                i < expected_result.payloads.size() ? expected_result.payloads[i] : repeat(fill, payloads_[i].size()));
        }
    }
    if (leaves_destination_alone(expected)) {
        compare("unwrapped frame", target_, expected_target);
    }
    return actual;
}

answers prober::ask_once(const question& asked, guard side, uint8_t fill) {
    source_.place(asked.stream, side);
    answers result;
    result.metadata = ask_metadata(asked);
    result.wrap_metadata = ask_wrap_metadata(asked);
    result.decode = ask_decode(asked, side, fill);
    result.unwrap = ask_unwrap(asked, side, fill);
    result.wrap_count = QVRUncompressed_ReadWrapCount(source_.data(), source_.size());
    EXPECT_EQ(result.wrap_count, model::read_wrap_count(view_of(asked.stream)));
    if (!threaded_) {
        const auto other = static_cast<uint8_t>(~fill);
        compare("decode into another fill", ask_decode(asked, side, other), result.decode);
        compare("unwrap into another fill", ask_unwrap(asked, side, other), result.unwrap);
    }
    compare("the source", source_, asked.stream);
    expect_surroundings_intact("the source", source_);
    if (good_decode_owed_) {
        good_decode_owed_ = false;
        expect_good_decode();
    }
    return result;
}

answers prober::ask(const question& asked) {
    const answers first = ask_once(asked, guard::behind, 0x00);
    if (!threaded_) {
        const answers second = ask_once(asked, guard::before, 0xff);
        EXPECT_EQ(first, second) << "the place of the buffers makes a difference";
    }
    return first;
}

answers prober::ask_trusting(const bytes& stream) {
    question asked = {stream, frame_record(14, 1, 0, 0), {}};
    model_says([&] {
        asked.up = to_record(model::read_metadata(view_of(stream)));
        const uint32_t count = model::read_wrap_count(view_of(stream));
        for (const model::wrap_params& wrap : model::read_wrap_metadata(view_of(stream), count).wraps) {
            asked.records.push_back(to_record(wrap));
        }
    });
    if (asked.records.empty()) {
        asked.records.push_back(wrap_record(1, 0));
    }
    return ask(asked);
}

}  // namespace hostile
