// SPDX-License-Identifier: BSD-3-Clause
#include <cstring>

#include "pixel/kernels/row_kernels.h"

namespace {

template <class Value>
Value load(const std::uint8_t* from) {
    Value value;
    std::memcpy(&value, from, sizeof value);
    return value;
}

template <class Value>
void store(std::uint8_t* to, Value value) {
    std::memcpy(to, &value, sizeof value);
}

template <class Sample>
void pack_samples(const pixel_map& map, const std::uint8_t* caller, std::size_t groups, std::uint8_t* colour,
                  std::uint8_t* alpha) {
    constexpr std::size_t bytes = sizeof(Sample);
    for (std::size_t i = 0; i < groups; ++i) {
        for (std::size_t j = 0; j < map.colours; ++j) {
            store(colour + j * bytes, load<Sample>(caller + map.colour[j] * bytes));
        }
        if (map.alpha >= 0 && alpha != nullptr) {
            store(alpha + i * bytes, load<Sample>(caller + static_cast<std::size_t>(map.alpha) * bytes));
        }
        caller += map.samples * bytes;
        colour += map.colours * bytes;
    }
}

template <class Sample>
void unpack_samples(const pixel_map& map, const std::uint8_t* colour, const std::uint8_t* alpha, std::size_t groups,
                    std::uint8_t* caller) {
    constexpr std::size_t bytes = sizeof(Sample);
    for (std::size_t i = 0; i < groups; ++i) {
        for (std::size_t j = 0; j < map.colours; ++j) {
            store(caller + map.colour[j] * bytes, load<Sample>(colour + j * bytes));
        }
        if (map.alpha >= 0) {
            store(caller + static_cast<std::size_t>(map.alpha) * bytes, load<Sample>(alpha + i * bytes));
        }
        caller += map.samples * bytes;
        colour += map.colours * bytes;
    }
}

// Low bits of `bits` bits a sample, several samples to a byte.
template <unsigned bits>
void narrow(const std::uint8_t* words, std::size_t samples, std::uint8_t* high, std::uint8_t* low) {
    constexpr unsigned in_a_byte = 8 / bits;
    for (std::size_t i = 0; i < samples; ++i) {
        const auto word = load<std::uint16_t>(words + 2 * i);
        high[i] = static_cast<std::uint8_t>(word >> 8);
        const unsigned place = i % in_a_byte * bits;
        const unsigned lowest = (word >> (8 - bits) & ((1u << bits) - 1)) << place;
        std::uint8_t& packed = low[i / in_a_byte];
        packed = static_cast<std::uint8_t>(place == 0 ? lowest : packed | lowest);
    }
}

template <unsigned bits>
void widen(const std::uint8_t* high, const std::uint8_t* low, std::size_t samples, std::uint8_t* words) {
    constexpr unsigned in_a_byte = 8 / bits;
    for (std::size_t i = 0; i < samples; ++i) {
        const unsigned place = i % in_a_byte * bits;
        const unsigned lowest = low[i / in_a_byte] >> place & ((1u << bits) - 1);
        store(words + 2 * i, static_cast<std::uint16_t>(static_cast<unsigned>(high[i]) << 8 | lowest << (8 - bits)));
    }
}

// Both steps by way of a few samples at a time, whole groups and whole bytes of low bits: step(group, groups, sample).
constexpr std::size_t k_few = 12;

template <class Step>
void by_few_groups(const reorder_rule& rule, std::size_t groups, const Step& step) {
    const std::size_t few = k_few / rule.map.colours;
    for (std::size_t done = 0; done < groups; done += few) {
        step(done, groups - done < few ? groups - done : few, done * rule.map.colours);
    }
}

template <unsigned bits>
void pack_narrow(const reorder_rule& rule, const std::uint8_t* caller, std::size_t groups, std::uint8_t* high,
                 std::uint8_t* low) {
    by_few_groups(rule, groups, [&](std::size_t group, std::size_t count, std::size_t sample) {
        std::uint8_t words[2 * k_few];
        scalar::pack(rule, caller + group * rule.group_bytes, count, words, nullptr);
        narrow<bits>(words, count * rule.map.colours, high + sample, low + sample * bits / 8);
    });
}

template <unsigned bits>
void widen_unpack(const reorder_rule& rule, const std::uint8_t* high, const std::uint8_t* low, std::size_t groups,
                  std::uint8_t* caller) {
    by_few_groups(rule, groups, [&](std::size_t group, std::size_t count, std::size_t sample) {
        std::uint8_t words[2 * k_few];
        widen<bits>(high + sample, low + sample * bits / 8, count * rule.map.colours, words);
        scalar::unpack(rule, words, words, count, caller + group * rule.group_bytes);  // without alpha
    });
}

}  // namespace

