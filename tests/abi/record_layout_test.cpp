// SPDX-License-Identifier: BSD-3-Clause
//
// The records byte for byte: sizes, offsets, packing, and the numbers behind the names.
#include <QVRUncompressed.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <type_traits>

#include "codec.h"

namespace {

using namespace test;

using frame = QVRUncompressed_UncompressedParams_t;
static_assert(sizeof(frame) == 36 && alignof(frame) == 1, "frame record");
static_assert(offsetof(frame, size) == 0 && sizeof(frame::size) == 8, "frame record");
static_assert(offsetof(frame, colorComponentOrder) == 8 && sizeof(frame::colorComponentOrder) == 4, "frame record");
static_assert(offsetof(frame, componentType) == 12 && sizeof(frame::componentType) == 4, "frame record");
static_assert(offsetof(frame, width) == 16 && sizeof(frame::width) == 4, "frame record");
static_assert(offsetof(frame, height) == 20 && sizeof(frame::height) == 4, "frame record");
static_assert(offsetof(frame, rowBytes) == 24 && sizeof(frame::rowBytes) == 4, "frame record");
static_assert(offsetof(frame, frameLayout) == 28 && sizeof(frame::frameLayout) == 4, "frame record");
static_assert(offsetof(frame, rowBytes2) == 32 && sizeof(frame::rowBytes2) == 4, "frame record");

using stream = QVRUncompressed_CompressedParams_t;
static_assert(sizeof(stream) == 10 && alignof(stream) == 1, "stream record");
static_assert(offsetof(stream, size) == 0 && sizeof(stream::size) == 8, "stream record");
static_assert(offsetof(stream, alphaCompression) == 8 && sizeof(stream::alphaCompression) == 1, "stream record");
static_assert(offsetof(stream, rleSlices) == 9 && sizeof(stream::rleSlices) == 1, "stream record");

using config = QVRUncompressed_CodecConfig_t;
static_assert(sizeof(config) == 28 && alignof(config) == 1, "configuration record");
static_assert(offsetof(config, size) == 0 && sizeof(config::size) == 8, "configuration record");
static_assert(offsetof(config, threadCount) == 8 && sizeof(config::threadCount) == 4, "configuration record");
static_assert(offsetof(config, userData) == 12 && sizeof(config::userData) == 8, "configuration record");
static_assert(offsetof(config, errorCallback) == 20 && sizeof(config::errorCallback) == 8, "configuration record");

using wrapped = QVRUncompressed_WrapParams_t;
static_assert(sizeof(wrapped) == 16 && alignof(wrapped) == 1, "wrap record");
static_assert(offsetof(wrapped, size) == 0 && sizeof(wrapped::size) == 8, "wrap record");
static_assert(offsetof(wrapped, wrapType) == 8 && sizeof(wrapped::wrapType) == 4, "wrap record");
static_assert(offsetof(wrapped, dataSize) == 12 && sizeof(wrapped::dataSize) == 4, "wrap record");

static_assert(std::is_trivial<frame>::value && std::is_standard_layout<frame>::value, "plain record");
static_assert(std::is_trivial<config>::value && std::is_standard_layout<config>::value, "plain record");
static_assert(sizeof(QVRUncompressed_Encoder) == 8 && sizeof(QVRUncompressed_Decoder) == 8, "handles");
static_assert(sizeof(QVRUncompressed_ErrorCallback_t) == 8, "callback");

TEST(constants, sizes_and_versions) {
    EXPECT_EQ(QVRUNCOMPRESSED_UNCOMPRESSED_PARAMS_SIZE, 36u);
    EXPECT_EQ(QVRUNCOMPRESSED_COMPRESSED_PARAMS_SIZE, 10u);
    EXPECT_EQ(QVRUNCOMPRESSED_CODEC_CONFIG_SIZE, 28u);
    EXPECT_EQ(QVRUNCOMPRESSED_WRAP_PARAMS_SIZE, 16u);
    EXPECT_EQ(QVRUNCOMPRESSED_VERSION_MAJOR, 2);
    EXPECT_EQ(QVRUNCOMPRESSED_VERSION_MINOR, 7);
    EXPECT_EQ(QVRUNCOMPRESSED_VERSION_PATCH, 4);
}

TEST(constants, statuses) {
    EXPECT_EQ(QVRUncompressed_StatusOk, 0);
    EXPECT_EQ(QVRUncompressed_StatusFailed, 1);
    EXPECT_EQ(QVRUncompressed_StatusNullPointer, 2);
    EXPECT_EQ(QVRUncompressed_StatusBadSize, 3);
}

TEST(constants, orders_types_layouts_and_wraps) {
    EXPECT_EQ(QVRUncompressed_OrderYCbYCr, 1);
    EXPECT_EQ(QVRUncompressed_OrderCbYCrY, 2);
    EXPECT_EQ(QVRUncompressed_OrderARGB, 3);
    EXPECT_EQ(QVRUncompressed_OrderBGRA, 4);
    EXPECT_EQ(QVRUncompressed_OrderRGB, 5);
    EXPECT_EQ(QVRUncompressed_OrderBGR, 6);
    EXPECT_EQ(QVRUncompressed_OrderRGBA, 7);
    EXPECT_EQ(QVRUncompressed_OrderABGR, 8);
    EXPECT_EQ(QVRUncompressed_OrderYCbCr444, 9);
    EXPECT_EQ(QVRUncompressed_OrderPlanar420, 10);
    EXPECT_EQ(QVRUncompressed_OrderCbYACrYA, 11);
    EXPECT_EQ(QVRUncompressed_OrderYCbCrA444, 12);
    EXPECT_EQ(QVRUncompressed_OrderPlanar420Alpha, 13);
    EXPECT_EQ(QVRUncompressed_OrderAlpha, 14);
    EXPECT_EQ(QVRUncompressed_OrderYCbYCrPlanarAlpha, 15);
    EXPECT_EQ(QVRUncompressed_OrderCbYCrYPlanarAlpha, 16);
    EXPECT_EQ(QVRUncompressed_TypeU8, 1);
    EXPECT_EQ(QVRUncompressed_TypeU16, 2);
    EXPECT_EQ(QVRUncompressed_TypeU10, 3);
    EXPECT_EQ(QVRUncompressed_TypeU12, 4);
    EXPECT_EQ(QVRUncompressed_TypeU10Packed, 5);
    EXPECT_EQ(QVRUncompressed_TypeHalf, 6);
    EXPECT_EQ(QVRUncompressed_TypeFloat, 7);
    EXPECT_EQ(QVRUncompressed_TypeFixed16, 214);
    EXPECT_EQ(QVRUncompressed_LayoutProgressive, 0);
    EXPECT_EQ(QVRUncompressed_LayoutInterlaced, 1);
    EXPECT_EQ(QVRUncompressed_WrapQCX, 1);
    EXPECT_EQ(QVRUncompressed_WrapStitched, 2);
    EXPECT_EQ(QVRUncompressed_WrapTile, 3);
}

TEST(records, are_read_by_their_bytes) {
    const bytes raw_frame = from_hex("2400000000000000 0e000000 01000000 04000000 02000000 05000000 01000000 00000000");
    const bytes raw_stream = from_hex("0a00000000000000 01 02");
    frame up;
    stream cp;
    std::memcpy(&up, raw_frame.data(), 36);
    std::memcpy(&cp, raw_stream.data(), 10);
    expect_bytes(encode(up, cp, from_hex("00010203 ee 00010203 ee")),
                 "38000000 'pack' 15000000 'sinf' 04000000 02000000 'rl08' 01 "
                 "1b000000 'sdat' 02bffffd 70017fff fde000 dfad5400 dfad5400");
}

TEST(records, are_written_by_their_bytes) {
    const metadata read =
        read_wrap_metadata(from_hex("32000000 'pack' 0b000000 'QCXF' 010203 "
                                    "15000000 'sinf' 01000000 01000000 ' a16' 01 0a000000 'sdat' 0000"),
                           1);
    ASSERT_EQ(read.status, 0u);
    bytes raw_frame(36);
    bytes raw_wrap(16);
    std::memcpy(raw_frame.data(), &read.up, 36);
    std::memcpy(raw_wrap.data(), read.wraps.data(), 16);
    EXPECT_EQ(to_hex(raw_frame),
              canonical("2400000000000000 0e000000 02000000 01000000 01000000 00000000 01000000 00000000"));
    EXPECT_EQ(to_hex(raw_wrap), canonical("1000000000000000 01000000 03000000"));
}

}  // namespace
