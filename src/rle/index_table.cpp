// SPDX-License-Identifier: BSD-3-Clause
#include "rle/index_table.h"

#include "rle/bit_reader.h"
#include "rle/bit_writer.h"
#include "rle/kernels/token.h"

namespace {

constexpr std::uint32_t k_predictor = 0x7fffff;  // what the first value of a sequence is measured from
constexpr unsigned k_low_bits = 10;
constexpr unsigned k_raw_bits = 24;
constexpr std::uint32_t k_largest_rice = 13311;  // above it the raw form is the shorter one
constexpr std::uint32_t k_largest_code = 0xffffff;

// Kept as is: a difference is wrapped into 24 bits once when written and never when read, so sequences survive only
// while neighbours lie within 24 bits of each other.
std::uint32_t zigzag_of_difference(std::uint32_t value, std::uint32_t previous) {
    std::int64_t difference = static_cast<std::int32_t>(value - previous);
    if (difference >= 0x800000) {
        difference -= 0x1000000;
    } else if (difference < -0x800000) {
        difference += 0x1000000;
    }
    const std::int64_t code = difference >= 0 ? 2 * difference : -2 * difference - 1;
    if (code > k_largest_code) {
        throw out_of_range("values greater than 24bit is not supported by rle index table");
    }
    return static_cast<std::uint32_t>(code);
}

void write_group(bit_writer& writer, std::uint64_t length, std::uint32_t code) {
    writer.write(length, 2 * gamma_zeros(length) + 1);
    if (code > k_largest_rice) {
        writer.write(code, 1 + k_raw_bits);  // the type bit is 0
        return;
    }
    const std::uint32_t quotient = code >> k_low_bits;
    const std::uint64_t type_and_ones = (std::uint64_t{1} << (1 + quotient)) - 1;
    const std::uint64_t low = code & ((1u << k_low_bits) - 1);
    writer.write(type_and_ones << (1 + k_low_bits) | low, 1 + quotient + 1 + k_low_bits);
}

void write_sequence(bit_writer& writer, const std::uint32_t* values, std::size_t count) {
    std::uint32_t previous = k_predictor;
    std::uint32_t group_code = 0;
    std::uint64_t group_length = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint32_t code = zigzag_of_difference(values[i], previous);
        if (group_length != 0 && code != group_code) {
            write_group(writer, group_length, group_code);
            group_length = 0;
        }
        group_code = code;
        ++group_length;
        previous = values[i];
    }
    if (group_length != 0) {
        write_group(writer, group_length, group_code);
    }
}

void read_sequence(bit_reader& reader, std::uint32_t* values, std::size_t count) {
    std::uint32_t value = k_predictor;
    std::size_t produced = 0;
    while (produced < count) {
        const std::uint64_t length = reader.read_gamma();
        std::uint64_t code;
        if (reader.read(1) != 0) {
            code = reader.read_unary() << k_low_bits;
            code |= reader.read(k_low_bits);
        } else {
            code = reader.read(k_raw_bits);
        }
        if (reader.exhausted()) {
            throw_invalid_argument("rle payload is too short");
        }
        if (length > count - produced) {
            throw_invalid_argument("rle index table is malformed");
        }
        const auto difference = static_cast<std::uint32_t>(zigzag_decode(code));
        for (std::uint64_t i = 0; i < length; ++i) {
            value += difference;
            values[produced++] = value;
        }
    }
}

}  // namespace

std::size_t write_index_table(const std::uint32_t* sizes, const std::uint32_t* rows, std::size_t count,
                              std::uint8_t* destination, std::size_t capacity) {
    bit_writer writer(destination, capacity);
    const std::size_t stored = count & 0xff;
    writer.write(stored, 8);
    write_sequence(writer, sizes, stored);
    write_sequence(writer, rows, stored);
    return writer.finish();
}

void read_index_table(const std::uint8_t* payload, std::size_t payload_size, index_table& table) {
    bit_reader reader(payload, payload_size);
    table.slices = static_cast<std::uint32_t>(reader.read(8));
    if (reader.exhausted()) {
        throw_invalid_argument("rle payload is too short");
    }
    read_sequence(reader, table.sizes.data(), table.slices);
    read_sequence(reader, table.rows.data(), table.slices);
    table.bytes = static_cast<std::size_t>((reader.bits_read() + 7) / 8);
}
