// SPDX-License-Identifier: BSD-3-Clause
#ifndef QVR_TESTS_MODEL_TYPES_H
#define QVR_TESTS_MODEL_TYPES_H

// Plain types shared by all parts of the model.
//
// The model is a slow, scalar second implementation of the bitstream. It
// shares no code with the library, so that a misreading of the format in one
// of the two shows up as a difference between them.

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace model {

// Wide enough for the product of any three 32-bit fields and a small factor:
// every size is computed exactly and only then compared or cut.
__extension__ typedef unsigned __int128 exact;

using bytes = std::vector<std::uint8_t>;

// The failure of one operation. The text is what the error callback hears.
struct failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Borrowed input. Reading outside it is an error of the model itself.
struct view {
    const std::uint8_t* data = nullptr;
    std::size_t size = 0;

    std::uint8_t at(exact index) const {
        if (data == nullptr || index >= size) {
            throw std::logic_error("the model read outside its input");
        }
        return data[static_cast<std::size_t>(index)];
    }
};

// Borrowed output, checked in the same way.
struct target {
    std::uint8_t* data = nullptr;
    std::size_t size = 0;

    std::uint8_t& at(exact index) const {
        if (data == nullptr || index >= size) {
            throw std::logic_error("the model wrote outside its output");
        }
        return data[static_cast<std::size_t>(index)];
    }
};

struct frame_params {
    std::uint32_t order = 0;
    std::uint32_t type = 0;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t row_bytes = 0;
    std::uint32_t frame_layout = 0;
    std::uint32_t row_bytes2 = 0;
};

struct stream_params {
    std::uint8_t alpha_compression = 0;
    std::uint8_t rle_slices = 0;
};

struct wrap_params {
    std::uint32_t type = 0;
    std::uint32_t size = 0;
};

struct rle_params {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t bit_depth = 0;
    std::uint32_t slice_count = 0;
    std::uint32_t row_bytes = 0;
};

// Plain decimal, no separators.
std::string decimal(exact value);

inline exact ceil_div(exact value, exact divisor) {
    return (value + divisor - 1) / divisor;
}

inline std::uint32_t low32(exact value) {
    return static_cast<std::uint32_t>(value & 0xFFFFFFFFu);
}

}  // namespace model

#endif
