// SPDX-License-Identifier: BSD-3-Clause
//
// Work that ends early, and goes on: after an interrupt, after being killed, after a full disk.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "clips.h"
#include "long_clips.h"

namespace {

const words k_resume = {"--resume"};

class resume : public testing::Test {
  protected:
    resume() { make_long_clip(folder_); }

    // Gives the command the first `count` bytes of `from` through a pipe, waits until `name` has `size` bytes, and ends
    // the command with a signal.
    void interrupt(const words& arguments, int signal, const bytes& from, std::size_t count, const std::string& name,
                   std::size_t size) {
        int feed = -1;
        const int process = folder_.start_qvr(arguments, &feed);
        feed_bytes(feed, from, count);
        ASSERT_TRUE(comes_to(folder_, name, size));
        ASSERT_EQ(kill(process, signal), 0);
        EXPECT_EQ(wait_for(process).signal_number, signal);
        close(feed);
    }

    // The command refuses to go on with what is kept, and leaves it as it is.
    void expect_left_alone(const char* name, const bytes& kept, const words& command, const std::string& message) {
        folder_.write(name, kept);
        const outcome result = folder_.qvr(command);
        EXPECT_EQ(result.code, 2);
        EXPECT_TRUE(holds(result.err, message)) << result.err;
        EXPECT_EQ(folder_.read(name), kept);
    }

    scratch_folder folder_;
};

TEST_F(resume, encoding_goes_on_after_an_interrupt_and_after_being_killed) {
    for (const int signal : {SIGINT, SIGTERM, SIGKILL}) {
        for (const char* jobs : {"1", "3"}) {
            // The pipe ends inside a frame, and so does what is kept.
            interrupt(encode_small("-", "a.qvr", {"--resume", "-j", jobs}), signal, long_samples(),
                      30 * k_small_samples + 5, "a.qvr.part", 30 * k_small_frame);
            EXPECT_EQ(folder_.names(), (words{"a.qvr.part", "long.qvr", "long.raw"}));
            bytes kept = folder_.read("a.qvr.part");
            EXPECT_EQ(kept.size(), 30 * k_small_frame);
            kept.insert(kept.end(), kept.begin(), kept.begin() + 20);
            folder_.write("a.qvr.part", kept);
            const outcome result = folder_.qvr(
                {"encode", "long.raw", "a.qvr", "--size", "4x2", "--order", "RGB24", "--resume", "-j", jobs});
            EXPECT_EQ(result.code, 0);
            EXPECT_TRUE(holds(result.err, "a.qvr: 60 frames, 29 of them made before, ")) << result.err;
            EXPECT_EQ(folder_.read("a.qvr"), folder_.read("long.qvr"));
            EXPECT_EQ(folder_.names(), (words{"a.qvr", "long.qvr", "long.raw"}));
            std::filesystem::remove(folder_.file("a.qvr"));
        }
    }
}

TEST_F(resume, decoding_and_converting_go_on_as_well) {
    const struct {
        const char* output;
        words command;
        std::size_t size;  // of the output with 30 frames
    } cases[] = {
        {"a.raw", {"decode"}, 30 * k_small_samples},
        {"a.qvr", {"convert", "--alpha-rle"}, 30 * k_small_frame},
    };
    const bytes stream = folder_.read("long.qvr");
    for (const auto& each : cases) {
        const auto command = [&](const char* input) {
            return words{each.command.front(), input, each.output, "--resume"} +
                   words(each.command.begin() + 1, each.command.end());
        };
        const std::string part = std::string(each.output) + ".part";
        interrupt(command("-"), SIGKILL, stream, 30 * k_small_frame + 5, part, each.size);
        const outcome result = folder_.qvr(command("long.qvr"));
        EXPECT_EQ(result.code, 0) << result.err;
        EXPECT_TRUE(holds(result.err, ": 60 frames, 29 of them made before, ")) << result.err;
        EXPECT_FALSE(folder_.has(part));
    }
    EXPECT_EQ(folder_.read("a.raw"), long_samples());
    EXPECT_EQ(folder_.read("a.qvr"), stream);
}

TEST_F(resume, a_clip_with_a_header_goes_on_behind_its_last_whole_frame) {
    const words grey = {"--size", "6x4", "--order", "Alpha", "--type", "U8", "-q"};
    folder_.write("grey.raw", long_samples());
    ASSERT_EQ(folder_.qvr(words{"encode", "grey.raw", "grey.qvr"} + grey).code, 0);
    ASSERT_EQ(folder_.qvr({"decode", "grey.qvr", "whole.y4m", "-q"}).code, 0);
    const bytes whole = folder_.read("whole.y4m");
    const std::size_t header = whole.size() - k_long_frames * 30;
    for (const std::size_t kept : {header - 3, header, header + 29, header + 30, header + 100, whole.size()}) {
        folder_.write("a.y4m.part", bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(kept)));
        const outcome result = folder_.qvr({"decode", "grey.qvr", "a.y4m", "--resume", "-q"});
        EXPECT_EQ(result.code, 0) << kept << result.err;
        EXPECT_EQ(folder_.read("a.y4m"), whole) << kept;
        std::filesystem::remove(folder_.file("a.y4m"));
    }
    folder_.write("a.y4m.part", bytes(whole.begin(), whole.begin() + 500));
    EXPECT_EQ(folder_.qvr({"decode", "grey.qvr", "a.y4m", "--resume", "--rate", "50"}).code, 2);
}

