// SPDX-License-Identifier: BSD-3-Clause
//
// Manifests, recomputed with the xxhsum program, and joining of parts.
#include <gtest/gtest.h>
#include <stdio.h>
#include <unistd.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>

#include "clips.h"
#include "long_clips.h"

namespace {

using nlohmann::json;

class manifests : public testing::Test {
  protected:
    manifests() { make_long_clip(folder_); }

    std::vector<json> lines_of(const std::string& name) {
        const bytes content = folder_.read(name);
        std::istringstream text(std::string(content.begin(), content.end()));
        std::vector<json> lines;
        for (std::string line; std::getline(text, line);) {
            lines.push_back(json::parse(line));
        }
        return lines;
    }

    // Parts 1 to `count` as part1.qvr and so on, each with a manifest.
    words make_parts(unsigned count) {
        words parts;
        for (unsigned index = 1; index <= count; ++index) {
            const std::string name = "part" + std::to_string(index);
            const outcome result = folder_.qvr(encode_small(
                "long.raw", name + ".qvr",
                {"--chunk", std::to_string(index) + "/" + std::to_string(count), "--manifest", name + ".manifest"}));
            EXPECT_EQ(result.code, 0) << result.err;
            parts.push_back(name + ".qvr");
        }
        return parts;
    }

