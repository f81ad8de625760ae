// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include "clips.h"
#include "pictures.h"
#include "process.h"
#include "streams.h"

namespace {

// Pictures frame.0007.ppm and so on, each of one pixel that is its number.
void write_pixels(const scratch_folder& folder, std::initializer_list<unsigned> numbers) {
    for (const unsigned number : numbers) {
        const std::string digits = std::to_string(10000 + number).substr(1);
        folder.write("frame." + digits + ".ppm",
                     joined({text("P6\n1 1\n255\n"), bytes(3, static_cast<std::uint8_t>(number))}));
    }
}

TEST(sequence, files_are_read_in_the_sequence_of_their_numbers) {
    const scratch_folder folder;
    write_pixels(folder, {9, 10, 11});
    folder.write("frame.9.ppm", text("another"));
    folder.write("frame.00010.ppm", text("another"));
    folder.write("frame.0012.ppm~", text("another"));
    expect_silent(folder, {"encode", "frame.%04d.ppm", "a.qvr"});
    expect_silent(folder, {"decode", "a.qvr", "a.raw"});
    EXPECT_EQ(folder.read("a.raw"), (bytes{9, 9, 9, 10, 10, 10, 11, 11, 11}));
    expect_silent(folder, {"convert", "frame.%04d.ppm", "b.raw", "--start", "10"});
    EXPECT_EQ(folder.read("b.raw"), (bytes{10, 10, 10, 11, 11, 11}));
}

TEST(sequence, each_frame_becomes_a_file) {
    const scratch_folder folder;
    const bytes clip = make_rgb_clip(folder, "clip.qvr", 3);
    expect_silent(folder, {"decode", "clip.qvr", "f%d.png"});
    expect_silent(folder, {"decode", "clip.qvr", "g-%07d.ppm", "--start", "1001"});
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"clip.qvr", "f0.png", "f1.png", "f2.png", "g-0001001.ppm",
                                                        "g-0001002.ppm", "g-0001003.ppm"}));
    for (unsigned frame = 0; frame < 3; ++frame) {
        const bytes wanted(clip.begin() + 24 * frame, clip.begin() + 24 * (frame + 1));
        EXPECT_EQ(read_picture(folder.file("f" + std::to_string(frame) + ".png")).samples, wanted);
        EXPECT_EQ(folder.read("g-000100" + std::to_string(frame + 1) + ".ppm"),
                  joined({text("P6\n4 2\n255\n"), wanted}));
    }
}

TEST(sequence, every_kind_of_file_can_be_one) {
    const scratch_folder folder;
    ASSERT_EQ(folder.qvr({"encode", "-", "a.qvr", "--size", "2x2", "--format", "UYVY"}, noise(24)).code, 0);
    for (const char* name : {"a%d.y4m", "a%d.qvr", "a%d.uyvy", "a%d.raw"}) {
        SCOPED_TRACE(name);
        expect_silent(folder, {"convert", "a.qvr", name});
        std::vector<std::string> back = {"convert", name, "back.raw"};
        if (std::string(name).find("uyvy") != std::string::npos) {
            back.insert(back.end(), {"--size", "2x2"});
        }
        if (std::string(name).find("raw") != std::string::npos) {
            back.insert(back.end(), {"--size", "2x2", "--format", "UYVY"});
        }
        expect_silent(folder, back);
        EXPECT_EQ(folder.read("back.raw"), noise(24));
    }
    EXPECT_EQ(folder.read("a1.uyvy").size(), 8u);
    EXPECT_FALSE(folder.has("a3.uyvy"));
}

TEST(sequence, a_percent_sign_that_is_no_number_stands_for_itself) {
    const scratch_folder folder;
    make_rgb_clip(folder, "clip.qvr", 1);
    expect_silent(folder, {"decode", "clip.qvr", "100%.png"});
    expect_silent(folder, {"decode", "clip.qvr", "100%% %02d.png"});
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"100% 00.png", "100%.png", "clip.qvr"}));
    expect_silent(folder, {"encode", "100%% %02d.png", "b.qvr"});
    EXPECT_EQ(folder.read("b.qvr"), folder.read("clip.qvr"));
}

