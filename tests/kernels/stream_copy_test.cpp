// SPDX-License-Identifier: BSD-3-Clause
//
// Copying past the caches: every length and pair of alignments, between inaccessible pages.
#include "pixel/kernels/stream_copy.h"

#include <gtest/gtest.h>

#include <cstring>

#include "bytes.h"
#include "guarded_buffer.h"
#include "random_source.h"

namespace {

using test::bytes;

void expect_copy(std::size_t size, std::size_t offset, const bytes& content, const std::uint8_t* from, bool is_tile) {
    test::guarded_buffer target(size + offset, test::guard::behind);
    std::memset(target.data(), 0x5a, size + offset);
    if (is_tile) {
        stream_tile(target.data(), from, size, from + size, 3 * size);  // ahead lies behind the buffer's last page
        finish_streaming();
    } else {
        stream_copy(target.data(), from, size);
    }
    ASSERT_EQ(bytes(target.data(), target.data() + size), content) << size << ", " << offset;
    for (std::size_t i = 0; i < offset; ++i) {
        ASSERT_EQ(target.data()[size + i], 0x5a) << size << ", " << offset;
    }
}

TEST(stream_copy, equals_memcpy_on_every_length_and_alignment) {
    test::random_source random(31);
    for (std::size_t size = 0; size <= 4 * 64 + 3; ++size) {
        const bytes content = random.content(size);
        const test::guarded_buffer source(content);
        for (std::size_t offset = 0; offset < 64; ++offset) {
            expect_copy(size, offset, content, source.data(), false);
        }
    }
}

// Longer ones go to four places in turn, and pages at a time.
TEST(stream_copy, equals_memcpy_on_lengths_around_those_of_its_steps) {
    test::random_source random(32);
    for (const std::size_t step : {1024u, 2048u, 3072u, 4096u, 16384u, 17408u, 32768u, 50000u}) {
        for (std::size_t size = step - 65; size <= step + 129; ++size) {
            const bytes content = random.content(size);
            const test::guarded_buffer source(content);
            for (const std::size_t offset : {0u, 1u, 63u}) {
                expect_copy(size, offset, content, source.data(), size % 2 == 0);
            }
        }
    }
}

TEST(stream_copy, is_for_what_the_caches_do_not_hold) {
    assume_cache_size(1000);
    EXPECT_FALSE(is_worth_streaming(1000));
    EXPECT_TRUE(is_worth_streaming(1001));
    assume_cache_size(~std::uint64_t{0});
    EXPECT_FALSE(is_worth_streaming(~std::uint64_t{0}));
}

}  // namespace
