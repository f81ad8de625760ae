// SPDX-License-Identifier: BSD-3-Clause
#include "coded_planes.h"

#include "boxes.h"

bit_string& bit_string::put(std::uint64_t value, unsigned count) {
    for (unsigned i = count; i-- > 0;) {
        bits.push_back((value >> i & 1) != 0);
    }
    return *this;
}

bit_string& bit_string::gamma(std::uint64_t value) {
    unsigned length = 0;
    while (value >> length > 1) {
        ++length;
    }
    return put(0, length).put(value, length + 1);
}

bit_string& bit_string::repeat(std::uint64_t samples) {
    return put(0, 1).gamma(samples).put(0b1000, 4);  // first order; a Rice code of 0 with two low bits
}

bytes bit_string::finish(std::uint8_t fill) const {
    bytes made((bits.size() + 7) / 8, fill);
    for (std::size_t i = 0; i < bits.size(); ++i) {
        const auto mask = static_cast<std::uint8_t>(0x80 >> i % 8);
        made[i / 8] = static_cast<std::uint8_t>(bits[i] ? made[i / 8] | mask : made[i / 8] & ~mask);
    }
    return made;
}

namespace {

void put_sequence(bit_string& to, const std::vector<std::uint32_t>& values) {
    std::int64_t before = 8388607;
    for (std::size_t i = 0; i < values.size();) {
        const std::int64_t difference = values[i] - before;
        std::size_t count = 0;
        while (i < values.size() && values[i] - before == difference) {
            before = values[i++];
            ++count;
        }
        const auto code = static_cast<std::uint64_t>(difference >= 0 ? 2 * difference : -2 * difference - 1);
        to.gamma(count);
        if (code <= 13311) {
            to.put(1, 1);
            for (std::uint64_t ones = code >> 10; ones > 0; --ones) {
                to.put(1, 1);
            }
            to.put(0, 1).put(code & 1023, 10);
        } else {
            to.put(0, 1).put(code, 24);
        }
    }
}

}  // namespace

bytes slice_table(const std::vector<std::uint32_t>& sizes, const std::vector<std::uint32_t>& rows, std::uint8_t fill) {
    bit_string table;
    table.put(sizes.size(), 8);
    put_sequence(table, sizes);
    put_sequence(table, rows);
    return table.finish(fill);
}

bytes joined(const std::vector<bytes>& parts) {
    bytes all;
    for (const bytes& part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

bytes coded_frame(std::uint32_t width, std::uint32_t height, const bytes& payload) {
    bytes content;
    append_box(content, "sinf", plane_payload(width, height, "rl08"));
    append_box(content, "sdat", payload);
    return packed(content);
}
