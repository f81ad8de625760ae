// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <algorithm>

#include "clips.h"
#include "process.h"
#include "streams.h"

namespace {

bytes le32(std::uint32_t value) {
    bytes made(4);
    put_le32(made, 0, value);
    return made;
}

bytes attribute(const std::string& name, const std::string& type, const bytes& value) {
    return joined({text(name), {0}, text(type), {0}, le32(static_cast<std::uint32_t>(value.size())), value});
}

constexpr std::uint32_t k_uint = 0;
constexpr std::uint32_t k_half = 1;
constexpr std::uint32_t k_float = 2;

struct exr_channel {
    std::string name;
    std::uint32_t type;
    std::vector<bytes> rows;  // of all samples of the channel
    std::uint32_t sampling = 1;
};

// An uncompressed picture of 2 pixels a row, put together byte by byte. Channels must be given in alphabetical order.
bytes exr_file(const std::vector<exr_channel>& channels, std::uint32_t display_width = 2) {
    bytes list;
    for (const exr_channel& channel : channels) {
        list = joined({list,
                       text(channel.name),
                       {0},
                       le32(channel.type),
                       {0, 0, 0, 0},
                       le32(channel.sampling),
                       le32(channel.sampling)});
    }
    const auto height = static_cast<std::uint32_t>(channels.front().rows.size());
    const bytes window = joined({le32(0), le32(0), le32(1), le32(height - 1)});
    bytes file = joined(
        {{0x76, 0x2F, 0x31, 0x01, 2, 0, 0, 0},
         attribute("channels", "chlist", joined({list, {0}})),
         attribute("compression", "compression", {0}),
         attribute("dataWindow", "box2i", window),
         attribute("displayWindow", "box2i", joined({le32(0), le32(0), le32(display_width - 1), le32(height - 1)})),
         attribute("lineOrder", "lineOrder", {0}),
         attribute("pixelAspectRatio", "float", {0, 0, 0x80, 0x3F}),
         attribute("screenWindowCenter", "v2f", bytes(8)),
         attribute("screenWindowWidth", "float", {0, 0, 0x80, 0x3F}),
         {0}});
    bytes offsets;
    bytes lines;
    const std::size_t start = file.size() + std::size_t{8} * height;
    for (std::uint32_t y = 0; y < height; ++y) {
        offsets = joined({offsets, le32(static_cast<std::uint32_t>(start + lines.size())), le32(0)});
        bytes line;
        for (const exr_channel& channel : channels) {
            line = joined({line, channel.rows[y]});
        }
        lines = joined({lines, le32(y), le32(static_cast<std::uint32_t>(line.size())), line});
    }
    return joined({file, offsets, lines});
}

// Halves: 0x3C00 is 1, 0x3800 0.5, 0xC000 -2, 0x7C00 infinity, 0x0001 the smallest, 0x7E01 not a number.
bytes half_rgb() {
    return exr_file({{"B", k_half, {little_endian({0x3C00, 0x3800}), little_endian({0x0001, 0x7E01})}},
                     {"G", k_half, {little_endian({0xC000, 0x7C00}), little_endian({0x1111, 0x2222})}},
                     {"R", k_half, {little_endian({0x0000, 0x8000}), little_endian({0x3333, 0x4444})}}});
}

const bytes k_half_samples =
    little_endian({0x0000, 0xC000, 0x3C00, 0x8000, 0x7C00, 0x3800, 0x3333, 0x1111, 0x0001, 0x4444, 0x2222, 0x7E01});

bytes float_rgba() {
    return exr_file({{"A", k_float, {joined({le32(0x3F800000), le32(0x3F000000)})}},
                     {"B", k_float, {joined({le32(1), le32(2)})}},
                     {"G", k_float, {joined({le32(0xC0490FDB), le32(0x7F800000)})}},
                     {"R", k_float, {joined({le32(0x80000000), le32(0x40490FDB)})}}});
}

TEST(exr, half_pictures_come_back_to_the_bit) {
    const scratch_folder folder;
    folder.write("a.exr", half_rgb());
    expect_silent(folder, {"encode", "a.exr", "a.qvr"});
    const outcome raw = folder.qvr({"decode", "a.qvr", "a.raw"});
    EXPECT_TRUE(holds(raw.err, "2x2 progressive, order 5 RGB, type 6 Half")) << raw.err;
    EXPECT_EQ(folder.read("a.raw"), k_half_samples);
    expect_silent(folder, {"decode", "a.qvr", "b.exr"});
    expect_silent(folder, {"convert", "b.exr", "b.raw"});
    EXPECT_EQ(folder.read("b.raw"), k_half_samples);
    const bytes made = folder.read("b.exr");
    const std::string header(made.begin(), made.begin() + 200);
    EXPECT_TRUE(holds(header, std::string("channels\0chlist\0", 16)));
    EXPECT_FALSE(holds(header, std::string("A\0\1", 3)));
}

TEST(exr, float_pictures_with_alpha_keep_it_only_outside_of_qvr_files) {
    const scratch_folder folder;
    folder.write("a.exr", float_rgba());
    const bytes samples = joined({le32(0x80000000), le32(0xC0490FDB), le32(1), le32(0x3F800000), le32(0x40490FDB),
                                  le32(0x7F800000), le32(2), le32(0x3F000000)});
    expect_silent(folder, {"convert", "a.exr", "a.raw"});
    EXPECT_EQ(folder.read("a.raw"), samples);
    expect_silent(folder, {"convert", "a.exr", "b.exr"});
    expect_silent(folder, {"convert", "b.exr", "b.raw"});
    EXPECT_EQ(folder.read("b.raw"), samples);
    EXPECT_EQ(folder.qvr({"encode", "a.exr", "a.qvr", "-q"}).err,
              "qvr: warning: a.exr: alpha is left out: type 7 Float stores none, only U8 and U16 do\n");
    EXPECT_EQ(folder.qvr({"convert", "a.exr", "b.qvr", "-q"}).err,
              "qvr: warning: b.qvr: alpha is left out: type 7 Float stores none, only U8 and U16 do\n");
    expect_silent(folder, {"decode", "a.qvr", "c.raw"});
    EXPECT_EQ(folder.read("c.raw"),
              joined({le32(0x80000000), le32(0xC0490FDB), le32(1), le32(0x40490FDB), le32(0x7F800000), le32(2)}));
    for (const char* command : {"encode", "convert"}) {
        expect_failure(folder, {command, "a.exr", "c.qvr", "--strict"}, 2,
                       "alpha is left out: type 7 Float stores none", "leave --strict out to go on without it");
    }
}

TEST(exr, pictures_of_both_precisions_become_single_ones) {
    const scratch_folder folder;
    folder.write("a.exr", exr_file({{"B", k_half, {little_endian({0x3C00, 0x3800})}},
                                    {"G", k_float, {joined({le32(5), le32(6)})}},
                                    {"R", k_half, {little_endian({0xC000, 0})}}}));
    expect_silent(folder, {"convert", "a.exr", "a.raw"});
    EXPECT_EQ(folder.read("a.raw"),
              joined({le32(0xC0000000), le32(5), le32(0x3F800000), le32(0), le32(6), le32(0x3F000000)}));
}

TEST(exr, luminance_alone_becomes_three_equal_samples) {
    const scratch_folder folder;
    folder.write("a.exr", exr_file({{"Y", k_half, {little_endian({0x3C00, 0x3800})}}}));
    expect_silent(folder, {"convert", "a.exr", "a.raw"});
    EXPECT_EQ(folder.read("a.raw"), little_endian({0x3C00, 0x3C00, 0x3C00, 0x3800, 0x3800, 0x3800}));
    expect_silent(folder, {"convert", "a.exr", "b.raw", "--order", "RGBA"});
    EXPECT_EQ(folder.read("b.raw"), little_endian({0x3C00, 0x3C00, 0x3C00, 0x3C00, 0x3800, 0x3800, 0x3800, 0x3C00}));
}

TEST(exr, what_no_frame_has_is_said) {
    const bytes row = little_endian({1, 2});
    const scratch_folder folder;
    folder.write("a.exr",
                 exr_file({{"B", k_half, {row}}, {"G", k_half, {row}}, {"R", k_half, {row}}, {"Z", k_half, {row}}}));
    EXPECT_EQ(folder.qvr({"encode", "a.exr", "a.qvr", "-q"}).err, "qvr: warning: a.exr: its channel Z is left out\n");
    expect_failure(folder, {"encode", "a.exr", "b.qvr", "--strict"}, 2, "its channel Z is left out",
                   "leave --strict out");
    folder.write("b.exr", exr_file({{"B", k_half, {row}}, {"G", k_half, {row}}, {"R", k_half, {row}}}, 3));
    EXPECT_EQ(folder.qvr({"encode", "b.exr", "b.qvr", "-q"}).err,
              "qvr: warning: b.exr: its display window is left out: the frame is its data window\n");
}

TEST(exr, channels_that_no_frame_can_be_made_of_are_refused) {
    const bytes row = little_endian({1, 2});
    const scratch_folder folder;
    folder.write("a.exr", exr_file({{"Z", k_half, {row}}}));
    expect_failure(folder, {"encode", "a.exr", "a.qvr"}, 2, "a.exr: it has neither the channels R, G and B nor Y",
                   "write one layer with plain channel names");
    folder.write("b.exr", exr_file({{"Y", k_uint, {joined({le32(1), le32(2)})}}}));
    expect_failure(folder, {"encode", "b.exr", "b.qvr"}, 2, "b.exr: its channel Y holds integers or is subsampled",
                   "write all channels as half or float");
}

TEST(exr, only_floating_point_goes_into_it_and_fixed_point_as_such) {
    const scratch_folder folder;
    make_rgb_clip(folder, "rgb.qvr", 1);
    expect_failure(folder, {"decode", "rgb.qvr", "a.exr"}, 2,
                   "a.exr: type 1 U8 cannot be kept in an OpenEXR picture, which has half or single float",
                   "decode to raw frames: name the output without .exr");
    folder.write("fixed.raw", little_endian({0x4000, 0x2000, 0x8000}));  // 1, 0.5, -2
    ASSERT_EQ(folder.qvr({"encode", "fixed.raw", "f.qvr", "--size", "1x1", "--order", "RGB", "--type", "Fixed16"}).code,
              0);
    expect_silent(folder, {"decode", "f.qvr", "f.exr"});
    expect_silent(folder, {"convert", "f.exr", "f.raw"});
    EXPECT_EQ(folder.read("f.raw"), joined({le32(0x3F800000), le32(0x3F000000), le32(0xC0000000)}));
    expect_failure(folder, {"decode", "f.qvr", "f.png"}, 2, "f.png: type 214 Fixed16 cannot be kept in a PNG",
                   "decode to raw frames");
    expect_failure(folder, {"convert", "f.exr", "g.png"}, 2, "g.png: type 7 Float cannot be kept in a PNG",
                   "decode to raw frames");
}

TEST(exr, every_truncation_is_bad_data) {
    const scratch_folder folder;
    const bytes good = half_rgb();
    for (std::size_t size = 4; size < good.size(); size += 17) {
        folder.write("a.exr", bytes(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(size)));
        expect_failure(folder, {"encode", "a.exr", "a.qvr"}, 1,
                       "a.exr: cannot read the OpenEXR picture: ", "the file is damaged or was cut short");
    }
}

TEST(exr, damaged_bytes_never_end_it_by_a_signal) {
    const scratch_folder folder;
    const bytes good = float_rgba();
    for (std::size_t at = 4; at < good.size(); at += 11) {
        for (const std::uint8_t value : bytes{0x00, 0xFF}) {
            bytes bad = good;
            bad[at] = value;
            folder.write("a.exr", bad);
            const outcome result = folder.qvr({"convert", "a.exr", "a.raw", "-q"});
            EXPECT_EQ(result.signal_number, 0) << at;
            EXPECT_TRUE(result.code >= 0 && result.code <= 3) << at << " " << result.code << result.err;
            EXPECT_TRUE(result.code == 0 || result.err.find("qvr: ") == 0) << at << " " << result.err;
        }
    }
}

TEST(exr, it_can_come_from_a_pipe_and_go_into_one) {
    const scratch_folder folder;
    const outcome made = folder.qvr({"convert", "-", "-", "--to", "exr", "-q"}, half_rgb());
    EXPECT_EQ(made.code, 0) << made.err;
    const outcome raw = folder.qvr({"convert", "-", "-", "-q"}, bytes(made.out.begin(), made.out.end()));
    EXPECT_EQ(bytes(raw.out.begin(), raw.out.end()), k_half_samples);
}

TEST(exr, a_picture_asks_for_no_more_than_its_bytes_can_hold) {
    const scratch_folder folder;
    const std::vector<bytes> rows = {bytes(4), bytes(4)};
    bytes file = exr_file({{"B", k_half, rows}, {"G", k_half, rows}, {"R", k_half, rows}});
    const bytes name = joined({text("dataWindow"), {0}, text("box2i"), {0}, le32(16)});
    const auto at = std::search(file.begin(), file.end(), name.begin(), name.end());
    ASSERT_NE(at, file.end());
    put_le32(file, static_cast<std::size_t>(at - file.begin()) + name.size() + 8, 299999999);
    folder.write("a.exr", file);
    const outcome result = folder.qvr({"encode", "a.exr", "a.qvr"});
    EXPECT_EQ(result.code, 1);
    EXPECT_TRUE(holds(result.err, "the file is too small for a picture of the size that its header says"))
        << result.err;
}

}  // namespace
