// SPDX-License-Identifier: BSD-3-Clause
//
// The fast part of decoding: bits into tokens by table, tokens into runs, runs into samples with vectors that write more
// than is asked for. Compiled once for each instruction set; Lanes is a type of its own in an unnamed namespace, so that
// no two of them share a function.
#pragma once

#include <tmmintrin.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "rle/kernels/rle_kernels.h"
#include "rle/kernels/token_table.h"

template <class Lanes>
class slice_unpacker {
    using sample = typename Lanes::sample;
    using traits = sample_traits<sample>;

    static constexpr std::size_t k_lanes = 16;  // samples that are written at once
    using vector [[gnu::vector_size(k_lanes * sizeof(sample))]] = sample;

    static constexpr auto k_tokens = make_token_table<sample>();
    static constexpr std::uint32_t k_longer_token = ::k_longer_token<sample>;
    static constexpr unsigned k_most_token_bits = sizeof(sample) == 1 ? k_table_bits : k_table_bits + traits::k_depth;
    static constexpr unsigned k_full = 56;  // bits that are there after a refill, at least
    static constexpr unsigned k_tokens_a_refill = k_full / k_most_token_bits;
    static constexpr std::size_t k_margin = k_tokens_a_refill * k_lanes * sizeof(sample);  // bytes

  public:
    static void decode(slice_cursor* slices, std::uint32_t count) {
        for (std::uint32_t i = 0; i < count; ++i) {
            if (slices[i].out == slices[i].rows) {
                return;  // a vector begins with the sample before
            }
        }
        slice_unpacker first(slices[0]);
        if (count == 1) {
            while (first.can_go_on() && first.step()) {
            }
        } else {
            slice_unpacker second(slices[1]);
            while (first.can_go_on() && second.can_go_on() && first.step() && second.step()) {
            }
            second.save(slices[1]);
        }
        first.save(slices[0]);
    }

  private:
    explicit slice_unpacker(const slice_cursor& slice)
        : in(slice.source + slice.position / 8),
          in_end(slice.source + slice.source_size),
          out(slice.out),
          out_end(slice.out + slice.left * sizeof(sample)),
          last(slice.last),
          slope(slice.slope) {
        if (slice.position % 8 != 0) {
            available = static_cast<unsigned>(8 - slice.position % 8);
            bits = std::uint64_t{*in++} << (64 - available);
        }
    }

    void save(slice_cursor& slice) const {
        slice.position = static_cast<std::uint64_t>(in - slice.source) * 8 - available;
        slice.out = out;
        slice.left = static_cast<std::uint64_t>(out_end - out) / sizeof(sample);
        slice.last = static_cast<sample>(last);
        slice.slope = static_cast<sample>(slope);
    }

    bool can_refill() const { return in_end - in >= 8; }
    bool can_go_on() const { return can_refill() && static_cast<std::size_t>(out_end - out) >= k_margin; }

    // Loads eight bytes behind the bits that are there and moves on by those that fit whole.
    void refill() {
        std::uint64_t next;
        std::memcpy(&next, in, sizeof next);
        bits |= __builtin_bswap64(next) >> available;
        in += (63 - available) >> 3;
        available |= 56;
    }
    void take(unsigned count) {
        bits <<= count;
        available -= count;
    }

    // As many tokens as a refill gives, or up to one that is not in the table. False where that cannot be done.
    bool step() {
        refill();
        return sizeof(sample) == 1 ? step_8() : step_16();
    }

