// SPDX-License-Identifier: BSD-3-Clause
//
// Many frames at once: the same bytes, in the same order, whatever the number of jobs; and frames that fail.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "clips.h"
#include "long_clips.h"
#include "pictures.h"

namespace {

const words k_job_counts = {"1", "2", "5"};

class jobs : public testing::Test {
  protected:
    jobs() { make_long_clip(folder_); }

    void good(const words& arguments) {
        const outcome result = folder_.qvr(arguments);
        ASSERT_EQ(result.code, 0) << result.err;
    }

    // Frame `number` of long.qvr becomes one that the library refuses.
    void damage(unsigned number) {
        bytes content = folder_.read("long.qvr");
        content.at(number * k_small_frame + 28) = 2;
        folder_.write("long.qvr", content);
    }

    static bytes samples_of(unsigned number) {
        const bytes all = long_samples();
        const auto begin = all.begin() + static_cast<std::ptrdiff_t>(number * k_small_samples);
        return {begin, begin + static_cast<std::ptrdiff_t>(k_small_samples)};
    }

    bytes samples_without(const std::vector<unsigned>& numbers) {
        bytes samples = long_samples();
        for (auto at = numbers.rbegin(); at != numbers.rend(); ++at) {
            const auto begin = samples.begin() + static_cast<std::ptrdiff_t>(*at * k_small_samples);
            samples.erase(begin, begin + static_cast<std::ptrdiff_t>(k_small_samples));
        }
        return samples;
    }

