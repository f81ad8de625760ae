// SPDX-License-Identifier: BSD-3-Clause
//
// The command lines of wrap and unwrap: which words are what, and what is refused before anything is wrapped.
#include <gtest/gtest.h>

#include <cstdio>

#include "boxes.h"
#include "clips.h"
#include "process.h"

namespace {

class wrap_usage : public testing::Test {
  protected:
    wrap_usage() {
        folder_.write("a.bin", noise(10, 1));
        folder_.write("b.bin", noise(20, 2));
        folder_.write("c.bin", noise(30, 3));
        folder_.write("q.bin", qcx_frame(1300, 4, 2));
        folder_.write("m.raw", noise(8, 4));
        inputs_ = folder_.names();
    }

    // The three chunks, in order, have come into the file of the name.
    void expect_chunks(const std::vector<std::string>& arguments, const std::string& output = "out.qvr") {
        const outcome result = folder_.qvr(arguments);
        EXPECT_EQ(result.code, 0) << result.err;
        EXPECT_TRUE(holds(result.err, output + ": 3 chunks of together 60 bytes, 8x4 ")) << result.err;
        bytes chunks;
        append_box(chunks, "stch", folder_.read("a.bin"));
        append_box(chunks, "tile", folder_.read("b.bin"));
        append_box(chunks, "tile", folder_.read("c.bin"));
        bytes content;
        append_box(content, "sinf", plane_payload(8, 4, "stch"));
        append_box(content, "sdat", chunks);
        EXPECT_EQ(folder_.read(output), packed(content));
        std::remove(folder_.file(output).c_str());
    }

    void expect_refused(const std::vector<std::string>& arguments, const std::string& message,
                        const std::string& hint) {
        const outcome result = folder_.qvr(arguments);
        EXPECT_EQ(result.code, 2) << result.err;
        EXPECT_TRUE(holds(result.err, "qvr: " + message)) << result.err;
        EXPECT_TRUE(holds(result.err, "\nhint: " + hint)) << result.err;
        EXPECT_EQ(folder_.names(), inputs_);
    }

