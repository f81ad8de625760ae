// SPDX-License-Identifier: BSD-3-Clause
#include "packing.h"

#include <cstring>

#include "formats.h"

namespace model {

namespace {

using samples = std::vector<std::uint32_t>;

// Where the components of one group of caller samples lie. `colour` lists
// caller positions in stored order; alpha is a caller position or -1.
struct group_rule {
    std::size_t size = 1;
    std::vector<std::size_t> colour = {0};
    int alpha = -1;
};

group_rule rule_of(std::uint32_t order) {
    switch (order) {
        case 1:
        case 15:
            return {2, {1, 0}, -1};
        case 3:
            return {4, {1, 2, 3}, 0};
        case 4:
            return {4, {2, 1, 0}, 3};
        case 6:
            return {3, {2, 1, 0}, -1};
        case 7:
            return {4, {0, 1, 2}, 3};
        case 8:
            return {4, {3, 2, 1}, 0};
        case 11:
            return {3, {0, 1}, 2};
        case 12:
            return {4, {1, 0, 2}, 3};
        default:
            return {};
    }
}

samples split_words(const bytes& row, std::size_t size) {
    samples result;
    for (std::size_t i = 0; i + size <= row.size(); i += size) {
        std::uint32_t value = 0;
        for (std::size_t k = 0; k < size; ++k) {
            value |= std::uint32_t(row[i + k]) << (8 * k);
        }
        result.push_back(value);
    }
    return result;
}

bytes join_words(const samples& values, std::size_t size) {
    bytes row;
    for (const std::uint32_t value : values) {
        for (std::size_t k = 0; k < size; ++k) {
            row.push_back(static_cast<std::uint8_t>((value >> (8 * k)) & 0xFF));
        }
    }
    return row;
}

// 10 and 12-bit samples are stored as one area of high bytes and one area of
// low bits, the first sample of a byte in its lowest bits.
bytes split_areas(const samples& values, unsigned low_bits) {
    bytes row;
    for (const std::uint32_t value : values) {
        row.push_back(static_cast<std::uint8_t>(value >> low_bits));
    }
    const std::size_t per_byte = 8 / low_bits;
    const std::uint32_t mask = (1u << low_bits) - 1;
    for (std::size_t i = 0; i < values.size(); i += per_byte) {
        std::uint32_t packed = 0;
        for (std::size_t k = 0; k < per_byte && i + k < values.size(); ++k) {
            packed |= (values[i + k] & mask) << (low_bits * k);
        }
        row.push_back(static_cast<std::uint8_t>(packed));
    }
    return row;
}

samples join_areas(const bytes& row, std::size_t count, unsigned low_bits) {
    samples values;
    const std::size_t per_byte = 8 / low_bits;
    const std::uint32_t mask = (1u << low_bits) - 1;
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint32_t high = row.at(i);
        const std::uint32_t low = (std::uint32_t(row.at(count + i / per_byte)) >> (low_bits * (i % per_byte))) & mask;
        values.push_back((high << low_bits) | low);
    }
    return values;
}

unsigned low_bits_of(std::uint32_t type) {
    return type == 4 ? 4 : 2;
}

bool is_narrowed(std::uint32_t type) {
    return type == 3 || type == 4;
}

// Caller words hold the sample in their top bits.
bytes store(const samples& values, std::uint32_t type) {
    if (!is_narrowed(type)) {
        return join_words(values, sample_bytes(type));
    }
    samples cut;
    const unsigned unused = 16 - bits_of_type(type);
    for (const std::uint32_t value : values) {
        cut.push_back(value >> unused);
    }
    return split_areas(cut, low_bits_of(type));
}

samples fetch(const bytes& row, std::uint32_t type, std::size_t count) {
    if (!is_narrowed(type)) {
        return split_words(row, sample_bytes(type));
    }
    samples values = join_areas(row, count, low_bits_of(type));
    const unsigned unused = 16 - bits_of_type(type);
    for (std::uint32_t& value : values) {
        value <<= unused;
    }
    return values;
}

// Three samples to a word, bits 0-9, 10-19 and 20-29.
std::uint32_t sample_in_words(const samples& words, std::size_t index) {
    return (words.at(index / 3) >> (10 * (index % 3))) & 0x3FF;
}

// Whole groups of six pixels, and pairs of pixels after them; an odd last
// pixel has no place.
std::size_t packed_words_samples(std::uint32_t width) {
    return std::size_t(width / 6) * 12 + std::size_t(width % 6 / 2) * 4;
}

bytes pack_words_row(std::uint32_t width, const bytes& row) {
    const samples words = split_words(row, 4);
    samples values;
    for (std::size_t i = 0; i < packed_words_samples(width); ++i) {
        values.push_back(sample_in_words(words, i));
    }
    return split_areas(values, 2);
}

bytes unpack_words_row(std::uint32_t width, const bytes& row, std::size_t length) {
    samples words(length / 4, 0);
    const std::size_t low_area = std::size_t(width) * 2;
    for (std::size_t i = 0; i < packed_words_samples(width); ++i) {
        const std::uint32_t high = row.at(i);
        const std::uint32_t low = (std::uint32_t(row.at(low_area + i / 4)) >> (2 * (i % 4))) & 3;
        words.at(i / 3) |= ((high << 2) | low) << (10 * (i % 3));
    }
    return join_words(words, 4);
}

samples fixed_to_float(const samples& values) {
    samples result;
    for (const std::uint32_t value : values) {
        const float converted = static_cast<float>(static_cast<std::int16_t>(value)) / 16384.0f;
        std::uint32_t word = 0;
        std::memcpy(&word, &converted, sizeof word);
        result.push_back(word);
    }
    return result;
}

// Puts stored samples back at the caller's positions. A caller row of odd
// width can be longer than what is stored: what has no source is zero.
samples merge(const group_rule& rule, const samples& colour, const samples& alpha, std::size_t count) {
    samples row;
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t group = i / rule.size;
        const std::size_t place = i % rule.size;
        std::uint32_t value = 0;
        if (rule.alpha >= 0 && place == static_cast<std::size_t>(rule.alpha)) {
            value = group < alpha.size() ? alpha[group] : 0;
        }
        for (std::size_t k = 0; k < rule.colour.size(); ++k) {
            const std::size_t source = group * rule.colour.size() + k;
            if (rule.colour[k] == place && source < colour.size()) {
                value = colour[source];
            }
        }
        row.push_back(value);
    }
    return row;
}

