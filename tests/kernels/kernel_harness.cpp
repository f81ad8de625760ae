// SPDX-License-Identifier: BSD-3-Clause
#include "kernel_harness.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "guarded_buffer.h"

namespace test {

namespace {

// Places bytes against one of the two guard pages, or `offset` bytes away from it with the neighbours watched. Mapped
// once: making pages anew for each of some hundred thousand calls would take longer than the calls.
class slot {
  public:
    std::uint8_t* place(const bytes& content, guard side, std::size_t offset) {
        guarded_buffer& page = side == guard::behind ? behind_ : before_;
        size_ = content.size();
        start_ = side == guard::behind ? page.data() + page.size() - size_ - offset : page.data() + offset;
        // Canaries up to the page's end, and a vector's length or two on the other side.
        first_ = side == guard::behind ? start_ - k_watched : page.data();
        last_ = side == guard::behind ? page.data() + page.size() : start_ + size_ + k_watched;
        std::memset(first_, k_canary, static_cast<std::size_t>(last_ - first_));
        std::copy(content.begin(), content.end(), start_);
        return start_;
    }
    bytes content() const { return bytes(start_, start_ + size_); }
    bool neighbours_untouched() const {
        const auto is_canary = [](std::uint8_t byte) { return byte == k_canary; };
        return std::all_of(first_, start_, is_canary) && std::all_of(start_ + size_, last_, is_canary);
    }

  private:
    static constexpr std::uint8_t k_canary = 0xa5;
    static constexpr std::size_t k_watched = 64;
    static constexpr std::size_t k_page = 4096;  // larger than any row of these tests

    guarded_buffer behind_{k_page, guard::behind};
    guarded_buffer before_{k_page, guard::before};
    std::uint8_t* start_ = nullptr;
    std::uint8_t* first_ = nullptr;
    std::uint8_t* last_ = nullptr;
    std::size_t size_ = 0;
};

constexpr std::size_t k_slots = 2;  // no kernel has more sources or destinations

std::vector<bytes> filled(const std::vector<std::size_t>& sizes, std::uint8_t fill) {
    std::vector<bytes> contents;
    for (const std::size_t size : sizes) {
        contents.push_back(repeat(fill, size));
    }
    return contents;
}

std::vector<bytes> run_placed(const kernel_call& call, cpu_features features, guard side, std::size_t offset,
                              std::uint8_t fill, bool& neighbours_untouched) {
    static slot sources[k_slots];
    static slot destinations[k_slots];
    std::vector<const std::uint8_t*> in;
    std::vector<std::uint8_t*> out;
    for (std::size_t i = 0; i < call.sources.size(); ++i) {
        const std::size_t margin = i < call.source_margins.size() ? call.source_margins[i] : 0;
        in.push_back(sources[i].place(call.sources[i], side, offset) + margin);
    }
    const std::vector<bytes> before = filled(call.destination_sizes, fill);
    for (std::size_t i = 0; i < before.size(); ++i) {
        out.push_back(destinations[i].place(before[i], side, offset));
    }
    call.run(features, in.data(), out.data());
    std::vector<bytes> results;
    for (std::size_t i = 0; i < before.size(); ++i) {
        results.push_back(destinations[i].content());
        neighbours_untouched = neighbours_untouched && destinations[i].neighbours_untouched();
    }
    return results;
}

}  // namespace

std::vector<cpu_features> feature_levels() {
    const unsigned detected = detected_cpu_features();
    std::vector<cpu_features> levels;
    for (unsigned level = 0; level <= detected; level = level << 1 | 1) {
        levels.push_back(static_cast<cpu_features>(level));
    }
    return levels;
}

std::vector<bytes> scalar_result(const kernel_call& call) {
    bool untouched = true;
    return run_placed(call, cpu_scalar, guard::behind, 0, 0, untouched);
}

void expect_same_as_scalar(const kernel_call& call) {
    const std::vector<bytes> expected = scalar_result(call);
    for (const cpu_features features : feature_levels()) {
        for (const guard side : {guard::behind, guard::before}) {
            for (std::size_t offset = 0; offset < 32; ++offset) {
                for (const std::uint8_t fill : {std::uint8_t{0x00}, std::uint8_t{0xff}}) {
                    bool untouched = true;
                    const auto result = run_placed(call, features, side, offset, fill, untouched);
                    ASSERT_EQ(result, expected)
                        << "features " << features << ", offset " << offset << ", fill " << static_cast<unsigned>(fill);
                    ASSERT_TRUE(untouched) << "features " << features << ", offset " << offset;
                }
            }
        }
    }
}

}  // namespace test
