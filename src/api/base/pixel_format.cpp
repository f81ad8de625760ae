// SPDX-License-Identifier: BSD-3-Clause
#include "api/base/pixel_format.h"

namespace {

constexpr pixel_map k_swapped_pairs = {2, 2, {1, 0, 0}, -1};

constexpr order_traits k_no_order = {0, arrangement::interleaved, false, 0, 0, k_in_stream_order};

// Indexed by order - 1. Row lengths for odd widths differ between orders 1 and 2 on purpose: order 1 rounds the width
// up to a whole pair, order 2 adds the one chroma sample that the last pixel has.
constexpr order_traits k_orders[16] = {
    // clang-format off
    {422, arrangement::interleaved,            false, 2, 2, k_swapped_pairs},
    {422, arrangement::interleaved,            false, 2, 1, k_in_stream_order},
    {444, arrangement::interleaved,            true,  4, 0, {4, 3, {1, 2, 3}, 0}},
    {444, arrangement::interleaved,            true,  4, 0, {4, 3, {2, 1, 0}, 3}},
    {444, arrangement::interleaved,            false, 3, 0, k_in_stream_order},
    {444, arrangement::interleaved,            false, 3, 0, {3, 3, {2, 1, 0}, -1}},
    {444, arrangement::interleaved,            true,  4, 0, {4, 3, {0, 1, 2}, 3}},
    {444, arrangement::interleaved,            true,  4, 0, {4, 3, {3, 2, 1}, 0}},
    {444, arrangement::interleaved,            false, 3, 0, k_in_stream_order},
    {420, arrangement::planar_420,             false, 0, 0, k_in_stream_order},
    {422, arrangement::interleaved,            true,  3, 1, {3, 2, {0, 1, 0}, 2}},
    {444, arrangement::interleaved,            true,  4, 0, {4, 3, {1, 0, 2}, 3}},
    {420, arrangement::planar_420,             true,  0, 0, k_in_stream_order},
    {1,   arrangement::alpha_only,             true,  0, 0, k_in_stream_order},
    {422, arrangement::interleaved_plus_alpha, true,  2, 2, k_swapped_pairs},
    {422, arrangement::interleaved_plus_alpha, true,  2, 1, k_in_stream_order},
    // clang-format on
};

// Unknown types count two bytes a sample, as the size queries define for them.
constexpr type_traits k_no_type = {0, 0, 2, narrowing::none};

constexpr type_traits k_types[] = {
    {1, 8, 1, narrowing::none},
    {2, 16, 2, narrowing::none},
    {3, 10, 2, narrowing::ten_bits},
    {4, 12, 2, narrowing::twelve_bits},
    {5, 10, 2, narrowing::ten_bits_packed},
    {6, 16, 2, narrowing::none},
    {7, 32, 4, narrowing::none},
    {214, 16, 2, narrowing::none},
};

}  // namespace

const order_traits& traits_of_order(std::uint32_t order) {
    const std::uint32_t index = order - 1;
    return index < 16 ? k_orders[index] : k_no_order;
}

const type_traits& traits_of_type(std::uint32_t type) {
    for (const type_traits& traits : k_types) {
        if (traits.type == type) {
            return traits;
        }
    }
    return k_no_type;
}

wide interleaved_row_bytes(std::uint32_t order, std::uint32_t type, std::uint32_t width) {
    if (type == k_packed_type) {
        return ceil_div(width, 6) * 16;
    }
    const order_traits& traits = traits_of_order(order);
    const wide samples = wide{traits.samples_per_pixel} * width + (width % 2) * wide{traits.odd_width_samples};
    return samples * traits_of_type(type).bytes;
}
