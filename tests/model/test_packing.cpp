// SPDX-License-Identifier: BSD-3-Clause
#include "test_helpers.h"

using namespace model_test;
using model::bytes;

namespace {

// One row of `pixels` caller samples 1, 2, 3, ... and what is stored of it.
struct order_case {
    std::uint32_t order;
    std::size_t samples;
    bytes colour;
    bytes alpha;
};

const order_case order_cases[] = {
    {1, 4, {2, 1, 4, 3}, {}},
    {2, 4, {1, 2, 3, 4}, {}},
    {3, 8, {2, 3, 4, 6, 7, 8}, {1, 5}},
    {4, 8, {3, 2, 1, 7, 6, 5}, {4, 8}},
    {5, 6, {1, 2, 3, 4, 5, 6}, {}},
    {6, 6, {3, 2, 1, 6, 5, 4}, {}},
    {7, 8, {1, 2, 3, 5, 6, 7}, {4, 8}},
    {8, 8, {4, 3, 2, 8, 7, 6}, {1, 5}},
    {9, 6, {1, 2, 3, 4, 5, 6}, {}},
    {11, 6, {1, 2, 4, 5}, {3, 6}},
    {12, 8, {2, 1, 3, 6, 5, 7}, {4, 8}},
    {15, 4, {2, 1, 4, 3}, {}},
    {16, 4, {1, 2, 3, 4}, {}},
};

bytes widen(const bytes& values, std::size_t size) {
    bytes row;
    for (const std::uint8_t value : values) {
        row.push_back(value);
        row.insert(row.end(), size - 1, static_cast<std::uint8_t>(value + 100));
    }
    return row;
}

}  // namespace

TEST(model_packing, reorders_each_order) {
    for (const order_case& item : order_cases) {
        for (const std::uint32_t type : {1u, 2u, 7u}) {
            const std::size_t size = model::sample_bytes(type);
            const bytes caller = widen(counting(item.samples), size);
            const model::stored_row stored = model::pack_interleaved_row(item.order, type, 2, caller);
            EXPECT_EQ(stored.colour, widen(item.colour, size)) << item.order;
            EXPECT_EQ(stored.alpha, widen(item.alpha, size)) << item.order;
            EXPECT_EQ(model::unpack_interleaved_row(item.order, type, 2, stored, caller.size(), false), caller)
                << item.order;
        }
    }
}

TEST(model_packing, splits_10_bits) {
    // Samples 0x3FF, 0x001, 0x2AA, 0x155, 0x002 in the top ten bits, with
    // stray bits below that are dropped.
    const bytes row = {0xFF, 0xFF, 0x40, 0x00, 0xBF, 0xAA, 0x40, 0x55, 0x81, 0x00};
    const bytes stored = {0xFF, 0x00, 0xAA, 0x55, 0x00, 0x67, 0x02};
    EXPECT_EQ(model::pack_plane_row(3, row), stored);
    EXPECT_EQ(model::unpack_plane_row(3, 5, stored),
              (bytes{0xC0, 0xFF, 0x40, 0x00, 0x80, 0xAA, 0x40, 0x55, 0x80, 0x00}));
}

TEST(model_packing, splits_12_bits) {
    const bytes row = {0x3F, 0x12, 0xA0, 0xBC, 0x7E, 0x00};
    const bytes stored = {0x12, 0xBC, 0x00, 0xA3, 0x07};
    EXPECT_EQ(model::pack_plane_row(4, row), stored);
    EXPECT_EQ(model::unpack_plane_row(4, 3, stored), (bytes{0x30, 0x12, 0xA0, 0xBC, 0x70, 0x00}));
}

TEST(model_packing, splits_words_of_three_samples) {
    // Two pixels: samples 0x001, 0x102, 0x203 in word 0, 0x304 in word 1.
    const bytes row = {0x01, 0x08, 0x34, 0xE0, 0x04, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0, 0, 0, 0, 0};
    const bytes stored = {0x00, 0x40, 0x80, 0xC1, 0x39};
    EXPECT_EQ(model::pack_interleaved_row(2, 5, 2, row).colour, stored);
    model::stored_row back;
    back.colour = stored;
    EXPECT_EQ(model::unpack_interleaved_row(2, 5, 2, back, 16, false),
              (bytes{0x01, 0x08, 0x34, 0x20, 0x04, 0x03, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(model_packing, takes_missing_samples_of_odd_rows_as_zero) {
    model::stored_row stored;
    stored.colour = {1, 2, 3};
    EXPECT_EQ(model::unpack_interleaved_row(1, 1, 1, stored, 4, false), (bytes{2, 1, 0, 3}));
    EXPECT_EQ(model::unpack_interleaved_row(2, 1, 1, stored, 3, false), (bytes{1, 2, 3}));
    // Ten bits: three high bytes, then one byte of low bits.
    stored.colour = {0x11, 0x22, 0x33, 0x1B};
    EXPECT_EQ(model::unpack_interleaved_row(1, 3, 1, stored, 8, false),
              (bytes{0x80, 0x22, 0xC0, 0x11, 0x00, 0x00, 0x40, 0x33}));
}

TEST(model_packing, leaves_an_odd_last_pixel_of_words_out) {
    model::stored_row stored;
    stored.colour = {0xFF, 0xFF, 0xFF, 0xFF};
    EXPECT_EQ(model::unpack_interleaved_row(2, 5, 1, stored, 16, false), bytes(16, 0));
}

TEST(model_packing, turns_fixed_point_into_float) {
    model::stored_row stored;
    stored.colour = {0x00, 0x40, 0x00, 0xC0, 0x00, 0x20};
    EXPECT_EQ(model::unpack_interleaved_row(5, 7, 1, stored, 12, true),
              (bytes{0, 0, 0x80, 0x3F, 0, 0, 0x80, 0xBF, 0, 0, 0x00, 0x3F}));
    EXPECT_EQ(model::unpack_interleaved_row(6, 7, 1, stored, 12, true),
              (bytes{0, 0, 0x00, 0x3F, 0, 0, 0x80, 0xBF, 0, 0, 0x80, 0x3F}));
}
