// SPDX-License-Identifier: BSD-3-Clause
#include "container/plane_types.h"

#include <algorithm>

#include "api/base/errors.h"

namespace {

constexpr plane_type_traits k_unknown_plane = {0, 0, plane_class::unknown, 0, 0};

constexpr plane_type_traits k_plane_types[] = {
    // clang-format off
    {fourcc(" y08"), 0, plane_class::luma, 8, 1},
    {fourcc(" y10"), 0, plane_class::luma, 10, 3},
    {fourcc(" y12"), 0, plane_class::luma, 12, 4},
    {fourcc(" y16"), 0, plane_class::luma, 16, 2},
    {fourcc("  yf"), 0, plane_class::luma, 32, 7},
    {fourcc("  yh"), 0, plane_class::luma, 16, 6},
    {fourcc("cb08"), 0, plane_class::cb, 8, 1},
    {fourcc("cb10"), 0, plane_class::cb, 10, 3},
    {fourcc("cb12"), 0, plane_class::cb, 12, 4},
    {fourcc("cb16"), 0, plane_class::cb, 16, 2},
    {fourcc(" cbf"), fourcc("cb f"), plane_class::cb, 32, 7},
    {fourcc(" cbh"), fourcc("cb h"), plane_class::cb, 16, 6},
    {fourcc("cr08"), 0, plane_class::cr, 8, 1},
    {fourcc("cr10"), 0, plane_class::cr, 10, 3},
    {fourcc("cr12"), 0, plane_class::cr, 12, 4},
    {fourcc("cr16"), 0, plane_class::cr, 16, 2},
    {fourcc(" crf"), fourcc("cr f"), plane_class::cr, 32, 7},
    {fourcc(" crh"), fourcc("cr h"), plane_class::cr, 16, 6},
    {fourcc(" a08"), 0, plane_class::alpha, 8, 1},
    {fourcc(" a16"), 0, plane_class::alpha, 16, 2},
    {fourcc("rl08"), 0, plane_class::coded_alpha, 8, 1},
    {fourcc("rl16"), 0, plane_class::coded_alpha, 16, 2},
    {fourcc("rg08"), 0, plane_class::rgb, 8, 1},
    {fourcc("rg10"), 0, plane_class::rgb, 10, 3},
    {fourcc("rg12"), 0, plane_class::rgb, 12, 4},
    {fourcc("rg16"), 0, plane_class::rgb, 16, 2},
    {fourcc("rgS1"), 0, plane_class::rgb, 16, 214},
    {fourcc(" rgf"), fourcc("rg f"), plane_class::rgb, 32, 7},
    {fourcc(" rgh"), fourcc("rg h"), plane_class::rgb, 16, 6},
    {fourcc("y408"), 0, plane_class::ycbcr_444, 8, 1},
    {fourcc("y410"), 0, plane_class::ycbcr_444, 10, 3},
    {fourcc("y412"), 0, plane_class::ycbcr_444, 12, 4},
    {fourcc("y416"), 0, plane_class::ycbcr_444, 16, 2},
    {fourcc("y4S1"), 0, plane_class::ycbcr_444, 16, 214},
    {fourcc(" y4f"), fourcc("  f4"), plane_class::ycbcr_444, 32, 7},
    {fourcc(" y4h"), fourcc("  h4"), plane_class::ycbcr_444, 16, 6},
    {fourcc("y208"), 0, plane_class::ycbcr_422, 8, 1},
    {fourcc("y210"), 0, plane_class::ycbcr_422, 10, 3},
    {fourcc("y212"), 0, plane_class::ycbcr_422, 12, 4},
    {fourcc("y216"), 0, plane_class::ycbcr_422, 16, 2},
    {fourcc("y2S1"), 0, plane_class::ycbcr_422, 16, 214},
    {fourcc(" y2f"), fourcc("  f2"), plane_class::ycbcr_422, 32, 7},
    {fourcc(" y2h"), fourcc("  h2"), plane_class::ycbcr_422, 16, 6},
    {fourcc("stch"), 0, plane_class::stitched, 0, 0},
    // clang-format on
};

// A set of orders as bits, order n in bit n.
template <class... Orders>
constexpr std::uint32_t orders(Orders... each) {
    return ((1u << each) | ...);
}

struct format_row {
    std::uint32_t orders;
    std::uint32_t type;
    plane_codes planes;
};

constexpr std::uint32_t k_422 = orders(1, 2);
constexpr std::uint32_t k_422_alpha = orders(11, 15, 16);
constexpr std::uint32_t k_rgb = orders(5, 6);
constexpr std::uint32_t k_rgb_alpha = orders(3, 4, 7, 8);
constexpr std::uint32_t k_444 = orders(9);
constexpr std::uint32_t k_444_alpha = orders(12);
constexpr std::uint32_t k_420 = orders(10);
constexpr std::uint32_t k_420_alpha = orders(13);

// Alpha is stored at 8 and 16 bits only: with every other type an order with alpha is stored like the one without.
constexpr format_row k_formats[] = {
    // clang-format off
    {k_422 | k_422_alpha, 3,   {fourcc("y210")}},
    {k_422 | k_422_alpha, 4,   {fourcc("y212")}},
    {orders(2),           5,   {fourcc("y210")}},
    {k_422 | k_422_alpha, 6,   {fourcc(" y2h")}},
    {k_422 | k_422_alpha, 7,   {fourcc(" y2f")}},
    {k_422 | k_422_alpha, 214, {fourcc("y2S1")}},
    {k_422,               1,   {fourcc("y208")}},
    {k_422,               2,   {fourcc("y216")}},
    {k_422_alpha,         1,   {fourcc("y208"), fourcc(" a08")}},
    {k_422_alpha,         2,   {fourcc("y216"), fourcc(" a16")}},
    {k_rgb | k_rgb_alpha, 3,   {fourcc("rg10")}},
    {k_rgb | k_rgb_alpha, 4,   {fourcc("rg12")}},
    {k_rgb | k_rgb_alpha, 6,   {fourcc(" rgh")}},
    {k_rgb | k_rgb_alpha, 7,   {fourcc(" rgf")}},
    {k_rgb | k_rgb_alpha, 214, {fourcc("rgS1")}},
    {k_rgb,               1,   {fourcc("rg08")}},
    {k_rgb,               2,   {fourcc("rg16")}},
    {k_rgb_alpha,         1,   {fourcc("rg08"), fourcc(" a08")}},
    {k_rgb_alpha,         2,   {fourcc("rg16"), fourcc(" a16")}},
    {k_444 | k_444_alpha, 3,   {fourcc("y410")}},
    {k_444 | k_444_alpha, 4,   {fourcc("y412")}},
    {k_444 | k_444_alpha, 6,   {fourcc(" y4h")}},
    {k_444 | k_444_alpha, 7,   {fourcc(" y4f")}},
    {k_444 | k_444_alpha, 214, {fourcc("y4S1")}},
    {k_444,               1,   {fourcc("y408")}},
    {k_444,               2,   {fourcc("y416")}},
    {k_444_alpha,         1,   {fourcc("y408"), fourcc(" a08")}},
    {k_444_alpha,         2,   {fourcc("y416"), fourcc(" a16")}},
    {k_420 | k_420_alpha, 3,   {fourcc(" y10"), fourcc("cb10"), fourcc("cr10")}},
    {k_420 | k_420_alpha, 4,   {fourcc(" y12"), fourcc("cb12"), fourcc("cr12")}},
    {k_420 | k_420_alpha, 6,   {fourcc("  yh"), fourcc(" cbh"), fourcc(" crh")}},
    {k_420 | k_420_alpha, 7,   {fourcc("  yf"), fourcc(" cbf"), fourcc(" crf")}},
    {k_420,               1,   {fourcc(" y08"), fourcc("cb08"), fourcc("cr08")}},
    {k_420,               2,   {fourcc(" y16"), fourcc("cb16"), fourcc("cr16")}},
    {k_420_alpha,         1,   {fourcc(" y08"), fourcc("cb08"), fourcc("cr08"), fourcc(" a08")}},
    {k_420_alpha,         2,   {fourcc(" y16"), fourcc("cb16"), fourcc("cr16"), fourcc(" a16")}},
    {orders(14),          1,   {fourcc(" a08")}},
    {orders(14),          2,   {fourcc(" a16")}},
    // clang-format on
};

// What a stored plane may be read as, besides itself.
struct substitute {
    std::uint32_t wanted;
    std::uint32_t stored;
};

constexpr substitute k_coded_alpha[] = {{fourcc(" a08"), fourcc("rl08")}, {fourcc(" a16"), fourcc("rl16")}};
constexpr substitute k_fixed_for_float[] = {
    {fourcc(" y2f"), fourcc("y2S1")}, {fourcc(" y4f"), fourcc("y4S1")}, {fourcc(" rgf"), fourcc("rgS1")}};

// The planes of a frame without its alpha. Integer planes may have any one alpha plane beside them.
bool is_single_base(const plane_type_traits& traits) {
    switch (traits.holds) {
        case plane_class::rgb:
        case plane_class::ycbcr_444:
        case plane_class::ycbcr_422:
        case plane_class::stitched:
            return true;
        default:
            return false;
    }
}

bool may_have_alpha(std::uint32_t component_type) {
    return component_type >= 1 && component_type <= 4;
}

}  // namespace