TEST_F(resume, pictures_that_are_there_are_not_made_again) {
    ASSERT_EQ(folder_.qvr({"decode", "long.qvr", "f.%02d.png", "-q"}).code, 0);
    const bytes second = folder_.read("f.02.png");
    const bytes mark(10, 'x');
    folder_.write("f.01.png", mark);  // only the first one that is there is looked at
    std::filesystem::remove(folder_.file("f.02.png"));
    std::filesystem::remove(folder_.file("f.59.png"));
    const outcome result = folder_.qvr({"decode", "long.qvr", "f.%02d.png", "--resume"});
    EXPECT_EQ(result.code, 0);
    EXPECT_TRUE(holds(result.err, "f.%02d.png: 60 frames, 57 of them made before, ")) << result.err;
    EXPECT_EQ(folder_.read("f.01.png"), mark);
    EXPECT_EQ(folder_.read("f.02.png"), second);
    EXPECT_TRUE(folder_.has("f.59.png"));
    const outcome again = folder_.qvr({"decode", "long.qvr", "f.%02d.png", "--resume"});
    EXPECT_TRUE(holds(again.err, "f.%02d.png: 60 frames, 59 of them made before, ")) << again.err;
    ASSERT_EQ(folder_.qvr({"decode", "long.qvr", "f.%02d.png", "-q"}).code, 0);
    EXPECT_NE(folder_.read("f.01.png"), mark);
}

TEST_F(resume, pictures_that_are_empty_are_made_and_the_first_that_is_not_is_compared) {
    const words decode = {"decode", "long.qvr", "f.%02d.png", "--resume", "-q"};
    ASSERT_EQ(folder_.qvr({"decode", "long.qvr", "f.%02d.png", "-q"}).code, 0);
    const bytes first = folder_.read("f.00.png");
    const bytes second = folder_.read("f.01.png");
    folder_.write("f.00.png", {});
    folder_.write("f.01.png", {});
    ASSERT_EQ(folder_.qvr(decode).code, 0);
    EXPECT_EQ(folder_.read("f.00.png"), first);
    EXPECT_EQ(folder_.read("f.01.png"), second);
    bytes longer = first;
    longer.push_back(0);
    for (const bytes& other : {second, bytes(10, 'x'), longer, bytes(first.begin(), first.end() - 1)}) {
        folder_.write("f.00.png", other);
        const outcome result = folder_.qvr(decode);
        EXPECT_EQ(result.code, 2) << other.size();
        EXPECT_TRUE(holds(result.err, "f.00.png")) << result.err;
        EXPECT_EQ(folder_.read("f.00.png"), other);
    }
}

TEST_F(resume, what_is_complete_is_left_as_it_is) {
    ASSERT_EQ(folder_.qvr(encode_small("long.raw", "a.qvr", k_resume)).code, 0);
    struct stat before = {};
    ASSERT_EQ(stat(folder_.file("a.qvr").c_str(), &before), 0);
    const outcome result = folder_.qvr(encode_small("long.raw", "a.qvr", k_resume));
    EXPECT_EQ(result.code, 0) << result.err;
    struct stat after = {};
    ASSERT_EQ(stat(folder_.file("a.qvr").c_str(), &after), 0);
    EXPECT_EQ(before.st_ino, after.st_ino);
    EXPECT_EQ(before.st_mtim.tv_nsec, after.st_mtim.tv_nsec);
    const outcome more = folder_.qvr(encode_small("long.raw", "a.qvr", {"--resume", "--range", "0-9"}));
    EXPECT_EQ(more.code, 2);
    EXPECT_TRUE(holds(more.err,
                      "qvr: a.qvr: cannot go on: a.qvr has 60 frames already, but 10 frames are to be in "
                      "it\nhint: give the input and the options as they were; or remove a.qvr to start "
                      "again\n"))
        << more.err;
    EXPECT_EQ(folder_.read("a.qvr"), folder_.read("long.qvr"));
}

