// SPDX-License-Identifier: BSD-3-Clause
#include "rle/slice_decoder.h"

#include <array>
#include <cstring>

#include "rle/bit_reader.h"

namespace {

template <class Sample>
struct token {
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
token<Sample> read_token(bit_reader& reader) {
    using traits = sample_traits<Sample>;
    token<Sample> next;
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
    for (std::uint64_t i = 0; i < length; ++i) {
        store(out, i, static_cast<Sample>(before + static_cast<std::uint32_t>(i + 1) * step));
    }
}

// The two samples before the next run.
template <class Sample>
struct prediction {
    Sample p1 = sample_traits<Sample>::k_start;
    Sample p2 = sample_traits<Sample>::k_start;

    void fill(const token<Sample>& run, std::uint8_t* out) {
        if (run.length == 0) {
            return;
        }
        if (!run.second_order) {
            advance_line(run.length, run.residual, out);
        } else if (run.residual == 0) {
            advance_line(run.length, static_cast<Sample>(p1 - p2), out);
        } else {
            for (std::uint64_t i = 0; i < run.length; ++i) {
                const auto x = static_cast<Sample>(2 * p1 - p2 + run.residual);
                store(out, i, x);
                p2 = p1;
                p1 = x;
            }
        }
    }

    void advance_line(std::uint64_t length, Sample step, std::uint8_t* out) {
        fill_line(out, length, p1, step);
        const auto last = static_cast<Sample>(p1 + static_cast<std::uint32_t>(length) * step);
        p2 = static_cast<Sample>(last - step);
        p1 = last;
    }
};

// Rows were decoded without gaps. Kept as is: what the compact layout left between the spread rows stays there.
void spread_rows(const slice_rows<std::uint8_t>& rows, std::uint64_t packed_row) {
    if (rows.stride <= packed_row) {
        return;
    }
    for (std::uint32_t i = rows.count; i-- > 1;) {
        std::memmove(rows.first + i * rows.stride, rows.first + i * packed_row, packed_row);
    }
}

}  // namespace

template <class Sample>
slice_result decode_slice(const std::uint8_t* source, std::size_t source_size, const slice_rows<std::uint8_t>& rows) {
    bit_reader reader(source, source_size);
    prediction<Sample> before;
    std::uint64_t left = std::uint64_t{rows.width} * rows.count;
    std::uint8_t* out = rows.first;
    while (left != 0) {
        const token<Sample> run = read_token<Sample>(reader);
        if (reader.exhausted()) {
            return slice_result::too_short;
        }
        if (run.length > left) {
            return slice_result::run_too_long;
        }
        before.fill(run, out);
        out += run.length * sizeof(Sample);
        left -= run.length;
    }
    spread_rows(rows, std::uint64_t{rows.width} * sizeof(Sample));
    return slice_result::ok;
}

template slice_result decode_slice<std::uint8_t>(const std::uint8_t*, std::size_t, const slice_rows<std::uint8_t>&);
template slice_result decode_slice<std::uint16_t>(const std::uint8_t*, std::size_t, const slice_rows<std::uint8_t>&);
