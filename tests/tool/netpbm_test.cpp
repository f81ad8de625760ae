// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include "clips.h"
#include "process.h"
#include "streams.h"

namespace {

struct netpbm_case {
    const char* name;  // with the extension
    bytes file;
    const char* format;
    bytes samples;
};

std::vector<netpbm_case> cases() {
    return {
        {"a.ppm", joined({text("P6\n2 1\n255\n"), {1, 2, 3, 4, 5, 6}}), "order 5 RGB, type 1 U8", {1, 2, 3, 4, 5, 6}},
        {"b.ppm", joined({text("P6\n1 2\n65535\n"), big_endian({1, 0x1234, 65535, 256, 2, 3})}),
         "order 5 RGB, type 2 U16", little_endian({1, 0x1234, 65535, 256, 2, 3})},
        {"c.ppm", joined({text("P6\n1 1\n1023\n"), big_endian({1, 512, 1023})}), "order 5 RGB, type 3 U10",
         little_endian({0x40, 0x8000, 0xFFC0})},
        {"d.ppm", joined({text("P6\n1 1\n4095\n"), big_endian({1, 2048, 4095})}), "order 5 RGB, type 4 U12",
         little_endian({0x10, 0x8000, 0xFFF0})},
        {"e.pgm", joined({text("P5\n3 1\n255\n"), {7, 8, 9}}), "order 14 Alpha, type 1 U8", {7, 8, 9}},
        {"f.pgm", joined({text("P5\n2 1\n65535\n"), big_endian({7, 0xABCD})}), "order 14 Alpha, type 2 U16",
         little_endian({7, 0xABCD})},
        {"g.pam",
         joined({text("P7\nWIDTH 1\nHEIGHT 2\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\n"),
                 {1, 2, 3, 4, 5, 6, 7, 8}}),
         "order 7 RGBA, type 1 U8",
         {1, 2, 3, 4, 5, 6, 7, 8}},
        {"h.pam",
         joined({text("P7\nWIDTH 1\nHEIGHT 1\nDEPTH 3\nMAXVAL 65535\nTUPLTYPE RGB\nENDHDR\n"),
                 big_endian({1, 2, 0xFF00})}),
         "order 5 RGB, type 2 U16", little_endian({1, 2, 0xFF00})},
        {"i.pam",
         joined({text("P7\nWIDTH 2\nHEIGHT 1\nDEPTH 1\nMAXVAL 255\nTUPLTYPE GRAYSCALE\nENDHDR\n"), {3, 4}}),
         "order 14 Alpha, type 1 U8",
         {3, 4}},
    };
}

TEST(netpbm, samples_go_where_the_library_has_them_and_back) {
    for (const netpbm_case& wanted : cases()) {
        SCOPED_TRACE(wanted.name);
        const scratch_folder folder;
        folder.write(wanted.name, wanted.file);
        const outcome raw = folder.qvr({"convert", wanted.name, "a.raw"});
        EXPECT_EQ(raw.code, 0) << raw.err;
        EXPECT_TRUE(holds(raw.err, wanted.format)) << raw.err;
        EXPECT_EQ(folder.read("a.raw"), wanted.samples);
        const std::string copy = std::string("copy") + (wanted.name + 1);
        expect_silent(folder, {"convert", wanted.name, copy});
        EXPECT_EQ(folder.read(copy), wanted.file);
        const std::string back = std::string("back") + (wanted.name + 1);
        expect_silent(folder, {"encode", wanted.name, "a.qvr"});
        expect_silent(folder, {"decode", "a.qvr", back});
        EXPECT_EQ(folder.read(back), wanted.file);
    }
}

TEST(netpbm, headers_may_have_comments_and_any_blanks) {
    const scratch_folder folder;
    folder.write("a.ppm", joined({text("P6 # one\n# two\n\t1\r\n  1 # three\n255\n"), {1, 2, 3}}));
    expect_silent(folder, {"convert", "a.ppm", "a.raw"});
    EXPECT_EQ(folder.read("a.raw"), (bytes{1, 2, 3}));
    folder.write("b.pam", joined({text("P7\n# one\nDEPTH 3\nMAXVAL 255\n\nHEIGHT 1\nWIDTH 1\nENDHDR\n"), {1, 2, 3}}));
    expect_silent(folder, {"convert", "b.pam", "b.raw"});
    EXPECT_EQ(folder.read("b.raw"), (bytes{1, 2, 3}));
}

TEST(netpbm, grey_with_alpha_becomes_rgba) {
    const scratch_folder folder;
    folder.write("a.pam", joined({text("P7\nWIDTH 1\nHEIGHT 1\nDEPTH 2\nMAXVAL 255\nENDHDR\n"), {9, 200}}));
    expect_silent(folder, {"convert", "a.pam", "a.raw"});
    EXPECT_EQ(folder.read("a.raw"), (bytes{9, 9, 9, 200}));
    expect_silent(folder, {"convert", "a.pam", "b.raw", "--order", "Alpha"});
    EXPECT_EQ(folder.read("b.raw"), (bytes{200}));
}

TEST(netpbm, orders_with_alpha_make_a_picture_without_one_opaque_at_every_depth) {
    const scratch_folder folder;
    folder.write("a.ppm", joined({text("P6\n1 1\n1023\n"), big_endian({1, 2, 3})}));
    expect_silent(folder, {"convert", "a.ppm", "a.raw", "--order", "ARGB"});
    EXPECT_EQ(folder.read("a.raw"), little_endian({0xFFC0, 0x40, 0x80, 0xC0}));
    expect_silent(folder, {"convert", "a.ppm", "a.pam", "--order", "RGBA"});
    EXPECT_EQ(folder.read("a.pam"),
              joined({text("P7\nWIDTH 1\nHEIGHT 1\nDEPTH 4\nMAXVAL 1023\nTUPLTYPE RGB_ALPHA\nENDHDR\n"),
                      big_endian({1, 2, 3, 1023})}));
    folder.write("b.ppm", joined({text("P6\n1 1\n4095\n"), big_endian({1, 2, 3})}));
    expect_silent(folder, {"convert", "b.ppm", "b.raw", "--order", "RGBA"});
    EXPECT_EQ(folder.read("b.raw"), little_endian({0x10, 0x20, 0x30, 0xFFF0}));
}

TEST(netpbm, a_file_holds_any_number_of_pictures) {
    const scratch_folder folder;
    const bytes one = joined({text("P6\n2 1\n255\n"), noise(6, 1)});
    const bytes two = joined({text("P6\n2 1\n255\n"), noise(6, 2)});
    folder.write("a.ppm", joined({one, two, one}));
    expect_silent(folder, {"encode", "a.ppm", "a.qvr"});
    expect_silent(folder, {"decode", "a.qvr", "b.ppm"});
    EXPECT_EQ(folder.read("b.ppm"), joined({one, two, one}));
    expect_silent(folder, {"decode", "a.qvr", "c.ppm", "--frame", "1"});
    EXPECT_EQ(folder.read("c.ppm"), two);
    folder.write("d.ppm", joined({one, text("x"), two}));
    expect_failure(folder, {"encode", "d.ppm", "d.qvr"}, 1, "d.ppm: there is no Netpbm picture where one should begin",
                   "the file is damaged");
}

TEST(netpbm, alpha_that_it_cannot_hold_is_said) {
    const scratch_folder folder;
    folder.write("a.pam", joined({text("P7\nWIDTH 1\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nENDHDR\n"), {1, 2, 3, 4}}));
    EXPECT_EQ(folder.qvr({"convert", "a.pam", "a.ppm", "-q"}).err,
              "qvr: warning: a.ppm: alpha is left out: order RGB has none\n");
    EXPECT_EQ(folder.read("a.ppm"), joined({text("P6\n1 1\n255\n"), bytes{1, 2, 3}}));
    expect_failure(folder, {"convert", "a.pam", "b.ppm", "--strict"}, 2, "b.ppm: alpha is left out",
                   "write to a kind of file, or ask for an order, that keeps it, or leave --strict out");
}

TEST(netpbm, grey_of_10_bits_becomes_16_bits_and_that_is_said) {
    const scratch_folder folder;
    folder.write("a.pgm", joined({text("P5\n2 1\n1023\n"), big_endian({1, 1023})}));
    EXPECT_EQ(folder.qvr({"convert", "a.pgm", "a.raw", "-q"}).err,
              "qvr: warning: a.pgm: samples of type 3 U10 become 16-bit ones: a lone plane has 8 or 16 bits\n");
    EXPECT_EQ(folder.read("a.raw"), little_endian({0x40, 0xFFC0}));
    expect_failure(folder, {"encode", "a.pgm", "a.qvr", "--strict"}, 2, "a.pgm: samples of type 3 U10 become 16-bit",
                   "leave --strict out");
}

TEST(netpbm, what_it_cannot_hold_is_refused) {
    const scratch_folder folder;
    make_rgb_clip(folder, "rgb.qvr", 1);
    expect_failure(folder, {"decode", "rgb.qvr", "a.pgm"}, 2,
                   "a.pgm: order 5 RGB: a PGM holds a lone alpha plane, as grey", "decode to raw frames");
    folder.write("a.pgm", joined({text("P5\n1 1\n255\n"), {1}}));
    expect_failure(folder, {"convert", "a.pgm", "a.ppm"}, 2, "a.ppm: order 14 Alpha: a PPM holds RGB",
                   "decode to raw frames");
    for (const char* name : {"a.ppm", "a.pam", "a.pnm"}) {
        ASSERT_EQ(
            folder.qvr({"encode", "-", "f.qvr", "--size", "1x1", "--order", "RGB", "--type", "Float"}, bytes(12)).code,
            0);
        expect_failure(folder, {"decode", "f.qvr", name}, 2, ": type 7 Float cannot be kept in a P", "decode to raw");
        ASSERT_EQ(folder.qvr({"encode", "-", "y.qvr", "--size", "2x1", "--format", "UYVY"}, bytes(4)).code, 0);
        expect_failure(folder, {"decode", "y.qvr", name}, 2, "order 2 UYVY cannot be kept in a P", "decode to raw");
    }
}

TEST(netpbm, damaged_headers_and_samples_are_refused_with_the_way_out) {
    const scratch_folder folder;
    const struct {
        bytes file;
        int code;
        const char* message;
    } damaged[] = {
        {text("P6"), 1, "the header of the picture does not end"},
        {text("P6\n2 2\n25"), 1, "the header of the picture does not end"},
        {text("P6\n2 x\n255\n"), 1, "the header of the picture has 'x' where a number should be"},
        {text("P6\n0 2\n255\n"), 1, "the header of the picture has '0' where a number should be"},
        {text("P6\n-1 2\n255\n"), 1, "the header of the picture has '-1' where a number should be"},
        {text("P6\n4294967296 2\n255\n"), 1, "has '4294967296' where a number should be"},
        {text("P6\n99999999999999999999 2\n255\n"), 1, "where a number should be"},
        {text("P6\n2 2\n0\n"), 1, "the header of the picture has '0' where a number should be"},
        {text("P6\n65536 65536\n255\n"), 1, "the picture is too large: its samples pass 4 GiB"},
        {text("P6\n4294967295 4294967295\n65535\n"), 1, "the picture is too large: its samples pass 4 GiB"},
        {text("P6\n30000 30000\n255\nabc"), 1,
         "the samples of the picture are not complete: 3 bytes are left of 2700000000"},
        {text("P6\n2 2\n100\n"), 2, "its largest sample is said to be 100, but samples are never rescaled"},
        {text("P6\n2 2\n70000\n"), 2, "its largest sample is said to be 70000"},
        {text("P3\n1 1\n255\n1 2 3\n"), 2, "Netpbm pictures of kind P3 (plain text, or one bit a pixel) are not read"},
        {text("P2\n1 1\n255\n1\n"), 2, "Netpbm pictures of kind P2"},
        {text("P7\nWIDTH 1\nHEIGHT 1\nDEPTH 3\nENDHDR\nabc"), 1, "lacks one of WIDTH, HEIGHT, DEPTH and MAXVAL"},
        {text("P7\nWIDTH 1\nHEIGHT 1\nDEPTH 5\nMAXVAL 255\nENDHDR\nabcde"), 2, "it has 5 channels"},
        {text("P7\nWIDTH 1\nCOLOUR 1\nENDHDR\n"), 1, "the header of the picture has 'COLOUR', which no PAM has"},
        {joined({text("P6\n"), bytes(100000, '#')}), 1, "the header of the picture does not end"},
        {joined({text("P5\n1 1\n1023\n"), big_endian({1024})}), 1,
         "there is a sample of 1024, but the header says that none passes 1023"},
    };
    for (const auto& wanted : damaged) {
        folder.write("a.pic", wanted.file);
        expect_failure(folder, {"encode", "a.pic", "a.qvr"}, wanted.code, wanted.message, "");
    }
}

TEST(netpbm, every_truncation_is_a_clean_failure) {
    const scratch_folder folder;
    for (const bytes& good : {joined({text("P6 2 1 65535\n"), bytes(12)}),
                              joined({text("P7\nWIDTH 1\nHEIGHT 1\nDEPTH 3\nMAXVAL 255\nENDHDR\n"), bytes(3)})}) {
        for (std::size_t size = 1; size < good.size(); ++size) {
            folder.write("a.pnm", bytes(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(size)));
            const outcome result = folder.qvr({"encode", "a.pnm", "a.qvr", "--from", "pnm"});
            EXPECT_EQ(result.code, 1) << size << result.err;
            EXPECT_TRUE(holds(result.err, "\nhint: the file is damaged or was cut short")) << result.err;
            EXPECT_FALSE(folder.has("a.qvr"));
        }
    }
}

TEST(netpbm, standard_input_is_known_by_its_first_bytes) {
    const scratch_folder folder;
    const bytes picture = joined({text("P6\n2 1\n255\n"), noise(6)});
    const outcome result = folder.qvr({"convert", "-", "-", "--to", "ppm", "-q"}, joined({picture, picture}));
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(bytes(result.out.begin(), result.out.end()), joined({picture, picture}));
}

TEST(netpbm, pictures_behind_bad_ones_are_not_lost) {
    const std::string header = "P7\nWIDTH 1\nHEIGHT 1\nDEPTH 1\nMAXVAL 1023\nTUPLTYPE GRAYSCALE\nENDHDR\n";
    bytes file;
    for (const unsigned sample : {1u, 2000u, 2000u, 4u, 5u, 6u}) {
        file = joined({file, text(header), big_endian({sample})});
    }
    const scratch_folder folder;
    folder.write("a.pam", file);
    const outcome result = folder.qvr({"convert", "a.pam", "a.raw", "--keep-going"});
    EXPECT_EQ(result.code, 1);
    EXPECT_TRUE(holds(result.err, "qvr: a.pam: picture 1: there is a sample of 2000")) << result.err;
    EXPECT_TRUE(holds(result.err, "qvr: a.pam: picture 2: there is a sample of 2000")) << result.err;
    EXPECT_EQ(folder.read("a.raw"), little_endian({1 << 6, 4 << 6, 5 << 6, 6 << 6}));
}

}  // namespace
