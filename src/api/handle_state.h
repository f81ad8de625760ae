// SPDX-License-Identifier: BSD-3-Clause
//
// What a handle points at.
#pragma once

#include <memory>

#include "api/base/records.h"

template <class Implementation>
struct handle_state {
    std::unique_ptr<Implementation> implementation;
    QVRUncompressed_CodecConfig_t configuration;  // a copy: the caller's record may be gone
};
