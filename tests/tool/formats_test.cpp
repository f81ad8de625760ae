// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "clips.h"
#include "process.h"
#include "streams.h"

namespace {

struct format_row {
    const char* name;
    unsigned order;
    unsigned type;
    std::size_t frame_bytes;  // of 12x2
};

// Written out by hand: what people know these names by.
constexpr format_row k_formats[] = {
    {"UYVY", 2, 1, 48},    {"2vuy", 2, 1, 48},    {"YUY2", 1, 1, 48},     {"YUYV", 1, 1, 48},   {"yuvs", 1, 1, 48},
    {"v210", 2, 5, 64},    {"v216", 2, 2, 96},    {"Y210", 1, 3, 96},     {"Y212", 1, 4, 96},   {"Y216", 1, 2, 96},
    {"UYAVYA", 11, 1, 72}, {"YUV444", 9, 1, 72},  {"YUVA444", 12, 1, 96}, {"I420", 10, 1, 36},  {"IYUV", 10, 1, 36},
    {"A420", 13, 1, 60},   {"GRAY8", 14, 1, 24},  {"GRAY16", 14, 2, 48},  {"RGB", 5, 1, 72},    {"RGB24", 5, 1, 72},
    {"RGB48", 5, 2, 144},  {"BGR", 6, 1, 72},     {"BGR24", 6, 1, 72},    {"BGR48", 6, 2, 144}, {"RGBA", 7, 1, 96},
    {"RGBA32", 7, 1, 96},  {"RGBA64", 7, 2, 192}, {"BGRA", 4, 1, 96},     {"BGRA32", 4, 1, 96}, {"BGRA64", 4, 2, 192},
    {"ARGB", 3, 1, 96},    {"ARGB32", 3, 1, 96},  {"ARGB64", 3, 2, 192},  {"ABGR", 8, 1, 96},   {"ABGR32", 8, 1, 96},
    {"ABGR64", 8, 2, 192}};

nlohmann::json formats_document() {
    const scratch_folder folder;
    const outcome result = folder.qvr({"formats", "--json"});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(std::count(result.out.begin(), result.out.end(), '\n'), 1);
    return nlohmann::json::parse(result.out);
}

TEST(formats, each_name_says_order_and_type) {
    const scratch_folder folder;
    for (const format_row& row : k_formats) {
        SCOPED_TRACE(row.name);
        const outcome result =
            folder.qvr({"encode", "-", "a.qvr", "--size", "12x2", "--format", row.name}, bytes(row.frame_bytes));
        EXPECT_EQ(result.code, 0) << result.err;
        EXPECT_TRUE(holds(result.err, "1 frame, 12x2 progressive, order " + std::to_string(row.order) + " "))
            << result.err;
        EXPECT_TRUE(holds(result.err, ", type " + std::to_string(row.type) + " ")) << result.err;
    }
}

TEST(formats, a_name_that_ends_in_one_needs_no_other_word) {
    const scratch_folder folder;
    for (const format_row& row : k_formats) {
        SCOPED_TRACE(row.name);
        const std::string name = std::string("clip.") + row.name;
        bytes clip = noise(row.frame_bytes);
        if (row.type == 5) {
            for (std::size_t i = 3; i < clip.size(); i += 4) {
                clip[i] &= 0x3F;
            }
        }
        if (row.type == 3 || row.type == 4) {
            for (std::size_t i = 0; i < clip.size(); i += 2) {
                clip[i] &= row.type == 3 ? 0xC0 : 0xF0;
            }
        }
        folder.write(name, clip);
        expect_silent(folder, {"encode", name, "a.qvr", "--size", "12x2"});
        expect_silent(folder, {"decode", "a.qvr", std::string("back.") + row.name});
        EXPECT_EQ(folder.read(std::string("back.") + row.name), clip);
    }
}

TEST(formats, an_order_may_still_have_another_type) {
    const scratch_folder folder;
    const outcome result =
        folder.qvr({"encode", "-", "a.qvr", "--size", "2x1", "--order", "UYVY", "--type", "Half"}, bytes(8));
    EXPECT_TRUE(holds(result.err, "order 2 UYVY, type 6 Half")) << result.err;
}

TEST(formats, unknown_names_and_contradictions_are_refused) {
    const scratch_folder folder;
    for (const char* name : {"UYVX", "1", "U8"}) {
        expect_failure(folder, {"encode", "-", "a.qvr", "--size", "2x1", "--format", name}, 2,
                       std::string("--format ") + name + ": there is no such format", "'qvr formats' lists");
    }
    for (const char* other : {"--order", "--type"}) {
        expect_failure(folder, {"encode", "-", "a.qvr", "--size", "2x1", "--format", "UYVY", other, "1"}, 2,
                       std::string(other) + " excludes --format", "'qvr encode --help'");
    }
}

TEST(formats, the_document_lists_the_names) {
    const nlohmann::json document = formats_document();
    EXPECT_EQ(document["schema"], "qvr-formats/1");
    ASSERT_EQ(document["formats"].size(), std::size(k_formats));
    for (std::size_t i = 0; i < std::size(k_formats); ++i) {
        EXPECT_EQ(document["formats"][i]["name"], k_formats[i].name);
        EXPECT_EQ(document["formats"][i]["order"], k_formats[i].order);
        EXPECT_EQ(document["formats"][i]["type"], k_formats[i].type);
    }
}

TEST(formats, the_document_lists_orders_types_and_106_pairs) {
    const nlohmann::json document = formats_document();
    ASSERT_EQ(document["orders"].size(), 16u);
    std::size_t pairs = 0;
    for (const nlohmann::json& order : document["orders"]) {
        pairs += order["types"].size();
    }
    EXPECT_EQ(pairs, 106u);
    const nlohmann::json& rgba = document["orders"][6];
    EXPECT_EQ(rgba["order"], 7);
    EXPECT_EQ(rgba["names"], nlohmann::json({"RGBA"}));
    EXPECT_EQ(rgba["chroma"], "4:4:4");
    EXPECT_EQ(rgba["alpha"], true);
    EXPECT_EQ(rgba["types"], nlohmann::json({1, 2, 3, 4, 6, 7, 214}));
    EXPECT_EQ(document["orders"][13]["chroma"], nullptr);
    EXPECT_EQ(document["orders"][13]["types"], nlohmann::json({1, 2}));
    ASSERT_EQ(document["types"].size(), 8u);
    for (const nlohmann::json& type : document["types"]) {
        EXPECT_EQ(type["stores_alpha"], type["type"] == 1 || type["type"] == 2);
    }
    EXPECT_EQ(document["types"][4]["names"], nlohmann::json({"U10Packed", "packed10"}));
}

TEST(formats, the_document_and_the_table_list_the_kinds_of_files) {
    const nlohmann::json document = formats_document();
    std::vector<std::string> names;
    for (const nlohmann::json& file : document["files"]) {
        names.push_back(file["name"]);
    }
    EXPECT_EQ(names, (std::vector<std::string>{"raw", "qvr", "y4m", "png", "pam", "ppm", "pgm", "pnm", "exr"}));
    EXPECT_EQ(document["files"][0]["extension"], nullptr);
    EXPECT_EQ(document["files"][2]["keeps_rate"], true);
    EXPECT_EQ(document["files"][3]["one_frame"], true);
    const scratch_folder folder;
    const std::string table = folder.qvr({"formats"}).out;
    EXPECT_TRUE(holds(table, "\n  y4m    .y4m   any number  YCbCr of 8, 10, 12 and 16 bits, grey of 8 and 16, "))
        << table;
    EXPECT_TRUE(holds(table, "\n  exr    .exr   one         RGB and RGBA of half and single float")) << table;
}

}  // namespace
