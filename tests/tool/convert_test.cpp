// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include "clips.h"
#include "pictures.h"
#include "process.h"
#include "streams.h"

namespace {

TEST(convert, raw_frames_change_their_order) {
    const scratch_folder folder;
    folder.write("a.uyvy", {1, 2, 3, 4, 5, 6, 7, 8});
    expect_silent(folder, {"convert", "a.uyvy", "b.yuy2", "--size", "4x1"});
    EXPECT_EQ(folder.read("b.yuy2"), (bytes{2, 1, 4, 3, 6, 5, 8, 7}));
    expect_silent(folder, {"convert", "a.uyvy", "c.raw", "--size", "4x1", "--out-format", "YUY2"});
    EXPECT_EQ(folder.read("c.raw"), folder.read("b.yuy2"));
    folder.write("a.raw", little_endian({1, 2, 3, 4}));
    expect_silent(folder, {"convert", "a.raw", "d.raw", "--size", "1x1", "--format", "RGBA64", "--out-order", "BGRA"});
    EXPECT_EQ(folder.read("d.raw"), little_endian({3, 2, 1, 4}));
}

TEST(convert, strides_are_put_in_and_taken_out) {
    const scratch_folder folder;
    folder.write("a.raw", {1, 2, 3, 90, 4, 5, 6, 91});
    expect_silent(folder, {"convert", "a.raw", "b.raw", "--size", "1x2", "--format", "RGB", "--row-bytes", "4"});
    EXPECT_EQ(folder.read("b.raw"), (bytes{1, 2, 3, 4, 5, 6}));
    expect_silent(folder, {"convert", "b.raw", "c.raw", "--size", "1x2", "--format", "RGB", "--out-row-bytes", "5"});
    EXPECT_EQ(folder.read("c.raw"), (bytes{1, 2, 3, 0, 0, 4, 5, 6, 0, 0}));
    expect_failure(folder, {"convert", "b.raw", "c.png", "--size", "1x2", "--format", "RGB", "--out-row-bytes", "5"}, 2,
                   "c.png: --row-bytes and --row-bytes2 are for raw output", "leave them out: a PNG has no gap");
}

TEST(convert, alpha_of_a_type_that_stores_none_stays_where_nothing_must_move) {
    const scratch_folder folder;
    folder.write("a.raw", noise(16));
    const std::vector<std::string> same = {"convert", "a.raw", "b.raw",  "--size", "1x2",
                                           "--order", "RGBA",  "--type", "Half",   "--strict"};
    expect_silent(folder, same);
    EXPECT_EQ(folder.read("b.raw"), noise(16));
    std::vector<std::string> moved = same;
    moved.insert(moved.end(), {"--out-order", "BGRA"});
    expect_failure(folder, moved, 2, "Only 8 and 16 bit alpha is supported", "ask for an order without alpha");
}

TEST(convert, pictures_change_their_kind) {
    const scratch_folder folder;
    const test_picture picture = make_picture(colours::rgba, 16, 5, 3);
    write_picture(folder.file("a.png"), picture);
    expect_silent(folder, {"convert", "a.png", "b.pam"});
    expect_silent(folder, {"convert", "b.pam", "c.png"});
    EXPECT_EQ(read_picture(folder.file("c.png")).samples, picture.samples);
    expect_silent(folder, {"convert", "a.png", "d.raw", "--out-order", "ABGR"});
    expect_silent(folder, {"convert", "d.raw", "e.png", "--size", "5x3", "--format", "ABGR64"});
    EXPECT_EQ(read_picture(folder.file("e.png")).samples, picture.samples);
    const test_picture grey = make_picture(colours::grey, 8, 4, 2);
    write_picture(folder.file("g.png"), grey);
    expect_silent(folder, {"convert", "g.png", "g.pgm", "--format", "GRAY8"});
    EXPECT_EQ(folder.read("g.pgm"), joined({text("P5\n4 2\n255\n"), grey.samples}));
    expect_silent(folder, {"convert", "g.pgm", "g.y4m"});
    EXPECT_EQ(folder.read("g.y4m"), joined({text("YUV4MPEG2 W4 H2 F25:1 Ip A0:0 Cmono\nFRAME\n"), grey.samples}));
}

TEST(convert, qvr_files_are_coded_anew) {
    const scratch_folder folder;
    folder.write("a.raw", bytes(64 * 64 * 4, 7));
    expect_silent(folder, {"encode", "a.raw", "plain.qvr", "--size", "64x64", "--format", "RGBA", "--interlaced"});
    expect_silent(folder, {"encode", "a.raw", "coded.qvr", "--size", "64x64", "--format", "RGBA", "--interlaced",
                           "--alpha-rle", "--slices", "3"});
    expect_silent(folder, {"convert", "plain.qvr", "b.qvr", "--alpha-rle", "--slices", "3"});
    EXPECT_EQ(folder.read("b.qvr"), folder.read("coded.qvr"));
    EXPECT_LT(folder.read("b.qvr").size(), folder.read("plain.qvr").size());
    expect_silent(folder, {"convert", "b.qvr", "c.qvr"});
    EXPECT_EQ(folder.read("c.qvr"), folder.read("plain.qvr"));
}

TEST(convert, wrapped_payloads_are_refused_and_not_dropped) {
    const scratch_folder folder;
    folder.write("a.bin", noise(50));
    ASSERT_EQ(folder.qvr({"wrap", "--tiles", "a.bin", "--size", "4x2", "w.qvr"}).code, 0);
    expect_failure(folder, {"convert", "w.qvr", "b.qvr"}, 2,
                   "w.qvr: frame 0 at offset 0: the frame holds wrapped payloads of another codec", "'qvr unwrap'");
}

TEST(convert, no_conversion_of_colours_or_depths_is_made) {
    const scratch_folder folder;
    write_picture(folder.file("a.png"), make_picture(colours::rgb, 8, 4, 2));
    folder.write("a.y4m", joined({text("YUV4MPEG2 W2 H2\nFRAME\n"), noise(6)}));
    expect_failure(folder, {"convert", "a.png", "b.y4m"}, 2,
                   "a.png: order 5 RGB cannot be kept in a Y4M file: colours are never converted", "a Y4M file holds");
    expect_failure(folder, {"convert", "a.y4m", "b.png"}, 2,
                   "a.y4m: frame 0 at offset 16: order 10 I420 cannot be kept in a PNG: colours are never converted",
                   "decode to raw frames");
    expect_failure(folder, {"convert", "a.png", "b.exr"}, 2, "b.exr: type 1 U8 cannot be kept in an OpenEXR picture",
                   "decode to raw frames");
    expect_failure(folder, {"convert", "a.png", "b.raw", "--out-format", "RGB48"}, 2, "bit depth in src metadata", "");
    expect_failure(folder, {"convert", "a.y4m", "b.raw", "--out-format", "UYVY"}, 2, "metadata type is incompatible",
                   "");
    write_picture(folder.file("deep.png"), make_picture(colours::rgb, 16, 4, 2));
    expect_failure(folder, {"convert", "deep.png", "b.rgb24"}, 2,
                   "b.rgb24: its name says RGB24, which is type 1 U8, but the frames have type 2 U16",
                   "give it another name");
}

TEST(convert, interlacing_that_a_picture_cannot_say_is_said) {
    const scratch_folder folder;
    folder.write("a.raw", noise(24));
    const std::vector<std::string> png = {"convert",  "a.raw", "a.png",        "--size", "4x2",
                                          "--format", "RGB",   "--interlaced", "-q"};
    EXPECT_EQ(folder.qvr(png).err,
              "qvr: warning: a.png: a PNG does not say that a frame is interlaced, so that is lost\n");
    std::vector<std::string> strict = png;
    strict[2] = "b.png";
    strict.push_back("--strict");
    expect_failure(folder, strict, 2, "b.png: a PNG does not say that a frame is interlaced", "leave --strict out");
}

TEST(convert, several_frames_do_not_go_into_one_picture) {
    const scratch_folder folder;
    make_rgb_clip(folder, "clip.qvr", 2);
    expect_failure(folder, {"convert", "clip.qvr", "a.png"}, 2,
                   "clip.qvr: the file holds more than one frame, but a PNG holds only one",
                   "write a numbered sequence: name OUT like frame.%04d.png");
}

TEST(convert, a_file_is_not_converted_onto_itself) {
    const scratch_folder folder;
    make_rgb_clip(folder, "clip.qvr", 2);
    expect_failure(folder, {"convert", "clip.qvr", "./clip.qvr"}, 2, "IN and OUT are the same file: clip.qvr",
                   "write to a file of another name");
}

TEST(convert, kinds_of_files_can_be_named) {
    const scratch_folder folder;
    const bytes clip = make_rgb_clip(folder, "clip.qvr", 2);
    expect_silent(folder, {"convert", "clip.qvr", "a.bin", "--to", "PPM"});
    EXPECT_EQ(folder.read("a.bin"), joined({text("P6\n4 2\n255\n"), bytes(clip.begin(), clip.begin() + 24),
                                            text("P6\n4 2\n255\n"), bytes(clip.begin() + 24, clip.end())}));
    expect_silent(folder, {"convert", "a.bin", "b.bin"});
    EXPECT_EQ(folder.read("b.bin"), clip);
    expect_failure(folder, {"convert", "a.bin", "c.bin", "--to", "gif"}, 2, "--to gif: there is no such kind of file",
                   "it is one of raw, qvr, y4m, png, pam, ppm, pgm, pnm, exr");
    expect_failure(folder, {"convert", "a.bin", "c.bin", "--from", "png"}, 1, "a.bin: cannot read the PNG", "");
    expect_failure(folder, {"convert", "a.bin", "c.bin", "--from", "qvr"}, 1, "a 'pack' box should begin here", "");
    expect_failure(folder, {"convert", "a.bin", "c.bin", "--from", "exr"}, 1, "cannot read the OpenEXR picture", "");
    expect_failure(folder, {"convert", "a.bin", "c.bin", "--from", "raw"}, 2, "raw frames need", "for example");
    expect_failure(folder, {"convert", "a.bin", "c.bin", "--from", "raw", "--format", "RGB"}, 2,
                   "raw frames need --size", "for example --size 1920x1080");
}

TEST(convert, decoding_makes_no_qvr_file) {
    const scratch_folder folder;
    make_rgb_clip(folder, "clip.qvr", 1);
    expect_failure(folder, {"decode", "clip.qvr", "b.qvr"}, 2, "b.qvr: decoding does not make a .qvr file",
                   "'qvr convert' makes one of another");
}

TEST(convert, an_empty_file_holds_no_frame) {
    const scratch_folder folder;
    folder.write("a.qvr", {});
    expect_failure(folder, {"convert", "a.qvr", "b.raw", "--from", "qvr"}, 1, "a.qvr: there is no frame in it",
                   "what was to write it has failed");
}

}  // namespace
