// SPDX-License-Identifier: BSD-3-Clause
#include "api/base/checked.h"

#include <algorithm>

#include "api/base/errors.h"

std::uint32_t checked_narrow(wide value) {
    if (!fits_32(value)) {
        throw_invalid_argument("size ", value, " does not fit 32 bits");
    }
    return static_cast<std::uint32_t>(value);
}

std::string decimal(wide value) {
    std::string digits;
    do {
        digits += static_cast<char>('0' + static_cast<int>(value % 10));
        value /= 10;
    } while (value != 0);
    std::reverse(digits.begin(), digits.end());
    return digits;
}
