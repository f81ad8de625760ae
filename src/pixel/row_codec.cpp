// SPDX-License-Identifier: BSD-3-Clause
#include "pixel/row_codec.h"

#include <algorithm>
#include <cstring>

#include "container/parse.h"
#include "pixel/kernels/stream_copy.h"

namespace {

// Samples of a tile: whole groups of every order and whole blocks of the widest kernels.
constexpr std::uint64_t k_tile = 768;

// A tile that goes past the caches: bytes enough for a burst of stores, and no more than half of the nearest cache; of
// items so many that vectors are full.
constexpr std::uint64_t k_stream_bytes = 16384;
constexpr std::uint64_t k_stream_items = 64;

// The nearest cache's place for what a kernel makes, where the next caches are passed.
//
//   from --kernel--> tile --stream--> to
//
// kernel(item, count, target) makes `count` items; an item is made of from_bytes and becomes to_bytes.
template <class Kernel>
void stream_items(const std::uint8_t* from, std::uint64_t from_bytes, std::uint64_t items, std::uint64_t to_bytes,
                  std::uint8_t* to, Kernel kernel) {
    alignas(64) std::uint8_t tile[k_stream_bytes];
    const std::uint64_t most = k_stream_bytes / to_bytes / k_stream_items * k_stream_items;
    for (std::uint64_t item = 0; item < items;) {
        const std::uint64_t count = std::min(most, items - item);
        kernel(item, count, tile);
        stream_tile(to + item * to_bytes, tile, count * to_bytes, from + (item + count) * from_bytes,
                    count * from_bytes);
        item += count;
    }
    finish_streaming();
}

}  // namespace

row_codec::row_codec(const pixel_map& map, std::uint32_t type, const caller_plane& caller,
                     const container::plane_info& stored, bool past_caches)
    : rule{},
      narrow_rule(traits_of_type(type).rule),
      to_float(container::converts_to_float(stored, type)),
      width(caller.width),
      caller_row(caller.row_bytes),
      stored_row(static_cast<std::uint64_t>(row_bytes(stored.type, stored.width))),
      samples(static_cast<std::uint64_t>(row_samples(stored.type, stored.width))),
      sample_bytes(traits_of_type(type).bytes),
      groups(map.samples != 0 ? samples / map.colours : 0),
      streams(past_caches),
      kernels(row_kernels_for(detected_cpu_features())) {
    if (map.samples != 0) {
        rule = make_reorder_rule(map, sample_bytes);
    }
}

void row_codec::pack(row_chunk chunk, row_span<const std::uint8_t> caller, row_span<std::uint8_t> stored,
                     row_span<std::uint8_t> alpha) const {
    if (!reorders() && !changes_width()) {
        return copy_rows(chunk, caller, stored);
    }
    if (is_one_row(caller.stride, stored.stride, alpha.stride)) {
        return pack_groups(caller.row(chunk.first), groups * chunk.count, stored.row(chunk.first),
                           alpha.row(chunk.first));
    }
    for (std::uint64_t i = chunk.first; i < std::uint64_t{chunk.first} + chunk.count; ++i) {
        if (changes_width()) {
            narrow(caller.row(i), stored.row(i));
        } else {
            pack_groups(caller.row(i), groups, stored.row(i), alpha.row(i));
        }
    }
}

void row_codec::unpack(row_chunk chunk, row_span<const std::uint8_t> stored, row_span<const std::uint8_t> alpha,
                       row_span<std::uint8_t> caller) const {
    if (!reorders() && !changes_width()) {
        return copy_rows(chunk, stored, caller);
    }
    if (is_one_row(caller.stride, stored.stride, alpha.stride)) {
        return unpack_groups(stored.row(chunk.first), alpha.row(chunk.first), groups * chunk.count,
                             caller.row(chunk.first));
    }
    for (std::uint64_t i = chunk.first; i < std::uint64_t{chunk.first} + chunk.count; ++i) {
        if (to_float) {
            convert(stored.row(i), caller.row(i));
        } else if (changes_width()) {
            widen(stored.row(i), caller.row(i));
        } else {
            unpack_groups(stored.row(i), alpha.row(i), groups, caller.row(i));
        }
        if (reorders()) {
            finish_group(stored.row(i), caller.row(i));
        }
    }
}

// Rows of whole groups without a gap on either side are one long row.
bool row_codec::is_one_row(std::uint64_t caller_stride, std::uint64_t stored_stride, std::uint64_t alpha_stride) const {
    return reorders() && !changes_width() && groups * rule.group_bytes == caller_stride &&
           groups * rule.colour_bytes == stored_stride && (alpha_stride == 0 || groups * sample_bytes == alpha_stride);
}

// Alpha, the smaller part, goes through the caches.
void row_codec::pack_groups(const std::uint8_t* caller, std::uint64_t count, std::uint8_t* colour,
                            std::uint8_t* alpha) const {
    if (!streams) {
        return kernels.pack(rule, caller, count, colour, alpha);
    }
    stream_items(caller, rule.group_bytes, count, rule.colour_bytes, colour,
                 [&](std::uint64_t group, std::uint64_t some, std::uint8_t* to) {
                     kernels.pack(rule, caller + group * rule.group_bytes, some, to,
                                  alpha == nullptr ? nullptr : alpha + group * sample_bytes);
                 });
}

