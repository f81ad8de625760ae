// SPDX-License-Identifier: BSD-3-Clause
//
// Sums and products past 32 and 64 bits: boxes at the end of the largest source there can be, planes larger than any
// buffer, and frames that only a size computed modulo something would let in.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "box_builder.h"
#include "changed.h"
#include "coded_carriers.h"
#include "good_streams.h"
#include "guarded_buffer.h"

namespace {

using namespace hostile;
using namespace test;

constexpr uint32_t k_largest = 0xffffffffu;

// A source of 4 GiB less one byte, zero but for its ends: an unknown box reaches from its start to `tail`, the last
// bytes of it.
class largest_source : public testing::Test {
  protected:
    void fill(const bytes& tail) {
        tail_offset_ = k_largest - static_cast<uint32_t>(tail.size());
        const bytes head = box_with_size("pack", k_largest, {}) + box_with_size("free", tail_offset_ - 8, {});
        std::memcpy(memory_.data(), head.data(), head.size());
        std::memcpy(memory_.data() + tail_offset_, tail.data(), tail.size());
    }
    std::string at(uint64_t offset) const { return std::to_string(tail_offset_ + offset); }

    std::string decode() {
        const frame_params up = frame_record(14, 1, 2, 1);
        guarded_buffer target(2);
        const std::string heard = with_.told(
            QVRUncompressed_DecodeFrame(with_.handle(), &up, memory_.data(), k_largest, target.data(), 2, nullptr));
        return heard == "ok" ? to_hex(target.copy()) : heard;
    }
    std::string unwrap(const wrap_params& record) {
        const frame_params up = frame_record(14, 1, 2, 1);
        guarded_buffer target(2);
        guarded_buffer payload(4);
        uint8_t* const payloads[] = {payload.data()};
        const std::string heard = with_.told(QVRUncompressed_DecodeAndUnwrapFrame(
            with_.handle(), &up, &record, 1, memory_.data(), k_largest, target.data(), 2, payloads, nullptr));
        return heard == "ok" ? to_hex(payload.copy()) : heard;
    }
    uint32_t wrap_count() { return QVRUncompressed_ReadWrapCount(memory_.data(), k_largest); }

