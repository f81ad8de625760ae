// SPDX-License-Identifier: BSD-3-Clause
//
// Parts of a sequence: ranges, chunks, and chunks of a job array.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <map>

#include "clips.h"
#include "long_clips.h"

namespace {

class ranges : public testing::Test {
  protected:
    ranges() { make_long_clip(folder_); }

    bytes encoded(const words& more) {
        const outcome result = folder_.qvr(encode_small("long.raw", "a.qvr", more));
        EXPECT_EQ(result.code, 0) << result.err;
        return folder_.read("a.qvr");
    }

    bytes frames(std::size_t first, std::size_t end) {
        const bytes whole = folder_.read("long.qvr");
        return {whole.begin() + static_cast<std::ptrdiff_t>(first * k_small_frame),
                whole.begin() + static_cast<std::ptrdiff_t>(end * k_small_frame)};
    }

    void expect_refused(const words& more, const std::string& message) {
        const outcome result = folder_.qvr(encode_small("long.raw", "a.qvr", more));
        EXPECT_EQ(result.code, 2);
        EXPECT_TRUE(holds(result.err, message)) << result.err;
        EXPECT_FALSE(folder_.has("a.qvr"));
    }

    scratch_folder folder_;
};

TEST_F(ranges, a_range_is_these_frames_and_no_others) {
    EXPECT_EQ(encoded({"--range", "10-19"}), frames(10, 20));
    EXPECT_EQ(encoded({"--range", "0-59"}), frames(0, 60));
    EXPECT_EQ(encoded({"--range", "50-"}), frames(50, 60));
    EXPECT_EQ(encoded({"--range", "59"}), frames(59, 60));
}

TEST_F(ranges, decoding_and_converting_take_them_too) {
    ASSERT_EQ(folder_.qvr({"decode", "long.qvr", "a.raw", "--range", "7-8", "-q"}).code, 0);
    const bytes samples = long_samples();
    EXPECT_EQ(folder_.read("a.raw"), bytes(samples.begin() + 7 * 24, samples.begin() + 9 * 24));
    ASSERT_EQ(folder_.qvr({"convert", "long.qvr", "a.qvr", "--range", "7-8", "-q"}).code, 0);
    EXPECT_EQ(folder_.read("a.qvr"), frames(7, 9));
    ASSERT_EQ(folder_.qvr({"decode", "long.qvr", "f.%d.png", "--range", "7-8", "-q"}).code, 0);
    EXPECT_EQ(folder_.names(), (words{"a.qvr", "a.raw", "f.7.png", "f.8.png", "long.qvr", "long.raw"}));
}

TEST_F(ranges, a_pipe_has_ranges_as_well) {
    const outcome result = folder_.qvr(encode_small("-", "a.qvr", {"--range", "58-59"}), long_samples());
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(folder_.read("a.qvr"), frames(58, 60));
    int feed = -1;
    const int process = folder_.start_qvr(encode_small("-", "b.qvr", {"--range", "3-4"}), &feed);
    feed_bytes(feed, long_samples(), 5 * k_small_samples);
    EXPECT_EQ(wait_for(process).code, 0);  // although the pipe is still open
    close(feed);
    EXPECT_EQ(folder_.read("b.qvr"), frames(3, 5));
}

TEST_F(ranges, chunks_are_all_of_it_once_and_of_nearly_the_same_size) {
    for (unsigned count = 1; count <= 7; ++count) {
        bytes all;
        for (unsigned index = 1; index <= count; ++index) {
            const bytes part = encoded({"--chunk", std::to_string(index) + "/" + std::to_string(count)});
            EXPECT_GE(part.size() / k_small_frame, 60 / count);
            EXPECT_LE(part.size() / k_small_frame, (60 + count - 1) / count);
            all.insert(all.end(), part.begin(), part.end());
        }
        EXPECT_EQ(all, folder_.read("long.qvr")) << count;
    }
}

TEST_F(ranges, a_chunk_may_be_of_a_range_and_may_be_empty) {
    EXPECT_EQ(encoded({"--range", "10-19", "--chunk", "2/3"}), frames(13, 16));
    EXPECT_EQ(encoded({"--range", "10-11", "--chunk", "1/5"}), bytes());
    EXPECT_EQ(encoded({"--range", "10-11", "--chunk", "3/5"}), frames(10, 11));
    EXPECT_EQ(encoded({"--range", "10-11", "--chunk", "5/5"}), frames(11, 12));
}

TEST_F(ranges, a_picture_of_an_empty_chunk_is_not_made) {
    const outcome result = folder_.qvr({"decode", "long.qvr", "e.png", "--range", "3", "--chunk", "3/8"});
    EXPECT_TRUE(holds(result.err, "qvr: e.png: there is no frame to write, but a PNG holds one\nhint: ")) << result.err;
    EXPECT_EQ(result.code, 2);
    EXPECT_FALSE(folder_.has("e.png"));
}

TEST_F(ranges, a_range_of_a_cut_file_gives_what_is_there_when_it_may_go_on) {
    bytes cut = folder_.read("long.qvr");
    cut.resize(20 * k_small_frame + 5);
    folder_.write("cut.qvr", cut);
    const bytes samples = long_samples();
    for (const words& part : {words{"--range", "10-29"}, {"--range", "0-59", "--chunk", "2/4"}}) {
        const std::ptrdiff_t first = part.size() == 2 ? 10 : 15;
        const outcome result = folder_.qvr(words{"decode", "cut.qvr", "a.raw", "--keep-going", "-q"} + part);
        EXPECT_EQ(result.code, 1);
        EXPECT_TRUE(holds(result.err, "1 frame of ")) << result.err;
        EXPECT_TRUE(holds(result.err, " left out, because the data are bad: 20\n")) << result.err;
        EXPECT_EQ(folder_.read("a.raw"), bytes(samples.begin() + first * 24, samples.begin() + 20 * 24));
        std::filesystem::remove(folder_.file("a.raw"));
    }
}

TEST_F(ranges, what_is_no_range_is_wrong_usage) {
    for (const char* text : {"", "-", "a", "1-a", "5-4", "-3", "1-2-3", "99999999999999999999", "18446744073709551615",
                             "0-18446744073709551615"}) {
        if (*text != '\0') {
            expect_refused({std::string("--range=") + text}, ": these are no frames");
        }
    }
    expect_refused({"--range", "60"}, "qvr: long.raw: there is no frame 60: the file holds 60, counted from 0\n");
    expect_refused({"--range", "50-60"}, "qvr: long.raw: there is no frame 60: the file holds 60, counted from 0\n");
    for (const char* text : {"0/3", "4/3", "1", "1/0", "/3", "1/", "x/3", "1/3/5"}) {
        expect_refused({std::string("--chunk=") + text}, ": this is no chunk");
    }
    const outcome pipe = folder_.qvr(encode_small("-", "a.qvr", {"--range", "50-60"}), long_samples());
    EXPECT_EQ(pipe.code, 2);
    EXPECT_TRUE(holds(pipe.err, "there is no frame 60: the file holds 60, counted from 0\n")) << pipe.err;
}

TEST_F(ranges, a_chunk_of_a_pipe_needs_a_range) {
    int feed = -1;
    const int process = folder_.start_qvr(encode_small("-", "a.qvr", {"--chunk", "1/2"}), &feed);
    EXPECT_EQ(wait_for(process).code, 2);
    close(feed);
}

// Sets variables while it lives.
class environment {
  public:
    explicit environment(std::map<std::string, std::string> of) : variables(std::move(of)) {
        for (const auto& [name, value] : variables) {
            setenv(name.c_str(), value.c_str(), 1);
        }
    }
    ~environment() {
        for (const auto& [name, value] : variables) {
            unsetenv(name.c_str());
        }
    }
    environment(const environment&) = delete;
    environment& operator=(const environment&) = delete;

