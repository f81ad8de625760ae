// SPDX-License-Identifier: BSD-3-Clause
//
// How 'qvr verify' reports, over files of many frames.
#include <gtest/gtest.h>

#include "boxes.h"
#include "clips.h"
#include "coded_planes.h"
#include "json_lines.h"
#include "process.h"

namespace {

// Four frames of 61 bytes: the second has a box that nobody knows in the place of its last bytes, the third a size
// that runs past the end.
bytes mixed_clip(const scratch_folder& folder) {
    make_rgb_clip(folder, "clip.qvr", 4);
    bytes clip = folder.read("clip.qvr");
    put_le32(clip, k_rgb_frame + 12 + 4, 1);  // 1x2 pixels are 6 bytes
    put_le32(clip, k_rgb_frame + 29, 14);
    put_le32(clip, k_rgb_frame + 43, 18);
    put_le32(clip, 2 * k_rgb_frame + 29, 40);
    return clip;
}

TEST(verify_report, people_read_findings_and_a_summary) {
    const scratch_folder folder;
    folder.write("mixed.qvr", mixed_clip(folder));
    const outcome result = folder.qvr({"verify", "mixed.qvr"});
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.out,
              "frame 1 at offset 104: warning: unknown-box: not known, passed over\n"
              "frame 1 at offset 61: warning: different-bytes: the encoder writes other bytes from here on, and 43 in "
              "all, not 61\n"
              "frame 2 at offset 151: error: box-past-end: runs past the end by 8\n"
              "frame 2 at offset 151: warning: different-bytes: the encoder writes other bytes from here on\n"
              "mixed.qvr: 4 frames: 2 identical, 1 different but sound, 1 damaged\n");
    EXPECT_EQ(result.err,
              "qvr: mixed.qvr: frame 2 at offset 122: offset 151: runs past the end by 8\n"
              "hint: 'qvr dump' shows its boxes; encode the frame again from its source\n");
}

TEST(verify_report, strict_takes_warnings_for_errors) {
    const scratch_folder folder;
    folder.write("mixed.qvr", mixed_clip(folder));
    const outcome strict = folder.qvr({"verify", "mixed.qvr", "--strict"});
    EXPECT_EQ(strict.code, 1);
    EXPECT_TRUE(holds(strict.out, "frame 1 at offset 104: error: unknown-box: ")) << strict.out;
    EXPECT_FALSE(holds(strict.out, "warning")) << strict.out;
    EXPECT_TRUE(holds(strict.err,
                      "qvr: mixed.qvr: frame 1 at offset 61: offset 104: not known, passed over; 2 of 4 frames are "
                      "bad\nhint: the frame is sound; leave --strict out"))
        << strict.err;
    const outcome sound = folder.qvr({"verify", "mixed.qvr", "--frame", "1"});
    EXPECT_EQ(sound.code, 0) << sound.err;
    EXPECT_EQ(sound.err, "");
    EXPECT_TRUE(holds(sound.out, "mixed.qvr: 1 frame: 0 identical, 1 different but sound, 0 damaged\n")) << sound.out;
}

TEST(verify_report, quiet_says_only_what_is_wrong) {
    const scratch_folder folder;
    folder.write("mixed.qvr", mixed_clip(folder));
    const outcome bad = folder.qvr({"verify", "mixed.qvr", "-q"});
    EXPECT_EQ(bad.code, 1);
    EXPECT_EQ(bad.out, "");
    EXPECT_TRUE(holds(bad.err, "frame 2 at offset 122: offset 151: ")) << bad.err;
    const outcome good = folder.qvr({"verify", "clip.qvr", "-q"});
    EXPECT_EQ(good.code, 0);
    EXPECT_EQ(good.out + good.err, "");
    const outcome timed = folder.qvr({"verify", "clip.qvr", "-q", "--time", "--threads", "2"});
    EXPECT_TRUE(holds(timed.err, "clip.qvr: verify: 4 frames, 0.0 MB raw in ")) << timed.err;
}

