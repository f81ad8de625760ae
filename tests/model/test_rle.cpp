// SPDX-License-Identifier: BSD-3-Clause
#include "test_helpers.h"

using namespace model_test;

namespace {

model::rle_params plane(std::uint32_t width, std::uint32_t height, std::uint32_t depth, std::uint32_t slices,
                        std::uint32_t row_bytes = 0) {
    model::rle_params params;
    params.width = width;
    params.height = height;
    params.bit_depth = depth;
    params.slice_count = slices;
    params.row_bytes = row_bytes;
    return params;
}

const model::bytes worked_plane = {0, 1, 2, 3, 0, 1, 2, 3};
const model::bytes worked_payload = {0x01, 0xBF, 0xFF, 0xFC, 0x6F, 0xFF, 0xFF,
                                     0x90, 0xDF, 0xAD, 0x54, 0x39, 0x6A, 0xA0};

}  // namespace

TEST(model_rle, encodes_the_worked_example) {
    EXPECT_EQ(model::rle_encode(plane(4, 2, 8, 1), look(worked_plane), 2000), worked_payload);
}

TEST(model_rle, decodes_the_worked_example) {
    model::bytes out(8, 0xEE);
    EXPECT_TRUE(model::rle_decode(plane(4, 2, 8, 0), look(worked_payload), into(out)) == 8);
    EXPECT_EQ(out, worked_plane);
}

TEST(model_rle, spreads_rows_after_decoding) {
    model::bytes out(12, 0xEE);
    EXPECT_TRUE(model::rle_decode(plane(4, 2, 8, 0, 6), look(worked_payload), into(out)) == 12);
    EXPECT_EQ(out, (model::bytes{0, 1, 2, 3, 0, 1, 0, 1, 2, 3, 0xEE, 0xEE}));
}

TEST(model_rle, codes_constant_planes_in_one_or_two_tokens) {
    // M 0, L 8 as 000 1000, T 1, Z 0 as 0 and two low bits: 0 000 1000 1 000
    EXPECT_EQ(model::rle_encode_slice(std::vector<std::uint32_t>(8, 127), 8), (model::bytes{0x08, 0x80}));
    // 130: residual 3, z 6, tie: 1 1 1 10 10; then the run 0 00111 1 000.
    EXPECT_EQ(model::rle_encode_slice(std::vector<std::uint32_t>(8, 130), 8), (model::bytes{0xF4, 0x3C, 0x00}));
}

TEST(model_rle, refuses_bad_parameters_in_order) {
    const auto run = [](const model::rle_params& params, model::view source, std::uint32_t capacity) {
        return failure_of([&] { model::rle_encode(params, source, capacity); });
    };
    EXPECT_EQ(run(plane(0, 0, 9, 1), {}, 0), "Invalid width");
    EXPECT_EQ(run(plane(4, 0, 9, 1), {}, 0), "Invalid height");
    EXPECT_EQ(run(plane(4, 2, 9, 1), {}, 0), "only 8, and 16 bitdepth supported");
    EXPECT_EQ(run(plane(4, 2, 16, 1, 7), {}, 0), "row_bytes is too small, it should be at least 8 according to params");
    EXPECT_EQ(run(plane(4, 2, 8, 1), {}, 0), "src and buffers required to be non-null");
    EXPECT_EQ(run(plane(4, 3, 8, 1), look(worked_plane), 0), "src buffer is too small according to metadata");
    EXPECT_EQ(run(plane(4, 2, 8, 1), look(worked_plane), 1669), "dst buffer is too small according to metadata");
    EXPECT_EQ(run(plane(4, 2, 8, 1), look(worked_plane), 1670), "no failure");
}

TEST(model_rle, refuses_short_destinations_and_payloads) {
    const auto run = [](const model::bytes& payload, std::size_t room) {
        model::bytes out(room, 0);
        return failure_of([&] { model::rle_decode(plane(4, 2, 8, 0), look(payload), into(out)); });
    };
    EXPECT_EQ(run(worked_payload, 7), "dst buffer is too small according to metadata");
    for (std::size_t size = 0; size < worked_payload.size(); ++size) {
        const model::bytes cut(worked_payload.begin(), worked_payload.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_EQ(run(cut, 8), "rle payload is too short") << size;
    }
}

TEST(model_rle, refuses_malformed_tables) {
    const auto run = [](const model::bytes& payload) {
        model::bytes out(8, 0);
        return failure_of([&] { model::rle_decode(plane(4, 2, 8, 0), look(payload), into(out)); });
    };
    // A first group of two values for a single slice.
    EXPECT_EQ(run({0x01, 0x57, 0xFF, 0xFF, 0x80, 0, 0, 0, 0, 0, 0, 0, 0}), "rle index table is malformed");
    // Three rows for a plane of two.
    EXPECT_EQ(run(model::rle_index_table({1}, {3}) + model::bytes(9, 0)), "rle index table is malformed");
    // The second slice starts behind the payload.
    EXPECT_EQ(run(model::rle_index_table({100, 1}, {1, 1}) + model::bytes(9, 0)), "rle payload is too short");
    // No slices: nothing is written.
    EXPECT_EQ(run({0x00}), "no failure");
}

TEST(model_rle, refuses_runs_past_the_slice) {
    const model::bytes slice = model::rle_encode_slice(std::vector<std::uint32_t>(9, 127), 8);
    model::bytes out(8, 0);
    const model::bytes payload = model::rle_index_table({2}, {2}) + slice;
    EXPECT_EQ(failure_of([&] { model::rle_decode(plane(4, 2, 8, 0), look(payload), into(out)); }),
              "rle run exceeds slice");
}

TEST(model_rle, limits_table_values_to_24_bits) {
    EXPECT_EQ(failure_of([] { model::rle_index_table({0x2000000}, {1}); }),
              "values greater than 24bit is not supported by rle index table");
    EXPECT_NO_THROW(model::rle_index_table({16777214}, {1}));
    // 256 slices: the count byte wraps and nothing follows it.
    EXPECT_EQ(model::rle_index_table(std::vector<std::uint32_t>(256, 1), std::vector<std::uint32_t>(256, 1)),
              (model::bytes{0}));
}

TEST(model_rle, round_trips) {
    for (const std::uint32_t depth : {8u, 16u}) {
        for (std::uint32_t slices = 0; slices < 20; ++slices) {
            const model::rle_params params = plane(7, 11, depth, slices);
            model::bytes raw(7 * 11 * depth / 8);
            for (std::size_t i = 0; i < raw.size(); ++i) {
                raw[i] = static_cast<std::uint8_t>(i * i >> 3);
            }
            const model::bytes payload = model::rle_encode(params, look(raw), 100000);
            EXPECT_TRUE(payload.size() <= model::rle_worst_case_size(params));
            model::bytes out(raw.size());
            model::rle_decode(params, look(payload), into(out));
            EXPECT_EQ(out, raw);
        }
    }
}

TEST(model_rle, sizes_the_worst_case) {
    // Rows per slice 3, 3, 2, 2.
    EXPECT_TRUE(model::rle_worst_case_size(plane(5, 10, 8, 4)) == 1659 + 2 * 21 + 2 * 14);
    // Samples of a slice are counted modulo 2^32.
    EXPECT_TRUE(model::rle_worst_case_size(plane(0x80000000u, 2, 8, 1)) == 1659);
    EXPECT_TRUE(model::rle_worst_case_size(plane(0xFFFFFFFFu, 2, 16, 2)) ==
                1659 + 2 * ((model::exact(0xFFFFFFFFu) * 19 + 7) / 8));
}
