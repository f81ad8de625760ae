// SPDX-License-Identifier: BSD-3-Clause
//
// Files of kinds that are not known, and names that say another kind than is written.
#include <gtest/gtest.h>

#include "clips.h"
#include "pictures.h"
#include "process.h"
#include "streams.h"

namespace {

TEST(foreign_kinds, no_raw_frames_get_the_name_of_a_picture_or_clip) {
    const scratch_folder folder;
    const bytes clip = make_rgb_clip(folder, "clip.qvr", 1);
    for (const auto& [name, kind] :
         {std::pair("a.tiff", "a TIFF"), std::pair("a.TIF", "a TIFF"), std::pair("a.dpx", "a DPX picture"),
          std::pair("a.mov", "a QuickTime movie"), std::pair("a.mp4", "an MP4 clip"), std::pair("a%d.jpg", "a JPEG")}) {
        for (const char* command : {"decode", "convert"}) {
            expect_failure(folder, {command, "clip.qvr", name}, 2,
                           std::string(name) + ": its name says " + kind + ", which is not written",
                           "name it like out.png or out.y4m, or give --to raw");
        }
    }
    expect_silent(folder, {"decode", "clip.qvr", "a.mov", "--to", "raw"});
    EXPECT_EQ(folder.read("a.mov"), clip);
    expect_silent(folder, {"decode", "clip.qvr", "a.yuv"});
    EXPECT_EQ(folder.read("a.yuv"), clip);
}

TEST(foreign_kinds, a_file_has_no_name_of_another_kind) {
    const scratch_folder folder;
    make_rgb_clip(folder, "clip.qvr", 1);
    write_picture(folder.file("a.png"), make_picture(colours::rgb, 8, 4, 2));
    const std::string qvr_written = ", but what is written is a .qvr file";
    expect_failure(folder, {"encode", "a.png", "b.png"}, 2, "b.png: its name says a PNG" + qvr_written,
                   "give it a name that ends in .qvr");
    expect_failure(folder, {"encode", "a.png", "b.mov"}, 2, "b.mov: its name says a QuickTime movie" + qvr_written,
                   "give it a name that ends in .qvr");
    expect_failure(folder, {"join", "clip.qvr", "-o", "b.y4m"}, 2, "b.y4m: its name says a Y4M file" + qvr_written,
                   "give it a name that ends in .qvr");
    expect_failure(folder, {"wrap", "b.exr", "--tiles", "a.png", "--size", "4x2"}, 2,
                   "b.exr: its name says an OpenEXR picture" + qvr_written, "give it a name that ends in .qvr");
    for (const auto& [name, kind] : {std::pair("x.jpg", "a JPEG"), std::pair("x.qvr", "a .qvr file")}) {
        expect_failure(folder, {"view", "clip.qvr", "-o", name}, 2,
                       std::string(name) + ": its name says " + kind + ", but what is written is a PNG",
                       "give it a name that ends in .png");
    }
    expect_silent(folder, {"encode", "a.png", "b.bin"});
    EXPECT_EQ(folder.qvr({"view", "clip.qvr", "-o", "sheet"}).code, 0);
}

TEST(foreign_kinds, one_file_is_no_numbered_sequence) {
    const scratch_folder folder;
    make_rgb_clip(folder, "clip.qvr", 1);
    write_picture(folder.file("a.png"), make_picture(colours::rgb, 8, 4, 2));
    const std::string message = " writes one file, not a numbered sequence";
    const std::string hint = "'qvr convert' writes one";
    expect_failure(folder, {"encode", "a.png", "o.%03d.qvr"}, 2, "o.%03d.qvr: 'encode'" + message, hint);
    expect_failure(folder, {"join", "clip.qvr", "-o", "o.%03d.qvr"}, 2, "o.%03d.qvr: 'join'" + message, hint);
    expect_failure(folder, {"wrap", "o.%d.qvr", "--size", "4x2", "--tiles", "a.png"}, 2, "o.%d.qvr: 'wrap'" + message,
                   hint);
    expect_failure(folder, {"view", "clip.qvr", "-o", "o.%03d.png"}, 2, "o.%03d.png: 'view'" + message, hint);
    expect_silent(folder, {"encode", "a.png", "100%.qvr"});
}

TEST(foreign_kinds, a_file_of_one_is_told_by_its_first_bytes) {
    const scratch_folder folder;
    for (const auto& [head, kind] :
         {std::pair(bytes{0xFF, 0xD8, 0xFF, 0xE0}, "a JPEG"), std::pair(bytes{'I', 'I', 42, 0}, "a TIFF"),
          std::pair(bytes{'M', 'M', 0, 42}, "a TIFF"), std::pair(text("XPDS"), "a DPX picture"),
          std::pair(text("P4\n8 1\n"), "a PBM bitmap"), std::pair(text("\1\1\1 ftypqt  "), "a QuickTime movie"),
          std::pair(text("\1\1\1 ftypisom"), "an MP4 clip"), std::pair(text("RIFF1234AVI LIST"), "an AVI clip")}) {
        SCOPED_TRACE(kind);
        folder.write("in", joined({head, bytes(40, 9)}));
        folder.write("in.png", folder.read("in"));
        const std::string message = std::string("this is ") + kind + ", which is not read";
        expect_failure(folder, {"encode", "in", "a.qvr"}, 2, "in: " + message, "have another program make a PNG");
        expect_failure(folder, {"convert", "in.png", "a.pam"}, 1, "in.png: " + message, "have another program");
    }
    folder.write("in", bytes{0xFF, 0xD8});
    expect_failure(folder, {"encode", "in", "a.qvr"}, 2, "in: this is no picture or clip", "for example --size");
}

TEST(foreign_kinds, a_picture_is_not_taken_for_raw_frames) {
    const scratch_folder folder;
    const bytes picture = text("P6\n1 1\n255\nabc");
    folder.write("in", picture);
    const std::vector<std::string> raw = {"encode", "in", "a.qvr", "--size", "1x1", "--format", "GRAY8"};
    expect_failure(folder, raw, 2, "in: --size is for raw frames, but this is a PPM by its first bytes",
                   "leave --size out, or give --from raw if it does hold raw frames");
    std::vector<std::string> named = raw;
    named.insert(named.end(), {"--from", "raw"});
    expect_silent(folder, named);
    expect_silent(folder, {"decode", "a.qvr", "back"});
    EXPECT_EQ(folder.read("back"), picture);
}

}  // namespace
