// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <functional>

#include "api/base/records.h"

// Runs the work and returns 0, or 1 after any exception, whose message goes to the configuration's callback. Nothing is
// ever thrown from here, not even by the callback.
std::uint32_t guarded_call(const std::function<void()>& work, const QVRUncompressed_CodecConfig_t& config) noexcept;
