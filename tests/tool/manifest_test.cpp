// SPDX-License-Identifier: BSD-3-Clause
//
// Manifests, recomputed with the xxhsum program, and joining of parts.
#include <gtest/gtest.h>
#include <stdio.h>

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
        EXPECT_EQ(lines.back(), json::parse(R"({"frames":10,"bytes":610,"end":30})"));
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
        EXPECT_TRUE(holds(result.err, "but frame 20 is next\nhint: give all parts, in the order of their frames\n"))
            << result.err;
        EXPECT_FALSE(folder_.has("joined.qvr"));
    }
    EXPECT_EQ(folder_.qvr({"join", "part1.qvr", "-o", "part1.qvr"}).code, 2);
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
}

}  // namespace
