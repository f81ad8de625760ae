// SPDX-License-Identifier: BSD-3-Clause
//
// Tiny frames of all supported pairs of order and type: the raw frame, its bitstream, and what comes back, as literals.
#ifndef QVR_TESTS_API_FORMAT_CASES_H
#define QVR_TESTS_API_FORMAT_CASES_H

#include <cstdint>
#include <ostream>
#include <vector>

namespace test {

// Decoding gives the source back, byte for byte.
constexpr const char* same_as_source = "same as source";
// The alpha samples are not in the bitstream, so decoding into this order and type is refused.
constexpr const char* refused = "refused";

struct format_case {
    uint32_t order;
    uint32_t type;
    uint32_t width;
    uint32_t height;
    const char* source;
    const char* stream;
    const char* decoded;      // hexadecimal digits, or one of the two words above
    uint32_t metadata_order;  // what reading the metadata reports
    uint32_t metadata_type;
};

inline void PrintTo(const format_case& shown, std::ostream* out) {
    *out << "order " << shown.order << ", type " << shown.type << ", " << shown.width << " x " << shown.height;
}

// A frame whose alpha plane is run-length coded; decoding gives the source back.
struct coded_case {
    uint32_t order;
    uint32_t type;
    uint32_t width;
    uint32_t height;
    uint8_t slices;
    const char* source;
    const char* stream;
};

inline void PrintTo(const coded_case& shown, std::ostream* out) {
    *out << "order " << shown.order << ", type " << shown.type << ", " << shown.width << " x " << shown.height << ", "
         << static_cast<unsigned>(shown.slices) << " slices";
}

const std::vector<format_case>& format_cases_422();
const std::vector<format_case>& format_cases_422_alpha();
const std::vector<format_case>& format_cases_444();
const std::vector<format_case>& format_cases_444_alpha();
const std::vector<format_case>& format_cases_444_alpha_more();
const std::vector<format_case>& format_cases_planar();
const std::vector<coded_case>& coded_cases();

inline std::vector<format_case> all_format_cases() {
    std::vector<format_case> all;
    for (const auto* part : {&format_cases_422(), &format_cases_422_alpha(), &format_cases_444(),
                             &format_cases_444_alpha(), &format_cases_444_alpha_more(), &format_cases_planar()}) {
        all.insert(all.end(), part->begin(), part->end());
    }
    return all;
}

}  // namespace test

#endif  // QVR_TESTS_API_FORMAT_CASES_H
