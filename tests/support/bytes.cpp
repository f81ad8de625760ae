// SPDX-License-Identifier: BSD-3-Clause
#include "bytes.h"

#include <stdexcept>

namespace test {

namespace {

int digit_of(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    throw std::logic_error("not a hexadecimal digit in a test's literal");
}

bool is_blank(char c) {
    return c == ' ' || c == '\n';
}

}  // namespace

bytes from_hex(std::string_view text) {
    bytes result;
    int high = -1;
    for (size_t i = 0; i < text.size(); ++i) {
        if (is_blank(text[i])) {
            continue;
        }
        if (text[i] == '\'') {
            if (high >= 0 || i + 5 >= text.size() || text[i + 5] != '\'') {
                throw std::logic_error("a quoted word in a test's literal is not four characters long");
            }
            for (size_t k = 1; k <= 4; ++k) {
                result.push_back(static_cast<uint8_t>(text[i + k]));
            }
            i += 5;
            continue;
        }
        const int digit = digit_of(text[i]);
        if (high < 0) {
            high = digit;
        } else {
            result.push_back(static_cast<uint8_t>(high * 16 + digit));
            high = -1;
        }
    }
    if (high >= 0) {
        throw std::logic_error("an odd number of digits in a test's literal");
    }
    return result;
}

bytes from_bits(std::string_view text) {
    bytes result;
    unsigned used = 8;
    for (const char c : text) {
        if (is_blank(c)) {
            continue;
        }
        if (c != '0' && c != '1') {
            throw std::logic_error("not a binary digit in a test's literal");
        }
        if (used == 8) {
            result.push_back(0);
            used = 0;
        }
        if (c == '1') {
            result.back() = static_cast<uint8_t>(result.back() | (0x80u >> used));
        }
        ++used;
    }
    return result;
}

std::string to_hex(const uint8_t* data, size_t size) {
    static const char digits[] = "0123456789abcdef";
    std::string text;
    for (size_t i = 0; i < size; ++i) {
        if (i != 0 && i % 4 == 0) {
            text += ' ';
        }
        text += digits[data[i] >> 4];
        text += digits[data[i] & 15];
    }
    return text;
}

std::string to_hex(const bytes& data) {
    return to_hex(data.data(), data.size());
}

std::string canonical(std::string_view text) {
    return to_hex(from_hex(text));
}

bytes operator+(bytes left, const bytes& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

bytes repeat(uint8_t value, size_t count) {
    return bytes(count, value);
}

bytes counting(size_t count, uint8_t start) {
    bytes result(count);
    for (size_t i = 0; i < count; ++i) {
        result[i] = static_cast<uint8_t>(start + i);
    }
    return result;
}

bytes le32(uint32_t value) {
    return {static_cast<uint8_t>(value), static_cast<uint8_t>(value >> 8), static_cast<uint8_t>(value >> 16),
            static_cast<uint8_t>(value >> 24)};
}

bytes be32(uint32_t value) {
    return {static_cast<uint8_t>(value >> 24), static_cast<uint8_t>(value >> 16), static_cast<uint8_t>(value >> 8),
            static_cast<uint8_t>(value)};
}

bytes be16(uint16_t value) {
    return {static_cast<uint8_t>(value >> 8), static_cast<uint8_t>(value)};
}

}  // namespace test
