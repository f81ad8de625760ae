// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include "boxes.h"
#include "clips.h"
#include "coded_planes.h"
#include "json_lines.h"
#include "process.h"

namespace {

bytes coded() {
    const bytes run = bit_string().repeat(4).finish();
    return coded_frame(4, 2, joined({slice_table({2, 2}, {1, 1}), run, run}));
}

TEST(dump, boxes_planes_and_bytes_are_shown) {
    const scratch_folder folder;
    make_rgb_clip(folder, "clip.qvr", 2);
    bytes clip = folder.read("clip.qvr");
    for (std::size_t i = 0; i < 24; ++i) {
        clip[k_rgb_frame + 37 + i] = static_cast<std::uint8_t>(0x3C + i);
    }
    folder.write("clip.qvr", clip);
    const outcome result = folder.qvr({"dump", "clip.qvr", "--frame", "1", "--hex", "18"});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out,
              "clip.qvr\n"
              "frame 1: offset 61, 61 bytes\n"
              "  boxes                    offset          bytes\n"
              "    'pack'                     61             61\n"
              "      'sinf'                   69             21  plane 0: 'rg08' (R G B, 8 bits), 4x2, progressive\n"
              "      'sdat'                   90             32  plane 0: payload of 24 bytes\n"
              "                  98  3c 3d 3e 3f 40 41 42 43 44 45 46 47 48 49 4a 4b  |<=>?@ABCDEFGHIJK|\n"
              "                 114  4c 4d                                            |LM|\n");
}

TEST(dump, the_slice_table_of_coded_alpha_is_shown) {
    const scratch_folder folder;
    folder.write("a.qvr", coded());
    const outcome result = folder.qvr({"dump", "a.qvr"});
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(result.out,
              "a.qvr\n"
              "frame 0: offset 0, 52 bytes\n"
              "  boxes                    offset          bytes\n"
              "    'pack'                      0             52\n"
              "      'sinf'                    8             21  plane 0: 'rl08' (coded alpha, 8 bits), 4x2, "
              "progressive\n"
              "      'sdat'                   29             23  plane 0: payload of 15 bytes\n"
              "      slice table of 11 bytes, 2 slices\n"
              "         slice         offset          bytes  first row       rows\n"
              "             0             48              2          0          1\n"
              "             1             50              2          1          1\n");
}

TEST(dump, programs_read_a_line_a_frame) {
    const scratch_folder folder;
    const outcome result = folder.qvr({"dump", "-", "--json", "--hex", "4"}, coded());
    EXPECT_EQ(result.code, 0) << result.err;
    const std::vector<json> lines = json_lines(result.out);
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0], json::parse(R"({"schema": "qvr-dump/1", "file": "standard input", "frame": 0, "offset": 0,
        "bytes": 52, "complete": true, "error": null, "boxes": [
        {"depth": 0, "type": "pack", "offset": 0, "bytes": 52, "findings": []},
        {"depth": 1, "type": "sinf", "offset": 8, "bytes": 21, "findings": [], "plane": 0, "code": "rl08",
         "content": "coded alpha, 8 bits", "width": 4, "height": 2, "layout": "progressive"},
        {"depth": 1, "type": "sdat", "offset": 29, "bytes": 23, "findings": [], "plane": 0,
         "content": "coded alpha, 8 bits", "hex": "02bffffe",
         "slice_table": {"bytes": 11, "problem": null, "slices": [
            {"slice": 0, "offset": 48, "bytes": 2, "first_row": 0, "rows": 1},
            {"slice": 1, "offset": 50, "bytes": 2, "first_row": 1, "rows": 1}]}}]})"))
        << result.out;
}

TEST(dump, payloads_and_their_headers_are_shown) {
    bytes content;
    append_box(content, "QCXF", qcx_frame(1301, 4, 2, 45));
    append_box(content, "sinf", plane_payload(4, 2, " a08"));
    append_box(content, "sdat", bytes(8, 7));
    const scratch_folder folder;
    folder.write("a.qvr", packed(content));
    const json boxes = json_lines(folder.qvr({"dump", "a.qvr", "--json"}).out).at(0).at("boxes");
    json wanted = json::parse(R"({"depth": 1, "type": "QCXF", "offset": 8, "bytes": 53, "payload": 0, "findings": [],
        "qcx": {"compression": 1301, "width": 4, "height": 2, "alpha": false}})");
    wanted["qcx"]["flags"] = qcx_frame(1301, 4, 2, 45)[7];
    EXPECT_EQ(boxes.at(1), wanted);
}

