// SPDX-License-Identifier: BSD-3-Clause
//
// The byte shuffles that follow from the pixel maps, against the bytes written out and the scalar kernels.
#include <gtest/gtest.h>

#include <numeric>

#include "bytes.h"
#include "pixel/kernels/row_kernels.h"

namespace {

using test::bytes;
using test::from_hex;

// Which of the caller's bytes each byte of a block's stored vectors is, as the shuffles say.
bytes sources(const block_permutation& permutation, unsigned ins, unsigned outs) {
    bytes result;
    for (unsigned out = 0; out < outs; ++out) {
        for (unsigned byte = 0; byte < k_shuffle_bytes; ++byte) {
            unsigned found = 0;
            for (unsigned in = 0; in < ins; ++in) {
                const std::uint8_t from = permutation.mask[out][in][byte];
                if (from != k_shuffle_zero) {
                    ++found;
                    result.push_back(static_cast<std::uint8_t>(in * k_shuffle_bytes + from));
                }
            }
            EXPECT_EQ(found, 1u) << "vector " << out << ", byte " << byte;
        }
    }
    return result;
}

TEST(block_permutation, of_bgra_is_the_written_one) {
    const block_permutations blocks = make_block_permutations(traits_of_order(4).map, 1);
    EXPECT_EQ(sources(blocks.pack, 4, 4), from_hex("02 01 00 06 05 04 0a 09 08 0e 0d 0c 12 11 10 16"
                                                   "15 14 1a 19 18 1e 1d 1c 22 21 20 26 25 24 2a 29"
                                                   "28 2e 2d 2c 32 31 30 36 35 34 3a 39 38 3e 3d 3c"
                                                   "03 07 0b 0f 13 17 1b 1f 23 27 2b 2f 33 37 3b 3f"));
    EXPECT_EQ(sources(blocks.unpack, 4, 4), from_hex("02 01 00 30 05 04 03 31 08 07 06 32 0b 0a 09 33"
                                                     "0e 0d 0c 34 11 10 0f 35 14 13 12 36 17 16 15 37"
                                                     "1a 19 18 38 1d 1c 1b 39 20 1f 1e 3a 23 22 21 3b"
                                                     "26 25 24 3c 29 28 27 3d 2c 2b 2a 3e 2f 2e 2d 3f"));
}

TEST(block_permutation, of_16_bit_bgr_is_the_written_one) {
    const block_permutations blocks = make_block_permutations(traits_of_order(6).map, 2);
    const bytes swapped = from_hex(
        "04 05 02 03 00 01 0a 0b 08 09 06 07 10 11 0e 0f"
        "0c 0d 16 17 14 15 12 13 1c 1d 1a 1b 18 19 22 23"
        "20 21 1e 1f 28 29 26 27 24 25 2e 2f 2c 2d 2a 2b");
    EXPECT_EQ(sources(blocks.pack, 3, 3), swapped);
    EXPECT_EQ(sources(blocks.unpack, 3, 3), swapped);
}

TEST(block_permutation, of_4_2_2_with_interleaved_alpha_is_the_written_one) {
    const block_permutations blocks = make_block_permutations(traits_of_order(11).map, 4);
    EXPECT_EQ(sources(blocks.pack, 3, 3), from_hex("00 01 02 03 04 05 06 07 0c 0d 0e 0f 10 11 12 13"
                                                   "18 19 1a 1b 1c 1d 1e 1f 24 25 26 27 28 29 2a 2b"
                                                   "08 09 0a 0b 14 15 16 17 20 21 22 23 2c 2d 2e 2f"));
}

TEST(block_permutation, of_swapped_pairs_is_the_same_in_every_vector) {
    const block_permutations blocks = make_block_permutations(traits_of_order(1).map, 2);
    EXPECT_EQ(sources(blocks.pack, 2, 2), from_hex("02 03 00 01 06 07 04 05 0a 0b 08 09 0e 0f 0c 0d"
                                                   "12 13 10 11 16 17 14 15 1a 1b 18 19 1e 1f 1c 1d"));
}

// A block of numbered bytes, packed by the scalar kernel, names the same sources.
TEST(block_permutation, says_what_the_scalar_kernels_do) {
    for (const std::uint32_t order : {1u, 3u, 4u, 6u, 7u, 8u, 11u, 12u, 15u}) {
        for (const unsigned sample_bytes : {1u, 2u, 4u}) {
            const reorder_rule rule = make_reorder_rule(traits_of_order(order).map, sample_bytes);
            const unsigned vectors = rule.map.samples;
            const std::size_t groups = k_shuffle_bytes / sample_bytes;
            bytes numbered(vectors * k_shuffle_bytes);
            std::iota(numbered.begin(), numbered.end(), std::uint8_t{0});
            bytes stored(numbered.size());
            std::uint8_t* const alpha = stored.data() + groups * rule.colour_bytes;
            scalar::pack(rule, numbered.data(), groups, stored.data(), alpha);
            EXPECT_EQ(sources(rule.blocks.pack, vectors, vectors), stored) << order << ", " << sample_bytes;
            scalar::unpack(rule, numbered.data(), numbered.data() + groups * rule.colour_bytes, groups, stored.data());
            EXPECT_EQ(sources(rule.blocks.unpack, vectors, vectors), stored) << order << ", " << sample_bytes;
        }
    }
}

// The kernels leave out shuffles that no order of a shape needs.
TEST(block_permutation, needs_no_more_shuffles_than_its_shape_has) {
    for (const unsigned sample_bytes : {1u, 2u, 4u}) {
        for (const std::uint32_t order : {3u, 4u, 7u, 8u, 12u}) {
            const block_permutations blocks = make_block_permutations(traits_of_order(order).map, sample_bytes);
            EXPECT_TRUE(block_shape::covers<block_shape::split_4>(blocks.pack)) << order << ", " << sample_bytes;
            EXPECT_TRUE(block_shape::covers<block_shape::merge_4>(blocks.unpack)) << order << ", " << sample_bytes;
        }
        const block_permutations triple = make_block_permutations(traits_of_order(6).map, sample_bytes);
        EXPECT_TRUE(block_shape::covers<block_shape::triple>(triple.pack)) << sample_bytes;
        EXPECT_TRUE(block_shape::covers<block_shape::triple>(triple.unpack)) << sample_bytes;
        const block_permutations three = make_block_permutations(traits_of_order(11).map, sample_bytes);
        EXPECT_TRUE(block_shape::covers<block_shape::split_3>(three.pack)) << sample_bytes;
        EXPECT_TRUE(block_shape::covers<block_shape::merge_3>(three.unpack)) << sample_bytes;
        EXPECT_FALSE(block_shape::covers<block_shape::pair>(three.pack)) << sample_bytes;
    }
}

}  // namespace