  private:
    std::map<std::string, std::string> variables;
};

environment job_array(const char* id, const char* least, const char* most, const char* count, const char* step = "1") {
    return environment({{"SLURM_ARRAY_TASK_ID", id},
                        {"SLURM_ARRAY_TASK_MIN", least},
                        {"SLURM_ARRAY_TASK_MAX", most},
                        {"SLURM_ARRAY_TASK_COUNT", count},
                        {"SLURM_ARRAY_TASK_STEP", step}});
}

TEST_F(ranges, a_job_array_says_which_chunk) {
    const words automatic = {"--chunk", "auto"};
    {
        const environment array = job_array("1", "0", "3", "4");
        EXPECT_EQ(encoded(automatic), frames(15, 30));
    }
    {
        const environment array = job_array("30", "10", "30", "3", "10");
        EXPECT_EQ(encoded(automatic), frames(40, 60));
    }
    {
        const environment array(
            {{"SLURM_ARRAY_TASK_ID", "6"}, {"SLURM_ARRAY_TASK_MIN", "1"}, {"SLURM_ARRAY_TASK_MAX", "6"}});
        EXPECT_EQ(encoded(automatic), frames(50, 60));
    }
}

TEST_F(ranges, a_job_array_with_gaps_or_none_is_refused) {
    const words automatic = {"--chunk", "auto"};
    expect_refused(automatic, "qvr: --chunk auto: SLURM_ARRAY_TASK_ID is not set\n");
    {
        const environment array = job_array("7", "1", "7", "3");
        expect_refused(automatic, "qvr: --chunk auto: the job array has gaps");
    }
    {
        const environment array = job_array("x", "1", "7", "7");
        expect_refused(automatic, "qvr: --chunk auto: SLURM_ARRAY_TASK_ID is no number\n");
    }
}

}  // namespace
