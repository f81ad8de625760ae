// SPDX-License-Identifier: BSD-3-Clause
//
// Parameter records in one line.
#ifndef QVR_TESTS_SUPPORT_RECORDS_H
#define QVR_TESTS_SUPPORT_RECORDS_H

#include <QVRUncompressed.h>

namespace test {

inline QVRUncompressed_UncompressedParams_t frame_record(uint32_t order, uint32_t type, uint32_t width, uint32_t height,
                                                         uint32_t row_bytes = 0, uint32_t row_bytes2 = 0,
                                                         uint32_t layout = 0) {
    QVRUncompressed_UncompressedParams_t record = {};
    record.size = 36;
    record.colorComponentOrder = order;
    record.componentType = type;
    record.width = width;
    record.height = height;
    record.rowBytes = row_bytes;
    record.frameLayout = layout;
    record.rowBytes2 = row_bytes2;
    return record;
}

inline QVRUncompressed_CompressedParams_t raw_alpha() {
    QVRUncompressed_CompressedParams_t record = {};
    record.size = 10;
    return record;
}

inline QVRUncompressed_CompressedParams_t coded_alpha(uint8_t slices = 0) {
    QVRUncompressed_CompressedParams_t record = {};
    record.size = 10;
    record.alphaCompression = 1;
    record.rleSlices = slices;
    return record;
}

inline QVRUncompressed_CodecConfig_t config_record(uint32_t threads, void* user_data = nullptr,
                                                   QVRUncompressed_ErrorCallback_t callback = nullptr) {
    QVRUncompressed_CodecConfig_t record = {};
    record.size = 28;
    record.threadCount = threads;
    record.userData = user_data;
    record.errorCallback = callback;
    return record;
}

inline QVRUncompressed_WrapParams_t wrap_record(uint32_t type, uint32_t size) {
    QVRUncompressed_WrapParams_t record = {};
    record.size = 16;
    record.wrapType = type;
    record.dataSize = size;
    return record;
}

}  // namespace test

#endif  // QVR_TESTS_SUPPORT_RECORDS_H
