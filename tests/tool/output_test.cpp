// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "clips.h"
#include "comes_true.h"
#include "process.h"

namespace {

const std::vector<std::string> k_raw_options = {"--size", "4x2", "--order", "RGB24", "-q"};

std::vector<std::string> encode(const std::string& from, const std::string& to) {
    std::vector<std::string> arguments = {"encode", from, to};
    arguments.insert(arguments.end(), k_raw_options.begin(), k_raw_options.end());
    return arguments;
}

unsigned mode_of(const std::string& path) {
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777u : 0u;
}

TEST(output, a_complete_file_replaces_an_old_one_and_keeps_its_permissions) {
    const scratch_folder folder;
    folder.write("clip.raw", noise(24));
    folder.write("a.qvr", bytes(1000, 'x'));
    ASSERT_EQ(chmod(folder.file("a.qvr").c_str(), 0640), 0);
    ASSERT_EQ(folder.qvr(encode("clip.raw", "a.qvr")).code, 0);
    EXPECT_EQ(folder.read("a.qvr").size(), k_rgb_frame);
    EXPECT_EQ(mode_of(folder.file("a.qvr")), 0640u);
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"a.qvr", "clip.raw"}));
}

TEST(output, a_failure_leaves_an_old_file_as_it_was) {
    const scratch_folder folder;
    folder.write("clip.raw", noise(24 + 1));
    const bytes old(100, 'x');
    folder.write("a.qvr", old);
    EXPECT_EQ(folder.qvr(encode("clip.raw", "a.qvr")).code, 1);
    EXPECT_EQ(folder.read("a.qvr"), old);
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"a.qvr", "clip.raw"}));
}

TEST(output, nothing_has_the_name_before_it_is_complete) {
    const scratch_folder folder;
    int feed = -1;
    const int process = folder.start_qvr(encode("-", "a.qvr"), &feed);
    const bytes frame = noise(24);
    ASSERT_EQ(write(feed, frame.data(), frame.size()), 24);
    ASSERT_TRUE(comes_true([&] { return folder.names().size() == 1; }));
    EXPECT_EQ(folder.names()[0].rfind("a.qvr.part-", 0), 0u) << folder.names()[0];
    close(feed);
    EXPECT_EQ(wait_for(process).code, 0);
    EXPECT_EQ(folder.names(), std::vector<std::string>{"a.qvr"});
}

TEST(output, an_interrupt_leaves_nothing_behind) {
    const rlimit no_core = {0, 0};
    ASSERT_EQ(setrlimit(RLIMIT_CORE, &no_core), 0);
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE, SIGXCPU, SIGXFSZ}) {
        const scratch_folder folder;
        int feed = -1;
        const int process = folder.start_qvr(encode("-", "a.qvr"), &feed);
        // The temporary file is watched over as soon as it is there; the first frame shows that it is.
        const bytes frame = noise(24);
        ASSERT_EQ(write(feed, frame.data(), frame.size()), 24);
        ASSERT_TRUE(comes_true([&] {
            const std::vector<std::string> names = folder.names();
            return names.size() == 1 && folder.read(names[0]).size() == k_rgb_frame;
        }));
        ASSERT_EQ(kill(process, number), 0);
        EXPECT_EQ(wait_for(process).signal_number, number);
        close(feed);
        EXPECT_TRUE(folder.names().empty());
    }
}

TEST(output, a_link_is_followed_and_stays) {
    const scratch_folder folder;
    folder.write("clip.raw", noise(24));
    folder.write("real.qvr", bytes(5));
    std::filesystem::create_symlink("real.qvr", folder.file("link.qvr"));
    ASSERT_EQ(folder.qvr(encode("clip.raw", "link.qvr")).code, 0);
    EXPECT_TRUE(std::filesystem::is_symlink(folder.file("link.qvr")));
    EXPECT_EQ(folder.read("real.qvr").size(), k_rgb_frame);
}

TEST(output, a_link_to_a_file_that_is_not_there_yet_is_followed_and_stays) {
    const scratch_folder folder;
    folder.write("clip.raw", noise(24));
    std::filesystem::create_directory(folder.file("far"));
    std::filesystem::create_symlink("far/middle", folder.file("link.qvr"));
    std::filesystem::create_symlink("real.qvr", folder.file("far/middle"));
    ASSERT_EQ(folder.qvr(encode("clip.raw", "link.qvr")).code, 0);
    EXPECT_TRUE(std::filesystem::is_symlink(folder.file("link.qvr")));
    EXPECT_EQ(folder.read("far/real.qvr").size(), k_rgb_frame);
}

TEST(output, devices_are_written_and_not_replaced) {
    const scratch_folder folder;
    folder.write("clip.raw", noise(24));
    EXPECT_EQ(folder.qvr(encode("clip.raw", "/dev/null")).code, 0);
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

TEST(output, a_full_disk_is_an_output_failure) {
    const scratch_folder folder;
    folder.write("clip.raw", noise(24));
    make_rgb_clip(folder, "clip.qvr", 1);
    for (const std::vector<std::string>& arguments :
         {encode("clip.raw", "/dev/full"), {"decode", "clip.qvr", "/dev/full"}}) {
        const outcome result = folder.qvr(arguments);
        EXPECT_EQ(result.code, 3);
        EXPECT_EQ(result.err,
                  "qvr: /dev/full: cannot write it: No space left on device\n"
                  "hint: make room or write to another disk; nothing incomplete was left behind\n");
    }
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"info", "clip.qvr"},
                                                      {"formats"},
                                                      {"decode", "clip.qvr", "-"},
                                                      {"--help"},
                                                      {"--version"},
                                                      {"encode", "--help"}}) {
        const outcome result = folder.qvr_to("/dev/full", arguments);
        EXPECT_EQ(result.code, 3);
        EXPECT_TRUE(holds(result.err, "qvr: standard output: cannot write it: No space left on device")) << result.err;
    }
}

TEST(output, files_that_cannot_be_made_are_output_failures) {
    const scratch_folder folder;
    folder.write("clip.raw", noise(24));
    const outcome nowhere = folder.qvr(encode("clip.raw", "no/such/folder/a.qvr"));
    EXPECT_EQ(nowhere.code, 3);
    EXPECT_EQ(nowhere.err,
              "qvr: no/such/folder/a.qvr: cannot create it: No such file or directory"
              "\nhint: look at the name and its folder, which must exist\n");
    const outcome directory = folder.qvr(encode("clip.raw", folder.path()));
    EXPECT_EQ(directory.code, 3);
    EXPECT_EQ(directory.err,
              "qvr: " + folder.path() + ": cannot write it: it is a directory\nhint: name a file in the folder\n");
}

TEST(output, files_that_cannot_be_read_are_input_failures) {
    const scratch_folder folder;
    for (const std::vector<std::string>& arguments : {encode("none.raw", "a.qvr"),
                                                      {"encode", "none.raw", "a.qvr"},
                                                      {"decode", "none.raw", "a.raw"},
                                                      {"info", "none.raw"}}) {
        const outcome result = folder.qvr(arguments);
        EXPECT_EQ(result.code, 3);
        EXPECT_TRUE(holds(
            result.err, "qvr: none.raw: cannot open it for reading: No such file or directory\nhint: look at the name"))
            << result.err;
    }
    const outcome directory = folder.qvr({"info", folder.path()});
    EXPECT_EQ(directory.code, 3);
    EXPECT_TRUE(holds(directory.err, "cannot read it: Is a directory")) << directory.err;
    EXPECT_TRUE(folder.names().empty());
}

}  // namespace
