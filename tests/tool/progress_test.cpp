// SPDX-License-Identifier: BSD-3-Clause
//
// What long work says of itself: to programs, on a terminal, and nothing in a pipe.
#include <gtest/gtest.h>
#include <pty.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include "clips.h"
#include "long_clips.h"

namespace {

using nlohmann::json;

class progress : public testing::Test {
  protected:
    progress() { make_long_clip(folder_); }

    std::vector<json> events(const words& arguments, int code = 0) {
        const outcome result = folder_.qvr(arguments);
        EXPECT_EQ(result.code, code) << result.err;
        std::vector<json> parsed;
        for (const std::string& line : progress_lines(result.err)) {
            parsed.push_back(json::parse(line));
        }
        return parsed;
    }

    scratch_folder folder_;
};

TEST_F(progress, json_says_what_is_done_from_start_to_end) {
    const std::vector<json> said = events(encode_small("long.raw", "a.qvr", {"--progress", "json", "-j", "2"}));
    ASSERT_GE(said.size(), 3u);
    const json& start = said.front();
    EXPECT_EQ(start["event"], "start");
    EXPECT_EQ(start["schema"], "qvr-progress/1");
    EXPECT_EQ(start["task"], "encode");
    EXPECT_EQ(start["output"], "a.qvr");
    EXPECT_EQ(start["frames_total"], 60);
    EXPECT_EQ(start["frames_kept"], 0);
    EXPECT_EQ(start["jobs"], 2);
    EXPECT_EQ(said[1]["event"], "progress");
    EXPECT_EQ(said[1]["frame"], 0);
    EXPECT_EQ(said[1]["frames_done"], 1);
    EXPECT_EQ(said[1]["raw_bytes"], 24);
    EXPECT_TRUE(said[1]["seconds_left"].is_number());
    EXPECT_TRUE(said[1]["frames_per_second"].is_number());
    const json& end = said.back();
    EXPECT_EQ(end["event"], "end");
    EXPECT_EQ(end["frames_done"], 60);
    EXPECT_EQ(end["frames_lost"], 0);
    EXPECT_EQ(end["raw_bytes"], 60 * 24);
}

TEST_F(progress, every_line_is_json_when_all_goes_well) {
    for (const words& command : {words{"decode", "long.qvr", "a.raw"}, {"convert", "long.qvr", "b.qvr"}}) {
        const outcome result = folder_.qvr(command + words{"--progress", "json"});
        EXPECT_EQ(result.code, 0);
        const std::vector<std::string> lines = progress_lines(result.err);
        std::string all;
        for (const std::string& line : lines) {
            all += line + "\n";
        }
        EXPECT_EQ(result.err, all);
        EXPECT_EQ(json::parse(lines.front())["task"], command.front());
    }
}

TEST_F(progress, json_names_frames_that_are_lost_and_counts_those_that_are_kept) {
    bytes content = folder_.read("long.qvr");
    content.at(23 * k_small_frame + 28) = 2;
    folder_.write("bad.qvr", content);
    const std::vector<json> lost =
        events({"decode", "bad.qvr", "a.raw", "--keep-going", "--progress", "json", "-j", "1"}, 1);
    bool named = false;
    for (const json& event : lost) {
        if (event["event"] == "frame_failed") {
            named = true;
            EXPECT_EQ(event["frame"], 23);
            const std::string message = event["message"];
            EXPECT_EQ(message.find("bad.qvr: frame 23 at offset 1403: "), 0u) << message;
            EXPECT_EQ(message.find('\n'), std::string::npos) << message;
            EXPECT_TRUE(event["hint"].is_null() || !std::string(event["hint"]).empty());
        }
    }
    EXPECT_TRUE(named);
    EXPECT_EQ(lost.back()["frames_lost"], 1);
    EXPECT_EQ(lost.back()["frames_done"], 59);
    content = folder_.read("long.qvr");
    content.resize(40 * k_small_frame);
    folder_.write("b.qvr.part", content);
    const std::vector<json> kept = events(encode_small("long.raw", "b.qvr", {"--resume", "--progress", "json"}));
    EXPECT_EQ(kept.front()["frames_kept"], 39);
    EXPECT_EQ(kept.back()["frames_done"], 21);
}

TEST_F(progress, a_pipe_does_not_say_how_many_frames_will_come) {
    const outcome piped =
        folder_.command({"sh", "-c", "cat long.raw | qvr encode - a.qvr --size 4x2 --order RGB24 -q --progress json"});
    EXPECT_EQ(piped.code, 0);
    const std::vector<std::string> said = progress_lines(piped.err);
    ASSERT_GE(said.size(), 2u) << piped.err;
    EXPECT_TRUE(json::parse(said.front()).at("frames_total").is_null()) << said.front();
    const outcome plain = folder_.qvr(encode_small("long.raw", "b.qvr"));
    EXPECT_EQ(plain.err, "");  // -q, and standard error is no terminal
    const outcome unknown = folder_.qvr(encode_small("long.raw", "b.qvr", {"--progress", "bar"}));
    EXPECT_EQ(unknown.code, 2);
    EXPECT_TRUE(holds(unknown.err, "qvr: --progress bar: there is no such form\n")) << unknown.err;
}

// Runs a command with standard error on a terminal of its own; gives what the terminal was sent.
std::string on_terminal(const scratch_folder& folder, const words& arguments, unsigned short columns) {
    int terminal = -1;
    winsize size = {};
    size.ws_row = 24;
    size.ws_col = columns;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, &size);
    if (child == 0) {
        std::vector<char*> argv = {const_cast<char*>("qvr")};
        for (const std::string& argument : arguments) {
            argv.push_back(const_cast<char*>(argument.c_str()));
        }
        argv.push_back(nullptr);
        setenv("TERM", "xterm", 1);
        if (chdir(folder.path().c_str()) == 0) {
            execv(QVR_PROGRAM, argv.data());
        }
        _exit(127);
    }
    std::string sent;
    char part[4096];
    for (ssize_t n = 0; (n = read(terminal, part, sizeof part)) > 0;) {
        sent.append(part, static_cast<std::size_t>(n));
    }
    close(terminal);
    EXPECT_EQ(wait_for(child).code, 0) << sent;
    return sent;
}