TEST(sequence, a_gap_or_nothing_at_all_is_an_input_failure) {
    const scratch_folder folder;
    expect_failure(folder, {"encode", "frame.%04d.ppm", "a.qvr"}, 3,
                   "frame.%04d.ppm: there is no file of this sequence, such as frame.0000.ppm",
                   "the number of digits must be that of the names");
    expect_failure(folder, {"encode", "no/folder/frame.%04d.ppm", "a.qvr"}, 3, "there is no file of this sequence",
                   "the number of digits");
    write_pixels(folder, {1, 2, 4});
    expect_failure(folder, {"encode", "frame.%04d.ppm", "a.qvr"}, 3,
                   "frame.%04d.ppm: the sequence has a gap: frame.0002.ppm is followed by frame.0004.ppm",
                   "put the missing files into their places");
    expect_failure(folder, {"encode", "frame.%04d.ppm", "a.qvr", "--start", "3"}, 3, "there is no file frame.0003.ppm",
                   "the number of digits");
    expect_silent(folder, {"encode", "frame.%04d.ppm", "a.qvr", "--start", "4"});
}

TEST(sequence, two_numbers_or_one_in_a_folder_are_refused) {
    const scratch_folder folder;
    make_rgb_clip(folder, "clip.qvr", 1);
    for (const char* name : {"a%d-%d.png", "shot%d/a.png", "%02d/%02d.png"}) {
        expect_failure(folder, {"decode", "clip.qvr", name}, 2,
                       std::string(name) + ": a numbered sequence has one number, in the name of its files",
                       "for example shot/frame.%04d.png");
    }
}

TEST(sequence, a_failure_leaves_the_whole_files_before_it_and_nothing_else) {
    const scratch_folder folder;
    make_rgb_clip(folder, "clip.qvr", 3);
    bytes cut = folder.read("clip.qvr");
    cut.resize(2 * k_rgb_frame + 10);
    folder.write("cut.qvr", cut);
    const outcome result = folder.qvr({"decode", "cut.qvr", "f%d.ppm"});
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"clip.qvr", "cut.qvr", "f0.ppm", "f1.ppm"}));
}

TEST(sequence, damage_is_told_with_the_file_it_is_in) {
    const scratch_folder folder;
    write_pixels(folder, {1, 2});
    folder.write("frame.0003.ppm", text("P6\n1 1\n255\nab"));
    expect_failure(folder, {"encode", "frame.%04d.ppm", "a.qvr"}, 1,
                   "frame.0003.ppm: the samples of the picture are not complete", "the file is damaged");
    folder.write("frame.0003.ppm", text("P6\n1 1\n255\nabc"));
    EXPECT_EQ(folder.qvr({"encode", "frame.%04d.ppm", "a.qvr", "--order", "BGRA", "-q"}).code, 0);
}

TEST(sequence, a_loss_is_said_once) {
    const scratch_folder folder;
    ASSERT_EQ(folder.qvr({"encode", "-", "a.qvr", "--size", "1x1", "--format", "RGBA"}, noise(12)).code, 0);
    EXPECT_EQ(folder.qvr({"decode", "a.qvr", "f%d.ppm", "-q"}).err,
              "qvr: warning: f0.ppm: alpha is left out: order RGB has none\n");
    EXPECT_TRUE(folder.has("f2.ppm"));
}