const plane_type_traits& traits_of_plane(std::uint32_t code) {
    for (const plane_type_traits& traits : k_plane_types) {
        if (traits.code == code) {
            return traits;
        }
    }
    return k_unknown_plane;
}

std::uint32_t normalised_plane_type(std::uint32_t code) {
    for (const plane_type_traits& traits : k_plane_types) {
        if (traits.code == code || (traits.legacy != 0 && traits.legacy == code)) {
            return traits.code;
        }
    }
    return 0;
}

wide row_samples(std::uint32_t code, std::uint32_t width) {
    switch (traits_of_plane(code).holds) {
        case plane_class::luma:
        case plane_class::cb:
        case plane_class::cr:
        case plane_class::alpha:
            return width;
        case plane_class::rgb:
        case plane_class::ycbcr_444:
            return wide{3} * width;
        case plane_class::ycbcr_422:
            return wide{2} * width + width % 2;
        default:
            return 0;
    }
}

wide row_bytes(std::uint32_t code, std::uint32_t width) {
    return ceil_div(row_samples(code, width) * traits_of_plane(code).bits, 8);
}

const plane_codes& format_planes(std::uint32_t order, std::uint32_t type) {
    for (const format_row& row : k_formats) {
        if (order < 32 && (row.orders >> order & 1) != 0 && row.type == type) {
            return row.planes;
        }
    }
    throw_invalid_argument("combination of color component order and component type is not supported");
}

