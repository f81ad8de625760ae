// SPDX-License-Identifier: BSD-3-Clause
//
// Every command in every class of failure: 1 bad data, 2 wrong usage, 3 input or output. The message names the file,
// and where there is a frame, the frame and its offset.
#include <gtest/gtest.h>

#include "boxes.h"
#include "clips.h"
#include "process.h"

namespace {

struct failing_case {
    std::vector<std::string> arguments;
    int code;
    const char* message;  // the beginning of standard error
};

void fill(const scratch_folder& folder) {
    make_rgb_clip(folder, "clip.qvr", 2);
    bytes clip = folder.read("clip.qvr");
    clip[k_rgb_frame + 28] = 2;
    folder.write("bad.qvr", clip);
    put_le32(clip, k_rgb_frame + 29, 7);
    folder.write("worse.qvr", clip);
    folder.write("empty", {});
    folder.write("noise", noise(50));
    folder.write("clip.raw", noise(24));
    folder.write("cut.raw", noise(23));
    folder.write("bad.png", noise(20));
    folder.write("q.bin", qcx_frame(1300, 4, 2));
    folder.write("m.raw", noise(8));
    folder.write("full", {});
}

void expect_all(const std::vector<failing_case>& cases) {
    const scratch_folder folder;
    fill(folder);
    const std::vector<std::string> before = folder.names();
    for (const failing_case& wanted : cases) {
        const outcome result = folder.qvr(wanted.arguments);
        std::string line;
        for (const std::string& word : wanted.arguments) {
            line += " " + word;
        }
        EXPECT_EQ(result.code, wanted.code) << line << "\n" << result.err;
        EXPECT_EQ(result.err.substr(0, std::string(wanted.message).size()), wanted.message) << line;
        EXPECT_EQ(folder.names(), before) << line;
    }
}

const char* const k_bad_frame = "qvr: bad.qvr: frame 1 at offset 61: ";

TEST(exit_codes, bad_data) {
    const std::vector<std::string> size = {"--size", "4x2", "--order", "RGB24"};
    expect_all({
        {{"encode", "bad.png", "a.qvr"}, 1, "qvr: bad.png: this is not a PNG"},
        {{"encode", "cut.raw", "a.qvr", "--size", "4x2", "--order", "RGB24"},
         1,
         "qvr: cut.raw: frame 0 at offset 0: the last frame is not complete"},
        {{"encode", "empty", "a.qvr", "--size", "4x2", "--order", "RGB24"},
         1,
         "qvr: empty: there is no frame in it: the file is empty"},
        {{"decode", "bad.qvr", "a.raw"}, 1, k_bad_frame},
        {{"decode", "noise", "a.raw"}, 1, "qvr: noise: frame 0 at offset 0: a 'pack' box should begin here"},
        {{"decode", "empty", "a.raw"}, 1, "qvr: empty: there is no frame in it: the file is empty"},
        {{"info", "bad.qvr"}, 1, k_bad_frame},
        {{"info", "empty"}, 1, "qvr: empty: there is no frame in it: the file is empty"},
        {{"info", "noise", "--json"}, 1, "qvr: noise: frame 0 at offset 0: "},
        {{"dump", "worse.qvr"}, 1, "qvr: worse.qvr: frame 1 at offset 61: the 'sdat' box at 90: "},
        {{"dump", "noise"}, 1, "qvr: noise: frame 0 at offset 0: a 'pack' box should begin here"},
        {{"dump", "empty"}, 1, "qvr: empty: there is no frame in it: the file is empty"},
        {{"verify", "bad.qvr"}, 1, k_bad_frame},
        {{"verify", "noise"}, 1, "qvr: noise: frame 0 at offset 0: a 'pack' box should begin here"},
        {{"verify", "empty"}, 1, "qvr: empty: there is no frame in it: the file is empty"},
        {{"wrap", "--qcx", "m.raw", "--alpha", "m.raw", "--size", "4x2", "--type", "U8", "a.qvr"},
         1,
         "qvr: m.raw: cannot wrap: Size is too small to parse QCX header\nhint: "},
        {{"unwrap", "bad.qvr", "--into", "parts"}, 1, k_bad_frame},
        {{"unwrap", "clip.qvr", "--into", "parts"}, 1, "qvr: clip.qvr: there are no wrapped payloads in it\nhint: "},
        {{"unwrap", "clip.qvr", "--into", "parts", "--frame", "1"},
         1,
         "qvr: clip.qvr: frame 1 at offset 61: there are no wrapped payloads in it\nhint: "},
    });
}

TEST(exit_codes, wrong_usage) {
    expect_all({
        {{}, 2, "qvr: "},
        {{"transmogrify"}, 2, "qvr: "},
        {{"encode", "clip.raw", "a.qvr"},
         2,
         "qvr: clip.raw: this is no picture or clip that can be told by its first bytes, and raw frames need --size\n"},
        {{"encode", "clip.raw", "a.qvr", "--size", "3x2", "--order", "UYVY", "--type", "U8"}, 2, "qvr: clip.raw: "},
        {{"decode", "clip.qvr", "a.raw", "--order", "UYVY"}, 2, "qvr: clip.qvr: frame 0 at offset 0: cannot decode: "},
        {{"decode", "clip.qvr", "a.raw", "--frame", "2"}, 2, "qvr: clip.qvr: there is no frame 2: the file holds 2"},
        {{"decode", "clip.qvr", "a.png"}, 2, "qvr: clip.qvr: the file holds more than one frame"},
        {{"info"}, 2, "qvr: FILE.qvr is required\nhint: 'qvr info --help'"},
        {{"info", "clip.qvr", "--xml"}, 2, "qvr: "},
        {{"dump"}, 2, "qvr: FILE.qvr is required\nhint: 'qvr dump --help'"},
        {{"dump", "clip.qvr", "--hex", "many"}, 2, "qvr: "},
        {{"dump", "clip.qvr", "--frame", "2"}, 2, "qvr: clip.qvr: there is no frame 2: the file holds 2"},
        {{"verify"}, 2, "qvr: FILE.qvr is required\nhint: 'qvr verify --help'"},
        {{"verify", "clip.qvr", "--frame", "2"}, 2, "qvr: clip.qvr: there is no frame 2: the file holds 2"},
        {{"wrap", "a.qvr"}, 2, "qvr: there is nothing to wrap\nhint: "},
        {{"wrap", "--size", "4x2", "--tiles", "m.raw", "clip.qvr"},
         2,
         "qvr: clip.qvr: it is there already: is it OUT.qvr, or a chunk?\nhint: "},
        {{"unwrap", "clip.qvr"}, 2, "qvr: --into is required\nhint: 'qvr unwrap --help'"},
        {{"unwrap", "clip.qvr", "--into", "parts", "--frame", "2"},
         2,
         "qvr: clip.qvr: there is no frame 2: the file holds 2"},
        {{"formats", "more"}, 2, "qvr: "},
    });
}

TEST(exit_codes, input_and_output) {
    const char* const missing = "qvr: none: cannot open it for reading: No such file or directory\nhint: ";
    const char* const nowhere = "qvr: no/such: cannot create it: No such file or directory\nhint: ";
    const char* const full = "qvr: /dev/full: cannot write it: No space left on device\nhint: ";
    expect_all({
        {{"encode", "none", "a.qvr"}, 3, missing},
        {{"encode", "clip.raw", "no/such", "--size", "4x2", "--order", "RGB24"}, 3, nowhere},
        {{"encode", "clip.raw", "/dev/full", "--size", "4x2", "--order", "RGB24"}, 3, full},
        {{"decode", "none", "a.raw"}, 3, missing},
        {{"decode", "clip.qvr", "no/such"}, 3, nowhere},
        {{"decode", "clip.qvr", "/dev/full"}, 3, full},
        {{"info", "none"}, 3, missing},
        {{"info", "."}, 3, "qvr: .: cannot read it: Is a directory\nhint: "},
        {{"dump", "none"}, 3, missing},
        {{"verify", "none"}, 3, missing},
        {{"verify", "."}, 3, "qvr: .: cannot read it: Is a directory\nhint: "},
        {{"wrap", "--tiles", "none", "--size", "4x2", "a.qvr"}, 3, missing},
        {{"wrap", "--tiles", "m.raw", "--size", "4x2", "no/such"}, 3, nowhere},
        {{"wrap", "--tiles", "m.raw", "--size", "4x2", "/dev/full"}, 3, full},
        {{"unwrap", "none", "--into", "parts"}, 3, missing},
        {{"unwrap", "clip.qvr", "--into", "no/such"}, 3, nowhere},
    });
}

TEST(exit_codes, a_report_that_cannot_be_written_is_an_output_failure) {
    const scratch_folder folder;
    make_rgb_clip(folder, "clip.qvr", 2);
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"info", "clip.qvr"},
                                                      {"info", "clip.qvr", "--json"},
                                                      {"dump", "clip.qvr"},
                                                      {"verify", "clip.qvr"},
                                                      {"verify", "clip.qvr", "--json"},
                                                      {"decode", "clip.qvr", "again.raw", "--json"}}) {
        const outcome result = folder.qvr_to("/dev/full", arguments);
        EXPECT_EQ(result.code, 3) << arguments[0];
        EXPECT_TRUE(holds(result.err, "qvr: standard output: cannot write it: No space left on device\nhint: "))
            << result.err;
    }
}

}  // namespace
