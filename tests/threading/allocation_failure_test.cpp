// SPDX-License-Identifier: BSD-3-Clause
//
// Memory that runs out at each allocation in turn: the function fails as documented and says so once, nothing leaks, and
// the handle goes on to give the same bytes.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <new>
#include <optional>
#include <tuple>

#include "frame_trip.h"

namespace {

constexpr long k_plenty = 1L << 40;
std::atomic<long> allocations_left{k_plenty};  // the one that finds 0 fails,
std::atomic<bool> for_good{false};             // and here those behind it, too
std::atomic<long> live_blocks{0};

}  // namespace

// The nothrow, array and sized forms of the runtime end in these. Not inlined: the compiler would take the pair apart.
__attribute__((noinline)) void* operator new(std::size_t size) {
    const long left = allocations_left--;
    if (left == 0 || (left < 0 && for_good)) {
        throw std::bad_alloc();
    }
    void* const block = std::malloc(size == 0 ? 1 : size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    ++live_blocks;
    return block;
}

__attribute__((noinline)) void operator delete(void* block) noexcept {
    if (block != nullptr) {
        --live_blocks;
        std::free(block);
    }
}

__attribute__((noinline)) void operator delete(void* block, std::size_t) noexcept {
    operator delete(block);
}

namespace {

struct shortage {
    explicit shortage(long allocations) { allocations_left = allocations; }
    ~shortage() { allocations_left = k_plenty; }
    bool was_felt() const { return allocations_left < 0; }
};

class allocation_failure : public testing::TestWithParam<std::tuple<frame_case, std::uint32_t, bool>> {
  protected:
    void SetUp() override {
        handle_pair plain(1);
        ASSERT_EQ(trip_.encode(plain.encoder), 0u);
        ASSERT_EQ(trip_.decode(plain.decoder), 0u);
        stream_ = trip_.stream();
        came_back_ = trip_.came_back();
        for_good = std::get<2>(GetParam());
    }
    void TearDown() override { for_good = false; }

    // Makes handles, encodes and decodes; whether memory was short.
    bool run_with(long allocations) {
        auto memory = std::optional<shortage>(allocations);
        handle_pair with(std::get<1>(GetParam()));
        const std::uint32_t encoded = with.encoder != nullptr ? trip_.encode(with.encoder) : 0;
        trip_.set_stream(stream_);
        const std::uint32_t decoded = with.decoder != nullptr ? trip_.decode(with.decoder) : 0;
        const bool was_short = memory->was_felt();
        memory.reset();

        EXPECT_EQ(with.created, (std::array<std::uint32_t, 2>{0, 0}));
        const int failures = (with.encoder == nullptr) + (with.decoder == nullptr) + (encoded == 1) + (decoded == 1);
        EXPECT_EQ(failures != 0, was_short);
        EXPECT_LE(encoded | decoded, 1u);
        EXPECT_EQ(with.reports, failures);
        EXPECT_STREQ(with.message, was_short ? "std::bad_alloc" : "");
        expect_good_as_new(with);
        return was_short;
    }

    void expect_good_as_new(const handle_pair& with) {
        if (with.encoder != nullptr) {
            EXPECT_EQ(trip_.encode(with.encoder), 0u);
            EXPECT_EQ(trip_.stream(), stream_);
        }
        if (with.decoder != nullptr) {
            EXPECT_EQ(trip_.decode(with.decoder), 0u);
            EXPECT_EQ(trip_.came_back(), came_back_);
        }
    }

    frame_trip trip_{std::get<0>(GetParam())};
    frame_trip::bytes stream_, came_back_;
};

// Calls it with memory for no allocation, for one, and so on, until it says that there was enough.
template <class Call>
long at_each_index(const Call& call) {
    for (long index = 0; index < 10000; ++index) {
        SCOPED_TRACE(index);
        const long before = live_blocks;
        const bool was_short = call(index);
        EXPECT_EQ(live_blocks, before);
        if (!was_short || testing::Test::HasFailure()) {
            return index;
        }
    }
    return -1;
}

TEST_P(allocation_failure, in_handles_and_their_calls) {
    const long enough = at_each_index([this](long index) { return run_with(index); });
    EXPECT_GE(enough, 4);  // two handles of two blocks each, and what threads and frames need
}

TEST_P(allocation_failure, in_functions_without_a_handle_gives_0) {
    const std::array<std::uint32_t, 4> expected = trip_.queries();
    at_each_index([&](long index) {
        auto memory = std::optional<shortage>(index);
        const std::array<std::uint32_t, 4> given = trip_.queries();
        const bool was_short = memory->was_felt();
        memory.reset();
        EXPECT_EQ(given == expected, !was_short);
        for (std::size_t i = 0; i < given.size(); ++i) {
            EXPECT_TRUE(given[i] == expected[i] || given[i] == 0) << i << ": " << given[i];
        }
        EXPECT_EQ(trip_.queries(), expected);
        return was_short;
    });
}

TEST(allocation_failure_of_a_damaged_frame, is_reported_first) {
    for (const std::uint32_t threads : {1u, 3u}) {
        SCOPED_TRACE(threads);
        at_each_index([&](long index) {
            handle_pair with(threads);  // a new one: its queues keep the memory of the frame before
            std::uint8_t plane[5];
            auto memory = std::optional<shortage>(index);
            const std::uint32_t status =
                QVRUncompressed_DecodeFrame(with.decoder, &k_frame_of_broken_slices, k_two_broken_slices.data(),
                                            k_two_broken_slices.size(), plane, sizeof plane, nullptr);
            const bool was_short = memory->was_felt();
            memory.reset();
            EXPECT_EQ(status, 1u);
            EXPECT_EQ(with.reports, 1);
            EXPECT_STREQ(with.message, was_short ? "std::bad_alloc" : "rle run exceeds slice");
            return was_short;
        });
    }
}

constexpr carried k_qcx = carried::beside_a_compressed_frame;
constexpr carried k_tiles = carried::as_stitched_tiles;

INSTANTIATE_TEST_SUITE_P(frames, allocation_failure,
                         testing::Combine(testing::Values(frame_case{5, 1}, frame_case{7, 1, 4}, frame_case{7, 2, 4},
                                                          frame_case{6, 214},
                                                          frame_case{13, 2, 4, carried::alone, 12, 10},
                                                          frame_case{14, 2, 4}, frame_case{16, 1, 4}, frame_case{2, 5},
                                                          frame_case{1, 7}, frame_case{14, 1, 0, k_qcx},
                                                          frame_case{14, 2, 4, k_qcx}, frame_case{14, 1, 0, k_tiles}),
                                          testing::Values(1u, 3u), testing::Bool()));

}  // namespace
