// SPDX-License-Identifier: BSD-3-Clause
//
// Writes the seed corpus: good streams of every family, made through the public functions, and damaged ones.
//
//   make_corpus FOLDER      writes FOLDER/TARGET/NAME.bin
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>

#include "box_tree.h"
#include "container/plane_types.h"
#include "frames.h"
#include "rle/threaded_rle.h"

namespace {

using namespace fuzz;

constexpr std::size_t k_largest_seed = 2000;

enum class picture { flat, ramp, noise, steps };

// Samples, one or two bytes each.
bytes make_pixels(std::size_t size, picture kind, unsigned sample_bytes) {
    std::minstd_rand random(static_cast<unsigned>(size) + 1);
    bytes pixels(size);
    for (std::size_t i = 0; i < size; ++i) {
        const std::size_t sample = i / sample_bytes;
        const std::size_t shift = i % sample_bytes * 8;
        switch (kind) {
            case picture::flat:
                pixels[i] = 0x80;
                break;
            case picture::ramp:
                pixels[i] = static_cast<std::uint8_t>((sample * 3) >> shift);
                break;
            case picture::noise:
                pixels[i] = static_cast<std::uint8_t>(random() >> 7);
                break;
            case picture::steps:
                pixels[i] = static_cast<std::uint8_t>(((sample / 9) * 40) >> shift);
                break;
        }
    }
    return pixels;
}

struct corpus {
    std::filesystem::path root;
    std::size_t files = 0;

    void add(const std::string& target, const std::string& name, bytes stream, const bytes& choices) {
        stream.insert(stream.end(), choices.begin(), choices.end());
        stream.resize(stream.size() + k_choice_bytes - choices.size(), 0);
        require(stream.size() <= k_largest_seed, "seeds are small");
        std::filesystem::create_directories(root / target);
        std::ofstream file(root / target / (name + ".bin"), std::ios::binary);
        for (const std::uint8_t byte : stream) {
            file.put(static_cast<char>(byte));
        }
        require(file.good(), "seeds can be written");
        ++files;
    }

