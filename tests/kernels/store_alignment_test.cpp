// SPDX-License-Identifier: BSD-3-Clause
#include "pixel/kernels/store_alignment.h"

#include <gtest/gtest.h>

namespace {

const std::uint8_t* at(std::uintptr_t address) {
    return reinterpret_cast<const std::uint8_t*>(address);
}

TEST(store_alignment, three_bytes_a_pixel) {
    EXPECT_EQ(units_to_alignment(at(0x1000), 3, 32), 0u);
    EXPECT_EQ(units_to_alignment(at(0x101d), 3, 32), 1u);
    EXPECT_EQ(units_to_alignment(at(0x1003), 3, 32), 31u);  // 3 + 31 x 3 = 3 x 32
    EXPECT_EQ(units_to_alignment(at(0x1012), 3, 64), 58u);  // 18 + 58 x 3 = 3 x 64
}

TEST(store_alignment, is_the_first_place_if_there_is_one) {
    for (const std::size_t vector : {16u, 32u, 64u}) {
        for (const unsigned unit : {1u, 2u, 3u, 4u, 6u, 8u, 12u, 16u, 24u}) {
            for (std::uintptr_t address = 0x1000; address < 0x1040; ++address) {
                std::size_t expected = 0;
                while (expected < vector && (address + expected * unit) % vector != 0) {
                    ++expected;
                }
                EXPECT_EQ(units_to_alignment(at(address), unit, vector), expected % vector)
                    << unit << ", " << vector << ", " << address;
            }
        }
    }
}

}  // namespace