namespace scalar {

void pack(const reorder_rule& rule, const std::uint8_t* caller, std::size_t groups, std::uint8_t* colour,
          std::uint8_t* alpha) {
    switch (rule.sample_bytes) {
        case 1:
            return pack_samples<std::uint8_t>(rule.map, caller, groups, colour, alpha);
        case 2:
            return pack_samples<std::uint16_t>(rule.map, caller, groups, colour, alpha);
        default:
            return pack_samples<std::uint32_t>(rule.map, caller, groups, colour, alpha);
    }
}

void unpack(const reorder_rule& rule, const std::uint8_t* colour, const std::uint8_t* alpha, std::size_t groups,
            std::uint8_t* caller) {
    switch (rule.sample_bytes) {
        case 1:
            return unpack_samples<std::uint8_t>(rule.map, colour, alpha, groups, caller);
        case 2:
            return unpack_samples<std::uint16_t>(rule.map, colour, alpha, groups, caller);
        default:
            return unpack_samples<std::uint32_t>(rule.map, colour, alpha, groups, caller);
    }
}

void narrow_10(const std::uint8_t* words, std::size_t samples, std::uint8_t* high, std::uint8_t* low) {
    narrow<2>(words, samples, high, low);
}

void narrow_12(const std::uint8_t* words, std::size_t samples, std::uint8_t* high, std::uint8_t* low) {
    narrow<4>(words, samples, high, low);
}

void widen_10(const std::uint8_t* high, const std::uint8_t* low, std::size_t samples, std::uint8_t* words) {
    widen<2>(high, low, samples, words);
}

void widen_12(const std::uint8_t* high, const std::uint8_t* low, std::size_t samples, std::uint8_t* words) {
    widen<4>(high, low, samples, words);
}

void narrow_10_packed(const std::uint8_t* words, std::size_t width, std::uint8_t* high, std::uint8_t* low) {
    const std::size_t samples = width / 2 * 4;  // whole pairs of pixels
    for (std::size_t i = 0; i < samples; ++i) {
        const unsigned sample = load<std::uint32_t>(words + i / 3 * 4) >> (i % 3 * 10) & 0x3ff;
        high[i] = static_cast<std::uint8_t>(sample >> 2);
        const unsigned place = i % 4 * 2;
        const unsigned lowest = (sample & 3) << place;
        low[i / 4] = static_cast<std::uint8_t>(place == 0 ? lowest : low[i / 4] | lowest);
    }
}

void widen_10_packed(const std::uint8_t* high, const std::uint8_t* low, std::size_t width, std::uint8_t* words) {
    const std::size_t samples = width / 2 * 4;
    const std::size_t groups = (width + k_packed_pixels - 1) / k_packed_pixels;
    for (std::size_t i = 0; i < groups * k_packed_group_samples; i += 3) {
        std::uint32_t word = 0;
        for (std::size_t j = i; j < i + 3 && j < samples; ++j) {
            const unsigned sample = static_cast<unsigned>(high[j]) << 2 | (low[j / 4] >> (j % 4 * 2) & 3);
            word |= sample << (j - i) * 10;
        }
        store(words + i / 3 * 4, word);
    }
}

void fixed_to_float(const std::uint8_t* words, std::size_t samples, std::uint8_t* floats) {
    for (std::size_t i = 0; i < samples; ++i) {
        store(floats + 4 * i, static_cast<float>(load<std::int16_t>(words + 2 * i)) * (1.0f / 16384.0f));
    }
}

}  // namespace scalar

const row_kernels k_scalar_kernels = {
    scalar::pack,           scalar::unpack,   scalar::narrow_10,        scalar::narrow_12,
    scalar::widen_10,       scalar::widen_12, pack_narrow<2>,           pack_narrow<4>,
    widen_unpack<2>,        widen_unpack<4>,  scalar::narrow_10_packed, scalar::widen_10_packed,
    scalar::fixed_to_float,
};
