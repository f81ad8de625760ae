// SPDX-License-Identifier: BSD-3-Clause
//
// Frames without rows or without columns: there is nothing to divide, to wait for or to write.
#include <gtest/gtest.h>

#include <vector>

#include "box_builder.h"
#include "changed.h"
#include "encode_probe.h"

namespace {

using namespace hostile;
using namespace test;

struct dimensions {
    uint32_t width;
    uint32_t height;
};

const dimensions k_empty[] = {{0, 0}, {0, 1}, {0, 2},           {0, 0x7fffffffu}, {0, 0x80000000u}, {0, 0xffffffffu},
                              {1, 0}, {2, 0}, {0x7fffffffu, 0}, {0x80000000u, 0}, {0xffffffffu, 0}};

// A frame of such planes as any encoder might write it, coded alpha with a payload of no slices.
bytes empty_stream(uint32_t order, uint32_t type, const dimensions& size, bool coded) {
    model::frame_plan plan;
    std::vector<bytes> payloads;
    for (model::code code : model::format_planes(order, type)) {
        const model::plane_role role = model::role_of(code);
        const bool half = role == model::plane_role::cb || role == model::plane_role::cr;
        const bool is_coded = coded && role == model::plane_role::alpha;
        if (is_coded) {
            code = code == " a08" ? "rl08" : "rl16";
        }
        const auto halved = [half](uint32_t value) { return half ? value / 2 + value % 2 : value; };
        plan.planes.push_back({code, halved(size.width), halved(size.height), 0, 0});
        payloads.push_back(is_coded ? bytes{0} : bytes{});
    }
    return model::write_frame(plan, {}, payloads, {});
}

class empty_frames : public testing::TestWithParam<uint32_t> {
  protected:
    const uint32_t threads_ = GetParam();
};

template <class body>
void for_each_pair(body run) {
    for (uint32_t order = 1; order <= 16; ++order) {
        for (const uint32_t type : {1u, 2u, 3u, 4u, 5u, 6u, 7u, 214u}) {
            if (model::is_supported_pair(order, type)) {
                for (const dimensions& size : k_empty) {
                    SCOPED_TRACE(testing::Message() << "order " << order << ", type " << type << ", " << size.width
                                                    << " x " << size.height);
                    run(order, type, size);
                    ASSERT_FALSE(testing::Test::HasFailure());
                }
            }
        }
    }
}

TEST_P(empty_frames, of_every_pair_are_encoded) {
    encode_prober with(threads_);
    for_each_pair([&](uint32_t order, uint32_t type, const dimensions& size) {
        for (const uint32_t stride : {0u, 40u}) {
            const frame_params up = frame_record(order, type, size.width, size.height, stride, stride);
            const model::exact raw = model::uncompressed_size_exact(to_model(up));
            const bytes source = repeat(0x33, raw <= 400 ? static_cast<size_t>(raw) : 400);
            with.ask({up, raw_alpha(), source, 3000, {}, {}});
            with.ask({up, coded_alpha(3), source, 3000, {}, {}});
        }
    });
}

TEST_P(empty_frames, of_every_pair_are_decoded) {
    prober with(threads_);
    for_each_pair([&](uint32_t order, uint32_t type, const dimensions& size) {
        for (const bool coded : {false, true}) {
            for (const uint32_t stride : {0u, 40u}) {
                const frame_params up = frame_record(order, type, size.width, size.height, stride, stride);
                with.ask({empty_stream(order, type, size, coded), up, {wrap_record(1, 0)}});
            }
        }
    });
}

// Two rows of padding alone: there is a destination, and not one byte of it is written.
TEST_P(empty_frames, of_padding_alone_are_left_untouched) {
    decoder with(threads_);
    for (uint32_t order = 1; order <= 16; ++order) {
        SCOPED_TRACE(order);
        const frame_params up = frame_record(order, 1, 0, 2, 5, 5);
        const outcome result = decode(with, up, empty_stream(order, 1, {0, 2}, false));
        expect_success(result);
        EXPECT_EQ(result.data.size(), order == 13 ? 30u : order == 10 || order >= 15 ? 20u : 10u);
        EXPECT_EQ(result.data, repeat(k_fill, result.data.size()));
    }
}

TEST_P(empty_frames, of_coded_alpha_are_refused_by_the_coder) {
    decoder with(threads_);
    encoder encoding(threads_);
    for (const uint32_t order : {3u, 4u, 7u, 8u, 11u, 12u, 13u, 14u, 15u, 16u}) {
        for (const uint32_t type : {1u, 2u}) {
            SCOPED_TRACE(testing::Message() << "order " << order << ", type " << type);
            const frame_params no_width = frame_record(order, type, 0, 4);
            const frame_params no_height = frame_record(order, type, 4, 0);
            expect_failure(decode(with, no_width, empty_stream(order, type, {0, 4}, true)), "Invalid width");
            expect_failure(decode(with, no_height, empty_stream(order, type, {4, 0}, true)), "Invalid height");
            expect_failure(encode(encoding, no_width, coded_alpha(2), {}), "Invalid width");
            expect_failure(encode(encoding, no_height, coded_alpha(2), {}), "Invalid height");
        }
    }
}

TEST_P(empty_frames, are_wrapped_and_taken_out) {
    prober with(threads_);
    encode_prober encoding(threads_);
    for (const dimensions& size : {dimensions{0, 0}, dimensions{0, 3}, dimensions{3, 0}}) {
        for (const uint32_t type : {1u, 2u}) {
            for (const uint32_t stride : {0u, 9u}) {
                const frame_params up = frame_record(14, type, size.width, size.height, stride);
                const bytes frame =
                    qcx_frame({1300, static_cast<uint16_t>(size.width), static_cast<uint16_t>(size.height), false});
                const bytes source = repeat(0x33, 30);
                EXPECT_EQ(encoding.ask({up, raw_alpha(), source, 200, {wrap_record(1, 45)}, {frame}}), "ok");
                EXPECT_EQ(encoding.ask({up, coded_alpha(2), source, 3000, {wrap_record(1, 45)}, {frame}}),
                          size.width == 0 ? "Invalid width" : "Invalid height");
                const bytes raw =
                    pack(box("QCXF", frame) + bare_plane(size.width, size.height, type == 1 ? " a08" : " a16", {}));
                EXPECT_EQ(with.ask({raw, up, {wrap_record(1, 45)}}).unwrap, "ok");
                const bytes coded =
                    pack(box("QCXF", frame) + bare_plane(size.width, size.height, type == 1 ? "rl08" : "rl16", {0}));
                EXPECT_EQ(with.ask({coded, up, {wrap_record(1, 45)}}).unwrap,
                          size.width == 0 ? "Invalid width" : "Invalid height");
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(threads, empty_frames, testing::Values(1u, 4u), testing::PrintToStringParamName());

}  // namespace
