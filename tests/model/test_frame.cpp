// SPDX-License-Identifier: BSD-3-Clause
#include "test_helpers.h"

using namespace model_test;
using model::bytes;

namespace {

const model::stream_params raw_stream{0, 0};
const model::stream_params coded_stream{1, 1};

std::string encode_failure(const model::frame_params& params, const model::stream_params& stream, std::size_t source,
                           std::uint32_t capacity) {
    const bytes data(source, 0);
    return failure_of([&] { model::encode_frame(params, stream, look(data), capacity); });
}

std::string decode_failure(const model::frame_params& params, const bytes& stream) {
    bytes out(1000, 0);
    return failure_of([&] { model::decode_frame(params, look(stream), into(out)); });
}

bytes plane(std::uint32_t width, std::uint32_t height, const std::string& name, std::size_t size,
            std::uint8_t layout = 0) {
    return box("icmp", sinf(width, height, name, layout) + box("sdat", counting(size)));
}

}  // namespace

TEST(model_frame, encodes_a_single_plane_of_61_bytes) {
    const bytes source = counting(24);
    const bytes expected = bytes{61, 0, 0, 0, 'p', 'a', 'c', 'k', 21,  0, 0,  0, 's', 'i', 'n', 'f', 4,   0,  0,
                                 0,  2, 0, 0, 0,   'r', 'g', '0', '8', 0, 32, 0, 0,   0,   's', 'd', 'a', 't'} +
                           source;
    EXPECT_EQ(model::encode_frame(frame(5, 1, 4, 2), raw_stream, look(source), 61), expected);
    EXPECT_EQ(encode_failure(frame(5, 1, 4, 2), raw_stream, 24, 60), "dst size is too small");
    EXPECT_EQ(encode_failure(frame(5, 1, 4, 2), raw_stream, 23, 61), "src size is too small");
}

TEST(model_frame, encodes_two_planes_of_114_bytes) {
    const bytes source = counting(32);
    const bytes stream = model::encode_frame(frame(7, 1, 4, 2), raw_stream, look(source), 114);
    ASSERT_EQ(stream.size(), 114u);
    EXPECT_EQ(bytes(stream.begin() + 8, stream.begin() + 16), sized_box("icmp", 61, {}));
    EXPECT_EQ(bytes(stream.begin() + 45, stream.begin() + 51), (bytes{1, 2, 3, 5, 6, 7}));
    EXPECT_EQ(bytes(stream.begin() + 106, stream.end()), (bytes{4, 8, 12, 16, 20, 24, 28, 32}));
}

TEST(model_frame, codes_alpha_and_cuts_the_frame) {
    model::frame_params params = frame(14, 1, 4, 2);
    params.row_bytes = 5;
    const bytes source = {0, 1, 2, 3, 99, 0, 1, 2, 3, 99};
    const bytes stream = model::encode_frame(params, coded_stream, look(source), 5000);
    EXPECT_EQ(stream.size(), 8u + 21 + 8 + 14);
    EXPECT_EQ(bytes(stream.begin() + 24, stream.begin() + 28), text("rl08"));
    bytes out(10, 0xEE);
    EXPECT_EQ(model::decode_frame(params, look(stream), into(out)), 10u);
    EXPECT_EQ(out, (bytes{0, 1, 2, 3, 0, 0, 1, 2, 3, 0xEE}));
}

TEST(model_frame, decodes_without_touching_padding) {
    model::frame_params params = frame(5, 1, 1, 2);
    const bytes stream = model::encode_frame(params, raw_stream, look(counting(6)), 100);
    params.order = 6;
    params.row_bytes = 4;
    bytes out(9, 0xEE);
    EXPECT_EQ(model::decode_frame(params, look(stream), into(out)), 8u);
    EXPECT_EQ(out, (bytes{3, 2, 1, 0xEE, 6, 5, 4, 0xEE, 0xEE}));
}

TEST(model_frame, applies_encoder_rules_in_order) {
    EXPECT_EQ(encode_failure(frame(11, 3, 3, 1), coded_stream, 0, 0),
              "Only 8 and 16 bit alpha supported for RLE compression");
    EXPECT_EQ(encode_failure(frame(13, 1, 3, 1), coded_stream, 0, 0),
              "Width must be multiple of 2 for 422 and 420 subsampling");
    EXPECT_EQ(encode_failure(frame(10, 1, 2, 1), coded_stream, 0, 0),
              "Height must be multiple of 2 for 420 subsampling");
    model::frame_params params = frame(10, 1, 4, 2);
    params.row_bytes = 3;
    params.row_bytes2 = 1;
    EXPECT_EQ(encode_failure(params, raw_stream, 0, 0),
              "rowBytes is too small, it should be at least 4 according to uncompressed params");
    params.row_bytes = 4;
    EXPECT_EQ(encode_failure(params, raw_stream, 0, 0),
              "rowBytes2 is too small, it should be at least 2 according to uncompressed params");
    EXPECT_EQ(encode_failure(frame(17, 1, 4, 2), raw_stream, 0, 0),
              "combination of color component order and component type is not supported");
    EXPECT_EQ(encode_failure(frame(14, 1, 0, 0), coded_stream, 0, 5000), "Invalid width");
    EXPECT_EQ(encode_failure(frame(14, 1, 1, 0), coded_stream, 0, 5000), "Invalid height");
    EXPECT_EQ(encode_failure(frame(14, 1, 0, 9), raw_stream, 0, 37), "no failure");
}