TEST_F(progress, a_terminal_shows_one_line_that_is_gone_at_the_end) {
    const words encode = {"encode", "long.raw", "a.qvr", "--size", "4x2", "--order", "RGB24"};
    const std::string sent = on_terminal(folder_, encode, 100);
    EXPECT_TRUE(holds(sent, "\r\033[Ka.qvr [--------------------] 1/60 frames  ")) << sent;
    EXPECT_TRUE(holds(sent, "/s  ")) << sent;
    EXPECT_TRUE(holds(sent, " left")) << sent;
    const std::size_t summary = sent.find("a.qvr: 60 frames, ");
    ASSERT_NE(summary, std::string::npos) << sent;
    EXPECT_EQ(sent.substr(summary - 4, 4), "\r\033[K") << sent;  // the line is erased before
    EXPECT_EQ(sent.find("\033[K", summary), std::string::npos) << sent;
}

TEST_F(progress, the_line_never_wraps) {
    const words encode = {"encode", "long.raw", "a.qvr", "--size", "4x2", "--order", "RGB24"};
    const std::string sent = on_terminal(folder_, encode, 20);
    const std::size_t line = sent.find("\r\033[K") + 4;
    const std::size_t end = sent.find('\r', line);
    ASSERT_NE(end, std::string::npos) << sent;
    EXPECT_EQ(end - line, 19u) << sent;
}

TEST_F(progress, a_terminal_stays_clean_when_nothing_is_to_be_said) {
    EXPECT_EQ(on_terminal(folder_, encode_small("long.raw", "a.qvr"), 80), "");
    EXPECT_FALSE(holds(on_terminal(folder_, {"decode", "long.qvr", "a.raw", "--progress", "none"}, 80), "\033"));
}

}  // namespace
