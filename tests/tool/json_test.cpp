// SPDX-License-Identifier: BSD-3-Clause
//
// What programs are told of files, and of what a command has done.
#include <gtest/gtest.h>

#include "boxes.h"
#include "clips.h"
#include "json_lines.h"
#include "process.h"

namespace {

TEST(json_info, a_frame_is_told_in_full) {
    const scratch_folder folder;
    make_rgb_clip(folder, "clip.qvr", 2);
    const outcome result = folder.qvr({"info", "clip.qvr", "--json"});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.err, "");
    const std::vector<json> lines = json_lines(result.out);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[1], json::parse(R"({"schema": "qvr-info/1", "file": "clip.qvr", "frame": 1, "offset": 61,
        "bytes": 61, "error": null, "payload_count": 0, "payloads": [],
        "format": {"width": 4, "height": 2, "layout": "progressive", "order": 5, "order_name": "RGB", "type": 1,
                   "type_name": "U8"},
        "planes": [{"plane": 0, "code": "rg08", "content": "R G B, 8 bits", "width": 4, "height": 2,
                    "layout": "progressive", "bytes": 24}]})"));
}

TEST(json_info, chunks_are_told_and_counted) {
    bytes chunks;
    append_box(chunks, "stch", bytes(10));
    append_box(chunks, "tile", bytes(20));
    bytes content;
    append_box(content, "sinf", plane_payload(8, 4, "stch"));
    append_box(content, "sdat", chunks);
    const scratch_folder folder;
    const outcome result = folder.qvr({"info", "-", "--json"}, packed(content));
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(json_lines(result.out).at(0), json::parse(R"({"schema": "qvr-info/1", "file": "standard input",
        "frame": 0, "offset": 0, "bytes": 83, "error": null, "payload_count": 2,
        "payloads": [{"number": 0, "type": 2, "type_name": "stitched", "bytes": 10},
                     {"number": 1, "type": 3, "type_name": "tile", "bytes": 20}],
        "format": {"width": 8, "height": 4, "layout": "progressive", "order": 0, "order_name": null, "type": 0,
                   "type_name": null},
        "planes": [{"plane": 0, "code": "stch", "content": "stitched chunks", "width": 8, "height": 4,
                    "layout": "progressive", "bytes": 46}]})"));
}

TEST(json_info, damaged_frames_carry_their_error) {
    const scratch_folder folder;
    make_rgb_clip(folder, "clip.qvr", 3);
    bytes clip = folder.read("clip.qvr");
    clip[k_rgb_frame + 28] = 2;
    clip.resize(clip.size() - 1);
    folder.write("bad.qvr", clip);
    const outcome result = folder.qvr({"info", "bad.qvr", "--json"});
    EXPECT_EQ(result.code, 1);
    const std::vector<json> lines = json_lines(result.out);
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[1].at("format"), nullptr);
    EXPECT_EQ(lines[1].at("planes").at(0).at("layout"), "unknown");
    EXPECT_EQ(lines[1].at("error"),
              json::parse(R"({"message": "cannot read the frame's description: Undefined value of frame layout: 2",
                              "hint": null})"));
    EXPECT_EQ(lines[2].at("bytes"), 60);
    EXPECT_EQ(lines[2].at("error").at("message"),
              "the 'pack' box says that the frame has 61 bytes, but the file ends after 60");
    EXPECT_TRUE(holds(result.err, "qvr: bad.qvr: frame 1 at offset 61: ")) << result.err;
}

TEST(json_info, names_that_are_no_utf8_still_make_json) {
    const scratch_folder folder;
    make_rgb_clip(folder, "n\xFF.qvr", 1);
    EXPECT_EQ(json_lines(folder.qvr({"info", "n\xFF.qvr", "--json"}).out).at(0).at("file"), "n\xEF\xBF\xBD.qvr");
}