void row_codec::unpack_groups(const std::uint8_t* colour, const std::uint8_t* alpha, std::uint64_t count,
                              std::uint8_t* caller) const {
    if (!streams) {
        return kernels.unpack(rule, colour, alpha, count, caller);
    }
    stream_items(colour, rule.colour_bytes, count, rule.group_bytes, caller,
                 [&](std::uint64_t group, std::uint64_t some, std::uint8_t* to) {
                     kernels.unpack(rule, colour + group * rule.colour_bytes,
                                    alpha == nullptr ? nullptr : alpha + group * sample_bytes, some, to);
                 });
}

void row_codec::copy_rows(row_chunk chunk, row_span<const std::uint8_t> from, row_span<std::uint8_t> to) const {
    const auto copy = streams ? stream_copy : plain_copy;
    if (from.stride == stored_row && to.stride == stored_row) {
        return copy(to.row(chunk.first), from.row(chunk.first), stored_row * chunk.count);
    }
    for (std::uint64_t i = chunk.first; i < std::uint64_t{chunk.first} + chunk.count; ++i) {
        copy(to.row(i), from.row(i), stored_row);
    }
}

// Low bits start behind the high bytes of a row, one each sample.
void row_codec::narrow(const std::uint8_t* words, std::uint8_t* stored) const {
    std::uint8_t* const low = stored + samples;
    switch (narrow_rule) {
        case narrowing::ten_bits:
            return reorders() ? kernels.pack_narrow_10(rule, words, groups, stored, low)
                              : kernels.narrow_10(words, samples, stored, low);
        case narrowing::twelve_bits:
            return reorders() ? kernels.pack_narrow_12(rule, words, groups, stored, low)
                              : kernels.narrow_12(words, samples, stored, low);
        case narrowing::ten_bits_packed:  // its one order is the bitstream's own
            return kernels.narrow_10_packed(words, width, stored, stored + std::uint64_t{2} * width);
        case narrowing::none:
            return;
    }
}

void row_codec::widen(const std::uint8_t* stored, std::uint8_t* words) const {
    const std::uint8_t* const low = stored + samples;
    switch (narrow_rule) {
        case narrowing::ten_bits:
            return reorders() ? kernels.widen_unpack_10(rule, stored, low, groups, words)
                              : kernels.widen_10(stored, low, samples, words);
        case narrowing::twelve_bits:
            return reorders() ? kernels.widen_unpack_12(rule, stored, low, groups, words)
                              : kernels.widen_12(stored, low, samples, words);
        case narrowing::ten_bits_packed:
            // The low bits start behind two samples a pixel, even where an odd width stores one sample more.
            return kernels.widen_10_packed(stored, stored + std::uint64_t{2} * width, width, words);
        case narrowing::none:
            return;
    }
}

void row_codec::convert(const std::uint8_t* stored, std::uint8_t* floats) const {
    if (!reorders()) {
        return kernels.fixed_to_float(stored, samples, floats);
    }
    alignas(64) std::uint8_t tile[k_tile * sizeof(float)];
    for (std::uint64_t group = 0; group < groups; group += k_tile / rule.map.colours) {
        const std::uint64_t count = std::min<std::uint64_t>(k_tile / rule.map.colours, groups - group);
        kernels.fixed_to_float(stored + group * rule.map.colours * 2, count * rule.map.colours, tile);
        kernels.unpack(rule, tile, nullptr, count, floats + group * rule.group_bytes);
    }
}

// A few samples as the caller has them, from a sample whose low bits begin a byte.
void row_codec::widen_some(const std::uint8_t* stored, std::uint64_t first, std::uint64_t count,
                           std::uint8_t* words) const {
    const std::uint8_t* const low = stored + samples;
    if (to_float) {
        return scalar::fixed_to_float(stored + 2 * first, count, words);
    }
    switch (narrow_rule) {
        case narrowing::ten_bits:
            return scalar::widen_10(stored + first, low + first / 4, count, words);
        case narrowing::twelve_bits:
            return scalar::widen_12(stored + first, low + first / 2, count, words);
        default:
            std::memcpy(words, stored + first * sample_bytes, count * sample_bytes);
    }
}

// An odd 4:2:2 row ends in a group that is not whole: samples that the bitstream does not hold are zero, and only those
// that the caller's row has are written.
void row_codec::finish_group(const std::uint8_t* stored, std::uint8_t* caller) const {
    const std::uint64_t done = groups * rule.group_bytes;
    if (done == caller_row) {
        return;
    }
    const std::uint64_t used = groups * rule.map.colours;
    const std::uint64_t start = used / 4 * 4;
    std::uint8_t colour[16 + 3 * sizeof(float)] = {};
    const std::uint8_t no_alpha[16] = {};
    std::uint8_t group[16];
    widen_some(stored, start, samples - start, colour);
    scalar::unpack(rule, colour + (used - start) * sample_bytes, no_alpha, 1, group);
    std::memcpy(caller + done, group, caller_row - done);
}
