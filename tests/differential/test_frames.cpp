// SPDX-License-Identifier: BSD-3-Clause
#include "compare.h"
#include "generate.h"
#include "harness.h"
#include "streams.h"

using namespace differential;

namespace {

model::bytes content_for(rng& random, const model::frame_params& frame, std::size_t size) {
    return frame.type == 2 ? raw_content_16(random, size) : raw_content(random, size);
}

// The stream of a random frame, or nothing when the frame cannot be encoded.
model::bytes own_stream(rng& random, std::uint64_t number, const model::stream_params& stream) {
    const model::frame_params frame = encodable_frame(random, number);
    const model::exact size = model::uncompressed_size_exact(frame);
    if (size > 200000) {
        return {};
    }
    const model::bytes source = content_for(random, frame, static_cast<std::size_t>(size));
    static const std::uint8_t nothing = 0;
    try {
        return model::encode_frame(frame, stream, {source.empty() ? &nothing : source.data(), source.size()},
                                   0xFFFFFFFFu);
    } catch (const model::failure&) {
        return {};
    }
}

codec& random_codec(rng& random) {
    return codec_number(random.below(4));
}

}  // namespace

TEST(differential_frames, encode) {
    run_cases(21200, [](rng& random, std::uint64_t number) {
        const model::frame_params frame = encodable_frame(random, number);
        const model::stream_params stream = random_stream(random);
        const std::size_t size = around(random, model::uncompressed_size_exact(frame));
        const std::size_t room = around(random, model::plan_frame(frame, stream).total());
        return compare_encode(random, random_codec(random), frame, stream, content_for(random, frame, size), room);
    });
}

TEST(differential_frames, encode_any_record) {
    run_cases(15000, [](rng& random, std::uint64_t) {
        model::frame_params frame = wild_frame(random);
        if (random.chance(30)) {
            (random.chance(50) ? frame.width : frame.height) = 0;
        }
        const std::size_t size = around(random, model::uncompressed_size_exact(frame));
        const std::size_t room = random.chance(50) ? random.below(200) : 5000;
        return compare_encode(random, random_codec(random), frame, random_stream(random), random.noise(size), room);
    });
}

TEST(differential_frames, decode_own_streams) {
    run_cases(21200, [](rng& random, std::uint64_t number) -> std::string {
        const model::bytes stream = own_stream(random, number, random_stream(random));
        if (stream.empty()) {
            return {};
        }
        const model::frame_params caller = caller_for(random, stream);
        const std::size_t room = around(random, model::uncompressed_size_exact(caller));
        std::string text = compare_decode(random, random_codec(random), caller, stream, room);
        return text.empty() && number % 8 == 0 ? compare_metadata(random, random_codec(random), stream) : text;
    });
}

TEST(differential_frames, decode_foreign_streams) {
    run_cases(25000, [](rng& random, std::uint64_t number) {
        model::bytes stream = serialise(foreign_frame(random));
        if (random.chance(10)) {
            const model::bytes more = random.noise(random.below(40));
            stream.insert(stream.end(), more.begin(), more.end());
        }
        const model::frame_params caller = caller_for(random, stream);
        const std::size_t room = around(random, model::uncompressed_size_exact(caller));
        std::string text = compare_decode(random, random_codec(random), caller, stream, room);
        return text.empty() && number % 8 == 0 ? compare_metadata(random, random_codec(random), stream) : text;
    });
}

TEST(differential_frames, decode_damaged_streams) {
    run_cases(35000, [](rng& random, std::uint64_t) {
        box_node tree = foreign_frame(random);
        const std::uint32_t times = random.between(0, 2);
        for (std::uint32_t i = 0; i < times; ++i) {
            damage_tree(random, tree);
        }
        model::bytes stream = serialise(tree);
        const bool same_caller = random.chance(50);
        model::frame_params caller = caller_for(random, stream);
        for (std::uint32_t i = times; i < 2; ++i) {
            damage_bytes(random, stream);
        }
        if (!same_caller) {
            caller = caller_for(random, stream);
        }
        const std::size_t room = around(random, model::uncompressed_size_exact(caller));
        codec& handles = random_codec(random);
        std::string text = compare_decode(random, handles, caller, stream, room);
        return text.empty() ? compare_metadata(random, handles, stream) : text;
    });
}

TEST(differential_frames, decode_into_any_record) {
    run_cases(20000, [](rng& random, std::uint64_t number) {
        const model::bytes stream =
            number % 2 == 0 ? own_stream(random, number, random_stream(random)) : serialise(foreign_frame(random));
        model::frame_params caller = wild_frame(random);
        if (random.chance(50)) {
            const model::frame_params fitting = caller_for(random, stream);
            caller.width = fitting.width;
            caller.height = fitting.height;
            caller.row_bytes = 0;
            caller.row_bytes2 = 0;
        }
        const std::size_t room = around(random, model::uncompressed_size_exact(caller));
        return compare_decode(random, random_codec(random), caller, stream, room);
    });
}

TEST(differential_frames, decode_damaged_alpha) {
    run_cases(40000, [](rng& random, std::uint64_t) {
        static const std::vector<std::uint32_t> orders = {14, 14, 13, 3, 4, 7, 8, 11, 12, 15, 16};
        model::frame_params frame;
        frame.order = random.pick(orders);
        frame.type = random.between(1, 2);
        frame.width = random.between(1, 14);
        frame.height = random.between(1, 14);
        random_strides(random, frame, 0);
        std::vector<model::code> codes = model::format_planes(frame.order, frame.type);
        codes.back() = "rl" + codes.back().substr(2);
        model::frame_plan plan;
        std::vector<model::bytes> payloads;
        for (const model::code& code : codes) {
            const bool half =
                model::role_of(code) == model::plane_role::cb || model::role_of(code) == model::plane_role::cr;
            const std::uint32_t width = half ? (frame.width + 1) / 2 : frame.width;
            const std::uint32_t height = half ? (frame.height + 1) / 2 : frame.height;
            plan.planes.push_back({code, width, height, 0, 0});
            payloads.push_back(model::is_coded_alpha(code)
                                   ? rle_payload(random, width, height, model::bits_of_code(code), random.chance(60))
                                   : random.noise(static_cast<std::size_t>(model::row_bytes(code, width) * height)));
        }
        model::bytes stream = model::write_frame(plan, {}, payloads, {});
        if (random.chance(10)) {
            // Bytes that the frame does not name, but the source holds.
            const model::bytes more = random.noise(random.below(20));
            stream.insert(stream.end(), more.begin(), more.end());
        }
        const auto room = static_cast<std::size_t>(model::uncompressed_size_exact(frame));
        return compare_decode(random, random_codec(random), frame, stream, room);
    });
}
