// What happens when the machine has no thread left to give: std::thread is stood in for by a count that runs out.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <cerrno>
#include <string>
#include <system_error>

#include "QVRUncompressed.h"
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
};

void capture(const char* message, void* user_data) {
    auto& target = *static_cast<captured*>(user_data);
    ++target.calls;
    target.message = message;
}

TEST_P(thread_limit, making_a_handle_reports_it_and_leaves_the_handle_alone) {
    captured error;
    const QVRUncompressed_CodecConfig_t config = {QVRUNCOMPRESSED_CODEC_CONFIG_SIZE, 4, &error, capture};
    auto* const untouched = reinterpret_cast<QVRUncompressed_Encoder>(&error);
    QVRUncompressed_Encoder encoder = untouched;
    threads_left = GetParam();
    EXPECT_EQ(QVRUncompressed_CreateEncoder(&config, &encoder), 0u);
    EXPECT_EQ(encoder, untouched);
    EXPECT_EQ(error.calls, 1);
    EXPECT_EQ(error.message, "Resource temporarily unavailable");
}

INSTANTIATE_TEST_SUITE_P(at_each_index, thread_limit, testing::Values(0, 1, 2, 3));

}  // namespace
