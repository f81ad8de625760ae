// SPDX-License-Identifier: BSD-3-Clause
//
// Records and buffers at any address: odd ones, and right before or behind a page that may not be touched.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "box_builder.h"
#include "codec.h"
#include "guarded_buffer.h"

namespace {

using namespace test;

// A copy of one or more records: behind it, or before it, lies an inaccessible page, or it lies at an odd address one
// byte away from such a page.
enum class place { before_the_page, behind_the_page, odd_before_the_page, odd_behind_the_page };

template <class record>
class placed {
  public:
    placed(const std::vector<record>& content, place where)
        : buffer_(
              content.size() * sizeof(record) + (is_odd(where) ? 1 : 0),
              where == place::before_the_page || where == place::odd_before_the_page ? guard::behind : guard::before) {
        at_ = buffer_.data() + (where == place::odd_behind_the_page ? 1 : 0);
        std::memcpy(at_, content.data(), content.size() * sizeof(record));
    }

    record* get() { return reinterpret_cast<record*>(at_); }

  private:
    static bool is_odd(place where) {
        return where == place::odd_before_the_page || where == place::odd_behind_the_page;
    }

    guarded_buffer buffer_;
    uint8_t* at_ = nullptr;
};

class addresses : public testing::TestWithParam<place> {};

TEST_P(addresses, of_records_do_not_matter_to_queries_and_frames) {
    placed<QVRUncompressed_CodecConfig_t> config({config_record(1)}, GetParam());
    placed<frame_params> up({frame_record(7, 1, 1, 1)}, GetParam());
    placed<stream_params> cp({raw_alpha()}, GetParam());
    QVRUncompressed_Encoder out = nullptr;
    QVRUncompressed_Decoder in = nullptr;
    ASSERT_EQ(QVRUncompressed_CreateEncoder(config.get(), &out), 0u);
    ASSERT_EQ(QVRUncompressed_CreateDecoder(config.get(), &in), 0u);
    EXPECT_EQ(QVRUncompressed_GetUncompressedBufSize(up.get()), 4u);
    EXPECT_EQ(QVRUncompressed_GetCompressedBufSize(up.get(), cp.get()), 86u);
    const bytes src = {1, 2, 3, 4};
    bytes stream(86);
    EXPECT_EQ(QVRUncompressed_EncodeFrame(out, up.get(), cp.get(), src.data(), 4, stream.data(), 86, nullptr), 0u);
    bytes raw(4);
    EXPECT_EQ(QVRUncompressed_DecodeFrame(in, up.get(), stream.data(), 86, raw.data(), 4, nullptr), 0u);
    EXPECT_EQ(raw, src);
    EXPECT_EQ(QVRUncompressed_ReadMetadata(in, stream.data(), 86, up.get()), 0u);
    frame_params read = {};
    std::memcpy(&read, up.get(), 36);
    EXPECT_EQ(read.colorComponentOrder, 3u);
    QVRUncompressed_DestroyEncoder(out);
    QVRUncompressed_DestroyDecoder(in);
}

TEST_P(addresses, of_records_do_not_matter_to_wraps) {
    encoder out;
    decoder in;
    placed<frame_params> up({frame_record(0, 0, 4, 2)}, GetParam());
    placed<stream_params> cp({raw_alpha()}, GetParam());
    placed<wrap_params> records({wrap_record(2, 1), wrap_record(2, 2)}, GetParam());
    EXPECT_EQ(QVRUncompressed_GetCompressedWrapBufSize(up.get(), cp.get(), records.get(), 2), 56u);
    const uint8_t payload[2] = {1, 2};
    const uint8_t* const payloads[] = {payload, payload};
    bytes stream(56);
    EXPECT_EQ(QVRUncompressed_EncodeAndWrapFrame(out.handle(), up.get(), cp.get(), records.get(), 2, nullptr, 0,
                                                 payloads, stream.data(), 56, nullptr),
              0u);
    uint8_t copies[2][2] = {};
    uint8_t* const targets[] = {copies[0], copies[1]};
    EXPECT_EQ(QVRUncompressed_DecodeAndUnwrapFrame(in.handle(), up.get(), records.get(), 2, stream.data(), 56, nullptr,
                                                   0, targets, nullptr),
              0u);
    EXPECT_EQ(copies[1][1], 2);
    EXPECT_EQ(QVRUncompressed_ReadWrapMetadata(in.handle(), stream.data(), 56, up.get(), records.get(), 2), 0u);
    wrap_params read = {};
    std::memcpy(&read, records.get() + 1, 16);
    EXPECT_EQ(read.wrapType, 3u);
    EXPECT_EQ(read.dataSize, 2u);
}

TEST_P(addresses, with_a_count_of_0_only_the_first_record_is_read) {
    encoder out;
    placed<wrap_params> record({wrap_record(3, 1)}, GetParam());
    const frame_params up = frame_record(14, 1, 2, 1);
    const stream_params cp = raw_alpha();
    EXPECT_EQ(QVRUncompressed_GetCompressedWrapBufSize(&up, &cp, record.get(), 0), 39u);
    const uint8_t src[2] = {1, 2};
    const uint8_t* const none[] = {nullptr};
    bytes stream(39);
    EXPECT_EQ(QVRUncompressed_EncodeAndWrapFrame(out.handle(), &up, &cp, record.get(), 0, src, 2, none, stream.data(),
                                                 39, nullptr),
              0u);
}

TEST_P(addresses, of_wide_samples_do_not_matter) {
    encoder out;
    decoder in;
    for (const uint32_t type : {2u, 3u, 4u, 6u, 7u, 214u}) {
        for (const uint32_t order : {1u, 2u, 6u, 9u}) {
            SCOPED_TRACE(testing::Message() << order << ", " << type);
            const frame_params up = frame_record(order, type, 10, 3);
            const stream_params cp = raw_alpha();
            const uint32_t raw_size = QVRUncompressed_GetUncompressedBufSize(&up);
            const uint32_t stream_size = QVRUncompressed_GetCompressedBufSize(&up, &cp);
            placed<uint8_t> src(repeat(0x40, raw_size), GetParam());
            placed<uint8_t> stream(repeat(0, stream_size), GetParam());
            placed<uint8_t> raw(repeat(0, raw_size), GetParam());
            EXPECT_EQ(QVRUncompressed_EncodeFrame(out.handle(), &up, &cp, src.get(), raw_size, stream.get(),
                                                  stream_size, nullptr),
                      0u);
            EXPECT_EQ(
                QVRUncompressed_DecodeFrame(in.handle(), &up, stream.get(), stream_size, raw.get(), raw_size, nullptr),
                0u);
            EXPECT_EQ(raw.get()[raw_size - 1], 0x40);
        }
    }
}

TEST_P(addresses, of_coded_16_bit_alpha_do_not_matter) {
    encoder out;
    decoder in;
    const bytes content = counting(2 * 21 * 5);
    const frame_params up = frame_record(14, 2, 21, 5);
    const stream_params cp = coded_alpha(2);
    const uint32_t bound = QVRUncompressed_GetCompressedBufSize(&up, &cp);
    placed<uint8_t> src(content, GetParam());
    placed<uint8_t> work(repeat(0, bound), GetParam());
    uint32_t written = 0;
    ASSERT_EQ(QVRUncompressed_EncodeFrame(out.handle(), &up, &cp, src.get(), 210, work.get(), bound, &written), 0u);
    placed<uint8_t> stream(bytes(work.get(), work.get() + written), GetParam());
    placed<uint8_t> raw(repeat(0, 210), GetParam());
    ASSERT_EQ(QVRUncompressed_DecodeFrame(in.handle(), &up, stream.get(), written, raw.get(), 210, nullptr), 0u);
    EXPECT_EQ(to_hex(raw.get(), 210), to_hex(content));
}

std::string place_name(const testing::TestParamInfo<place>& info) {
    switch (info.param) {
        case place::before_the_page:
            return "before_the_page";
        case place::behind_the_page:
            return "behind_the_page";
        case place::odd_before_the_page:
            return "odd_before_the_page";
        default:
            return "odd_behind_the_page";
    }
}

INSTANTIATE_TEST_SUITE_P(all, addresses,
                         testing::Values(place::before_the_page, place::behind_the_page, place::odd_before_the_page,
                                         place::odd_behind_the_page),
                         place_name);

}  // namespace