    scratch_folder folder_;
};

std::string xxhsum(const std::string& path) {
    FILE* pipe = popen(("xxhsum -H2 '" + path + "' 2>/dev/null").c_str(), "r");
    char digits[33] = {};
    const bool good = pipe && fscanf(pipe, "%32s", digits) == 1;
    if (pipe) {
        pclose(pipe);
    }
    return good ? digits : "";
}

TEST_F(manifests, each_frame_has_its_size_and_checksum) {
    if (xxhsum(folder_.file("long.raw")).empty()) {
        GTEST_SKIP() << "there is no xxhsum program";
    }
    for (const char* jobs : {"1", "5"}) {
        ASSERT_EQ(
            folder_.qvr(encode_small("long.raw", "a.qvr", {"--range", "20-29", "--manifest", "a.manifest", "-j", jobs}))
                .code,
            0);
        const std::vector<json> lines = lines_of("a.manifest");
        ASSERT_EQ(lines.size(), 12u);
        EXPECT_EQ(lines.front(), json::parse(R"({"schema":"qvr-manifest/1","file":"a.qvr","first":20,)"
                                             R"("checksum":"xxh3_128"})"));
        EXPECT_EQ(lines.back(), json::parse(R"({"frames":10,"bytes":610,"end":30,"total":60})"));
        const bytes content = folder_.read("a.qvr");
        for (std::size_t i = 0; i < 10; ++i) {
            const json& line = lines[i + 1];
            EXPECT_EQ(line["frame"], 20 + i);
            EXPECT_EQ(line["offset"], i * k_small_frame);
            EXPECT_EQ(line["size"], k_small_frame);
            const auto begin = content.begin() + static_cast<std::ptrdiff_t>(i * k_small_frame);
            folder_.write("frame.bin", bytes(begin, begin + static_cast<std::ptrdiff_t>(k_small_frame)));
            EXPECT_EQ(line["xxh3_128"], xxhsum(folder_.file("frame.bin")));
        }
    }
}

TEST_F(manifests, work_that_goes_on_lists_what_was_there) {
    ASSERT_EQ(folder_.qvr(encode_small("long.raw", "a.qvr", {"--manifest", "whole.manifest"})).code, 0);
    bytes half = folder_.read("long.qvr");
    half.resize(30 * k_small_frame + 13);
    std::filesystem::remove(folder_.file("a.qvr"));
    folder_.write("a.qvr.part", half);
    const words command = encode_small("long.raw", "a.qvr", {"--resume", "--manifest", "a.manifest"});
    ASSERT_EQ(folder_.qvr(command).code, 0);
    EXPECT_EQ(folder_.read("a.manifest"), folder_.read("whole.manifest"));
    // The same for a file that is complete already.
    std::filesystem::remove(folder_.file("a.manifest"));
    ASSERT_EQ(folder_.qvr(command).code, 0);
    EXPECT_EQ(folder_.read("a.manifest"), folder_.read("whole.manifest"));
}

TEST_F(manifests, a_failure_leaves_none) {
    EXPECT_EQ(folder_.qvr(encode_small("none.raw", "a.qvr", {"--manifest", "a.manifest"})).code, 3);
    folder_.write("cut.raw", noise(30));
    EXPECT_EQ(folder_.qvr(encode_small("cut.raw", "a.qvr", {"--manifest", "a.manifest"})).code, 1);
    EXPECT_EQ(folder_.names(), (words{"cut.raw", "long.qvr", "long.raw"}));
}

TEST_F(manifests, parts_become_the_whole_again) {
    ASSERT_EQ(folder_.qvr(encode_small("long.raw", "joined.qvr", {"--manifest", "whole.manifest"})).code, 0);
    for (const unsigned count : {1u, 2u, 7u}) {
        const outcome result =
            folder_.qvr(words{"join"} + make_parts(count) + words{"-o", "joined.qvr", "--manifest", "joined.manifest"});
        EXPECT_EQ(result.code, 0) << result.err;
        EXPECT_EQ(folder_.read("joined.qvr"), folder_.read("long.qvr"));
        EXPECT_EQ(folder_.read("joined.manifest"), folder_.read("whole.manifest"));
    }
}

TEST_F(manifests, parts_in_another_order_or_with_one_missing_are_refused) {
    make_parts(3);
    for (const words& parts :
         {words{"part1.qvr", "part3.qvr", "part2.qvr"}, {"part1.qvr", "part3.qvr"}, {"part1.qvr", "part1.qvr"}}) {
        const outcome result = folder_.qvr(words{"join"} + parts + words{"-o", "joined.qvr"});
        EXPECT_EQ(result.code, 2);
        EXPECT_TRUE(holds(result.err, "but frame 20 is next\nhint: give all parts, in the order of their frames; "))
            << result.err;
        EXPECT_FALSE(folder_.has("joined.qvr"));
    }
    EXPECT_EQ(folder_.qvr({"join", "part1.qvr", "-o", "part1.qvr"}).code, 2);
}

TEST_F(manifests, parts_missing_at_either_end_are_refused_or_asked_for) {
    make_parts(3);
    const struct {
        words parts;
        const char* message;
    } cases[] = {
        {{"part2.qvr", "part3.qvr"}, "qvr: part2.qvr: it begins with frame 20, but frame 0 is next\n"},
        {{"part1.qvr", "part2.qvr"}, "qvr: part2.qvr: the parts end before frame 40, but the clip has 60 frames\n"},
    };
    for (const auto& wanted : cases) {
        const words command = words{"join"} + wanted.parts + words{"-o", "joined.qvr", "--manifest", "j.man"};
        const outcome result = folder_.qvr(command);
        EXPECT_EQ(result.code, 2);
        EXPECT_EQ(result.err.find(wanted.message), 0u) << result.err;
        EXPECT_FALSE(folder_.has("joined.qvr"));
        EXPECT_FALSE(folder_.has("j.man"));
        EXPECT_EQ(folder_.qvr(command + words{"--partial"}).code, 0);
        EXPECT_EQ(folder_.read("joined.qvr").size(), 40 * k_small_frame);
        EXPECT_EQ(lines_of("j.man").back()["total"], 60);
        std::filesystem::remove(folder_.file("joined.qvr"));
        std::filesystem::remove(folder_.file("j.man"));
    }
    EXPECT_EQ(lines_of("part2.manifest").back(), json::parse(R"({"frames":20,"bytes":1220,"end":40,"total":60})"));
}

TEST_F(manifests, parts_of_clips_of_other_lengths_do_not_go_together) {
    make_parts(3);
    folder_.write("short.raw", noise(40 * k_small_samples));
    ASSERT_EQ(
        folder_.qvr(encode_small("short.raw", "part2.qvr", {"--range", "20-39", "--manifest", "part2.manifest"})).code,
        0);
    const outcome result = folder_.qvr({"join", "part1.qvr", "part2.qvr", "-o", "joined.qvr"});
    EXPECT_EQ(result.code, 2);
    EXPECT_TRUE(holds(result.err, "qvr: part2.qvr: it is a part of 40 frames, but those before it are of 60\n"))
        << result.err;
}

TEST_F(manifests, parts_without_frames_do_not_make_a_file) {
    folder_.write("empty.qvr", {});
    const outcome result = folder_.qvr({"join", "empty.qvr", "-o", "joined.qvr"});
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.err.find("qvr: empty.qvr: there is no frame in any of the parts\nhint: "), 0u) << result.err;
    EXPECT_FALSE(folder_.has("joined.qvr"));
    EXPECT_EQ(folder_.qvr({"join", "empty.qvr", "long.qvr", "-o", "joined.qvr"}).code, 0);
}

