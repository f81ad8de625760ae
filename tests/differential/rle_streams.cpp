// SPDX-License-Identifier: BSD-3-Clause
#include <algorithm>

#include "streams.h"

namespace differential {

namespace {

// Writes run-length streams field by field, sensible or not.
class bit_string {
  public:
    void put(std::uint64_t value, unsigned count) {
        for (unsigned i = count; i > 0; --i) {
            bits_.push_back(static_cast<std::uint8_t>((value >> (i - 1)) & 1));
        }
    }

    void gamma(std::uint64_t value) {
        unsigned log = 0;
        while ((value >> log) > 1) {
            ++log;
        }
        put(0, log);
        put(value, log + 1);
    }

    void align() {
        while (bits_.size() % 8 != 0) {
            bits_.push_back(0);
        }
    }

    model::bytes done() const {
        model::bytes data((bits_.size() + 7) / 8, 0);
        for (std::size_t i = 0; i < bits_.size(); ++i) {
            data[i / 8] = static_cast<std::uint8_t>(data[i / 8] | (bits_[i] << (7 - i % 8)));
        }
        return data;
    }

  private:
    model::bytes bits_;
};

void put_group(rng& random, bit_string& out, std::uint32_t length, std::uint32_t z) {
    if (random.chance(1)) {
        // A group of no values: as many zeros as a reader looks at, then none.
        out.put(0, 32);
        out.put(0, 33);
    } else {
        out.gamma(length);
    }
    if ((z >> 10) < 30 && random.chance(60)) {
        out.put(1, 1);
        for (std::uint32_t i = 0; i < z >> 10; ++i) {
            out.put(1, 1);
        }
        out.put(0, 1);
        out.put(z & 1023, 10);
    } else {
        out.put(0, 1);
        out.put(z, 24);
    }
}

void put_values(rng& random, bit_string& out, const std::vector<std::uint32_t>& values) {
    std::uint32_t previous = 8388607;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const auto delta = static_cast<std::int32_t>(values[i] - previous);
        const std::uint32_t z =
            delta >= 0 ? 2 * static_cast<std::uint32_t>(delta) : 2 * (0u - static_cast<std::uint32_t>(delta)) - 1;
        put_group(random, out, random.chance(1) ? random.between(2, 5) : 1, z & 0xFFFFFF);
        previous = values[i];
    }
}

void put_token(rng& random, bit_string& out, std::uint32_t depth, std::uint64_t length) {
    out.put(random.below(2), 1);
    if (random.chance(2)) {
        const unsigned zeros = random.chance(50) ? 32 : random.between(1, 31);
        out.put(0, zeros);
        out.put(random.chance(50) ? 0 : random.next() >> 31, zeros + 1);
    } else {
        out.gamma(length);
    }
    const unsigned k = depth / 2 - 2;
    if (random.chance(50)) {
        out.put(1, 1);
        const std::uint32_t ones = random.chance(90) ? random.below(5) : random.below(10);
        for (std::uint32_t i = 0; i < ones; ++i) {
            out.put(1, 1);
        }
        if (ones < 9) {
            out.put(0, 1);
        }
        out.put(random.next(), k);
    } else {
        out.put(0, 1);
        out.put(random.next(), depth);
    }
}

model::bytes random_slice(rng& random, std::uint32_t depth, std::uint64_t samples, bool damage) {
    bit_string out;
    std::uint64_t written = 0;
    while (written < samples) {
        std::uint64_t length = random.between(1, random.chance(50) ? 4 : 40);
        if (!damage || !random.chance(5)) {
            length = std::min(length, samples - written);
        }
        put_token(random, out, depth, length);
        written += length;
    }
    out.align();
    return out.done();
}

// A table of its own making: slices of any rows, in sum often fewer than the
// plane has and now and then more.
model::bytes crafted_payload(rng& random, std::uint32_t width, std::uint32_t height, std::uint32_t depth) {
    const std::uint32_t count = random.chance(5) ? 0 : random.between(1, random.chance(80) ? 4 : 40);
    std::vector<std::uint32_t> sizes;
    std::vector<std::uint32_t> rows;
    model::bytes data;
    std::uint32_t left = height;
    for (std::uint32_t i = 0; i < count; ++i) {
        std::uint32_t slice_rows = random.below(left + 1);
        left -= slice_rows;
        const model::bytes slice = random_slice(random, depth, std::uint64_t(width) * slice_rows, random.chance(20));
        slice_rows += random.chance(1) ? random.below(3) : 0;
        rows.push_back(slice_rows);
        auto size = static_cast<std::uint32_t>(slice.size());
        size += random.chance(2) ? wild_value(random) : 0;
        sizes.push_back(size);
        data.insert(data.end(), slice.begin(), slice.end());
    }
    bit_string table;
    table.put(random.chance(1) ? count + 1 : count, 8);
    put_values(random, table, sizes);
    put_values(random, table, rows);
    model::bytes payload = table.done();
    payload.insert(payload.end(), data.begin(), data.end());
    return payload;
}

}  // namespace

model::bytes rle_payload(rng& random, std::uint32_t width, std::uint32_t height, std::uint32_t depth, bool damage) {
    if (width == 0 || height == 0) {
        return random.noise(random.between(1, 20));
    }
    model::bytes payload;
    if (random.chance(35)) {
        payload = crafted_payload(random, width, height, depth);
    } else {
        model::rle_params params;
        params.width = width;
        params.height = height;
        params.bit_depth = depth;
        params.slice_count = random.chance(50) ? random.below(4) : random.below(256);
        const std::size_t size = std::size_t(width) * height * depth / 8;
        const model::bytes raw = depth == 8 ? raw_content(random, size) : raw_content_16(random, size);
        payload = model::rle_encode(params, {raw.data(), raw.size()}, model::rle_worst_case_size(params));
    }
    const std::uint32_t times = damage ? random.between(1, 3) : 0;
    for (std::uint32_t i = 0; i < times && !payload.empty(); ++i) {
        const std::uint32_t place =
            random.chance(60) ? random.below(std::min<std::size_t>(payload.size(), 20)) : random.below(payload.size());
        switch (random.below(4)) {
            case 0:
                payload[place] ^= static_cast<std::uint8_t>(1u << random.below(8));
                break;
            case 1:
                payload[place] = random.byte();
                break;
            case 2:
                payload.resize(random.below(payload.size()) + 1);
                break;
            default:
                std::fill(payload.begin() + place, payload.end(), random.chance(50) ? 0 : 255);
                break;
        }
    }
    if (random.chance(10)) {
        const model::bytes more = random.noise(random.below(10));
        payload.insert(payload.end(), more.begin(), more.end());
    }
    return payload;
}

}  // namespace differential