    scratch_folder folder_;
    std::vector<std::string> inputs_;
};

TEST_F(wrap_usage, chunks_and_output_are_told_apart_in_any_order) {
    expect_chunks({"wrap", "--tiles", "a.bin", "b.bin", "c.bin", "--size", "8x4", "out.qvr"});
    expect_chunks({"wrap", "--tiles", "a.bin", "b.bin", "c.bin", "--size=8x4", "out.qvr"});
    expect_chunks({"wrap", "--tiles", "a.bin", "b.bin", "c.bin", "out.qvr", "--size", "8x4"});
    expect_chunks({"wrap", "--size", "8x4", "--tiles", "a.bin", "b.bin", "c.bin", "out.qvr"});
    expect_chunks({"wrap", "--size", "8x4", "out.qvr", "--tiles", "a.bin", "b.bin", "c.bin"});
    expect_chunks({"wrap", "out.qvr", "--tiles", "a.bin", "b.bin", "c.bin", "--size", "8x4"});
    expect_chunks({"wrap", "--tiles", "a.bin", "--tiles", "b.bin", "c.bin", "--size", "8x4", "out.qvr"});
}

TEST_F(wrap_usage, an_output_of_another_name_needs_an_unmistakable_place) {
    expect_chunks({"wrap", "--tiles", "a.bin", "b.bin", "c.bin", "--size", "8x4", "out.bin"}, "out.bin");
    expect_chunks({"wrap", "out.bin", "--size", "8x4", "--tiles", "a.bin", "b.bin", "c.bin"}, "out.bin");
    expect_chunks({"wrap", "--size", "8x4", "--tiles", "a.bin", "b.bin", "c.bin", "--", "out.bin"}, "out.bin");
    expect_refused({"wrap", "--size", "8x4", "--tiles", "a.bin", "b.bin", "out.bin"}, "OUT.qvr is missing",
                   "behind a list of chunks only a name that ends in .qvr is taken for it");
}

TEST_F(wrap_usage, a_forgotten_output_never_costs_an_input) {
    expect_refused({"wrap", "--size", "8x4", "--tiles", "a.bin", "b.bin", "c.bin"}, "OUT.qvr is missing", "behind");
    expect_refused({"wrap", "--size", "8x4", "--tiles", "out.qvr"}, "OUT.qvr is missing", "behind");
    expect_refused({"wrap", "--qcx", "q.bin", "--alpha", "m.raw"}, "OUT.qvr is missing", "the last word");
    expect_refused({"wrap", "--tiles", "a.bin", "b.bin", "--size", "8x4", "./b.bin"},
                   "a file to wrap and OUT.qvr are the same file: b.bin", "write to a file of another name");
    expect_refused({"wrap", "--qcx", "q.bin", "--alpha", "m.raw", "--size", "4x2", "--type", "U8", "q.bin"},
                   "a file to wrap and OUT.qvr are the same file: q.bin", "write");
    EXPECT_EQ(folder_.read("b.bin"), noise(20, 2));
}

TEST_F(wrap_usage, a_file_that_is_there_behind_chunks_is_replaced_only_by_force) {
    folder_.write("d.qvr", noise(40, 4));
    inputs_ = folder_.names();
    const std::vector<std::string> guessed = {"wrap", "--size", "8x4", "--tiles", "a.bin", "d.qvr"};
    expect_refused(guessed, "d.qvr: it is there already: is it OUT.qvr, or a chunk?",
                   "OUT.qvr to be replaced stands before --tiles or behind another option, or give --force");
    EXPECT_EQ(folder_.read("d.qvr"), noise(40, 4));
    std::vector<std::string> forced = guessed;
    forced.push_back("--force");
    EXPECT_EQ(folder_.qvr(forced).code, 0);
    EXPECT_EQ(folder_.read("d.qvr").size(), 55u);
    // Where no chunk can stand, the name cannot be mistaken.
    EXPECT_EQ(folder_.qvr({"wrap", "--tiles", "a.bin", "b.bin", "--size", "8x4", "d.qvr"}).code, 0);
    EXPECT_EQ(folder_.read("d.qvr").size(), 83u);
    EXPECT_EQ(folder_.qvr({"wrap", "d.qvr", "--size", "8x4", "--tiles", "a.bin"}).code, 0);
    EXPECT_EQ(folder_.read("d.qvr").size(), 55u);
}

TEST_F(wrap_usage, options_that_do_not_go_together_are_refused) {
    const std::string help = "'qvr wrap --help'";
    expect_refused({"wrap", "out.qvr"}, "there is nothing to wrap", "give --qcx FRAME --alpha MATTE, or --tiles");
    expect_refused({"wrap", "--qcx", "q.bin", "out.qvr"}, "--qcx requires --alpha", help);
    expect_refused({"wrap", "--alpha", "m.raw", "out.qvr"}, "--alpha requires --qcx", help);
    expect_refused({"wrap", "--qcx", "q.bin", "--alpha", "m.raw", "--tiles", "a.bin", "--size", "4x2", "out.qvr"},
                   "--qcx excludes --tiles", help);
    expect_refused({"wrap", "--tiles", "a.bin", "--size", "4x2", "--type", "U8", "out.qvr"}, "--type requires --qcx",
                   help);
    expect_refused({"wrap", "--tiles", "a.bin", "--size", "4x2", "--alpha-rle", "out.qvr"},
                   "--alpha-rle requires --qcx", help);
    expect_refused({"wrap", "--qcx", "q.bin", "--alpha", "m.raw", "--slices", "3", "out.qvr"},
                   "--slices requires --alpha-rle", help);
    expect_refused({"wrap", "--tiles", "a.bin", "--size", "4x2", "b.bin", "out.qvr"}, "", help);
}

TEST_F(wrap_usage, chunks_need_names_and_a_size) {
    expect_refused({"wrap", "--tiles", "a.bin", "b.bin", "out.qvr"}, "--tiles needs --size", "the size in pixels");
    expect_refused({"wrap", "--tiles", "--size", "8x4", "out.qvr"}, "--tiles: there is no chunk behind it", "name");
    expect_refused({"wrap", "--tiles", "a.bin", "--size", "8", "out.qvr"}, "--size 8: this is not a size", "write");
}

TEST_F(wrap_usage, a_matte_of_raw_samples_is_described_in_full) {
    const std::vector<std::string> start = {"wrap", "--qcx", "q.bin", "--alpha", "m.raw", "out.qvr"};
    const auto with = [&](std::vector<std::string> more) {
        more.insert(more.begin(), start.begin(), start.end());
        return more;
    };
    expect_refused(with({}),
                   "m.raw: this is no picture or clip that can be told by its first bytes, and raw frames need --size",
                   "for example --size 1920x1080 --type U8");
    expect_refused(with({"--size", "4x2"}), "a matte of raw samples needs --type", "--type U8 or --type U16");
    expect_refused(with({"--size", "4x2", "--type", "U10"}), "order 14 Alpha does not go with type 3 U10", "'qvr");
    expect_refused(with({"--size", "65536x65536", "--type", "U8"}), "m.raw: a frame of 65536x65536 is too large",
                   "cut");
}

TEST_F(wrap_usage, only_one_input_can_be_standard_input) {
    const outcome result = folder_.qvr({"wrap", "--qcx", "-", "--alpha", "-", "out.qvr"});
    EXPECT_EQ(result.code, 2);
    EXPECT_EQ(result.err, "qvr: standard input can be only one of the files to wrap\n");
    expect_chunks({"wrap", "--tiles", "a.bin", "b.bin", "c.bin", "--size", "8x4", "out.qvr"});
}

TEST_F(wrap_usage, inputs_that_are_not_there_are_input_failures) {
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"wrap", "--tiles", "a.bin", "none.bin", "--size", "8x4", "out.qvr"},
          {"wrap", "--qcx", "none.bin", "--alpha", "m.raw", "--size", "4x2", "--type", "U8", "out.qvr"},
          {"wrap", "--qcx", "q.bin", "--alpha", "none.bin", "out.qvr"},
          {"unwrap", "none.bin", "--into", "parts"}}) {
        const outcome result = folder_.qvr(arguments);
        EXPECT_EQ(result.code, 3);
        EXPECT_EQ(result.err,
                  "qvr: none.bin: cannot open it for reading: No such file or directory\nhint: look at the name and "
                  "its folder, which must exist\n");
        EXPECT_EQ(folder_.names(), inputs_);
    }
    const outcome nowhere = folder_.qvr({"wrap", "--tiles", "a.bin", "--size", "8x4", "no/such/out.qvr"});
    EXPECT_EQ(nowhere.code, 3);
    EXPECT_EQ(nowhere.err,
              "qvr: no/such/out.qvr: cannot create it: No such file or directory\nhint: look at the name and its "
              "folder, which must exist\n");
}

