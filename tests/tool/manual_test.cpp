// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <cstdio>

#include "boxes.h"
#include "clips.h"
#include "help_texts.h"
#include "pictures.h"
#include "process.h"

namespace {

// A name as the page writes it, where a hyphen must not become another character.
std::string in_roff(const std::string& name) {
    std::string text;
    for (const char c : name) {
        text += c == '-' ? "\\-" : std::string(1, c);
    }
    return text;
}

std::string make_page(const scratch_folder& folder) {
    const outcome made = folder.qvr({"generate", "man"});
    EXPECT_EQ(made.code, 0) << made.err;
    folder.write("qvr.1", bytes(made.out.begin(), made.out.end()));
    return made.out;
}

TEST(manual, every_command_and_option_is_in_its_section) {
    const scratch_folder folder;
    const std::string page = make_page(folder);
    for (const auto& [command, options] : read_all_help(folder)) {
        const std::size_t start = page.find("\n.SS " + command + "\n");
        ASSERT_NE(start, std::string::npos) << command;
        const std::string section = page.substr(start, page.find("\n.S", start + 4) - start);
        for (const help_entry& option : options) {
            for (const std::string& name : option.names) {
                EXPECT_TRUE(holds(section, "\\fB" + in_roff(name) + "\\fR")) << command << " " << name;
            }
        }
    }
    EXPECT_FALSE(holds(page, ".SS generate"));
}

TEST(manual, sections_stand_in_their_usual_order) {
    const scratch_folder folder;
    const std::string page = make_page(folder);
    std::size_t at = 0;
    for (const char* title : {".TH QVR 1", ".SH NAME\nqvr \\- ", ".SH SYNOPSIS", ".SH DESCRIPTION", ".SH COMMANDS",
                              ".SH OPTIONS", ".SH EXAMPLES", ".SH EXIT STATUS", ".SH FILES"}) {
        at = page.find(title, at);
        ASSERT_NE(at, std::string::npos) << title;
    }
}

TEST(manual, what_is_needed_stands_in_no_brackets_and_files_are_listed) {
    const scratch_folder folder;
    const std::string page = make_page(folder);
    EXPECT_TRUE(holds(page, "qvr wrap\\fR [\\fIOPTIONS\\fR] \\fIOUT.qvr\\fR\n"));
    EXPECT_TRUE(holds(folder.qvr({"wrap", "--help"}).out, "Usage: qvr wrap [OPTIONS] OUT.qvr\n"));
    for (const char* name : {".I *.qvr\n", ".I OUT.part\n", ".I FILE.manifest\n"}) {
        EXPECT_TRUE(holds(page, name)) << name;
    }
}

TEST(manual, it_is_set_without_a_warning) {
    if (!is_installed("groff")) {
        GTEST_SKIP() << "there is no groff to set the page with";
    }
    const scratch_folder folder;
    make_page(folder);
    const outcome set = folder.command({"groff", "-ww", "-man", "-Tutf8", "-rLL=100n", "qvr.1"});
    EXPECT_EQ(set.code, 0);
    EXPECT_EQ(set.err, "");
    EXPECT_GT(lines_of(set.out).size(), 200u);
}

// Everything that the examples read. What they write, the ones behind them may read.
void write_example_files(const scratch_folder& folder) {
    write_picture(folder.file("photo.png"), make_picture(colours::rgba, 8, 32, 16));
    write_picture(folder.file("matte.png"), make_picture(colours::grey, 8, 1280, 720));
    for (const char* clip : {"clip.yuv", "clip.uyvy", "long.yuv"}) {
        folder.write(clip, bytes(1920 * 1080 * 2 * 8, 128));
    }
    folder.write("clip.v210", bytes(5120 * 1080 * 8, 16));
    folder.write("matte.raw", bytes(1920 * 1080 * 2, 9));
    for (const char* chunk : {"a.bin", "b.bin", "c.bin"}) {
        folder.write(chunk, noise(1000));
    }
    folder.write("shot.raw", bytes(8 * 4 * 3 * sizeof(float), 0));
    for (const char* made :
         {"mkdir shot frames", "qvr convert clip.uyvy clip.y4m --size 1920x1080",
          "qvr convert shot.raw shot/frame.%04d.exr --size 8x4 --order RGB --type Float --out-start 1001",
          "qvr encode photo.png plain.qvr", "cp plain.qvr titles.qvr"}) {
        const outcome result = folder.command({"bash", "-c", made});
        ASSERT_EQ(result.code, 0) << made << "\n" << result.err;
    }
}

// What an example reads under a name that another one uses for something else: a compressed frame of the size of the
// matte, a clip of the format that it asks for.
void write_files_for(const scratch_folder& folder, const std::string& example) {
    if (holds(example, "frame.bin")) {
        folder.write("frame.bin",
                     holds(example, "--interlaced") ? qcx_frame(1241, 1920, 1080) : qcx_frame(1250, 1280, 720));
    }
    const bool v210 = holds(example, "v210");
    if (holds(example, "clip.qvr") && !holds(example, "encode")) {
        const outcome made = folder.qvr({"encode", v210 ? "clip.v210" : "clip.yuv", "clip.qvr", "--size", "1920x1080",
                                         "--order", v210 ? "v210" : "UYVY", "--type", v210 ? "U10Packed" : "U8"});
        ASSERT_EQ(made.code, 0) << made.err;
    }
}

// Programs that stand for something of the reader's.
constexpr const char* k_before =
    "set -eo pipefail\n"
    "capture() { head -c 1382400 /dev/zero; }\n"
    "playout() { cat >/dev/null; }\n";

TEST(manual, examples_work_as_pasted) {
    const scratch_folder folder;
    write_example_files(folder);
    int run = 0;
    for (const char* command : {"--help", "encode", "decode", "convert", "join", "wrap", "unwrap", "info", "dump",
                                "verify", "view", "formats", "bench"}) {
        const std::string help = command[0] == '-' ? folder.qvr({command}).out : folder.qvr({command, "--help"}).out;
        bool in_examples = false;
        for (const std::string& line : lines_of(help)) {
            in_examples = line == "Try:" || line == "Example:" || line == "Examples:" ||
                          (in_examples && line.rfind("  ", 0) == 0);
            if (!in_examples || line.rfind("  ", 0) != 0) {
                continue;
            }
            write_files_for(folder, line);
            // Not to measure anything, only to see that it can be called.
            const bool measures = holds(line, "qvr bench");
            const std::string quick = !measures               ? ""
                                      : holds(line, "--size") ? " --seconds 0"
                                                              : " --seconds 0 --size 64x32";
            const std::string pasted = line.substr(0, line.find('#')) + quick;
            const outcome result = folder.command({"bash", "-c", k_before + pasted});
            EXPECT_EQ(result.code, 0) << pasted << "\n" << result.err;
            ++run;
        }
    }
    EXPECT_GT(run, 45);
}

TEST(manual, only_what_there_is_can_be_generated) {
    const scratch_folder folder;
    const outcome result = folder.qvr({"generate", "tcsh"});
    EXPECT_EQ(result.code, 2);
    EXPECT_TRUE(holds(result.err, "generate tcsh: there is nothing of this name")) << result.err;
}

}  // namespace
