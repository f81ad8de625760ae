// SPDX-License-Identifier: BSD-3-Clause
//
// What wrap takes comes out of unwrap byte for byte, and what it refuses is said in the words of the library.
#include <gtest/gtest.h>

#include <algorithm>

#include "boxes.h"
#include "clips.h"
#include "pictures.h"
#include "process.h"

namespace {

std::vector<std::string> joined(std::vector<std::string> first, const std::vector<std::string>& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

const std::vector<std::string> k_wrap_png = {"wrap", "--qcx", "q.bin", "--alpha", "m.png", "out.qvr"};

void expect_taken_out(const scratch_folder& folder, const bytes& frame, const test_picture& matte) {
    const outcome back = folder.qvr({"unwrap", "out.qvr", "--into", "parts"});
    ASSERT_EQ(back.code, 0) << back.err;
    EXPECT_EQ(folder.read("parts/frame000000-0.qcxf"), frame);
    const test_picture seen = read_picture(folder.file("parts/frame000000-alpha.png"));
    EXPECT_EQ(seen.kind, colours::grey);
    EXPECT_EQ(seen.depth, matte.depth);
    EXPECT_EQ(seen.width, matte.width);
    EXPECT_EQ(seen.height, matte.height);
    EXPECT_EQ(seen.samples, matte.samples);
}

TEST(wrap, a_frame_and_its_matte_come_back_raw_and_coded_at_both_depths) {
    for (const int depth : {8, 16}) {
        for (const std::vector<std::string>& options :
             {std::vector<std::string>{}, {"--alpha-rle"}, {"--alpha-rle", "--slices", "3", "--threads", "2"}}) {
            const scratch_folder folder;
            const bytes frame = qcx_frame(1300, 37, 21);
            const test_picture matte = make_picture(colours::grey, depth, 37, 21);
            folder.write("q.bin", frame);
            write_picture(folder.file("m.png"), matte);
            const outcome made = folder.qvr(joined(k_wrap_png, options));
            ASSERT_EQ(made.code, 0) << made.err;
            EXPECT_TRUE(holds(made.err,
                              "out.qvr: a QCX frame of 300 bytes beside alpha, 37x21 progressive, order 14 "
                              "Alpha, type "))
                << made.err;
            expect_taken_out(folder, frame, matte);
            const std::string info = folder.qvr({"info", "out.qvr"}).out;
            EXPECT_TRUE(holds(info, options.empty() ? "(alpha, " : "(coded alpha, ")) << info;
            EXPECT_TRUE(holds(info, "payload 0: 300 bytes, compression 1300, header size 37x21, flags")) << info;
        }
    }
}

TEST(wrap, the_bytes_are_those_of_the_format) {
    const scratch_folder folder;
    folder.write("q.bin", qcx_frame(1271, 4, 2, 45));
    folder.write("m.raw", noise(8));
    const outcome made =
        folder.qvr({"wrap", "--qcx", "q.bin", "--alpha", "m.raw", "--size", "4x2", "--type", "U8", "out.qvr", "-q"});
    ASSERT_EQ(made.code, 0) << made.err;
    bytes content;
    append_box(content, "QCXF", qcx_frame(1271, 4, 2, 45));
    append_box(content, "sinf", plane_payload(4, 2, " a08"));
    append_box(content, "sdat", noise(8));
    EXPECT_EQ(folder.read("out.qvr"), packed(content));
}

TEST(wrap, the_alpha_of_a_png_is_the_matte_and_its_colours_are_not) {
    for (const colours kind : {colours::rgba, colours::grey_alpha}) {
        for (const int depth : {8, 16}) {
            const scratch_folder folder;
            const test_picture picture = make_picture(kind, depth, 6, 4);
            folder.write("q.bin", qcx_frame(1301, 6, 4));
            write_picture(folder.file("m.png"), picture);
            ASSERT_EQ(folder.qvr(k_wrap_png).code, 0);
            test_picture matte = make_picture(colours::grey, depth, 6, 4);
            const std::size_t size = depth == 8 ? 1 : 2;
            const std::size_t pixel = picture.channels() * size;
            for (std::size_t i = 0; i < matte.samples.size(); ++i) {
                matte.samples[i] = picture.samples[i / size * pixel + pixel - size + i % size];
            }
            expect_taken_out(folder, folder.read("q.bin"), matte);
        }
    }
}

TEST(wrap, a_png_of_colours_alone_makes_no_matte) {
    const scratch_folder folder;
    folder.write("q.bin", qcx_frame(1300, 6, 4));
    write_picture(folder.file("m.png"), make_picture(colours::rgb, 8, 6, 4));
    const outcome made = folder.qvr(k_wrap_png);
    EXPECT_EQ(made.code, 2);
    EXPECT_TRUE(holds(made.err,
                      "qvr: m.png: no alpha plane can be made of this PNG: it has colours and no alpha\n"
                      "hint: an alpha plane is made of a PNG with alpha, or of one that is grey"))
        << made.err;
    EXPECT_FALSE(folder.has("out.qvr"));
}

TEST(wrap, raw_mattes_have_exactly_one_plane) {
    const scratch_folder folder;
    folder.write("q.bin", qcx_frame(1300, 4, 2));
    const std::vector<std::string> wrap = {"wrap", "--qcx",  "q.bin", "--alpha", "m.raw",  "--size",
                                           "4x2",  "--type", "U16",   "out.qvr", "--quiet"};
    folder.write("m.raw", noise(16));
    ASSERT_EQ(folder.qvr(wrap).code, 0);
    test_picture matte = make_picture(colours::grey, 16, 4, 2);
    matte.samples = noise(16);
    expect_taken_out(folder, folder.read("q.bin"), matte);
    const struct {
        std::size_t size;
        const char* message;
    } cases[] = {
        {17, "qvr: m.raw: it holds more than the 16 bytes of one matte\nhint: do --size and --type"},
        {32, "qvr: m.raw: it holds more than the 16 bytes of one matte\nhint: do --size and --type"},
        {15, "qvr: m.raw: frame 0 at offset 0: the last frame is not complete: 15 bytes are left, a frame has"},
        {0, "qvr: m.raw: there is no frame in it: the file is empty"}};
    for (const auto& wanted : cases) {
        folder.write("m.raw", noise(wanted.size));
        const outcome refused = folder.qvr(wrap);
        EXPECT_EQ(refused.code, 1) << wanted.size;
        EXPECT_TRUE(holds(refused.err, wanted.message)) << refused.err;
    }
}

TEST(wrap, interlaced_compressions_need_the_flag_and_others_refuse_it) {
    const struct {
        std::uint32_t compression;
        std::uint32_t width;
        std::uint32_t height;
        bool interlaced;
    } cases[] = {{1237, 1920, 1080, false}, {1241, 1920, 1080, true}, {1244, 1440, 1080, true},
                 {1259, 1440, 1080, false}, {1250, 1280, 720, false}, {1258, 960, 720, false}};
    for (const auto& known : cases) {
        const scratch_folder folder;
        // These compressions have one size each; what the header says of it does not count.
        folder.write("q.bin", qcx_frame(known.compression, 1, 1));
        write_picture(folder.file("m.png"), make_picture(colours::grey, 8, known.width, known.height));
        const std::vector<std::string> flagged = joined(k_wrap_png, {"--alpha-rle", "--interlaced"});
        const std::vector<std::string> plain = joined(k_wrap_png, {"--alpha-rle"});
        const outcome refused = folder.qvr(known.interlaced ? plain : flagged);
        EXPECT_EQ(refused.code, 2) << known.compression;
        EXPECT_EQ(refused.err,
                  known.interlaced
                      ? "qvr: q.bin: cannot wrap: Uncompressed params frame layout is not compatible with interlaced "
                        "QCX\nhint: the compressed frame is interlaced: give --interlaced\n"
                      : "qvr: q.bin: cannot wrap: Uncompressed params frame layout is not compatible with progressive "
                        "QCX\nhint: the compressed frame is progressive: leave --interlaced out\n");
        EXPECT_FALSE(folder.has("out.qvr"));
        const outcome made = folder.qvr(known.interlaced ? flagged : plain);
        EXPECT_EQ(made.code, 0) << known.compression << made.err;
    }
}

TEST(wrap, frames_that_the_library_refuses_are_told_in_its_words) {
    bytes with_alpha = qcx_frame(1300, 6, 4);
    with_alpha[7] |= 1;
    const struct {
        bytes frame;
        int code;
        const char* message;
        const char* hint;
    } cases[] = {
        {qcx_frame(1300, 6, 4, 44), 1, "Size is too small to parse QCX header", "the file was cut short"},
        {{}, 1, "Size is too small to parse QCX header", "the file was cut short"},
        {qcx_frame(1236, 6, 4), 1, "Invalid compression ID in QCX header", "the file is no QCX frame, or"},
        {with_alpha, 2, "Can't wrap uncompressed alpha and QCX with alpha flag set", "compress the frame without"},
        {qcx_frame(1300, 8, 4), 2, "Uncompressed params width 6 is not equal QCX width 8", "the matte must have"},
        {qcx_frame(1300, 6, 5), 2, "Uncompressed params height 4 is not equal QCX height 5", "the matte must have"},
        {qcx_frame(1235, 6, 4), 2, "Uncompressed params width 6 is not equal QCX width 1920", "the matte must have"},
    };
    const scratch_folder folder;
    write_picture(folder.file("m.png"), make_picture(colours::grey, 8, 6, 4));
    for (const auto& wanted : cases) {
        folder.write("q.bin", wanted.frame);
        const outcome result = folder.qvr(k_wrap_png);
        EXPECT_EQ(result.code, wanted.code) << result.err;
        EXPECT_TRUE(
            holds(result.err, std::string("qvr: q.bin: cannot wrap: ") + wanted.message + "\nhint: " + wanted.hint))
            << result.err;
        EXPECT_FALSE(folder.has("out.qvr"));
    }
    folder.write("q.bin", qcx_frame(1300, 6, 4, 45));
    EXPECT_EQ(folder.qvr(k_wrap_png).code, 0);
}

TEST(wrap, a_matte_that_is_no_png_is_refused) {
    const scratch_folder folder;
    folder.write("q.bin", qcx_frame(1300, 6, 4));
    folder.write("m.png", noise(50));
    const outcome damaged = folder.qvr(k_wrap_png);
    EXPECT_EQ(damaged.code, 1);
    EXPECT_TRUE(holds(damaged.err, "qvr: m.png: this is not a PNG: its first bytes are others")) << damaged.err;
    write_picture(folder.file("m.png"), make_picture(colours::grey, 16, 6, 4));
    const outcome type = folder.qvr(joined(k_wrap_png, {"--type", "U8"}));
    EXPECT_EQ(type.code, 2);
    EXPECT_TRUE(holds(type.err, "m.png: --type 1 U8, but this PNG has samples of type 2 U16")) << type.err;
    EXPECT_FALSE(folder.has("out.qvr"));
}

void expect_chunks_come_back(const std::vector<bytes>& chunks) {
    const scratch_folder folder;
    std::vector<std::string> wrap = {"wrap", "--size", "64x32", "--interlaced", "--tiles"};
    std::size_t total = 37;
    for (std::size_t i = 0; i < chunks.size(); ++i) {
        wrap.push_back("chunk" + std::to_string(i));
        folder.write(wrap.back(), chunks[i]);
        total += chunks[i].size() + 8;
    }
    wrap.push_back("out.qvr");
    const outcome made = folder.qvr(wrap);
    ASSERT_EQ(made.code, 0) << made.err;
    EXPECT_TRUE(holds(made.err, ", 64x32 interlaced -> " + std::to_string(total) + " bytes\n")) << made.err;
    EXPECT_EQ(folder.read("out.qvr").size(), total);
    const outcome back = folder.qvr({"unwrap", "out.qvr", "--into", "parts"});
    ASSERT_EQ(back.code, 0) << back.err;
    for (std::size_t i = 0; i < chunks.size(); ++i) {
        const std::string name = "parts/frame000000-" + std::to_string(i) + (i == 0 ? ".stch" : ".tile");
        ASSERT_TRUE(folder.has(name)) << name;
        EXPECT_EQ(folder.read(name), chunks[i]) << name;
    }
    EXPECT_FALSE(folder.has("parts/frame000000-" + std::to_string(chunks.size()) + ".tile"));
}

TEST(wrap, one_chunk_comes_back) {
    expect_chunks_come_back({noise(1000)});
    expect_chunks_come_back({{}});
}

TEST(wrap, chunks_without_a_byte_come_back) {
    expect_chunks_come_back({{}, {}, {}});
    expect_chunks_come_back({noise(3), {}, noise(5, 2), {}});
    expect_chunks_come_back({{}, noise(7)});
}

TEST(wrap, many_chunks_come_back) {
    std::vector<bytes> chunks;
    for (std::uint32_t i = 0; i < 700; ++i) {
        chunks.push_back(noise(i * 13 % 101, i));
    }
    expect_chunks_come_back(chunks);
}

TEST(wrap, large_chunks_come_back) {
    expect_chunks_come_back({noise(20 << 20, 5), noise(1, 6), noise((16 << 20) + 1, 7)});
}

TEST(wrap, standard_input_and_output_can_be_used) {
    const scratch_folder folder;
    folder.write("a.bin", noise(10));
    const outcome made = folder.qvr({"wrap", "--size", "8x4", "--tiles", "a.bin", "-", "-"}, noise(33, 9));
    ASSERT_EQ(made.code, 0) << made.err;
    EXPECT_TRUE(holds(made.err, "standard output: 2 chunks of together 43 bytes")) << made.err;
    const outcome back = folder.qvr({"unwrap", "-", "--into", "parts"}, bytes(made.out.begin(), made.out.end()));
    ASSERT_EQ(back.code, 0) << back.err;
    EXPECT_EQ(folder.read("parts/frame000000-1.tile"), noise(33, 9));
    write_picture(folder.file("m.png"), make_picture(colours::grey, 8, 6, 4));
    const outcome frame = folder.qvr({"wrap", "--qcx", "-", "--alpha", "m.png", "out.qvr"}, qcx_frame(1300, 6, 4));
    EXPECT_EQ(frame.code, 0) << frame.err;
    const outcome bad = folder.qvr({"wrap", "--qcx", "-", "--alpha", "m.png", "out.qvr"}, noise(10));
    EXPECT_EQ(bad.code, 1);
    EXPECT_TRUE(holds(bad.err, "qvr: standard input: cannot wrap: Size is too small")) << bad.err;
}

TEST(wrap, a_failure_leaves_an_old_file_as_it_was) {
    const scratch_folder folder;
    folder.write("out.qvr", noise(100));
    folder.write("q.bin", noise(44));
    write_picture(folder.file("m.png"), make_picture(colours::grey, 8, 6, 4));
    EXPECT_EQ(folder.qvr(k_wrap_png).code, 1);
    EXPECT_EQ(folder.read("out.qvr"), noise(100));
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"m.png", "out.qvr", "q.bin"}));
    folder.write("q.bin", qcx_frame(1300, 6, 4));
    std::vector<std::string> full = k_wrap_png;
    std::replace(full.begin(), full.end(), std::string("out.qvr"), std::string("/dev/full"));
    const outcome result = folder.qvr(full);
    EXPECT_EQ(result.code, 3);
    EXPECT_TRUE(holds(result.err, "qvr: /dev/full: cannot write it: No space left on device")) << result.err;
}

}  // namespace
