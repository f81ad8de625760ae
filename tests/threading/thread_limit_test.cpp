// SPDX-License-Identifier: BSD-3-Clause
//
// What happens when the machine has no thread left to give: std::thread is stood in for by a count that runs out.
#include <dirent.h>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <cerrno>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>

#include "QVRUncompressed.h"
#include "comes_true.h"
#include "frame_trip.h"
#include "threading/threaded_executor.h"

namespace {

std::atomic<int> threads_left{1 << 30};

}  // namespace

extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*),
                              void* argument) noexcept {
    using create_function = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
    static const auto create = reinterpret_cast<create_function>(dlsym(RTLD_NEXT, "pthread_create"));
    return threads_left-- > 0 ? create(thread, attributes, start, argument) : EAGAIN;
}

namespace {

class thread_limit : public testing::TestWithParam<int> {
  protected:
    void TearDown() override { threads_left = 1 << 30; }
};

TEST_P(thread_limit, an_executor_that_cannot_start_a_thread_joins_those_it_has_and_passes_the_error_on) {
    threads_left = GetParam();
    EXPECT_THROW(threaded_executor(4), std::system_error);
}

struct captured {
    int calls = 0;
    std::string message;
    bool throws = false;
};

void capture(const char* message, void* user_data) {
    auto& target = *static_cast<captured*>(user_data);
    ++target.calls;
    target.message = message;
    if (target.throws) {
        throw std::runtime_error("thrown by the callback");
    }
}

std::size_t running_threads() {
    std::size_t count = 0;
    if (DIR* tasks = opendir("/proc/self/task")) {
        while (const dirent* entry = readdir(tasks)) {
            count += entry->d_name[0] != '.' ? 1 : 0;
        }
        closedir(tasks);
    }
    return count;
}

template <class Handle>
void expect_a_report(std::uint32_t (*create)(const QVRUncompressed_CodecConfig_t*, Handle*), int threads) {
    for (const bool throws : {false, true}) {
        captured error;
        error.throws = throws;
        const QVRUncompressed_CodecConfig_t config = {QVRUNCOMPRESSED_CODEC_CONFIG_SIZE, 4, &error, capture};
        auto* const untouched = reinterpret_cast<Handle>(&error);
        Handle handle = untouched;
        threads_left = threads;
        EXPECT_EQ(create(&config, &handle), 0u);
        EXPECT_EQ(handle, untouched);
        EXPECT_EQ(error.calls, 1);
        EXPECT_EQ(error.message, "Resource temporarily unavailable");
    }
}

TEST_P(thread_limit, making_a_handle_reports_it_and_leaves_the_handle_alone) {
    expect_a_report(&QVRUncompressed_CreateEncoder, GetParam());
    expect_a_report(&QVRUncompressed_CreateDecoder, GetParam());
}

TEST_P(thread_limit, the_next_handles_are_good_and_no_thread_is_left) {
    std::thread([] {}).join();  // a sanitizer may add a thread of its own with the first one
    const std::size_t before = running_threads();
    frame_trip trip({7, 1, 4});
    handle_pair plain(1);
    ASSERT_EQ(trip.encode(plain.encoder), 0u);
    ASSERT_EQ(trip.decode(plain.decoder), 0u);
    const frame_trip::bytes stream = trip.stream();
    const frame_trip::bytes came_back = trip.came_back();

    // The encoder gets its four threads, the decoder those that are left.
    threads_left = 4 + GetParam();
    handle_pair with(4);
    EXPECT_NE(with.encoder, nullptr);
    EXPECT_EQ(with.decoder, nullptr);
    // A joined thread may linger in the process's list for a moment.
    EXPECT_TRUE(comes_true([&] { return running_threads() == before + 4; }));

    threads_left = 1 << 30;
    handle_pair next(4);
    ASSERT_TRUE(next.complete());
    EXPECT_EQ(trip.encode(with.encoder), 0u);
    EXPECT_EQ(trip.stream(), stream);
    EXPECT_EQ(trip.encode(next.encoder), 0u);
    EXPECT_EQ(trip.stream(), stream);
    EXPECT_EQ(trip.decode(next.decoder), 0u);
    EXPECT_EQ(trip.came_back(), came_back);
}

INSTANTIATE_TEST_SUITE_P(at_each_index, thread_limit, testing::Values(0, 1, 2, 3));

}  // namespace
