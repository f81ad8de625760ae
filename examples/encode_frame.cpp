// SPDX-License-Identifier: BSD-3-Clause
//
// Makes a picture of 640 x 360 RGBA pixels and encodes it, its alpha run-length coded. Run: ./encode_frame OUT.qvr
#include <QVRUncompressed.h>

#include <cstdio>
#include <fstream>
#include <memory>
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
    frame.size = sizeof frame;
    frame.colorComponentOrder = QVRUncompressed_OrderRGBA;
    frame.componentType = QVRUncompressed_TypeU8;
    frame.width = 640;
    frame.height = 360;
    QVRUncompressed_CompressedParams_t how = {};
    how.size = sizeof how;
    how.alphaCompression = 1;

    std::vector<uint8_t> raw;  // a gradient; alpha grows from left to right
    for (uint32_t y = 0; y < frame.height; ++y) {
        for (uint32_t x = 0; x < frame.width; ++x) {
            for (const uint32_t sample : {x * 255 / 639, y * 255 / 359, (x + y) & 255, x * 255 / 639}) {
                raw.push_back(static_cast<uint8_t>(sample));
            }
        }
    }

    const QVRUncompressed_CodecConfig_t config = {sizeof config, 0, nullptr, print_error};
    QVRUncompressed_Encoder made = nullptr;  // stays null when there is no memory or no thread left
    QVRUncompressed_CreateEncoder(&config, &made);
    const std::unique_ptr<QVRUncompressed_Encoder_s, void (*)(QVRUncompressed_Encoder)> encoder(
        made, QVRUncompressed_DestroyEncoder);
    std::vector<uint8_t> coded(QVRUncompressed_GetCompressedBufSize(&frame, &how));
    uint32_t written = 0;
    if (!encoder || QVRUncompressed_EncodeFrame(
                        encoder.get(), &frame, &how, raw.data(), static_cast<uint32_t>(raw.size()), coded.data(),
                        static_cast<uint32_t>(coded.size()), &written) != QVRUncompressed_StatusOk) {
        return 1;  // print_error has said why
    }
    std::ofstream file(argv[1], std::ios::binary);
    file.write(reinterpret_cast<const char*>(coded.data()), static_cast<std::streamsize>(written));
    if (!file.flush()) {
        std::fprintf(stderr, "encode_frame: cannot write %s\n", argv[1]);
        return 1;
    }
    std::printf("%zu bytes of samples became %u\n", raw.size(), written);
}
