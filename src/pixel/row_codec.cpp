// SPDX-License-Identifier: BSD-3-Clause
#include "pixel/row_codec.h"

#include <algorithm>
#include <cstring>

#include "container/parse.h"

namespace {

// Samples of a tile: whole groups of every order, whole bytes of low bits and whole blocks of the widest kernels.
constexpr std::uint64_t k_tile = 768;
constexpr std::uint64_t k_widest_sample = 4;

}  // namespace

row_codec::row_codec(const pixel_map& map, std::uint32_t type, const caller_plane& caller,
                     const container::plane_info& stored)
    : rule{},
      narrow_rule(traits_of_type(type).rule),
      to_float(container::converts_to_float(stored, type)),
      width(caller.width),
      caller_row(caller.row_bytes),
      stored_row(static_cast<std::uint64_t>(row_bytes(stored.type, stored.width))),
      samples(static_cast<std::uint64_t>(row_samples(stored.type, stored.width))),
      sample_bytes(traits_of_type(type).bytes),
      groups(map.samples != 0 ? samples / map.colours : 0),
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
    if (is_one_row(caller.stride, stored.stride, alpha.first == nullptr ? 0 : alpha.stride)) {
        return kernels.pack(rule, caller.row(chunk.first), groups * chunk.count, stored.row(chunk.first),
                            alpha.row(chunk.first));
    }
    for (std::uint64_t i = chunk.first; i < std::uint64_t{chunk.first} + chunk.count; ++i) {
        if (!changes_width()) {
            kernels.pack(rule, caller.row(i), groups, stored.row(i), alpha.row(i));
        } else if (!reorders()) {
            narrow(caller.row(i), 0, samples, stored.row(i));
        } else {
            pack_row(caller.row(i), stored.row(i));
        }
    }
}

void row_codec::unpack(row_chunk chunk, row_span<const std::uint8_t> stored, row_span<const std::uint8_t> alpha,
                       row_span<std::uint8_t> caller) const {
    if (!reorders() && !changes_width()) {
        return copy_rows(chunk, stored, caller);
    }
    if (is_one_row(caller.stride, stored.stride, alpha.first == nullptr ? 0 : alpha.stride)) {
        return kernels.unpack(rule, stored.row(chunk.first), alpha.row(chunk.first), groups * chunk.count,
                              caller.row(chunk.first));
    }
    for (std::uint64_t i = chunk.first; i < std::uint64_t{chunk.first} + chunk.count; ++i) {
        if (!changes_width()) {
            kernels.unpack(rule, stored.row(i), alpha.row(i), groups, caller.row(i));
            finish_group(stored.row(i) + groups * rule.colour_bytes, caller.row(i));
        } else if (!reorders()) {
            widen(stored.row(i), 0, samples, caller.row(i));
        } else {
            unpack_row(stored.row(i), alpha.row(i), caller.row(i));
        }
    }
}

// Rows of whole groups without a gap on either side are one long row.
bool row_codec::is_one_row(std::uint64_t caller_stride, std::uint64_t stored_stride, std::uint64_t alpha_stride) const {
    return reorders() && !changes_width() && groups * rule.group_bytes == caller_stride &&
           groups * rule.colour_bytes == stored_stride && (alpha_stride == 0 || groups * sample_bytes == alpha_stride);
}

void row_codec::copy_rows(row_chunk chunk, row_span<const std::uint8_t> from, row_span<std::uint8_t> to) const {
    if (from.stride == stored_row && to.stride == stored_row) {
        std::memcpy(to.row(chunk.first), from.row(chunk.first), stored_row * chunk.count);
        return;
    }
    for (std::uint64_t i = chunk.first; i < std::uint64_t{chunk.first} + chunk.count; ++i) {
        std::memcpy(to.row(i), from.row(i), stored_row);
    }
}

// Formats that change both order and width store no alpha: it is dropped.
void row_codec::pack_row(const std::uint8_t* caller, std::uint8_t* stored) const {
    std::uint8_t tile[k_tile * k_widest_sample];
    for (std::uint64_t first = 0; first < samples; first += k_tile) {
        const std::uint64_t count = std::min(k_tile, samples - first);
        kernels.pack(rule, caller + first / rule.map.colours * rule.group_bytes, count / rule.map.colours, tile,
                     nullptr);
        narrow(tile, first, count, stored);
    }
}

void row_codec::unpack_row(const std::uint8_t* stored, const std::uint8_t* alpha, std::uint8_t* caller) const {
    std::uint8_t tile[k_tile * k_widest_sample];
    for (std::uint64_t first = 0; first < samples; first += k_tile) {
        const std::uint64_t count = std::min(k_tile, samples - first);
        const std::uint64_t group = first / rule.map.colours;
        const std::uint64_t whole = count / rule.map.colours;
        widen(stored, first, count, tile);
        kernels.unpack(rule, tile, alpha == nullptr ? nullptr : alpha + group * sample_bytes, whole,
                       caller + group * rule.group_bytes);
        if (group + whole == groups) {
            finish_group(tile + whole * rule.colour_bytes, caller);
        }
    }
}

void row_codec::narrow(const std::uint8_t* words, std::uint64_t first, std::uint64_t count,
                       std::uint8_t* stored) const {
    std::uint8_t* const high = stored + first;
    std::uint8_t* const low = stored + samples;
    switch (narrow_rule) {
        case narrowing::ten_bits:
            return kernels.narrow_10(words, count, high, low + first / 4);
        case narrowing::twelve_bits:
            return kernels.narrow_12(words, count, high, low + first / 2);
        case narrowing::ten_bits_packed:  // never in tiles: its one order is the bitstream's own
            return kernels.narrow_10_packed(words, width, stored, stored + std::uint64_t{2} * width);
        case narrowing::none:
            return;
    }
}

void row_codec::widen(const std::uint8_t* stored, std::uint64_t first, std::uint64_t count, std::uint8_t* words) const {
    if (to_float) {
        return kernels.fixed_to_float(stored + 2 * first, count, words);
    }
    const std::uint8_t* const high = stored + first;
    const std::uint8_t* const low = stored + samples;
    switch (narrow_rule) {
        case narrowing::ten_bits:
            return kernels.widen_10(high, low + first / 4, count, words);
        case narrowing::twelve_bits:
            return kernels.widen_12(high, low + first / 2, count, words);
        case narrowing::ten_bits_packed:
            // The low bits start behind two samples a pixel, even where an odd width stores one sample more.
            return kernels.widen_10_packed(stored, stored + std::uint64_t{2} * width, width, words);
        case narrowing::none:
            return;
    }
}

// An odd 4:2:2 row ends in a group that is not whole: samples that the bitstream does not hold are zero, and only those
// that the caller's row has are written. left: the stored samples of that group.
void row_codec::finish_group(const std::uint8_t* left, std::uint8_t* caller) const {
    const std::uint64_t done = groups * rule.group_bytes;
    if (done == caller_row) {
        return;
    }
    std::uint8_t colour[16] = {};
    const std::uint8_t no_alpha[16] = {};
    std::uint8_t group[16];
    std::memcpy(colour, left, samples * sample_bytes - groups * rule.colour_bytes);
    scalar::unpack(rule, colour, no_alpha, 1, group);
    std::memcpy(caller + done, group, caller_row - done);
}
