// SPDX-License-Identifier: BSD-3-Clause
#include "compare.h"
#include "harness.h"
#include "streams.h"

// Cases that random input meets too seldom.

using namespace differential;

namespace {

model::frame_params frame(std::uint32_t order, std::uint32_t type, std::uint32_t width, std::uint32_t height) {
    model::frame_params params;
    params.order = order;
    params.type = type;
    params.width = width;
    params.height = height;
    return params;
}

box_node box(const std::string& type, const model::bytes& head) {
    box_node node;
    node.type = type;
    node.head = head;
    return node;
}

box_node sinf(const std::string& code, std::uint32_t width, std::uint32_t height) {
    model::bytes fields;
    model::put_u32(fields, width);
    model::put_u32(fields, height);
    fields.insert(fields.end(), code.begin(), code.end());
    fields.push_back(0);
    return box("sinf", fields);
}

box_node pack(const std::vector<box_node>& children) {
    box_node node = box("pack", {});
    node.children = children;
    return node;
}

box_node group(const std::vector<box_node>& children) {
    box_node node = box("icmp", {});
    node.children = children;
    return node;
}

model::bytes bits(const std::string& text) {
    model::bytes data((text.size() + 7) / 8, 0);
    for (std::size_t i = 0; i < text.size(); ++i) {
        data[i / 8] = static_cast<std::uint8_t>(data[i / 8] | ((text[i] == '1' ? 128u : 0u) >> (i % 8)));
    }
    return data;
}

std::string repeated(char bit, std::size_t count) {
    return std::string(count, bit);
}

// On every thread count.
void expect_same_decode(const model::frame_params& caller, const model::bytes& stream, std::size_t room) {
    rng random(1);
    for (std::uint32_t i = 0; i < 4; ++i) {
        EXPECT_EQ(compare_decode(random, codec_number(i), caller, stream, room), "");
    }
    EXPECT_EQ(compare_metadata(random, codec_number(0), stream), "");
}

void expect_same_encode(const model::frame_params& caller, const model::stream_params& stream, std::size_t size,
                        std::size_t room) {
    rng random(1);
    for (std::uint32_t i = 0; i < 4; ++i) {
        EXPECT_EQ(compare_encode(random, codec_number(i), caller, stream, random.noise(size), room), "");
    }
}

}  // namespace

TEST(differential_corners, payload_sizes_past_64_bits) {
    for (const char* code : {" rgf", "rg08", " a16", "y2S1"}) {
        expect_same_decode(frame(5, 7, 0xFFFFFFFFu, 0),
                           serialise(pack({sinf(code, 0xFFFFFFFFu, 0xFFFFFFFFu), box("sdat", {})})), 10);
        expect_same_decode(frame(5, 7, 0xFFFFFFFFu, 0),
                           serialise(pack({sinf(code, 0x55555556u, 0x40000000u), box("sdat", {})})), 10);
    }
}

TEST(differential_corners, frames_without_samples) {
    for (std::uint32_t order = 1; order <= 16; ++order) {
        for (const std::uint32_t type : {1u, 2u, 3u, 4u, 5u, 6u, 7u, 214u}) {
            for (const std::uint32_t large : {0u, 2u, 0xFFFFFFFEu, 0xFFFFFFFFu}) {
                for (const model::stream_params stream : {model::stream_params{0, 3}, model::stream_params{1, 3}}) {
                    expect_same_encode(frame(order, type, 0, large), stream, 0, 4000);
                    expect_same_encode(frame(order, type, large, 0), stream, 0, 4000);
                }
            }
        }
    }
}

TEST(differential_corners, decoded_frames_without_samples) {
    for (std::uint32_t order = 1; order <= 16; ++order) {
        for (const std::uint32_t type : {1u, 2u, 3u, 4u, 5u, 6u, 7u, 214u}) {
            if (!model::is_supported_pair(order, type)) {
                continue;
            }
            for (const std::uint32_t large : {0u, 3u, 0xFFFFFFFFu}) {
                for (const bool wide : {false, true}) {
                    const std::uint32_t width = wide ? large : 0;
                    const std::uint32_t height = wide ? 0 : large;
                    model::frame_plan plan;
                    for (const model::code& code : model::format_planes(order, type)) {
                        const bool half = model::role_of(code) == model::plane_role::cb ||
                                          model::role_of(code) == model::plane_role::cr;
                        plan.planes.push_back({code, half ? width / 2 + width % 2 : width,
                                               half ? height / 2 + height % 2 : height, 0, 0});
                    }
                    const std::vector<model::bytes> none(plan.planes.size());
                    expect_same_decode(frame(order, type, width, height), model::write_frame(plan, {}, none, {}), 9);
                }
            }
        }
    }
}

TEST(differential_corners, stitched_payload_that_runs_past_the_frame) {
    for (std::uint32_t claimed = 8; claimed < 80; ++claimed) {
        box_node sdat = box("sdat", {});
        sdat.children = {box("stch", {1, 2, 3}), box("tile", {4})};
        sdat.lies = true;
        sdat.claimed = claimed;
        model::bytes stream = serialise(pack({sinf("stch", 2, 2), sdat}));
        expect_same_decode(frame(5, 1, 2, 2), stream, 20);
        stream.insert(stream.end(), 40, 0);
        expect_same_decode(frame(5, 1, 2, 2), stream, 20);
    }
}

