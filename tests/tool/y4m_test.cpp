// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include "clips.h"
#include "process.h"
#include "streams.h"

namespace {

struct arrangement {
    const char* header;  // of a 2x2 frame
    bytes planes;
    const char* order;
    const char* type;
    bytes samples;  // as the library has them
};

std::vector<arrangement> arrangements() {
    return {
        {"C420jpeg", {1, 2, 3, 4, 50, 60}, "10 I420", "1 U8", {1, 2, 3, 4, 50, 60}},
        {"C422", {1, 2, 3, 4, 51, 52, 61, 62}, "2 UYVY", "1 U8", {51, 1, 61, 2, 52, 3, 62, 4}},
        {"C444",
         {1, 2, 3, 4, 51, 52, 53, 54, 61, 62, 63, 64},
         "9 YUV444",
         "1 U8",
         {1, 51, 61, 2, 52, 62, 3, 53, 63, 4, 54, 64}},
        {"C444alpha",
         {1, 2, 3, 4, 51, 52, 53, 54, 61, 62, 63, 64, 71, 72, 73, 74},
         "12 YUVA444",
         "1 U8",
         {51, 1, 61, 71, 52, 2, 62, 72, 53, 3, 63, 73, 54, 4, 64, 74}},
        {"Cmono", {1, 2, 3, 4}, "14 Alpha", "1 U8", {1, 2, 3, 4}},
        {"C420p10", little_endian({0, 1, 512, 1023, 341, 682}), "10 I420", "3 U10",
         little_endian({0, 0x40, 0x8000, 0xFFC0, 0x5540, 0xAA80})},
        {"C422p10", little_endian({1, 2, 3, 4, 51, 52, 61, 1023}), "2 UYVY", "3 U10",
         little_endian({51 << 6, 1 << 6, 61 << 6, 2 << 6, 52 << 6, 3 << 6, 0xFFC0, 4 << 6})},
        {"C420p12", little_endian({0, 1, 2048, 4095, 1365, 2730}), "10 I420", "4 U12",
         little_endian({0, 0x10, 0x8000, 0xFFF0, 0x5550, 0xAAA0})},
        {"C444p16", little_endian({1, 2, 3, 4, 51, 52, 53, 54, 61, 62, 63, 65535}), "9 YUV444", "2 U16",
         little_endian({1, 51, 61, 2, 52, 62, 3, 53, 63, 4, 54, 65535})},
        {"Cmono16", little_endian({1, 256, 0xABCD, 65535}), "14 Alpha", "2 U16",
         little_endian({1, 256, 0xABCD, 65535})},
    };
}

TEST(y4m, samples_go_where_the_library_has_them) {
    for (const arrangement& wanted : arrangements()) {
        SCOPED_TRACE(wanted.header);
        const scratch_folder folder;
        folder.write("a.y4m", joined({text(std::string("YUV4MPEG2 W2 H2 F25:1 ") + wanted.header + "\n"),
                                      text("FRAME\n"), wanted.planes}));
        const outcome raw = folder.qvr({"convert", "a.y4m", "a.raw"});
        EXPECT_EQ(raw.code, 0) << raw.err;
        EXPECT_EQ(raw.err, "a.raw: 1 frame, 2x2 progressive, order " + std::string(wanted.order) + ", type " +
                               wanted.type + "\n");
        EXPECT_EQ(folder.read("a.raw"), wanted.samples);
    }
}

TEST(y4m, files_come_back_as_they_were_by_way_of_qvr_and_without) {
    for (const arrangement& wanted : arrangements()) {
        SCOPED_TRACE(wanted.header);
        const bytes clip = joined({text(std::string("YUV4MPEG2 W2 H2 F25:1 Ip A0:0 ") + wanted.header + "\n"),
                                   text("FRAME\n"), wanted.planes, text("FRAME\n"), wanted.planes});
        const scratch_folder folder;
        folder.write("a.y4m", clip);
        expect_silent(folder, {"convert", "a.y4m", "b.y4m"});
        EXPECT_EQ(folder.read("b.y4m"), clip);
        expect_silent(folder, {"encode", "a.y4m", "a.qvr"});
        expect_silent(folder, {"decode", "a.qvr", "c.y4m"});
        EXPECT_EQ(folder.read("c.y4m"), clip);
    }
}

TEST(y4m, alpha_of_4_4_4_keeps_the_colours_in_place_when_it_is_left_out) {
    const scratch_folder folder;
    folder.write("a.y4m", joined({text("YUV4MPEG2 W1 H1 F25:1 C444alpha\nFRAME\n"), {10, 20, 30, 40}}));
    expect_silent(folder, {"encode", "a.y4m", "a.qvr", "--alpha-rle"});
    const outcome result = folder.qvr({"decode", "a.qvr", "b.y4m", "--order", "YUV444", "-q"});
    EXPECT_EQ(result.err, "qvr: warning: b.y4m: alpha is left out: order YUV444 has none\n");
    EXPECT_EQ(folder.read("b.y4m"), joined({text("YUV4MPEG2 W1 H1 F25:1 Ip A0:0 C444\nFRAME\n"), bytes{10, 20, 30}}));
}

TEST(y4m, odd_sizes_of_4_2_0_and_mono_are_kept) {
    const scratch_folder folder;
    const bytes clip = joined({text("YUV4MPEG2 W3 H3 F25:1 Ip A0:0 C420jpeg\nFRAME\n"), noise(9 + 4 + 4)});
    folder.write("a.y4m", clip);
    expect_silent(folder, {"convert", "a.y4m", "b.y4m"});
    EXPECT_EQ(folder.read("b.y4m"), clip);
    expect_failure(folder, {"encode", "a.y4m", "a.qvr"}, 2, "a.y4m: frame 0 at offset 39: cannot encode: Width must be",
                   "crop or pad");
    const bytes grey = joined({text("YUV4MPEG2 W3 H1 F25:1 Ip A0:0 Cmono\nFRAME\n"), {7, 8, 9}});
    folder.write("c.y4m", grey);
    expect_silent(folder, {"encode", "c.y4m", "c.qvr"});
    expect_silent(folder, {"decode", "c.qvr", "d.y4m"});
    EXPECT_EQ(folder.read("d.y4m"), grey);
}

TEST(y4m, odd_widths_of_4_2_2_are_refused_both_ways) {
    const scratch_folder folder;
    folder.write("a.y4m", joined({text("YUV4MPEG2 W3 H1 F25:1 C422\nFRAME\n"), noise(7)}));
    expect_failure(folder, {"convert", "a.y4m", "a.raw"}, 2, "a.y4m: 4:2:2 frames of odd width, here 3, cannot be kept",
                   "crop or pad");
    folder.write("a.raw", noise(7));
    expect_failure(folder, {"convert", "a.raw", "b.y4m", "--size", "3x1", "--format", "UYVY"}, 2,
                   "4:2:2 frames of odd width, here 3, cannot be kept", "crop or pad");
}

TEST(y4m, interlacing_is_kept_and_which_field_is_first_is_not) {
    const struct {
        const char* letter;
        const char* layout;
        const char* back;
        const char* warning;
    } cases[] = {{"p", "progressive", "Ip", ""},
                 {"?", "progressive", "Ip", ""},
                 {"t", "interlaced", "It", ""},
                 {"b", "interlaced", "It", "qvr: warning: a.y4m: that the bottom field comes first is left out\n"},
                 {"m", "interlaced", "It",
                  "qvr: warning: a.y4m: which of its frames are interlaced is left out: all are marked so\n"}};
    for (const auto& wanted : cases) {
        const scratch_folder folder;
        folder.write("a.y4m",
                     joined({text(std::string("YUV4MPEG2 W2 H2 F25:1 I") + wanted.letter + "\nFRAME\n"), noise(6)}));
        const outcome made = folder.qvr({"encode", "a.y4m", "a.qvr"});
        EXPECT_EQ(made.err.find(wanted.warning), 0u) << made.err;
        EXPECT_TRUE(holds(made.err, std::string("2x2 ") + wanted.layout)) << made.err;
        expect_silent(folder, {"decode", "a.qvr", "b.y4m"});
        const bytes back = folder.read("b.y4m");
        EXPECT_TRUE(holds({back.begin(), back.end()}, std::string(" ") + wanted.back + " ")) << wanted.letter;
        if (*wanted.warning != '\0') {
            expect_failure(folder, {"encode", "a.y4m", "c.qvr", "--strict"}, 2, "is left out",
                           "leave --strict out to go on without it");
        }
    }
}

TEST(y4m, the_frame_rate_is_said_to_be_lost_where_it_is) {
    const scratch_folder folder;
    folder.write("a.y4m", joined({text("YUV4MPEG2 W2 H2 F30000:1001 C420\nFRAME\n"), noise(6)}));
    const std::string warning =
        "qvr: warning: a.y4m: its frame rate is left out; to get it back, decode with --rate 30000:1001\n";
    EXPECT_EQ(folder.qvr({"encode", "a.y4m", "a.qvr", "-q"}).err, warning);
    EXPECT_EQ(folder.qvr({"convert", "a.y4m", "b.qvr", "-q"}).err, warning);
    expect_failure(folder, {"encode", "a.y4m", "c.qvr", "--strict"}, 2, "its frame rate is left out",
                   "leave --strict out");
    expect_failure(folder, {"convert", "a.y4m", "c.qvr", "--strict"}, 2, "its frame rate is left out",
                   "leave --strict out");
    expect_silent(folder, {"convert", "a.y4m", "b.y4m", "--strict"});
    expect_silent(folder, {"decode", "a.qvr", "c.y4m", "--rate", "30000:1001"});
    EXPECT_EQ(folder.read("b.y4m"), folder.read("c.y4m"));
    expect_silent(folder, {"decode", "a.qvr", "d.y4m", "--rate", "50"});
    const bytes back = folder.read("d.y4m");
    EXPECT_TRUE(holds({back.begin(), back.end()}, "YUV4MPEG2 W2 H2 F50:1 Ip "));
    expect_silent(folder, {"decode", "a.qvr", "e.y4m", "--rate", "24000/1001"});
    for (const char* rate : {"0", "25:0", "x", "25:", "25:1:1", "-25", "1e3"}) {
        expect_failure(folder, {"decode", "a.qvr", "f.y4m", "--rate", rate}, 2,
                       std::string("--rate ") + rate + ": this is not a frame rate", "write frames a second");
    }
}

TEST(y4m, what_else_the_first_line_says_is_tolerated_or_said) {
    const scratch_folder folder;
    folder.write("a.y4m", joined({text("YUV4MPEG2 H2 W2 F0:0 A1:1  C420jpeg XYSCSS=420JPEG XCOLORRANGE=LIMITED\n"),
                                  text("FRAME \n"),
                                  {1, 2, 3, 4, 5, 6}}));
    expect_silent(folder, {"convert", "a.y4m", "a.raw", "--strict"});
    EXPECT_EQ(folder.read("a.raw"), (bytes{1, 2, 3, 4, 5, 6}));
    folder.write("b.y4m", joined({text("YUV4MPEG2 W2 H2 A16:15\nFRAME\n"), noise(6)}));
    EXPECT_EQ(folder.qvr({"convert", "b.y4m", "b.raw", "-q"}).err,
              "qvr: warning: b.y4m: its pixel aspect of 16:15 is left out\n");
}

TEST(y4m, what_the_lines_say_and_no_frame_keeps_is_said_once_or_refused) {
    const struct {
        const char* header;
        const char* frame_line;
        const char* loss;
    } cases[] = {
        {"C420mpeg2 XYSCSS=420MPEG2", "FRAME", "that its chroma is sited as C420mpeg2 says is left out"},
        {"C420paldv", "FRAME", "that its chroma is sited as C420paldv says is left out"},
        {"XYSCSS=420PALDV", "FRAME", "that its chroma is sited as C420paldv says is left out"},
        {"XCOLORRANGE=FULL", "FRAME", "that its samples use the full range is left out"},
        {"Xshot=12", "FRAME", "'Xshot=12' of its first line is left out"},
        {"A4:3", "FRAME", "its pixel aspect of 4:3 is left out"},
        {"A1:1", "FRAME Ip", "what its lines 'FRAME' say of single frames is left out"},
    };
    for (const auto& wanted : cases) {
        SCOPED_TRACE(wanted.loss);
        const scratch_folder folder;
        const bytes one = joined({text(std::string(wanted.frame_line) + "\n"), noise(6)});
        folder.write("a.y4m", joined({text(std::string("YUV4MPEG2 W2 H2 ") + wanted.header + "\n"), one, one}));
        for (const char* made : {"b.y4m", "b.raw", "b.qvr"}) {
            const outcome result = folder.qvr({"convert", "a.y4m", made, "-q"});
            EXPECT_EQ(result.code, 0);
            EXPECT_EQ(result.err, std::string("qvr: warning: a.y4m: ") + wanted.loss + "\n");
            expect_failure(folder, {"convert", "a.y4m", std::string("c") + made, "--strict"}, 2, wanted.loss,
                           "leave --strict out");
        }
    }
}

TEST(y4m, behind_damage_nothing_is_looked_for) {
    const scratch_folder folder;
    const auto clip = [](std::size_t first_bytes) {
        return joined({text("YUV4MPEG2 W8 H8\nFRAME\n"), bytes(first_bytes, '\n'), text("FRAME\n"), bytes(96, '\n')});
    };
    folder.write("a.y4m", clip(95));
    for (const char* made : {"a.qvr", "a.raw"}) {
        const outcome result = folder.qvr({"convert", "a.y4m", made, "--keep-going", "-q"});
        EXPECT_EQ(result.code, 1);
        EXPECT_EQ(result.err,
                  "qvr: a.y4m: frame 1 at offset 118: a line 'FRAME' should be here\n"
                  "hint: the file is damaged or was cut short; nothing behind this place can be found\n"
                  "qvr: " +
                      std::string(made) +
                      ": 1 frame of 2 left out, because the data are bad: 1\n"
                      "hint: the messages above say what is wrong with each; all others are whole\n");
    }
    folder.write("a.y4m", joined({text("YUV4MPEG2 W8 H8\nFRAME\n"), bytes(95)}));
    const outcome none = folder.qvr({"convert", "a.y4m", "b.raw", "--keep-going", "-q"});
    EXPECT_EQ(none.code, 1);
    EXPECT_EQ(none.err,
              "qvr: a.y4m: frame 0 at offset 16: the frame is not complete: 95 bytes are left, a frame has 96\n"
              "hint: the file is damaged or was cut short; nothing behind this place can be found\n"
              "qvr: a.y4m: none of its frames could be read\n");
    EXPECT_FALSE(folder.has("b.raw"));
}

TEST(y4m, depths_without_a_type_become_16_bits_and_that_is_said) {
    const scratch_folder folder;
    folder.write("a.y4m", joined({text("YUV4MPEG2 W2 H2 Cmono10\nFRAME\n"), little_endian({0, 1, 512, 1023})}));
    EXPECT_EQ(folder.qvr({"convert", "a.y4m", "a.raw", "-q"}).err,
              "qvr: warning: a.y4m: that its samples have 10 bits is left out: they become the top bits of 16-bit "
              "ones\n");
    EXPECT_EQ(folder.read("a.raw"), little_endian({0, 0x40, 0x8000, 0xFFC0}));
    folder.write("b.y4m", joined({text("YUV4MPEG2 W1 H1 C444p14\nFRAME\n"), little_endian({1, 2, 16383})}));
    EXPECT_EQ(folder.qvr({"convert", "b.y4m", "b.raw", "-q"}).code, 0);
    EXPECT_EQ(folder.read("b.raw"), little_endian({4, 8, 0xFFFC}));
    expect_failure(folder, {"convert", "b.y4m", "c.raw", "--strict"}, 2, "that its samples have 14 bits is left out",
                   "leave --strict out");
}

TEST(y4m, v210_becomes_10_bit_4_2_2) {
    const scratch_folder folder;
    bytes packed(16);
    put_le32(packed, 0, 100u | 200u << 10 | 300u << 20);   // Cb0 Y0 Cr0
    put_le32(packed, 4, 400u | 500u << 10 | 600u << 20);   // Y1 Cb1 Y2
    put_le32(packed, 8, 700u | 800u << 10 | 900u << 20);   // Cr1 Y3 Cb2
    put_le32(packed, 12, 1000u | 1u << 10 | 1023u << 20);  // Y4 Cr2 Y5
    folder.write("a.v210", packed);
    expect_silent(folder, {"convert", "a.v210", "a.y4m", "--size", "6x1"});
    EXPECT_EQ(folder.read("a.y4m"),
              joined({text("YUV4MPEG2 W6 H1 F25:1 Ip A0:0 C422p10\nFRAME\n"),
                      little_endian({200, 400, 600, 800, 1000, 1023, 100, 500, 900, 300, 700, 1})}));
    expect_silent(folder, {"convert", "a.y4m", "b.v210"});
    EXPECT_EQ(folder.read("b.v210"), packed);
}

TEST(y4m, what_it_cannot_hold_is_refused) {
    const scratch_folder folder;
    const struct {
        const char* order;
        const char* type;
        std::size_t frame_bytes;
        const char* message;
    } cases[] = {{"RGB", "U8", 24, "order 5 RGB cannot be kept in a Y4M file: colours are never converted"},
                 {"RGBA", "U8", 32, "order 3 ARGB cannot be kept in a Y4M file: colours are never converted"},
                 {"UYVY", "Half", 32, "order 2 UYVY with type 6 Half cannot be kept in a Y4M file"},
                 {"YUV444", "Float", 96, "order 9 YUV444 with type 7 Float cannot be kept in a Y4M file"},
                 {"YUY2", "Fixed16", 32, "order 2 UYVY with type 214 Fixed16 cannot be kept in a Y4M file"}};
    for (const auto& wanted : cases) {
        ASSERT_EQ(folder
                      .qvr({"encode", "-", "a.qvr", "--size", "4x2", "--order", wanted.order, "--type", wanted.type},
                           bytes(wanted.frame_bytes))
                      .code,
                  0);
        expect_failure(folder, {"decode", "a.qvr", "a.y4m"}, 2, wanted.message, "");
    }
}

TEST(y4m, alpha_that_it_cannot_hold_is_said) {
    const struct {
        const char* order;
        const char* type;
        std::size_t frame_bytes;
        const char* tag;
    } cases[] = {{"A420", "U8", 20, "C420jpeg"},
                 {"UYAVYA", "U16", 48, "C422p16"},
                 {"YUVA444", "U16", 64, "C444p16"},
                 {"YUY2+A", "U8", 24, "C422"}};
    for (const auto& wanted : cases) {
        const scratch_folder folder;
        ASSERT_EQ(folder
                      .qvr({"encode", "-", "a.qvr", "--size", "4x2", "--order", wanted.order, "--type", wanted.type},
                           noise(wanted.frame_bytes))
                      .code,
                  0);
        const outcome result = folder.qvr({"decode", "a.qvr", "a.y4m", "-q"});
        EXPECT_EQ(result.code, 0) << result.err;
        EXPECT_EQ(result.err.find("qvr: warning: a.y4m: alpha is left out: order "), 0u) << result.err;
        const bytes made = folder.read("a.y4m");
        EXPECT_TRUE(holds({made.begin(), made.end()}, std::string(" ") + wanted.tag + "\n")) << wanted.tag;
        expect_failure(folder, {"decode", "a.qvr", "b.y4m", "--strict"}, 2, "alpha is left out",
                       "write to a kind of file, or ask for an order, that keeps it, or leave --strict out");
    }
}

TEST(y4m, frames_that_change_are_refused) {
    const scratch_folder folder;
    make_rgb_clip(folder, "rgb.qvr", 1);
    bytes both;
    for (const char* size : {"4x2", "2x4"}) {
        ASSERT_EQ(folder.qvr({"encode", "-", "one.qvr", "--size", size, "--format", "GRAY8"}, noise(8)).code, 0);
        both = joined({both, folder.read("one.qvr")});
    }
    folder.write("both.qvr", both);
    expect_failure(folder, {"decode", "both.qvr", "a.y4m"}, 2,
                   "a.y4m: the frames change here to 2x4 progressive, order 14 Alpha, type 1 U8", "take the parts out");
}

TEST(y4m, headers_that_make_no_sense_are_bad_data) {
    const scratch_folder folder;
    const struct {
        const char* line;
        const char* message;
    } cases[] = {{"YUV4MPEG2", "its first line gives no size"},
                 {"YUV4MPEG2 W2", "its first line gives no size"},
                 {"YUV4MPEG2 W2 H0", "its first line has 'H0', which makes no sense"},
                 {"YUV4MPEG2 W-2 H2", "its first line has 'W-2', which makes no sense"},
                 {"YUV4MPEG2 W2x H2", "its first line has 'W2x', which makes no sense"},
                 {"YUV4MPEG2 W4294967298 H2", "its first line has 'W4294967298', which makes no sense"},
                 {"YUV4MPEG2 W2 H2 F25", "its first line has 'F25', which makes no sense"},
                 {"YUV4MPEG2 W2 H2 A1", "its first line has 'A1', which makes no sense"},
                 {"YUV4MPEG2 W2 H2 Iq", "its first line has 'Iq', which makes no sense"},
                 {"YUV4MPEG2 W65536 H65536", "a frame of 65536x65536 is too large"},
                 {"YUV4MPEG2 W4294967295 H4294967295 C444", "is too large"},
                 {"YUV4MPEG9", "this is no Y4M file: it does not begin with YUV4MPEG2"}};
    for (const auto& wanted : cases) {
        folder.write("a.y4m", joined({text(std::string(wanted.line) + "\nFRAME\n"), noise(6)}));
        expect_failure(folder, {"encode", "a.y4m", "a.qvr", "--from", "y4m"}, 1, wanted.message, "");
    }
}

TEST(y4m, samplings_that_no_order_has_are_refused) {
    const scratch_folder folder;
    for (const char* sampling : {"411", "440", "410", "420p", "420p7", "420p17", "444alphap10", "mono8x", "", "4"}) {
        folder.write("a.y4m", joined({text(std::string("YUV4MPEG2 W2 H2 C") + sampling + "\nFRAME\n"), noise(64)}));
        expect_failure(folder, {"encode", "a.y4m", "a.qvr"}, 2,
                       std::string("a.y4m: its samples are arranged as C") + sampling + ", which no frame can hold",
                       "write it as 4:2:0");
    }
}

TEST(y4m, damaged_frames_are_bad_data) {
    const scratch_folder folder;
    const bytes good = joined({text("YUV4MPEG2 W2 H2\n"), text("FRAME\n"), noise(6), text("FRAME\n"), noise(6)});
    bytes wrong = good;
    wrong[28] = 'X';  // F of the second FRAME
    folder.write("a.y4m", wrong);
    expect_failure(folder, {"encode", "a.y4m", "a.qvr"}, 1,
                   "a.y4m: frame 1 at offset 28: a line 'FRAME' should be here", "the file is damaged");
    folder.write("a.y4m", bytes(good.begin(), good.end() - 2));
    expect_failure(folder, {"encode", "a.y4m", "a.qvr"}, 1,
                   "a.y4m: frame 1 at offset 28: the frame is not complete: 4 bytes are left, a frame has 6",
                   "the file is damaged or was cut short");
    folder.write("a.y4m", text("YUV4MPEG2 W2 H2\n"));
    expect_failure(folder, {"encode", "a.y4m", "a.qvr"}, 1, "a.y4m: there is no frame in it", "the file is damaged");
    folder.write("a.y4m", joined({text("YUV4MPEG2 W2 H2 "), bytes(200000, 'X')}));
    expect_failure(folder, {"encode", "a.y4m", "a.qvr"}, 1, "a.y4m: a line of its header does not end",
                   "the file is damaged");
    folder.write("a.y4m", joined({text("YUV4MPEG2 W1 H1 Cmono10\nFRAME\n"), little_endian({1024})}));
    expect_failure(folder, {"convert", "a.y4m", "a.raw"}, 1,
                   "a.y4m: frame 0 at offset 24: there are samples of more than 10 bits", "the file is damaged");
}

TEST(y4m, every_truncation_gives_whole_frames_or_a_clean_failure) {
    const scratch_folder folder;
    const bytes good =
        joined({text("YUV4MPEG2 W2 H2 F25:1 Ip C420p10\n"), text("FRAME\n"), little_endian({1, 2, 3, 4, 5, 6}),
                text("FRAME X\n"), little_endian({1, 2, 3, 4, 5, 6})});
    const std::size_t first_end = 33 + 6 + 12;
    for (std::size_t size = 0; size < good.size(); ++size) {
        folder.write("a.y4m", bytes(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(size)));
        const outcome result = folder.qvr({"convert", "a.y4m", "a.raw", "--from", "y4m"});
        EXPECT_EQ(result.code, size == first_end ? 0 : 1) << size << result.err;
        EXPECT_EQ(folder.has("a.raw"), size >= first_end) << size;
    }
}

TEST(y4m, a_huge_size_over_a_short_file_takes_no_memory) {
    const scratch_folder folder;
    folder.write("a.y4m", joined({text("YUV4MPEG2 W30000 H30000 C444\nFRAME\n"), noise(100)}));
    expect_failure(folder, {"convert", "a.y4m", "a.raw"}, 1, "100 bytes are left, a frame has 2700000000",
                   "the file is damaged or was cut short");
}

TEST(y4m, standard_input_and_output_carry_it) {
    const scratch_folder folder;
    const bytes clip = joined(
        {text("YUV4MPEG2 W2 H2 F25:1 Ip A0:0 C422\n"), text("FRAME\n"), noise(8, 1), text("FRAME\n"), noise(8, 2)});
    const outcome made = folder.qvr({"encode", "-", "-", "-q"}, clip);
    EXPECT_EQ(made.code, 0) << made.err;
    const outcome back = folder.qvr({"decode", "-", "-", "--to", "y4m", "-q"}, bytes(made.out.begin(), made.out.end()));
    EXPECT_EQ(back.code, 0) << back.err;
    EXPECT_EQ(bytes(back.out.begin(), back.out.end()), clip);
}

TEST(y4m, an_order_that_it_does_not_have_is_not_made_of_it) {
    const scratch_folder folder;
    folder.write("a.y4m", joined({text("YUV4MPEG2 W2 H2\nFRAME\n"), noise(6)}));
    expect_failure(folder, {"encode", "a.y4m", "a.qvr", "--format", "UYVY"}, 2,
                   "a.y4m: its frames are of order 10 I420, type 1 U8, not what was asked for", "leave --order");
    expect_failure(folder, {"encode", "a.y4m", "a.qvr", "--size", "2x2"}, 2,
                   "a.y4m: --size is for raw frames, but this is a Y4M file by its name", "leave --size out");
    expect_failure(folder, {"encode", "a.y4m", "a.qvr", "--row-bytes", "8"}, 2,
                   "a.y4m: --row-bytes and --row-bytes2 are for raw frames", "leave them out");
}

TEST(y4m, frames_are_not_counted_where_their_lines_have_parameters) {
    const scratch_folder folder;
    bytes clip = text("YUV4MPEG2 W2 H2 F25:1 Cmono\n");
    for (int i = 0; i < 10; ++i) {
        clip = joined({clip, text("FRAME Xabc\n"), bytes(4, static_cast<std::uint8_t>(i))});
    }
    folder.write("a.y4m", clip);
    const outcome result = folder.qvr({"convert", "a.y4m", "a.raw", "--progress", "json"});
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_TRUE(holds(result.err, "\"frames_total\":null")) << result.err;
    EXPECT_EQ(folder.read("a.raw").size(), 40u);
}

}  // namespace
