// SPDX-License-Identifier: BSD-3-Clause
//
// Every combination of null pointers and wrong size fields, and which of them decides the status.
#include <gtest/gtest.h>

#include <vector>

#include "argument_sweep.h"
#include "box_builder.h"
#include "codec.h"

namespace {

using namespace test;

TEST(argument_checks, raw_size_query_fails_with_0) {
    EXPECT_EQ(QVRUncompressed_GetUncompressedBufSize(nullptr), 0u);
    frame_params up = frame_record(14, 1, 4, 2);
    for (const uint64_t size : sizes_around(36)) {
        up.size = size;
        EXPECT_EQ(QVRUncompressed_GetUncompressedBufSize(&up), size == 36 ? 8u : 0u) << size;
    }
}

TEST(argument_checks, stream_size_query_fails_with_0) {
    for_each_argument(2, frame_record(14, 1, 4, 2), [](const arguments& with) {
        EXPECT_EQ(QVRUncompressed_GetCompressedBufSize(with.unless_null(0, &with.up), with.unless_null(1, &with.cp)),
                  with.expected == 0 ? 45u : 0u);
    });
}

TEST(argument_checks, creation) {
    for (const uint64_t size : sizes_around(28)) {
        QVRUncompressed_CodecConfig_t config = config_record(1);
        config.size = size;
        for (const bool no_config : {false, true}) {
            const QVRUncompressed_CodecConfig_t* given = no_config ? nullptr : &config;
            EXPECT_EQ(QVRUncompressed_CreateEncoder(given, nullptr), 2u) << size;
            EXPECT_EQ(QVRUncompressed_CreateDecoder(given, nullptr), 2u) << size;
            QVRUncompressed_Encoder made_encoder = nullptr;
            QVRUncompressed_Decoder made_decoder = nullptr;
            const uint32_t expected = no_config || size == 28 ? 0 : 3;
            EXPECT_EQ(QVRUncompressed_CreateEncoder(given, &made_encoder), expected) << size;
            EXPECT_EQ(QVRUncompressed_CreateDecoder(given, &made_decoder), expected) << size;
            EXPECT_EQ(made_encoder != nullptr, expected == 0);
            EXPECT_EQ(made_decoder != nullptr, expected == 0);
            QVRUncompressed_DestroyEncoder(made_encoder);
            QVRUncompressed_DestroyDecoder(made_decoder);
        }
    }
}

TEST(argument_checks, encoding) {
    encoder out;
    const bytes src = counting(8);
    for_each_argument(5, frame_record(14, 1, 4, 2), [&](const arguments& with) {
        bytes dst(45, k_fill);
        uint32_t written = k_untouched;
        ASSERT_EQ(QVRUncompressed_EncodeFrame(with.unless_null(0, out.handle()), with.unless_null(1, &with.up),
                                              with.unless_null(2, &with.cp), with.unless_null(3, src.data()), 8,
                                              with.unless_null(4, dst.data()), 45, &written),
                  with.expected);
        ASSERT_EQ(written, with.expected == 0 ? 45u : k_untouched);
        ASSERT_EQ(dst == repeat(k_fill, 45), with.expected != 0);
    });
    EXPECT_EQ(out.messages(), message_list{});
}

TEST(argument_checks, decoding) {
    decoder in;
    const bytes src = single_plane(4, 2, " a08", counting(8));
    for_each_frame_argument(4, frame_record(14, 1, 4, 2), [&](const arguments& with) {
        bytes dst(8, k_fill);
        uint32_t written = k_untouched;
        ASSERT_EQ(QVRUncompressed_DecodeFrame(with.unless_null(0, in.handle()), with.unless_null(1, &with.up),
                                              with.unless_null(2, src.data()), static_cast<uint32_t>(src.size()),
                                              with.unless_null(3, dst.data()), 8, &written),
                  with.expected);
        ASSERT_EQ(written, with.expected == 0 ? 8u : k_untouched);
        ASSERT_EQ(dst == repeat(k_fill, 8), with.expected != 0);
    });
    EXPECT_EQ(in.messages(), message_list{});
}

TEST(argument_checks, reading_metadata) {
    decoder in;
    const bytes src = single_plane(4, 2, " a08", counting(8));
    for_each_frame_argument(3, frame_record(0, 0, 77, 0), [&](arguments& with) {
        const uint64_t size = with.up.size;
        ASSERT_EQ(QVRUncompressed_ReadMetadata(with.unless_null(0, in.handle()), with.unless_null(1, src.data()),
                                               static_cast<uint32_t>(src.size()), with.unless_null(2, &with.up)),
                  with.expected);
        ASSERT_EQ(with.up.width, with.expected == 0 ? 4u : 77u);
        ASSERT_EQ(with.up.size, size);
    });
    EXPECT_EQ(in.messages(), message_list{});
}

TEST(argument_checks, counting_wraps) {
    EXPECT_EQ(QVRUncompressed_ReadWrapCount(nullptr, 64), 0u);
}

TEST(argument_checks, sizes_of_buffers_are_no_part_of_them) {
    encoder out;
    decoder in;
    frame_params up = frame_record(14, 1, 4, 2);
    const stream_params cp = raw_alpha();
    uint8_t src[64] = {};
    uint8_t dst[64] = {};
    EXPECT_EQ(QVRUncompressed_EncodeFrame(out.handle(), &up, &cp, src, 0, dst, 64, nullptr), 1u);
    EXPECT_EQ(QVRUncompressed_EncodeFrame(out.handle(), &up, &cp, src, 8, dst, 0, nullptr), 1u);
    EXPECT_EQ(QVRUncompressed_DecodeFrame(in.handle(), &up, src, 0, dst, 64, nullptr), 1u);
    EXPECT_EQ(QVRUncompressed_DecodeFrame(in.handle(), &up, src, 64, dst, 0, nullptr), 1u);
    EXPECT_EQ(QVRUncompressed_ReadMetadata(in.handle(), src, 0, &up), 1u);
    EXPECT_EQ(out.messages(), (message_list{"src size is too small", "dst size is too small"}));
    EXPECT_EQ(in.messages(), (message_list{"buffer size should be at least 8", "dst size is too small",
                                           "buffer size should be at least 8"}));
}

}  // namespace
