// SPDX-License-Identifier: BSD-3-Clause
//
// What unwrap makes of files of several frames, of damaged ones and of folders that are there already or cannot be.
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "boxes.h"
#include "clips.h"
#include "comes_true.h"
#include "pictures.h"
#include "process.h"

namespace {

bytes stitched(const std::vector<bytes>& chunks) {
    bytes boxes;
    for (std::size_t i = 0; i < chunks.size(); ++i) {
        append_box(boxes, i == 0 ? "stch" : "tile", chunks[i]);
    }
    bytes content;
    append_box(content, "sinf", plane_payload(8, 4, "stch"));
    append_box(content, "sdat", boxes);
    return packed(content);
}

bytes beside_alpha(const bytes& frame) {
    bytes content;
    append_box(content, "QCXF", frame);
    append_box(content, "sinf", plane_payload(4, 2, " a08"));
    append_box(content, "sdat", noise(8, 3));
    return packed(content);
}

bytes plain() {
    bytes content;
    append_box(content, "sinf", plane_payload(4, 2, "rg08"));
    append_box(content, "sdat", noise(24));
    return packed(content);
}

void append(bytes& to, const bytes& more) {
    to.insert(to.end(), more.begin(), more.end());
}

std::vector<std::string> names_in(const std::string& path) {
    std::vector<std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator(path)) {
        found.push_back(entry.path().filename().string());
    }
    std::sort(found.begin(), found.end());
    return found;
}

// Neither a new folder nor anything in an old one may be left behind.
void expect_bad(const bytes& content, const std::string& message, int code = 1) {
    const scratch_folder folder;
    folder.write("bad.qvr", content);
    const outcome fresh = folder.qvr({"unwrap", "bad.qvr", "--into", "parts"});
    EXPECT_EQ(fresh.code, code) << fresh.err;
    EXPECT_TRUE(holds(fresh.err, message)) << fresh.err;
    EXPECT_EQ(folder.names(), std::vector<std::string>{"bad.qvr"});
    std::filesystem::create_directory(folder.file("old"));
    folder.write("old/frame000000-0.stch", noise(5));
    const outcome old = folder.qvr({"unwrap", "bad.qvr", "--into", "old"});
    EXPECT_EQ(old.err, fresh.err);
    EXPECT_EQ(names_in(folder.file("old")), std::vector<std::string>{"frame000000-0.stch"});
    EXPECT_EQ(folder.read("old/frame000000-0.stch"), noise(5));
}

TEST(unwrap, the_frames_of_a_file_have_names_of_their_own) {
    const scratch_folder folder;
    bytes content = stitched({noise(10), noise(20, 2)});
    append(content, beside_alpha(qcx_frame(1300, 4, 2)));
    append(content, stitched({{}}));
    folder.write("all.qvr", content);
    const outcome result = folder.qvr({"unwrap", "all.qvr", "--into", "parts"});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.err, "parts: 4 payloads of 330 bytes and 1 alpha plane from 3 frames\n");
    EXPECT_EQ(names_in(folder.file("parts")),
              (std::vector<std::string>{"frame000000-0.stch", "frame000000-1.tile", "frame000001-0.qcxf",
                                        "frame000001-alpha.png", "frame000002-0.stch"}));
    EXPECT_EQ(folder.read("parts/frame000000-1.tile"), noise(20, 2));
    EXPECT_EQ(folder.read("parts/frame000001-0.qcxf"), qcx_frame(1300, 4, 2));
    EXPECT_EQ(read_picture(folder.file("parts/frame000001-alpha.png")).samples, noise(8, 3));
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"all.qvr", "parts"}));
}

TEST(unwrap, one_frame_can_be_taken_apart) {
    const scratch_folder folder;
    bytes content = stitched({noise(10), noise(20, 2)});
    append(content, beside_alpha(qcx_frame(1300, 4, 2)));
    content.resize(content.size() + 50);  // what stands behind is not read
    folder.write("all.qvr", content);
    const outcome result = folder.qvr({"unwrap", "all.qvr", "--into", "parts", "--frame", "1"});
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(result.err, "parts: 1 payload of 300 bytes and 1 alpha plane from 1 frame\n");
    EXPECT_EQ(names_in(folder.file("parts")),
              (std::vector<std::string>{"frame000001-0.qcxf", "frame000001-alpha.png"}));
}

