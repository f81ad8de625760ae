// Memory that runs out at each allocation in turn: the call fails and says so, nothing leaks, and the handle goes on to
// give the same bytes.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>
#include <vector>

#include "QVRUncompressed.h"

namespace {

std::atomic<long> allocations_left{-1};  // below 0: as many as are asked for
std::atomic<long> live_blocks{0};

}  // namespace

// The nothrow, array and sized forms of the runtime end in these. Not inlined: the compiler would take the pair apart.
__attribute__((noinline)) void* operator new(std::size_t size) {
    if (allocations_left >= 0 && allocations_left-- == 0) {
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

struct format {
    std::uint32_t order, type;
    std::uint8_t coded;
    std::uint32_t threads;
};

class allocation_failure : public testing::TestWithParam<format> {
  protected:
    static void remember(const char* message, void* user_data) {
        auto& last = *static_cast<char(*)[64]>(user_data);
        std::snprintf(last, sizeof last, "%s", message);
    }

    // Encodes and decodes on handles made for it; false when a handle could not be made or a call failed.
    bool round_trip() {
        const QVRUncompressed_CodecConfig_t config = {28, GetParam().threads, &message_, remember};
        QVRUncompressed_Encoder encoder = nullptr;
        QVRUncompressed_Decoder decoder = nullptr;
        QVRUncompressed_CreateEncoder(&config, &encoder);
        QVRUncompressed_CreateDecoder(&config, &decoder);
        const bool good = encoder != nullptr && decoder != nullptr && encode(encoder) == 0 && decode(decoder) == 0;
        if (encoder != nullptr && decoder != nullptr) {
            allocations_left = -1;  // memory is back: the handles are as good as new
            EXPECT_EQ(encode(encoder), 0u);
            EXPECT_EQ(std::vector<std::uint8_t>(stream_.begin(), stream_.begin() + written_), expected_);
            EXPECT_EQ(decode(decoder), 0u);
            EXPECT_EQ(decoded_, raw_);
        }
        QVRUncompressed_DestroyEncoder(encoder);
        QVRUncompressed_DestroyDecoder(decoder);
        return good;
    }

    void prepare() {
        for (std::size_t i = 0; i < raw_.size(); ++i) {
            raw_[i] = static_cast<std::uint8_t>(i / 7 * 3);
        }
        stream_.resize(QVRUncompressed_GetCompressedBufSize(&frame_, &how_));
        QVRUncompressed_Encoder encoder = nullptr;
        QVRUncompressed_CreateEncoder(nullptr, &encoder);
        ASSERT_EQ(encode(encoder), 0u);
        QVRUncompressed_DestroyEncoder(encoder);
        expected_.assign(stream_.begin(), stream_.begin() + written_);
    }

    std::uint32_t encode(QVRUncompressed_Encoder encoder) {
        return QVRUncompressed_EncodeFrame(encoder, &frame_, &how_, raw_.data(),
                                           static_cast<std::uint32_t>(raw_.size()), stream_.data(),
                                           static_cast<std::uint32_t>(stream_.size()), &written_);
    }
    std::uint32_t decode(QVRUncompressed_Decoder decoder) {
        return QVRUncompressed_DecodeFrame(decoder, &frame_, stream_.data(), written_, decoded_.data(),
                                           static_cast<std::uint32_t>(decoded_.size()), nullptr);
    }

    char message_[64] = "";
    QVRUncompressed_UncompressedParams_t frame_ = {36, GetParam().order, GetParam().type, 12, 9, 0, 0, 0};
    QVRUncompressed_CompressedParams_t how_ = {10, GetParam().coded, 4};
    std::vector<std::uint8_t> raw_ = std::vector<std::uint8_t>(QVRUncompressed_GetUncompressedBufSize(&frame_));
    std::vector<std::uint8_t> decoded_ = std::vector<std::uint8_t>(raw_.size());
    std::vector<std::uint8_t> stream_;
    std::vector<std::uint8_t> expected_;
    std::uint32_t written_ = 0;
};

TEST_P(allocation_failure, at_each_index) {
    prepare();
    bool good = false;
    for (long index = 0; !good; ++index) {
        ASSERT_LT(index, 10000);
        const long before = live_blocks;
        allocations_left = index;
        good = round_trip();
        allocations_left = -1;
        if (!good) {
            EXPECT_STREQ(message_, "std::bad_alloc") << index;
        }
        ASSERT_EQ(live_blocks, before) << "allocation " << index;
    }
}

INSTANTIATE_TEST_SUITE_P(formats, allocation_failure,
                         testing::Values(format{5, 1, 0, 1}, format{7, 1, 1, 1}, format{7, 2, 1, 3},
                                         format{6, 214, 0, 3}, format{14, 2, 1, 3}, format{16, 1, 1, 3},
                                         format{1, 7, 0, 2}));

}  // namespace