// The one line of a command, without how long it took.
json result_of(const scratch_folder& folder, const std::vector<std::string>& arguments) {
    const outcome done = folder.qvr(arguments);
    EXPECT_EQ(done.code, 0) << done.err;
    const std::vector<json> lines = json_lines(done.out);
    EXPECT_EQ(lines.size(), 1u) << done.out;
    json told = lines.at(0);
    EXPECT_TRUE(told.at("codec_seconds").is_number()) << told;
    told.erase("codec_seconds");
    return told;
}

const char* const k_rgb_format = R"({"width": 4, "height": 2, "layout": "progressive", "order": 5,
    "order_name": "RGB", "type": 1, "type_name": "U8"})";

TEST(json_result, encode_and_decode_tell_what_they_made) {
    const scratch_folder folder;
    folder.write("clip.raw", noise(48));
    json wanted = json::parse(R"({"schema": "qvr-result/1", "command": "encode", "output": "clip.qvr", "frames": 2,
        "raw_bytes": 48, "bytes": 122})");
    wanted["format"] = json::parse(k_rgb_format);
    EXPECT_EQ(result_of(folder, {"encode", "clip.raw", "clip.qvr", "--size", "4x2", "--order", "RGB24", "--json"}),
              wanted);
    wanted.erase("bytes");
    wanted["command"] = "decode";
    wanted["output"] = "again.raw";
    EXPECT_EQ(result_of(folder, {"decode", "clip.qvr", "again.raw", "--json", "-q"}), wanted);
}

TEST(json_result, wrap_and_unwrap_tell_what_they_made) {
    const scratch_folder folder;
    folder.write("a.bin", noise(10));
    folder.write("b.bin", noise(20));
    EXPECT_EQ(result_of(folder, {"wrap", "out.qvr", "--size", "8x4", "--json", "--tiles", "a.bin", "b.bin"}),
              json::parse(R"({"schema": "qvr-result/1", "command": "wrap", "output": "out.qvr", "frames": 1,
                  "raw_bytes": 30, "bytes": 83, "payloads": 2, "payload_bytes": 30, "format": {"width": 8, "height": 4,
                  "layout": "progressive", "order": 0, "order_name": null, "type": 0, "type_name": null}})"));
    EXPECT_EQ(result_of(folder, {"unwrap", "out.qvr", "--into", "parts", "--json"}),
              json::parse(R"({"schema": "qvr-result/1", "command": "unwrap", "output": "parts", "frames": 1,
                  "raw_bytes": 30, "payloads": 2, "payload_bytes": 30, "alpha_planes": 0})"));
}

TEST(json_result, view_tells_what_it_shows) {
    const scratch_folder folder;
    make_rgb_clip(folder, "clip.qvr", 2);
    EXPECT_EQ(result_of(folder, {"view", "clip.qvr", "-o", "sheet.png", "--frame", "1", "--json", "-q"}),
              json::parse(R"({"schema": "qvr-result/1", "command": "view", "output": "sheet.png", "frames": 1,
                  "raw_bytes": 24, "frame": 1, "offset": 61, "pictures": ["Picture"]})"));
}

TEST(json_result, frames_and_json_never_share_standard_output) {
    const scratch_folder folder;
    folder.write("clip.raw", noise(24));
    make_rgb_clip(folder, "clip.qvr", 1);
    folder.write("a.bin", noise(10));
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"encode", "clip.raw", "-", "--size", "4x2", "--order", "RGB24", "--json"},
          {"decode", "clip.qvr", "-", "--json"},
          {"view", "clip.qvr", "-o", "-", "--json"},
          {"wrap", "-", "--size", "8x4", "--json", "--tiles", "a.bin"}}) {
        const outcome refused = folder.qvr(arguments);
        EXPECT_EQ(refused.code, 2);
        EXPECT_EQ(refused.out, "");
        EXPECT_EQ(refused.err,
                  "qvr: --json and the frames cannot both go to standard output\nhint: give the output a name\n");
    }
}

TEST(json_result, a_failure_prints_no_result) {
    const scratch_folder folder;
    const outcome failed = folder.qvr({"decode", "-", "out.raw", "--json"}, noise(50));
    EXPECT_EQ(failed.code, 1);
    EXPECT_EQ(failed.out, "");
}

}  // namespace