TEST(unwrap, a_frame_that_cannot_be_taken_apart_leaves_nothing) {
    const scratch_folder folder;
    bytes content = plain();
    append(content, stitched({noise(10)}));
    folder.write("all.qvr", content);
    const outcome colours = folder.qvr({"unwrap", "all.qvr", "--into", "parts", "--frame", "0"});
    EXPECT_EQ(colours.code, 1);
    EXPECT_TRUE(holds(colours.err, "qvr: all.qvr: frame 0 at offset 0: there are no wrapped payloads in it\nhint: "))
        << colours.err;
    const outcome missing = folder.qvr({"unwrap", "all.qvr", "--into", "parts", "--frame", "2"});
    EXPECT_EQ(missing.code, 2);
    EXPECT_EQ(missing.err, "qvr: all.qvr: there is no frame 2: the file holds 2, counted from 0\n");
    EXPECT_EQ(folder.names(), std::vector<std::string>{"all.qvr"});
}

TEST(unwrap, decoding_such_a_frame_says_that_only_its_alpha_comes_out) {
    const scratch_folder folder;
    bytes content = beside_alpha(qcx_frame(1300, 4, 2));
    append(content, content);
    folder.write("all.qvr", content);
    const outcome result = folder.qvr({"decode", "all.qvr", "alpha.raw", "-q"});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(
        result.err,
        "qvr: warning: all.qvr: only alpha planes are decoded; 'qvr unwrap' takes out the compressed frames beside "
        "them\n");
    EXPECT_EQ(folder.read("alpha.raw").size(), 16u);
}

TEST(unwrap, a_folder_that_is_there_keeps_what_has_other_names) {
    const scratch_folder folder;
    folder.write("a.qvr", stitched({noise(10)}));
    std::filesystem::create_directory(folder.file("parts"));
    folder.write("parts/mine", noise(7));
    folder.write("parts/frame000000-0.stch", noise(99));
    for (const char* name : {"parts", "parts/", "parts//"}) {
        EXPECT_EQ(folder.qvr({"unwrap", "a.qvr", "--into", name}).code, 0);
        EXPECT_EQ(names_in(folder.file("parts")), (std::vector<std::string>{"frame000000-0.stch", "mine"}));
        EXPECT_EQ(folder.read("parts/frame000000-0.stch"), noise(10));
        EXPECT_EQ(folder.read("parts/mine"), noise(7));
    }
    EXPECT_EQ(folder.qvr({"unwrap", "a.qvr", "--into", "fresh/"}).code, 0);
    EXPECT_EQ(folder.read("fresh/frame000000-0.stch"), noise(10));
}

TEST(unwrap, plain_frames_between_others_are_left_out_with_a_warning) {
    const scratch_folder folder;
    bytes content = plain();
    append(content, stitched({noise(10)}));
    append(content, plain());
    folder.write("all.qvr", content);
    const outcome result = folder.qvr({"unwrap", "all.qvr", "--into", "parts", "-q"});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.err,
              "qvr: warning: all.qvr: 2 frames of 3 without wrapped payloads left out; 'qvr decode' takes them out\n");
    EXPECT_EQ(names_in(folder.file("parts")), std::vector<std::string>{"frame000001-0.stch"});
}

TEST(unwrap, a_file_without_payloads_is_refused) {
    bytes content = plain();
    append(content, plain());
    expect_bad(content, "qvr: bad.qvr: there are no wrapped payloads in it\nhint: 'qvr decode' takes plain frames out");
    expect_bad({}, "qvr: bad.qvr: there is no frame in it: the file is empty\n");
    expect_bad(noise(50), "qvr: bad.qvr: frame 0 at offset 0: a 'pack' box should begin here");
}

