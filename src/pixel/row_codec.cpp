// SPDX-License-Identifier: BSD-3-Clause
#include "pixel/row_codec.h"

#include <cstring>

#include "container/parse.h"

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
      kernels(make_row_kernels(detected_cpu_features())) {
    if (map.samples != 0) {
        rule = make_reorder_rule(map, sample_bytes);
    }
}

std::uint64_t row_codec::scratch_bytes() const {
    return reorders() && changes_width() ? samples * sample_bytes : 0;
}

void row_codec::pack(row_chunk chunk, row_span<const std::uint8_t> caller, row_span<std::uint8_t> stored,
                     row_span<std::uint8_t> alpha, std::uint8_t* scratch) const {
    if (!reorders() && !changes_width()) {
        return copy_rows(chunk, caller, stored);
    }
    for (std::uint64_t i = chunk.first; i < std::uint64_t{chunk.first} + chunk.count; ++i) {
        const std::uint8_t* in_order = caller.row(i);
        if (reorders()) {
            std::uint8_t* const to = changes_width() ? scratch : stored.row(i);
            kernels.pack(rule, caller.row(i), samples / rule.map.colours, to, alpha.row(i));
            in_order = to;
        }
        if (changes_width()) {
            narrow(in_order, stored.row(i));
        }
    }
}

void row_codec::unpack(row_chunk chunk, row_span<const std::uint8_t> stored, row_span<const std::uint8_t> alpha,
                       row_span<std::uint8_t> caller, std::uint8_t* scratch) const {
    if (!reorders() && !changes_width()) {
        return copy_rows(chunk, stored, caller);
    }
    for (std::uint64_t i = chunk.first; i < std::uint64_t{chunk.first} + chunk.count; ++i) {
        const std::uint8_t* in_order = stored.row(i);
        if (changes_width()) {
            std::uint8_t* const to = reorders() ? scratch : caller.row(i);
            widen(stored.row(i), to);
            in_order = to;
        }
        if (reorders()) {
            restore_order(in_order, alpha.row(i), caller.row(i));
        }
    }
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

void row_codec::narrow(const std::uint8_t* in_order, std::uint8_t* stored) const {
    switch (narrow_rule) {
        case narrowing::ten_bits:
            return kernels.narrow_10(in_order, samples, stored, stored + samples);
        case narrowing::twelve_bits:
            return kernels.narrow_12(in_order, samples, stored, stored + samples);
        case narrowing::ten_bits_packed:
            return kernels.narrow_10_packed(in_order, width, stored, stored + std::uint64_t{2} * width);
        case narrowing::none:
            return;
    }
}

void row_codec::widen(const std::uint8_t* stored, std::uint8_t* in_order) const {
    if (to_float) {
        return kernels.fixed_to_float(stored, samples, in_order);
    }
    switch (narrow_rule) {
        case narrowing::ten_bits:
            return kernels.widen_10(stored, stored + samples, samples, in_order);
        case narrowing::twelve_bits:
            return kernels.widen_12(stored, stored + samples, samples, in_order);
        case narrowing::ten_bits_packed:
            // The low bits start behind two samples a pixel, even where an odd width stores one sample more.
            return kernels.widen_10_packed(stored, stored + std::uint64_t{2} * width, width, in_order);
        case narrowing::none:
            return;
    }
}

// An odd 4:2:2 row ends in a group that is not whole: samples that the bitstream does not hold are zero, and only those
// that the caller's row has are written.
void row_codec::restore_order(const std::uint8_t* in_order, const std::uint8_t* alpha, std::uint8_t* caller) const {
    const std::uint64_t groups = samples / rule.map.colours;
    kernels.unpack(rule, in_order, alpha, groups, caller);

    const std::uint64_t done = groups * rule.group_bytes;
    if (done == caller_row) {
        return;
    }
    std::uint8_t colour[16] = {};
    const std::uint8_t no_alpha[16] = {};
    std::uint8_t group[16];
    const std::uint64_t used = groups * rule.colour_bytes;
    std::memcpy(colour, in_order + used, samples * sample_bytes - used);
    scalar::unpack(rule, colour, no_alpha, 1, group);
    std::memcpy(caller + done, group, caller_row - done);
}
