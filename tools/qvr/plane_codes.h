// SPDX-License-Identifier: BSD-3-Clause
//
// The four characters that name the content of a plane, as the tool's own reader knows them.
#pragma once

#include <cstdint>
#include <string>

namespace qvr {

enum class plane_content { unknown, rows, coded_alpha, chunks };

struct plane_code {
    plane_content content = plane_content::unknown;
    std::string text;      // "R G B, 10 bits"; empty for codes that do not exist
    std::string current;   // the spelling that is written today
    unsigned bits = 0;     // of a sample
    unsigned samples = 0;  // of a pixel; 4:2:2 has 2, and one more at the end of a row of odd width
};

// code: the four characters, without quotes.
plane_code find_plane_code(const std::string& code);

// Bits of a stored row, without those that fill up its last byte; 0 for planes that are not stored in rows.
std::uint64_t row_bits(const plane_code& code, std::uint32_t width);
std::uint64_t row_bytes(const plane_code& code, std::uint32_t width);

}  // namespace qvr
