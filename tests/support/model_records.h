// SPDX-License-Identifier: BSD-3-Clause
//
// The library's records and the model's, each from the other.
#ifndef QVR_TESTS_SUPPORT_MODEL_RECORDS_H
#define QVR_TESTS_SUPPORT_MODEL_RECORDS_H

#include <vector>

#include "model.h"
#include "records.h"

namespace test {

inline QVRUncompressed_UncompressedParams_t to_record(const model::frame_params& frame) {
    return frame_record(frame.order, frame.type, frame.width, frame.height, frame.row_bytes, frame.row_bytes2,
                        frame.frame_layout);
}

inline QVRUncompressed_CompressedParams_t to_record(const model::stream_params& stream) {
    QVRUncompressed_CompressedParams_t record = raw_alpha();
    record.alphaCompression = stream.alpha_compression;
    record.rleSlices = stream.rle_slices;
    return record;
}

inline QVRUncompressed_WrapParams_t to_record(const model::wrap_params& wrap) {
    return wrap_record(wrap.type, wrap.size);
}

inline model::frame_params to_model(const QVRUncompressed_UncompressedParams_t& record) {
    model::frame_params frame;
    frame.order = record.colorComponentOrder;
    frame.type = record.componentType;
    frame.width = record.width;
    frame.height = record.height;
    frame.row_bytes = record.rowBytes;
    frame.frame_layout = record.frameLayout;
    frame.row_bytes2 = record.rowBytes2;
    return frame;
}

inline std::vector<model::wrap_params> to_model(const std::vector<QVRUncompressed_WrapParams_t>& records) {
    std::vector<model::wrap_params> wraps;
    for (const QVRUncompressed_WrapParams_t& record : records) {
        wraps.push_back({record.wrapType, record.dataSize});
    }
    return wraps;
}

}  // namespace test

#endif  // QVR_TESTS_SUPPORT_MODEL_RECORDS_H
