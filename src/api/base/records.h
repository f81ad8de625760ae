// SPDX-License-Identifier: BSD-3-Clause
//
// The public records as the library uses them: copied out of the caller's memory first (they may lie at any address),
// then passed by reference. They are packed, so a reference to a record is fine and one to a field is not.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "QVRUncompressed.h"

static_assert(sizeof(QVRUncompressed_UncompressedParams_t) == 36);
static_assert(offsetof(QVRUncompressed_UncompressedParams_t, colorComponentOrder) == 8);
static_assert(offsetof(QVRUncompressed_UncompressedParams_t, componentType) == 12);
static_assert(offsetof(QVRUncompressed_UncompressedParams_t, width) == 16);
static_assert(offsetof(QVRUncompressed_UncompressedParams_t, height) == 20);
static_assert(offsetof(QVRUncompressed_UncompressedParams_t, rowBytes) == 24);
static_assert(offsetof(QVRUncompressed_UncompressedParams_t, frameLayout) == 28);
static_assert(offsetof(QVRUncompressed_UncompressedParams_t, rowBytes2) == 32);
static_assert(sizeof(QVRUncompressed_CompressedParams_t) == 10);
static_assert(offsetof(QVRUncompressed_CompressedParams_t, alphaCompression) == 8);
static_assert(offsetof(QVRUncompressed_CompressedParams_t, rleSlices) == 9);
static_assert(sizeof(QVRUncompressed_CodecConfig_t) == 28);
static_assert(offsetof(QVRUncompressed_CodecConfig_t, threadCount) == 8);
static_assert(offsetof(QVRUncompressed_CodecConfig_t, userData) == 12);
static_assert(offsetof(QVRUncompressed_CodecConfig_t, errorCallback) == 20);
static_assert(sizeof(QVRUncompressed_WrapParams_t) == 16);
static_assert(offsetof(QVRUncompressed_WrapParams_t, wrapType) == 8);
static_assert(offsetof(QVRUncompressed_WrapParams_t, dataSize) == 12);

template <class Record>
Record load_record(const Record* record) {
    Record copy;
    std::memcpy(&copy, record, sizeof copy);
    return copy;
}

// Every record opens with its own size, which is also the mark of its version.
template <class Record>
bool has_expected_size(const Record* record) {
    std::uint64_t size;
    std::memcpy(&size, record, sizeof size);
    return size == sizeof(Record);
}

constexpr QVRUncompressed_CodecConfig_t k_default_config = {sizeof(QVRUncompressed_CodecConfig_t), 0, nullptr, nullptr};