TEST(verify_report, programs_read_a_line_a_frame_and_a_summary) {
    const scratch_folder folder;
    const outcome result = folder.qvr({"verify", "-", "--json"}, mixed_clip(folder));
    EXPECT_EQ(result.code, 1);
    const std::vector<json> lines = json_lines(result.out);
    ASSERT_EQ(lines.size(), 5u);
    EXPECT_EQ(lines[0], json::parse(R"({"schema": "qvr-verify/1", "file": "standard input", "frame": 0, "offset": 0,
        "bytes": 61, "result": "identical", "findings": [], "findings_left_out": 0})"));
    EXPECT_EQ(lines[2], json::parse(R"({"schema": "qvr-verify/1", "file": "standard input", "frame": 2, "offset": 122,
        "bytes": 61, "result": "damaged", "findings_left_out": 0, "findings": [
        {"name": "box-past-end", "severity": "error", "offset": 151, "text": "runs past the end by 8"},
        {"name": "different-bytes", "severity": "warning", "offset": 151,
         "text": "the encoder writes other bytes from here on"}]})"));
    EXPECT_EQ(lines[4], json::parse(R"({"schema": "qvr-verify-summary/1", "file": "standard input", "frames": 4,
        "identical": 2, "different": 1, "damaged": 1, "strict": false, "manifest": null, "good": false})"));
}

TEST(verify_report, one_frame_can_be_chosen) {
    const scratch_folder folder;
    folder.write("mixed.qvr", mixed_clip(folder));
    const outcome good = folder.qvr({"verify", "mixed.qvr", "--frame", "3", "--json"});
    EXPECT_EQ(good.code, 0) << good.err;
    EXPECT_EQ(json_lines(good.out).at(0).at("frame"), 3);
    EXPECT_EQ(json_lines(good.out).at(1).at("frames"), 1);
    const outcome missing = folder.qvr({"verify", "mixed.qvr", "--frame", "4"});
    EXPECT_EQ(missing.code, 2);
    EXPECT_EQ(missing.err, "qvr: mixed.qvr: there is no frame 4: the file holds 4, counted from 0\n");
    EXPECT_EQ(missing.out, "");
}

TEST(verify_report, a_file_cut_short_is_checked_up_to_its_end) {
    const scratch_folder folder;
    make_rgb_clip(folder, "clip.qvr", 3);
    bytes clip = folder.read("clip.qvr");
    clip.resize(clip.size() - 1);
    folder.write("cut.qvr", clip);
    const outcome result = folder.qvr({"verify", "cut.qvr"});
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.out,
              "frame 2 at offset 122: error: not-a-frame: the 'pack' box says that the frame has 61 bytes, but the "
              "file ends after 60\ncut.qvr: 3 frames: 2 identical, 0 different but sound, 1 damaged\n");
    EXPECT_TRUE(holds(result.err, "\nhint: the file was cut short, or the size")) << result.err;
}

TEST(verify_report, an_empty_file_is_bad_data) {
    const scratch_folder folder;
    const outcome result = folder.qvr({"verify", "-"});
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.err,
              "qvr: standard input: there is no frame in it: the file is empty\n"
              "hint: what was to write it has failed, or is not done yet\n");
    EXPECT_EQ(result.out, "");
}

TEST(verify_report, the_findings_of_a_frame_are_counted_beyond_a_hundred) {
    bytes content;
    append_box(content, "sinf", plane_payload(4, 2, "rg08"));
    append_box(content, "sdat", noise(24));
    for (int i = 0; i < 150; ++i) {
        append_box(content, "free", {});
    }
    const scratch_folder folder;
    folder.write("a.qvr", packed(content));
    const std::vector<json> lines = json_lines(folder.qvr({"verify", "a.qvr", "--json"}).out);
    EXPECT_EQ(lines.at(0).at("findings").size(), 100u);
    EXPECT_EQ(lines.at(0).at("findings_left_out"), 51);
    EXPECT_TRUE(holds(folder.qvr({"verify", "a.qvr"}).out, "\nframe 0: 51 more findings\n"));
}

