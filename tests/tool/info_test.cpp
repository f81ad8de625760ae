// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include "boxes.h"
#include "clips.h"
#include "process.h"

namespace {

TEST(info, a_frame_of_one_plane_is_shown_with_every_box) {
    const scratch_folder folder;
    make_rgb_clip(folder, "clip.qvr", 1);
    const outcome result = folder.qvr({"info", "clip.qvr"});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out,
              "clip.qvr\n"
              "frame 0: offset 0, 61 bytes\n"
              "  format  4x2 progressive, order 5 RGB, type 1 U8\n"
              "  wrapped 0 payloads\n"
              "  boxes                    offset          bytes\n"
              "    'pack'                      0             61\n"
              "      'sinf'                    8             21  plane 0: 'rg08' (R G B, 8 bits), 4x2, progressive\n"
              "      'sdat'                   29             32  plane 0: payload of 24 bytes\n");
}

TEST(info, one_frame_of_many_is_chosen) {
    const scratch_folder folder;
    make_rgb_clip(folder, "clip.qvr", 3);
    const outcome result = folder.qvr({"info", "clip.qvr", "--frame", "2"});
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(result.out.substr(0, result.out.find("  format")), "clip.qvr\nframe 2: offset 122, 61 bytes\n");
    const std::string lines = folder.qvr({"info", "clip.qvr", "--frame", "2", "--json"}).out;
    EXPECT_EQ(lines.find('\n'), lines.size() - 1);  // one document
    const outcome none = folder.qvr({"info", "clip.qvr", "--frame", "3"});
    EXPECT_EQ(none.code, 2);
    EXPECT_TRUE(holds(none.err, "there is no frame 3: the file holds 3, counted from 0")) << none.err;
}

TEST(info, a_frame_of_four_planes_is_shown_with_the_size_of_each) {
    const scratch_folder folder;
    folder.write("clip.raw", noise(20));
    const outcome made = folder.qvr({"encode", "clip.raw", "clip.qvr", "--size", "4x2", "--order", "A420", "--type",
                                     "U8", "--interlaced", "--alpha-rle"});
    ASSERT_EQ(made.code, 0) << made.err;
    const std::string out = folder.qvr({"info", "clip.qvr"}).out;
    for (const char* line :
         {"  format  4x2 interlaced, order 13 A420, type 1 U8\n", "plane 0: ' y08' (Y, 8 bits), 4x2, interlaced\n",
          "plane 0: payload of 8 bytes\n", "plane 1: 'cb08' (Cb, 8 bits), 2x1, interlaced\n",
          "plane 1: payload of 2 bytes\n", "plane 2: 'cr08' (Cr, 8 bits), 2x1, interlaced\n",
          "plane 3: 'rl08' (coded alpha, 8 bits), 4x2, interlaced\n"}) {
        EXPECT_TRUE(holds(out, line)) << line << out;
    }
}

TEST(info, offsets_are_those_of_the_file) {
    const scratch_folder folder;
    make_rgb_clip(folder, "clip.qvr", 3);
    const std::string out = folder.qvr({"info", "clip.qvr"}).out;
    EXPECT_TRUE(holds(out, "frame 1: offset 61, 61 bytes\n")) << out;
    EXPECT_TRUE(holds(out, "frame 2: offset 122, 61 bytes\n")) << out;
    EXPECT_TRUE(holds(out, "      'sdat'                  151             32")) << out;
}

TEST(info, standard_input_can_be_looked_at) {
    const scratch_folder folder;
    make_rgb_clip(folder, "clip.qvr", 2);
    const outcome result = folder.qvr({"info", "-"}, folder.read("clip.qvr"));
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.out.substr(0, 15), "standard input\n");
}

