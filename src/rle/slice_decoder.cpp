// SPDX-License-Identifier: BSD-3-Clause
#include "rle/slice_decoder.h"

#include <array>
#include <cstring>

#include "rle/bit_reader.h"

namespace {

template <class Sample>
struct coded_run {
    std::uint64_t length;
    Sample residual;  // modulo 2^bit_depth
    bool second_order;
};

// One-bits that open a 9-bit value, 8 at most: no Rice code has a longer prefix.
constexpr std::array<std::uint8_t, 512> make_prefix_table() {
    std::array<std::uint8_t, 512> table{};
    for (unsigned value = 0; value < 512; ++value) {
        unsigned ones = 0;
        while (ones < 8 && (value >> (8 - ones) & 1) != 0) {
            ++ones;
        }
        table[value] = static_cast<std::uint8_t>(ones);
    }
    return table;
}
constexpr auto k_leading_ones = make_prefix_table();

template <class Sample>
coded_run<Sample> read_token(bit_reader& reader) {
    using traits = sample_traits<Sample>;
    coded_run<Sample> next;
    next.second_order = reader.read(1) != 0;
    next.length = reader.read_gamma();
    std::uint64_t code;
    if (reader.read(1) != 0) {
        const std::uint64_t quotient = k_leading_ones[reader.peek(9)];
        reader.skip(quotient + 1);
        code = (quotient << traits::k_low_bits) + reader.read(traits::k_low_bits);
    } else {
        code = reader.read(traits::k_depth);
    }
    next.residual = static_cast<Sample>(zigzag_decode(code));
    return next;
}

template <class Sample>
void store(std::uint8_t* out, std::uint64_t index, Sample value) {
    std::memcpy(out + index * sizeof value, &value, sizeof value);
}

// A straight line from the sample before: every sample is `step` more than the last.
template <class Sample>
void fill_line(std::uint8_t* out, std::uint64_t length, Sample before, Sample step) {
    if (step == 0 && before % 256 == before >> (sample_traits<Sample>::k_depth - 8)) {
        std::memset(out, before % 256, length * sizeof(Sample));
        return;
    }
    for (std::uint64_t i = 0; i < length; ++i) {
        before = static_cast<Sample>(before + step);
        store(out, i, before);
    }
}

template <class Sample>
void write_run(const coded_run<Sample>& run, slice_cursor& slice) {
    auto last = static_cast<Sample>(slice.last);
    auto slope = static_cast<Sample>(slice.slope);
    if (run.length == 0) {
        return;
    }
    if (run.second_order && run.residual != 0) {
        for (std::uint64_t i = 0; i < run.length; ++i) {
            slope = static_cast<Sample>(slope + run.residual);
            last = static_cast<Sample>(last + slope);
            store(slice.out, i, last);
        }
    } else {
        slope = run.second_order ? slope : run.residual;
        fill_line(slice.out, run.length, last, slope);
        last = static_cast<Sample>(last + static_cast<std::uint32_t>(run.length) * slope);
    }
    slice.last = last;
    slice.slope = slope;
    slice.out += run.length * sizeof(Sample);
    slice.left -= run.length;
}

// Reads one token with an eye on both ends.
template <class Sample>
slice_result decode_token(slice_cursor& slice) {
    bit_reader reader(slice.source, slice.source_size, slice.position);
    const coded_run<Sample> run = read_token<Sample>(reader);
    if (reader.exhausted()) {
        return slice_result::too_short;
    }
    if (run.length > slice.left) {
        return slice_result::run_too_long;
    }
    slice.position = reader.bits_read();
    write_run(run, slice);
    return slice_result::ok;
}

// Rows were decoded without gaps. Kept as is: what the compact layout left between the spread rows stays there.
void spread_rows(const slice_rows<std::uint8_t>& rows, std::uint64_t packed_row) {
    if (rows.stride <= packed_row) {
        return;
    }
    for (std::uint32_t i = rows.count; i-- > 1;) {
        std::memmove(rows.first + i * rows.stride, rows.first + i * packed_row, packed_row);
    }
}

std::uint64_t sample_count(const slice_rows<std::uint8_t>& rows) {
    return std::uint64_t{rows.width} * rows.count;
}

}  // namespace

template <class Sample>
void decode_slices(coded_slice* slices, std::uint32_t count, const rle_kernels& kernels) {
    slice_cursor cursors[k_slices_together];
    coded_slice* owners[k_slices_together];
    std::uint32_t active = 0;
    for (std::uint32_t i = 0; i < count; ++i) {
        const coded_slice& slice = slices[i];
        slices[i].result = slice_result::ok;
        cursors[active] = {slice.source,
                           slice.source_size,
                           0,
                           slice.rows.first,
                           slice.rows.first,
                           sample_count(slice.rows),
                           sample_traits<Sample>::k_start,
                           0};
        owners[active] = &slices[i];
        active += cursors[active].left != 0 ? 1 : 0;
    }
    while (active != 0) {
        decode<Sample>(kernels)(cursors, active);
        const std::uint32_t before = active;
        active = 0;
        for (std::uint32_t i = 0; i < before; ++i) {
            if (cursors[i].left != 0) {
                owners[i]->result = decode_token<Sample>(cursors[i]);
            }
            if (cursors[i].left != 0 && owners[i]->result == slice_result::ok) {
                cursors[active] = cursors[i];
                owners[active++] = owners[i];
            }
        }
    }
    for (std::uint32_t i = 0; i < count; ++i) {
        if (slices[i].result == slice_result::ok) {
            spread_rows(slices[i].rows, std::uint64_t{slices[i].rows.width} * sizeof(Sample));
        }
    }
}

template void decode_slices<std::uint8_t>(coded_slice*, std::uint32_t, const rle_kernels&);
template void decode_slices<std::uint16_t>(coded_slice*, std::uint32_t, const rle_kernels&);
