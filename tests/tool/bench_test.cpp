// SPDX-License-Identifier: BSD-3-Clause
//
// What bench says and draws; how fast anything is plays no part.
#include <expat.h>
#include <gtest/gtest.h>

#include <algorithm>

#include <nlohmann/json.hpp>

#include "help_texts.h"
#include "pictures.h"
#include "process.h"

namespace {

using nlohmann::json;

outcome bench(const scratch_folder& folder, const std::vector<std::string>& options) {
    std::vector<std::string> arguments = {"bench", "--size", "64x32", "--seconds", "0"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return folder.qvr(arguments);
}

void expect_speed(const json& speed, double raw_bytes, double copy) {
    const double seconds = speed.at("seconds").get<double>();
    EXPECT_GT(seconds, 0);
    EXPECT_NEAR(speed.at("mb_per_s").get<double>() * seconds, raw_bytes / 1e6, 1e-9);
    EXPECT_NEAR(speed.at("frames_per_s").get<double>() * seconds, 1, 1e-9);
    EXPECT_NEAR(speed.at("to_memcpy").get<double>() * seconds, copy, 1e-12);
}

TEST(bench, json_has_a_schema_and_a_result_for_each_format) {
    const scratch_folder folder;
    const outcome made = bench(folder, {"--order", "RGBA", "--type", "U16", "--threads", "2", "--alpha-rle", "--json"});
    ASSERT_EQ(made.code, 0) << made.err;
    EXPECT_EQ(std::count(made.out.begin(), made.out.end(), '\n'), 1);
    const json found = json::parse(made.out);
    EXPECT_EQ(found.at("schema"), "qvr-bench/1");
    EXPECT_EQ(found.at("library"), "2.7.4");
    EXPECT_FALSE(found.at("processor").get<std::string>().empty());
    EXPECT_GE(found.at("processors").get<int>(), 1);
    EXPECT_EQ(found.at("threads"), 2);
    EXPECT_EQ(found.at("width"), 64);
    EXPECT_EQ(found.at("height"), 32);
    EXPECT_EQ(found.at("alpha_rle"), true);
    EXPECT_EQ(found.at("seconds"), 0.0);
    ASSERT_EQ(found.at("results").size(), 1u);
    const json& result = found.at("results").at(0);
    EXPECT_EQ(result.at("order"), 7);
    EXPECT_EQ(result.at("order_name"), "RGBA");
    EXPECT_EQ(result.at("type"), 2);
    EXPECT_EQ(result.at("type_name"), "U16");
    EXPECT_EQ(result.at("raw_bytes"), 64 * 32 * 8);
    // Noise is stored as it is; the matte, a disc, gets smaller.
    EXPECT_GT(result.at("coded_bytes").get<int>(), 64 * 32 * 6);
    EXPECT_LT(result.at("coded_bytes").get<int>(), 64 * 32 * 7);
    EXPECT_EQ(result.at("rounds"), 3);
    const double copy = result.at("memcpy").at("seconds").get<double>();
    for (const char* what : {"memcpy", "encode", "decode"}) {
        expect_speed(result.at(what), 64 * 32 * 8, copy);
    }
}

std::size_t measured(const scratch_folder& folder, std::vector<std::string> options) {
    options.push_back("--json");
    const outcome made = bench(folder, options);
    EXPECT_EQ(made.code, 0) << made.err;
    return json::parse(made.out).at("results").size();
}

TEST(bench, formats_are_chosen_by_order_and_type) {
    const scratch_folder folder;
    EXPECT_EQ(measured(folder, {}), 12u);
    EXPECT_EQ(measured(folder, {"--order", "UYVY"}), 8u);
    EXPECT_EQ(measured(folder, {"--type", "Fixed16"}), 13u);
    EXPECT_EQ(measured(folder, {"--order", "v210"}), 1u);
    // Without alpha to store the decoder gives what is left.
    EXPECT_EQ(measured(folder, {"--order", "RGBA", "--alpha-rle"}), 7u);
    const outcome none = bench(folder, {"--order", "I420", "--type", "U10Packed"});
    EXPECT_EQ(none.code, 2);
    EXPECT_TRUE(holds(none.err, "order 10 I420 does not go with type 5 U10Packed")) << none.err;
}

TEST(bench, the_table_has_a_line_for_each_format) {
    const scratch_folder folder;
    const outcome made = bench(folder, {"--type", "U8"});
    ASSERT_EQ(made.code, 0) << made.err;
    const std::vector<std::string> lines = lines_of(made.out);
    ASSERT_EQ(lines.size(), 4u + 16u) << made.out;
    EXPECT_TRUE(holds(lines[0], "library 2.7.4; 64x32, 1 thread")) << lines[0];
    EXPECT_EQ(lines[3].substr(0, 26), "format            MB/frame");
    EXPECT_EQ(lines[4].substr(0, 34), "YUY2 U8               0.00   100.9") << lines[4];  // 4096 and 37 bytes of boxes
}

struct xml_shape {
    std::string root;
    std::string width;
    std::string height;
    int shapes = 0;
    int depth = 0;
};

void on_start(void* to, const XML_Char* name, const XML_Char** attributes) {
    xml_shape& shape = *static_cast<xml_shape*>(to);
    const std::string element = name;
    shape.shapes += element == "path" || element == "use" || element == "rect" ? 1 : 0;
    if (shape.depth++ > 0) {
        return;
    }
    shape.root = element;
    for (; attributes[0]; attributes += 2) {
        if (std::string(attributes[0]) == "width") {
            shape.width = attributes[1];
        } else if (std::string(attributes[0]) == "height") {
            shape.height = attributes[1];
        }
    }
}

void on_end(void* to, const XML_Char*) {
    --static_cast<xml_shape*>(to)->depth;
}

xml_shape read_xml(const bytes& document) {
    xml_shape shape;
    const std::unique_ptr<XML_ParserStruct, void (*)(XML_Parser)> parser(XML_ParserCreate(nullptr), XML_ParserFree);
    XML_SetUserData(parser.get(), &shape);
    XML_SetElementHandler(parser.get(), on_start, on_end);
    const XML_Status status = XML_Parse(parser.get(), reinterpret_cast<const char*>(document.data()),
                                        static_cast<int>(document.size()), XML_TRUE);
    EXPECT_EQ(status, XML_STATUS_OK) << XML_ErrorString(XML_GetErrorCode(parser.get()));
    return shape;
}

// 130 above, 70 below, 48 for each format.
TEST(bench, speeds_are_drawn_as_svg) {
    const scratch_folder folder;
    const outcome made = bench(folder, {"--order", "UYVY", "--plot", "speed.svg"});
    ASSERT_EQ(made.code, 0) << made.err;
    const xml_shape shape = read_xml(folder.read("speed.svg"));
    EXPECT_EQ(shape.root, "svg");
    EXPECT_EQ(shape.width.substr(0, 4), "1100");
    EXPECT_EQ(shape.height.substr(0, 3), "584");
    EXPECT_GT(shape.shapes, 8 * 3);
}

TEST(bench, speeds_are_drawn_as_png) {
    const scratch_folder folder;
    const outcome made = bench(folder, {"--order", "v210", "--plot", "speed.PNG"});
    ASSERT_EQ(made.code, 0) << made.err;
    const test_picture found = read_picture(folder.file("speed.PNG"));
    EXPECT_EQ(found.width, 1100u);
    EXPECT_EQ(found.height, 248u);
    // The first pixel of the bar of encoding, which is there whatever its length; memcpy's line is somewhere in the row.
    const std::size_t at = (std::size_t{138} * 1100 + 170) * 3;
    EXPECT_EQ(bytes(found.samples.begin() + static_cast<std::ptrdiff_t>(at),
                    found.samples.begin() + static_cast<std::ptrdiff_t>(at) + 3),
              (bytes{51, 110, 179}));
}

TEST(bench, plots_that_cannot_be_made_are_refused_before_anything_is_measured) {
    const scratch_folder folder;
    const outcome made = bench(folder, {"--plot", "speed.pdf"});
    EXPECT_EQ(made.code, 2);
    EXPECT_EQ(made.out, "");
    EXPECT_TRUE(holds(made.err, "--plot speed.pdf: this is neither an SVG nor a PNG")) << made.err;
    EXPECT_EQ(folder.names(), std::vector<std::string>{});
    EXPECT_EQ(bench(folder, {"--order", "UYVY", "--size", "63x32"}).code, 2);
    EXPECT_EQ(bench(folder, {"--seconds", "-1"}).code, 2);
}

}  // namespace