    // A stream is of use to each target that reads streams. Choices: as stored, or in this order.
    void add_stream(const std::string& name, const bytes& stream, std::uint32_t order) {
        const auto turn = static_cast<std::uint8_t>(files);
        const std::uint8_t kind = order == 0 ? 0 : 1;
        const bytes choices = {turn, 0xff, kind, static_cast<std::uint8_t>(order), 0, 0, 0, turn};
        for (const char* target : {"metadata", "decode", "unwrap"}) {
            add(target, name, stream, choices);
        }
    }
};

bytes encode(const uncompressed_params& up, const compressed_params& cp, picture kind) {
    const unsigned sample_bytes = up.componentType == 1 ? 1 : 2;
    const bytes pixels = make_pixels(QVRUncompressed_GetUncompressedBufSize(&up), kind, sample_bytes);
    bytes stream(QVRUncompressed_GetCompressedBufSize(&up, &cp));
    std::uint32_t written = 0;
    QVRUncompressed_EncodeFrame(shared_coders(1).encoder, &up, &cp, pixels.data(),
                                static_cast<std::uint32_t>(pixels.size()), stream.data(),
                                static_cast<std::uint32_t>(stream.size()), &written);
    require(written != 0, "seeds can be encoded");
    stream.resize(written);
    return stream;
}

bytes wrap(std::uint32_t wrap_type, const std::vector<bytes>& payloads, std::uint32_t type, bool coded) {
    const uncompressed_params up = make_params(QVRUncompressed_OrderAlpha, type, 6, 4);
    const compressed_params cp = {sizeof cp, static_cast<std::uint8_t>(coded), 2};
    const bytes alpha = make_pixels(QVRUncompressed_GetUncompressedBufSize(&up), picture::ramp, type);
    std::vector<wrap_params> wraps;
    std::vector<const std::uint8_t*> sources;
    const std::uint8_t nothing = 0;
    for (const bytes& payload : payloads) {
        wraps.push_back({sizeof(wrap_params), wrap_type, static_cast<std::uint32_t>(payload.size())});
        sources.push_back(payload.empty() ? &nothing : payload.data());
    }
    const auto count = static_cast<std::uint32_t>(payloads.size());
    bytes stream(QVRUncompressed_GetCompressedWrapBufSize(&up, &cp, wraps.data(), count));
    std::uint32_t written = 0;
    QVRUncompressed_EncodeAndWrapFrame(shared_coders(1).encoder, &up, &cp, wraps.data(), count, alpha.data(),
                                       static_cast<std::uint32_t>(alpha.size()), sources.data(), stream.data(),
                                       static_cast<std::uint32_t>(stream.size()), &written);
    require(written != 0, "seeds can be wrapped");
    stream.resize(written);
    return stream;
}

bytes qcx_frame() {
    bytes frame = make_pixels(60, picture::noise, 1);
    const std::uint8_t fields[] = {0, 4, 0, 6};  // height, width
    frame[7] = 0;
    std::memcpy(frame.data() + 24, fields, sizeof fields);
    const std::uint8_t compression[] = {0, 0, 1300 >> 8, 1300 & 0xff};
    std::memcpy(frame.data() + 40, compression, sizeof compression);
    return frame;
}

// The same stream with its description changed, and data to go with it.
template <class Change>
bytes described_anew(const bytes& stream, const Change& change) {
    box_list tree = parse_boxes(stream.data(), stream.size());
    std::vector<box_list*> lists;
    collect_lists(tree, lists);
    for (box_list* list : lists) {
        for (box& each : list->boxes) {
            if (each.inside.rest.size() > k_layout_field && each.inside.boxes.empty() && each.type == fourcc("sinf")) {
                change(each.inside.rest);
            }
        }
    }
    fit_planes(tree);
    bytes changed;
    write_boxes(tree, changed);
    return changed;
}

void add_formats(corpus& seeds) {
    const compressed_params raw = {sizeof raw, 0, 0};
    for (std::uint32_t order = 1; order <= 16; ++order) {
        for (std::uint32_t i = 0; i < 3; ++i) {
            const std::uint32_t type = i == 0 ? 1 : k_types[(order * 2 + i) % k_types.size()];
            const std::uint32_t width = i == 0 ? 34 : 6;
            const uncompressed_params up = make_params(order, type, width, 2);
            if ((i == 0 || type != 1) && QVRUncompressed_GetCompressedBufSize(&up, &raw) != 0) {
                const std::string name = "order" + std::to_string(order) + "_type" + std::to_string(type);
                seeds.add_stream(name, encode(up, raw, picture::noise), order);
            }
        }
    }
    const uncompressed_params packed = make_params(2, 5, 14, 2);
    seeds.add_stream("order2_type5", encode(packed, raw, picture::noise), 2);
}

void add_coded_alpha(corpus& seeds) {
    for (const std::uint32_t order : {7u, 11u, 13u, 14u, 16u}) {
        for (const std::uint32_t type : {1u, 2u}) {
            const uncompressed_params up = make_params(order, type, 12, 6);
            const compressed_params cp = {sizeof cp, 1, static_cast<std::uint8_t>(order % 4)};
            const std::string name = "coded_order" + std::to_string(order) + "_type" + std::to_string(type);
            seeds.add_stream(name, encode(up, cp, picture::steps), order);
        }
    }
}

void add_wraps(corpus& seeds) {
    seeds.add_stream("qcx", wrap(QVRUncompressed_WrapQCX, {qcx_frame()}, 1, false), 0);
    seeds.add_stream("qcx_coded", wrap(QVRUncompressed_WrapQCX, {qcx_frame()}, 1, true), 0);
    seeds.add_stream("qcx_16", wrap(QVRUncompressed_WrapQCX, {qcx_frame()}, 2, false), 0);
    seeds.add_stream("qcx_16_coded", wrap(QVRUncompressed_WrapQCX, {qcx_frame()}, 2, true), 0);
    const bytes chunk = make_pixels(20, picture::noise, 1);
    seeds.add_stream("stitched", wrap(QVRUncompressed_WrapStitched, {chunk, chunk, chunk}, 1, false), 0);
    seeds.add_stream("stitched_one", wrap(QVRUncompressed_WrapStitched, {chunk}, 1, false), 0);
    seeds.add_stream("stitched_empty", wrap(QVRUncompressed_WrapStitched, {{}, {}, chunk}, 1, false), 0);
}

void add_foreign(corpus& seeds) {
    const compressed_params raw = {sizeof raw, 0, 0};
    for (const std::uint32_t order : {1u, 2u, 11u, 16u}) {
        const bytes stream = encode(make_params(order, order == 2 ? 5 : 1, 6, 2), raw, picture::noise);
        seeds.add_stream("odd_width_order" + std::to_string(order),
                         described_anew(stream, [](bytes& fields) { store_field(fields, k_width_field, 5); }), order);
    }
    const bytes fixed = encode(make_params(5, 214, 5, 2), raw, picture::noise);
    seeds.add_stream("fixed_point", fixed, 5);
    seeds.add_stream("older_code",
                     described_anew(encode(make_params(5, 7, 5, 2), raw, picture::noise),
                                    [](bytes& fields) { store_field(fields, k_code_field, fourcc("rg f")); }),
                     5);
    seeds.add_stream("short_description", described_anew(fixed, [](bytes& fields) { fields.resize(12); }), 5);
    seeds.add_stream("long_description", described_anew(fixed, [](bytes& fields) { fields.resize(30); }), 5);
    seeds.add_stream("no_rows", described_anew(fixed, [](bytes& fields) { store_field(fields, k_height_field, 0); }),
                     5);
    seeds.add_stream("no_columns", described_anew(fixed, [](bytes& fields) { store_field(fields, k_width_field, 0); }),
                     5);
}

void add_damaged(corpus& seeds) {
    const compressed_params coded = {sizeof coded, 1, 3};
    const bytes stream = encode(make_params(7, 1, 8, 3), coded, picture::steps);
    for (const std::size_t length :
         {std::size_t{0}, std::size_t{7}, std::size_t{8}, std::size_t{30}, stream.size() - 1}) {
        seeds.add_stream("cut_to_" + std::to_string(length),
                         {stream.begin(), stream.begin() + static_cast<int>(length)}, 7);
    }
    std::uint32_t number = 0;
    for (const std::uint32_t size : {0u, 7u, 8u, 0x7fffffffu, 0xffffffffu}) {
        // Sizes of the 'pack', of an 'icmp', a 'sinf' and an 'sdat'.
        const std::size_t at[] = {0, 8, 16, 37};
        bytes damaged = stream;
        std::memcpy(damaged.data() + at[number % 4], &size, sizeof size);
        seeds.add_stream("size_" + std::to_string(number++), damaged, 7);
    }
    bytes wrapped = wrap(QVRUncompressed_WrapStitched, {{1, 2, 3}, {4, 5}}, 1, false);
    wrapped[37] = 0xf0;  // of the first chunk
    seeds.add_stream("chunk_too_long", wrapped, 0);
    bytes behind = stream;
    behind.resize(behind.size() + 20, 0x11);
    seeds.add_stream("more_behind", behind, 7);
}

bytes encode_plane(const rle_params& params, picture kind) {
    const bytes plane = make_pixels(static_cast<std::size_t>(raw_plane_size(params)), kind, params.bit_depth / 8);
    bytes payload(static_cast<std::size_t>(worst_case_payload_size(params)));
    threaded_executor none(0);
    payload.resize(
        threaded_rle_encoder(none).encode_frame(params, plane.data(), plane.size(), payload.data(), payload.size()));
    return payload;
}

void add_payloads(corpus& seeds) {
    const picture pictures[] = {picture::flat, picture::ramp, picture::noise, picture::steps};
    for (std::uint32_t i = 0; i < 24; ++i) {
        const std::uint32_t depth = i % 2 == 0 ? 8 : 16;
        const std::uint32_t width = i % 3 == 0 ? 40 : 1 + i;
        const rle_params params = {width, 1 + i / 2, depth, i % 7, 0};
        const bytes payload = encode_plane(params, pictures[i / 2 % 4]);
        const auto byte = [](std::uint32_t value) { return static_cast<std::uint8_t>(value); };
        const bytes choices = {byte(i),     0xff,        byte(width - 1), byte(params.height - 1),
                               byte(i % 2), byte(i % 7), byte(i / 6)};
        const std::string name = "plane_" + std::to_string(i);
        seeds.add("rle", name, payload, choices);
        bytes damaged = payload;
        damaged[i % damaged.size()] ^= static_cast<std::uint8_t>(1u << i % 8);
        seeds.add("rle", name + "_damaged", damaged, choices);
    }
    const bytes small = {0, 0, 7, 3, 0, 2};
    seeds.add("rle", "empty", {}, small);
    seeds.add("rle", "zeros", bytes(64, 0), small);
    seeds.add("rle", "ones", bytes(64, 0xff), small);
    seeds.add("rle", "no_slices", {0, 0, 0}, small);
}

void add_frames(corpus& seeds) {
    const picture pictures[] = {picture::flat, picture::ramp, picture::noise, picture::steps};
    for (std::uint32_t i = 0; i < 64; ++i) {
        const auto byte = [](std::uint32_t value) { return static_cast<std::uint8_t>(value); };
        const bool coded = i % 8 < 2;
        const bytes choices = {byte(i),
                               byte(i),
                               byte(i % 16),
                               byte(coded ? i % 2 : i),
                               byte(4 + i / 2 * 2 % 60),
                               byte(2 + i / 16 * 2),
                               byte(coded ? 0x20 : 0),
                               byte(i % 9),
                               byte(i)};
        seeds.add("round_trip", "frame_" + std::to_string(i), make_pixels(16 + 5 * i, pictures[i % 4], 1 + i % 2),
                  choices);
    }
}

void add_scripts(corpus& seeds) {
    for (std::uint32_t i = 0; i < 48; ++i) {
        std::minstd_rand random(i + 1);
        bytes script(40 + 6 * i);
        for (std::uint8_t& byte : script) {
            byte = static_cast<std::uint8_t>(random() / 7 % (i % 2 == 0 ? 100 : 256));
        }
        seeds.add("calls", "script_" + std::to_string(i), script,
                  {static_cast<std::uint8_t>(i / 4), 0xff, static_cast<std::uint8_t>(i)});
    }
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) {
        std::fprintf(stderr, "usage: make_corpus FOLDER\n");
        return 2;
    }
    corpus seeds{arguments[1]};
    add_formats(seeds);
    add_coded_alpha(seeds);
    add_wraps(seeds);
    add_foreign(seeds);
    add_damaged(seeds);
    add_payloads(seeds);
    add_frames(seeds);
    add_scripts(seeds);
    std::printf("%zu seeds\n", seeds.files);
    return 0;
}
