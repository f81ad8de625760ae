// SPDX-License-Identifier: BSD-3-Clause
#include "container/plane_types.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "api/base/errors.h"

namespace {

using names = std::vector<std::string>;

std::uint32_t code_of(const std::string& name) {
    return fourcc({name[0], name[1], name[2], name[3], '\0'});
}

std::vector<std::uint32_t> codes_of(const names& all) {
    std::vector<std::uint32_t> codes;
    for (const std::string& name : all) {
        codes.push_back(code_of(name));
    }
    return codes;
}

const names k_all_codes = {" y08", " y10", " y12", " y16", "  yf", "  yh", "cb08", "cb10", "cb12", "cb16", " cbf",
                           " cbh", "cr08", "cr10", "cr12", "cr16", " crf", " crh", " a08", " a16", "rl08", "rl16",
                           "rg08", "rg10", "rg12", "rg16", "rgS1", " rgf", " rgh", "y408", "y410", "y412", "y416",
                           "y4S1", " y4f", " y4h", "y208", "y210", "y212", "y216", "y2S1", " y2f", " y2h", "stch"};

TEST(plane_types, a_code_holds_its_characters_in_file_order) {
    EXPECT_EQ(fourcc("pack"), 0x6b636170u);
    EXPECT_EQ(fourcc(" y16"), 0x36317920u);
}

TEST(plane_types, current_codes_are_kept_and_others_become_0) {
    for (const std::string& name : k_all_codes) {
        EXPECT_EQ(normalised_plane_type(code_of(name)), code_of(name)) << name;
    }
    for (const char* name : {"y2f ", "y20 ", " a10", "rl10", "Y208", "    ", "QCXF", "tile"}) {
        EXPECT_EQ(normalised_plane_type(code_of(name)), 0u) << name;
    }
    EXPECT_EQ(normalised_plane_type(0), 0u);
}

TEST(plane_types, legacy_spellings_become_the_current_ones) {
    const std::pair<const char*, const char*> spellings[] = {
        {"  f2", " y2f"}, {"  f4", " y4f"}, {"  h2", " y2h"}, {"  h4", " y4h"}, {"rg f", " rgf"},
        {"rg h", " rgh"}, {"cb f", " cbf"}, {"cb h", " cbh"}, {"cr f", " crf"}, {"cr h", " crh"}};
    for (const auto& [legacy, current] : spellings) {
        EXPECT_EQ(normalised_plane_type(code_of(legacy)), code_of(current)) << legacy;
    }
}

TEST(plane_types, row_bytes_round_up_to_whole_bytes) {
    EXPECT_EQ(row_bytes(fourcc(" y10"), 3), 4u);
    EXPECT_EQ(row_bytes(fourcc("cb12"), 3), 5u);
    EXPECT_EQ(row_bytes(fourcc("rg10"), 3), 12u);
    EXPECT_EQ(row_bytes(fourcc("y210"), 1921), 4804u);
    EXPECT_EQ(row_bytes(fourcc("y208"), 3), 7u);
    EXPECT_EQ(row_bytes(fourcc("y2S1"), 3), 14u);
    EXPECT_EQ(row_bytes(fourcc(" y4f"), 3), 36u);
    EXPECT_EQ(row_bytes(fourcc(" crh"), 3), 6u);
    EXPECT_EQ(row_bytes(fourcc(" a16"), 3), 6u);
    EXPECT_EQ(row_bytes(fourcc("rl16"), 3), 0u);
    EXPECT_EQ(row_bytes(fourcc("stch"), 3), 0u);
    EXPECT_EQ(row_bytes(0, 3), 0u);
    EXPECT_EQ(row_bytes(fourcc(" rgf"), 0xffffffff), wide{0xffffffff} * 12);
}

// A frame's planes as one text, codes separated by commas; "-" when the pair is not supported.
std::string planes_of(std::uint32_t order, std::uint32_t type) {
    std::string text;
    try {
        for (const std::uint32_t code : format_planes(order, type)) {
            if (code != 0) {
                text += text.empty() ? "" : ",";
                text += {static_cast<char>(code), static_cast<char>(code >> 8), static_cast<char>(code >> 16),
                         static_cast<char>(code >> 24)};
            }
        }
    } catch (const invalid_argument& failure) {
        EXPECT_STREQ(failure.what(), "combination of color component order and component type is not supported");
        return "-";
    }
    return text;
}

TEST(plane_types, every_order_and_type_has_its_planes) {
    const std::uint32_t types[] = {1, 3, 4, 2, 214, 6, 7, 5};
    struct {
        std::vector<std::uint32_t> orders;
        const char* planes[8];
    } const rows[] = {
        {{1}, {"y208", "y210", "y212", "y216", "y2S1", " y2h", " y2f", "-"}},
        {{2}, {"y208", "y210", "y212", "y216", "y2S1", " y2h", " y2f", "y210"}},
        {{3, 4, 7, 8}, {"rg08, a08", "rg10", "rg12", "rg16, a16", "rgS1", " rgh", " rgf", "-"}},
        {{5, 6}, {"rg08", "rg10", "rg12", "rg16", "rgS1", " rgh", " rgf", "-"}},
        {{9}, {"y408", "y410", "y412", "y416", "y4S1", " y4h", " y4f", "-"}},
        {{10},
         {" y08,cb08,cr08", " y10,cb10,cr10", " y12,cb12,cr12", " y16,cb16,cr16", "-", "  yh, cbh, crh",
          "  yf, cbf, crf", "-"}},
        {{11, 15, 16}, {"y208, a08", "y210", "y212", "y216, a16", "y2S1", " y2h", " y2f", "-"}},
        {{12}, {"y408, a08", "y410", "y412", "y416, a16", "y4S1", " y4h", " y4f", "-"}},
        {{13},
         {" y08,cb08,cr08, a08", " y10,cb10,cr10", " y12,cb12,cr12", " y16,cb16,cr16, a16", "-", "  yh, cbh, crh",
          "  yf, cbf, crf", "-"}},
        {{14}, {" a08", "-", "-", " a16", "-", "-", "-", "-"}},
    };
    int pairs = 0;
    for (const auto& row : rows) {
        for (const std::uint32_t order : row.orders) {
            for (std::size_t i = 0; i < 8; ++i) {
                EXPECT_EQ(planes_of(order, types[i]), row.planes[i]) << "order " << order << ", type " << types[i];
                pairs += row.planes[i] != std::string("-");
            }
        }
    }
    EXPECT_EQ(pairs, 106);
    for (const std::uint32_t order : {0u, 17u, 33u, 0xffffffffu}) {
        EXPECT_EQ(planes_of(order, 1), "-");
    }
    for (const std::uint32_t type : {0u, 8u, 213u, 215u}) {
        EXPECT_EQ(planes_of(1, type), "-");
    }
}

std::set<std::set<std::string>> written_out_sets() {
    std::set<std::set<std::string>> sets;
    const names alphas = {" a08", " a16", "rl08", "rl16"};
    for (const char* base :
         {"y208", "y408", "y210", "y410", "y212", "y412", "y216", "y416", "rg08", "rg10", "rg12", "rg16"}) {
        sets.insert({base});
        for (const std::string& alpha : alphas) {
            sets.insert({base, alpha});
        }
    }
    for (const std::string depth : {"08", "10", "12", "16"}) {
        const std::set<std::string> triple = {" y" + depth, "cb" + depth, "cr" + depth};
        sets.insert(triple);
        for (const std::string& alpha : alphas) {
            std::set<std::string> with_alpha = triple;
            with_alpha.insert(alpha);
            sets.insert(with_alpha);
        }
    }
    sets.insert({"  yf", " cbf", " crf"});
    sets.insert({"  yh", " cbh", " crh"});
    for (const char* alone : {"rgS1", "y4S1", "y2S1", " rgf", " rgh", " y4f", " y2f", " y4h", " y2h", "rl16", "rl08",
                              " a16", " a08", "stch"}) {
        sets.insert({alone});
    }
    return sets;
}

TEST(plane_types, the_96_allowed_sets_and_no_others) {
    const auto allowed = written_out_sets();
    ASSERT_EQ(allowed.size(), 96u);
    // Every list of up to three codes of the table, an unknown one among them.
    names universe = k_all_codes;
    universe.push_back("none");
    const auto check = [&](const names& list) {
        const auto codes = codes_of(list);
        const std::set<std::string> set(list.begin(), list.end());
        const bool expected = set.size() == list.size() && allowed.count(set) == 1;
        ASSERT_EQ(allowed_plane_sets(codes.data(), codes.size()), expected)
            << list[0] << " and " << list.size() - 1 << " more";
    };
    for (const std::string& first : universe) {
        check({first});
        for (const std::string& second : universe) {
            check({first, second});
            for (const std::string& third : universe) {
                check({first, second, third});
            }
        }
    }
    // Four: every allowed set in every order, and with one code replaced by any other.
    for (const auto& set : allowed) {
        names list(set.begin(), set.end());
        do {
            check(list);
        } while (std::next_permutation(list.begin(), list.end()));
        for (std::size_t i = 0; i < list.size(); ++i) {
            for (const std::string& other : universe) {
                names changed = list;
                changed[i] = other;
                check(changed);
                changed.push_back(list[i]);
                check(changed);
            }
        }
    }
    EXPECT_FALSE(allowed_plane_sets(nullptr, 0));
}

TEST(plane_types, a_stored_plane_serves_itself_and_its_substitutes) {
    EXPECT_TRUE(plane_serves(fourcc(" a08"), fourcc(" a08")));
    EXPECT_TRUE(plane_serves(fourcc("rl08"), fourcc(" a08")));
    EXPECT_TRUE(plane_serves(fourcc("rl16"), fourcc(" a16")));
    EXPECT_TRUE(plane_serves(fourcc("y2S1"), fourcc(" y2f")));
    EXPECT_TRUE(plane_serves(fourcc("y4S1"), fourcc(" y4f")));
    EXPECT_TRUE(plane_serves(fourcc("rgS1"), fourcc(" rgf")));
    EXPECT_FALSE(plane_serves(fourcc(" a08"), fourcc("rl08")));
    EXPECT_FALSE(plane_serves(fourcc("rl08"), fourcc(" a16")));
    EXPECT_FALSE(plane_serves(fourcc(" y2f"), fourcc("y2S1")));
    EXPECT_FALSE(plane_serves(fourcc("y216"), fourcc("y2S1")));
}

TEST(plane_types, only_raw_alpha_has_a_coded_form) {
    EXPECT_EQ(coded_form(fourcc(" a08")), fourcc("rl08"));
    EXPECT_EQ(coded_form(fourcc(" a16")), fourcc("rl16"));
    EXPECT_EQ(coded_form(fourcc("rg08")), fourcc("rg08"));
}

}  // namespace
