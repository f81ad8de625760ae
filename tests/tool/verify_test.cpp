// SPDX-License-Identifier: BSD-3-Clause
//
// What 'qvr verify' finds in frames put together byte by byte.
#include <gtest/gtest.h>

#include "boxes.h"
#include "clips.h"
#include "coded_planes.h"
#include "json_lines.h"
#include "process.h"

namespace {

bytes box(const std::string& type, const bytes& payload) {
    bytes made;
    append_box(made, type, payload);
    return made;
}

bytes plane(std::uint32_t width, std::uint32_t height, const std::string& code, const bytes& samples) {
    return joined({box("sinf", plane_payload(width, height, code)), box("sdat", samples)});
}

bytes frame(const std::vector<bytes>& parts) {
    return packed(joined(parts));
}

// 4x2 RGB, 61 bytes: 'pack' at 0, 'sinf' at 8, 'sdat' at 29, samples at 37.
bytes rgb() {
    return plane(4, 2, "rg08", noise(24));
}

bytes with(bytes in, std::size_t at, std::uint8_t value) {
    in.at(at) = value;
    return in;
}

bytes with_le32(bytes in, std::size_t at, std::uint32_t value) {
    put_le32(in, at, value);
    return in;
}

bytes cut(bytes in, std::size_t size) {
    in.resize(size);
    return in;
}

// A plane of eight samples of value 127, 4x2, as one run: bits 0 0001000 1000.
const bytes k_run = {0x08, 0x80};

struct verify_case {
    const char* name;
    bytes content;
    const char* result;
    std::vector<std::string> findings;  // name@offset
};

std::vector<std::string> named(const json& findings) {
    std::vector<std::string> names;
    for (const json& each : findings) {
        names.push_back(each.at("name").get<std::string>() + "@" + std::to_string(each.at("offset").get<int>()));
    }
    return names;
}

void expect_found(const verify_case& wanted) {
    const scratch_folder folder;
    folder.write("a.qvr", wanted.content);
    const outcome result = folder.qvr({"verify", "a.qvr", "--json"});
    const std::vector<json> lines = json_lines(result.out);
    ASSERT_EQ(lines.size(), 2u) << wanted.name << result.out << result.err;
    EXPECT_EQ(lines[0].at("result"), wanted.result) << wanted.name << result.out;
    EXPECT_EQ(named(lines[0].at("findings")), wanted.findings) << wanted.name << result.out;
    const bool bad = std::string(wanted.result) == "damaged";
    EXPECT_EQ(result.code, bad ? 1 : 0) << wanted.name;
    EXPECT_EQ(lines[1].at(wanted.result), 1) << wanted.name;
    EXPECT_EQ(lines[1].at("good"), !bad) << wanted.name;
    EXPECT_EQ(holds(result.err, "qvr: a.qvr: frame 0 at offset 0: "), bad) << wanted.name << result.err;
    EXPECT_EQ(folder.qvr({"verify", "a.qvr", "-q", "--strict"}).code, std::string(wanted.result) != "identical")
        << wanted.name;
}

TEST(verify, what_the_format_defines_is_identical) {
    const verify_case cases[] = {
        {"one plane", frame({rgb()}), "identical", {}},
        {"two planes",
         frame({box("icmp", plane(4, 2, "rg08", noise(24))), box("icmp", plane(4, 2, " a08", noise(8)))}),
         "identical",
         {}},
        {"coded alpha", coded_frame(4, 2, joined({slice_table({2}, {2}), k_run})), "identical", {}},
        {"coded alpha of the documentation",
         coded_frame(4, 2, {0x01, 0xbf, 0xff, 0xfc, 0x6f, 0xff, 0xff, 0x90, 0xdf, 0xad, 0x54, 0x39, 0x6a, 0xa0}),
         "identical",
         {}},
        {"chunks",
         frame({box("sinf", plane_payload(8, 4, "stch")),
                box("sdat", joined({box("stch", noise(10)), box("tile", noise(20))}))}),
         "identical",
         {}},
        {"a compressed frame",
         frame({box("QCXF", qcx_frame(1300, 4, 2)), plane(4, 2, " a16", noise(16))}),
         "identical",
         {}},
    };
    for (const verify_case& wanted : cases) {
        expect_found(wanted);
    }
}

TEST(verify, sound_frames_of_other_writers_are_different) {
    const bytes alpha_first =
        frame({box("icmp", plane(4, 2, " a08", noise(8))), box("icmp", plane(4, 2, "rg08", noise(24)))});
    const bytes slices = {slice_table({2, 2}, {1, 2})};
    const bytes long_sinf = joined({plane_payload(4, 2, "rg08"), {1, 2, 3}});
    const verify_case cases[] = {
        {"unknown box in front",
         frame({box("free", noise(3)), rgb()}),
         "different",
         {"unknown-box@8", "different-bytes@0"}},
        {"unknown box behind", frame({rgb(), box("free", {})}), "different", {"unknown-box@61", "different-bytes@0"}},
        {"old spelling",
         frame({plane(4, 2, "rg f", noise(96))}),
         "different",
         {"old-plane-code@8", "different-bytes@24"}},
        {"short 'sinf'",
         frame({box("sinf", cut(plane_payload(4, 2, "rg08"), 12)), box("sdat", noise(24))}),
         "different",
         {"plane-box-size@8", "different-bytes@0"}},
        {"long 'sinf'",
         frame({box("sinf", long_sinf), box("sdat", noise(24))}),
         "different",
         {"plane-box-size@8", "different-bytes@0"}},
        {"alpha first", alpha_first, "different", {"box-order@0", "different-bytes@8"}},
        {"a lone plane in 'icmp'", frame({box("icmp", rgb())}), "different", {"box-order@0", "different-bytes@0"}},
        {"a compressed frame behind its alpha",
         frame({plane(4, 2, " a08", noise(8)), box("QCXF", qcx_frame(1300, 4, 2))}),
         "different",
         {"box-order@0", "different-bytes@8"}},
        {"other slices",
         coded_frame(4, 3, joined({slices, bit_string().repeat(4).finish(), bit_string().repeat(8).finish()})),
         "different",
         {"slice-partition@37", "different-bytes@45"}},
        {"other runs",
         coded_frame(4, 2, joined({slice_table({3}, {2}), bit_string().repeat(4).repeat(4).finish()})),
         "different",
         {"different-bytes@0"}},
        {"odd 4:2:2", frame({plane(3, 2, "y208", noise(14))}), "different", {"not-encodable@0"}},
        {"a compressed frame of no known kind",
         frame({box("QCXF", noise(50)), plane(4, 2, " a08", noise(8))}),
         "different",
         {"not-encodable@0"}},
    };
    for (const verify_case& wanted : cases) {
        expect_found(wanted);
    }
}

TEST(verify, what_decoding_lets_pass_is_damage) {
    const bytes good = frame({rgb()});
    const verify_case cases[] = {
        {"a box past the end", with_le32(good, 29, 40), "damaged", {"box-past-end@29", "different-bytes@29"}},
        {"'icmp' past the end",
         with_le32(frame({box("icmp", rgb())}), 8, 4000),
         "damaged",
         {"box-past-end@8", "box-order@0", "different-bytes@0"}},
        {"a box smaller than its header",
         with_le32(frame({rgb(), box("free", {})}), 61, 3),
         "damaged",
         {"box-too-small@61", "unknown-box@61", "different-bytes@0"}},
        {"bytes behind the last box", frame({rgb(), {1, 2, 3}}), "damaged", {"surplus-bytes@61", "different-bytes@0"}},
        {"bytes in 'icmp' behind its plane",
         frame(
             {box("icmp", joined({plane(4, 2, "rg08", noise(24)), {0}})), box("icmp", plane(4, 2, " a08", noise(8)))}),
         "damaged",
         {"surplus-bytes@69", "different-bytes@0"}},
        {"bytes behind the last row",
         frame({plane(4, 2, "rg08", noise(26))}),
         "damaged",
         {"surplus-bytes@61", "different-bytes@0"}},
        {"a second plane in 'icmp'",
         frame({box("icmp", joined({rgb(), rgb()}))}),
         "damaged",
         {"misplaced-box@69", "box-order@0", "different-bytes@0"}},
        {"'sdat' without 'sinf'",
         frame({rgb(), box("sdat", noise(5))}),
         "damaged",
         {"misplaced-box@61", "box-order@0", "different-bytes@0"}},
        {"a chunk beside a plane",
         frame({rgb(), box("tile", noise(5))}),
         "damaged",
         {"misplaced-box@61", "box-order@0", "different-bytes@0"}},
        {"bits behind the last sample of a row",
         frame({plane(1, 2, "rg10", {1, 2, 3, 0x3F, 5, 6, 7, 0x7F})}),
         "damaged",
         {"padding@44", "different-bytes@44"}},
    };
    for (const verify_case& wanted : cases) {
        expect_found(wanted);
    }
}

TEST(verify, slices_of_coded_alpha_are_followed) {
    const bytes run = bit_string().repeat(4).finish();  // one row
    const verify_case cases[] = {
        {"rows that no slice covers",
         coded_frame(4, 3, joined({slice_table({2, 2}, {1, 1}), run, run})),
         "damaged",
         {"rows-uncovered@37"}},
        {"no slice at all", coded_frame(4, 2, {0x00}), "damaged", {"rows-uncovered@37"}},
        {"more rows than the plane has",
         coded_frame(4, 1, joined({slice_table({2, 2}, {1, 1}), run, run})),
         "damaged",
         {"slice-table@37"}},
        {"a table that ends too early",
         coded_frame(4, 2, cut(slice_table({2}, {2}), 5)),
         "damaged",
         {"slice-table@37"}},
        {"a table with a group too long",
         coded_frame(4, 2, bit_string().put(1, 8).gamma(2).put(0, 25).put(0, 64).finish()),
         "damaged",
         {"slice-table@37"}},
        {"bits behind the table",
         coded_frame(4, 2, joined({slice_table({2}, {2}, 0xFF), k_run})),
         "damaged",
         {"padding@44", "different-bytes@44"}},
        {"bits behind a slice",
         coded_frame(4, 2, joined({slice_table({2}, {2}), {0x08, 0x81}})),
         "damaged",
         {"padding@46", "different-bytes@46"}},
        {"bytes behind a slice",
         coded_frame(4, 2, joined({slice_table({3}, {2}), k_run, {0x00}})),
         "damaged",
         {"surplus-bytes@47", "different-bytes@0"}},
        {"bytes behind the last slice",
         coded_frame(4, 2, joined({slice_table({2}, {2}), k_run, {0x00}})),
         "damaged",
         {"surplus-bytes@47", "different-bytes@0"}},
        {"a slice said to be shorter than its runs",
         coded_frame(4, 2, joined({slice_table({1}, {2}), k_run})),
         "damaged",
         {"slice-end@45", "surplus-bytes@46"}},
        {"a slice said to end behind the payload",
         coded_frame(4, 2, joined({slice_table({9}, {2}), k_run})),
         "damaged",
         {"surplus-bytes@47", "slice-end@47"}},
        {"a run past its slice",
         coded_frame(4, 2, joined({slice_table({2}, {2}), bit_string().repeat(9).finish()})),
         "damaged",
         {"slice-end@45"}},
        {"a slice without its last run",
         coded_frame(4, 2, joined({slice_table({2}, {2}), bit_string().repeat(7).finish()})),
         "damaged",
         {"slice-end@45"}},
    };
    for (const verify_case& wanted : cases) {
        expect_found(wanted);
    }
}

TEST(verify, what_the_library_refuses_is_damage) {
    const bytes good = frame({rgb()});
    const verify_case cases[] = {
        {"no layout", with(good, 28, 2), "damaged", {"undecodable@0"}},
        {"no known plane", frame({plane(4, 2, "what", noise(24))}), "damaged", {"unknown-plane@8", "undecodable@0"}},
        {"too few rows", frame({plane(4, 2, "rg08", noise(23))}), "damaged", {"short-plane@49", "undecodable@0"}},
        {"no plane", frame({}), "damaged", {"undecodable@0"}},
        {"no chunk", frame({plane(8, 4, "stch", {})}), "damaged", {"no-chunks@0"}},
        {"chunks that begin with a further one",
         frame({plane(8, 4, "stch", box("tile", noise(3)))}),
         "damaged",
         {"undecodable@0"}},
        {"a compressed frame beside colours",
         frame({box("QCXF", qcx_frame(1300, 4, 2)), rgb()}),
         "damaged",
         {"undecodable@0"}},
        {"a frame cut short", cut(good, 60), "damaged", {"not-a-frame@0"}},
        {"no frame", noise(50), "damaged", {"not-a-frame@0"}},
    };
    for (const verify_case& wanted : cases) {
        expect_found(wanted);
    }
}

}  // namespace
