// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include "clips.h"
#include "pictures.h"
#include "process.h"

namespace {

// A clip of three 61-byte frames with one thing changed.
class damage : public testing::Test {
  protected:
    damage() {
        make_rgb_clip(folder_, "good.qvr", 3);
        content_ = folder_.read("good.qvr");
    }

    outcome run(const std::string& command) {
        folder_.write("bad.qvr", content_);
        std::vector<std::string> arguments = {command, "bad.qvr"};
        if (command == "decode") {
            arguments.push_back("out.raw");
        }
        return folder_.qvr(arguments);
    }

    // Both commands must name frame and offset; nothing may be left of the output.
    void expect_bad(const std::string& place, const std::string& message) {
        for (const char* command : {"decode", "info"}) {
            const outcome result = run(command);
            EXPECT_EQ(result.code, 1) << result.err;
            EXPECT_TRUE(holds(result.err, "qvr: bad.qvr: " + place + ": ")) << result.err;
            EXPECT_TRUE(holds(result.err, message)) << result.err;
            EXPECT_EQ(folder_.names(), (std::vector<std::string>{"bad.qvr", "good.qvr"}));
        }
    }

    scratch_folder folder_;
    bytes content_;
};

TEST_F(damage, the_good_file_is_good) {
    EXPECT_EQ(run("info").code, 0);
    EXPECT_EQ(run("decode").code, 0);
}

TEST_F(damage, a_size_too_large_is_named_by_frame_and_offset) {
    put_le32(content_, 2 * k_rgb_frame, 62);
    expect_bad("frame 2 at offset 122",
               "the 'pack' box says that the frame has 62 bytes, but the file ends after 61\nhint: the file was cut "
               "short, or the size in the frame's first four bytes is damaged");
}

TEST_F(damage, an_enormous_size_costs_no_memory) {
    put_le32(content_, k_rgb_frame, 0xFFFFFFFFu);
    expect_bad("frame 1 at offset 61", "says that the frame has 4294967295 bytes, but the file ends after 122");
}

TEST_F(damage, a_size_smaller_than_its_header_is_named) {
    for (const std::uint32_t size : {0u, 1u, 7u}) {
        put_le32(content_, k_rgb_frame, size);
        expect_bad("frame 1 at offset 61", "the 'pack' box says that it has " + std::to_string(size) +
                                               " bytes, fewer than its own header\nhint: the size");
    }
}

TEST_F(damage, a_size_too_small_is_seen_in_the_frame_itself) {
    put_le32(content_, k_rgb_frame, 60);
    expect_bad("frame 1 at offset 61", "can't read 32 bytes at offset 37");
    put_le32(content_, k_rgb_frame, 8);
    expect_bad("frame 1 at offset 61", "at least one 'sinf' and one 'sdat' box expected");
}

TEST_F(damage, something_else_where_a_frame_should_begin_is_named) {
    content_.at(k_rgb_frame + 4) = 'P';
    expect_bad("frame 1 at offset 61",
               "a 'pack' box should begin here, but the type is 'Pack'\nhint: the size of the frame before this one");
    content_.at(4) = 0;
    expect_bad("frame 0 at offset 0", "but the type is '\\x00ack'\nhint: this is not a .qvr file");
}

TEST_F(damage, bytes_behind_the_last_frame_are_named) {
    content_.insert(content_.end(), 5, 0);
    expect_bad("frame 3 at offset 183", "only 5 bytes are left, fewer than a box header has");
}

TEST_F(damage, every_truncation_is_bad_data) {
    const bytes whole(content_.begin(), content_.begin() + k_rgb_frame);
    for (std::size_t length = 1; length < whole.size(); ++length) {
        folder_.write("bad.qvr", bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)));
        for (const std::vector<std::string>& arguments :
             {std::vector<std::string>{"info", "bad.qvr"}, {"decode", "bad.qvr", "out.raw"}}) {
            const outcome result = folder_.qvr(arguments);
            EXPECT_EQ(result.code, 1) << length << result.err;
            EXPECT_TRUE(holds(result.err, "qvr: bad.qvr: frame 0 at offset 0: ")) << result.err;
        }
        EXPECT_FALSE(folder_.has("out.raw"));
    }
}

TEST_F(damage, damaged_box_sizes_and_types_are_told_in_the_words_of_the_library) {
    const bytes good = content_;
    put_le32(content_, k_rgb_frame + 8, 19);
    expect_bad("frame 1 at offset 61", "sinf box size expected to be at least 20 bytes at offset 8");
    content_ = good;
    put_le32(content_, k_rgb_frame + 29, 31);
    expect_bad("frame 1 at offset 61", "'sdat' box size expected to be at least 32 at offset 29");
    content_ = good;
    content_.at(k_rgb_frame + 33) = 'x';
    expect_bad("frame 1 at offset 61", "'sdat' box expected at offset 33");
    content_ = good;
    content_.at(k_rgb_frame + 28) = 2;
    expect_bad("frame 1 at offset 61", "Undefined value of frame layout: 2");
    content_ = good;
    put_le32(content_, k_rgb_frame + 16, 0xFFFFFFFFu);
    expect_bad("frame 1 at offset 61", "");
}

