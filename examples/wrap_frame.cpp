// SPDX-License-Identifier: BSD-3-Clause
//
// Carries a compressed frame beside an alpha plane and takes both out again. Run: ./wrap_frame
#include <QVRUncompressed.h>

#include <cstdio>
#include <vector>

static void print_error(const char* message, void*) {
    std::fprintf(stderr, "wrap_frame: %s\n", message);
}

int main() {
    // Stands for a compressed frame: compression 1300, whose header says how wide and high it is, then any bytes.
    std::vector<uint8_t> frame(5000, 0x5A);
    frame[7] = 0;                                                                 // no alpha of its own
    frame[24] = 360 >> 8, frame[25] = 360 & 255;                                  // height, big-endian
    frame[26] = 640 >> 8, frame[27] = 640 & 255;                                  // width
    frame[40] = 0, frame[41] = 0, frame[42] = 1300 >> 8, frame[43] = 1300 & 255;  // compression
    std::vector<uint8_t> alpha(640 * 360);
    for (size_t i = 0; i < alpha.size(); ++i) {
        alpha[i] = i % 640 < 320 ? 255 : 0;
    }
    QVRUncompressed_UncompressedParams_t plane = {
        sizeof plane, QVRUncompressed_OrderAlpha, QVRUncompressed_TypeU8, 640, 360, 0, 0, 0};
    const QVRUncompressed_CompressedParams_t how = {sizeof how, 1, 0};  // code the alpha
    QVRUncompressed_WrapParams_t wrap = {sizeof wrap, QVRUncompressed_WrapQCX, static_cast<uint32_t>(frame.size())};
    const QVRUncompressed_CodecConfig_t config = {sizeof config, 0, nullptr, print_error};
    QVRUncompressed_Encoder encoder = nullptr;  // a null handle is refused by each call below
    QVRUncompressed_Decoder decoder = nullptr;
    QVRUncompressed_CreateEncoder(&config, &encoder);
    QVRUncompressed_CreateDecoder(&config, &decoder);

    std::vector<uint8_t> made(QVRUncompressed_GetCompressedWrapBufSize(&plane, &how, &wrap, 1));
    const uint8_t* payload = frame.data();
    uint32_t size = 0;
    bool good = QVRUncompressed_EncodeAndWrapFrame(
                    encoder, &plane, &how, &wrap, 1, alpha.data(), static_cast<uint32_t>(alpha.size()), &payload,
                    made.data(), static_cast<uint32_t>(made.size()), &size) == QVRUncompressed_StatusOk;
    // Whoever receives the bytes asks what is in them, and makes buffers of these sizes.
    good = good &&
           QVRUncompressed_ReadWrapMetadata(decoder, made.data(), size, &plane, &wrap, 1) == QVRUncompressed_StatusOk;
    std::vector<uint8_t> frame_back(wrap.dataSize), alpha_back(QVRUncompressed_GetUncompressedBufSize(&plane));
    uint8_t* target = frame_back.data();
    good = good && QVRUncompressed_DecodeAndUnwrapFrame(decoder, &plane, &wrap, 1, made.data(), size, alpha_back.data(),
                                                        static_cast<uint32_t>(alpha_back.size()), &target,
                                                        nullptr) == QVRUncompressed_StatusOk;
    QVRUncompressed_DestroyEncoder(encoder);
    QVRUncompressed_DestroyDecoder(decoder);
    good = good && frame_back == frame && alpha_back == alpha;
    std::printf("%zu + %zu bytes became %u, and came back %s\n", frame.size(), alpha.size(), size,
                good ? "as they were" : "changed");
    return good ? 0 : 1;
}
