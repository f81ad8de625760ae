// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include "clips.h"
#include "process.h"

namespace {

struct raw_format {
    const char* order;
    const char* type;
    std::size_t frame_bytes;  // of a 12x4 frame
};

// Orders and types in which every byte of a frame comes back as it was, decoded to the same order and type.
constexpr raw_format k_formats[] = {
    {"YUY2", "U8", 96},     {"YUY2", "Half", 192},   {"UYVY", "U8", 96},      {"UYVY", "U16", 192},
    {"UYVY", "Float", 384}, {"ARGB", "U8", 192},     {"ARGB", "U16", 384},    {"BGRA", "U16", 384},
    {"RGB", "U8", 144},     {"RGB", "Fixed16", 288}, {"BGR", "U16", 288},     {"RGBA", "U8", 192},
    {"ABGR", "U8", 192},    {"YUV444", "U8", 144},   {"YUV444", "Half", 288}, {"I420", "U8", 72},
    {"I420", "U16", 144},   {"I420", "Float", 288},  {"UYAVYA", "U8", 144},   {"UYAVYA", "U16", 288},
    {"YUVA444", "U8", 192}, {"A420", "U8", 120},     {"A420", "U16", 240},    {"Alpha", "U8", 48},
    {"Alpha", "U16", 96},   {"YUY2+A", "U8", 144},   {"UYVY+A", "U16", 288}};

TEST(raw, frames_come_back_as_they_were_in_their_own_layout) {
    for (const raw_format& format : k_formats) {
        const scratch_folder folder;
        const bytes clip = noise(format.frame_bytes * 3);
        folder.write("clip.raw", clip);
        const outcome made = folder.qvr(
            {"encode", "clip.raw", "clip.qvr", "--size", "12x4", "--order", format.order, "--type", format.type});
        ASSERT_EQ(made.code, 0) << format.order << format.type << made.err;
        EXPECT_TRUE(holds(made.err, "clip.qvr: 3 frames, 12x4 progressive, order ")) << made.err;
        const outcome back = folder.qvr({"decode", "clip.qvr", "back.raw", "--order", format.order});
        ASSERT_EQ(back.code, 0) << format.order << format.type << back.err;
        EXPECT_EQ(folder.read("back.raw"), clip) << format.order << format.type;
    }
}

TEST(raw, coded_alpha_comes_back_as_it_was) {
    for (const raw_format& format : k_formats) {
        const std::string type = format.type;
        if (type != "U8" && type != "U16") {
            continue;
        }
        const scratch_folder folder;
        const bytes clip = noise(format.frame_bytes * 2);
        folder.write("clip.raw", clip);
        const outcome made = folder.qvr({"encode", "clip.raw", "clip.qvr", "--size", "12x4", "--order", format.order,
                                         "--type", format.type, "--alpha-rle", "--slices", "3"});
        ASSERT_EQ(made.code, 0) << format.order << format.type << made.err;
        ASSERT_EQ(folder.qvr({"decode", "clip.qvr", "back.raw", "--order", format.order}).code, 0);
        EXPECT_EQ(folder.read("back.raw"), clip) << format.order << format.type;
    }
}

TEST(raw, v210_comes_back_but_for_the_two_bits_that_it_leaves_free) {
    const scratch_folder folder;
    bytes clip = noise(32 * 4 * 2);
    for (std::size_t i = 3; i < clip.size(); i += 4) {
        clip[i] &= 0x3F;
    }
    folder.write("clip.v210", clip);
    const outcome made = folder.qvr({"encode", "clip.v210", "clip.qvr", "--size", "12x4", "--order", "v210"});
    ASSERT_EQ(made.code, 0) << made.err;
    ASSERT_EQ(folder.qvr({"decode", "clip.qvr", "back.v210", "--order", "v210"}).code, 0);
    EXPECT_EQ(folder.read("back.v210"), clip);
    // The frame itself has 10-bit samples; in 16-bit words they stand in the top bits.
    const outcome words = folder.qvr({"decode", "clip.qvr", "back.raw"});
    ASSERT_EQ(words.code, 0);
    EXPECT_TRUE(holds(words.err, "order 2 UYVY, type 3 U10")) << words.err;
    const bytes back = folder.read("back.raw");
    EXPECT_EQ(back.size(), 12u * 2 * 2 * 4 * 2);
    EXPECT_EQ(static_cast<unsigned>(back[0] | back[1] << 8), (get_le32(clip, 0) & 0x3FF) << 6);
}

TEST(raw, other_orders_of_the_same_samples_can_be_asked_for) {
    const scratch_folder folder;
    folder.write("clip.raw", {1, 2, 3, 4, 5, 6, 7, 8});
    ASSERT_EQ(folder.qvr({"encode", "clip.raw", "uyvy.qvr", "--size", "4x1", "--order", "UYVY", "--type", "U8"}).code,
              0);
    ASSERT_EQ(folder.qvr({"decode", "uyvy.qvr", "yuy2.raw", "--order", "YUY2"}).code, 0);
    EXPECT_EQ(folder.read("yuy2.raw"), (bytes{2, 1, 4, 3, 6, 5, 8, 7}));
    ASSERT_EQ(folder.qvr({"encode", "clip.raw", "rgba.qvr", "--size", "2x1", "--order", "RGBA", "--type", "U8"}).code,
              0);
    ASSERT_EQ(folder.qvr({"decode", "rgba.qvr", "bgra.raw", "--order", "bgra"}).code, 0);
    EXPECT_EQ(folder.read("bgra.raw"), (bytes{3, 2, 1, 4, 7, 6, 5, 8}));
    ASSERT_EQ(folder.qvr({"decode", "rgba.qvr", "rgb.raw", "--order", "rgb"}).code, 0);
    EXPECT_EQ(folder.read("rgb.raw"), (bytes{1, 2, 3, 5, 6, 7}));
}

TEST(raw, fixed_point_can_be_decoded_to_float) {
    const scratch_folder folder;
    folder.write("clip.raw", {0x00, 0x40, 0x00, 0x20, 0x00, 0x80});  // 1, 0.5, -2
    ASSERT_EQ(folder.qvr({"encode", "clip.raw", "a.qvr", "--size", "1x1", "--order", "RGB", "--type", "Fixed16"}).code,
              0);
    const outcome back = folder.qvr({"decode", "a.qvr", "a.raw", "--type", "Float"});
    ASSERT_EQ(back.code, 0) << back.err;
    EXPECT_EQ(folder.read("a.raw"), (bytes{0, 0, 0x80, 0x3F, 0, 0, 0, 0x3F, 0, 0, 0, 0xC0}));
}

TEST(raw, padded_rows_are_read_and_written) {
    const scratch_folder folder;
    folder.write("clip.raw", {1, 2, 3, 90, 91, 4, 5, 6, 92, 93});
    const outcome made =
        folder.qvr({"encode", "clip.raw", "a.qvr", "--size", "1x2", "--order", "RGB24", "--row-bytes", "5"});
    ASSERT_EQ(made.code, 0) << made.err;
    ASSERT_EQ(folder.qvr({"decode", "a.qvr", "tight.raw"}).code, 0);
    EXPECT_EQ(folder.read("tight.raw"), (bytes{1, 2, 3, 4, 5, 6}));
    ASSERT_EQ(folder.qvr({"decode", "a.qvr", "wide.raw", "--row-bytes", "4"}).code, 0);
    EXPECT_EQ(folder.read("wide.raw"), (bytes{1, 2, 3, 0, 4, 5, 6, 0}));
}

TEST(raw, second_planes_have_a_stride_of_their_own) {
    const scratch_folder folder;
    folder.write("clip.raw", {1, 2, 3, 4, 5, 90, 6, 91});
    const outcome made = folder.qvr({"encode", "clip.raw", "a.qvr", "--size", "2x2", "--order", "I420", "--type", "U8",
                                     "--row-bytes", "2", "--row-bytes2", "2"});
    ASSERT_EQ(made.code, 0) << made.err;
    ASSERT_EQ(folder.qvr({"decode", "a.qvr", "tight.raw"}).code, 0);
    EXPECT_EQ(folder.read("tight.raw"), (bytes{1, 2, 3, 4, 5, 6}));
}

TEST(raw, strides_too_small_are_refused_in_the_words_of_the_library) {
    const scratch_folder folder;
    folder.write("clip.raw", bytes(40));
    const outcome made =
        folder.qvr({"encode", "clip.raw", "a.qvr", "--size", "4x4", "--order", "RGB24", "--row-bytes", "10"});
    EXPECT_EQ(made.code, 2);
    EXPECT_TRUE(holds(made.err,
                      "qvr: clip.raw: frame 0 at offset 0: cannot encode: rowBytes is too small, it should be at least "
                      "12 according to uncompressed params\nhint: raise --row-bytes"))
        << made.err;
    EXPECT_FALSE(folder.has("a.qvr"));
}

TEST(raw, odd_sizes_of_subsampled_frames_are_refused_with_the_way_out) {
    const scratch_folder folder;
    folder.write("clip.raw", bytes(48));
    const outcome width =
        folder.qvr({"encode", "clip.raw", "a.qvr", "--size", "3x2", "--order", "YUY2", "--type", "U8"});
    EXPECT_EQ(width.code, 2);
    EXPECT_TRUE(holds(width.err, "cannot encode: Width must be multiple of 2 for 422 and 420 subsampling\nhint: crop"))
        << width.err;
    const outcome height =
        folder.qvr({"encode", "clip.raw", "a.qvr", "--size", "4x3", "--order", "I420", "--type", "U8"});
    EXPECT_EQ(height.code, 2);
    EXPECT_TRUE(holds(height.err, "cannot encode: Height must be multiple of 2 for 420 subsampling\nhint: crop"))
        << height.err;
}

TEST(raw, types_without_alpha_say_that_it_is_left_out) {
    const scratch_folder folder;
    folder.write("clip.raw", noise(64));
    const outcome made =
        folder.qvr({"encode", "clip.raw", "a.qvr", "--size", "4x2", "--order", "RGBA", "--type", "U10", "-q"});
    EXPECT_EQ(made.code, 0);
    EXPECT_EQ(made.err, "qvr: warning: clip.raw: alpha is left out: type 3 U10 stores none, only U8 and U16 do\n");
    const outcome coded =
        folder.qvr({"encode", "clip.raw", "b.qvr", "--size", "4x2", "--order", "RGBA", "--type", "U10", "--alpha-rle"});
    EXPECT_EQ(coded.code, 2);
    EXPECT_TRUE(holds(coded.err, "Only 8 and 16 bit alpha supported for RLE compression\nhint: leave --alpha-rle out"))
        << coded.err;
    const outcome back = folder.qvr({"decode", "a.qvr", "a.raw", "--order", "RGBA"});
    EXPECT_EQ(back.code, 2);
    EXPECT_TRUE(holds(back.err, "Only 8 and 16 bit alpha is supported\nhint: ask for an order without alpha"))
        << back.err;
    EXPECT_EQ(folder.qvr({"decode", "a.qvr", "a.raw"}).code, 0);
}

TEST(raw, coded_alpha_for_an_order_without_alpha_is_said_to_change_nothing) {
    const scratch_folder folder;
    folder.write("clip.raw", noise(24));
    const outcome made =
        folder.qvr({"encode", "clip.raw", "a.qvr", "--size", "4x2", "--order", "RGB24", "--alpha-rle", "-q"});
    EXPECT_EQ(made.code, 0);
    EXPECT_EQ(made.err, "qvr: warning: clip.raw: --alpha-rle changes nothing: order RGB has no alpha\n");
}

TEST(raw, a_partial_last_frame_is_bad_data_and_leaves_no_file) {
    const scratch_folder folder;
    folder.write("clip.raw", noise(24 * 2 + 10));
    const outcome made = folder.qvr({"encode", "clip.raw", "a.qvr", "--size", "4x2", "--order", "RGB24"});
    EXPECT_EQ(made.code, 1);
    EXPECT_EQ(
        made.err,
        "qvr: clip.raw: frame 2 at offset 48: the last frame is not complete: 10 bytes are left, a frame has 24\n"
        "hint: do --size, --order, --type and --row-bytes describe these frames? They say 4x2 progressive, order 5 "
        "RGB, type 1 U8\n");
    EXPECT_EQ(folder.names(), std::vector<std::string>{"clip.raw"});
}

TEST(raw, an_empty_file_holds_no_frame) {
    const scratch_folder folder;
    folder.write("clip.raw", {});
    const outcome made = folder.qvr({"encode", "clip.raw", "a.qvr", "--size", "4x2", "--order", "RGB24"});
    EXPECT_EQ(made.code, 1);
    const std::string message =
        "qvr: clip.raw: there is no frame in it: the file is empty\n"
        "hint: what was to write it has failed, or is not done yet\n";
    EXPECT_EQ(made.err, message);
    const outcome back = folder.qvr({"decode", "clip.raw", "a.raw"});
    EXPECT_EQ(back.code, 1);
    EXPECT_EQ(back.err, message);
    EXPECT_EQ(folder.names(), std::vector<std::string>{"clip.raw"});
}

TEST(raw, one_frame_of_many_can_be_decoded) {
    const scratch_folder folder;
    const bytes clip = make_rgb_clip(folder, "clip.qvr", 4);
    for (unsigned frame = 0; frame < 4; ++frame) {
        ASSERT_EQ(folder.qvr({"decode", "clip.qvr", "a.raw", "--frame", std::to_string(frame)}).code, 0);
        EXPECT_EQ(folder.read("a.raw"), bytes(clip.begin() + 24 * frame, clip.begin() + 24 * (frame + 1)));
    }
    const outcome behind = folder.qvr({"decode", "clip.qvr", "b.raw", "--frame", "4"});
    EXPECT_EQ(behind.code, 2);
    EXPECT_EQ(behind.err, "qvr: clip.qvr: there is no frame 4: the file holds 4, counted from 0\n");
    EXPECT_FALSE(folder.has("b.raw"));
}

TEST(raw, files_can_be_joined_and_a_change_of_layout_is_said) {
    const scratch_folder folder;
    const bytes first = make_rgb_clip(folder, "a.qvr", 1);
    folder.write("b.raw", noise(16, 7));
    ASSERT_EQ(folder.qvr({"encode", "b.raw", "b.qvr", "--size", "4x2", "--order", "UYVY", "--type", "U8"}).code, 0);
    bytes joined = folder.read("a.qvr");
    const bytes second = folder.read("b.qvr");
    joined.insert(joined.end(), second.begin(), second.end());
    folder.write("ab.qvr", joined);
    const outcome back = folder.qvr({"decode", "ab.qvr", "ab.raw", "-q"});
    EXPECT_EQ(back.code, 0);
    EXPECT_EQ(back.err,
              "qvr: warning: ab.qvr: frame 1 at offset 61: the layout changes here to 4x2 progressive, order 2 UYVY, "
              "type 1 U8\n");
    EXPECT_EQ(folder.read("ab.raw").size(), 24u + 16u);
}

TEST(raw, standard_input_and_output_carry_frames) {
    const scratch_folder folder;
    const bytes clip = noise(24 * 5);
    const outcome made = folder.qvr({"encode", "-", "-", "--size", "4x2", "--order", "RGB24"}, clip);
    ASSERT_EQ(made.code, 0) << made.err;
    EXPECT_TRUE(holds(made.err, "standard output: 5 frames")) << made.err;
    const outcome back = folder.qvr({"decode", "-", "-", "-q"}, bytes(made.out.begin(), made.out.end()));
    EXPECT_EQ(back.err, "");
    EXPECT_EQ(bytes(back.out.begin(), back.out.end()), clip);
    EXPECT_TRUE(folder.names().empty());
}

TEST(raw, quiet_says_nothing_and_time_says_how_fast) {
    const scratch_folder folder;
    folder.write("clip.raw", noise(24 * 2));
    const std::vector<std::string> encode = {"encode", "clip.raw", "a.qvr", "--size", "4x2", "--order", "RGB24", "-q"};
    EXPECT_EQ(folder.qvr(encode).err, "");
    std::vector<std::string> timed = encode;
    timed.push_back("--time");
    const outcome result = folder.qvr(timed);
    EXPECT_TRUE(holds(result.err, "a.qvr: encode: 2 frames, 0.0 MB raw in ")) << result.err;
    EXPECT_TRUE(holds(result.err, " s of codec calls: ")) << result.err;
    EXPECT_TRUE(holds(result.err, " MB/s\n")) << result.err;
    const outcome back = folder.qvr({"decode", "a.qvr", "a.raw", "-q", "--time"});
    EXPECT_TRUE(holds(back.err, "a.raw: decode: 2 frames, ")) << back.err;
}

}  // namespace
