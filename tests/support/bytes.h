// SPDX-License-Identifier: BSD-3-Clause
//
// Byte strings as tests write them: hexadecimal and binary literals, and back to text for failure messages.
#ifndef QVR_TESTS_SUPPORT_BYTES_H
#define QVR_TESTS_SUPPORT_BYTES_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace test {

using bytes = std::vector<uint8_t>;

// Blanks and line ends between the digits are ignored; anything else that is no digit throws std::logic_error.
// A four-character word in single quotes ('pack') stands for its four bytes.
bytes from_hex(std::string_view text);

// Binary digits, most significant bit of each byte first; the last byte is filled up with zero bits.
bytes from_bits(std::string_view text);

// Lower-case pairs with a blank after every fourth byte.
std::string to_hex(const uint8_t* data, size_t size);
std::string to_hex(const bytes& data);

// What to_hex gives for the bytes of a hexadecimal literal, however it is spaced.
std::string canonical(std::string_view text);

bytes operator+(bytes left, const bytes& right);

// `count` copies of one byte.
bytes repeat(uint8_t value, size_t count);

// The bytes start, start + 1, ... modulo 256.
bytes counting(size_t count, uint8_t start = 0);

bytes le32(uint32_t value);
bytes be32(uint32_t value);
bytes be16(uint16_t value);

}  // namespace test

#endif  // QVR_TESTS_SUPPORT_BYTES_H
