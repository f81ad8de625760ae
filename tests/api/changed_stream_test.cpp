// SPDX-License-Identifier: BSD-3-Clause
//
// Good bitstreams with a few bytes changed: whatever happens, it happens inside the buffers and ends with a status.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "box_builder.h"
#include "codec.h"
#include "guarded_buffer.h"
#include "random_source.h"

namespace {

using namespace test;

struct victim {
    frame_params up;
    bytes stream;
};

std::vector<victim> victims() {
    std::vector<victim> made;
    const stream_params coded = coded_alpha(3);
    for (const auto& up : {frame_record(1, 3, 6, 3), frame_record(2, 5, 8, 2), frame_record(7, 1, 5, 4),
                           frame_record(11, 2, 4, 3), frame_record(13, 1, 4, 4, 6, 5), frame_record(14, 1, 9, 7),
                           frame_record(14, 2, 5, 5, 13), frame_record(16, 1, 4, 5, 0, 7)}) {
        const bytes src = counting(QVRUncompressed_GetUncompressedBufSize(&up), 3);
        const bool integer = up.componentType <= 2;
        const outcome encoded = encode(up, integer ? coded : raw_alpha(), src);
        EXPECT_EQ(encoded.status, 0u);
        made.push_back({up, encoded.frame()});
    }
    made.push_back(
        {frame_record(14, 1, 4, 2), pack(box("QCXF", counting(50)) + bare_plane(4, 2, " a08", counting(8)))});
    made.push_back(
        {frame_record(0, 0, 4, 2), single_plane(4, 2, "stch", box("stch", counting(9)) + box("tile", {1, 2}))});
    return made;
}

// A status of 1 comes with one message, a status of 0 with none.
void expect_told(uint32_t status, message_list& messages) {
    ASSERT_LE(status, 1u);
    ASSERT_EQ(messages.size(), status);
    messages.clear();
}

void use_all_readers(decoder& with, const frame_params& up, const bytes& stream) {
    const guarded_buffer source(stream);
    frame_params read = {};
    read.size = 36;
    expect_told(QVRUncompressed_ReadMetadata(with.handle(), source.data(), source.size32(), &read), with.messages());
    EXPECT_LE(QVRUncompressed_ReadWrapCount(source.data(), source.size32()), stream.size() / 8);
    wrap_params record = wrap_record(0, 0);
    const uint32_t status =
        QVRUncompressed_ReadWrapMetadata(with.handle(), source.data(), source.size32(), &read, &record, 1);
    expect_told(status, with.messages());
    const uint32_t raw_size = QVRUncompressed_GetUncompressedBufSize(&up);
    guarded_buffer target(raw_size);
    expect_told(QVRUncompressed_DecodeFrame(with.handle(), &up, source.data(), source.size32(), target.data(), raw_size,
                                            nullptr),
                with.messages());
    if (status == 0 && record.dataSize <= 4096) {
        guarded_buffer payload(record.dataSize);
        uint8_t* const payloads[] = {payload.data()};
        expect_told(QVRUncompressed_DecodeAndUnwrapFrame(with.handle(), &up, &record, 1, source.data(), source.size32(),
                                                         target.data(), raw_size, payloads, nullptr),
                    with.messages());
    }
}

class changed_streams : public testing::TestWithParam<uint32_t> {
  protected:
    decoder decoder_{GetParam()};
};

TEST_P(changed_streams, with_any_single_bit_turned_are_safe) {
    for (const victim& one : victims()) {
        bytes stream = one.stream;
        for (size_t bit = 0; bit < stream.size() * 8; ++bit) {
            SCOPED_TRACE(testing::Message() << "order " << one.up.colorComponentOrder << ", bit " << bit);
            const uint8_t mask = static_cast<uint8_t>(1u << (bit % 8));
            stream[bit / 8] = static_cast<uint8_t>(stream[bit / 8] ^ mask);
            use_all_readers(decoder_, one.up, stream);
            stream[bit / 8] = static_cast<uint8_t>(stream[bit / 8] ^ mask);
            ASSERT_FALSE(HasFatalFailure());
        }
    }
}

TEST_P(changed_streams, with_random_bytes_are_safe) {
    random_source random(GetParam());
    const std::vector<victim> all = victims();
    for (int round = 0; round < 3000; ++round) {
        const victim& one = all[random.below(static_cast<uint32_t>(all.size()))];
        bytes stream = one.stream;
        for (uint32_t changes = 1 + random.below(4); changes > 0; --changes) {
            static const uint8_t values[] = {0, 1, 7, 8, 0x7f, 0x80, 0xff};
            const uint32_t at = random.below(static_cast<uint32_t>(stream.size()));
            stream[at] = random.below(2) == 0 ? values[random.below(7)] : static_cast<uint8_t>(random.next());
        }
        if (random.below(4) == 0) {
            stream.resize(random.below(static_cast<uint32_t>(stream.size() + 1)));
        }
        SCOPED_TRACE(to_hex(stream));
        use_all_readers(decoder_, one.up, stream);
        ASSERT_FALSE(HasFatalFailure());
    }
}

INSTANTIATE_TEST_SUITE_P(threads, changed_streams, testing::Values(1u, 2u), testing::PrintToStringParamName());

}  // namespace