    // An entry that stands for a longer token takes no bits and writes no samples, so that it comes again and again and
    // one look at the end is enough. A vector begins with the sample before the run, because the last sample of a run
    // can then be found without asking whether the run is empty.
    bool step_8() {
        __m128i level = _mm_set1_epi8(static_cast<char>(last));
        std::size_t row = slope * k_lanes;  // of the table of lines
        std::uint32_t entry = 0;
        std::uint32_t taken = 0;
        for (unsigned i = 0; i < k_tokens_a_refill; ++i) {
            entry = k_tokens[bits >> (64 - k_table_bits)];
            bits <<= entry & 63;
            taken += entry;
            row = ((entry >> 12 & row) + (entry >> 20)) & (0xff * k_lanes);
            const __m128i line = _mm_add_epi8(level, load_row(k_lines, row));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(out - 1), line);
            const std::uint32_t length = entry >> 8 & 0xff;
            out += length;
            level = _mm_shuffle_epi8(line, load_row(k_lanes_alone, std::size_t{length} * k_lanes));
        }
        available -= taken & 0xff;
        last = static_cast<std::uint32_t>(_mm_cvtsi128_si32(level)) & 0xff;
        slope = static_cast<std::uint32_t>(row / k_lanes);
        return entry != k_longer_token || long_token();
    }

    bool step_16() {
        for (unsigned i = 0; i < k_tokens_a_refill; ++i) {
            const std::uint32_t entry = k_tokens[bits >> (64 - k_table_bits)];
            const auto low = static_cast<std::uint32_t>(bits << (entry >> 6 & 63) >> (entry >> 12 & 63));
            const std::uint32_t code = (entry >> 12 & 0x3c0) + low;
            const std::uint32_t residual = (code >> 1) ^ (0 - (code & 1));
            const bool bends = (entry >> 30 & 1) != 0 && residual != 0;
            if (entry == k_longer_token || bends) {
                return long_token();
            }
            take(entry & 63);
            // All bits or none of the slope before, by the sign.
            slope = (slope & static_cast<std::uint32_t>(static_cast<std::int32_t>(entry) >> 31)) + residual;
            vector line;
            continue_line(line);
            std::memcpy(out, &line, sizeof line);
            const std::uint32_t length = entry >> 22 & 15;
            out += length * sizeof(sample);
            last += length * slope;
        }
        return true;
    }

    // The next k_lanes samples on the line.
    void continue_line(vector& line) const {
        constexpr vector k_count = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
        line = k_count * static_cast<sample>(slope) + static_cast<sample>(last);
    }

    using row_table = std::array<std::uint8_t, 256 * k_lanes>;
    static __m128i load_row(const row_table& table, std::size_t row) {
        return _mm_load_si128(reinterpret_cast<const __m128i*>(table.data() + row));
    }
    // For every slope, what the samples from the one before are more than that.
    static constexpr row_table make_lines() {
        row_table lines{};
        for (unsigned i = 0; i < lines.size(); ++i) {
            lines[i] = static_cast<std::uint8_t>(i / k_lanes * (i % k_lanes));
        }
        return lines;
    }
    // For every lane, the shuffle that puts it into all lanes.
    static constexpr row_table make_lanes_alone() {
        row_table shuffles{};
        for (unsigned i = 0; i < k_lanes * k_lanes; ++i) {
            shuffles[i] = static_cast<std::uint8_t>(i / k_lanes);
        }
        return shuffles;
    }
    alignas(64) static constexpr row_table k_lines = make_lines();
    alignas(64) static constexpr row_table k_lanes_alone = make_lanes_alone();

    // Any token of up to 56 bits, field by field.
    bool long_token() {
        if (!can_refill()) {
            return false;
        }
        refill();
        std::uint64_t ahead = bits;
        const bool second_order = ahead >> 63 != 0;
        ahead <<= 1;
        const auto zeros = static_cast<unsigned>(__builtin_clzll(ahead | 1));
        if (zeros > 18) {
            return false;
        }
        const std::uint64_t length = ahead >> (63 - 2 * zeros);
        ahead <<= 2 * zeros + 1;
        const bool rice = ahead >> 63 != 0;
        ahead <<= 1;
        std::uint32_t code = 0;
        unsigned code_bits = traits::k_depth;
        unsigned count = 1 + 2 * zeros + 1 + 1;
        if (rice) {
            // No more than 8 one-bits count; one bit behind them is taken whatever it is.
            const auto quotient = static_cast<unsigned>(__builtin_clzll(~ahead | std::uint64_t{1} << 55));
            code = quotient << traits::k_low_bits;
            code_bits = traits::k_low_bits;
            ahead <<= quotient + 1;
            count += quotient + 1;
        }
        code += static_cast<std::uint32_t>(ahead >> (64 - code_bits));
        const std::uint64_t left = static_cast<std::uint64_t>(out_end - out) / sizeof(sample);
        if (length > left) {
            return false;
        }
        take(count + code_bits);
        const std::uint32_t residual = (code >> 1) ^ (0 - (code & 1));
        if (second_order && residual != 0) {
            write_bend(length, residual);
        } else {
            slope = second_order ? slope : static_cast<sample>(residual);
            write_long_line(length);
        }
        return true;
    }

    void write_bend(std::uint64_t length, std::uint32_t residual) {
        for (std::uint64_t i = 0; i < length; ++i) {
            slope = static_cast<sample>(slope + residual);
            last += slope;
            const auto value = static_cast<sample>(last);
            std::memcpy(out, &value, sizeof value);
            out += sizeof value;
        }
    }

    void write_long_line(std::uint64_t length) {
        const auto level_sample = static_cast<sample>(last);
        std::uint8_t* const end = out + length * sizeof(sample);
        if (slope == 0 && length >= 512 && level_sample % 256 == level_sample >> (traits::k_depth - 8)) {
            std::memset(out, level_sample % 256, length * sizeof(sample));
            out = end;
            return;
        }
        slope = static_cast<sample>(slope);
        vector line;
        continue_line(line);
        const auto step = static_cast<sample>(slope * static_cast<std::uint32_t>(k_lanes));
        for (; static_cast<std::size_t>(end - out) >= sizeof line; out += sizeof line) {
            std::memcpy(out, &line, sizeof line);
            line += step;
        }
        if (static_cast<std::size_t>(out_end - out) >= sizeof line) {
            std::memcpy(out, &line, sizeof line);
        } else {
            std::memcpy(out, &line, static_cast<std::size_t>(end - out));
        }
        out = end;
        last += static_cast<std::uint32_t>(length) * slope;
    }

    const std::uint8_t* in;  // the first byte that is not among the bits in whole
    const std::uint8_t* in_end;
    std::uint8_t* out;
    std::uint8_t* out_end;
    std::uint64_t bits = 0;  // the next ones, from the top
    unsigned available = 0;  // of them
    std::uint32_t last;      // the sample before; what is above its own bits is not to be looked at
    std::uint32_t slope;     // the same; of 8-bit samples always clean
};
