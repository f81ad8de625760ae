// SPDX-License-Identifier: BSD-3-Clause
//
// Makes a picture with alpha and encodes it: encode_frame OUT.qvr
#include <QVRUncompressed.h>

#include <cstdio>
#include <fstream>
#include <vector>

static void print_error(const char* message, void*) {
    std::fprintf(stderr, "encode_frame: %s\n", message);
}

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: encode_frame OUT.qvr\n");
        return 2;
    }
    // Every field that is not named stays 0, which is a good value for each: progressive, rows without a gap.
    QVRUncompressed_UncompressedParams_t frame = {};
    frame.size = QVRUNCOMPRESSED_UNCOMPRESSED_PARAMS_SIZE;
    frame.colorComponentOrder = QVRUncompressed_OrderRGBA;
    frame.componentType = QVRUncompressed_TypeU8;
    frame.width = 640;
    frame.height = 360;
    QVRUncompressed_CompressedParams_t how = {QVRUNCOMPRESSED_COMPRESSED_PARAMS_SIZE, 1, 0};  // code the alpha
    QVRUncompressed_CodecConfig_t config = {QVRUNCOMPRESSED_CODEC_CONFIG_SIZE, 0, nullptr, print_error};

    std::vector<uint8_t> raw;  // a gradient; alpha grows from left to right
    for (uint32_t y = 0; y < frame.height; ++y) {
        for (uint32_t x = 0; x < frame.width; ++x) {
            for (const uint32_t sample : {x * 255 / 639, y * 255 / 359, (x + y) & 255, x * 255 / 639}) {
                raw.push_back(static_cast<uint8_t>(sample));
            }
        }
    }
    std::vector<uint8_t> coded(QVRUncompressed_GetCompressedBufSize(&frame, &how));
    QVRUncompressed_Encoder encoder = nullptr;
    uint32_t written = 0;
    bool good = QVRUncompressed_CreateEncoder(&config, &encoder) == QVRUncompressed_StatusOk && encoder != nullptr;
    good = good && QVRUncompressed_EncodeFrame(encoder, &frame, &how, raw.data(), static_cast<uint32_t>(raw.size()),
                                               coded.data(), static_cast<uint32_t>(coded.size()),
                                               &written) == QVRUncompressed_StatusOk;
    QVRUncompressed_DestroyEncoder(encoder);
    if (!good) {
        return 1;
    }
    std::ofstream file(argv[1], std::ios::binary);
    file.write(reinterpret_cast<const char*>(coded.data()), static_cast<std::streamsize>(written));
    std::printf("%zu bytes of samples became %u\n", raw.size(), written);
    return file.flush() ? 0 : 1;
}