TEST(info, plane_codes_are_explained) {
    const struct {
        const char* order;
        const char* type;
        std::size_t frame_bytes;  // 4x2
        const char* text;
    } cases[] = {{"UYVY", "U10", 32, "'y210' (Y Cb Cr 4:2:2, 10 bits)"},
                 {"YUV444", "U12", 48, "'y412' (Y Cb Cr 4:4:4, 12 bits)"},
                 {"RGB", "Fixed16", 48, "'rgS1' (R G B, 16-bit fixed point)"},
                 {"UYVY", "Float", 64, "' y2f' (Y Cb Cr 4:2:2, 32-bit float)"},
                 {"I420", "Half", 24, "' cbh' (Cb, 16-bit float)"},
                 {"Alpha", "U16", 16, "' a16' (alpha, 16 bits)"}};
    const scratch_folder folder;
    for (const auto& wanted : cases) {
        const outcome made =
            folder.qvr({"encode", "-", "a.qvr", "--size", "4x2", "--order", wanted.order, "--type", wanted.type},
                       bytes(wanted.frame_bytes));
        ASSERT_EQ(made.code, 0) << made.err;
        const std::string out = folder.qvr({"info", "a.qvr"}).out;
        EXPECT_TRUE(holds(out, wanted.text)) << out;
    }
}

TEST(info, wrapped_chunks_are_shown_and_counted) {
    bytes chunks;
    append_box(chunks, "stch", bytes(10));
    append_box(chunks, "tile", bytes(20));
    bytes content;
    append_box(content, "sinf", plane_payload(8, 4, "stch"));
    append_box(content, "sdat", chunks);
    const scratch_folder folder;
    folder.write("wrapped.qvr", packed(content));
    const outcome result = folder.qvr({"info", "wrapped.qvr"});
    EXPECT_EQ(result.code, 0) << result.err;
    for (const char* line : {"  format  8x4 progressive, wrapped chunks\n",
                             "  wrapped 2 payloads\n    payload 0: type 2 (stitched, first chunk), 10 bytes\n"
                             "    payload 1: type 3 (stitched, further chunk), 20 bytes\n",
                             "plane 0: 'stch' (stitched chunks), 8x4, progressive\n",
                             "        'stch'                 37             18  payload 0: 10 bytes\n",
                             "        'tile'                 55             28  payload 1: 20 bytes\n"}) {
        EXPECT_TRUE(holds(result.out, line)) << line << result.out;
    }
    const outcome decoded = folder.qvr({"decode", "wrapped.qvr", "a.raw"});
    EXPECT_EQ(decoded.code, 2);
    EXPECT_TRUE(holds(decoded.err, "wrapped.qvr: frame 0 at offset 0: the frame holds wrapped chunks of another codec"))
        << decoded.err;
}

TEST(info, a_wrapped_frame_beside_alpha_is_shown_and_counted) {
    bytes content;
    append_box(content, "QCXF", bytes(50));
    append_box(content, "sinf", plane_payload(4, 2, " a08"));
    append_box(content, "sdat", bytes(8, 7));
    const scratch_folder folder;
    folder.write("wrapped.qvr", packed(content));
    const outcome result = folder.qvr({"info", "wrapped.qvr"});
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_TRUE(holds(result.out, "  wrapped 1 payload\n    payload 0: type 1 (QCX frame), 50 bytes\n")) << result.out;
    EXPECT_TRUE(holds(result.out,
                      "      'QCXF'                    8             58  payload 0: 50 bytes, compression 0, "
                      "header size 0x0, flags 0x00 (no alpha)\n"))
        << result.out;
}

TEST(info, the_header_of_a_wrapped_frame_is_shown_when_all_of_it_is_there) {
    const scratch_folder folder;
    for (const bool whole : {true, false}) {
        bytes frame = qcx_frame(1301, 640, 358, whole ? 45 : 44);
        frame[7] = 0x81;
        bytes content;
        append_box(content, "QCXF", frame);
        append_box(content, "sinf", plane_payload(4, 2, " a08"));
        append_box(content, "sdat", bytes(8, 7));
        folder.write("wrapped.qvr", packed(content));
        const outcome result = folder.qvr({"info", "wrapped.qvr"});
        EXPECT_EQ(result.code, 0) << result.err;
        const char* line =
            whole ? "  payload 0: 45 bytes, compression 1301, header size 640x358, flags 0x81 (alpha of its "
                    "own)\n"
                  : "  payload 0: 44 bytes\n";
        EXPECT_TRUE(holds(result.out, line)) << result.out;
    }
}

