// SPDX-License-Identifier: BSD-3-Clause
//
// The planes of a bitstream against each other and against the caller's record, in the order of the checks.
#include <gtest/gtest.h>

#include "box_builder.h"
#include "codec.h"

namespace {

using namespace test;

constexpr const char* k_bit_depths = "planes with different bitdepth is not supported by this decoder";
constexpr const char* k_layouts = "planes with different frame layout is not supported by this decoder";
constexpr const char* k_alpha_size = "Alpha plane with different width or height is not supported by this decoder";
constexpr const char* k_cb_size = "Cb plane width and hight should be half of luma";
constexpr const char* k_cr_size = "Cr plane width and hight should be half of luma";
constexpr const char* k_width = "width in src metadata is different than width in uncompressed params";
constexpr const char* k_height = "height in src metadata is different than height in uncompressed params";
constexpr const char* k_depth = "bit depth in src metadata is different than bit depth in uncompressed params";
constexpr const char* k_match = "src metadata type is incompatible with color component order or component type";
constexpr const char* k_alpha_type = "Only 8 and 16 bit alpha is supported";
constexpr const char* k_pair = "combination of color component order and component type is not supported";

const bytes k_payload = repeat(0x11, 64);

outcome try_decode(const frame_params& up, const bytes& stream) {
    const outcome result = decode(up, stream, 4096);
    if (result.status != 0) {
        EXPECT_EQ(result.data, repeat(k_fill, 4096)) << "a check came after the first write";
    }
    return result;
}

struct plane {
    uint32_t width;
    uint32_t height;
    const char* code;
    uint8_t layout = 0;
};

bytes frame_of(std::initializer_list<plane> planes) {
    bytes children;
    for (const plane& one : planes) {
        children = children + component(one.width, one.height, one.code, k_payload, one.layout);
    }
    return pack(children);
}

const frame_params k_422_alpha = frame_record(16, 1, 4, 2);
const frame_params k_420 = frame_record(10, 1, 4, 2);
const frame_params k_420_alpha = frame_record(13, 1, 4, 2);

TEST(planes_agree, in_bit_depth) {
    expect_failure(try_decode(k_422_alpha, frame_of({{4, 2, "y208"}, {4, 2, " a16"}})), k_bit_depths);
    expect_failure(try_decode(k_422_alpha, frame_of({{4, 2, "y208"}, {4, 2, "rl16"}})), k_bit_depths);
    expect_failure(try_decode(k_422_alpha, frame_of({{4, 2, "y210"}, {4, 2, " a08"}})), k_bit_depths);
    expect_failure(try_decode(k_420_alpha, frame_of({{4, 2, " y08"}, {2, 1, "cb08"}, {2, 1, "cr08"}, {4, 2, " a16"}})),
                   k_bit_depths);
}

TEST(planes_agree, in_frame_layout) {
    expect_failure(try_decode(k_422_alpha, frame_of({{4, 2, "y208", 0}, {4, 2, " a08", 1}})), k_layouts);
    expect_failure(try_decode(k_422_alpha, frame_of({{4, 2, "y208", 1}, {4, 2, " a08", 0}})), k_layouts);
    expect_failure(try_decode(k_420, frame_of({{4, 2, " y08"}, {2, 1, "cb08"}, {2, 1, "cr08", 1}})), k_layouts);
    expect_success(try_decode(k_422_alpha, frame_of({{4, 2, "y208", 1}, {4, 2, " a08", 1}})));
}

TEST(planes_agree, plane_by_plane_with_the_bit_depth_first) {
    expect_failure(try_decode(k_422_alpha, frame_of({{4, 2, "y208", 0}, {4, 2, " a16", 1}})), k_bit_depths);
    // The layout of the third plane is looked at before the bit depth of the fourth.
    expect_failure(
        try_decode(k_420_alpha, frame_of({{4, 2, " y08"}, {2, 1, "cb08"}, {2, 1, "cr08", 1}, {4, 2, " a16"}})),
        k_layouts);
}

TEST(planes_agree, two_planes_in_width_and_height) {
    expect_failure(try_decode(k_422_alpha, frame_of({{4, 2, "y208"}, {3, 2, " a08"}})), k_alpha_size);
    expect_failure(try_decode(k_422_alpha, frame_of({{4, 2, "y208"}, {4, 1, " a08"}})), k_alpha_size);
    expect_failure(try_decode(k_422_alpha, frame_of({{4, 2, "y208"}, {4, 3, "rl08"}})), k_alpha_size);
}

TEST(planes_agree, a_second_plane_of_another_height_is_called_alpha_even_when_it_is_not) {
    expect_failure(try_decode(k_422_alpha, frame_of({{4, 2, " a08"}, {4, 3, "y208"}})), k_alpha_size);
}

TEST(planes_agree, chroma_is_half_of_luma_rounded_up) {
    expect_success(try_decode(frame_record(10, 1, 5, 3), frame_of({{5, 3, " y08"}, {3, 2, "cb08"}, {3, 2, "cr08"}})));
    const frame_params odd = frame_record(10, 1, 5, 3);
    expect_failure(try_decode(odd, frame_of({{5, 3, " y08"}, {2, 2, "cb08"}, {3, 2, "cr08"}})), k_cb_size);
    expect_failure(try_decode(odd, frame_of({{5, 3, " y08"}, {3, 1, "cb08"}, {3, 2, "cr08"}})), k_cb_size);
    expect_failure(try_decode(odd, frame_of({{5, 3, " y08"}, {3, 2, "cb08"}, {2, 2, "cr08"}})), k_cr_size);
    expect_failure(try_decode(odd, frame_of({{5, 3, " y08"}, {3, 2, "cb08"}, {3, 1, "cr08"}})), k_cr_size);
    expect_failure(try_decode(odd, frame_of({{5, 3, " y08"}, {2, 1, "cb08"}, {2, 1, "cr08"}})), k_cb_size);
    expect_failure(try_decode(k_420, frame_of({{4, 2, " y08"}, {4, 2, "cb08"}, {2, 1, "cr08"}})), k_cb_size);
}

TEST(planes_agree, chroma_is_told_by_its_code_not_by_its_place) {
    expect_failure(try_decode(k_420, frame_of({{2, 1, "cr08"}, {3, 1, "cb08"}, {4, 2, " y08"}})), k_cb_size);
    expect_failure(try_decode(k_420, frame_of({{3, 1, "cr08"}, {2, 1, "cb08"}, {4, 2, " y08"}})), k_cr_size);
}

TEST(planes_agree, the_fourth_plane_has_the_size_of_luma) {
    for (const plane alpha : {plane{2, 1, " a08"}, plane{4, 1, " a08"}, plane{2, 2, "rl08"}}) {
        expect_failure(try_decode(k_420_alpha, frame_of({{4, 2, " y08"}, {2, 1, "cb08"}, {2, 1, "cr08"}, alpha})),
                       k_alpha_size);
        expect_failure(try_decode(k_420_alpha, frame_of({{4, 2, " y08"}, {2, 1, "cb08"}, {1, 1, "cr08"}, alpha})),
                       k_cr_size);
    }
}

TEST(planes_agree, bit_depths_before_sizes) {
    expect_failure(try_decode(k_422_alpha, frame_of({{4, 2, "y208"}, {3, 3, " a16"}})), k_bit_depths);
    expect_failure(try_decode(k_422_alpha, frame_of({{4, 2, "y208", 0}, {3, 3, " a08", 1}})), k_layouts);
}

TEST(planes_agree, before_the_caller_is_looked_at) {
    expect_failure(try_decode(frame_record(16, 1, 6, 6), frame_of({{4, 2, "y208"}, {3, 2, " a08"}})), k_alpha_size);
}

TEST(caller_matches, in_width_height_depth_and_type_in_this_order) {
    const bytes stream = single_plane(4, 2, "rg10", k_payload);
    expect_failure(try_decode(frame_record(1, 1, 3, 3), stream), k_width);
    expect_failure(try_decode(frame_record(1, 1, 4, 3), stream), k_height);
    expect_failure(try_decode(frame_record(1, 1, 4, 2), stream), k_depth);
    expect_failure(try_decode(frame_record(1, 3, 4, 2), stream), k_match);
    expect_failure(try_decode(frame_record(3, 3, 4, 2), stream), k_alpha_type);
    expect_success(try_decode(frame_record(5, 3, 4, 2), stream));
}

TEST(caller_matches, every_bit_depth_but_its_own_is_refused) {
    // For the types 1, 2, 3, 4, 5, 6, 7, 214: success, another depth, or another kind of plane.
    const struct {
        const char* code;
        const char* results;
    } rows[] = {{"y208", "sddddddd"}, {"y210", "ddsdsddd"}, {"y212", "dddsdddd"}, {"y216", "dsdddkdk"},
                {" y2h", "dkdddsdk"}, {" y2f", "ddddddsd"}, {"y2S1", "dkdddkss"}};
    const uint32_t types[] = {1, 2, 3, 4, 5, 6, 7, 214};
    for (const auto& row : rows) {
        for (size_t i = 0; i < 8; ++i) {
            SCOPED_TRACE(testing::Message() << row.code << ", type " << types[i]);
            const outcome result = try_decode(frame_record(2, types[i], 4, 2), single_plane(4, 2, row.code, k_payload));
            if (row.results[i] == 's') {
                expect_success(result);
            } else {
                expect_failure(result, row.results[i] == 'd' ? k_depth : k_match);
            }
        }
    }
}

TEST(caller_matches, an_unknown_type_has_0_bits) {
    expect_failure(try_decode(frame_record(2, 9, 4, 2), single_plane(4, 2, "y208", k_payload)), k_depth);
    expect_failure(try_decode(frame_record(2, 0, 4, 2), single_plane(4, 2, "y208", k_payload)), k_depth);
}

TEST(caller_matches, only_a_supported_pair) {
    expect_failure(try_decode(frame_record(0, 1, 4, 2), single_plane(4, 2, "y208", k_payload)), k_pair);
    expect_failure(try_decode(frame_record(17, 2, 4, 2), single_plane(4, 2, "rg16", k_payload)), k_pair);
    expect_failure(try_decode(frame_record(1, 5, 4, 2), single_plane(4, 2, "y210", k_payload)), k_pair);
    expect_failure(try_decode(frame_record(14, 3, 4, 2), single_plane(4, 2, "y410", k_payload)), k_pair);
    expect_failure(try_decode(frame_record(10, 214, 4, 2), single_plane(4, 2, "y2S1", k_payload)), k_pair);
    expect_failure(try_decode(frame_record(14, 7, 4, 2), single_plane(4, 2, "rgS1", k_payload)), k_pair);
}

TEST(caller_matches, all_planes_that_its_order_needs) {
    const bytes colour = single_plane(4, 2, "y208", k_payload);
    expect_failure(try_decode(frame_record(5, 1, 4, 2), colour), k_match);
    expect_failure(try_decode(frame_record(9, 1, 4, 2), colour), k_match);
    expect_failure(try_decode(frame_record(10, 1, 4, 2), colour), k_match);
    expect_failure(try_decode(frame_record(14, 1, 4, 2), colour), k_match);
    for (const uint32_t order : {11u, 15u, 16u}) {
        expect_failure(try_decode(frame_record(order, 1, 4, 2), colour), k_match);
    }
    const bytes rgb = single_plane(4, 2, "rg16", k_payload);
    for (const uint32_t order : {3u, 4u, 7u, 8u}) {
        expect_failure(try_decode(frame_record(order, 2, 4, 2), rgb), k_match);
    }
    const bytes planar = frame_of({{4, 2, " y08"}, {2, 1, "cb08"}, {2, 1, "cr08"}});
    expect_failure(try_decode(k_420_alpha, planar), k_match);
    expect_failure(try_decode(frame_record(12, 1, 4, 2), single_plane(4, 2, "y408", k_payload)), k_match);
    expect_failure(try_decode(frame_record(16, 1, 4, 2), single_plane(4, 2, " a08", k_payload)), k_match);
}

TEST(caller_matches, alpha_alone_not_beside_colour) {
    expect_failure(try_decode(frame_record(14, 1, 4, 2), frame_of({{4, 2, "y208"}, {4, 2, " a08"}})), k_match);
    expect_failure(try_decode(frame_record(14, 1, 4, 2), frame_of({{4, 2, "rg08"}, {4, 2, "rl08"}})), k_match);
    expect_failure(try_decode(frame_record(14, 1, 4, 2),
                              frame_of({{4, 2, " y08"}, {2, 1, "cb08"}, {2, 1, "cr08"}, {4, 2, " a08"}})),
                   k_match);
}

TEST(caller_matches, alpha_orders_with_8_or_16_bits_only) {
    const char* const codes[] = {"rg10", "rg12", " rgh", " rgf", "rgS1", "rgS1"};
    const uint32_t types[] = {3, 4, 6, 7, 214, 7};
    for (size_t i = 0; i < 6; ++i) {
        for (const uint32_t order : {3u, 4u, 7u, 8u}) {
            SCOPED_TRACE(testing::Message() << codes[i] << ", order " << order << ", type " << types[i]);
            expect_failure(
                try_decode(frame_record(order, types[i], 4, 2), single_plane(4, 2, codes[i], k_payload + k_payload)),
                k_alpha_type);
        }
    }
    expect_failure(try_decode(frame_record(13, 3, 4, 2), frame_of({{4, 2, " y10"}, {2, 1, "cb10"}, {2, 1, "cr10"}})),
                   k_alpha_type);
}

TEST(caller_matches, a_stitched_frame_has_0_bits) {
    const bytes stream = single_plane(4, 2, "stch", box("stch", {1, 2, 3}));
    expect_failure(try_decode(frame_record(2, 1, 3, 2), stream), k_width);
    expect_failure(try_decode(frame_record(2, 1, 4, 3), stream), k_height);
    expect_failure(try_decode(frame_record(2, 1, 4, 2), stream), k_depth);
    expect_failure(try_decode(frame_record(14, 1, 4, 2), stream), k_depth);
    // An unknown type has 0 bits, too.
    expect_failure(try_decode(frame_record(2, 99, 4, 2), stream), k_pair);
}

TEST(caller_matches, the_frame_layout_is_not_compared) {
    const bytes stream = single_plane(2, 1, " a08", {1, 2}, 1);
    expect_bytes(decode(frame_record(14, 1, 2, 1, 0, 0, 0), stream), "0102");
    expect_bytes(decode(frame_record(14, 1, 2, 1, 0, 0, 99), stream), "0102");
}

TEST(decoder_order_of_checks, stride_then_destination_then_stream) {
    const bytes broken = repeat(0, 3);
    expect_failure(decode(frame_record(5, 1, 4, 2, 11), broken, 0),
                   "rowBytes is too small, it should be at least 12 according to uncompressed params");
    expect_failure(decode(frame_record(16, 1, 4, 2, 0, 3), broken, 0),
                   "rowBytes2 is too small, it should be at least 4 according to uncompressed params");
    expect_failure(decode(frame_record(5, 1, 4, 2), broken, 23), "dst size is too small");
    expect_failure(decode(frame_record(5, 1, 4, 2), broken, 24), "buffer size should be at least 8");
}

}  // namespace
