// SPDX-License-Identifier: BSD-3-Clause
//
// All pairs of order and type on frames of many sizes and strides, with each number of threads.
#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "codec.h"
#include "format_cases.h"
#include "random_source.h"
#include "sample_planes.h"

namespace {

using namespace test;

const uint32_t k_thread_counts[] = {1, 2, 3, 8};

// The handles of all tests of this file: one of each kind for each number of threads.
class round_trip : public testing::TestWithParam<std::pair<uint32_t, uint32_t>> {
  protected:
    static void SetUpTestSuite() {
        for (const uint32_t threads : k_thread_counts) {
            encoders().push_back(std::make_unique<encoder>(threads));
            decoders().push_back(std::make_unique<decoder>(threads));
        }
    }
    static void TearDownTestSuite() {
        encoders().clear();
        decoders().clear();
    }
    static std::vector<std::unique_ptr<encoder>>& encoders() {
        static std::vector<std::unique_ptr<encoder>> all;
        return all;
    }
    static std::vector<std::unique_ptr<decoder>>& decoders() {
        static std::vector<std::unique_ptr<decoder>> all;
        return all;
    }

    static uint32_t order() { return GetParam().first; }
    static uint32_t type() { return GetParam().second; }
    static bool stores_alpha() { return has_alpha(order()) && (type() == 1 || type() == 2); }

    // Each size that encoding allows, from one that is smaller than any vector to some that are larger.
    static std::vector<std::pair<uint32_t, uint32_t>> sizes() {
        std::vector<std::pair<uint32_t, uint32_t>> allowed;
        const bool even_width = order() <= 2 || order() == 10 || order() == 11 || order() == 13 || order() >= 15;
        const bool even_height = order() == 10 || order() == 13;
        const std::pair<uint32_t, uint32_t> all[] = {{1, 1}, {2, 2},  {3, 5},  {4, 1},  {5, 4},  {6, 2},   {7, 3},
                                                     {8, 6}, {10, 3}, {13, 2}, {16, 9}, {22, 4}, {33, 17}, {50, 10}};
        for (const std::pair<uint32_t, uint32_t>& size : all) {
            if ((!even_width || size.first % 2 == 0) && (!even_height || size.second % 2 == 0)) {
                allowed.push_back(size);
            }
        }
        return allowed;
    }

    // The default strides, the least ones, and wider ones, odd ones among them.
    static std::vector<frame_params> records(uint32_t as_order, uint32_t width, uint32_t height) {
        std::vector<frame_params> made = {frame_record(as_order, type(), width, height)};
        const uint32_t f = type() == 1 ? 1 : type() == 7 ? 4 : 2;
        frame_params one_row = frame_record(as_order, type(), width, 1);
        uint32_t least = QVRUncompressed_GetUncompressedBufSize(&one_row);
        uint32_t least2 = 0;
        if (as_order == 10 || as_order == 13) {
            least = width * f;
            least2 = (width + 1) / 2 * f;
        } else if (as_order >= 15) {
            least2 = width * f;
            least -= least2;
        }
        for (const auto& extra : {std::pair{0u, 0u}, {1u, 3u}, {32u, 16u}}) {
            made.push_back(frame_record(as_order, type(), width, height, least + extra.first,
                                        least2 == 0 ? 0 : least2 + extra.second));
        }
        return made;
    }
};

TEST_P(round_trip, of_raw_planes_is_exact_on_both_sides) {
    random_source random(order() * 1000 + type());
    for (const auto& [width, height] : sizes()) {
        const uint32_t back = has_alpha(order()) && !stores_alpha() ? order_without_alpha(order()) : order();
        const auto targets = records(back, width, height);
        size_t turn = 0;
        for (const frame_params& up : records(order(), width, height)) {
            SCOPED_TRACE(testing::Message()
                         << width << " x " << height << ", strides " << up.rowBytes << ", " << up.rowBytes2);
            const bytes src = random.content(QVRUncompressed_GetUncompressedBufSize(&up));
            const sample_planes planes = take_apart(up, src);
            const bytes stream = stream_of(up, planes);
            // Decoding uses other strides than encoding did.
            const frame_params& to = targets[++turn % targets.size()];
            const bytes raw = put_together(to, as_stored(planes, type()), k_fill);
            for (size_t i = 0; i < encoders().size(); ++i) {
                SCOPED_TRACE(testing::Message() << k_thread_counts[i] << " threads");
                const outcome encoded = encode(*encoders()[i], up, raw_alpha(), src);
                expect_success(encoded);
                ASSERT_EQ(to_hex(encoded.frame()), to_hex(stream));
                const outcome decoded = decode(*decoders()[i], to, stream);
                expect_success(decoded);
                ASSERT_EQ(decoded.written, raw.size());
                ASSERT_EQ(to_hex(decoded.data), to_hex(raw));
            }
        }
    }
}

TEST_P(round_trip, of_coded_alpha_gives_all_samples_back) {
    if (!stores_alpha()) {
        // The flag must not matter then.
        const frame_params up = frame_record(order(), type(), 4, 4);
        const bytes src = counting(QVRUncompressed_GetUncompressedBufSize(&up));
        const outcome coded = encode(*encoders()[0], up, coded_alpha(), src);
        if (has_alpha(order())) {
            expect_failure(coded, "Only 8 and 16 bit alpha supported for RLE compression");
        } else {
            EXPECT_EQ(to_hex(coded.frame()), to_hex(encode(*encoders()[0], up, raw_alpha(), src).frame()));
        }
        return;
    }
    random_source random(order() * 1000 + type() + 500);
    for (const auto& [width, height] : sizes()) {
        for (const uint8_t slices : {uint8_t{0}, uint8_t{1}, uint8_t{3}, uint8_t{255}}) {
            for (const frame_params& up : records(order(), width, height)) {
                SCOPED_TRACE(testing::Message() << width << " x " << height << ", strides " << up.rowBytes << ", "
                                                << up.rowBytes2 << ", slices " << unsigned{slices});
                const bytes src = random.runs(QVRUncompressed_GetUncompressedBufSize(&up));
                const sample_planes planes = take_apart(up, src);
                const bytes stream = encode(*encoders()[0], up, coded_alpha(slices), src).frame();
                for (size_t i = 0; i < encoders().size(); ++i) {
                    SCOPED_TRACE(testing::Message() << k_thread_counts[i] << " threads");
                    const outcome encoded = encode(*encoders()[i], up, coded_alpha(slices), src);
                    expect_success(encoded);
                    ASSERT_EQ(to_hex(encoded.frame()), to_hex(stream));
                    const outcome decoded = decode(*decoders()[i], up, stream);
                    expect_success(decoded);
                    ASSERT_TRUE(take_apart(up, decoded.data) == planes);
                }
            }
        }
    }
}

std::vector<std::pair<uint32_t, uint32_t>> all_pairs() {
    std::set<std::pair<uint32_t, uint32_t>> pairs;
    for (const format_case& row : all_format_cases()) {
        pairs.emplace(row.order, row.type);
    }
    return {pairs.begin(), pairs.end()};
}

std::string pair_name(const testing::TestParamInfo<std::pair<uint32_t, uint32_t>>& info) {
    return "order_" + std::to_string(info.param.first) + "_type_" + std::to_string(info.param.second);
}

INSTANTIATE_TEST_SUITE_P(all_pairs, round_trip, testing::ValuesIn(all_pairs()), pair_name);

}  // namespace
