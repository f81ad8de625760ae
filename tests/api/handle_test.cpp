// SPDX-License-Identifier: BSD-3-Clause
//
// Creating and destroying handles, the version, and where the messages go.
#include <gtest/gtest.h>

#include <dirent.h>
#include <sys/sysinfo.h>

#include <stdexcept>
#include <string>
#include <thread>

#include "codec.h"
#include "comes_true.h"
#include "guarded_buffer.h"

namespace {

using namespace test;

size_t thread_count_of_this_process() {
    size_t count = 0;
    if (DIR* tasks = opendir("/proc/self/task")) {
        while (const dirent* entry = readdir(tasks)) {
            count += entry->d_name[0] != '.' ? 1 : 0;
        }
        closedir(tasks);
    }
    return count;
}

// A sanitizer may add a thread of its own with the first one that is made.
void start_background_threads() {
    std::thread([] {}).join();
}

TEST(version, is_2_7_4_build_670_r) {
    uint32_t major = 0;
    uint32_t minor = 0;
    uint32_t patch = 0;
    uint32_t build = 0;
    char release = 0;
    QVRUncompressed_GetVersion(&major, &minor, &patch, &build, &release);
    EXPECT_EQ(major, 2u);
    EXPECT_EQ(minor, 7u);
    EXPECT_EQ(patch, 4u);
    EXPECT_EQ(build, 670u);
    EXPECT_EQ(release, 'r');
}

TEST(version, with_all_pointers_null_does_nothing) {
    QVRUncompressed_GetVersion(nullptr, nullptr, nullptr, nullptr, nullptr);
}

TEST(version, fills_whichever_pointers_are_not_null) {
    for (unsigned mask = 0; mask < 32; ++mask) {
        SCOPED_TRACE(mask);
        uint32_t numbers[4] = {9, 9, 9, 9};
        char release = '-';
        QVRUncompressed_GetVersion((mask & 1) != 0 ? &numbers[0] : nullptr, (mask & 2) != 0 ? &numbers[1] : nullptr,
                                   (mask & 4) != 0 ? &numbers[2] : nullptr, (mask & 8) != 0 ? &numbers[3] : nullptr,
                                   (mask & 16) != 0 ? &release : nullptr);
        EXPECT_EQ(numbers[0], (mask & 1) != 0 ? 2u : 9u);
        EXPECT_EQ(numbers[1], (mask & 2) != 0 ? 7u : 9u);
        EXPECT_EQ(numbers[2], (mask & 4) != 0 ? 4u : 9u);
        EXPECT_EQ(numbers[3], (mask & 8) != 0 ? 670u : 9u);
        EXPECT_EQ(release, (mask & 16) != 0 ? 'r' : '-');
    }
}

TEST(handles, destroying_null_is_harmless) {
    QVRUncompressed_DestroyEncoder(nullptr);
    QVRUncompressed_DestroyDecoder(nullptr);
}

TEST(handles, a_null_configuration_gives_the_default_one) {
    QVRUncompressed_Encoder made_encoder = nullptr;
    QVRUncompressed_Decoder made_decoder = nullptr;
    EXPECT_EQ(QVRUncompressed_CreateEncoder(nullptr, &made_encoder), 0u);
    EXPECT_EQ(QVRUncompressed_CreateDecoder(nullptr, &made_decoder), 0u);
    EXPECT_NE(made_encoder, nullptr);
    EXPECT_NE(made_decoder, nullptr);
    QVRUncompressed_DestroyEncoder(made_encoder);
    QVRUncompressed_DestroyDecoder(made_decoder);
}

template <class handle_type>
void expect_creation_checks(uint32_t (*create)(const QVRUncompressed_CodecConfig_t*, handle_type*),
                            void (*destroy)(handle_type)) {
    QVRUncompressed_CodecConfig_t config = config_record(1);
    for (const uint64_t size : {uint64_t{0}, uint64_t{27}, uint64_t{29}, uint64_t{0x10000001c}, ~uint64_t{0}}) {
        config.size = size;
        handle_type handle = nullptr;
        EXPECT_EQ(create(&config, &handle), 3u) << size;
        EXPECT_EQ(handle, nullptr);
        // The output pointer is tested first.
        EXPECT_EQ(create(&config, nullptr), 2u) << size;
    }
    EXPECT_EQ(create(nullptr, nullptr), 2u);
    config.size = 28;
    EXPECT_EQ(create(&config, nullptr), 2u);
    handle_type handle = nullptr;
    EXPECT_EQ(create(&config, &handle), 0u);
    EXPECT_NE(handle, nullptr);
    destroy(handle);
}

TEST(handles, creation_checks_the_output_pointer_then_the_size_field) {
    expect_creation_checks(&QVRUncompressed_CreateEncoder, &QVRUncompressed_DestroyEncoder);
    expect_creation_checks(&QVRUncompressed_CreateDecoder, &QVRUncompressed_DestroyDecoder);
}

TEST(handles, thread_count_1_starts_no_thread) {
    start_background_threads();
    const size_t before = thread_count_of_this_process();
    const encoder an_encoder(1);
    const decoder a_decoder(1);
    EXPECT_EQ(thread_count_of_this_process(), before);
}

TEST(handles, other_thread_counts_start_as_many_threads_and_destroying_ends_them) {
    start_background_threads();
    const size_t before = thread_count_of_this_process();
    {
        const encoder an_encoder(2);
        EXPECT_EQ(thread_count_of_this_process(), before + 2);
        const decoder a_decoder(5);
        EXPECT_EQ(thread_count_of_this_process(), before + 7);
    }
    // A joined thread may linger in the process's list for a moment.
    EXPECT_TRUE(comes_true([&] { return thread_count_of_this_process() == before; }));
}

TEST(handles, thread_count_0_starts_a_thread_for_each_processor) {
    start_background_threads();
    const size_t processors = static_cast<size_t>(get_nprocs());
    const size_t before = thread_count_of_this_process();
    const encoder an_encoder(0);
    EXPECT_EQ(thread_count_of_this_process(), before + (processors == 1 ? 0 : processors));
}

TEST(handles, keep_a_copy_of_the_configuration) {
    message_list messages;
    QVRUncompressed_CodecConfig_t config = config_record(1, &messages, record_message);
    QVRUncompressed_Encoder handle = nullptr;
    ASSERT_EQ(QVRUncompressed_CreateEncoder(&config, &handle), 0u);
    config = config_record(99);
    config.size = 0;
    const frame_params up = frame_record(14, 1, 2, 1);
    const stream_params cp = raw_alpha();
    uint8_t buffer[64] = {};
    EXPECT_EQ(QVRUncompressed_EncodeFrame(handle, &up, &cp, buffer, 0, buffer + 32, 32, nullptr), 1u);
    EXPECT_EQ(messages, message_list{"src size is too small"});
    QVRUncompressed_DestroyEncoder(handle);
}

TEST(handles, without_a_callback_give_the_same_statuses) {
    QVRUncompressed_Encoder quiet_encoder = nullptr;
    QVRUncompressed_Decoder quiet_decoder = nullptr;
    ASSERT_EQ(QVRUncompressed_CreateEncoder(nullptr, &quiet_encoder), 0u);
    ASSERT_EQ(QVRUncompressed_CreateDecoder(nullptr, &quiet_decoder), 0u);
    frame_params up = frame_record(14, 1, 2, 1);
    const stream_params cp = raw_alpha();
    uint8_t buffer[64] = {};
    uint32_t written = k_untouched;
    EXPECT_EQ(QVRUncompressed_EncodeFrame(quiet_encoder, &up, &cp, buffer, 0, buffer + 8, 56, &written), 1u);
    EXPECT_EQ(QVRUncompressed_EncodeFrame(quiet_encoder, nullptr, &cp, buffer, 2, buffer + 8, 56, &written), 2u);
    EXPECT_EQ(QVRUncompressed_DecodeFrame(quiet_decoder, &up, buffer, 7, buffer + 8, 56, &written), 1u);
    EXPECT_EQ(QVRUncompressed_ReadMetadata(quiet_decoder, buffer, 64, &up), 1u);
    up.size = 35;
    EXPECT_EQ(QVRUncompressed_ReadMetadata(quiet_decoder, buffer, 64, &up), 3u);
    EXPECT_EQ(written, k_untouched);
    QVRUncompressed_DestroyEncoder(quiet_encoder);
    QVRUncompressed_DestroyDecoder(quiet_decoder);
}

TEST(callback, is_not_called_for_null_pointers_and_wrong_size_fields) {
    encoder with;
    frame_params up = frame_record(14, 1, 2, 1);
    const stream_params cp = raw_alpha();
    uint8_t buffer[64] = {};
    EXPECT_EQ(QVRUncompressed_EncodeFrame(with.handle(), &up, &cp, nullptr, 2, buffer, 64, nullptr), 2u);
    up.size = 37;
    EXPECT_EQ(QVRUncompressed_EncodeFrame(with.handle(), &up, &cp, buffer, 2, buffer + 8, 56, nullptr), 3u);
    EXPECT_EQ(with.messages(), message_list{});
}

struct callback_record {
    std::thread::id thread;
    int calls = 0;
};

void record_thread(const char* message, void* user_data) {
    auto* record = static_cast<callback_record*>(user_data);
    record->thread = std::this_thread::get_id();
    record->calls += message != nullptr ? 1 : 100;
}

// A slice of this stream is broken, so the failure happens on a worker thread where there are workers.
bytes stream_with_a_broken_slice() {
    return from_hex(
        "3d000000 'pack' 15000000 'sinf' 01000000 05000000 'rl08' 00 "
        "20000000 'sdat' 05bffffe c90017ff ffd92000 60606060 00000000 00000000");
}

TEST(callback, runs_on_the_calling_thread_even_when_a_worker_failed) {
    for (const uint32_t threads : {1u, 2u, 8u}) {
        SCOPED_TRACE(threads);
        callback_record seen;
        const QVRUncompressed_CodecConfig_t config = config_record(threads, &seen, record_thread);
        QVRUncompressed_Decoder handle = nullptr;
        ASSERT_EQ(QVRUncompressed_CreateDecoder(&config, &handle), 0u);
        const frame_params up = frame_record(14, 1, 1, 5);
        const bytes stream = stream_with_a_broken_slice();
        uint8_t target[5] = {};
        EXPECT_EQ(QVRUncompressed_DecodeFrame(handle, &up, stream.data(), static_cast<uint32_t>(stream.size()), target,
                                              5, nullptr),
                  1u);
        EXPECT_EQ(seen.calls, 1);
        EXPECT_EQ(seen.thread, std::this_thread::get_id());
        QVRUncompressed_DestroyDecoder(handle);
    }
}

void throw_runtime_error(const char* message, void* user_data) {
    ++*static_cast<int*>(user_data);
    throw std::runtime_error(message);
}

void throw_number(const char*, void* user_data) {
    ++*static_cast<int*>(user_data);
    throw 42;
}

// What a handle is asked to do, each way bound to fail: the error callback throws each time.
struct failing_call {
    const char* name;
    uint32_t (*make)(QVRUncompressed_Encoder, QVRUncompressed_Decoder, uint8_t*, uint32_t*);
};

const failing_call k_failing_calls[] = {
    {"encode",
     [](QVRUncompressed_Encoder with, QVRUncompressed_Decoder, uint8_t* buffer, uint32_t* written) {
         const frame_params up = frame_record(14, 1, 2, 1);
         const stream_params cp = raw_alpha();
         return QVRUncompressed_EncodeFrame(with, &up, &cp, buffer, 1, buffer + 8, 56, written);
     }},
    {"encode and wrap",
     [](QVRUncompressed_Encoder with, QVRUncompressed_Decoder, uint8_t* buffer, uint32_t* written) {
         const frame_params up = frame_record(14, 1, 2, 1);
         const stream_params cp = raw_alpha();
         const wrap_params record = wrap_record(1, 4);
         const uint8_t* const payload = buffer;
         return QVRUncompressed_EncodeAndWrapFrame(with, &up, &cp, &record, 1, buffer, 2, &payload, buffer + 8, 56,
                                                   written);
     }},
    {"read metadata",
     [](QVRUncompressed_Encoder, QVRUncompressed_Decoder with, uint8_t* buffer, uint32_t*) {
         frame_params up = frame_record(14, 1, 2, 1);
         return QVRUncompressed_ReadMetadata(with, buffer, 7, &up);
     }},
    {"read wrap metadata",
     [](QVRUncompressed_Encoder, QVRUncompressed_Decoder with, uint8_t* buffer, uint32_t*) {
         frame_params up = frame_record(14, 1, 2, 1);
         wrap_params record = wrap_record(0, 0);
         return QVRUncompressed_ReadWrapMetadata(with, buffer, 7, &up, &record, 1);
     }},
    {"decode",
     [](QVRUncompressed_Encoder, QVRUncompressed_Decoder with, uint8_t* buffer, uint32_t* written) {
         const frame_params up = frame_record(14, 1, 2, 1);
         return QVRUncompressed_DecodeFrame(with, &up, buffer, 7, buffer + 8, 8, written);
     }},
    {"decode and unwrap",
     [](QVRUncompressed_Encoder, QVRUncompressed_Decoder with, uint8_t* buffer, uint32_t* written) {
         const frame_params up = frame_record(14, 1, 2, 1);
         const wrap_params record = wrap_record(2, 4);
         uint8_t* const payload = buffer + 32;
         return QVRUncompressed_DecodeAndUnwrapFrame(with, &up, &record, 1, buffer, 7, buffer + 8, 8, &payload,
                                                     written);
     }},
    {"decode a slice",
     [](QVRUncompressed_Encoder, QVRUncompressed_Decoder with, uint8_t* buffer, uint32_t* written) {
         const frame_params up = frame_record(14, 1, 1, 5);
         const bytes stream = stream_with_a_broken_slice();
         return QVRUncompressed_DecodeFrame(with, &up, stream.data(), static_cast<uint32_t>(stream.size()), buffer, 5,
                                            written);
     }},
};

void expect_good_calls(QVRUncompressed_Encoder out, QVRUncompressed_Decoder in) {
    const frame_params up = frame_record(14, 1, 4, 2);
    const stream_params cp = coded_alpha(2);
    const bytes src = counting(8);
    uint8_t stream[2048];
    uint8_t raw[8] = {};
    uint32_t written = 0;
    EXPECT_EQ(QVRUncompressed_EncodeFrame(out, &up, &cp, src.data(), 8, stream, sizeof stream, &written), 0u);
    EXPECT_EQ(QVRUncompressed_DecodeFrame(in, &up, stream, written, raw, 8, nullptr), 0u);
    EXPECT_EQ(to_hex(raw, 8), to_hex(src));
}

TEST(callback, that_throws_is_swallowed_and_the_status_stands) {
    for (const QVRUncompressed_ErrorCallback_t callback : {&throw_runtime_error, &throw_number}) {
        for (const uint32_t threads : {1u, 3u}) {
            int calls = 0;
            const QVRUncompressed_CodecConfig_t config = config_record(threads, &calls, callback);
            QVRUncompressed_Encoder out = nullptr;
            QVRUncompressed_Decoder in = nullptr;
            ASSERT_EQ(QVRUncompressed_CreateEncoder(&config, &out), 0u);
            ASSERT_EQ(QVRUncompressed_CreateDecoder(&config, &in), 0u);
            for (const failing_call& call : k_failing_calls) {
                SCOPED_TRACE(call.name);
                uint8_t buffer[64] = {};
                uint32_t written = k_untouched;
                calls = 0;
                EXPECT_EQ(call.make(out, in, buffer, &written), 1u);
                EXPECT_EQ(call.make(out, in, buffer, &written), 1u);
                EXPECT_EQ(calls, 2);
                EXPECT_EQ(written, k_untouched);
                expect_good_calls(out, in);
            }
            QVRUncompressed_DestroyEncoder(out);
            QVRUncompressed_DestroyDecoder(in);
        }
    }
}

}  // namespace