    scratch_folder folder_;
};

TEST_F(jobs, the_bytes_never_depend_on_their_number) {
    for (const std::string& count : k_job_counts) {
        good(encode_small("long.raw", "a.qvr", {"-j", count}));
        EXPECT_EQ(folder_.read("a.qvr"), folder_.read("long.qvr"));
        good({"decode", "long.qvr", "a.raw", "-j", count, "-q"});
        EXPECT_EQ(folder_.read("a.raw"), long_samples());
        good({"convert", "long.qvr", "b.qvr", "-j", count, "-q"});
        EXPECT_EQ(folder_.read("b.qvr"), folder_.read("long.qvr"));
    }
}

TEST_F(jobs, a_sequence_of_pictures_is_written_and_read_in_order) {
    for (const std::string& count : k_job_counts) {
        good({"decode", "long.qvr", "f.%04d.png", "-j", count, "-q"});
        EXPECT_EQ(read_picture(folder_.file("f.0017.png")).samples, samples_of(17));
        EXPECT_FALSE(folder_.has("f.0060.png"));
        good({"encode", "f.%04d.png", "a.qvr", "-j", count, "-q"});
        EXPECT_EQ(folder_.read("a.qvr"), folder_.read("long.qvr"));
        std::filesystem::remove(folder_.file("f.0003.png"));
    }
}

TEST_F(jobs, the_first_frame_that_fails_is_the_one_that_is_told) {
    damage(40);
    damage(23);
    for (const std::string& count : k_job_counts) {
        for (int attempt = 0; attempt < 5; ++attempt) {
            const outcome result = folder_.qvr({"decode", "long.qvr", "a.raw", "-j", count});
            EXPECT_EQ(result.code, 1);
            EXPECT_TRUE(holds(result.err, "qvr: long.qvr: frame 23 at offset 1403: cannot ")) << result.err;
            EXPECT_FALSE(holds(result.err, "frame 40")) << result.err;
            EXPECT_EQ(folder_.names(), (words{"long.qvr", "long.raw"}));
        }
    }
}

TEST_F(jobs, keep_going_leaves_out_what_is_damaged_and_nothing_else) {
    damage(0);
    damage(23);
    damage(59);
    for (const std::string& count : k_job_counts) {
        const outcome result = folder_.qvr({"decode", "long.qvr", "a.raw", "-j", count, "--keep-going"});
        EXPECT_EQ(result.code, 1);
        for (const char* told :
             {"qvr: long.qvr: frame 0 at offset 0: cannot ", "qvr: long.qvr: frame 23 at offset 1403",
              "qvr: long.qvr: frame 59 at offset 3599", "a.raw: 57 frames, ",
              "qvr: a.raw: 3 frames of 60 left out, because the data are bad: 0, 23, 59\n"}) {
            EXPECT_TRUE(holds(result.err, told)) << told << "\n" << result.err;
        }
        EXPECT_EQ(folder_.read("a.raw"), samples_without({0, 23, 59}));
    }
}

TEST_F(jobs, keep_going_keeps_the_numbers_of_pictures) {
    damage(23);
    EXPECT_EQ(folder_.qvr({"decode", "long.qvr", "f.%02d.png", "--keep-going", "-j", "2"}).code, 1);
    EXPECT_FALSE(folder_.has("f.23.png"));
    EXPECT_EQ(read_picture(folder_.file("f.24.png")).samples, samples_of(24));
    EXPECT_EQ(folder_.names().size(), 59u + 2u);
    // A damaged picture among good ones is told by its name and left out.
    folder_.write("f.23.png", bytes(100, 'x'));
    folder_.write("f.40.png", bytes(100, 'x'));
    const outcome back = folder_.qvr({"encode", "f.%02d.png", "a.qvr", "--keep-going", "-j", "2"});
    EXPECT_EQ(back.code, 1);
    EXPECT_TRUE(holds(back.err, "qvr: f.23.png: this is not a PNG")) << back.err;
    EXPECT_TRUE(holds(back.err, "qvr: a.qvr: 2 frames of 60 left out, because the data are bad: 23, 40\n")) << back.err;
    EXPECT_EQ(folder_.read("a.qvr").size(), 58 * k_small_frame);
}

TEST_F(jobs, a_frame_that_is_lost_while_it_is_passed_over_is_told_by_its_own_number) {
    bytes cut = folder_.read("long.qvr");
    cut.resize(20 * k_small_frame + 5);
    folder_.write("cut.qvr", cut);
    good({"decode", "long.qvr", "f.%02d.png", "--range", "0-20", "-q"});
    const outcome result = folder_.qvr({"decode", "cut.qvr", "f.%02d.png", "--resume", "--keep-going", "-j", "1"});
    EXPECT_EQ(result.code, 1);
    EXPECT_TRUE(holds(result.err, " left out, because the data are bad: 20\n")) << result.err;
}

TEST_F(jobs, nothing_is_written_when_every_frame_is_bad) {
    bytes content = folder_.read("long.qvr");
    content.resize(2 * k_small_frame);
    folder_.write("long.qvr", content);
    damage(0);
    damage(1);
    const outcome result = folder_.qvr({"decode", "long.qvr", "a.raw", "--keep-going"});
    EXPECT_EQ(result.code, 1);
    EXPECT_TRUE(holds(result.err, "qvr: long.qvr: none of its frames could be read\n")) << result.err;
    EXPECT_FALSE(folder_.has("a.raw"));
}

TEST_F(jobs, frames_behind_a_damaged_size_are_given_up_once) {
    bytes content = folder_.read("long.qvr");
    content.at(30 * k_small_frame + 4) = 'P';
    folder_.write("long.qvr", content);
    const outcome result = folder_.qvr({"decode", "long.qvr", "a.raw", "--keep-going", "-j", "2"});
    EXPECT_EQ(result.code, 1);
    EXPECT_TRUE(holds(result.err, "1 frame of 31 left out, because the data are bad: 30\n")) << result.err;
    EXPECT_EQ(folder_.read("a.raw").size(), 30 * k_small_samples);
}

TEST_F(jobs, failures_that_are_none_of_a_frame_end_the_work_even_then) {
    const outcome result = folder_.qvr({"decode", "long.qvr", "/dev/full", "--keep-going", "-j", "2"});
    EXPECT_EQ(result.code, 3);
    EXPECT_TRUE(holds(result.err, "qvr: /dev/full: cannot write it: No space left on device\n")) << result.err;
}

TEST_F(jobs, a_failure_ends_the_work_while_the_input_is_silent) {
    int feed = -1;
    const int process = folder_.start_qvr(encode_small("-", "/dev/full", {"-j", "2"}), &feed);
    feed_bytes(feed, long_samples(), k_small_samples);
    EXPECT_EQ(wait_for(process).code, 3);  // although the pipe is still open
    close(feed);
}

TEST_F(jobs, few_frames_share_the_processors_and_many_take_one_each) {
    const auto plan = [&](const words& more) {
        const outcome result = folder_.qvr(encode_small("long.raw", "a.qvr", words{"--progress", "json"} + more));
        const nlohmann::json start = nlohmann::json::parse(progress_lines(result.err).at(0));
        return std::pair<unsigned, unsigned>(start["jobs"], start["threads"]);
    };
    cpu_set_t usable;
    ASSERT_EQ(sched_getaffinity(0, sizeof usable, &usable), 0);
    const unsigned processors = std::min<unsigned>(static_cast<unsigned>(CPU_COUNT(&usable)), 60);
    using pair = std::pair<unsigned, unsigned>;
    EXPECT_EQ(plan({}).first, processors);
    EXPECT_EQ(plan({"--range", "7"}).first, 1u);
    EXPECT_EQ(plan({"--range", "7"}).second, static_cast<unsigned>(CPU_COUNT(&usable)));
    EXPECT_EQ(plan({"-j", "1"}).second, static_cast<unsigned>(CPU_COUNT(&usable)));
    EXPECT_EQ(plan({"-j", "5", "--threads", "2"}), pair(5, 2));
    EXPECT_EQ(plan({"-j", "5", "--threads", "1", "--range", "1-3"}), pair(3, 1));
    EXPECT_EQ(plan({"--threads", "1000"}), pair(1, 1000));
}

// In kilobytes.
long peak_memory(const scratch_folder& folder, const words& arguments) {
    int feed = -1;
    const int process = folder.start_qvr(arguments, &feed);
    close(feed);
    int status = 0;
    rusage used = {};
    if (wait4(process, &status, 0, &used) != process || status != 0) {
        throw std::runtime_error("the command failed");
    }
    return used.ru_maxrss;
}

TEST_F(jobs, memory_does_not_grow_with_the_number_of_frames) {
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the address sanitizer keeps freed memory for a while";
#endif
    const auto clip = [&](const char* name, unsigned frames) {
        folder_.write(name, {});
        std::filesystem::resize_file(folder_.file(name), std::uintmax_t{frames} * 320 * 180 * 2);
    };
    clip("few.raw", 20);
    clip("many.raw", 400);
    const words shape = {"--size", "320x180", "--format", "UYVY", "-j", "2", "-q"};
    const long few = peak_memory(folder_, words{"encode", "few.raw", "/dev/null"} + shape);
    const long many = peak_memory(folder_, words{"encode", "many.raw", "/dev/null"} + shape);
    // All frames together have 46 megabytes, and as many again when they are encoded.
    EXPECT_LT(many, few + 8000) << few;
    ASSERT_EQ(folder_.qvr(words{"encode", "many.raw", "many.qvr"} + shape).code, 0);
    ASSERT_EQ(folder_.qvr(words{"encode", "few.raw", "few.qvr"} + shape).code, 0);
    EXPECT_LT(peak_memory(folder_, {"decode", "many.qvr", "/dev/null", "-j", "2", "-q"}),
              peak_memory(folder_, {"decode", "few.qvr", "/dev/null", "-j", "2", "-q"}) + 8000);
}

// Of a frame that nobody asks about only the size is read.
TEST_F(jobs, frames_that_are_passed_over_are_not_read) {
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the address sanitizer keeps freed memory for a while";
#endif
    make_rgb_clip(folder_, "small.qvr", 1);
    folder_.write("clip.qvr", {0, 0, 0, 0x20, 'p', 'a', 'c', 'k'});
    std::filesystem::resize_file(folder_.file("clip.qvr"), 0x20000000);
    const bytes small = folder_.read("small.qvr");
    std::ofstream(folder_.file("clip.qvr"), std::ios::app | std::ios::binary)
        .write(reinterpret_cast<const char*>(small.data()), static_cast<std::streamsize>(small.size()));
    const long alone = peak_memory(folder_, {"view", "small.qvr", "-o", "/dev/null"});
    EXPECT_LT(peak_memory(folder_, {"view", "clip.qvr", "-o", "/dev/null", "--frame", "1"}), alone + 8000);
    for (const char* command : {"info", "dump", "verify"}) {
        EXPECT_LT(peak_memory(folder_, {command, "clip.qvr", "--frame", "1"}), alone + 8000) << command;
    }
    EXPECT_LT(peak_memory(folder_, {"decode", "clip.qvr", "/dev/null", "--frame", "1"}), alone + 8000);
}

}  // namespace