// The first frame is by far the longest work, so that with two jobs the others are ready before it.
class frames_that_overtake : public testing::Test {
  protected:
    void SetUp() override {
        for (const unsigned side : {700u, 1u, 2u}) {
            const bytes samples = noise(4u * side * side);
            const std::string size = std::to_string(side) + "x" + std::to_string(side);
            ASSERT_EQ(folder.qvr({"encode", "-", "one.qvr", "--size", size, "--format", "RGBA"}, samples).code, 0);
            const bytes frame = folder.read("one.qvr");
            clip.insert(clip.end(), frame.begin(), frame.end());
        }
        folder.write("clip.qvr", clip);
    }

    scratch_folder folder;
    bytes clip;
};

TEST_F(frames_that_overtake, warnings_come_in_the_order_of_the_frames) {
    EXPECT_EQ(folder.qvr({"decode", "clip.qvr", "f%d.ppm", "-q", "-j", "2"}).err,
              "qvr: warning: f0.ppm: alpha is left out: order RGB has none\n"
              "qvr: warning: clip.qvr: frame 1 at offset 1960082: the layout changes here to 1x1 progressive, order 5 "
              "RGB, type 1 U8\n"
              "qvr: warning: clip.qvr: frame 2 at offset 1960168: the layout changes here to 2x2 progressive, order 5 "
              "RGB, type 1 U8\n");
}

TEST_F(frames_that_overtake, no_file_is_there_behind_a_frame_that_failed) {
    ASSERT_EQ(folder.qvr({"decode", "clip.qvr", "f%d.png", "-q", "-j", "2"}).code, 0);
    bytes cut = folder.read("f0.png");
    cut.resize(cut.size() - 20);
    folder.write("f0.png", cut);
    const std::vector<std::string> before = folder.names();
    EXPECT_EQ(folder.qvr({"convert", "f%d.png", "g%d.png", "-j", "2"}).code, 1);
    EXPECT_EQ(folder.names(), before);
    EXPECT_EQ(folder.qvr({"convert", "f%d.png", "g%d.png", "-j", "2", "--keep-going"}).code, 1);
    EXPECT_FALSE(folder.has("g0.png"));
    EXPECT_EQ(folder.read("g1.png"), folder.read("f1.png"));
    EXPECT_EQ(folder.read("g2.png"), folder.read("f2.png"));
}

TEST(sequence, all_frames_are_looked_at_for_what_is_lost) {
    const scratch_folder folder;
    folder.write("f0.pam", joined({text("P7\nWIDTH 1\nHEIGHT 1\nDEPTH 3\nMAXVAL 1023\nENDHDR\n"), bytes(6)}));
    folder.write("f1.pam", joined({text("P7\nWIDTH 1\nHEIGHT 1\nDEPTH 4\nMAXVAL 1023\nENDHDR\n"), bytes(8)}));
    EXPECT_EQ(folder.qvr({"encode", "f%d.pam", "a.qvr", "-q"}).err,
              "qvr: warning: f1.pam: alpha is left out: type 3 U10 stores none, only U8 and U16 do\n"
              "qvr: warning: f1.pam: the layout changes here to 1x1 progressive, order 7 RGBA, type 3 U10\n");
    expect_failure(folder, {"encode", "f%d.pam", "b.qvr", "--strict"}, 2,
                   "f1.pam: alpha is left out: type 3 U10 stores none", "leave --strict out to go on without it");
}

TEST(sequence, a_pattern_is_read_once) {
    const scratch_folder folder;
    make_rgb_clip(folder, "a.qvr", 2);
    expect_silent(folder, {"decode", "a.qvr", "x%%dy.%02d.png"});
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"a.qvr", "x%dy.00.png", "x%dy.01.png"}));
}

TEST(sequence, a_folder_that_cannot_be_read_is_told) {
    const scratch_folder folder;
    folder.write("shot", {});
    const outcome result = folder.qvr({"encode", "shot/frame.%04d.png", "a.qvr"});
    EXPECT_EQ(result.code, 3);
    EXPECT_TRUE(holds(result.err, "cannot read the folder shot/: Not a directory")) << result.err;
}

}  // namespace
