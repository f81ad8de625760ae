// SPDX-License-Identifier: BSD-3-Clause
#include <algorithm>

#include "compare.h"
#include "generate.h"
#include "harness.h"
#include "streams.h"

using namespace differential;

namespace {

codec& random_codec(rng& random) {
    return codec_number(random.below(4));
}

struct known_id {
    std::uint32_t id;
    std::uint32_t width;
    std::uint32_t height;
    std::uint32_t layout;
};

const known_id fixed_ids[] = {
    {1235, 1920, 1080, 0}, {1237, 1920, 1080, 0}, {1238, 1920, 1080, 0}, {1253, 1920, 1080, 0}, {1256, 1920, 1080, 0},
    {1241, 1920, 1080, 1}, {1242, 1920, 1080, 1}, {1243, 1920, 1080, 1}, {1244, 1440, 1080, 1}, {1259, 1440, 1080, 0},
    {1260, 1440, 1080, 1}, {1250, 1280, 720, 0},  {1251, 1280, 720, 0},  {1252, 1280, 720, 0},  {1258, 960, 720, 0}};

// A frame of the compressed codec, as far as its header is read.
model::bytes qcx_payload(rng& random, std::uint32_t id, std::uint32_t width, std::uint32_t height, bool valid) {
    model::bytes data = random.noise(random.chance(90) || valid ? random.between(45, 90) : random.below(46));
    const auto set = [&](std::size_t place, std::uint32_t value) {
        if (place < data.size()) {
            data[place] = static_cast<std::uint8_t>(value & 0xFF);
        }
    };
    set(7, valid || random.chance(95) ? random.byte() & 0xFEu : 1u);
    set(24, height >> 8);
    set(25, height);
    set(26, width >> 8);
    set(27, width);
    set(40, valid || random.chance(97) ? 0 : random.byte());
    set(41, 0);
    set(42, id >> 8);
    set(43, id);
    return data;
}

std::uint32_t header_sized_id(rng& random) {
    static const std::vector<std::uint32_t> ids = {1270, 1271, 1272, 1273, 1274, 1300, 1301};
    return random.pick(ids);
}

model::frame_params alpha_frame(rng& random) {
    model::frame_params frame;
    frame.order = 14;
    frame.type = random.between(1, 2);
    frame.width = small_dimension(random);
    frame.height = small_dimension(random);
    random_strides(random, frame, 2);
    return frame;
}

// A little of everything that the plan of a wrapped frame refuses.
void spoil(rng& random, wrap_case& input) {
    switch (random.below(6)) {
        case 0:
            input.frame = wild_frame(random);
            break;
        case 1:
            input.frame.order = random.below(18);
            break;
        case 2:
            input.frame.type = random.below(8);
            break;
        case 3:
            input.wraps[random.below(input.wraps.size())].type = wild_value(random);
            break;
        case 4:
            input.frame.frame_layout = wild_value(random);
            break;
        default:
            input.null_source = true;
            break;
    }
}

model::bytes payload_for(rng& random, const wrap_case& input, std::uint32_t type) {
    if (type != 1) {
        return random.noise(random.below(70));
    }
    if (random.chance(8)) {
        const std::uint32_t id = random.chance(50) ? fixed_ids[random.below(15)].id : random.between(1230, 1305);
        return qcx_payload(random, id, input.frame.width, input.frame.height, false);
    }
    const std::uint32_t off = random.chance(3) ? 1 : 0;
    return qcx_payload(random, header_sized_id(random), input.frame.width + off, input.frame.height, random.chance(80));
}

wrap_case random_wrap(rng& random) {
    wrap_case input;
    input.frame = alpha_frame(random);
    input.stream = random_stream(random);
    const std::uint32_t type = random.chance(85) ? random.between(1, 2) : random.below(5);
    input.count = type == 1 && random.chance(95) ? 1 : random.below(5);
    if (type == 2) {
        input.frame.frame_layout = random.below(2);
    }
    for (std::uint32_t i = 0; i < input.count || i == 0; ++i) {
        input.payloads.push_back(payload_for(random, input, type));
        input.wraps.push_back({type, static_cast<std::uint32_t>(input.payloads.back().size())});
    }
    if (random.chance(12)) {
        spoil(random, input);
    }
    const std::size_t size = around(random, model::uncompressed_size_exact(input.frame));
    input.source = input.frame.type == 2 ? raw_content_16(random, size) : raw_content(random, size);
    model::exact total = random.below(200);
    try {
        total = model::plan_wrapped_frame(input.frame, input.stream, input.wraps, input.count).total();
    } catch (const model::failure&) {
        // Any room will do.
    }
    input.capacity = around(random, total);
    return input;
}

// What a caller asks for after reading the metadata of a stream.
unwrap_case caller_of(rng& random, const model::bytes& stream) {
    unwrap_case input;
    input.stream = stream;
    input.frame = caller_for(random, stream);
    std::uint32_t found = 0;
    try {
        const model::wrap_metadata metadata = model::read_wrap_metadata(
            {stream.data(), stream.size()}, model::read_wrap_count({stream.data(), stream.size()}));
        input.wraps = metadata.wraps;
        found = static_cast<std::uint32_t>(metadata.wraps.size());
    } catch (const model::failure&) {
        // The records are made up below.
    }
    input.count = random.chance(85) ? found : random.below(4);
    while (input.wraps.size() < input.count || input.wraps.empty()) {
        input.wraps.push_back({random.below(5), random.below(60)});
    }
    if (random.chance(6)) {
        input.wraps[0].type = random.below(5);
    }
    if (random.chance(4)) {
        input.wraps[0].size += random.between(1, 9);
    }
    input.null_target = random.chance(3);
    input.capacity = around(random, model::uncompressed_size_exact(input.frame));
    return input;
}

model::bytes wrapped_stream(const wrap_case& input) {
    std::vector<model::view> payloads;
    for (const model::bytes& payload : input.payloads) {
        payloads.push_back({payload.data(), payload.size()});
    }
    static const std::uint8_t nothing = 0;
    try {
        return model::encode_and_wrap(input.frame, input.stream, input.wraps, input.count,
                                      {input.source.empty() ? &nothing : input.source.data(), input.source.size()},
                                      payloads, 0xFFFFFFFFu);
    } catch (const model::failure&) {
        return model::bytes(8, 0);
    }
}

}  // namespace

