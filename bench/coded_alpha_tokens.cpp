// SPDX-License-Identifier: BSD-3-Clause
#include "coded_alpha_tokens.h"

#include <cstring>
#include <stdexcept>

namespace bench {

namespace {

// Most significant bit first. Nothing here is fast, and nothing is timed.
class bits {
  public:
    bits(const std::vector<std::uint8_t>& stream, std::uint64_t byte) : stream_(stream), position_(byte * 8) {}

    std::uint64_t take(unsigned count) {
        std::uint64_t value = 0;
        for (; count != 0; --count, ++position_) {
            value = value << 1 | (stream_.at(position_ / 8) >> (7 - position_ % 8) & 1u);
        }
        return value;
    }
    std::uint64_t run_of(unsigned bit) {  // and the bit that ends it
        std::uint64_t length = 0;
        while (take(1) == bit) {
            ++length;
        }
        return length;
    }
    std::uint64_t gamma() {
        const auto zeros = static_cast<unsigned>(run_of(0));
        return std::uint64_t{1} << zeros | take(zeros);
    }
    std::uint64_t rice_or_raw(unsigned low_bits, unsigned raw_bits) {
        if (take(1) == 0) {
            return take(raw_bits);
        }
        const std::uint64_t quotient = run_of(1);
        return quotient << low_bits | take(low_bits);
    }
    std::uint64_t next_byte() const { return (position_ + 7) / 8; }

  private:
    const std::vector<std::uint8_t>& stream_;
    std::uint64_t position_;
};

std::vector<std::uint32_t> value_sequence(bits& from, std::size_t count) {
    std::vector<std::uint32_t> values;
    std::uint32_t value = 8388607;
    while (values.size() < count) {
        const std::uint64_t length = from.gamma();
        const std::uint64_t code = from.rice_or_raw(10, 24);
        for (std::uint64_t i = 0; i < length; ++i) {
            value += static_cast<std::uint32_t>((code >> 1) ^ (0 - (code & 1)));
            values.push_back(value);
        }
    }
    return values;
}

// Where the content of the first 'sdat' inside 'pack' begins.
std::uint64_t payload_of(const std::vector<std::uint8_t>& stream) {
    std::uint64_t at = 8;
    while (at + 8 <= stream.size()) {
        if (std::memcmp(&stream[at + 4], "sdat", 4) == 0) {
            return at + 8;
        }
        std::uint32_t size = 0;
        std::memcpy(&size, &stream[at], sizeof size);
        at += size;
    }
    throw std::runtime_error("a bitstream without 'sdat'");
}

}  // namespace

std::uint64_t count_tokens(const std::vector<std::uint8_t>& stream, std::uint32_t width, unsigned sample_bytes) {
    bits table(stream, payload_of(stream));
    const std::size_t slices = table.take(8);
    const std::vector<std::uint32_t> sizes = value_sequence(table, slices);
    const std::vector<std::uint32_t> rows = value_sequence(table, slices);
    std::uint64_t at = table.next_byte();
    std::uint64_t tokens = 0;
    for (std::size_t slice = 0; slice < slices; ++slice) {
        bits from(stream, at);
        const std::uint64_t samples = std::uint64_t{rows[slice]} * width;
        for (std::uint64_t read = 0; read < samples; ++tokens) {
            from.take(1);
            read += from.gamma();
            from.rice_or_raw(sample_bytes == 1 ? 2 : 6, sample_bytes * 8);
        }
        at += sizes[slice];
    }
    return tokens;
}

}  // namespace bench
