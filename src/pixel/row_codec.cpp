// SPDX-License-Identifier: BSD-3-Clause
#include "pixel/row_codec.h"

#include <algorithm>
#include <cstring>

#include "container/parse.h"
#include "pixel/kernels/stream_copy.h"

namespace {

// Samples of a piece: whole groups of every order, whole bytes of low bits, whole blocks of the widest kernels. Few
// enough that a piece stays in the first-level cache.
constexpr std::uint64_t k_piece = 1536;

// Where kernels leave a piece of a row that is to go past the caches.
struct tile {
    alignas(64) std::uint8_t main[k_piece * sizeof(float) * 3 / 2];  // the caller's alpha included
    alignas(64) std::uint8_t low[k_piece / 2];
    alignas(64) std::uint8_t alpha[k_piece / 2 * sizeof(float)];
};

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
      streams(is_worth_streaming((caller_row + stored_row) * caller.height)),
      kernels(row_kernels_for(detected_cpu_features())) {
    if (map.samples != 0) {
        rule = make_reorder_rule(map, sample_bytes);
    }
}

void row_codec::pack(row_chunk chunk, row_span<const std::uint8_t> caller, row_span<std::uint8_t> stored,
                     row_span<std::uint8_t> alpha) const {
    if (!reorders() && !changes_width()) {
        copy_rows(chunk, caller, stored);
    } else if (is_one_row(caller.stride, stored.stride, alpha.first == nullptr ? 0 : alpha.stride)) {
        pack_row(samples * chunk.count, caller.row(chunk.first), stored.row(chunk.first), alpha.row(chunk.first));
    } else {
        for (std::uint64_t i = chunk.first; i < std::uint64_t{chunk.first} + chunk.count; ++i) {
            pack_row(packs() ? width / 2 * 4 : samples, caller.row(i), stored.row(i), alpha.row(i));
        }
    }
    if (streams) {
        finish_streaming();
    }
}

void row_codec::unpack(row_chunk chunk, row_span<const std::uint8_t> stored, row_span<const std::uint8_t> alpha,
                       row_span<std::uint8_t> caller) const {
    if (!reorders() && !changes_width()) {
        copy_rows(chunk, stored, caller);
    } else if (is_one_row(caller.stride, stored.stride, alpha.first == nullptr ? 0 : alpha.stride)) {
        unpack_row(samples * chunk.count, stored.row(chunk.first), alpha.row(chunk.first), caller.row(chunk.first));
    } else {
        for (std::uint64_t i = chunk.first; i < std::uint64_t{chunk.first} + chunk.count; ++i) {
            unpack_row(packs() ? 2 * std::uint64_t{width} : samples, stored.row(i), alpha.row(i), caller.row(i));
            if (reorders()) {
                finish_group(stored.row(i), caller.row(i));
            }
        }
    }
    if (streams) {
        finish_streaming();
    }
}

// A row at once, or in pieces that go past the caches.
void row_codec::pack_row(std::uint64_t count, const std::uint8_t* caller, std::uint8_t* stored,
                         std::uint8_t* alpha) const {
    if (!streams) {
        return pack_piece(caller, count, stored, stored + low_start(), alpha);
    }
    tile to;
    const std::uint64_t main_bytes = changes_width() ? 1 : sample_bytes;
    const std::uint64_t low_bits = narrow_rule == narrowing::twelve_bits ? 4 : changes_width() ? 2 : 0;
    for (std::uint64_t first = 0; first < count; first += k_piece) {
        const std::uint64_t piece = std::min(k_piece, count - first);
        pack_piece(caller + caller_bytes(first), piece, to.main, to.low, alpha == nullptr ? nullptr : to.alpha);
        stream_copy(stored + first * main_bytes, to.main, piece * main_bytes);
        stream_copy(stored + low_start() + first * low_bits / 8, to.low, (piece * low_bits + 7) / 8);
        if (alpha != nullptr) {
            stream_copy(alpha + first / rule.map.colours * sample_bytes, to.alpha,
                        piece / rule.map.colours * sample_bytes);
        }
    }
}

void row_codec::unpack_row(std::uint64_t count, const std::uint8_t* stored, const std::uint8_t* alpha,
                           std::uint8_t* caller) const {
    if (!streams) {
        return unpack_piece(stored, 0, count, alpha, caller);
    }
    tile to;
    for (std::uint64_t first = 0; first < count; first += k_piece) {
        const std::uint64_t piece = std::min(k_piece, count - first);
        unpack_piece(stored, first, piece, alpha, to.main);
        stream_copy(caller + caller_bytes(first), to.main, caller_bytes(piece));
    }
}

// Bytes that `count` samples of the bitstream take in the caller's rows, in whole groups.
std::uint64_t row_codec::caller_bytes(std::uint64_t count) const {
    if (packs()) {
        return (count + k_packed_group_samples - 1) / k_packed_group_samples * k_packed_group_bytes;
    }
    return reorders() ? count / rule.map.colours * rule.group_bytes : count * sample_bytes;
}

// Low bits start behind the high bytes of a row, of which there is one a sample; in packed rows behind two a pixel, even
// where an odd width stores one sample more.
std::uint64_t row_codec::low_start() const {
    return packs() ? std::uint64_t{2} * width : samples;
}

// Rows of whole groups without a gap on either side are one long row.
bool row_codec::is_one_row(std::uint64_t caller_stride, std::uint64_t stored_stride, std::uint64_t alpha_stride) const {
    return reorders() && !changes_width() && groups * rule.group_bytes == caller_stride &&
           groups * rule.colour_bytes == stored_stride && (alpha_stride == 0 || groups * sample_bytes == alpha_stride);
}

void row_codec::copy_rows(row_chunk chunk, row_span<const std::uint8_t> from, row_span<std::uint8_t> to) const {
    const auto copy = [this](std::uint8_t* target, const std::uint8_t* source, std::uint64_t size) {
        if (streams) {
            stream_copy(target, source, size);
        } else {
            std::memcpy(target, source, size);
        }
    };
    if (from.stride == stored_row && to.stride == stored_row) {
        return copy(to.row(chunk.first), from.row(chunk.first), stored_row * chunk.count);
    }
    for (std::uint64_t i = chunk.first; i < std::uint64_t{chunk.first} + chunk.count; ++i) {
        copy(to.row(i), from.row(i), stored_row);
    }
}

// `count` samples of the caller's, from the first of a group on.
void row_codec::pack_piece(const std::uint8_t* caller, std::uint64_t count, std::uint8_t* main, std::uint8_t* low,
                           std::uint8_t* alpha) const {
    const std::uint64_t whole = reorders() ? count / rule.map.colours : 0;
    switch (narrow_rule) {
        case narrowing::ten_bits:
            return reorders() ? kernels.pack_narrow_10(rule, caller, whole, main, low)
                              : kernels.narrow_10(caller, count, main, low);
        case narrowing::twelve_bits:
            return reorders() ? kernels.pack_narrow_12(rule, caller, whole, main, low)
                              : kernels.narrow_12(caller, count, main, low);
        case narrowing::ten_bits_packed:  // its one order is the bitstream's own
            return kernels.narrow_10_packed(caller, count / 2, main, low);
        case narrowing::none:
            return kernels.pack(rule, caller, whole, main, alpha);
    }
}

// Samples `first` to `first` + count of a row to where the caller has the first of them.
void row_codec::unpack_piece(const std::uint8_t* stored, std::uint64_t first, std::uint64_t count,
                             const std::uint8_t* alpha, std::uint8_t* caller) const {
    const std::uint64_t whole = reorders() ? count / rule.map.colours : 0;
    const std::uint8_t* const low = stored + low_start();
    if (to_float) {
        return convert(stored + 2 * first, count, caller);
    }
    switch (narrow_rule) {
        case narrowing::ten_bits:
            return reorders() ? kernels.widen_unpack_10(rule, stored + first, low + first / 4, whole, caller)
                              : kernels.widen_10(stored + first, low + first / 4, count, caller);
        case narrowing::twelve_bits:
            return reorders() ? kernels.widen_unpack_12(rule, stored + first, low + first / 2, whole, caller)
                              : kernels.widen_12(stored + first, low + first / 2, count, caller);
        case narrowing::ten_bits_packed:
            return kernels.widen_10_packed(stored + first, low + first / 4, count / 2, caller);
        case narrowing::none:
            return kernels.unpack(rule, stored + first * sample_bytes,
                                  alpha == nullptr ? nullptr : alpha + first / rule.map.colours * sample_bytes, whole,
                                  caller);
    }
}

void row_codec::convert(const std::uint8_t* fixed, std::uint64_t count, std::uint8_t* floats) const {
    if (!reorders()) {
        return kernels.fixed_to_float(fixed, count, floats);
    }
    alignas(64) std::uint8_t in_order[k_piece * sizeof(float)];
    const std::uint64_t whole = count / rule.map.colours;
    const std::uint64_t step = k_piece / rule.map.colours;
    for (std::uint64_t group = 0; group < whole; group += step) {
        const std::uint64_t some = std::min(step, whole - group);
        kernels.fixed_to_float(fixed + group * rule.map.colours * 2, some * rule.map.colours, in_order);
        kernels.unpack(rule, in_order, nullptr, some, floats + group * rule.group_bytes);
    }
}

// A few samples as the caller has them, from a sample whose low bits begin a byte.
void row_codec::widen_some(const std::uint8_t* stored, std::uint64_t first, std::uint64_t count,
                           std::uint8_t* words) const {
    const std::uint8_t* const low = stored + low_start();
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