TEST(unwrap, a_damaged_frame_behind_good_ones_leaves_nothing) {
    bytes content = stitched({noise(10)});
    const std::size_t start = content.size();
    append(content, beside_alpha(qcx_frame(1300, 4, 2)));
    bytes damaged = content;
    damaged.resize(content.size() - 1);
    expect_bad(damaged, "qvr: bad.qvr: frame 1 at offset 55: the 'pack' box says that the frame has 353 bytes");
    damaged = content;
    damaged.at(start + 8 + 308 + 20) = 2;
    expect_bad(damaged,
               "qvr: bad.qvr: frame 1 at offset 55: cannot read the frame's description: Undefined value of "
               "frame layout: 2");
}

TEST(unwrap, payload_sizes_are_compared_with_the_frame_before_memory_is_asked_for) {
    bytes content = stitched({noise(10), noise(20)});
    put_le32(content, 37 + 18, 0xFFFFFFFFu);
    expect_bad(content,
               "qvr: bad.qvr: frame 0 at offset 0: the payloads are said to have 4294967297 bytes, but the frame "
               "has only 83\nhint: the size of a wrapped box is damaged; 'qvr info' shows them");
    content = stitched({noise(10), noise(20)});
    put_le32(content, 37 + 18, 29);
    expect_bad(content, "qvr: bad.qvr: frame 0 at offset 0: cannot unwrap: can't read 21 bytes at offset 63");
}

TEST(unwrap, boxes_smaller_than_their_header_are_refused) {
    for (const std::uint32_t size : {0u, 7u}) {
        bytes content = stitched({noise(10), noise(20)});
        put_le32(content, 37 + 18, size);
        expect_bad(content,
                   "frame 0 at offset 0: cannot read the frame's description: 'tile' box size expected to be at "
                   "least 8 at offset 55");
        content = beside_alpha(qcx_frame(1300, 4, 2));
        put_le32(content, 8, size);
        expect_bad(content,
                   "cannot read the frame's description: 'QCXF' box size expected to be at least 8 at offset 8");
    }
}

TEST(unwrap, combinations_that_no_writer_makes_are_refused) {
    bytes content;
    append_box(content, "QCXF", qcx_frame(1300, 4, 2));
    append_box(content, "QCXF", qcx_frame(1300, 4, 2));
    append_box(content, "sinf", plane_payload(4, 2, " a08"));
    append_box(content, "sdat", bytes(8));
    expect_bad(packed(content), "cannot unwrap: Only single QCX wrap chunk supported for decode\nhint: 'qvr info'");
    content.clear();
    append_box(content, "QCXF", qcx_frame(1300, 4, 2));
    append_box(content, "sinf", plane_payload(4, 2, "rg08"));
    append_box(content, "sdat", bytes(24));
    expect_bad(packed(content), "there is no lone alpha plane beside the QCX frame\nhint: 'qvr info'");
}

TEST(unwrap, chunks_that_begin_with_a_further_one_are_refused) {
    bytes content = stitched({noise(10), noise(20)});
    const bytes type = {'t', 'i', 'l', 'e'};
    std::copy(type.begin(), type.end(), content.begin() + 41);
    expect_bad(content, "the chunks begin with a 'tile' box, but the first must be a 'stch' box\nhint: the type");
}

TEST(unwrap, an_alpha_plane_without_pixels_makes_no_picture) {
    bytes content;
    append_box(content, "QCXF", qcx_frame(1300, 0, 2));
    append_box(content, "sinf", plane_payload(0, 2, " a08"));
    append_box(content, "sdat", {});
    expect_bad(packed(content), "frame 0 at offset 0: the alpha plane has no pixels, which no PNG can show\nhint: ");
}

TEST(unwrap, coded_alpha_cut_short_is_told_in_the_words_of_the_library) {
    const scratch_folder folder;
    folder.write("q.bin", qcx_frame(1300, 40, 30));
    write_picture(folder.file("m.png"), make_picture(colours::grey, 8, 40, 30));
    ASSERT_EQ(folder.qvr({"wrap", "--qcx", "q.bin", "--alpha", "m.png", "a.qvr", "--alpha-rle"}).code, 0);
    bytes content = folder.read("a.qvr");
    for (const std::size_t at : {std::size_t{0}, std::size_t{8 + 308 + 21}}) {
        put_le32(content, at, get_le32(content, at) - 100);
    }
    content.resize(content.size() - 100);
    expect_bad(content, "qvr: bad.qvr: frame 0 at offset 0: cannot unwrap: rle payload is too short");
}