TEST_F(resume, another_input_or_other_options_are_found_out) {
    const bytes whole = folder_.read("long.qvr");
    const bytes half(whole.begin(), whole.begin() + 30 * k_small_frame);
    for (const words& more : {words{"--interlaced"}, {"--range", "1-"}}) {
        folder_.write("a.qvr.part", half);
        const outcome result = folder_.qvr(encode_small("long.raw", "a.qvr", k_resume + more));
        EXPECT_EQ(result.code, 2);
        EXPECT_TRUE(holds(
            result.err, "qvr: a.qvr: cannot go on: a.qvr.part was made of another input or with other options\nhint: "))
            << result.err;
        EXPECT_EQ(folder_.read("a.qvr.part"), half);
        EXPECT_FALSE(folder_.has("a.qvr"));
    }
}

TEST_F(resume, what_is_kept_is_never_more_than_the_input_gives) {
    const bytes whole = folder_.read("long.qvr");
    const bytes ten(whole.begin(), whole.begin() + 10 * k_small_frame);
    for (const char* name : {"a.qvr.part", "a.qvr"}) {
        folder_.write(name, ten);
        const outcome result = folder_.command(
            {"sh", "-c", "head -c 216 long.raw | qvr encode - a.qvr --size 4x2 --order RGB24 -q --resume"});
        EXPECT_EQ(result.code, 2);
        EXPECT_TRUE(holds(result.err, "qvr: a.qvr: cannot go on: there is more in ")) << result.err;
        EXPECT_EQ(folder_.names(), (words{name, "long.qvr", "long.raw"}));
        EXPECT_EQ(folder_.read(name), ten);
        std::filesystem::remove(folder_.file(name));
    }
}

TEST_F(resume, bytes_behind_the_last_frame_of_a_complete_file_are_refused) {
    const struct {
        const char* name;
        bytes content;
        words command;
    } cases[] = {
        {"a.qvr", folder_.read("long.qvr"), encode_small("long.raw", "a.qvr", k_resume)},
        {"a.raw", long_samples(), {"decode", "long.qvr", "a.raw", "--resume", "-q"}},
    };
    for (const auto& each : cases) {
        bytes more = each.content;
        more.insert(more.end(), {'j', 'u', 'n', 'k', '!'});
        expect_left_alone(each.name, more, each.command, ": cannot go on: 5 bytes follow its last whole frame\nhint: ");
    }
}

TEST_F(resume, what_is_kept_is_compared_before_anything_is_cut_off) {
    const bytes whole = folder_.read("long.qvr");
    const bytes text(50, 'x');
    bytes other(whole.begin(), whole.begin() + 10 * k_small_frame + 7);
    other[9 * k_small_frame + 50] ^= 1;
    for (const bytes& kept : {text, other}) {
        expect_left_alone("a.qvr.part", kept, encode_small("long.raw", "a.qvr", k_resume),
                          "a.qvr.part was made of another input or with other options\n");
    }
    folder_.write("a.qvr.part", bytes(whole.begin(), whole.begin() + 50));  // a part of the first frame
    EXPECT_EQ(folder_.qvr(encode_small("long.raw", "a.qvr", k_resume)).code, 0);
    EXPECT_EQ(folder_.read("a.qvr"), whole);
}

TEST_F(resume, the_first_frame_is_compared_as_well) {
    const bytes whole = folder_.read("long.qvr");
    const bytes samples = long_samples();
    const struct {
        const char* name;
        bytes content;
        words command;
    } cases[] = {
        {"a.qvr.part", bytes(whole.begin(), whole.begin() + 10 * k_small_frame),
         encode_small("long.raw", "a.qvr", k_resume)},
        {"a.raw.part",
         bytes(samples.begin(), samples.begin() + 10 * k_small_samples),
         {"decode", "long.qvr", "a.raw", "--resume", "-q"}},
    };
    for (const auto& each : cases) {
        bytes other = each.content;
        other[each.name == std::string("a.raw.part") ? 5 : k_small_frame - 5] ^= 1;
        expect_left_alone(each.name, other, each.command, " was made of another input or with other options\n");
    }
}

TEST_F(resume, an_input_that_cannot_be_read_twice_is_refused) {
    int feed = -1;
    const int process = folder_.start_qvr(encode_small("/dev/stdin", "a.qvr", k_resume), &feed);
    close(feed);
    EXPECT_EQ(wait_for(process).code, 2);
    const outcome device = folder_.qvr(encode_small("/dev/zero", "a.qvr", {"--resume", "--range", "0-1"}));
    EXPECT_EQ(device.code, 2);
    EXPECT_TRUE(holds(device.err, "qvr: /dev/zero: --resume needs an input that can be read again")) << device.err;
    EXPECT_EQ(folder_.names(), (words{"long.qvr", "long.raw"}));
}

TEST_F(resume, a_range_without_an_end_in_sight_does_not_look_for_each_of_its_files) {
    const words command = {"decode", "-", "f.%02d.png", "--resume", "--range", "0-9999999999", "-q"};
    const outcome result = folder_.qvr(command, bytes(3, 'x'));
    EXPECT_EQ(result.code, 1) << result.err;
}

