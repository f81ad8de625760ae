// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include "process.h"

namespace {

// What is wrong with a command line is said on standard error, ends with code 2 and leaves no file.
void expect_refused(const std::vector<std::string>& arguments, const std::string& message,
                    const std::string& hint = {}) {
    const scratch_folder folder;
    folder.write("clip.raw", bytes(24));
    const outcome result = folder.qvr(arguments);
    EXPECT_EQ(result.code, 2) << result.err;
    EXPECT_EQ(result.err.substr(0, 5), "qvr: ");
    EXPECT_TRUE(holds(result.err, message)) << result.err;
    EXPECT_TRUE(holds(result.err, "hint: " + hint)) << result.err;
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(folder.names(), std::vector<std::string>{"clip.raw"});
}

std::vector<std::string> raw(std::vector<std::string> options) {
    options.insert(options.begin(), {"encode", "clip.raw", "clip.qvr"});
    return options;
}

TEST(usage, version_names_the_tool_and_the_library) {
    const scratch_folder folder;
    const outcome result = folder.qvr({"--version"});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.out, "qvr 2.7.4 (library 2.7.4 build 670r)\n");
    EXPECT_EQ(result.err, "");
}

TEST(usage, help_goes_to_standard_output_with_examples) {
    const scratch_folder folder;
    const outcome whole = folder.qvr({"--help"});
    EXPECT_EQ(whole.code, 0);
    for (const char* word : {"encode", "decode", "convert", "wrap", "unwrap", "info", "formats",
                             "Exit codes: 0 good, 1 bad data, 2 wrong usage"}) {
        EXPECT_TRUE(holds(whole.out, word)) << word;
    }
    for (const char* command : {"encode", "decode", "convert", "wrap", "unwrap", "info", "dump", "verify", "formats"}) {
        const outcome result = folder.qvr({command, "--help"});
        EXPECT_EQ(result.code, 0);
        EXPECT_EQ(result.err, "");
        EXPECT_TRUE(holds(result.out, std::string("Usage: qvr ") + command)) << result.out;
        EXPECT_TRUE(holds(result.out, "Example")) << result.out;
    }
}

TEST(usage, every_option_is_in_the_help) {
    const scratch_folder folder;
    const std::string encode = folder.qvr({"encode", "--help"}).out;
    for (const char* option :
         {"--alpha-rle", "--slices", "--order", "--type", "--interlaced", "--threads", "--size", "--row-bytes ",
          "--row-bytes2 ", "--time", "--quiet", "--format", "--from", "--start", "--strict"}) {
        EXPECT_TRUE(holds(encode, option)) << option;
    }
    const std::string decode = folder.qvr({"decode", "--help"}).out;
    for (const char* option : {"--frame", "--order", "--type", "--threads", "--row-bytes ", "--row-bytes2 ", "--time",
                               "--quiet", "--format", "--to", "--start", "--rate", "--strict"}) {
        EXPECT_TRUE(holds(decode, option)) << option;
    }
    const std::string convert = folder.qvr({"convert", "--help"}).out;
    for (const char* option : {"--from",       "--to",         "--size",        "--format",         "--order",
                               "--type",       "--row-bytes ", "--row-bytes2 ", "--interlaced",     "--start",
                               "--out-format", "--out-order",  "--out-type",    "--out-row-bytes ", "--out-row-bytes2 ",
                               "--out-start",  "--rate",       "--strict",      "--alpha-rle",      "--slices",
                               "--threads",    "--quiet"}) {
        EXPECT_TRUE(holds(convert, option)) << option;
    }
}

TEST(usage, a_command_is_needed) {
    expect_refused({}, "qvr: a command is needed\n", "'qvr --help'");
    expect_refused({"--fast"}, "qvr: this argument was not expected: --fast\n", "'qvr --help'");
}

TEST(usage, a_command_that_there_is_not_is_named) {
    const std::string list = "'qvr --help' lists the commands\n";
    expect_refused({"transmogrify"}, "qvr: there is no command 'transmogrify'\n", list);
    expect_refused({"transmogrify", "--help"}, "qvr: there is no command 'transmogrify'\n", list);
    expect_refused({"help", "transmogrify"}, "qvr: there is no command 'transmogrify'\n", list);
    expect_refused({""}, "qvr: there is no command ''\n", list);
    expect_refused({"encod", "clip.raw", "b"}, "there is no command 'encod'\n", "did you mean 'encode'? " + list);
    expect_refused({"evncode", "clip.raw", "b"}, "there is no command 'evncode'\n", "did you mean 'encode'? " + list);
    expect_refused({"info2"}, "there is no command 'info2'\n", "did you mean 'info'? " + list);
    expect_refused({"generat"}, "there is no command 'generat'\n", list);  // hidden
}