TEST(dump, damage_is_shown_as_far_as_it_goes) {
    const scratch_folder folder;
    make_rgb_clip(folder, "clip.qvr", 3);
    bytes clip = folder.read("clip.qvr");
    put_le32(clip, k_rgb_frame + 29, 5);
    put_le32(clip, 2 * k_rgb_frame, 70);
    folder.write("bad.qvr", clip);
    const outcome result = folder.qvr({"dump", "bad.qvr"});
    EXPECT_EQ(result.code, 1);
    for (const char* line :
         {"frame 0: offset 0, 61 bytes\n",
          "      'sdat'                   90              5  plane 0: payload of 0 bytes  ! smaller than a box header; "
          "read as 8 bytes\n",
          "frame 2: offset 122, 61 bytes\n",
          "    'pack'                    122             70  ! runs past the end by 9\n",
          "  ! the 'pack' box says that the frame has 70 bytes, but the file ends after 61\n"}) {
        EXPECT_TRUE(holds(result.out, line)) << line << result.out;
    }
    EXPECT_TRUE(holds(result.err,
                      "qvr: bad.qvr: frame 1 at offset 61: the 'sdat' box at 90: smaller than a box header; read as 8 "
                      "bytes\nhint: 'qvr verify' shows everything that is wrong\n"))
        << result.err;
    EXPECT_TRUE(holds(result.err, "qvr: bad.qvr: frame 2 at offset 122: the 'pack' box says")) << result.err;
    const std::vector<json> lines = json_lines(folder.qvr({"dump", "bad.qvr", "--json"}).out);
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[1].at("boxes").at(2).at("findings").at(0).at("name"), "box-too-small");
    EXPECT_EQ(lines[2].at("error").at("message"),
              "the 'pack' box says that the frame has 70 bytes, but the file ends after 61");
}

TEST(dump, a_slice_table_that_cannot_be_read_is_noted) {
    const scratch_folder folder;
    folder.write("a.qvr", coded_frame(4, 2, {0x02, 0xBF}));
    const outcome result = folder.qvr({"dump", "a.qvr"});
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_TRUE(holds(result.out, "payload of 2 bytes\n      ! the payload ends within the slice table\n"));
    const json boxes = json_lines(folder.qvr({"dump", "a.qvr", "--json"}).out).at(0).at("boxes");
    EXPECT_EQ(boxes.at(2).at("slice_table").at("problem"), "the payload ends within the slice table");
}

TEST(dump, a_frame_that_is_not_there_is_wrong_usage) {
    const scratch_folder folder;
    make_rgb_clip(folder, "clip.qvr", 2);
    const outcome result = folder.qvr({"dump", "clip.qvr", "--frame", "2"});
    EXPECT_EQ(result.code, 2);
    EXPECT_EQ(result.err, "qvr: clip.qvr: there is no frame 2: the file holds 2, counted from 0\n");
    EXPECT_EQ(result.out, "");
}

TEST(dump, a_chosen_frame_behind_damage_is_told_of) {
    const scratch_folder folder;
    make_rgb_clip(folder, "clip.qvr", 2);
    bytes clip = folder.read("clip.qvr");
    put_le32(clip, 0, 3);
    folder.write("bad.qvr", clip);
    const outcome result = folder.qvr({"dump", "bad.qvr", "--frame", "1"});
    EXPECT_EQ(result.code, 1);
    EXPECT_TRUE(holds(result.err, "qvr: bad.qvr: frame 0 at offset 0: ")) << result.err;
}

TEST(dump, no_single_bit_crashes_a_look) {
    for (const bytes& good : {coded(), packed(bytes(0))}) {
        for (std::size_t bit = 0; bit < good.size() * 8; bit += 3) {
            const scratch_folder folder;
            bytes content = good;
            content[bit / 8] = static_cast<std::uint8_t>(content[bit / 8] ^ (1u << (bit % 8)));
            for (const char* command : {"dump", "verify"}) {
                const outcome result = folder.qvr({command, "-", "--json"}, content);
                EXPECT_EQ(result.signal_number, 0) << command << bit;
                EXPECT_TRUE(result.code == 0 || result.code == 1) << command << bit << result.err;
                EXPECT_NO_THROW(json_lines(result.out)) << command << bit;
            }
        }
    }
}

}  // namespace
