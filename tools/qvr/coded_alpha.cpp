// SPDX-License-Identifier: BSD-3-Clause
#include "coded_alpha.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace qvr {

namespace {

// Most significant bit first; behind the end are zeros.
class bit_cursor {
  public:
    explicit bit_cursor(bytes_view of) : bytes(of) {}

    // Up to 56 bits.
    std::uint64_t peek(unsigned count) const {
        std::uint64_t word = 0;
        const std::uint64_t first = std::min<std::uint64_t>(at / 8, bytes.size);
        std::memcpy(&word, bytes.data + first, std::min<std::uint64_t>(bytes.size - first, sizeof word));
        return count == 0 ? 0 : __builtin_bswap64(word) << (at % 8) >> (64 - count);
    }
    void skip(unsigned count) { at += count; }
    std::uint64_t take(unsigned count) {
        const std::uint64_t value = peek(count);
        skip(count);
        return value;
    }

    // As many zeros as there are before a one, and then that many bits and one. No number has more than 33 bits.
    std::uint64_t take_gamma() {
        const std::uint64_t ahead = peek(32);
        const unsigned zeros = ahead == 0 ? 32 : static_cast<unsigned>(__builtin_clzll(ahead)) - 32;
        skip(zeros);
        return take(zeros + 1);
    }

    // Ones, up to `most`, and the bit behind them.
    std::uint64_t take_unary(std::uint64_t most) {
        std::uint64_t ones = 0;
        while (ones < most && peek(1) == 1) {
            skip(1);
            ++ones;
        }
        skip(1);
        return ones;
    }

    // Passes over the bits that fill up the byte, and says whether they are zero.
    bool finish_byte() {
        const auto rest = static_cast<unsigned>((8 - at % 8) % 8);
        return take(rest) == 0;
    }

    bool past_end() const { return at > std::uint64_t{bytes.size} * 8; }
    std::uint64_t whole_bytes() const { return (at + 7) / 8; }

  private:
    bytes_view bytes;
    std::uint64_t at = 0;
};

constexpr unsigned k_table_low_bits = 10;
constexpr unsigned k_table_raw_bits = 24;
constexpr std::uint32_t k_table_start = 0x7FFFFF;

std::uint32_t unfold(std::uint64_t zigzag) {
    return static_cast<std::uint32_t>((zigzag >> 1) ^ (0 - (zigzag & 1)));  // two's complement
}

// Values as differences, equal differences in groups. What is wrong, or nothing.
std::string read_sequence(bit_cursor& from, std::vector<std::uint32_t>& values) {
    std::uint32_t value = k_table_start;
    for (std::size_t done = 0; done < values.size();) {
        const std::uint64_t length = from.take_gamma();
        const bool rice = from.take(1) == 1;
        const std::uint64_t high = rice ? from.take_unary(~std::uint64_t{0}) : 0;
        const std::uint64_t code = high << k_table_low_bits | from.take(rice ? k_table_low_bits : k_table_raw_bits);
        if (from.past_end()) {
            return "the payload ends within the slice table";
        }
        if (length > values.size() - done) {
            return "the slice table has more values than slices";
        }
        for (std::uint64_t i = 0; i < length; ++i) {
            value += unfold(code);
            values[done++] = value;
        }
    }
    return {};
}

// What tokens of a sample width look like.
struct token_shape {
    unsigned low_bits;
    unsigned raw_bits;
};

constexpr std::uint64_t k_most_token_ones = 8;

// Passes over one token and returns the length of its run.
std::uint64_t take_token(bit_cursor& from, const token_shape& shape) {
    from.skip(1);  // which prediction the run continues
    const std::uint64_t length = from.take_gamma();
    if (from.take(1) == 1) {
        from.take_unary(k_most_token_ones);
        from.skip(shape.low_bits);
    } else {
        from.skip(shape.raw_bits);
    }
    return length;
}

}  // namespace

slice_table read_slice_table(bytes_view payload) {
    slice_table table;
    bit_cursor cursor(payload);
    const std::uint64_t count = cursor.take(8);
    if (cursor.past_end()) {
        table.problem = "there is no slice table";
        return table;
    }
    std::vector<std::uint32_t> sizes(count);
    std::vector<std::uint32_t> rows(count);
    for (std::vector<std::uint32_t>* values : {&sizes, &rows}) {
        table.problem = read_sequence(cursor, *values);
        if (!table.problem.empty()) {
            return table;
        }
    }
    table.padding_zero = cursor.finish_byte();
    table.bytes = cursor.whole_bytes();
    table.end = table.bytes;
    for (std::uint64_t i = 0; i < count; ++i) {
        table.slices.push_back({table.end, sizes[i], table.rows, rows[i]});
        table.end += sizes[i];
        table.rows += rows[i];
    }
    return table;
}

slice_extent measure_slice(bytes_view from, std::uint64_t samples, unsigned bits) {
    const token_shape shape = bits == 8 ? token_shape{2, 8} : token_shape{6, 16};
    slice_extent extent;
    bit_cursor cursor(from);
    while (samples > 0) {
        const std::uint64_t length = take_token(cursor, shape);
        if (cursor.past_end()) {
            extent.problem = "the payload ends before its last run";
            return extent;
        }
        if (length > samples) {
            extent.problem = "a run goes past its last sample";
            return extent;
        }
        samples -= length;
    }
    extent.padding_zero = cursor.finish_byte();
    extent.bytes = cursor.whole_bytes();
    return extent;
}

}  // namespace qvr
