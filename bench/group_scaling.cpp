// SPDX-License-Identifier: BSD-3-Clause
//
// How cost grows: with width, with height, with slices of coded alpha, and with memory that nobody has touched yet.
#include <sys/mman.h>

#include <algorithm>
#include <cstring>
#include <new>

#include "cases.h"
#include "codec.h"
#include "formats.h"
#include "mattes.h"
#include "memory.h"

namespace bench {

namespace {

const frame_size k_usual = {1920, 1080};

// Speed per pixel beside that of a 1920x1080 frame.
void time_size(recorder& record, const format& pair, const frame_size& size) {
    const stream_params cp = raw_alpha();
    const frame_params up = frame_record(pair.order, pair.type, size);
    const frame_params usual = frame_record(pair.order, pair.type, k_usual);
    const std::size_t room = std::max({raw_bytes(up), stream_bytes(up, cp), raw_bytes(usual), stream_bytes(usual, cp)});
    const std::uint8_t* raw = raw_memory().at_least(room);
    std::uint8_t* stream = stream_memory().at_least(room);
    encoder with;
    record.compare_per_unit([&] { with.encode(up, cp, raw, stream); }, double{1} * size.width * size.height,
                            {"1920x1080, per pixel", [&] { with.encode(usual, cp, raw, stream); }},
                            double{1} * k_usual.width * k_usual.height);
}

// Speed and size beside those of the usual 16 slices, on one thread.
void time_slices(recorder& record, unsigned slices, const frame_size& size) {
    const frame_params up = frame_record(14, 1, size);
    const std::vector<std::uint8_t> raw = to_samples(matte_named("hair").draw(size), 1);
    const stream_params cp = coded_alpha(static_cast<std::uint8_t>(slices));
    std::vector<std::uint8_t> stream(std::max(stream_bytes(up, cp), stream_bytes(up, coded_alpha())));
    std::vector<std::uint8_t> usual_stream = stream;
    std::vector<std::uint8_t> back(raw.size());
    encoder with;
    decoder out;
    const std::uint32_t written = with.encode(up, cp, raw.data(), stream.data());
    const std::uint32_t usual = with.encode(up, coded_alpha(), raw.data(), usual_stream.data());
    record.compare([&] { out.decode(up, stream.data(), written, back.data()); },
                   {{"16 slices, decoding", [&] { out.decode(up, usual_stream.data(), usual, back.data()); }}});
    record.compare([&] { with.encode(up, cp, raw.data(), stream.data()); },
                   {{"16 slices, encoding", [&] { with.encode(up, coded_alpha(), raw.data(), usual_stream.data()); }}});
    record.number("size / 16 slices", "x", double{1} * written / usual);
}

// Memory straight from the system, given back at the end.
class fresh_memory {
  public:
    explicit fresh_memory(std::size_t bytes)
        : bytes_(bytes), at_(::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)) {
        if (at_ == MAP_FAILED) {
            throw std::bad_alloc();
        }
    }
    ~fresh_memory() { ::munmap(at_, bytes_); }
    fresh_memory(const fresh_memory&) = delete;
    fresh_memory& operator=(const fresh_memory&) = delete;
    std::uint8_t* data() const { return static_cast<std::uint8_t*>(at_); }

  private:
    std::size_t bytes_;
    void* at_;
};

// A destination that is new for each frame beside one that is used again.
void time_fresh_destination(recorder& record, const format& pair, const frame_size& size) {
    const stream_params cp = raw_alpha();
    const frame_params up = frame_record(pair.order, pair.type, size);
    const std::size_t room = std::max(raw_bytes(up), stream_bytes(up, cp));
    const std::uint8_t* raw = raw_memory().at_least(room);
    std::uint8_t* stream = stream_memory().at_least(room);
    encoder with;
    record.compare([&] { with.encode(up, cp, raw, fresh_memory(room).data()); },
                   {{"reused destination", [&] { with.encode(up, cp, raw, stream); }}});
}

}  // namespace

void add_scaling(case_list& cases, const options& chosen) {
    const std::uint32_t sides[] = {2, 16, 64, 256, 1024, 1920, 4096, 8192};
    for (const format& pair : {format{7, 1}, format{2, 3}}) {
        for (const std::uint32_t side : sides) {
            for (const frame_size size : {frame_size{side, 1080}, frame_size{1920, side}}) {
                const char* what = size.height == 1080 ? "scaling/width/" : "scaling/height/";
                cases.push_back({what + to_text(pair) + "/" + to_text(size),
                                 [=](recorder& record) { time_size(record, pair, size); }});
            }
        }
    }
    for (const frame_size& size : chosen.sizes) {
        for (const unsigned slices : {1u, 2u, 4u, 8u, 32u, 64u, 128u, 255u}) {
            cases.push_back({"scaling/slices/" + std::to_string(slices) + "/" + to_text(size),
                             [=](recorder& record) { time_slices(record, slices, size); }});
        }
        for (const format& pair : {format{7, 1}, format{2, 3}, format{5, 1}}) {
            cases.push_back({"scaling/fresh-destination/" + to_text(pair) + "/" + to_text(size),
                             [=](recorder& record) { time_fresh_destination(record, pair, size); }});
        }
    }
}

}  // namespace bench