TEST_F(manifests, the_number_of_all_frames_is_known_at_the_end_of_the_input) {
    ASSERT_EQ(folder_.qvr(encode_small("-", "a.qvr", {"--manifest", "a.manifest"}), long_samples()).code, 0);
    EXPECT_EQ(lines_of("a.manifest").back()["total"], 60);
}

// What a killed run leaves is one file, which the next run takes away.
TEST_F(manifests, a_run_that_goes_on_has_one_name_for_what_is_not_complete) {
    folder_.write("a.manifest.part", bytes(100000, 'x'));
    int feed = -1;
    const words command = encode_small("-", "a.qvr", {"--resume", "--manifest", "a.manifest"});
    const int process = folder_.start_qvr(command, &feed);
    feed_bytes(feed, long_samples(), k_small_samples);
    ASSERT_TRUE(comes_to(folder_, "a.qvr.part", k_small_frame));
    EXPECT_EQ(folder_.names(), (words{"a.manifest.part", "a.qvr.part", "long.qvr", "long.raw"}));
    close(feed);
    EXPECT_EQ(wait_for(process).code, 0);
    EXPECT_EQ(folder_.names(), (words{"a.manifest", "a.qvr", "long.qvr", "long.raw"}));
    EXPECT_EQ(lines_of("a.manifest").size(), 3u);
}

TEST_F(manifests, the_summary_of_verifying_counts_what_is_not_listed) {
    make_parts(2);
    const auto summary = [&](const std::string& manifest, int code) {
        const outcome result = folder_.qvr({"verify", "part1.qvr", "--manifest", manifest, "--json"});
        EXPECT_EQ(result.code, code) << result.err;
        std::istringstream lines(result.out);
        std::string last;
        for (std::string line; std::getline(lines, line);) {
            last = line;
        }
        // Twenty of thirty, how many more there are, and the count at the end.
        EXPECT_EQ(holds(result.err, "qvr: and 10 more like these\n"), code == 1) << result.err;
        EXPECT_EQ(holds(result.err, "frame 20 at offset"), false) << result.err;
        EXPECT_EQ(holds(result.err, "qvr: part1.qvr: 30 frames are not as the manifest says\n"), code == 1);
        return json::parse(last);
    };
    const json good = summary("part1.manifest", 0);
    EXPECT_EQ(good["good"], true);
    EXPECT_EQ(good["manifest"], json::parse(R"({"file":"part1.manifest","findings_count":0,"findings":[]})"));
    const json bad = summary("part2.manifest", 1);
    EXPECT_EQ(bad["good"], false);
    EXPECT_EQ(bad["manifest"]["findings_count"], 30);
    EXPECT_EQ(bad["manifest"]["findings"].size(), 20u);
    EXPECT_EQ(std::string(bad["manifest"]["findings"][1]["message"]).find("part1.qvr: frame 1 at offset 61: "), 0u);
}

TEST_F(manifests, a_changed_part_is_found_by_its_checksum) {
    make_parts(2);
    bytes content = folder_.read("part2.qvr");
    content.at(4 * k_small_frame + 50) ^= 1;
    folder_.write("part2.qvr", content);
    const outcome result = folder_.qvr({"join", "part1.qvr", "part2.qvr", "-o", "joined.qvr"});
    EXPECT_EQ(result.code, 1);
    EXPECT_TRUE(holds(result.err, "qvr: part2.qvr: frame 4 at offset 244: the frame has the checksum ")) << result.err;
    content.resize(4 * k_small_frame);
    folder_.write("part2.qvr", content);
    const outcome cut = folder_.qvr({"join", "part1.qvr", "part2.qvr", "-o", "joined.qvr"});
    EXPECT_EQ(cut.code, 1);
    EXPECT_TRUE(holds(cut.err, "part2.qvr: frame 4 at offset 244: the file ends here, but its manifest lists"))
        << cut.err;
    EXPECT_FALSE(folder_.has("joined.qvr"));
}