TEST(unwrap, no_single_bit_crashes_the_tool_or_leaves_half_a_result) {
    for (const bytes& good : {stitched({noise(3), {}}), beside_alpha(qcx_frame(1300, 4, 2, 46))}) {
        for (std::size_t bit = 0; bit < good.size() * 8; bit += bit < 480 ? 1 : 7) {
            const scratch_folder folder;
            bytes content = good;
            content[bit / 8] = static_cast<std::uint8_t>(content[bit / 8] ^ (1u << (bit % 8)));
            folder.write("bad.qvr", content);
            const outcome result = folder.qvr({"unwrap", "bad.qvr", "--into", "parts"});
            EXPECT_EQ(result.signal_number, 0) << bit;
            EXPECT_TRUE(result.code == 0 || result.code == 1) << bit << result.err;
            EXPECT_EQ(folder.names().size(), result.code == 0 ? 2u : 1u) << bit;
        }
    }
}

TEST(unwrap, every_truncation_is_bad_data) {
    const bytes whole = beside_alpha(qcx_frame(1300, 4, 2, 46));
    for (std::size_t length = 1; length < whole.size(); ++length) {
        const scratch_folder folder;
        folder.write("bad.qvr", bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)));
        EXPECT_EQ(folder.qvr({"unwrap", "bad.qvr", "--into", "parts"}).code, 1) << length;
        EXPECT_EQ(folder.names(), std::vector<std::string>{"bad.qvr"});
    }
}

TEST(unwrap, folders_that_cannot_be_are_output_failures) {
    const scratch_folder folder;
    folder.write("a.qvr", stitched({noise(10), noise(20)}));
    folder.write("file", noise(3));
    const outcome file = folder.qvr({"unwrap", "a.qvr", "--into", "file"});
    EXPECT_EQ(file.code, 3);
    EXPECT_EQ(file.err,
              "qvr: file: cannot write into it: it is not a directory\nhint: give --into a folder, or a name that "
              "nothing has yet\n");
    const outcome nowhere = folder.qvr({"unwrap", "a.qvr", "--into", "no/such"});
    EXPECT_EQ(nowhere.code, 3);
    EXPECT_EQ(nowhere.err,
              "qvr: no/such: cannot create it: No such file or directory\nhint: look at the name and its folder, which "
              "must exist\n");
    std::filesystem::create_directories(folder.file("parts/frame000000-1.tile"));
    const outcome taken = folder.qvr({"unwrap", "a.qvr", "--into", "parts"});
    EXPECT_EQ(taken.code, 3);
    EXPECT_EQ(taken.err,
              "qvr: parts/frame000000-1.tile: cannot write it: it is a directory\nhint: move it away, or give --into "
              "another folder\n");
    EXPECT_EQ(names_in(folder.file("parts")), std::vector<std::string>{"frame000000-1.tile"});
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"a.qvr", "file", "parts"}));
}

TEST(unwrap, an_interrupt_leaves_nothing_behind) {
    for (const bool exists : {false, true}) {
        const scratch_folder folder;
        if (exists) {
            std::filesystem::create_directory(folder.file("parts"));
        }
        const std::string where = exists ? folder.file("parts") : folder.path();
        int feed = -1;
        const int process = folder.start_qvr({"unwrap", "-", "--into", "parts"}, &feed);
        const bytes frame = stitched({noise(10), noise(20)});
        ASSERT_EQ(write(feed, frame.data(), frame.size()), static_cast<ssize_t>(frame.size()));
        EXPECT_TRUE(comes_true([&] {
            const std::vector<std::string> names = names_in(where);
            return names.size() == 1 && std::filesystem::exists(where + "/" + names[0] + "/frame000000-1.tile");
        }));
        ASSERT_EQ(kill(process, SIGTERM), 0);
        EXPECT_EQ(wait_for(process).signal_number, SIGTERM);
        close(feed);
        EXPECT_TRUE(names_in(where).empty());
    }
}

}  // namespace