std::uint32_t coded_form(std::uint32_t code) {
    for (const substitute& each : k_coded_alpha) {
        if (each.wanted == code) {
            return each.stored;
        }
    }
    return code;
}

bool plane_serves(std::uint32_t stored, std::uint32_t wanted) {
    const auto matches = [&](const substitute& each) { return each.wanted == wanted && each.stored == stored; };
    return stored == wanted || std::any_of(std::begin(k_coded_alpha), std::end(k_coded_alpha), matches) ||
           std::any_of(std::begin(k_fixed_for_float), std::end(k_fixed_for_float), matches);
}

bool allowed_plane_sets(const std::uint32_t* codes, std::size_t count) {
    if (count == 0 || count > k_most_planes) {
        return false;
    }
    std::array<const plane_type_traits*, k_most_planes> base{};
    std::size_t base_count = 0;
    std::size_t alpha_count = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const plane_type_traits& traits = traits_of_plane(codes[i]);
        if (traits.is_alpha()) {
            ++alpha_count;
        } else {
            base[base_count++] = &traits;
        }
    }
    if (base_count == 0) {
        return alpha_count == 1;
    }
    const std::uint32_t type = base[0]->component_type;
    if (alpha_count > 1 || (alpha_count == 1 && !may_have_alpha(type))) {
        return false;
    }
    if (base_count == 1) {
        return is_single_base(*base[0]);
    }
    // Luma, Cb and Cr of one type, each once.
    const auto has = [&](plane_class wanted) {
        return std::any_of(base.begin(), base.begin() + base_count, [&](const plane_type_traits* each) {
            return each->holds == wanted && each->component_type == type;
        });
    };
    return base_count == 3 && has(plane_class::luma) && has(plane_class::cb) && has(plane_class::cr);
}
