// SPDX-License-Identifier: BSD-3-Clause
//
// Files that are made to do harm: to end the program, to make it ask for all memory, to command the terminal.
#include <gtest/gtest.h>

#include "boxes.h"
#include "clips.h"
#include "coded_planes.h"
#include "pictures.h"
#include "process.h"
#include "streams.h"

namespace {

void expect_told(const scratch_folder& folder, int code, const std::vector<std::string>& arguments,
                 const std::string& told) {
    const outcome result = folder.qvr(arguments);
    EXPECT_EQ(result.code, code) << result.err;
    EXPECT_EQ(result.signal_number, 0);
    EXPECT_TRUE(holds(result.err, told)) << result.err;
}

void put_be32(bytes& in, std::size_t at, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i) {
        in[at + i] = static_cast<std::uint8_t>(value >> (24 - 8 * i));
    }
}

// Of the polynomial that PNG chunks are checked by, one bit at a time.
std::uint32_t checksum(const bytes& of, std::size_t from, std::size_t to) {
    std::uint32_t sum = 0xFFFFFFFF;
    for (std::size_t i = from; i < to; ++i) {
        sum ^= of[i];
        for (int bit = 0; bit < 8; ++bit) {
            sum = sum >> 1 ^ (sum % 2 != 0 ? 0xEDB88320 : 0);
        }
    }
    return ~sum;
}

TEST(hostile, a_plane_that_is_passed_over_is_not_shown) {
    bytes inside;
    append_box(inside, "sinf", plane_payload(1, 1, "rg08"));
    append_box(inside, "sdat", {1, 2, 3});
    append_box(inside, "sinf", plane_payload(1, 1, " a08"));
    append_box(inside, "sdat", {4});
    bytes content;
    append_box(content, "icmp", inside);
    const scratch_folder folder;
    folder.write("a.qvr", packed(content));
    expect_told(folder, 1, {"view", "a.qvr", "-o", "x.png", "--plane", "1"},
                "plane 1 is passed over, since it does not belong here");
    EXPECT_FALSE(folder.has("x.png"));
}

TEST(hostile, a_png_asks_for_no_more_than_its_bytes_can_hold) {
    const scratch_folder folder;
    write_picture(folder.file("a.png"), make_picture(colours::rgb, 8, 2, 2));
    bytes file = folder.read("a.png");
    put_be32(file, 16, 30000);
    put_be32(file, 20, 30000);
    put_be32(file, 29, checksum(file, 12, 29));
    folder.write("a.png", file);
    expect_told(
        folder, 1, {"encode", "a.png", "a.qvr"},
        "qvr: a.png: cannot read the PNG: the file is too small for a picture of the size that its header says");
    const outcome piped = folder.qvr({"encode", "-", "a.qvr"}, file);
    EXPECT_EQ(piped.code, 1);
    EXPECT_TRUE(holds(piped.err, "the file is too small for a picture of the size that its header says")) << piped.err;
}

TEST(hostile, black_pictures_are_not_too_small) {
    const scratch_folder folder;
    test_picture black = make_picture(colours::grey, 8, 2000, 2000);
    black.samples.assign(black.samples.size(), 0);
    write_picture(folder.file("a.png"), black);
    expect_silent(folder, {"encode", "a.png", "a.qvr"});
}

TEST(hostile, rows_that_no_slice_covers_are_not_decoded) {
    const scratch_folder folder;
    folder.write("a.qvr", coded_frame(60000, 60000, slice_table({}, {})));
    const std::string told = "cannot decode: the slices cover 0 of 60000 rows; the others cannot be known";
    expect_told(folder, 1, {"decode", "a.qvr", "a.raw"}, told);
    EXPECT_FALSE(folder.has("a.raw"));
    expect_told(folder, 1, {"view", "a.qvr", "-o", "a.png"}, told);
}

TEST(hostile, rows_beside_a_payload_that_no_slice_covers_are_not_decoded) {
    bytes content;
    append_box(content, "QCXF", qcx_frame(1301, 60000, 60000));
    append_box(content, "sinf", plane_payload(60000, 60000, "rl08"));
    append_box(content, "sdat", slice_table({}, {}));
    const scratch_folder folder;
    folder.write("a.qvr", packed(content));
    expect_told(folder, 1, {"unwrap", "a.qvr", "--into", "parts"},
                "the slices cover 0 of 60000 rows; the others cannot be known");
}

TEST(hostile, a_plane_that_is_passed_over_needs_no_slices) {
    bytes inside;
    append_box(inside, "sinf", plane_payload(1, 1, "rg08"));
    append_box(inside, "sdat", {1, 2, 3});
    append_box(inside, "sinf", plane_payload(1, 1, "rl08"));
    append_box(inside, "sdat", slice_table({}, {}));
    bytes content;
    append_box(content, "icmp", inside);
    const scratch_folder folder;
    folder.write("a.qvr", packed(content));
    expect_silent(folder, {"decode", "a.qvr", "a.raw"});
    EXPECT_EQ(folder.read("a.raw"), (bytes{1, 2, 3}));
}

TEST(hostile, words_of_a_file_do_not_command_the_terminal) {
    const scratch_folder folder;
    folder.write("a.y4m", text("YUV4MPEG2 W2 H2 F25:1 I\033[31mX Cmono\nFRAME\nabcd"));
    const outcome clip = folder.qvr({"encode", "a.y4m", "a.qvr"});
    EXPECT_TRUE(holds(clip.err, "\\x1B[31mX")) << clip.err;
    EXPECT_FALSE(holds(clip.err, "\033"));
    folder.write("a.ppm", text("P6\n\033[2J\x7F\xC2\x9B 1\n255\nabc"));
    const outcome picture = folder.qvr({"encode", "a.ppm", "a.qvr"});
    EXPECT_TRUE(holds(picture.err, "'\\x1B[2J\\x7F\\xC2\\x9B'")) << picture.err;
}

TEST(hostile, names_of_files_do_not_command_the_terminal) {
    const scratch_folder folder;
    expect_told(folder, 3, {"info", "a\033[2J\nb\xFF \xC3\xA4\xE2\x82\xAC.qvr"},
                "qvr: a\\x1B[2J\\x0Ab\\xFF \xC3\xA4\xE2\x82\xAC.qvr: cannot open it");
}

}  // namespace
