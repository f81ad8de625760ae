// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <cctype>
#include <set>
#include <sstream>

#include "clips.h"
#include "process.h"

namespace {

std::string info_format(const scratch_folder& folder, const std::string& name) {
    std::istringstream lines(folder.qvr({"info", name}).out);
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind("  format  ", 0) == 0) {
            return line.substr(10);
        }
    }
    return {};
}

// 4x2 frames of every format fit into 16 bytes a pixel; the tool says how long one frame is when it gets too little.
outcome encode_named(const scratch_folder& folder, const std::vector<std::string>& format) {
    std::vector<std::string> arguments = {"encode", "-", "named.qvr", "--size", "4x2"};
    arguments.insert(arguments.end(), format.begin(), format.end());
    const outcome asked = folder.qvr(arguments, bytes(1));
    const std::size_t at = asked.err.find("a frame has ");
    if (at == std::string::npos) {
        return asked;
    }
    return folder.qvr(arguments, noise(std::stoul(asked.err.substr(at + 12))));
}

TEST(format_names, the_table_lists_all_orders_types_and_names) {
    const scratch_folder folder;
    const outcome result = folder.qvr({"formats"});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.err, "");
    for (const char* row : {"    1  YUY2, YUYV, YCbYCr ",
                            "    2  UYVY, CbYCrY ",
                            "    3  ARGB ",
                            "    4  BGRA ",
                            "    5  RGB ",
                            "    6  BGR ",
                            "    7  RGBA ",
                            "    8  ABGR ",
                            "    9  YUV444, YCbCr444 ",
                            "   10  I420, YUV420, Planar420 ",
                            "   11  UYAVYA, CbYACrYA ",
                            "   12  YUVA444, YCbCrA444 ",
                            "   13  A420, YUVA420, Planar420Alpha ",
                            "   14  Alpha, A, Matte ",
                            "   15  YUY2+A, YUYV+A, YCbYCrPlanarAlpha ",
                            "   16  UYVY+A, CbYCrYPlanarAlpha ",
                            "    1  U8, 8bit, uint8 ",
                            "    2  U16, 16bit, uint16 ",
                            "    3  U10, 10bit ",
                            "    4  U12, 12bit ",
                            "    5  U10Packed, packed10 ",
                            "    6  Half, f16, float16 ",
                            "    7  Float, f32, float32 ",
                            "  214  Fixed16, s1.14 ",
                            "  v210       2 UYVY     5 U10Packed ",
                            "  v216       2 UYVY     2 U16 "}) {
        EXPECT_TRUE(holds(result.out, row)) << row << "\n" << result.out;
    }
}

TEST(format_names, the_table_shows_106_pairs) {
    const scratch_folder folder;
    std::istringstream lines(folder.qvr({"formats"}).out);
    const std::set<std::string> types = {"1", "2", "3", "4", "5", "6", "7", "214"};
    int pairs = 0;
    for (std::string line; std::getline(lines, line) && line.rfind("Types:", 0) != 0;) {
        std::istringstream words(line.size() > 85 && std::isdigit(line[4]) ? line.substr(85) : "");
        for (std::string word; words >> word;) {
            pairs += types.count(word) > 0 ? 1 : 0;
        }
    }
    EXPECT_EQ(pairs, 106);
}

