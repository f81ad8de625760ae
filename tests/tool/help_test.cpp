// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <algorithm>

#include "help_texts.h"

namespace {

TEST(help, every_command_is_in_the_list) {
    const scratch_folder folder;
    std::vector<std::string> names;
    for (const auto& [name, options] : read_all_help(folder)) {
        names.push_back(name);
        EXPECT_FALSE(options.empty()) << name;
    }
    for (const char* name : {"encode", "decode", "wrap", "unwrap", "info", "formats", "view", "bench"}) {
        EXPECT_EQ(std::count(names.begin(), names.end(), name), 1) << name;
    }
    EXPECT_EQ(std::count(names.begin(), names.end(), "generate"), 0);
}

// Flags are off; what has to be given has no default.
TEST(help, every_option_with_a_value_says_what_holds_without_it) {
    const scratch_folder folder;
    int checked = 0;
    for (const auto& [command, options] : read_all_help(folder)) {
        for (const help_entry& option : options) {
            const bool flag = option.head.find(' ') == std::string::npos ||
                              option.head.substr(option.head.find(' ') + 1).find(": ") < 9;
            const bool said = holds(option.text, "default") || holds(option.text, "not given");
            EXPECT_TRUE(flag || said || holds(option.head, "REQUIRED"))
                << command << " " << option.head << ": " << option.text;
            checked += flag ? 0 : 1;
        }
    }
    EXPECT_GT(checked, 25);
}

TEST(help, lines_are_short_enough_to_read) {
    const scratch_folder folder;
    std::vector<std::vector<std::string>> pages = {{"--help"}};
    for (const auto& [command, options] : read_all_help(folder)) {
        pages.push_back({command, "--help"});
    }
    for (const std::vector<std::string>& page : pages) {
        const std::string help = folder.qvr(page).out;
        EXPECT_FALSE(holds(help, "\n\n\n")) << page.front();
        for (const std::string& line : lines_of(help)) {
            EXPECT_LE(line.size(), 130u) << page.front() << ": " << line;
        }
    }
}

TEST(help, options_speak_of_the_command_that_they_belong_to) {
    const scratch_folder folder;
    for (const auto& [command, options] : read_all_help(folder)) {
        const std::string help = folder.qvr({command, "--help"}).out;
        EXPECT_EQ(holds(help, "-j leaves of them"), holds(help, "--threads") && holds(help, "--jobs")) << command;
    }
    const std::string encode = folder.qvr({"encode", "--help"}).out;
    EXPECT_TRUE(holds(encode, "numbered sequence as IN")) << encode;
    EXPECT_FALSE(holds(encode, "numbered sequence as OUT")) << encode;
    EXPECT_FALSE(holds(encode, "a PNG is put")) << encode;
    EXPECT_FALSE(holds(encode, "default: IN is a PNG")) << encode;
    const std::string decode = folder.qvr({"decode", "--help"}).out;
    EXPECT_TRUE(holds(decode, "numbered sequence as OUT")) << decode;
    EXPECT_FALSE(holds(decode, "numbered sequence as IN")) << decode;
}

TEST(help, values_to_choose_from_are_named) {
    const scratch_folder folder;
    const std::string help = folder.qvr({"view", "--help"}).out;
    EXPECT_TRUE(holds(help, "bt601, bt709, bt2020; default: bt709")) << help;
    EXPECT_TRUE(holds(help, "How the samples are meant:\n  --matrix")) << help;
}

}  // namespace
