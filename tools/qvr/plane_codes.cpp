// SPDX-License-Identifier: BSD-3-Clause
#include "plane_codes.h"

#include <cstring>

namespace qvr {

namespace {

struct stem {
    const char* letters;
    const char* text;
    unsigned samples;
    const char* depths;  // endings that go with it
};

constexpr stem k_stems[] = {
    {" y", "Y", 1, "08 10 12 16"},
    {"cb", "Cb", 1, "08 10 12 16"},
    {"cr", "Cr", 1, "08 10 12 16"},
    {" a", "alpha", 1, "08 16"},
    {"rl", "coded alpha", 1, "08 16"},
    {"rg", "R G B", 3, "08 10 12 16 S1"},
    {"y4", "Y Cb Cr 4:4:4", 3, "08 10 12 16 S1"},
    {"y2", "Y Cb Cr 4:2:2", 2, "08 10 12 16 S1"},
    {"  y", "Y", 1, "f h"},
    {" cb", "Cb", 1, "f h"},
    {" cr", "Cr", 1, "f h"},
    {" rg", "R G B", 3, "f h"},
    {" y4", "Y Cb Cr 4:4:4", 3, "f h"},
    {" y2", "Y Cb Cr 4:2:2", 2, "f h"},
};

struct depth {
    const char* letters;
    const char* text;
    unsigned bits;
};

constexpr depth k_depths[] = {
    {"08", "8 bits", 8},
    {"10", "10 bits", 10},
    {"12", "12 bits", 12},
    {"16", "16 bits", 16},
    {"S1", "16-bit fixed point", 16},
    {"f", "32-bit float", 32},
    {"h", "16-bit float", 16},
};

struct old_spelling {
    const char* old;
    const char* current;
};

constexpr old_spelling k_old_spellings[] = {
    {"cb f", " cbf"}, {"cb h", " cbh"}, {"cr f", " crf"}, {"cr h", " crh"}, {"rg f", " rgf"},
    {"rg h", " rgh"}, {"  f4", " y4f"}, {"  h4", " y4h"}, {"  f2", " y2f"}, {"  h2", " y2h"},
};

std::string current_spelling(const std::string& code) {
    for (const old_spelling& row : k_old_spellings) {
        if (code == row.old) {
            return row.current;
        }
    }
    return code;
}

bool is_made_of(const std::string& code, const stem& first, const depth& second) {
    return code == std::string(first.letters) + second.letters && std::strstr(first.depths, second.letters);
}

}  // namespace

plane_code find_plane_code(const std::string& code) {
    plane_code found;
    found.current = current_spelling(code);
    if (code == "stch") {
        found.content = plane_content::chunks;
        found.text = "stitched chunks";
        return found;
    }
    for (const stem& first : k_stems) {
        for (const depth& second : k_depths) {
            if (is_made_of(found.current, first, second)) {
                const bool coded = std::strcmp(first.letters, "rl") == 0;
                found.content = coded ? plane_content::coded_alpha : plane_content::rows;
                found.text = std::string(first.text) + ", " + second.text;
                found.bits = second.bits;
                found.samples = first.samples;
            }
        }
    }
    return found;
}

std::uint64_t row_bits(const plane_code& code, std::uint32_t width) {
    if (code.content != plane_content::rows) {
        return 0;
    }
    const std::uint64_t last_pair = code.samples == 2 ? width % 2 : 0;
    return (std::uint64_t{width} * code.samples + last_pair) * code.bits;
}

std::uint64_t row_bytes(const plane_code& code, std::uint32_t width) {
    return (row_bits(code, width) + 7) / 8;
}

}  // namespace qvr