std::size_t stored_samples(std::uint32_t order, std::uint32_t width) {
    return subsampling(order) == 422 ? std::size_t(width) * 2 + width % 2 : std::size_t(width) * 3;
}

}  // namespace

stored_row pack_interleaved_row(std::uint32_t order, std::uint32_t type, std::uint32_t width, const bytes& row) {
    stored_row result;
    if (type == 5) {
        result.colour = pack_words_row(width, row);
        return result;
    }
    const group_rule rule = rule_of(order);
    const samples caller = split_words(row, sample_bytes(type));
    samples colour;
    samples alpha;
    for (std::size_t group = 0; group + rule.size <= caller.size(); group += rule.size) {
        for (const std::size_t place : rule.colour) {
            colour.push_back(caller[group + place]);
        }
        if (rule.alpha >= 0) {
            alpha.push_back(caller[group + static_cast<std::size_t>(rule.alpha)]);
        }
    }
    result.colour = store(colour, type);
    result.alpha = join_words(alpha, sample_bytes(type));
    return result;
}

bytes pack_plane_row(std::uint32_t type, const bytes& row) {
    return store(split_words(row, sample_bytes(type)), type);
}

bytes unpack_interleaved_row(std::uint32_t order, std::uint32_t type, std::uint32_t width, const stored_row& row,
                             std::size_t length, bool fixed) {
    if (type == 5) {
        return unpack_words_row(width, row.colour, length);
    }
    const samples colour =
        fixed ? fixed_to_float(split_words(row.colour, 2)) : fetch(row.colour, type, stored_samples(order, width));
    const samples alpha = split_words(row.alpha, sample_bytes(type));
    const std::size_t size = sample_bytes(type);
    return join_words(merge(rule_of(order), colour, alpha, length / size), size);
}

bytes unpack_plane_row(std::uint32_t type, std::uint32_t width, const bytes& row) {
    return join_words(fetch(row, type, width), sample_bytes(type));
}

}  // namespace model