TEST_F(wrap_usage, unwrap_needs_a_folder) {
    expect_refused({"unwrap", "a.bin"}, "--into is required", "'qvr unwrap --help'");
    const std::string help = folder_.qvr({"unwrap", "--help"}).out;
    for (const char* word :
         {"--into DIR", "--frame N", "--json", "frame000000-0.qcxf", "frame000000-alpha.png", "frame000000-1.tile"}) {
        EXPECT_TRUE(holds(help, word)) << word;
    }
}

TEST_F(wrap_usage, every_option_of_wrap_is_in_its_help) {
    const std::string help = folder_.qvr({"wrap", "--help"}).out;
    for (const char* option : {"--qcx FRAME", "--alpha MATTE", "--tiles CHUNK", "--size WxH", "--type ", "--interlaced",
                               "--alpha-rle", "--slices N", "--force", "--json", "--threads N", "--time", "--quiet"}) {
        EXPECT_TRUE(holds(help, option)) << option;
    }
}

TEST_F(wrap_usage, quiet_says_nothing_and_time_says_how_fast) {
    const std::vector<std::string> wrap = {"wrap", "--tiles", "a.bin", "b.bin", "--size", "8x4", "out.qvr", "-q"};
    EXPECT_EQ(folder_.qvr(wrap).err, "");
    EXPECT_EQ(folder_.qvr({"unwrap", "out.qvr", "--into", "parts", "-q"}).err, "");
    std::vector<std::string> timed = wrap;
    timed.push_back("--time");
    EXPECT_TRUE(holds(folder_.qvr(timed).err, "out.qvr: wrap: 1 frame, 0.0 MB raw in "));
    const outcome back = folder_.qvr({"unwrap", "out.qvr", "--into", "parts", "--time"});
    EXPECT_TRUE(holds(back.err, "parts: 2 payloads of 30 bytes and 0 alpha planes from 1 frame\n")) << back.err;
    EXPECT_TRUE(holds(back.err, "parts: unwrap: 1 frame, ")) << back.err;
}

}  // namespace
