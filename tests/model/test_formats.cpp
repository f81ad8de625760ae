// SPDX-License-Identifier: BSD-3-Clause
#include "test_helpers.h"

using namespace model_test;
using model::code;

TEST(model_formats, has_106_pairs_and_96_sets) {
    int pairs = 0;
    for (std::uint32_t order = 0; order < 20; ++order) {
        for (std::uint32_t type = 0; type < 300; ++type) {
            if (model::is_supported_pair(order, type)) {
                ++pairs;
                EXPECT_NO_THROW(model::check_plane_set(model::format_planes(order, type)));
            }
        }
    }
    EXPECT_EQ(pairs, 106);
    EXPECT_EQ(model::allowed_plane_sets().size(), 96u);
    EXPECT_EQ(model::known_codes().size(), 44u);
}

TEST(model_formats, lists_planes) {
    EXPECT_EQ(model::format_planes(2, 5), (std::vector<code>{"y210"}));
    EXPECT_EQ(model::format_planes(3, 1), (std::vector<code>{"rg08", " a08"}));
    EXPECT_EQ(model::format_planes(8, 7), (std::vector<code>{" rgf"}));
    EXPECT_EQ(model::format_planes(12, 214), (std::vector<code>{"y4S1"}));
    EXPECT_EQ(model::format_planes(13, 2), (std::vector<code>{" y16", "cb16", "cr16", " a16"}));
    EXPECT_EQ(model::format_planes(10, 6), (std::vector<code>{"  yh", " cbh", " crh"}));
    EXPECT_EQ(model::format_planes(14, 2), (std::vector<code>{" a16"}));
    EXPECT_EQ(failure_of([] { model::format_planes(1, 5); }),
              "combination of color component order and component type is not supported");
}

TEST(model_formats, sizes_rows_of_codes) {
    EXPECT_TRUE(model::row_bytes("y210", 1921) == 4804);
    EXPECT_TRUE(model::row_bytes("rg10", 3) == 12);
    EXPECT_TRUE(model::row_bytes("stch", 100) == 0);
    EXPECT_TRUE(model::row_bytes(" rgf", 0xFFFFFFFFu) == model::exact(0xFFFFFFFFu) * 12);
}

TEST(model_formats, accepts_legacy_spellings) {
    const char* const pairs[][2] = {{"  f2", " y2f"}, {"  f4", " y4f"}, {"  h2", " y2h"}, {"  h4", " y4h"},
                                    {"rg f", " rgf"}, {"rg h", " rgh"}, {"cb f", " cbf"}, {"cb h", " cbh"},
                                    {"cr f", " crf"}, {"cr h", " crh"}, {"y2f ", ""},     {"y208", "y208"}};
    for (const auto& pair : pairs) {
        EXPECT_EQ(model::normalise(pair[0]), pair[1]);
    }
}

TEST(model_formats, checks_plane_sets) {
    EXPECT_NO_THROW(model::check_plane_set({"rg08", " a16"}));
    EXPECT_NO_THROW(model::check_plane_set({" a16", "rg08"}));
    EXPECT_EQ(failure_of([] { model::check_plane_set({"rg08", " a08", "rl08"}); }), "Invalid combination of planes");
    EXPECT_EQ(failure_of([] { model::check_plane_set({"rg08", "rg08"}); }), "Invalid combination of planes");
    EXPECT_EQ(failure_of([] { model::check_plane_set({" rgf", " a16"}); }), "Invalid combination of planes");
}

TEST(model_formats, describes_main_planes) {
    struct row {
        const char* name;
        std::size_t planes;
        std::uint32_t order;
        std::uint32_t type;
    };
    const row rows[] = {{" a08", 1, 14, 1}, {"rl16", 1, 14, 2}, {"y208", 2, 11, 1}, {"y2S1", 1, 2, 214},
                        {" y2h", 1, 2, 6},  {"y412", 2, 12, 4}, {" y4f", 1, 9, 7},  {"rg10", 2, 3, 3},
                        {"rg16", 1, 5, 2},  {" rgh", 1, 5, 6},  {" y12", 4, 13, 4}, {"  yf", 3, 10, 7},
                        {"  yh", 3, 10, 6}, {"stch", 1, 0, 0},  {" y08", 3, 10, 1}, {"y4S1", 1, 9, 214}};
    for (const row& item : rows) {
        const model::described_format format = model::describe(item.name, item.planes);
        EXPECT_EQ(format.order, item.order) << item.name;
        EXPECT_EQ(format.type, item.type) << item.name;
    }
    EXPECT_EQ(failure_of([] { model::describe("cb08", 3); }), "Plane type is not supported");
}

TEST(model_sizes, answers_the_raw_size) {
    EXPECT_EQ(model::uncompressed_size(frame(1, 1, 3, 2)), 16u);
    EXPECT_EQ(model::uncompressed_size(frame(2, 1, 3, 2)), 14u);
    EXPECT_EQ(model::uncompressed_size(frame(2, 5, 1920, 1)), 5120u);
    EXPECT_EQ(model::uncompressed_size(frame(2, 5, 1921, 1)), 5136u);
    EXPECT_EQ(model::uncompressed_size(frame(10, 1, 5, 3)), 27u);
    EXPECT_EQ(model::uncompressed_size(frame(13, 1, 5, 3)), 42u);
    EXPECT_EQ(model::uncompressed_size(frame(16, 2, 4, 2)), 48u);
    EXPECT_EQ(model::uncompressed_size(frame(11, 1, 3, 2)), 20u);
    EXPECT_EQ(model::uncompressed_size(frame(99, 1, 3, 2)), 0u);
    // 3 * (2^32 - 1)^2 = 3 * 2^64 - 6 * 2^32 + 3
    EXPECT_EQ(model::uncompressed_size(frame(5, 1, 0xFFFFFFFFu, 0xFFFFFFFFu)), 3u);
}

TEST(model_sizes, answers_the_stream_size) {
    const model::stream_params raw;
    EXPECT_EQ(model::compressed_size(frame(5, 1, 4, 2), raw), 61u);
    EXPECT_EQ(model::compressed_size(frame(3, 1, 4, 2), raw), 114u);
    EXPECT_EQ(model::compressed_size(frame(5, 5, 4, 2), raw), 0u);
    model::stream_params coded;
    coded.alpha_compression = 1;
    // 1659 + 2 slices of ceil(4 * 11 / 8)
    EXPECT_EQ(model::compressed_size(frame(14, 1, 4, 2), coded), 8u + 29 + 1659 + 2 * 6);
    EXPECT_EQ(model::compressed_size(frame(14, 2, 4, 0), coded), 8u + 29 + 1659);
    // Planar chroma is rounded up.
    EXPECT_EQ(model::compressed_size(frame(10, 1, 3, 3), raw), 8u + 3 * 37 + 9 + 4 + 4);
}