TEST_F(manifests, damaged_manifests_are_bad_data) {
    make_parts(2);
    const bytes good = folder_.read("part1.manifest");
    const std::string text(good.begin(), good.end());
    const auto expect_bad = [&](const std::string& manifest, const std::string& message) {
        folder_.write("part1.manifest", bytes(manifest.begin(), manifest.end()));
        const outcome result = folder_.qvr({"join", "part1.qvr", "part2.qvr", "-o", "joined.qvr"});
        EXPECT_EQ(result.code, 1);
        EXPECT_TRUE(holds(result.err, message)) << result.err;
    };
    expect_bad("", "qvr: part1.manifest: line 1: this is not a manifest");
    expect_bad("[]\n", "line 1: this is not a manifest");
    expect_bad("{\"schema\":\"qvr-manifest/2\"}\n", "line 1: this is not a manifest");
    expect_bad("{\"schema\":\"qvr-manifest/1\"}\n", "line 1: the header has no number of the first frame");
    expect_bad(text.substr(0, text.rfind("{\"frames\"")), "the manifest is not complete");
    expect_bad(text.substr(0, text.size() - 5), "the manifest is not complete");
    std::string other = text;
    other.replace(other.find("\"size\":61"), 9, "\"size\":62");
    expect_bad(other, "the frame has 61 bytes, but the manifest says 62");
    other = text;
    other.replace(other.find("\"offset\":61"), 11, "\"offset\":60");
    expect_bad(other, "line 3: the frame does not lie behind the one before it");
    other = text;
    other.replace(other.find("\"frames\":30"), 11, "\"frames\":29");
    expect_bad(other, "line 32: the numbers of frames and bytes are not those of the lines before");
    other = text;
    other.replace(other.find("\"frame\":1,"), 10, "\"frame\":-1,");
    expect_bad(other, "line 3: there is no number 'frame' in it");
}

TEST_F(manifests, verifying_takes_one) {
    make_parts(2);
    const words verify = {"verify", "part2.qvr", "--manifest", "part2.manifest"};
    EXPECT_EQ(folder_.qvr(verify).code, 0);
    // Samples that are others are sound; only the manifest knows.
    bytes content = folder_.read("part2.qvr");
    content.at(4 * k_small_frame + 50) ^= 1;
    content.at(9 * k_small_frame + 50) ^= 1;
    folder_.write("part2.qvr", content);
    EXPECT_EQ(folder_.qvr({"verify", "part2.qvr"}).code, 0);
    const outcome changed = folder_.qvr(verify);
    EXPECT_EQ(changed.code, 1);
    for (const char* told : {"qvr: part2.qvr: frame 4 at offset 244: the frame has the checksum ",
                             "qvr: part2.qvr: frame 9 at offset 549: the frame has the checksum ",
                             "qvr: part2.qvr: 2 frames are not as the manifest says\n"}) {
        EXPECT_TRUE(holds(changed.err, told)) << changed.err;
    }
    EXPECT_EQ(folder_.qvr({"verify", "part1.qvr", "--manifest", "part2.manifest"}).code, 1);
    content.resize(content.size() - k_small_frame);
    folder_.write("part2.qvr", content);
    EXPECT_TRUE(holds(folder_.qvr(verify).err, "3 frames are not as the manifest says"));
    folder_.write("part2.manifest", bytes(10, 'x'));
    EXPECT_EQ(folder_.qvr(verify).code, 1);
}

TEST_F(manifests, parts_without_one_are_taken_as_they_come) {
    ASSERT_EQ(folder_.qvr(encode_small("long.raw", "a.qvr", {"--range", "30-"})).code, 0);
    ASSERT_EQ(folder_.qvr(encode_small("long.raw", "b.qvr", {"--range", "0-29"})).code, 0);
    const outcome result = folder_.qvr({"join", "b.qvr", "a.qvr", "-o", "joined.qvr", "--manifest", "joined.manifest"});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.err, "joined.qvr: 60 frames of 2 parts, 0 with a manifest\n");
    EXPECT_EQ(folder_.read("joined.qvr"), folder_.read("long.qvr"));
    EXPECT_EQ(lines_of("joined.manifest").at(60)["frame"], 59);
    EXPECT_EQ(lines_of("joined.manifest").back()["end"], 60);
}

TEST_F(manifests, only_qvr_files_have_one) {
    const outcome result = folder_.qvr({"convert", "long.qvr", "a.pam", "--manifest", "a.manifest"});
    EXPECT_EQ(result.code, 2);
    EXPECT_TRUE(holds(result.err, "qvr: --manifest: only .qvr files have one\n")) << result.err;
    const outcome many = folder_.qvr({"convert", "long.qvr", "a.%d.qvr", "--manifest", "a.manifest"});
    EXPECT_EQ(many.code, 2);
    EXPECT_TRUE(holds(many.err, "qvr: --manifest: a numbered sequence has none, only a .qvr file with all frames\n"))
        << many.err;
}

}  // namespace