TEST_F(resume, nothing_is_kept_without_it_and_nothing_of_nothing_with_it) {
    int feed = -1;
    const int process = folder_.start_qvr(encode_small("-", "a.qvr"), &feed);
    feed_bytes(feed, long_samples(), k_small_samples);
    ASSERT_TRUE(comes_to(folder_, "a.qvr.part-" + std::to_string(process) + "-0", k_small_frame));
    ASSERT_EQ(kill(process, SIGINT), 0);
    EXPECT_EQ(wait_for(process).signal_number, SIGINT);
    close(feed);
    EXPECT_EQ(folder_.names(), (words{"long.qvr", "long.raw"}));
    EXPECT_EQ(folder_.qvr(encode_small("none.raw", "a.qvr", k_resume)).code, 3);
    EXPECT_EQ(folder_.names(), (words{"long.qvr", "long.raw"}));
    const outcome pipe = folder_.qvr(encode_small("long.raw", "-", k_resume));
    EXPECT_EQ(pipe.code, 2);
    EXPECT_TRUE(holds(pipe.err, "qvr: standard output: --resume needs a file")) << pipe.err;
}

TEST_F(resume, two_runs_do_not_write_to_the_same_file) {
    int feed = -1;
    const int process = folder_.start_qvr(encode_small("-", "a.qvr", k_resume), &feed);
    feed_bytes(feed, long_samples(), k_small_samples);
    ASSERT_TRUE(comes_to(folder_, "a.qvr.part", k_small_frame));
    const outcome second = folder_.qvr(encode_small("long.raw", "a.qvr", k_resume));
    EXPECT_EQ(second.code, 3);
    EXPECT_TRUE(holds(second.err, "qvr: a.qvr: another run is writing to ")) << second.err;
    close(feed);
    EXPECT_EQ(wait_for(process).code, 0);
    EXPECT_EQ(folder_.read("a.qvr").size(), k_small_frame);
}

TEST_F(resume, leaving_frames_out_does_not_go_with_counting_them) {
    const outcome result = folder_.qvr(encode_small("long.raw", "a.qvr", {"--resume", "--keep-going"}));
    EXPECT_EQ(result.code, 2);
    EXPECT_TRUE(holds(result.err, "qvr: --resume with --keep-going: ")) << result.err;
    EXPECT_EQ(folder_.qvr({"decode", "long.qvr", "f.%02d.png", "--resume", "--keep-going", "-q"}).code, 0);
}

// A file system of a few pages, which only root can make.
class small_disk {
  public:
    explicit small_disk(std::string at) : path(std::move(at)) {
        std::filesystem::create_directory(path);
        mounted = mount("none", path.c_str(), "tmpfs", 0, "size=64k") == 0;
    }
    ~small_disk() {
        if (mounted) {
            umount(path.c_str());
        }
    }
    small_disk(const small_disk&) = delete;
    small_disk& operator=(const small_disk&) = delete;

    bool grow() const { return mount("none", path.c_str(), "tmpfs", MS_REMOUNT, "size=4m") == 0; }
    bool is_there() const { return mounted; }

  private:
    std::string path;
    bool mounted = false;
};

TEST_F(resume, a_full_disk_leaves_nothing_or_what_can_be_gone_on_with) {
    const small_disk disk(folder_.file("disk"));
    if (!disk.is_there()) {
        GTEST_SKIP() << "no small file system can be made: this needs root and the right to mount";
    }
    const bytes samples = noise(4000 * k_small_samples, 3);
    folder_.write("many.raw", samples);
    const outcome plain = folder_.qvr(encode_small("many.raw", "disk/a.qvr", {"-j", "2"}));
    EXPECT_EQ(plain.code, 3);
    EXPECT_TRUE(holds(plain.err, "qvr: disk/a.qvr: cannot write it: No space left on device\nhint: make room"))
        << plain.err;
    EXPECT_TRUE(std::filesystem::is_empty(folder_.file("disk")));
    const outcome kept = folder_.qvr(encode_small("many.raw", "disk/a.qvr", {"-j", "2", "--resume"}));
    EXPECT_EQ(kept.code, 3);
    EXPECT_TRUE(holds(kept.err, "hint: make room and give the same command again")) << kept.err;
    EXPECT_TRUE(folder_.has("disk/a.qvr.part"));
    ASSERT_TRUE(disk.grow());
    EXPECT_EQ(folder_.qvr(encode_small("many.raw", "disk/a.qvr", {"-j", "2", "--resume"})).code, 0);
    EXPECT_EQ(folder_.qvr({"decode", "disk/a.qvr", "back.raw", "-q"}).code, 0);
    EXPECT_EQ(folder_.read("back.raw"), samples);
}

}  // namespace
