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

TEST(stream_copy, equals_memcpy_on_every_length_and_alignment) {
    test::random_source random(31);
    for (std::size_t size = 0; size <= 4 * 64 + 3; ++size) {
        const bytes content = random.content(size);
        const test::guarded_buffer source(content);
        for (std::size_t offset = 0; offset < 64; ++offset) {
            test::guarded_buffer target(size + offset, test::guard::behind);
            std::memset(target.data(), 0x5a, size + offset);
            stream_copy(target.data(), source.data(), size);
            ASSERT_EQ(bytes(target.data(), target.data() + size), content) << size << ", " << offset;
            for (std::size_t i = 0; i < offset; ++i) {
                ASSERT_EQ(target.data()[size + i], 0x5a) << size << ", " << offset;
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