TEST(verify_report, a_frame_of_very_many_boxes_is_still_compared) {
    bytes chunks;
    append_box(chunks, "stch", {});
    for (int i = 0; i < 100000; ++i) {
        append_box(chunks, "tile", {});
    }
    bytes content;
    append_box(content, "sinf", plane_payload(8, 4, "stch"));
    append_box(content, "sdat", chunks);
    const scratch_folder folder;
    folder.write("a.qvr", packed(content));
    const outcome result = folder.qvr({"verify", "a.qvr", "--json"});
    EXPECT_EQ(result.code, 0) << result.err;
    const json findings = json_lines(result.out).at(0).at("findings");
    ASSERT_EQ(findings.size(), 1u) << findings;
    EXPECT_EQ(findings[0].at("name"), "many-boxes");
}

TEST(verify_report, all_that_the_tool_writes_is_identical) {
    const scratch_folder folder;
    bytes all;
    unsigned frames = 0;
    for (unsigned order = 1; order <= 16; ++order) {
        for (const unsigned type : {1u, 2u, 3u, 4u, 5u, 6u, 7u, 214u}) {
            const outcome made = folder.qvr({"encode", "-", "-", "-q", "--size", "6x4", "--order",
                                             std::to_string(order), "--type", std::to_string(type)},
                                            noise(6 * 4 * 16));
            // Whatever the size of a frame: the last one need not be whole for the first to be good.
            if (made.code == 2) {
                continue;
            }
            const bytes written(made.out.begin(), made.out.end());
            const bytes first(written.begin(), written.begin() + get_le32(written, 0));
            all.insert(all.end(), first.begin(), first.end());
            ++frames;
        }
    }
    EXPECT_EQ(frames, 106u);
    folder.write("all.qvr", all);
    const outcome result = folder.qvr({"verify", "all.qvr", "--strict"});
    EXPECT_EQ(result.out, "all.qvr: 106 frames: 106 identical, 0 different but sound, 0 damaged\n") << result.err;
}

TEST(verify_report, coded_alpha_is_identical_however_it_is_cut) {
    const scratch_folder folder;
    for (const char* slices : {"0", "1", "3", "16", "17", "255"}) {
        for (const char* type : {"U8", "U16"}) {
            for (const char* order : {"RGBA", "Alpha", "A420", "YUY2+A"}) {
                const outcome made = folder.qvr({"encode", "-", "a.qvr", "-q", "--alpha-rle", "--slices", slices,
                                                 "--size", "16x16", "--order", order, "--type", type},
                                                bytes(30720, 0x7F));
                ASSERT_EQ(made.code, 0) << made.err;
                const outcome result = folder.qvr({"verify", "a.qvr", "--strict", "-q"});
                EXPECT_EQ(result.code, 0) << slices << type << order << result.err;
            }
        }
    }
}

TEST(verify_report, many_frames_are_checked_one_by_one) {
    const scratch_folder folder;
    constexpr unsigned k_frames = 20000;
    make_rgb_clip(folder, "clip.qvr", k_frames);
    bytes clip = folder.read("clip.qvr");
    clip[12345 * k_rgb_frame + 28] = 2;
    folder.write("clip.qvr", clip);
    const outcome result = folder.qvr({"verify", "clip.qvr"});
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.out,
              "frame 12345 at offset 753045: error: undecodable: cannot read the frame's description: Undefined value "
              "of frame layout: 2\nclip.qvr: 20000 frames: 19999 identical, 0 different but sound, 1 damaged\n");
    const outcome info = folder.qvr({"info", "clip.qvr", "--json"});
    EXPECT_EQ(info.code, 1);
    EXPECT_EQ(json_lines(info.out).size(), k_frames);
}

}  // namespace
