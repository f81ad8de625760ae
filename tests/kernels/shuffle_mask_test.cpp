// The byte shuffles that follow from the pixel maps, against the bytes written out.
#include <gtest/gtest.h>

#include "bytes.h"
#include "pixel/kernels/row_kernels.h"

namespace {

using test::bytes;
using test::from_hex;

struct mask_case {
    std::uint32_t order;
    unsigned sample_bytes;
    unsigned groups;
    const char* pack;  // only the bytes that carry samples
};

bytes front(const std::uint8_t (&mask)[16], std::size_t count) {
    return bytes(mask, mask + count);
}

const mask_case k_cases[] = {
    {1, 1, 8, "01 00 03 02 05 04 07 06 09 08 0b 0a 0d 0c 0f 0e"},
    {1, 2, 4, "02 03 00 01 06 07 04 05 0a 0b 08 09 0e 0f 0c 0d"},
    {1, 4, 2, "04 05 06 07 00 01 02 03 0c 0d 0e 0f 08 09 0a 0b"},
    {15, 1, 8, "01 00 03 02 05 04 07 06 09 08 0b 0a 0d 0c 0f 0e"},
    {15, 2, 4, "02 03 00 01 06 07 04 05 0a 0b 08 09 0e 0f 0c 0d"},
    {15, 4, 2, "04 05 06 07 00 01 02 03 0c 0d 0e 0f 08 09 0a 0b"},
    {3, 1, 4, "01 02 03 05 06 07 09 0a 0b 0d 0e 0f 00 04 08 0c"},
    {3, 2, 2, "02 03 04 05 06 07 0a 0b 0c 0d 0e 0f 00 01 08 09"},
    {3, 4, 1, "04 05 06 07 08 09 0a 0b 0c 0d 0e 0f 00 01 02 03"},
    {4, 1, 4, "02 01 00 06 05 04 0a 09 08 0e 0d 0c 03 07 0b 0f"},
    {4, 2, 2, "04 05 02 03 00 01 0c 0d 0a 0b 08 09 06 07 0e 0f"},
    {4, 4, 1, "08 09 0a 0b 04 05 06 07 00 01 02 03 0c 0d 0e 0f"},
    {6, 1, 5, "02 01 00 05 04 03 08 07 06 0b 0a 09 0e 0d 0c"},
    {6, 2, 2, "04 05 02 03 00 01 0a 0b 08 09 06 07"},
    {6, 4, 1, "08 09 0a 0b 04 05 06 07 00 01 02 03"},
    {7, 1, 4, "00 01 02 04 05 06 08 09 0a 0c 0d 0e 03 07 0b 0f"},
    {7, 2, 2, "00 01 02 03 04 05 08 09 0a 0b 0c 0d 06 07 0e 0f"},
    {7, 4, 1, "00 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f"},
    {8, 1, 4, "03 02 01 07 06 05 0b 0a 09 0f 0e 0d 00 04 08 0c"},
    {8, 2, 2, "06 07 04 05 02 03 0e 0f 0c 0d 0a 0b 00 01 08 09"},
    {8, 4, 1, "0c 0d 0e 0f 08 09 0a 0b 04 05 06 07 00 01 02 03"},
    {11, 1, 4, "00 01 03 04 06 07 09 0a 02 05 08 0b"},
    {11, 2, 2, "00 01 02 03 06 07 08 09 04 05 0a 0b"},
    {11, 4, 1, "00 01 02 03 04 05 06 07 08 09 0a 0b"},
    {12, 1, 4, "01 00 02 05 04 06 09 08 0a 0d 0c 0e 03 07 0b 0f"},
    {12, 2, 2, "02 03 00 01 04 05 0a 0b 08 09 0c 0d 06 07 0e 0f"},
    {12, 4, 1, "04 05 06 07 00 01 02 03 08 09 0a 0b 0c 0d 0e 0f"},
};

TEST(shuffle_masks, pack_masks_hold_colours_then_alphas_of_whole_groups) {
    for (const mask_case& each : k_cases) {
        const shuffle_masks masks = make_shuffle_masks(traits_of_order(each.order).map, each.sample_bytes);
        const bytes expected = from_hex(each.pack);
        EXPECT_EQ(masks.groups, each.groups) << "order " << each.order << ", bytes " << each.sample_bytes;
        EXPECT_EQ(front(masks.pack, expected.size()), expected)
            << "order " << each.order << ", bytes " << each.sample_bytes;
        for (std::size_t i = expected.size(); i < 16; ++i) {
            EXPECT_EQ(masks.pack[i], k_shuffle_zero) << "order " << each.order << ", bytes " << each.sample_bytes;
        }
    }
}

TEST(shuffle_masks, unpack_masks_of_order_3_are_the_written_ones) {
    const shuffle_masks masks = make_shuffle_masks(traits_of_order(3).map, 1);
    EXPECT_EQ(front(masks.unpack_colour, 16), from_hex("80 00 01 02 80 03 04 05 80 06 07 08 80 09 0a 0b"));
    EXPECT_EQ(front(masks.unpack_alpha, 16), from_hex("00 80 80 80 01 80 80 80 02 80 80 80 03 80 80 80"));
}

TEST(shuffle_masks, unpacking_is_the_inverse_of_packing) {
    for (const mask_case& each : k_cases) {
        const shuffle_masks masks = make_shuffle_masks(traits_of_order(each.order).map, each.sample_bytes);
        for (unsigned i = 0; i < masks.colour_bytes; ++i) {
            EXPECT_EQ(masks.unpack_colour[masks.pack[i]], i);
        }
        for (unsigned i = 0; i < masks.alpha_bytes; ++i) {
            EXPECT_EQ(masks.unpack_alpha[masks.pack_alpha[i]], i);
            EXPECT_EQ(masks.pack_alpha[i], masks.pack[masks.colour_bytes + i]);
        }
    }
}

}  // namespace