TEST(format_names, every_order_name_is_accepted_in_any_case) {
    const struct {
        const char* name;
        const char* read_back;
    } cases[] = {{"yuy2", "2 UYVY"},
                 {"YUYV", "2 UYVY"},
                 {"ycbycr", "2 UYVY"},
                 {"UyVy", "2 UYVY"},
                 {"CBYCRY", "2 UYVY"},
                 {"argb", "3 ARGB"},
                 {"bgra", "3 ARGB"},
                 {"rgb", "5 RGB"},
                 {"Bgr", "5 RGB"},
                 {"rgba", "3 ARGB"},
                 {"abgr", "3 ARGB"},
                 {"yuv444", "9 YUV444"},
                 {"YCbCr444", "9 YUV444"},
                 {"i420", "10 I420"},
                 {"planar420", "10 I420"},
                 {"yuv420", "10 I420"},
                 {"uyavya", "11 UYAVYA"},
                 {"cbyacrya", "11 UYAVYA"},
                 {"yuva444", "12 YUVA444"},
                 {"ycbcra444", "12 YUVA444"},
                 {"a420", "13 A420"},
                 {"yuva420", "13 A420"},
                 {"planar420alpha", "13 A420"},
                 {"alpha", "14 Alpha"},
                 {"a", "14 Alpha"},
                 {"matte", "14 Alpha"},
                 {"yuy2+a", "11 UYAVYA"},
                 {"yuyv+a", "11 UYAVYA"},
                 {"YCbYCrPlanarAlpha", "11 UYAVYA"},
                 {"uyvy+a", "11 UYAVYA"},
                 {"CbYCrYPlanarAlpha", "11 UYAVYA"}};
    const scratch_folder folder;
    for (const auto& wanted : cases) {
        const outcome result = encode_named(folder, {"--order", wanted.name, "--type", "1"});
        EXPECT_EQ(result.code, 0) << wanted.name << ": " << result.err;
        EXPECT_EQ(info_format(folder, "named.qvr"),
                  std::string("4x2 progressive, order ") + wanted.read_back + ", type 1 U8")
            << wanted.name;
    }
}

TEST(format_names, every_order_number_is_accepted) {
    const scratch_folder folder;
    for (int order = 1; order <= 16; ++order) {
        const outcome result = encode_named(folder, {"--order", std::to_string(order), "--type", "U16"});
        EXPECT_EQ(result.code, 0) << order << ": " << result.err;
        EXPECT_TRUE(holds(result.err, "order " + std::to_string(order) + " ")) << result.err;
    }
}

TEST(format_names, every_type_name_is_accepted_in_any_case) {
    const struct {
        const char* name;
        const char* read_back;
    } cases[] = {{"u8", "1 U8"},         {"8BIT", "1 U8"},           {"uint8", "1 U8"},
                 {"u16", "2 U16"},       {"16bit", "2 U16"},         {"UINT16", "2 U16"},
                 {"u10", "3 U10"},       {"10bit", "3 U10"},         {"u12", "4 U12"},
                 {"12Bit", "4 U12"},     {"half", "6 Half"},         {"f16", "6 Half"},
                 {"float16", "6 Half"},  {"FLOAT", "7 Float"},       {"f32", "7 Float"},
                 {"float32", "7 Float"}, {"fixed16", "214 Fixed16"}, {"S1.14", "214 Fixed16"},
                 {"214", "214 Fixed16"}};
    const scratch_folder folder;
    for (const auto& wanted : cases) {
        const outcome result = encode_named(folder, {"--order", "UYVY", "--type", wanted.name});
        EXPECT_EQ(result.code, 0) << wanted.name << ": " << result.err;
        EXPECT_EQ(info_format(folder, "named.qvr"),
                  std::string("4x2 progressive, order 2 UYVY, type ") + wanted.read_back)
            << wanted.name;
    }
}

TEST(format_names, names_of_whole_formats_say_the_type_too) {
    const struct {
        const char* name;
        const char* shown;
    } cases[] = {{"v210", "order 2 UYVY, type 5 U10Packed"}, {"V216", "order 2 UYVY, type 2 U16"},
                 {"rgb24", "order 5 RGB, type 1 U8"},        {"BGR24", "order 6 BGR, type 1 U8"},
                 {"rgb48", "order 5 RGB, type 2 U16"},       {"RGBA64", "order 7 RGBA, type 2 U16"}};
    const scratch_folder folder;
    for (const auto& wanted : cases) {
        const outcome result = encode_named(folder, {"--order", wanted.name});
        EXPECT_EQ(result.code, 0) << wanted.name << ": " << result.err;
        EXPECT_TRUE(holds(result.err, wanted.shown)) << result.err;
    }
    EXPECT_EQ(encode_named(folder, {"--order", "v210", "--type", "packed10"}).code, 0);
}

}  // namespace