TEST_F(damage, info_shows_the_frames_before_and_behind_a_damaged_one) {
    content_.at(k_rgb_frame + 28) = 2;
    put_le32(content_, 2 * k_rgb_frame, 70);
    const outcome result = run("info");
    EXPECT_EQ(result.code, 1);
    EXPECT_TRUE(holds(result.out, "frame 0: offset 0, 61 bytes\n  format  4x2")) << result.out;
    EXPECT_TRUE(holds(result.out, "frame 1: offset 61, 61 bytes\n  format  unreadable\n")) << result.out;
    EXPECT_TRUE(holds(result.out, "4x2, unknown layout")) << result.out;
    EXPECT_TRUE(holds(result.out, "frame 2: offset 122, 61 bytes\n  format  unreadable\n")) << result.out;
    EXPECT_TRUE(holds(result.out, "'pack'                    122             70  ! runs past the end by 9\n"))
        << result.out;
    EXPECT_TRUE(holds(result.err, "frame 1 at offset 61")) << result.err;
    EXPECT_TRUE(holds(result.err, "frame 2 at offset 122")) << result.err;
}

TEST_F(damage, info_marks_sizes_that_the_library_does_not_look_at) {
    put_le32(content_, 29, 33);
    const outcome result = run("info");
    EXPECT_TRUE(holds(result.out,
                      "'sdat'                   29             33  plane 0: payload of 25 bytes  ! runs past "
                      "the end by 1\n"))
        << result.out;
}

TEST_F(damage, no_single_bit_crashes_the_tool) {
    const bytes good(content_.begin(), content_.begin() + k_rgb_frame);
    for (std::size_t bit = 0; bit < 37 * 8; ++bit) {
        content_ = good;
        content_.at(bit / 8) = static_cast<std::uint8_t>(content_.at(bit / 8) ^ (1u << (bit % 8)));
        for (const char* command : {"info", "decode"}) {
            const outcome result = run(command);
            EXPECT_EQ(result.signal_number, 0) << bit;
            EXPECT_TRUE(result.code == 0 || result.code == 1 || result.code == 2) << bit << result.err;
        }
    }
}

TEST(damage_alpha, coded_alpha_cut_short_is_told_in_the_words_of_the_library) {
    const scratch_folder folder;
    write_picture(folder.file("in.png"), make_picture(colours::rgba, 8, 40, 30));
    ASSERT_EQ(folder.qvr({"encode", "in.png", "good.qvr", "--alpha-rle"}).code, 0);
    bytes content = folder.read("good.qvr");
    // All sizes say 100 bytes less: the boxes are whole, the coded alpha is not.
    const std::size_t alpha = get_le32(content, 8) + 8;
    for (const std::size_t at : {std::size_t{0}, alpha, alpha + 29}) {
        put_le32(content, at, get_le32(content, at) - 100);
    }
    content.resize(content.size() - 100);
    folder.write("bad.qvr", content);
    EXPECT_EQ(folder.qvr({"info", "bad.qvr"}).code, 0);
    const outcome result = folder.qvr({"decode", "bad.qvr", "out.png"});
    EXPECT_EQ(result.code, 1);
    EXPECT_TRUE(holds(result.err, "qvr: bad.qvr: frame 0 at offset 0: cannot decode: rle payload is too short"))
        << result.err;
    EXPECT_FALSE(folder.has("out.png"));
}

TEST(damage_mismatch, a_layout_that_the_frame_does_not_hold_is_wrong_usage) {
    const scratch_folder folder;
    make_rgb_clip(folder, "clip.qvr", 1);
    const outcome order = folder.qvr({"decode", "clip.qvr", "out.raw", "--order", "UYVY"});
    EXPECT_EQ(order.code, 2);
    EXPECT_TRUE(holds(order.err,
                      "qvr: clip.qvr: frame 0 at offset 0: cannot decode: src metadata type is incompatible with color "
                      "component order or component type\nhint: the frame is RGB U8 (4:4:4); UYVY U8 (4:2:2) cannot be "
                      "made of it: samples can change places, but colours and depths are never converted\n"))
        << order.err;
    const outcome type = folder.qvr({"decode", "clip.qvr", "out.raw", "--type", "U16"});
    EXPECT_EQ(type.code, 2);
    EXPECT_TRUE(
        holds(type.err,
              "bit depth in src metadata is different than bit depth in uncompressed params\nhint: the frame is RGB U8 "
              "(4:4:4); RGB U16 (4:4:4) cannot be made of it"))
        << type.err;
    const outcome pair = folder.qvr({"decode", "clip.qvr", "out.raw", "--type", "U10Packed"});
    EXPECT_EQ(pair.code, 2);
    EXPECT_TRUE(holds(pair.err, "order 5 RGB does not go with type 5 U10Packed")) << pair.err;
    EXPECT_FALSE(folder.has("out.raw"));
}

}  // namespace