TEST(info, payloads_of_a_frame_that_the_library_refuses_are_still_shown) {
    bytes content;
    append_box(content, "QCXF", qcx_frame(1300, 4, 2, 60));
    append_box(content, "QCXF", bytes(20));
    put_le32(content, 68, 5000);  // the second says more than there is
    const scratch_folder folder;
    folder.write("odd.qvr", packed(content));
    const outcome result = folder.qvr({"info", "odd.qvr"});
    EXPECT_EQ(result.code, 1);
    EXPECT_TRUE(holds(result.out, "payload 0: 60 bytes, compression 1300, header size 4x2, ")) << result.out;
    EXPECT_TRUE(holds(result.out, "payload 1: 4992 bytes  ! runs past the end by 4972\n")) << result.out;
}

TEST(info, the_list_of_very_many_payloads_is_cut_short) {
    bytes chunks;
    append_box(chunks, "stch", {});
    for (int i = 0; i < 1500; ++i) {
        append_box(chunks, "tile", {});
    }
    bytes content;
    append_box(content, "sinf", plane_payload(8, 4, "stch"));
    append_box(content, "sdat", chunks);
    const scratch_folder folder;
    folder.write("many.qvr", packed(content));
    const outcome result = folder.qvr({"info", "many.qvr"});
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_TRUE(holds(result.out, "  wrapped 1501 payloads\n"));
    EXPECT_TRUE(holds(result.out, "    payload 999: type 3 (stitched, further chunk), 0 bytes\n    (there are more "));
    EXPECT_FALSE(holds(result.out, "    payload 1000: type"));
}

TEST(info, unknown_boxes_and_codes_are_shown_and_escaped) {
    bytes content;
    append_box(content, std::string("a\x01\xFFz"), bytes(3));
    append_box(content, "sinf", plane_payload(4, 2, "what"));
    append_box(content, "sdat", bytes(8));
    const scratch_folder folder;
    folder.write("odd.qvr", packed(content));
    const outcome result = folder.qvr({"info", "odd.qvr"});
    EXPECT_EQ(result.code, 1);
    EXPECT_TRUE(holds(result.out, "'a\\x01\\xFFz'")) << result.out;
    EXPECT_TRUE(holds(result.out, "plane 0: 'what' unknown code, 4x2, progressive")) << result.out;
    EXPECT_TRUE(holds(result.out, "  format  unreadable\n")) << result.out;
    EXPECT_TRUE(holds(result.err,
                      "odd.qvr: frame 0 at offset 0: cannot read the frame's description: Invalid combination "
                      "of planes"))
        << result.err;
}

TEST(info, frames_with_very_many_boxes_are_cut_short) {
    bytes content;
    for (int i = 0; i < 5000; ++i) {
        append_box(content, "free", {});
    }
    const scratch_folder folder;
    folder.write("many.qvr", packed(content));
    const outcome result = folder.qvr({"info", "many.qvr"});
    EXPECT_EQ(result.code, 1);
    EXPECT_TRUE(holds(result.out, "(there are more boxes)\n"));
    EXPECT_LT(result.out.size(), 200000u);
    EXPECT_TRUE(holds(result.err, "at least one 'sinf' and one 'sdat' box expected")) << result.err;
}

TEST(info, boxes_within_boxes_do_not_go_deeper_than_the_container) {
    bytes content;
    for (int i = 0; i < 3000; ++i) {
        content = packed(content);
    }
    const scratch_folder folder;
    folder.write("deep.qvr", content);
    const outcome result = folder.qvr({"info", "deep.qvr"});
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.signal_number, 0);
}

}  // namespace