TEST(model_frame, keeps_the_source_limit_of_a_separate_alpha_plane) {
    model::frame_params params = frame(16, 1, 2, 2);
    params.row_bytes2 = 1000;
    EXPECT_EQ(encode_failure(params, coded_stream, 3000, 5000), "src buffer is too small according to metadata");
}

TEST(model_frame, checks_planes_against_each_other) {
    const auto run = [](const bytes& children) { return decode_failure(frame(3, 1, 2, 1), box("pack", children)); };
    const bytes colour = plane(2, 1, "rg08", 6);
    EXPECT_EQ(run(colour + plane(2, 1, " a16", 4)), "planes with different bitdepth is not supported by this decoder");
    EXPECT_EQ(run(colour + plane(2, 1, " a08", 2, 1)),
              "planes with different frame layout is not supported by this decoder");
    EXPECT_EQ(run(colour + plane(2, 2, " a08", 4)),
              "Alpha plane with different width or height is not supported by this decoder");
    const bytes luma = plane(3, 1, " y08", 3);
    EXPECT_EQ(run(luma + plane(1, 1, "cb08", 1) + plane(2, 1, "cr08", 2)),
              "Cb plane width and hight should be half of luma");
    EXPECT_EQ(run(luma + plane(2, 1, "cb08", 2) + plane(1, 1, "cr08", 1)),
              "Cr plane width and hight should be half of luma");
    EXPECT_EQ(run(luma + plane(2, 1, "cb08", 2) + plane(2, 1, "cr08", 2) + plane(2, 1, " a08", 2)),
              "Alpha plane with different width or height is not supported by this decoder");
}

TEST(model_frame, checks_the_stream_against_the_caller) {
    const bytes colour = box("pack", plane(2, 1, "rg08", 6));
    EXPECT_EQ(decode_failure(frame(5, 1, 1, 2), colour),
              "width in src metadata is different than width in uncompressed params");
    EXPECT_EQ(decode_failure(frame(5, 1, 2, 2), colour),
              "height in src metadata is different than height in uncompressed params");
    EXPECT_EQ(decode_failure(frame(5, 2, 2, 1), colour),
              "bit depth in src metadata is different than bit depth in uncompressed params");
    const std::string incompatible = "src metadata type is incompatible with color component order or component type";
    EXPECT_EQ(decode_failure(frame(9, 1, 2, 1), colour), incompatible);
    EXPECT_EQ(decode_failure(frame(3, 1, 2, 1), colour), incompatible);
    EXPECT_EQ(decode_failure(frame(0, 1, 2, 1), colour),
              "combination of color component order and component type is not supported");
    const bytes pair = box("pack", plane(2, 1, "rg08", 6) + plane(2, 1, " a08", 2));
    EXPECT_EQ(decode_failure(frame(5, 1, 2, 1), pair), "no failure");
    EXPECT_EQ(decode_failure(frame(14, 1, 2, 1), pair), incompatible);
    EXPECT_EQ(decode_failure(frame(3, 3, 2, 1), box("pack", plane(2, 1, "rg10", 8))),
              "Only 8 and 16 bit alpha is supported");
    const bytes stitched = box("pack", sinf(2, 1, "stch") + box("sdat", {}));
    EXPECT_EQ(decode_failure(frame(5, 1, 2, 1), stitched),
              "bit depth in src metadata is different than bit depth in uncompressed params");
}

TEST(model_frame, reads_rows_that_a_coded_plane_does_not_name_as_zero) {
    const bytes nothing = box("pack", plane(1, 1, "rg08", 3) + box("icmp", sinf(1, 1, "rl08") + box("sdat", {0})));
    bytes out(4, 0xEE);
    EXPECT_EQ(model::decode_frame(frame(7, 1, 1, 1), look(nothing), into(out)), 4u);
    EXPECT_EQ(out, (bytes{1, 2, 3, 0}));
    const bytes lone = box("pack", sinf(1, 1, "rl08") + box("sdat", {0}));
    out.assign(4, 0xEE);
    EXPECT_EQ(model::decode_frame(frame(14, 1, 1, 1), look(lone), into(out)), 1u);
    EXPECT_EQ(out, bytes(4, 0xEE));
}
