// SPDX-License-Identifier: BSD-3-Clause
//
// Encodes one raw 1920x1080 RGBA frame with its alpha run-length coded: minimal_encoder < frame.rgba > frame.qvr
#include <QVRUncompressed.h>

#include <cstdio>
#include <iostream>
#include <iterator>
#include <vector>

static void print_error(const char* message, void*) {
    std::fprintf(stderr, "minimal_encoder: %s\n", message);
}

int main() {
    QVRUncompressed_UncompressedParams_t frame = {
        sizeof frame, QVRUncompressed_OrderRGBA, QVRUncompressed_TypeU8, 1920, 1080, 0, 0, 0};
    QVRUncompressed_CompressedParams_t how = {sizeof how, 1, 0};
    QVRUncompressed_CodecConfig_t config = {sizeof config, 0, nullptr, print_error};
    std::vector<uint8_t> raw((std::istreambuf_iterator<char>(std::cin)), std::istreambuf_iterator<char>());
    std::vector<uint8_t> coded(QVRUncompressed_GetCompressedBufSize(&frame, &how));
    raw.reserve(1);  // an empty input is refused as too small, not as a null pointer
    QVRUncompressed_Encoder encoder = nullptr;
    QVRUncompressed_CreateEncoder(&config, &encoder);
    uint32_t size = 0;
    uint32_t status = QVRUncompressed_EncodeFrame(encoder, &frame, &how, raw.data(), static_cast<uint32_t>(raw.size()),
                                                  coded.data(), static_cast<uint32_t>(coded.size()), &size);
    QVRUncompressed_DestroyEncoder(encoder);
    std::cout.write(reinterpret_cast<char*>(coded.data()), size).flush();
    return status == QVRUncompressed_StatusOk && std::cout ? 0 : 1;
}
