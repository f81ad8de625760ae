// SPDX-License-Identifier: BSD-3-Clause
//
// No command writes over what it reads, nor two things into one file.
#include <gtest/gtest.h>

#include <filesystem>

#include "clips.h"
#include "process.h"
#include "streams.h"

namespace {

using words = std::vector<std::string>;

// Refused with the message, and every file of the folder as it was.
void expect_kept(const scratch_folder& folder, const words& arguments, const std::string& message) {
    std::vector<bytes> before;
    for (const std::string& name : folder.names()) {
        before.push_back(folder.read(name));
    }
    expect_failure(folder, arguments, 2, "qvr: " + message + "\n", "");
    std::vector<bytes> after;
    for (const std::string& name : folder.names()) {
        after.push_back(folder.read(name));
    }
    EXPECT_EQ(after, before) << message;
}

void write_pixels(const scratch_folder& folder, const char* stem) {
    for (unsigned number = 0; number < 3; ++number) {
        folder.write(stem + std::to_string(number) + ".ppm",
                     joined({text("P6\n1 1\n255\n"), bytes(3, static_cast<std::uint8_t>(number))}));
    }
}

TEST(distinct, a_sequence_is_not_written_over_itself) {
    const scratch_folder folder;
    write_pixels(folder, "s.");
    const std::string same = "IN and OUT are the same file: s.";
    expect_kept(folder, {"convert", "s.%d.ppm", "s.%d.ppm", "--out-start", "1", "-j1"}, same + "%d.ppm");
    expect_kept(folder, {"convert", "s.%d.ppm", "s.%01d.ppm", "--out-order", "RGB"}, same + "0.ppm");
    expect_kept(folder, {"convert", "s.%d.ppm", "./s.2.ppm"}, same + "2.ppm");
    expect_kept(folder, {"convert", "s.1.ppm", folder.file("s.%d.ppm")}, same + "1.ppm");
    expect_kept(folder, {"encode", "s.%d.ppm", "s.1.ppm"}, same + "1.ppm");
    expect_silent(folder, {"convert", "s.%d.ppm", "t.%d.ppm"});
    expect_silent(folder, {"convert", "s.%d.ppm", "s.3.ppm"});
}

TEST(distinct, the_first_file_of_a_sequence_is_named_whichever_was_made_first) {
    const scratch_folder folder;
    for (const char* number : {"5", "2", "8", "1", "9", "0", "7", "3", "6", "4"}) {
        folder.write(std::string("s.") + number + ".ppm", text("P6\n1 1\n255\nrgb"));
    }
    expect_kept(folder, {"convert", "s.%d.ppm", "s.%01d.ppm"}, "IN and OUT are the same file: s.0.ppm");
}

TEST(distinct, every_command_spares_its_input) {
    const scratch_folder folder;
    make_rgb_clip(folder, "s.qvr", 1);
    folder.write("a.bin", noise(50));
    std::filesystem::create_symlink("s.qvr", folder.file("link"));
    const std::string same = "IN and OUT are the same file: s.qvr";
    expect_kept(folder, {"encode", "s.qvr", "s.qvr"}, same);
    expect_kept(folder, {"decode", "s.qvr", "link"}, same);
    expect_kept(folder, {"view", "s.qvr", "-o", "./s.qvr"}, same);
    expect_kept(folder, {"join", "s.qvr", "-o", "link"}, "PART and OUT are the same file: s.qvr");
    expect_kept(folder, {"wrap", "link", "--tiles", "a.bin", "s.qvr", "--size", "4x2"},
                "a file to wrap and OUT.qvr are the same file: s.qvr");
}

TEST(distinct, unwrapping_does_not_replace_the_file_that_is_taken_apart) {
    const scratch_folder folder;
    folder.write("a.bin", noise(50));
    expect_silent(folder, {"wrap", "frame000000-0.stch", "--tiles", "a.bin", "--size", "4x2"});
    expect_kept(folder, {"unwrap", "frame000000-0.stch", "--into", "."},
                "IN.qvr and a file to unwrap are the same file: frame000000-0.stch");
}

TEST(distinct, a_manifest_is_a_file_of_its_own) {
    const scratch_folder folder;
    make_rgb_clip(folder, "s.qvr", 1);
    write_pixels(folder, "p.");
    folder.write("s.manifest", text("anything"));
    std::filesystem::create_symlink("new.qvr", folder.file("link"));
    const std::string same = " and --manifest are the same file: ";
    expect_kept(folder, {"encode", "p.0.ppm", "x.qvr", "--manifest", "p.0.ppm"}, "IN" + same + "p.0.ppm");
    expect_kept(folder, {"encode", "p.%d.ppm", "x.qvr", "--manifest", "p.1.ppm"}, "IN" + same + "p.1.ppm");
    expect_kept(folder, {"encode", "p.0.ppm", "x.qvr", "--manifest", "./x.qvr"}, "OUT" + same + "x.qvr");
    expect_kept(folder, {"encode", "p.0.ppm", "new.qvr", "--manifest", "link"}, "OUT" + same + "new.qvr");
    expect_kept(folder, {"convert", "s.qvr", "x.qvr", "--manifest", "s.qvr"}, "IN" + same + "s.qvr");
    expect_kept(folder, {"join", "s.qvr", "-o", "j.qvr", "--manifest", "s.qvr"}, "PART" + same + "s.qvr");
    expect_kept(folder, {"join", "s.qvr", "-o", "j.qvr", "--manifest", "s.manifest"},
                "the manifest of a part" + same + "s.manifest");
    const std::string mixed = " cannot both go to standard output";
    expect_kept(folder, {"encode", "p.0.ppm", "-", "--manifest", "-"}, "OUT and --manifest" + mixed);
    expect_kept(folder, {"encode", "p.0.ppm", "x.qvr", "--manifest", "-", "--json"}, "--manifest and --json" + mixed);
    expect_silent(folder, {"encode", "p.0.ppm", "/dev/null", "--manifest", "/dev/null"});
}

TEST(distinct, a_file_with_a_percent_sign_is_read_under_its_own_name) {
    const scratch_folder folder;
    write_pixels(folder, "p.");
    std::filesystem::rename(folder.file("p.0.ppm"), folder.file("p 50%dark.ppm"));
    expect_silent(folder, {"encode", "p 50%dark.ppm", "a.qvr"});
    expect_silent(folder, {"convert", "p 50%dark.ppm", "b.qvr"});
    EXPECT_EQ(folder.read("b.qvr"), folder.read("a.qvr"));
    expect_silent(folder, {"decode", "a.qvr", "a.raw"});
    EXPECT_EQ(folder.read("a.raw"), bytes(3, 0));
    expect_failure(folder, {"encode", "q 50%dark.ppm", "c.qvr"}, 3, "there is no file of this sequence",
                   "the number of digits must be that of the names: %04d stands for 0000, %d for 0; a percent sign "
                   "that is no number is written %%");
}

}  // namespace