TEST(differential_wraps, wrap) {
    run_cases(20000, [](rng& random, std::uint64_t) {
        const wrap_case input = random_wrap(random);
        return compare_wrap(random, random_codec(random), input);
    });
}

TEST(differential_wraps, wrap_frames_of_fixed_sizes) {
    run_cases(
        15,
        [](rng& random, std::uint64_t number) {
            const known_id& known = fixed_ids[number % 15];
            wrap_case input;
            input.frame.order = 14;
            input.frame.type = 1;
            input.frame.width = known.width;
            input.frame.height = known.height;
            input.frame.frame_layout = known.layout;
            input.stream = {static_cast<std::uint8_t>(random.below(2)), static_cast<std::uint8_t>(random.below(32))};
            input.count = 1;
            input.payloads.push_back(qcx_payload(random, known.id, 7, 9, true));
            input.wraps.push_back({1, static_cast<std::uint32_t>(input.payloads[0].size())});
            input.source = raw_content(random, std::size_t(known.width) * known.height);
            input.capacity = static_cast<std::size_t>(
                model::plan_wrapped_frame(input.frame, input.stream, input.wraps, input.count).total());
            std::string text = compare_wrap(random, random_codec(random), input);
            input.frame.frame_layout = 1 - known.layout;
            text += compare_wrap(random, random_codec(random), input);
            return text;
        },
        60);
}

TEST(differential_wraps, unwrap_own_streams) {
    run_cases(20000, [](rng& random, std::uint64_t number) -> std::string {
        wrap_case made = random_wrap(random);
        made.source.resize(
            static_cast<std::size_t>(std::min<model::exact>(model::uncompressed_size_exact(made.frame), 100000)));
        const model::bytes stream = wrapped_stream(made);
        codec& handles = random_codec(random);
        const std::string text = compare_unwrap(random, handles, caller_of(random, stream));
        return text.empty() && number % 4 == 0 ? compare_metadata(random, handles, stream) : text;
    });
}

TEST(differential_wraps, unwrap_damaged_streams) {
    run_cases(25000, [](rng& random, std::uint64_t) {
        model::bytes stream;
        if (random.chance(40)) {
            stream = wrapped_stream(random_wrap(random));
        } else {
            box_node tree = foreign_frame(random);
            if (random.chance(60)) {
                tree.children.push_back({"QCXF", random.noise(random.below(50)), {}, {}, false, 0});
            }
            for (std::uint32_t i = random.below(3); i > 0; --i) {
                damage_tree(random, tree);
            }
            stream = serialise(tree);
        }
        unwrap_case input = caller_of(random, stream);
        if (random.chance(50)) {
            damage_bytes(random, stream);
            input.stream = stream;
            if (random.chance(50)) {
                input = caller_of(random, stream);
            }
        }
        codec& handles = random_codec(random);
        const std::string text = compare_unwrap(random, handles, input);
        return text.empty() ? compare_metadata(random, handles, stream) : text;
    });
}
