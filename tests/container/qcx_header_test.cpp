// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <string>

#include "api/base/errors.h"
#include "container/wrapping.h"
#include "guarded_buffer.h"

namespace {

using test::bytes;

bytes header(std::uint32_t id, std::uint16_t width = 0, std::uint16_t height = 0, std::size_t size = 45) {
    bytes frame(size, 0xfe);  // the alpha flag is bit 0 of byte 7: clear
    const bytes dimensions = test::operator+(test::be16(height), test::be16(width));
    std::copy(dimensions.begin(), dimensions.end(), frame.begin() + 24);
    const bytes code = test::be32(id);
    std::copy(code.begin(), code.end(), frame.begin() + 40);
    return frame;
}

container::qcx_header_info read(const bytes& frame) {
    const test::guarded_buffer source(frame);
    return container::read_qcx_header(source.data(), source.size32());
}

template <class Call>
std::string refusal(Call call) {
    try {
        call();
    } catch (const invalid_argument& failure) {
        return failure.what();
    }
    return "accepted";
}

TEST(qcx_header, every_compression_and_what_it_implies) {
    struct {
        std::uint32_t id, width, height;
        bool interlaced;
    } const rows[] = {
        {1235, 1920, 1080, false}, {1237, 1920, 1080, false}, {1238, 1920, 1080, false}, {1253, 1920, 1080, false},
        {1256, 1920, 1080, false}, {1241, 1920, 1080, true},  {1242, 1920, 1080, true},  {1243, 1920, 1080, true},
        {1244, 1440, 1080, true},  {1259, 1440, 1080, false}, {1260, 1440, 1080, true},  {1250, 1280, 720, false},
        {1251, 1280, 720, false},  {1252, 1280, 720, false},  {1258, 960, 720, false},   {1270, 77, 33, false},
        {1271, 77, 33, false},     {1272, 77, 33, false},     {1273, 77, 33, false},     {1274, 77, 33, false},
        {1300, 77, 33, false},     {1301, 77, 33, false}};
    for (const auto& row : rows) {
        const auto info = read(header(row.id, 77, 33));
        EXPECT_EQ(info.width, row.width) << row.id;
        EXPECT_EQ(info.height, row.height) << row.id;
        EXPECT_EQ(info.interlaced, row.interlaced) << row.id;
        EXPECT_FALSE(info.has_alpha) << row.id;
    }
}

TEST(qcx_header, dimensions_of_a_free_compression_are_big_endian) {
    const auto info = read(header(1300, 0x1234, 0x5678));
    EXPECT_EQ(info.width, 0x1234u);
    EXPECT_EQ(info.height, 0x5678u);
}

TEST(qcx_header, unknown_compressions_and_short_frames_are_refused) {
    for (const std::uint32_t id : {0u, 1234u, 1236u, 1254u, 1261u, 1275u, 1302u, 0xffffffffu}) {
        EXPECT_EQ(refusal([&] { read(header(id)); }), "Invalid compression ID in QCX header") << id;
    }
    EXPECT_EQ(refusal([] { read(header(1235, 0, 0, 44)); }), "Size is too small to parse QCX header");
    EXPECT_EQ(refusal([] { read({}); }), "Size is too small to parse QCX header");
}

TEST(qcx_header, the_alpha_flag_is_the_lowest_bit_of_byte_7) {
    bytes frame = header(1235);
    frame[7] = 0x01;
    EXPECT_TRUE(read(frame).has_alpha);
    frame[7] = 0xfe;
    EXPECT_FALSE(read(frame).has_alpha);
}

TEST(qcx_header, is_compared_with_the_frame_in_order) {
    const auto compare = [](std::uint32_t width, std::uint32_t height, std::uint32_t layout,
                            const container::qcx_header_info& info) {
        return refusal([&] { container::check_against_qcx({36, 14, 1, width, height, 0, layout, 0}, info); });
    };
    EXPECT_EQ(compare(1, 1, 1, {1920, 1080, true, false}), "Can't wrap uncompressed alpha and QCX with alpha flag set");
    EXPECT_EQ(compare(1, 1, 1, {1920, 1080, false, false}), "Uncompressed params width 1 is not equal QCX width 1920");
    EXPECT_EQ(compare(1920, 1, 1, {1920, 1080, false, false}),
              "Uncompressed params height 1 is not equal QCX height 1080");
    EXPECT_EQ(compare(1920, 1080, 1, {1920, 1080, false, false}),
              "Uncompressed params frame layout is not compatible with progressive QCX");
    EXPECT_EQ(compare(1920, 1080, 256, {1920, 1080, false, false}),
              "Uncompressed params frame layout is not compatible with progressive QCX");
    EXPECT_EQ(compare(1920, 1080, 0, {1920, 1080, false, true}),
              "Uncompressed params frame layout is not compatible with interlaced QCX");
    EXPECT_EQ(compare(1920, 1080, 2, {1920, 1080, false, true}),
              "Uncompressed params frame layout is not compatible with interlaced QCX");
    EXPECT_EQ(compare(1920, 1080, 1, {1920, 1080, false, true}), "accepted");
    EXPECT_EQ(compare(1920, 1080, 0, {1920, 1080, false, false}), "accepted");
}

}  // namespace
