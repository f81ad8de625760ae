// SPDX-License-Identifier: BSD-3-Clause
//
// Every supported pair of order and type, from literal raw bytes to the literal bitstream and back.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "codec.h"
#include "format_cases.h"

namespace {

using namespace test;

class format : public testing::TestWithParam<format_case> {};

frame_params params_of(const format_case& tested) {
    return frame_record(tested.order, tested.type, tested.width, tested.height);
}

TEST_P(format, encodes_to_the_literal_bitstream) {
    const format_case& tested = GetParam();
    expect_bytes(encode(params_of(tested), raw_alpha(), from_hex(tested.source)), tested.stream);
}

TEST_P(format, size_queries_name_the_exact_sizes) {
    const format_case& tested = GetParam();
    const frame_params up = params_of(tested);
    const stream_params cp = raw_alpha();
    EXPECT_EQ(QVRUncompressed_GetUncompressedBufSize(&up), from_hex(tested.source).size());
    EXPECT_EQ(QVRUncompressed_GetCompressedBufSize(&up, &cp), from_hex(tested.stream).size());
}

TEST_P(format, decodes_from_the_literal_bitstream) {
    const format_case& tested = GetParam();
    const outcome result = decode(params_of(tested), from_hex(tested.stream));
    const std::string_view decoded = tested.decoded;
    if (decoded == refused) {
        expect_failure(result, "Only 8 and 16 bit alpha is supported");
        return;
    }
    expect_bytes(result, decoded == same_as_source ? tested.source : decoded);
}

TEST_P(format, metadata_names_the_order_that_needs_no_reordering) {
    const format_case& tested = GetParam();
    const metadata read = read_metadata(from_hex(tested.stream));
    EXPECT_EQ(read.status, 0u);
    EXPECT_EQ(read.up.size, 36u);
    EXPECT_EQ(read.up.colorComponentOrder, tested.metadata_order);
    EXPECT_EQ(read.up.componentType, tested.metadata_type);
    EXPECT_EQ(read.up.width, tested.width);
    EXPECT_EQ(read.up.height, tested.height);
    EXPECT_EQ(read.up.rowBytes, 0u);
    EXPECT_EQ(read.up.frameLayout, 0u);
    EXPECT_EQ(read.up.rowBytes2, 0u);
}

std::string format_name(const testing::TestParamInfo<format_case>& info) {
    const format_case& named = info.param;
    return "order_" + std::to_string(named.order) + "_type_" + std::to_string(named.type) + "_width_" +
           std::to_string(named.width);
}

INSTANTIATE_TEST_SUITE_P(all_pairs, format, testing::ValuesIn(all_format_cases()), format_name);

TEST(format_table, reaches_all_106_pairs) {
    std::set<std::pair<uint32_t, uint32_t>> pairs;
    for (const format_case& row : all_format_cases()) {
        pairs.emplace(row.order, row.type);
    }
    EXPECT_EQ(pairs.size(), 106u);
}

TEST(format_table, no_other_pair_of_order_and_type_is_supported) {
    std::set<std::pair<uint32_t, uint32_t>> pairs;
    for (const format_case& row : all_format_cases()) {
        pairs.emplace(row.order, row.type);
    }
    const stream_params cp = raw_alpha();
    for (const uint32_t order :
         {0u, 1u, 2u, 3u, 4u, 5u, 6u, 7u, 8u, 9u, 10u, 11u, 12u, 13u, 14u, 15u, 16u, 17u, 0xffffffffu}) {
        for (const uint32_t type : {0u, 1u, 2u, 3u, 4u, 5u, 6u, 7u, 8u, 213u, 214u, 215u, 0xffffffffu}) {
            const frame_params up = frame_record(order, type, 2, 2);
            const bool supported = pairs.count({order, type}) != 0;
            EXPECT_EQ(QVRUncompressed_GetCompressedBufSize(&up, &cp) != 0, supported)
                << "order " << order << ", type " << type;
            if (!supported) {
                // More than any 2 x 2 frame takes, so that only the pair is wrong.
                expect_failure(encode(up, cp, repeat(0, 256), 512),
                               "combination of color component order and component type is not supported");
            }
        }
    }
}

class coded_format : public testing::TestWithParam<coded_case> {};

TEST_P(coded_format, encodes_to_the_literal_bitstream) {
    const coded_case& tested = GetParam();
    const frame_params up = frame_record(tested.order, tested.type, tested.width, tested.height);
    expect_bytes(encode(up, coded_alpha(tested.slices), from_hex(tested.source)), tested.stream);
}

TEST_P(coded_format, decodes_from_the_literal_bitstream) {
    const coded_case& tested = GetParam();
    const frame_params up = frame_record(tested.order, tested.type, tested.width, tested.height);
    expect_bytes(decode(up, from_hex(tested.stream)), tested.source);
}

std::string coded_name(const testing::TestParamInfo<coded_case>& info) {
    return "order_" + std::to_string(info.param.order) + "_type_" + std::to_string(info.param.type);
}

INSTANTIATE_TEST_SUITE_P(alpha_orders, coded_format, testing::ValuesIn(coded_cases()), coded_name);

}  // namespace
