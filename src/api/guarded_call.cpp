// SPDX-License-Identifier: BSD-3-Clause
#include "api/guarded_call.h"

#include <exception>

namespace {

void report(const char* message, const QVRUncompressed_CodecConfig_t& config) noexcept {
    if (config.errorCallback == nullptr) {
        return;
    }
    try {
        config.errorCallback(message, config.userData);
    } catch (...) {
        // The caller's own; the status stands.
    }
}

}  // namespace

std::uint32_t guarded_call(const std::function<void()>& work, const QVRUncompressed_CodecConfig_t& config) noexcept {
    try {
        work();
        return QVRUncompressed_StatusOk;
    } catch (const std::exception& failure) {
        report(failure.what(), config);
    } catch (...) {
        // Nothing of ours throws anything else, and it has no message.
    }
    return QVRUncompressed_StatusFailed;
}
