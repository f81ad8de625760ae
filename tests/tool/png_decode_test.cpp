// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include "clips.h"
#include "pictures.h"
#include "process.h"

namespace {

test_picture round_trip(const test_picture& from, const std::vector<std::string>& options) {
    const scratch_folder folder;
    write_picture(folder.file("in.png"), from);
    std::vector<std::string> arguments = {"encode", "in.png", "made.qvr"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const outcome made = folder.qvr(arguments);
    EXPECT_EQ(made.code, 0) << made.err;
    const outcome back = folder.qvr({"decode", "made.qvr", "back.png"});
    EXPECT_EQ(back.code, 0) << back.err;
    return read_picture(folder.file("back.png"));
}

void expect_equal(const test_picture& got, const test_picture& wanted) {
    EXPECT_EQ(got.width, wanted.width);
    EXPECT_EQ(got.height, wanted.height);
    EXPECT_EQ(got.depth, wanted.depth);
    EXPECT_EQ(got.kind, wanted.kind);
    EXPECT_TRUE(got.samples == wanted.samples);
}

TEST(png_decode, rgb_and_rgba_come_back_as_they_were) {
    for (const colours kind : {colours::rgb, colours::rgba}) {
        for (const int depth : {8, 16}) {
            for (const std::uint32_t width : {1u, 2u, 31u, 64u}) {
                const test_picture picture = make_picture(kind, depth, width, 17);
                expect_equal(round_trip(picture, {}), picture);
                expect_equal(round_trip(picture, {"--alpha-rle"}), picture);
            }
        }
    }
}

TEST(png_decode, slices_and_threads_change_nothing) {
    const test_picture picture = make_picture(colours::rgba, 16, 50, 40);
    for (const char* slices : {"0", "1", "7", "255"}) {
        for (const char* threads : {"0", "1", "2", "5"}) {
            expect_equal(round_trip(picture, {"--alpha-rle", "--slices", slices, "--threads", threads}), picture);
        }
    }
}

TEST(png_decode, every_order_of_the_rgb_family_comes_back_as_rgb_or_rgba) {
    const test_picture picture = make_picture(colours::rgba, 8, 21, 8);
    for (const char* order : {"3", "4", "7", "8"}) {
        expect_equal(round_trip(picture, {"--order", order}), picture);
    }
    const test_picture opaque = make_picture(colours::rgb, 8, 21, 8);
    for (const char* order : {"5", "6"}) {
        expect_equal(round_trip(opaque, {"--order", order}), opaque);
    }
}

TEST(png_decode, a_lone_alpha_plane_comes_back_as_grey) {
    for (const int depth : {8, 16}) {
        const test_picture picture = make_picture(colours::grey, depth, 33, 9);
        expect_equal(round_trip(picture, {"--order", "Alpha"}), picture);
        expect_equal(round_trip(picture, {"--order", "Alpha", "--alpha-rle"}), picture);
    }
}

TEST(png_decode, alpha_can_be_left_out) {
    const scratch_folder folder;
    const test_picture picture = make_picture(colours::rgba, 8, 6, 6);
    write_picture(folder.file("in.png"), picture);
    ASSERT_EQ(folder.qvr({"encode", "in.png", "made.qvr", "--alpha-rle"}).code, 0);
    const outcome result = folder.qvr({"decode", "made.qvr", "back.PNG", "--order", "RGB"});
    EXPECT_EQ(result.code, 0) << result.err;
    bytes wanted;
    for (std::size_t i = 0; i < picture.samples.size(); ++i) {
        if (i % 4 != 3) {
            wanted.push_back(picture.samples[i]);
        }
    }
    EXPECT_EQ(read_picture(folder.file("back.PNG")).samples, wanted);
}

TEST(png_decode, formats_that_a_png_cannot_keep_are_refused_with_the_way_out) {
    const struct {
        const char* order;
        const char* type;
        std::size_t frame_bytes;
        const char* message;
    } cases[] = {{"UYVY", "U8", 16, "clip.qvr: frame 0 at offset 0: order 2 UYVY cannot be kept in a PNG"},
                 {"I420", "U16", 24, "clip.qvr: frame 0 at offset 0: order 10 I420 cannot be kept in a PNG"},
                 {"YUV444", "U8", 24, "order 9 YUV444 cannot be kept in a PNG: colours are never converted"},
                 {"RGB", "U10", 48, "back.png: type 3 U10 cannot be kept in a PNG, which has 8 or 16 bits"},
                 {"RGB", "Float", 96, "back.png: type 7 Float cannot be kept in a PNG"}};
    for (const auto& wanted : cases) {
        const scratch_folder folder;
        const outcome made =
            folder.qvr({"encode", "-", "clip.qvr", "--size", "4x2", "--order", wanted.order, "--type", wanted.type},
                       bytes(wanted.frame_bytes));
        ASSERT_EQ(made.code, 0) << made.err;
        const outcome result = folder.qvr({"decode", "clip.qvr", "back.png"});
        EXPECT_EQ(result.code, 2);
        EXPECT_TRUE(holds(result.err, wanted.message)) << result.err;
        EXPECT_TRUE(holds(result.err, "hint: decode to raw frames: name the output without .png")) << result.err;
        EXPECT_EQ(folder.names(), std::vector<std::string>{"clip.qvr"});
    }
}

TEST(png_decode, orders_that_no_png_has_are_refused) {
    const scratch_folder folder;
    make_rgb_clip(folder, "clip.qvr", 1);
    const outcome order = folder.qvr({"decode", "clip.qvr", "back.png", "--order", "BGR"});
    EXPECT_EQ(order.code, 2);
    EXPECT_TRUE(holds(order.err, "back.png: --order 6 BGR: a PNG holds RGB, RGBA or a lone alpha plane")) << order.err;
    const outcome stride = folder.qvr({"decode", "clip.qvr", "back.png", "--row-bytes", "64"});
    EXPECT_EQ(stride.code, 2);
    EXPECT_TRUE(holds(stride.err, "back.png: --row-bytes and --row-bytes2 are for raw output")) << stride.err;
    EXPECT_EQ(folder.names(), std::vector<std::string>{"clip.qvr"});
}

TEST(png_decode, a_png_holds_one_frame_and_the_file_may_hold_more) {
    const scratch_folder folder;
    const bytes samples = make_rgb_clip(folder, "clip.qvr", 3);
    const outcome all = folder.qvr({"decode", "clip.qvr", "back.png"});
    EXPECT_EQ(all.code, 2);
    EXPECT_TRUE(holds(all.err,
                      "clip.qvr: the file holds more than one frame, but a PNG holds only one\n"
                      "hint: write a numbered sequence: name OUT like frame.%04d.png, or choose one with --range N"))
        << all.err;
    EXPECT_FALSE(folder.has("back.png"));
    EXPECT_EQ(folder.qvr({"decode", "clip.qvr", "back.png", "--frame", "2"}).code, 0);
    EXPECT_EQ(read_picture(folder.file("back.png")).samples, bytes(samples.begin() + 48, samples.end()));
}

TEST(png_decode, the_picture_of_the_repository_comes_back_as_it_was) {
    const scratch_folder folder;
    const std::string path = std::string(QVR_TEST_DATA) + "/flower_small.png";
    const test_picture picture = read_picture(path);
    ASSERT_EQ(picture.kind, colours::rgba);
    for (const std::vector<std::string>& options : {std::vector<std::string>{}, {"--alpha-rle"}}) {
        std::vector<std::string> arguments = {"encode", path, "flower.qvr"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        ASSERT_EQ(folder.qvr(arguments).code, 0);
        ASSERT_EQ(folder.qvr({"decode", "flower.qvr", "flower.png"}).code, 0);
        expect_equal(read_picture(folder.file("flower.png")), picture);
    }
}

}  // namespace
