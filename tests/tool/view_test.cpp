// SPDX-License-Identifier: BSD-3-Clause
//
// Sheets are looked at pixel by pixel. Pictures begin 132 pixels from the top, 24 from each other, and stand in
// the middle of the width.
#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <cstring>

#include "boxes.h"
#include "clips.h"
#include "pictures.h"
#include "process.h"

namespace {

using rgb = std::array<int, 3>;

constexpr std::uint32_t k_top = 132;
constexpr std::uint32_t k_gap = 24;

rgb pixel_at(const test_picture& sheet, std::uint32_t x, std::uint32_t y) {
    const std::size_t at = (std::size_t{y} * sheet.width + x) * 3;
    return {sheet.samples.at(at), sheet.samples.at(at + 1), sheet.samples.at(at + 2)};
}

// Right of the line around the first picture.
std::uint32_t left_of(const test_picture& sheet) {
    std::uint32_t x = 0;
    while (x < sheet.width && pixel_at(sheet, x, k_top - 1) != rgb{71, 71, 71}) {
        ++x;
    }
    return x + 1;
}

void expect_near(const rgb& found, const rgb& wanted, const std::string& what) {
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(found[i], wanted[i], 1) << what << ", channel " << i;
    }
}

class view : public testing::Test {
  protected:
    void encode(const std::string& size, const std::string& order, const std::string& type, const bytes& raw,
                const std::vector<std::string>& more = {}) {
        std::vector<std::string> arguments = {"encode",  "-",   "a.qvr",  "--size", size,
                                              "--order", order, "--type", type,     "-q"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const outcome made = folder.qvr(arguments, raw);
        ASSERT_EQ(made.code, 0) << made.err;
    }

    test_picture sheet(const std::vector<std::string>& options = {"--full"}) {
        std::vector<std::string> arguments = {"view", "a.qvr", "-o", "sheet.png", "-q"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const outcome made = folder.qvr(arguments);
        EXPECT_EQ(made.code, 0) << made.err;
        EXPECT_EQ(made.err, "");
        const test_picture read = read_picture(folder.file("sheet.png"));
        EXPECT_EQ(read.depth, 8);
        EXPECT_EQ(read.kind, colours::rgb);
        return read;
    }

    // The pixel of a frame that is shown in full size, `pane` pictures of `width` to the right.
    static rgb shown(const test_picture& sheet, std::uint32_t x, std::uint32_t y, std::uint32_t pane = 0,
                     std::uint32_t width = 0) {
        return pixel_at(sheet, left_of(sheet) + pane * (width + k_gap) + x, k_top + y);
    }

    void expect_refused(int code, const std::vector<std::string>& options, const std::string& message) {
        std::vector<std::string> arguments = {"view", "a.qvr", "-o", "none.png"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const outcome result = folder.qvr(arguments);
        EXPECT_EQ(result.code, code) << result.err;
        EXPECT_TRUE(holds(result.err, message)) << result.err;
        EXPECT_FALSE(folder.has("none.png"));
    }

    const scratch_folder folder;
};

struct bar {
    const char* name;
    std::array<std::uint8_t, 3> ycbcr;
    rgb wanted;
};

using bars = std::vector<bar>;

// A bar of 75 %, as the recommendations define it: code 191 of 255 in the primaries that it has.
const bars k_709_limited = {{"white", {180, 128, 128}, {191, 191, 191}}, {"yellow", {168, 44, 136}, {191, 191, 0}},
                            {"cyan", {145, 147, 44}, {0, 191, 191}},     {"green", {133, 63, 52}, {0, 191, 0}},
                            {"magenta", {63, 193, 204}, {191, 0, 191}},  {"red", {51, 109, 212}, {191, 0, 0}},
                            {"blue", {28, 212, 120}, {0, 0, 191}},       {"black", {16, 128, 128}, {0, 0, 0}}};
const bars k_601_limited = {{"white", {180, 128, 128}, {191, 191, 191}}, {"yellow", {162, 44, 142}, {191, 191, 0}},
                            {"cyan", {131, 156, 44}, {0, 191, 191}},     {"green", {112, 72, 58}, {0, 191, 0}},
                            {"magenta", {84, 184, 198}, {191, 0, 191}},  {"red", {65, 100, 212}, {191, 0, 0}},
                            {"blue", {35, 212, 114}, {0, 0, 191}}};
const bars k_601_full = {{"yellow", {169, 33, 144}, {191, 191, 0}},
                         {"red", {57, 96, 223}, {191, 0, 0}},
                         {"blue", {22, 223, 112}, {0, 0, 191}},
                         {"white", {255, 128, 128}, {255, 255, 255}}};
const bars k_709_full = {{"red", {41, 106, 223}, {191, 0, 0}}, {"black", {0, 128, 128}, {0, 0, 0}}};
const bars k_2020_limited = {{"green", {127, 67, 51}, {0, 191, 0}}, {"white", {235, 128, 128}, {255, 255, 255}}};

// Two pixels of each bar, Cb Y Cr Y, each sample of 8 bits at the top of `size` bytes.
bytes uyvy(const bars& of, std::size_t size) {
    bytes raw;
    for (const bar& one : of) {
        for (const std::size_t i : {1u, 0u, 2u, 0u}) {
            raw.resize(raw.size() + size - 1);
            raw.push_back(one.ycbcr[i]);
        }
    }
    return raw;
}

void expect_bars(const test_picture& sheet, const bars& of) {
    for (std::uint32_t i = 0; i < of.size(); ++i) {
        for (const std::uint32_t x : {2 * i, 2 * i + 1}) {
            expect_near(pixel_at(sheet, left_of(sheet) + x, k_top), of[i].wanted, of[i].name);
        }
    }
}

TEST_F(view, bars_have_their_colours_by_rec_709_in_limited_range) {
    for (const char* type : {"U8", "U10", "U12", "U16"}) {
        encode("16x1", "UYVY", type, uyvy(k_709_limited, std::strcmp(type, "U8") == 0 ? 1 : 2));
        expect_bars(sheet(), k_709_limited);
    }
}

TEST_F(view, matrix_and_range_are_options) {
    const struct {
        const bars& of;
        std::vector<std::string> options;
    } cases[] = {{k_601_limited, {"--matrix", "bt601"}},
                 {k_601_full, {"--matrix", "BT601", "--range", "full"}},
                 {k_709_full, {"--range", "full"}},
                 {k_2020_limited, {"--matrix", "bt2020", "--range", "limited"}}};
    for (const auto& wanted : cases) {
        encode(std::to_string(2 * wanted.of.size()) + "x1", "UYVY", "U8", uyvy(wanted.of, 1));
        std::vector<std::string> options = wanted.options;
        options.push_back("--full");
        expect_bars(sheet(options), wanted.of);
    }
}

TEST_F(view, chroma_of_4_2_0_belongs_to_four_pixels) {
    // 4x2: red on the left, blue on the right.
    encode("4x2", "I420", "U8", {51, 51, 28, 28, 51, 51, 28, 28, 109, 212, 212, 120});
    const test_picture found = sheet();
    for (const std::uint32_t y : {0u, 1u}) {
        for (const std::uint32_t x : {0u, 1u}) {
            expect_near(shown(found, x, y), {191, 0, 0}, "red");
            expect_near(shown(found, x + 2, y), {0, 0, 191}, "blue");
        }
    }
}

TEST_F(view, the_order_of_4_4_4_samples_is_an_option) {
    const struct {
        const char* order;
        bytes red;
    } cases[] = {{"YCbCr", {51, 109, 212}}, {"YCrCb", {51, 212, 109}}, {"CbYCr", {109, 51, 212}},
                 {"CrYCb", {212, 51, 109}}, {"CbCrY", {109, 212, 51}}, {"crcby", {212, 109, 51}}};
    for (const auto& wanted : cases) {
        encode("1x1", "YUV444", "U8", wanted.red);
        expect_near(shown(sheet({"--full", "--yuv444-order", wanted.order}), 0, 0), {191, 0, 0}, wanted.order);
    }
    encode("1x1", "YUV444", "U8", {51, 109, 212});
    expect_near(shown(sheet(), 0, 0), {191, 0, 0}, "default");
    encode("1x1", "YUVA444", "U8", {51, 109, 212, 255});
    expect_near(shown(sheet(), 0, 0), {191, 0, 0}, "with alpha");
}

bytes words(const std::vector<unsigned>& of) {
    bytes raw;
    for (const unsigned word : of) {
        raw.push_back(static_cast<std::uint8_t>(word));
        raw.push_back(static_cast<std::uint8_t>(word >> 8));
    }
    return raw;
}

TEST_F(view, integers_are_read_from_the_top_of_their_words) {
    // 1023 and 512 of 1023, 4095 and 2048 of 4095, 65535 and 32768 of 65535
    encode("1x1", "RGB", "U10", words({1023 << 6, 512 << 6, 0}));
    EXPECT_EQ(shown(sheet(), 0, 0), (rgb{255, 128, 0}));
    encode("1x1", "RGB", "U12", words({4095 << 4, 2048 << 4, 0}));
    EXPECT_EQ(shown(sheet(), 0, 0), (rgb{255, 128, 0}));
    encode("1x1", "RGB", "U16", words({65535, 32768, 257}));
    EXPECT_EQ(shown(sheet(), 0, 0), (rgb{255, 128, 1}));
    encode("1x1", "BGR", "U8", {10, 20, 30});
    EXPECT_EQ(shown(sheet(), 0, 0), (rgb{30, 20, 10}));
    encode("1x1", "RGB", "U8", {235, 16, 126});  // (126 - 16) / 219 * 255 = 128.1
    EXPECT_EQ(shown(sheet({"--full", "--range", "limited"}), 0, 0), (rgb{255, 0, 128}));
}

TEST_F(view, floating_and_fixed_point_are_linear_light_unless_told_otherwise) {
    // One half as light is 0.7354 for a screen. Values outside are clipped, and what is no number is black.
    const std::vector<std::string> display = {"--full", "--transfer", "display"};
    encode("2x1", "RGB", "Half", words({0x3800, 0x3C00, 0, 0x7E00, 0x4000, 0xBC00}));
    EXPECT_EQ(shown(sheet(), 0, 0), (rgb{188, 255, 0}));
    EXPECT_EQ(shown(sheet(), 1, 0), (rgb{0, 255, 0}));
    EXPECT_EQ(shown(sheet(display), 0, 0), (rgb{128, 255, 0}));
    encode("1x1", "RGB", "Fixed16", words({8192, 16384, 0xC000}));
    EXPECT_EQ(shown(sheet(), 0, 0), (rgb{188, 255, 0}));
    encode("1x1", "RGB", "Float", {0, 0, 0, 0x3F, 0, 0, 0x80, 0x3E, 0, 0, 0x80, 0x7F});  // 0.5, 0.25, infinite
    EXPECT_EQ(shown(sheet(), 0, 0), (rgb{188, 137, 255}));
    EXPECT_EQ(shown(sheet(display), 0, 0), (rgb{128, 64, 255}));
    encode("2x1", "UYVY", "Half", words({0, 0x3800, 0, 0x3C00}));  // chroma around 0, ready for a screen
    EXPECT_EQ(shown(sheet(), 0, 0), (rgb{128, 128, 128}));
    EXPECT_EQ(shown(sheet(), 1, 0), (rgb{255, 255, 255}));
    encode("1x1", "RGB", "U8", {128, 255, 0});  // 0.5020 as light is 0.7366 for a screen
    EXPECT_EQ(shown(sheet({"--full", "--transfer", "linear"}), 0, 0), (rgb{188, 255, 0}));
}

TEST_F(view, alpha_is_shown_as_a_matte_and_over_a_checkerboard) {
    bytes raw;
    for (int i = 0; i < 16; ++i) {
        raw.insert(raw.end(), {200, 100, 50, static_cast<std::uint8_t>(i % 2 == 0 ? 128 : 0)});
    }
    encode("16x1", "RGBA", "U8", raw, {"--alpha-rle"});
    const test_picture straight = sheet();
    EXPECT_EQ(shown(straight, 0, 0), (rgb{200, 100, 50}));
    EXPECT_EQ(shown(straight, 1, 0), (rgb{200, 100, 50}));
    EXPECT_EQ(shown(straight, 0, 0, 1, 16), (rgb{128, 128, 128}));
    EXPECT_EQ(shown(straight, 1, 0, 1, 16), (rgb{0, 0, 0}));
    // Squares of 8 pixels, 153 and 102: 200 * 128/255 + 153 * 127/255 = 176.6 and so on.
    EXPECT_EQ(shown(straight, 0, 0, 2, 16), (rgb{177, 126, 101}));
    EXPECT_EQ(shown(straight, 8, 0, 2, 16), (rgb{151, 101, 76}));
    EXPECT_EQ(shown(straight, 7, 0, 2, 16), (rgb{153, 153, 153}));
    EXPECT_EQ(shown(straight, 9, 0, 2, 16), (rgb{102, 102, 102}));
    const test_picture premultiplied = sheet({"--full", "--alpha", "premultiplied"});
    EXPECT_EQ(shown(premultiplied, 0, 0, 2, 16), (rgb{255, 176, 126}));
    EXPECT_EQ(shown(premultiplied, 8, 0, 2, 16), (rgb{251, 151, 101}));
}

TEST_F(view, every_order_with_alpha_shows_the_same) {
    // One red pixel pair with alpha 64, opaque white beside it; 16 bits as well.
    const struct {
        const char* order;
        bytes raw;
    } cases[] = {{"UYAVYA", {109, 51, 64, 212, 51, 64}},
                 {"UYVY+A", {109, 51, 212, 51, 64, 64}},
                 {"YUY2+A", {51, 109, 51, 212, 64, 64}},
                 {"A420", {51, 51, 51, 51, 109, 212, 64, 64, 64, 64}},
                 {"YUVA444", {51, 109, 212, 64, 51, 109, 212, 64}}};
    for (const auto& wanted : cases) {
        for (const char* type : {"U8", "U16"}) {
            bytes raw;
            for (const std::uint8_t sample : wanted.raw) {
                raw.resize(raw.size() + (std::strcmp(type, "U16") == 0 ? 1 : 0));
                raw.push_back(sample);
            }
            encode(std::strcmp(wanted.order, "A420") == 0 ? "2x2" : "2x1", wanted.order, type, raw);
            const test_picture found = sheet();
            for (const std::uint32_t x : {0u, 1u}) {
                expect_near(shown(found, x, 0), {191, 0, 0}, wanted.order);
                expect_near(shown(found, x, 0, 1, 2), {64, 64, 64}, wanted.order);
            }
        }
    }
}

TEST_F(view, planes_can_be_shown_alone_as_their_codes) {
    encode("4x2", "A420", "U8", {1, 2, 3, 4, 5, 6, 7, 8, 100, 101, 200, 201, 255, 0, 50, 60, 70, 80, 90, 99});
    const struct {
        const char* plane;
        std::uint32_t x, y;
        int code;
    } cases[] = {{"0", 3, 0, 4},   {"0", 0, 1, 5},   {"1", 0, 0, 100}, {"1", 1, 0, 101},
                 {"2", 1, 0, 201}, {"3", 0, 0, 255}, {"3", 3, 1, 99}};
    for (const auto& wanted : cases) {
        const test_picture found = sheet({"--plane", wanted.plane, "--full"});
        EXPECT_EQ(shown(found, wanted.x, wanted.y), (rgb{wanted.code, wanted.code, wanted.code})) << wanted.plane;
    }
    encode("1x1", "RGBA", "U8", {1, 2, 3, 77});
    EXPECT_EQ(shown(sheet({"--plane", "0", "--full"}), 0, 0), (rgb{1, 2, 3}));
    EXPECT_EQ(shown(sheet({"--plane", "1", "--full"}), 0, 0), (rgb{77, 77, 77}));
    expect_refused(2, {"--plane", "2"}, "there is no plane 2 in the frame");
}

TEST_F(view, large_frames_are_averaged_and_small_ones_enlarged) {
    encode("3x2", "RGB", "U8", {0, 0, 0, 255, 255, 255, 9, 8, 7, 255, 0, 0, 0, 0, 255, 11, 10, 9});
    const test_picture half = sheet({"--scale", "1/2"});
    EXPECT_EQ(shown(half, 0, 0), (rgb{128, 64, 128}));  // 127.5 63.75 127.5
    EXPECT_EQ(shown(half, 1, 0), (rgb{10, 9, 8}));      // two pixels only
    const test_picture large = sheet({"--scale", "5"});
    EXPECT_EQ(shown(large, 4, 4), (rgb{0, 0, 0}));
    EXPECT_EQ(shown(large, 5, 4), (rgb{255, 255, 255}));
    EXPECT_EQ(shown(large, 14, 9), (rgb{11, 10, 9}));
    const test_picture fitting = sheet({});  // by 64
    EXPECT_EQ(shown(fitting, 63, 63), (rgb{0, 0, 0}));
    EXPECT_EQ(shown(fitting, 64, 63), (rgb{255, 255, 255}));
    EXPECT_EQ(shown(fitting, 191, 127), (rgb{11, 10, 9}));
}

TEST_F(view, the_sheet_is_as_large_as_its_pictures_and_its_strip) {
    // The strip has a title and seven rows of 24 pixels, 20 around them: 132 + 300 + 24 + 232 + 32.
    encode("1500x300", "RGB", "U8", bytes(1500 * 300 * 3, 80));
    test_picture found = sheet();
    EXPECT_EQ(found.width, 1564u);
    EXPECT_EQ(found.height, 720u);
    EXPECT_EQ(shown(found, 1499, 299), (rgb{80, 80, 80}));
    EXPECT_NE(shown(found, 1500, 299), (rgb{80, 80, 80}));
    found = sheet({});  // 1280 at the most: a half
    EXPECT_EQ(found.width, 1344u);
    EXPECT_EQ(left_of(found), 297u);  // a picture of 750 in the middle
    EXPECT_EQ(found.height, 570u);
    // Three pictures of 640 at the most: a third of 1500 each.
    encode("1500x300", "RGBA", "U8", bytes(1500 * 300 * 4, 80));
    found = sheet({});
    EXPECT_EQ(found.width, 1612u);
    EXPECT_EQ(left_of(found), 32u);
    EXPECT_EQ(found.height, 520u);
}

TEST_F(view, one_frame_of_many_is_chosen) {
    encode("1x1", "RGB", "U8", {1, 1, 1, 2, 2, 2, 3, 3, 3});
    EXPECT_EQ(shown(sheet(), 0, 0), (rgb{1, 1, 1}));
    EXPECT_EQ(shown(sheet({"--full", "--frame", "2"}), 0, 0), (rgb{3, 3, 3}));
    expect_refused(2, {"--frame", "3"}, "there is no frame 3: the file holds 3, counted from 0");
}

TEST_F(view, a_lone_matte_is_shown_as_one) {
    encode("2x1", "Alpha", "U16", words({65535, 257 * 40}));
    const test_picture found = sheet();
    EXPECT_EQ(shown(found, 0, 0), (rgb{255, 255, 255}));
    EXPECT_EQ(shown(found, 1, 0), (rgb{40, 40, 40}));
}

// The colour of a weight's bar somewhere in the strip.
bool has_colour(const test_picture& sheet, const rgb& wanted) {
    for (std::size_t at = 0; at + 2 < sheet.samples.size(); at += 3) {
        if (rgb{sheet.samples[at], sheet.samples[at + 1], sheet.samples[at + 2]} == wanted) {
            return true;
        }
    }
    return false;
}

constexpr rgb k_payload_bar = {168, 130, 204};
constexpr rgb k_alpha_bar = {232, 181, 87};

TEST_F(view, beside_a_wrapped_frame_its_matte_is_shown) {
    folder.write("frame.bin", qcx_frame(1301, 4, 2));
    folder.write("matte.raw", {0, 50, 100, 255, 1, 2, 3, 4});
    const outcome made = folder.qvr(
        {"wrap", "--qcx", "frame.bin", "--alpha", "matte.raw", "--size", "4x2", "--type", "U8", "a.qvr", "-q"});
    ASSERT_EQ(made.code, 0) << made.err;
    const test_picture found = sheet();
    EXPECT_EQ(shown(found, 1, 0, 1, 1252), (rgb{50, 50, 50}));  // behind a card that fills 1280
    EXPECT_EQ(shown(found, 3, 1, 1, 1252), (rgb{4, 4, 4}));
    EXPECT_EQ(left_of(found), 32u);
    EXPECT_TRUE(has_colour(found, k_payload_bar));
    EXPECT_TRUE(has_colour(found, k_alpha_bar));
}

TEST_F(view, stitched_chunks_are_weighed) {
    folder.write("a.bin", noise(500));
    const outcome made = folder.qvr({"wrap", "--tiles", "a.bin", "a.bin", "--size", "8x4", "a.qvr", "-q"});
    ASSERT_EQ(made.code, 0) << made.err;
    const test_picture found = sheet({});
    EXPECT_TRUE(has_colour(found, k_payload_bar));
    EXPECT_FALSE(has_colour(found, k_alpha_bar));
    expect_refused(2, {"--plane", "0"}, "plane 0 holds chunks of another codec");
}

TEST_F(view, very_many_chunks_do_not_make_a_very_long_strip) {
    bytes chunks;
    append_box(chunks, "stch", {});
    for (int i = 0; i < 1500; ++i) {
        append_box(chunks, "tile", {});
    }
    bytes content;
    append_box(content, "sinf", plane_payload(8, 4, "stch"));
    append_box(content, "sdat", chunks);
    folder.write("a.qvr", packed(content));
    // A title and fourteen rows: 132 + 270 + 24 + 400 + 32.
    EXPECT_EQ(sheet({}).height, 858u);
}

TEST_F(view, frames_that_no_writer_makes_are_shown_or_refused) {
    // A 4:2:2 row of odd width ends in a Cr more.
    bytes content;
    append_box(content, "sinf", plane_payload(3, 2, "y208"));
    append_box(content, "sdat", {128, 180, 128, 180, 109, 51, 212, 128, 180, 128, 16, 212, 28, 120});
    folder.write("a.qvr", packed(content));
    const test_picture odd = sheet();
    expect_near(shown(odd, 2, 0), {191, 0, 0}, "odd width");
    expect_near(shown(odd, 1, 1), {0, 0, 0}, "odd width");
    expect_near(shown(odd, 2, 1), {0, 0, 191}, "odd width");
    content.clear();
    append_box(content, "sinf", plane_payload(1, 1, "y208"));
    append_box(content, "sdat", {128, 180, 128});
    folder.write("a.qvr", packed(content));
    expect_near(shown(sheet(), 0, 0), {191, 191, 191}, "one pixel");
    content.clear();
    append_box(content, "sinf", plane_payload(0, 4, "rg08"));
    append_box(content, "sdat", {});
    folder.write("a.qvr", packed(content));
    expect_refused(2, {}, "a frame without pixels cannot be shown");
}

TEST_F(view, what_cannot_be_shown_leaves_no_file) {
    folder.write("a.qvr", {});
    expect_refused(1, {}, "there is no frame in it: the file is empty");
    folder.write("a.qvr", bytes(20, 7));
    expect_refused(1, {}, "a 'pack' box should begin here");
    encode("20x20", "RGB", "U8", bytes(1200));
    expect_refused(2, {"--scale", "0"}, "--scale 0: this is not a scale");
    expect_refused(2, {"--scale", "1/2x"}, "--scale 1/2x: this is not a scale");
    expect_refused(2, {"--scale", "257"}, "--scale 257: this is not a scale");
    expect_refused(2, {"--scale", "2", "--full"}, "--scale excludes --full");
    expect_refused(2, {"--matrix", "bt470"}, "--matrix: bt470 not in {bt601,bt709,bt2020}");
    encode("40000x1", "RGB", "U8", bytes(120000));
    expect_refused(2, {"--full"}, "too large for a sheet at this scale");
    encode("20000x1", "RGBA", "U8", bytes(80000));
    expect_refused(2, {"--full"}, "the sheet would have 60112x");
}

TEST_F(view, the_sheet_can_go_to_standard_output) {
    encode("1x1", "RGB", "U8", {1, 2, 3});
    const outcome result = folder.qvr({"view", "-", "-o", "-"}, folder.read("a.qvr"));
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(result.out.substr(1, 3), "PNG");
}

TEST_F(view, what_was_drawn_is_said) {
    encode("1x1", "RGB", "U8", {1, 2, 3, 4, 5, 6});
    const outcome result = folder.qvr({"view", "a.qvr", "-o", "sheet.png", "--frame", "1"});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.err, "sheet.png: a.qvr, frame 1, 40 bytes at offset 40\n");
    EXPECT_EQ(result.out, "");
}

TEST_F(view, names_that_are_no_utf_8_do_no_harm) {
    encode("1x1", "RGB", "U8", {1, 2, 3});
    const std::string name = "b\xFF\xC3.qvr";
    folder.write(name, folder.read("a.qvr"));
    const outcome result = folder.qvr({"view", name, "-o", "sheet.png"});
    EXPECT_EQ(result.code, 0) << result.err;
}

}  // namespace
