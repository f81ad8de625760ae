// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include "pictures.h"
#include "process.h"

namespace {

// What an order must hold for a picture, worked out one sample at a time.
bytes arranged(const test_picture& from, const std::string& order) {
    const std::size_t size = from.depth == 16 ? 2 : 1;
    const std::size_t channels = from.channels();
    const bool alpha = channels == 2 || channels == 4;
    bytes to;
    for (std::size_t pixel = 0; pixel < std::size_t{from.width} * from.height; ++pixel) {
        for (const char letter : order) {
            std::size_t channel = letter == 'G' ? 1 : letter == 'B' ? 2 : 0;
            if (channels <= 2) {
                channel = 0;
            }
            if (letter == 'A') {
                channel = channels - 1;
            }
            for (std::size_t i = 0; i < size; ++i) {
                const bool opaque = letter == 'A' && !alpha;
                to.push_back(opaque ? 0xFF : from.samples[(pixel * channels + channel) * size + i]);
            }
        }
    }
    return to;
}

bytes through_file(const scratch_folder& folder, const std::vector<std::string>& options, const std::string& order) {
    std::vector<std::string> arguments = {"encode", "in.png", "made.qvr"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const outcome made = folder.qvr(arguments);
    EXPECT_EQ(made.code, 0) << made.err;
    const outcome back = folder.qvr({"decode", "made.qvr", "back.raw", "--order", order});
    EXPECT_EQ(back.code, 0) << back.err;
    return folder.read("back.raw");
}

TEST(png_encode, alpha_makes_rgba_and_none_makes_rgb_at_both_depths) {
    const struct {
        colours kind;
        const char* order;
    } cases[] = {{colours::grey, "RGB"}, {colours::rgb, "RGB"}, {colours::grey_alpha, "RGBA"}, {colours::rgba, "RGBA"}};
    for (const int depth : {8, 16}) {
        for (const auto& wanted : cases) {
            const scratch_folder folder;
            const test_picture picture = make_picture(wanted.kind, depth, 13, 5);
            write_picture(folder.file("in.png"), picture);
            EXPECT_EQ(through_file(folder, {}, wanted.order), arranged(picture, wanted.order));
            const std::string info = folder.qvr({"info", "made.qvr"}).out;
            EXPECT_TRUE(holds(info, depth == 8 ? "type 1 U8" : "type 2 U16")) << info;
        }
    }
}

TEST(png_encode, every_order_of_the_rgb_family_can_be_asked_for) {
    for (const int depth : {8, 16}) {
        for (const char* order : {"ARGB", "BGRA", "RGBA", "ABGR", "RGB", "BGR"}) {
            const scratch_folder folder;
            const test_picture picture = make_picture(colours::rgba, depth, 9, 4);
            write_picture(folder.file("in.png"), picture);
            // What is stored does not depend on the order, so each must read back right in each.
            EXPECT_EQ(through_file(folder, {"--order", order}, order), arranged(picture, order)) << order;
            EXPECT_EQ(through_file(folder, {"--order", order}, "BGR"), arranged(picture, "BGR")) << order;
        }
    }
}

TEST(png_encode, pictures_without_alpha_become_opaque_in_orders_with_alpha) {
    for (const colours kind : {colours::grey, colours::rgb}) {
        const scratch_folder folder;
        const test_picture picture = make_picture(kind, 16, 6, 3);
        write_picture(folder.file("in.png"), picture);
        EXPECT_EQ(through_file(folder, {"--order", "bgra"}, "BGRA"), arranged(picture, "BGRA"));
    }
}

TEST(png_encode, leaving_alpha_out_is_said) {
    const scratch_folder folder;
    write_picture(folder.file("in.png"), make_picture(colours::rgba, 8, 4, 4));
    const outcome result = folder.qvr({"encode", "in.png", "made.qvr", "--order", "RGB", "-q"});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.err, "qvr: warning: in.png: its alpha is left out, because order RGB has none\n");
}

TEST(png_encode, the_alpha_plane_alone_is_alpha_or_the_grey_of_a_grey_picture) {
    for (const int depth : {8, 16}) {
        for (const colours kind : {colours::rgba, colours::grey_alpha}) {
            const scratch_folder folder;
            const test_picture picture = make_picture(kind, depth, 7, 3);
            write_picture(folder.file("in.png"), picture);
            EXPECT_EQ(through_file(folder, {"--order", "Alpha"}, "Alpha"), arranged(picture, "A"));
        }
        const scratch_folder folder;
        const test_picture grey = make_picture(colours::grey, depth, 7, 3);
        write_picture(folder.file("in.png"), grey);
        EXPECT_EQ(through_file(folder, {"--order", "14", "--alpha-rle"}, "14"), grey.samples);
    }
}

TEST(png_encode, coloured_pictures_without_alpha_make_no_alpha_plane) {
    const scratch_folder folder;
    write_picture(folder.file("in.png"), make_picture(colours::rgb, 8, 4, 4));
    const outcome result = folder.qvr({"encode", "in.png", "made.qvr", "--order", "Alpha"});
    EXPECT_EQ(result.code, 2);
    EXPECT_TRUE(
        holds(result.err, "qvr: in.png: no alpha plane can be made of this PNG: it has colours and no alpha\nhint: "))
        << result.err;
    EXPECT_FALSE(folder.has("made.qvr"));
}

TEST(png_encode, orders_that_would_need_a_colour_conversion_are_refused) {
    const scratch_folder folder;
    write_picture(folder.file("in.png"), make_picture(colours::rgb, 8, 4, 4));
    for (const char* order : {"1", "2", "9", "10", "11", "12", "13", "15", "16"}) {
        const outcome result = folder.qvr({"encode", "in.png", "made.qvr", "--order", order});
        EXPECT_EQ(result.code, 2) << order;
        EXPECT_TRUE(holds(result.err, "cannot be made of a PNG: colours are never converted")) << result.err;
        EXPECT_TRUE(holds(result.err, "hint: ask for ARGB, BGRA, RGB, BGR, RGBA, ABGR or Alpha")) << result.err;
    }
    EXPECT_FALSE(folder.has("made.qvr"));
}

TEST(png_encode, a_type_other_than_the_depth_is_refused) {
    const scratch_folder folder;
    write_picture(folder.file("in.png"), make_picture(colours::rgb, 16, 4, 4));
    const outcome wrong_depth = folder.qvr({"encode", "in.png", "made.qvr", "--type", "U8"});
    EXPECT_EQ(wrong_depth.code, 2);
    EXPECT_TRUE(holds(wrong_depth.err, "in.png: --type 1 U8, but this PNG has samples of type 2 U16"))
        << wrong_depth.err;
    const outcome no_png_type = folder.qvr({"encode", "in.png", "made.qvr", "--type", "Half"});
    EXPECT_EQ(no_png_type.code, 2);
    EXPECT_TRUE(holds(no_png_type.err, "--type 6 Half cannot be made of a PNG")) << no_png_type.err;
    EXPECT_FALSE(folder.has("made.qvr"));
    EXPECT_EQ(folder.qvr({"encode", "in.png", "made.qvr", "--type", "U16"}).code, 0);
}

TEST(png_encode, options_for_raw_frames_are_refused) {
    const scratch_folder folder;
    write_picture(folder.file("in.png"), make_picture(colours::rgb, 8, 4, 4));
    const outcome stride = folder.qvr({"encode", "in.png", "made.qvr", "--row-bytes", "64"});
    EXPECT_EQ(stride.code, 2);
    EXPECT_TRUE(holds(stride.err, "in.png: --row-bytes and --row-bytes2 are for raw frames")) << stride.err;
    const outcome size = folder.qvr({"encode", "in.png", "made.qvr", "--size", "4x4"});
    EXPECT_EQ(size.code, 2);
    EXPECT_TRUE(holds(size.err, "--size is for raw frames, but this is a PNG by its name")) << size.err;
}

TEST(png_encode, palettes_become_rgb_and_transparent_entries_alpha) {
    const scratch_folder folder;
    const test_picture picture = make_picture(colours::palette, 8, 16, 4);
    bytes rgb;
    bytes rgba;
    for (const std::uint8_t index : picture.samples) {
        const bytes colour = palette_colour(index);
        rgb.insert(rgb.end(), colour.begin(), colour.end());
        rgba.insert(rgba.end(), colour.begin(), colour.end());
        rgba.push_back(index < 100 ? index : 255);
    }
    write_picture(folder.file("in.png"), picture);
    EXPECT_EQ(through_file(folder, {}, "RGB"), rgb);
    write_picture(folder.file("in.png"), picture, false, 100);
    EXPECT_EQ(through_file(folder, {}, "RGBA"), rgba);
}

TEST(png_encode, greys_of_few_bits_become_8_bits) {
    const scratch_folder folder;
    test_picture picture;
    picture.width = 4;
    picture.height = 1;
    picture.depth = 2;
    picture.kind = colours::grey;
    picture.samples = {0, 1, 2, 3};
    write_picture(folder.file("in.png"), picture);
    EXPECT_EQ(through_file(folder, {}, "RGB"), (bytes{0, 0, 0, 85, 85, 85, 170, 170, 170, 255, 255, 255}));
}

TEST(png_encode, interlaced_pictures_are_read_like_others) {
    const scratch_folder folder;
    const test_picture picture = make_picture(colours::rgba, 16, 11, 9);
    write_picture(folder.file("in.png"), picture, true);
    EXPECT_EQ(through_file(folder, {}, "RGBA"), picture.samples);
}

TEST(png_encode, a_picture_may_come_from_standard_input) {
    const scratch_folder folder;
    const test_picture picture = make_picture(colours::rgb, 8, 5, 5);
    write_picture(folder.file("in.png"), picture);
    const outcome made = folder.qvr({"encode", "-", "-", "-q"}, folder.read("in.png"));
    EXPECT_EQ(made.code, 0) << made.err;
    const outcome back = folder.qvr({"decode", "-", "-", "-q"}, bytes(made.out.begin(), made.out.end()));
    EXPECT_EQ(bytes(back.out.begin(), back.out.end()), picture.samples);
}

TEST(png_encode, the_layout_can_be_marked_interlaced) {
    const scratch_folder folder;
    write_picture(folder.file("in.png"), make_picture(colours::rgba, 8, 4, 4));
    EXPECT_EQ(folder.qvr({"encode", "in.png", "made.qvr", "--interlaced"}).code, 0);
    const std::string info = folder.qvr({"info", "made.qvr"}).out;
    EXPECT_TRUE(holds(info, "format  4x4 interlaced, order 3 ARGB")) << info;
    EXPECT_TRUE(holds(info, "plane 1: ' a08' (alpha, 8 bits), 4x4, interlaced")) << info;
}

TEST(png_encode, damaged_pictures_are_bad_data) {
    const scratch_folder folder;
    write_picture(folder.file("whole.png"), make_picture(colours::rgb, 8, 40, 40));
    const bytes whole = folder.read("whole.png");
    for (const std::size_t length : {std::size_t{20}, std::size_t{60}, whole.size() / 2, whole.size() - 4}) {
        folder.write("in.png", bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)));
        const outcome result = folder.qvr({"encode", "in.png", "made.qvr"});
        EXPECT_EQ(result.code, 1) << length;
        EXPECT_TRUE(holds(result.err, "qvr: in.png: cannot read the PNG: ")) << result.err;
        EXPECT_TRUE(holds(result.err, "hint: the PNG is damaged or was cut short")) << result.err;
    }
    folder.write("in.png", bytes(40, 'x'));
    const outcome other = folder.qvr({"encode", "in.png", "made.qvr"});
    EXPECT_EQ(other.code, 1);
    EXPECT_TRUE(holds(other.err, "in.png: this is not a PNG: its first bytes are others")) << other.err;
    EXPECT_FALSE(folder.has("made.qvr"));
}

TEST(png_encode, a_picture_that_claims_to_be_enormous_is_refused_without_memory_for_it) {
    const scratch_folder folder;
    // Signature, a header of 1000000 x 1000000 pixels, 16-bit RGBA, with its checksum, and the start of the samples.
    bytes content = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n', 0, 0, 0, 13, 'I', 'H', 'D', 'R', 0, 0x0F, 0x42, 0x40};
    const bytes rest = {0, 0x0F, 0x42, 0x40, 16, 6, 0, 0, 0, 0x0C, 0xFD, 0xE4, 0x3E, 0, 0, 0, 1, 'I', 'D', 'A', 'T'};
    content.insert(content.end(), rest.begin(), rest.end());
    folder.write("in.png", content);
    const outcome result = folder.qvr({"encode", "in.png", "made.qvr"});
    EXPECT_EQ(result.code, 1);
    EXPECT_TRUE(holds(result.err, "in.png: the PNG is too large: its samples pass 4 GiB")) << result.err;
}

}  // namespace
