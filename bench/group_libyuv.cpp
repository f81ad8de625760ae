// SPDX-License-Identifier: BSD-3-Clause
//
// Frames that libyuv can take apart and put together as well: one thread, 8 bits. Its names are of little-endian words:
// its ARGB is B G R A in memory, its RAW R G B, its RGB24 B G R.
#include <libyuv.h>

#include <cstring>
#include <stdexcept>

#include "cases.h"
#include "codec.h"
#include "formats.h"

namespace bench {

namespace {

using bytes = std::vector<std::uint8_t>;

// A frame as the caller has it, and its two stored planes.
struct frame_planes {
    std::uint8_t* raw;
    std::uint8_t* colour;
    std::uint8_t* alpha;
    std::uint8_t* between;  // room for a frame, for jobs that take two steps
    int width;
    int height;
};

// One order by libyuv, both ways.
struct libyuv_job {
    std::uint32_t order;
    bool has_alpha;
    void (*take_apart)(const frame_planes&);
    void (*put_together)(const frame_planes&);
};

void swap_pairs(const std::uint8_t* from, std::uint8_t* to, const frame_planes& f) {
    libyuv::SwapUVPlane(from, 2 * f.width, to, 2 * f.width, f.width, f.height);
}

void copy_plane(const std::uint8_t* from, std::uint8_t* to, const frame_planes& f) {
    libyuv::CopyPlane(from, f.width, to, f.width, f.width, f.height);
}

void bgra_to_rgb_and_alpha(const std::uint8_t* bgra, const frame_planes& f) {
    libyuv::ARGBToRAW(bgra, 4 * f.width, f.colour, 3 * f.width, f.width, f.height);
    libyuv::ARGBExtractAlpha(bgra, 4 * f.width, f.alpha, f.width, f.width, f.height);
}

void rgb_and_alpha_to_bgra(std::uint8_t* bgra, const frame_planes& f) {
    libyuv::RAWToARGB(f.colour, 3 * f.width, bgra, 4 * f.width, f.width, f.height);
    libyuv::ARGBCopyYToAlpha(f.alpha, f.width, bgra, 4 * f.width, f.width, f.height);
}

std::size_t pixels_of(const frame_planes& f) {
    return static_cast<std::size_t>(f.width) * static_cast<std::size_t>(f.height);
}

using word_shuffle = int (*)(const std::uint8_t*, int, std::uint8_t*, int, int, int);

void shuffle_words(word_shuffle shuffle, const std::uint8_t* from, std::uint8_t* to, const frame_planes& f) {
    shuffle(from, 4 * f.width, to, 4 * f.width, f.width, f.height);
}

template <word_shuffle to_bgra>
void shuffled_apart(const frame_planes& f) {
    shuffle_words(to_bgra, f.raw, f.between, f);
    bgra_to_rgb_and_alpha(f.between, f);
}

template <word_shuffle from_bgra>
void shuffled_together(const frame_planes& f) {
    rgb_and_alpha_to_bgra(f.between, f);
    shuffle_words(from_bgra, f.between, f.raw, f);
}

// R G B A from and to B G R A: three bytes the other way round, so the steps that swap them are the other ones.
void rgba_apart(const frame_planes& f) {
    libyuv::ARGBToRGB24(f.raw, 4 * f.width, f.colour, 3 * f.width, f.width, f.height);
    libyuv::ARGBExtractAlpha(f.raw, 4 * f.width, f.alpha, f.width, f.width, f.height);
}

void rgba_together(const frame_planes& f) {
    libyuv::RGB24ToARGB(f.colour, 3 * f.width, f.raw, 4 * f.width, f.width, f.height);
    libyuv::ARGBCopyYToAlpha(f.alpha, f.width, f.raw, 4 * f.width, f.width, f.height);
}

const libyuv_job k_jobs[] = {
    {1, false, [](const frame_planes& f) { swap_pairs(f.raw, f.colour, f); },
     [](const frame_planes& f) { swap_pairs(f.colour, f.raw, f); }},
    {3, true, shuffled_apart<libyuv::BGRAToARGB>, shuffled_together<libyuv::ARGBToBGRA>},
    {4, true, [](const frame_planes& f) { bgra_to_rgb_and_alpha(f.raw, f); },
     [](const frame_planes& f) { rgb_and_alpha_to_bgra(f.raw, f); }},
    {6, false,
     [](const frame_planes& f) { libyuv::RAWToRGB24(f.raw, 3 * f.width, f.colour, 3 * f.width, f.width, f.height); },
     [](const frame_planes& f) { libyuv::RAWToRGB24(f.colour, 3 * f.width, f.raw, 3 * f.width, f.width, f.height); }},
    {7, true, rgba_apart, rgba_together},
    {8, true, shuffled_apart<libyuv::RGBAToARGB>, shuffled_together<libyuv::ARGBToRGBA>},
    {15, true,
     [](const frame_planes& f) {
         swap_pairs(f.raw, f.colour, f);
         copy_plane(f.raw + 2 * pixels_of(f), f.alpha, f);
     },
     [](const frame_planes& f) {
         swap_pairs(f.colour, f.raw, f);
         copy_plane(f.alpha, f.raw + 2 * pixels_of(f), f);
     }},
};

void time_beside_libyuv(recorder& record, const libyuv_job& theirs, const frame_size& size, bool encoding) {
    const frame_params up = frame_record(theirs.order, 1, size);
    const stream_params cp = raw_alpha();
    bytes raw(raw_bytes(up));
    for (std::size_t i = 0; i < raw.size(); ++i) {
        raw[i] = static_cast<std::uint8_t>(i * 37 + i / 251);
    }
    const bytes kept = raw;
    bytes stream(stream_bytes(up, cp));
    encoder to_stream;
    decoder to_raw;
    const std::uint32_t written = to_stream.encode(up, cp, raw.data(), stream.data());

    // libyuv writes where the library does: alpha last, with a header of 37 bytes ('icmp', 'sinf', 'sdat') before it.
    const std::size_t pixels = std::size_t{size.width} * size.height;
    const std::size_t colour_bytes = raw.size() - (theirs.has_alpha ? pixels : 0);
    const std::size_t colour_at = theirs.has_alpha ? 45 : 37;
    bytes by_libyuv = stream;
    bytes between(raw.size());
    const frame_planes planes = {
        raw.data(),     by_libyuv.data() + colour_at, by_libyuv.data() + colour_at + colour_bytes + 37,
        between.data(), static_cast<int>(size.width), static_cast<int>(size.height)};
    std::memset(by_libyuv.data() + colour_at, 0, colour_bytes);
    theirs.take_apart(planes);
    if (by_libyuv != stream) {
        throw std::runtime_error("libyuv takes the frame apart differently");
    }
    theirs.put_together(planes);
    if (raw != kept) {
        throw std::runtime_error("libyuv puts the frame together differently");
    }
    if (encoding) {
        record.compare([&] { to_stream.encode(up, cp, raw.data(), stream.data()); },
                       {{"libyuv", [&] { theirs.take_apart(planes); }}});
    } else {
        record.compare([&] { to_raw.decode(up, stream.data(), written, raw.data()); },
                       {{"libyuv", [&] { theirs.put_together(planes); }}});
    }
}

}  // namespace

void add_libyuv(case_list& cases, const options& chosen) {
    for (const frame_size& size : chosen.sizes) {
        for (const libyuv_job& theirs : k_jobs) {
            for (const bool encoding : {true, false}) {
                cases.push_back(
                    {std::string(encoding ? "libyuv/encode/" : "libyuv/decode/") + to_text(format{theirs.order, 1}) +
                         "/" + to_text(size),
                     [=, &theirs](recorder& record) { time_beside_libyuv(record, theirs, size, encoding); }});
            }
        }
    }
}

}  // namespace bench