TEST(differential_corners, stitched_unwrap_with_a_count_of_zero) {
    box_node sdat = box("sdat", {});
    const model::bytes empty = serialise(pack({sinf("stch", 2, 2), sdat}));
    sdat.children = {box("stch", {1, 2, 3})};
    const model::bytes one = serialise(pack({sinf("stch", 2, 2), sdat}));
    rng random(1);
    for (const model::bytes& stream : {empty, one}) {
        for (const std::uint32_t size : {3u, 4u}) {
            for (const std::uint32_t count : {0u, 1u, 2u}) {
                unwrap_case input;
                input.frame = frame(0, 0, 2, 2);
                input.wraps = {{2, size}, {2, size}};
                input.count = count;
                input.stream = stream;
                input.null_target = true;
                EXPECT_EQ(compare_unwrap(random, codec_number(0), input), "");
            }
        }
    }
}

TEST(differential_corners, unwrap_of_alpha_that_does_not_match) {
    rng random(1);
    for (const char* code : {" a16", " a08", "rl08"}) {
        for (const std::uint32_t height : {1u, 2u}) {
            for (const std::uint32_t claimed : {8u, 13u, 500u}) {
                box_node qcx = box("QCXF", {1, 2, 3, 4, 5});
                qcx.lies = true;
                qcx.claimed = claimed;
                box_node pixels = group({sinf("rg08", 1, 1), box("sdat", {7, 8, 9})});
                box_node alpha = group({sinf(code, 1, height), box("sdat", {0, 1, 2, 3, 4})});
                unwrap_case input;
                input.frame = frame(5, 1, 1, 1);
                input.wraps = {{1, claimed - 8}};
                input.count = 1;
                input.stream = serialise(pack({pixels, alpha, qcx}));
                input.capacity = 3;
                EXPECT_EQ(compare_unwrap(random, codec_number(0), input), "");
            }
        }
    }
}

TEST(differential_corners, run_lengths_and_groups_of_33_bits) {
    const std::string one_slice = "00000001";
    const std::string sizes =
        "1"
        "0"
        "111111111111111111111101";  // one value
    const std::string none = repeated('0', 32) + repeated('0', 33) +
                             "1"
                             "0"
                             "0000000000";
    const std::string wide = repeated('0', 32) + "1" + repeated('0', 31) + "1" +
                             "1"
                             "0"
                             "0000000000";
    const std::string rows_of_one =
        "1"
        "0"
        "111111111111111111111011";
    for (const std::string& group_bits : {std::string(), none, wide}) {
        std::string text = one_slice + group_bits + sizes + rows_of_one;
        text += repeated('0', (8 - text.size() % 8) % 8);
        for (const std::string& token : {std::string("0"
                                                     "00100"
                                                     "1"
                                                     "000"),
                                         "0" + repeated('0', 65) +
                                             "1000"
                                             "0001001000",
                                         "0" + repeated('0', 32) + "1" + repeated('0', 29) +
                                             "100"
                                             "1000"}) {
            const model::bytes payload = bits(text + token + repeated('0', 8));
            expect_same_decode(frame(14, 1, 4, 1), serialise(pack({sinf("rl08", 4, 1), box("sdat", payload)})), 4);
        }
    }
}

TEST(differential_corners, foreign_rows_of_odd_width) {
    rng random(1);
    for (const std::uint32_t order : {1u, 2u, 11u, 15u, 16u}) {
        for (const std::uint32_t type : {1u, 2u, 3u, 4u, 5u, 6u, 7u, 214u}) {
            if (!model::is_supported_pair(order, type)) {
                continue;
            }
            for (std::uint32_t width = 1; width < 60; width += 2) {
                model::frame_plan plan;
                std::vector<model::bytes> payloads;
                for (const model::code& code : model::format_planes(order, type)) {
                    plan.planes.push_back({code, width, 3, 0, 0});
                    payloads.push_back(random.noise(static_cast<std::size_t>(model::row_bytes(code, width) * 3)));
                }
                const model::frame_params caller = frame(order, type, width, 3);
                const auto room = static_cast<std::size_t>(model::uncompressed_size_exact(caller));
                expect_same_decode(caller, model::write_frame(plan, {}, payloads, {}), room);
            }
        }
    }
}

TEST(differential_corners, every_width_of_every_pair) {
    for (const format_pair& pair : all_pairs()) {
        const std::uint32_t step = model::subsampling(pair.order) == 444 || pair.order == 14 ? 1 : 2;
        for (std::uint32_t width = step; width <= 70; width += step) {
            const model::frame_params params = frame(pair.order, pair.type, width, 2);
            const auto size = static_cast<std::size_t>(model::uncompressed_size_exact(params));
            rng random(width);
            const model::bytes raw = random.noise(size);
            codec& handles = codec_number(width);
            EXPECT_EQ(compare_encode(random, handles, params, {0, 0}, raw, 3000), "");
            const model::bytes stream = model::encode_frame(params, {0, 0}, {raw.data(), raw.size()}, 3000);
            EXPECT_EQ(compare_decode(random, handles, params, stream, size), "");
        }
    }
}