    sparse_buffer memory_{k_largest};
    uint32_t tail_offset_ = 0;
    prober with_;
};

TEST_F(largest_source, is_read_to_its_last_byte) {
    fill(bare_plane(2, 1, " a08", {7, 9}));
    EXPECT_EQ(decode(), "0709");
}

TEST_F(largest_source, that_lacks_its_last_sample) {
    fill(sinf(2, 1, " a08") + box_with_size("sdat", 10, {7}));
    EXPECT_EQ(decode(), "can't read 10 bytes at offset " + at(29));
    fill(sinf(0x7fffffffu, 1, " a08") + box_with_size("sdat", k_largest, {7}));
    EXPECT_EQ(decode(), "can't read 2147483655 bytes at offset " + at(29));
}

TEST_F(largest_source, with_boxes_that_reach_past_32_bits) {
    const bytes plane = bare_plane(2, 1, " a08", {7, 9});
    fill(plane + box_with_size("free", k_largest, {}));
    EXPECT_EQ(decode(), "0709");
    fill(box_with_size("icmp", k_largest, plane));
    EXPECT_EQ(decode(), "0709");
    fill(sinf(2, 1, " a08") + box_with_size("sdat", k_largest, {7, 9}));
    EXPECT_EQ(decode(), "0709");
    fill(box_with_size("free", k_largest, plane));
    EXPECT_EQ(decode(), "at least one 'sinf' and one 'sdat' box expected");
}

TEST_F(largest_source, with_a_description_that_ends_past_32_bits) {
    bytes plane = bare_plane(2, 1, " a08", {7, 9});
    store_32(plane, 0, k_largest);
    fill(plane);
    EXPECT_EQ(decode(), "can't read box header(8 bytes) at offset " + at(k_largest));
    store_32(plane, 0, 47);  // 8 bytes more than there are
    fill(plane);
    EXPECT_EQ(decode(), "can't read box header(8 bytes) at offset " + at(47));
}

TEST_F(largest_source, with_a_wrapped_frame_that_reaches_past_32_bits) {
    fill(bare_plane(2, 1, " a08", {7, 9}) + box_with_size("QCXF", 12, {1, 2, 3, 4}));
    EXPECT_EQ(wrap_count(), 1u);
    EXPECT_EQ(unwrap(wrap_record(1, 4)), canonical("01020304"));
    for (const uint32_t size : {13u, 0x7fffffffu, 0x80000000u, k_largest}) {
        fill(bare_plane(2, 1, " a08", {7, 9}) + box_with_size("QCXF", size, {1, 2, 3, 4}));
        EXPECT_EQ(wrap_count(), 1u);
        EXPECT_EQ(unwrap(wrap_record(1, size - 8)),
                  "can't read " + std::to_string(size - 8) + " bytes at offset " + at(39));
    }
}

TEST_F(largest_source, with_stitched_chunks_that_reach_past_32_bits) {
    const bytes last = box_with_size("stch", 12, {1, 2, 3, 4});
    fill(sinf(2, 1, "stch") + sdat(last));
    EXPECT_EQ(unwrap(wrap_record(2, 4)), canonical("01020304"));
    for (const uint32_t size : {13u, 0x7fffffffu, 0x80000000u, k_largest}) {
        fill(sinf(2, 1, "stch") + sdat(box_with_size("stch", size, {1, 2, 3, 4})));
        EXPECT_EQ(wrap_count(), 1u);
        EXPECT_EQ(unwrap(wrap_record(2, size - 8)),
                  "can't read " + std::to_string(size - 8) + " bytes at offset " + at(37));
    }
    // The payload says that it goes on behind the source.
    fill(sinf(2, 1, "stch") + box_with_size("sdat", k_largest, last));
    EXPECT_EQ(unwrap(wrap_record(2, 4)), "can't read box header(8 bytes) at offset 4294967295");
}

TEST_F(largest_source, with_a_coded_plane_that_reaches_past_32_bits) {
    // 7, 7 as a run of two behind a raw difference of -120.
    const bytes payload = table({3}, {1}) + from_bits(
                                                "1"
                                                "1"
                                                "0"
                                                "11101111"
                                                "0"
                                                "1"
                                                "1"
                                                "000");
    fill(sinf(2, 1, "rl08") + box_with_size("sdat", k_largest, payload));
    EXPECT_EQ(decode(), "0707");
    fill(sinf(2, 1, "rl08") + box_with_size("sdat", k_largest, first_bytes(payload, payload.size() - 1)));
    EXPECT_EQ(decode(), "rle payload is too short");
}

// Rows times row size of every plane type, exactly, whatever its width and height.
TEST(plane_totals, past_32_and_64_bits_are_too_small_exactly) {
    prober with;
    const struct {
        uint32_t width;
        uint32_t height;
    } sizes[] = {{0xffffffffu, 0xffffffffu}, {0x10000u, 0x10000u},       {0x80000000u, 2}, {2, 0x80000000u},
                 {0x80000000u, 0x80000000u}, {0x55555556u, 0x40000000u}, {0xffffffffu, 1}, {1, 0xffffffffu}};
    for (const model::code& code : model::known_codes()) {
        if (model::is_coded_alpha(code) || code == "stch") {
            continue;
        }
        for (const auto& size : sizes) {
            const model::exact least = model::row_bytes(code, size.width) * size.height + 8;
            SCOPED_TRACE(code + ", at least " + model::decimal(least));
            const std::string message =
                "'sdat' box size expected to be at least " + model::decimal(least) + " at offset 29";
            // 0 to 16 bytes of data are what each of these products is modulo 2^32 or 2^64.
            for (const uint32_t declared : {8u, 16u, model::low32(least)}) {
                if (declared < least) {
                    const bytes stream =
                        pack(sinf(size.width, size.height, code) + box_with_size("sdat", declared, repeat(5, 16)));
                    ASSERT_EQ(with.ask({stream, frame_record(14, 1, 0, 0), {wrap_record(1, 0)}}),
                              refused_by_all(message));
                }
            }
        }
    }
}

// Raw frames just past 32 and just past 64 bits, with the largest buffers that a caller can have.
TEST(frame_totals, past_32_and_64_bits_fit_no_buffer) {
    sparse_buffer memory(k_largest);
    encoder encoding;
    decoder decoding;
    const bytes stream = single_plane(2, 1, " a08", {7, 9});
    const stream_params cp = raw_alpha();
    const uint32_t sizes[][2] = {{0x10000u, 0x10000u},
                                 {2, 0x80000000u},
                                 {0x80000000u, 2},
                                 {0x80000000u, 0x80000000u},
                                 {0xfffffffeu, 0xfffffffeu}};
    for (uint32_t order = 1; order <= 16; ++order) {
        for (const uint32_t type : {1u, 2u, 3u, 6u, 7u, 214u}) {
            for (const auto& size : sizes) {
                const frame_params up = frame_record(order, type, size[0], size[1]);
                if (!model::is_supported_pair(order, type) ||
                    model::uncompressed_size_exact(to_model(up)) <= k_largest) {
                    continue;
                }
                SCOPED_TRACE(testing::Message()
                             << "order " << order << ", type " << type << ", " << size[0] << " x " << size[1]);
                uint32_t written = k_untouched;
                uint8_t target[16];
                EXPECT_EQ(QVRUncompressed_EncodeFrame(encoding.handle(), &up, &cp, memory.data(), k_largest, target,
                                                      sizeof target, &written),
                          1u);
                EXPECT_EQ(QVRUncompressed_DecodeFrame(decoding.handle(), &up, stream.data(),
                                                      static_cast<uint32_t>(stream.size()), memory.data(), k_largest,
                                                      &written),
                          1u);
                EXPECT_EQ(encoding.messages(), message_list{"src size is too small"});
                EXPECT_EQ(decoding.messages(), message_list{"dst size is too small"});
                EXPECT_EQ(written, k_untouched);
                encoding.messages().clear();
                decoding.messages().clear();
            }
        }
    }
}

// Chunk sizes whose sum comes round to what the destination holds.
TEST(chunk_totals, past_32_bits_fit_no_buffer) {
    sparse_buffer memory(k_largest);
    encoder with;
    const frame_params up = frame_record(14, 1, 2, 1);
    const stream_params cp = raw_alpha();
    std::vector<wrap_params> records = {wrap_record(2, k_largest), wrap_record(3, 1)};
    const uint8_t* const payloads[] = {memory.data(), memory.data(), memory.data()};
    // 37 of headers, 2 x 8 of the chunks', 2^32 - 1 and 1 of payload.
    ASSERT_EQ(QVRUncompressed_GetCompressedWrapBufSize(&up, &cp, records.data(), 2), 53u);
    guarded_buffer target(53, guard::behind, 0x77);
    uint32_t written = k_untouched;
    EXPECT_EQ(QVRUncompressed_EncodeAndWrapFrame(with.handle(), &up, &cp, records.data(), 2, nullptr, 0, payloads,
                                                 target.data(), target.size32(), &written),
              1u);
    EXPECT_EQ(with.messages(), message_list{"dst size is too small"});
    EXPECT_EQ(target.copy(), repeat(0x77, 53));
    records = {wrap_record(1, k_largest)};
    const bytes head = qcx_frame({1300, 2, 1, false});
    std::memcpy(memory.data(), head.data(), head.size());
    with.messages().clear();
    ASSERT_EQ(QVRUncompressed_GetCompressedWrapBufSize(&up, &cp, records.data(), 1), 46u);
    EXPECT_EQ(QVRUncompressed_EncodeAndWrapFrame(with.handle(), &up, &cp, records.data(), 1, target.data(), 2, payloads,
                                                 target.data(), target.size32(), &written),
              1u);
    EXPECT_EQ(with.messages(), message_list{"dst size is too small"});
    EXPECT_EQ(target.copy(), repeat(0x77, 53));
    EXPECT_EQ(written, k_untouched);
}

}  // namespace
