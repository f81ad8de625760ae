// Every combination of null pointers and wrong size fields, and which of them decides the status.
#include <gtest/gtest.h>

#include <vector>

#include "box_builder.h"
#include "codec.h"

namespace {

using namespace test;

const uint64_t k_wrong_by_one_or_more[] = {0, 1, 9, 11, 15, 17, 27, 29, 35, 37, 0x10000000a, 0x100000024, ~uint64_t{0}};

// The pointer itself, or null when its bit is set in the mask.
template <class pointer>
pointer unless(unsigned mask, unsigned bit, pointer value) {
    return (mask >> bit & 1) != 0 ? nullptr : value;
}

std::vector<uint64_t> sizes_around(uint64_t right) {
    std::vector<uint64_t> sizes = {right};
    for (const uint64_t wrong : k_wrong_by_one_or_more) {
        if (wrong != right) {
            sizes.push_back(wrong);
        }
    }
    return sizes;
}

TEST(argument_checks, raw_size_query_fails_with_0) {
    EXPECT_EQ(QVRUncompressed_GetUncompressedBufSize(nullptr), 0u);
    frame_params up = frame_record(14, 1, 4, 2);
    for (const uint64_t size : sizes_around(36)) {
        up.size = size;
        EXPECT_EQ(QVRUncompressed_GetUncompressedBufSize(&up), size == 36 ? 8u : 0u) << size;
    }
}

TEST(argument_checks, stream_size_query_fails_with_0) {
    for (unsigned mask = 0; mask < 4; ++mask) {
        for (const uint64_t up_size : sizes_around(36)) {
            for (const uint64_t cp_size : sizes_around(10)) {
                frame_params up = frame_record(14, 1, 4, 2);
                stream_params cp = raw_alpha();
                up.size = up_size;
                cp.size = cp_size;
                const bool good = mask == 0 && up_size == 36 && cp_size == 10;
                EXPECT_EQ(QVRUncompressed_GetCompressedBufSize(unless(mask, 0, &up), unless(mask, 1, &cp)),
                          good ? 45u : 0u)
                    << mask << ", " << up_size << ", " << cp_size;
            }
        }
    }
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
    encoder with;
    const bytes src = counting(8);
    for (unsigned mask = 0; mask < 32; ++mask) {
        for (const uint64_t up_size : sizes_around(36)) {
            for (const uint64_t cp_size : sizes_around(10)) {
                SCOPED_TRACE(testing::Message() << mask << ", " << up_size << ", " << cp_size);
                frame_params up = frame_record(14, 1, 4, 2);
                stream_params cp = raw_alpha();
                up.size = up_size;
                cp.size = cp_size;
                bytes dst(45, k_fill);
                uint32_t written = k_untouched;
                const uint32_t expected = mask != 0 ? 2 : up_size != 36 || cp_size != 10 ? 3 : 0;
                ASSERT_EQ(QVRUncompressed_EncodeFrame(unless(mask, 0, with.handle()), unless(mask, 1, &up),
                                                      unless(mask, 2, &cp), unless(mask, 3, src.data()), 8,
                                                      unless(mask, 4, dst.data()), 45, &written),
                          expected);
                ASSERT_EQ(written, expected == 0 ? 45u : k_untouched);
                ASSERT_EQ(dst == repeat(k_fill, 45), expected != 0);
            }
        }
    }
    EXPECT_EQ(with.messages(), message_list{});
}

TEST(argument_checks, decoding) {
    decoder with;
    const bytes src = single_plane(4, 2, " a08", counting(8));
    for (unsigned mask = 0; mask < 16; ++mask) {
        for (const uint64_t up_size : sizes_around(36)) {
            SCOPED_TRACE(testing::Message() << mask << ", " << up_size);
            frame_params up = frame_record(14, 1, 4, 2);
            up.size = up_size;
            bytes dst(8, k_fill);
            uint32_t written = k_untouched;
            const uint32_t expected = mask != 0 ? 2 : up_size != 36 ? 3 : 0;
            ASSERT_EQ(QVRUncompressed_DecodeFrame(unless(mask, 0, with.handle()), unless(mask, 1, &up),
                                                  unless(mask, 2, src.data()), static_cast<uint32_t>(src.size()),
                                                  unless(mask, 3, dst.data()), 8, &written),
                      expected);
            ASSERT_EQ(written, expected == 0 ? 8u : k_untouched);
            ASSERT_EQ(dst == repeat(k_fill, 8), expected != 0);
        }
    }
    EXPECT_EQ(with.messages(), message_list{});
}

TEST(argument_checks, reading_metadata) {
    decoder with;
    const bytes src = single_plane(4, 2, " a08", counting(8));
    for (unsigned mask = 0; mask < 8; ++mask) {
        for (const uint64_t up_size : sizes_around(36)) {
            SCOPED_TRACE(testing::Message() << mask << ", " << up_size);
            frame_params up = frame_record(0, 0, 77, 0);
            up.size = up_size;
            const uint32_t expected = mask != 0 ? 2 : up_size != 36 ? 3 : 0;
            ASSERT_EQ(QVRUncompressed_ReadMetadata(unless(mask, 0, with.handle()), unless(mask, 1, src.data()),
                                                   static_cast<uint32_t>(src.size()), unless(mask, 2, &up)),
                      expected);
            ASSERT_EQ(up.width, expected == 0 ? 4u : 77u);
            ASSERT_EQ(up.size, expected == 0 ? 36u : up_size);
        }
    }
    EXPECT_EQ(with.messages(), message_list{});
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
