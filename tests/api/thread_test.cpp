// SPDX-License-Identifier: BSD-3-Clause
//
// The same bytes for each number of threads, handles used side by side, and functions that need no handle.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "box_builder.h"
#include "codec.h"
#include "format_cases.h"
#include "random_source.h"
#include "sample_planes.h"

namespace {

using namespace test;

TEST(thread_counts, 0_1_2_3_and_8_make_the_same_raw_stream_of_each_pair) {
    random_source random;
    std::vector<std::unique_ptr<encoder>> encoders;
    for (const uint32_t threads : {1u, 0u, 2u, 3u, 8u}) {
        encoders.push_back(std::make_unique<encoder>(threads));
    }
    for (const format_case& row : all_format_cases()) {
        SCOPED_TRACE(testing::PrintToString(row));
        const frame_params up = frame_record(row.order, row.type, 66, 38);
        const bytes src = random.content(QVRUncompressed_GetUncompressedBufSize(&up));
        const outcome expected = encode(*encoders[0], up, raw_alpha(), src);
        expect_success(expected);
        for (size_t i = 1; i < encoders.size(); ++i) {
            const outcome result = encode(*encoders[i], up, raw_alpha(), src);
            expect_success(result);
            ASSERT_TRUE(result.data == expected.data) << i;
        }
    }
}

TEST(thread_counts, 0_1_2_3_and_8_make_the_same_coded_stream) {
    random_source random;
    for (const uint32_t order : {3u, 4u, 7u, 8u, 11u, 12u, 13u, 14u, 15u, 16u}) {
        for (const uint32_t type : {1u, 2u}) {
            for (const uint8_t slices : {uint8_t{0}, uint8_t{1}, uint8_t{2}, uint8_t{7}, uint8_t{200}}) {
                SCOPED_TRACE(testing::Message() << order << ", " << type << ", " << unsigned{slices});
                const frame_params up = frame_record(order, type, 66, 38);
                const bytes src = random.runs(QVRUncompressed_GetUncompressedBufSize(&up));
                std::string expected;
                for (const uint32_t threads : {1u, 0u, 2u, 3u, 8u}) {
                    encoder with(threads);
                    const outcome result = encode(with, up, coded_alpha(slices), src);
                    expect_success(result);
                    const std::string text = to_hex(result.frame());
                    ASSERT_TRUE(expected.empty() || text == expected) << threads;
                    expected = text;
                }
            }
        }
    }
}

TEST(thread_counts, do_not_change_the_message_of_a_failing_slice) {
    // The third of five slices is broken by a run that is too long, the fifth ends too early.
    const bytes stream = single_plane(1, 5, "rl08", from_hex("05bffffe c90017ff ffd92000 60602860 00"));
    for (const uint32_t threads : {1u, 2u, 3u, 8u}) {
        decoder with(threads);
        for (int i = 0; i < 100; ++i) {  // whichever thread is faster
            const outcome result = decode(with, frame_record(14, 1, 1, 5), stream);
            ASSERT_EQ(result.status, 1u);
            ASSERT_EQ(result.messages, message_list{"rle run exceeds slice"});
        }
    }
}

void encode_and_decode_often(uint32_t threads, uint32_t order, unsigned rounds, bool* good) {
    encoder out(threads);
    decoder in(threads);
    const frame_params up = frame_record(order, 1, 34, 20);
    const bytes src = counting(QVRUncompressed_GetUncompressedBufSize(&up), static_cast<uint8_t>(order));
    *good = true;
    for (unsigned i = 0; i < rounds; ++i) {
        const outcome encoded = encode(out, up, i % 2 == 0 ? coded_alpha(5) : raw_alpha(), src);
        const outcome decoded = decode(in, up, encoded.frame());
        const outcome failed = decode(in, up, bytes(3));
        *good = *good && encoded.status == 0 && decoded.status == 0 && decoded.data == src && failed.status == 1 &&
                failed.messages == message_list{"buffer size should be at least 8"};
    }
}

TEST(handles_side_by_side, work_from_different_threads_at_once) {
    bool good[6] = {};
    std::vector<std::thread> users;
    const uint32_t orders[] = {7, 11, 14, 16, 3, 12};
    for (size_t i = 0; i < 6; ++i) {
        users.emplace_back(encode_and_decode_often, static_cast<uint32_t>(1 + i % 3), orders[i], 40, &good[i]);
    }
    for (std::thread& user : users) {
        user.join();
    }
    for (const bool one : good) {
        EXPECT_TRUE(one);
    }
}

TEST(handles_side_by_side, may_move_from_thread_to_thread) {
    encoder out(3);
    decoder in(3);
    const frame_params up = frame_record(14, 1, 8, 8);
    for (uint8_t i = 0; i < 5; ++i) {
        std::thread([&] {
            const bytes src = counting(64, i);
            const outcome encoded = encode(out, up, coded_alpha(4), src);
            const outcome decoded = decode(in, up, encoded.frame());
            EXPECT_TRUE(decoded.data == src);
        }).join();
    }
}

TEST(functions_without_a_handle, may_run_at_once) {
    const bytes stream = pack(box("QCXF", counting(9)) + bare_plane(2, 1, " a08", {1, 2}));
    std::vector<std::thread> users;
    bool good[8] = {};
    for (bool& mine : good) {
        users.emplace_back([&mine, &stream] {
            mine = true;
            for (int i = 0; i < 500; ++i) {
                const frame_params up = frame_record(7, 1, 4, 2);
                const stream_params cp = raw_alpha();
                const frame_params alpha = frame_record(14, 1, 4, 2);
                const wrap_params record = wrap_record(1, 45);
                const wrap_params refused = wrap_record(0, 45);  // failures inside, too
                uint32_t major = 0;
                QVRUncompressed_GetVersion(&major, nullptr, nullptr, nullptr, nullptr);
                mine = mine && major == 2 && QVRUncompressed_GetUncompressedBufSize(&up) == 32 &&
                       QVRUncompressed_GetCompressedBufSize(&up, &cp) == 114 &&
                       QVRUncompressed_GetCompressedWrapBufSize(&alpha, &cp, &record, 1) == 98 &&
                       QVRUncompressed_GetCompressedWrapBufSize(&alpha, &cp, &refused, 1) == 0 &&
                       QVRUncompressed_ReadWrapCount(stream.data(), static_cast<uint32_t>(stream.size())) == 1 &&
                       QVRUncompressed_ReadWrapCount(stream.data(), 9) == 0;
            }
        });
    }
    for (std::thread& user : users) {
        user.join();
    }
    for (const bool one : good) {
        EXPECT_TRUE(one);
    }
}

TEST(one_handle, gives_the_same_bytes_after_larger_and_smaller_frames) {
    for (const uint32_t threads : {1u, 3u}) {
        encoder out(threads);
        decoder in(threads);
        for (const uint32_t side : {4u, 40u, 2u, 80u, 6u}) {
            for (const uint32_t order : {4u, 11u, 14u}) {
                const frame_params up = frame_record(order, 2, side, side);
                const bytes src = counting(QVRUncompressed_GetUncompressedBufSize(&up), static_cast<uint8_t>(side));
                const outcome encoded = encode(out, up, coded_alpha(3), src);
                expect_success(encoded);
                EXPECT_EQ(encoded.frame(), encode(up, coded_alpha(3), src).frame());
                const outcome decoded = decode(in, up, encoded.frame());
                expect_success(decoded);
                EXPECT_EQ(decoded.data, src);
            }
        }
    }
}

}  // namespace