TEST(usage, help_is_a_word_as_well) {
    const scratch_folder folder;
    EXPECT_EQ(folder.qvr({"help"}).out, folder.qvr({"--help"}).out);
    const outcome result = folder.qvr({"help", "encode"});
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(result.out, folder.qvr({"encode", "--help"}).out);
}

TEST(usage, arguments_are_needed) {
    expect_refused({"encode"}, "IN is required", "'qvr encode --help'");
    expect_refused({"encode", "clip.raw"}, "OUT.qvr is required", "'qvr encode --help'");
    expect_refused({"decode", "clip.raw"}, "OUT is required", "'qvr decode --help'");
    expect_refused({"info"}, "FILE.qvr is required", "'qvr info --help'");
}

TEST(usage, unknown_options_are_refused) {
    expect_refused(raw({"--fast"}), "this argument was not expected: --fast\n", "'qvr encode --help'");
    expect_refused({"info", "clip.raw", "--fast", "3"}, "these arguments were not expected: --fast 3\n",
                   "'qvr info --help'");
    expect_refused({"info", "clip.raw", "more.qvr"}, "more.qvr", "'qvr info --help'");
}

TEST(usage, numbers_out_of_range_are_refused) {
    expect_refused(raw({"--alpha-rle", "--slices", "256"}), "--slices", "'qvr encode --help'");
    expect_refused(raw({"--threads", "1025"}), "--threads", "'qvr encode --help'");
    expect_refused(raw({"--threads", "many"}), "--threads", "'qvr encode --help'");
    expect_refused(raw({"--row-bytes", "4294967296"}), "--row-bytes", "'qvr encode --help'");
    expect_refused({"decode", "clip.raw", "out.raw", "--frame", "-1"}, "--frame", "'qvr decode --help'");
}

TEST(usage, slices_need_coded_alpha) {
    expect_refused(raw({"--slices", "4"}), "--slices requires --alpha-rle");
}

TEST(usage, unknown_orders_are_refused) {
    for (const char* order : {"0", "17", "-1", "7.0", "7 ", "GRBA", "4294967303"}) {
        expect_refused(raw({"--size", "4x2", "--type", "1", "--order", order}),
                       std::string("--order ") + order + ": there is no such order", "'qvr formats'");
    }
}

TEST(usage, unknown_types_are_refused) {
    for (const char* type : {"0", "8", "16", "215", "S8"}) {
        expect_refused(raw({"--size", "4x2", "--order", "5", "--type", type}),
                       std::string("--type ") + type + ": there is no such type", "'qvr formats'");
    }
}

TEST(usage, a_type_that_contradicts_the_name_of_the_order_is_refused) {
    expect_refused(raw({"--size", "4x2", "--order", "v210", "--type", "U8"}),
                   "--type U8 contradicts --order v210, which is type 5 U10Packed", "leave --type out");
}

TEST(usage, pairs_that_the_library_does_not_take_are_refused) {
    const char* pairs[][3] = {{"1", "5", "order 1 YUY2 does not go with type 5 U10Packed"},
                              {"10", "214", "order 10 I420 does not go with type 214 Fixed16"},
                              {"14", "7", "order 14 Alpha does not go with type 7 Float"}};
    for (const auto& pair : pairs) {
        expect_refused(raw({"--size", "4x2", "--order", pair[0], "--type", pair[1]}), pair[2], "'qvr formats'");
    }
}

TEST(usage, malformed_sizes_are_refused) {
    for (const char* size : {"4", "x2", "4x", "4x2x1", "0x2", "4x0", "4*2", "-4x2", " 4x2", "4294967297x2"}) {
        expect_refused(raw({"--order", "5", "--type", "1", "--size", size}),
                       std::string("--size ") + size + ": this is not a size", "write width and height");
    }
}

TEST(usage, raw_frames_need_order_and_type) {
    expect_refused(raw({"--size", "4x2"}), "raw frames need --order and --type; --order is missing", "for example");
    expect_refused(raw({"--size", "4x2", "--order", "5"}), "--type is missing", "for example");
    expect_refused(raw({"--size", "4x2", "--type", "1"}), "--order is missing", "for example");
}

TEST(usage, something_that_is_no_png_needs_a_size) {
    expect_refused(
        raw({}), "clip.raw: this is no picture or clip that can be told by its first bytes, and raw frames need --size",
        "for example --size 1920x1080");
}

TEST(usage, frames_of_4_gib_are_refused_before_anything_is_read) {
    expect_refused(raw({"--size", "65536x65536", "--order", "Alpha", "--type", "U8"}),
                   "a frame of 65536x65536 is too large", "cut the picture into tiles");
    expect_refused(raw({"--size", "4294967295x1", "--order", "RGBA", "--type", "Float"}), "is too large", "cut");
    expect_refused(raw({"--size", "4x2", "--order", "RGB24", "--row-bytes", "4294967295"}), "is too large", "cut");
}

}  // namespace
