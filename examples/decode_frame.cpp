// SPDX-License-Identifier: BSD-3-Clause
//
// Decodes the first frame of a file to raw RGBA samples: decode_frame IN.qvr OUT.raw
#include <QVRUncompressed.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <vector>

static void print_error(const char* message, void*) {
    std::fprintf(stderr, "decode_frame: %s\n", message);
}

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: decode_frame IN.qvr OUT.raw\n");
        return 2;
    }
    std::ifstream in(argv[1], std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    const auto* coded = reinterpret_cast<const uint8_t*>(bytes.data());
    const auto size = static_cast<uint32_t>(bytes.size());

    QVRUncompressed_CodecConfig_t config = {QVRUNCOMPRESSED_CODEC_CONFIG_SIZE, 0, nullptr, print_error};
    QVRUncompressed_Decoder decoder = nullptr;
    if (QVRUncompressed_CreateDecoder(&config, &decoder) != QVRUncompressed_StatusOk || decoder == nullptr) {
        return 1;
    }
    QVRUncompressed_UncompressedParams_t frame = {};
    frame.size = QVRUNCOMPRESSED_UNCOMPRESSED_PARAMS_SIZE;
    bool good = QVRUncompressed_ReadMetadata(decoder, coded, size, &frame) == QVRUncompressed_StatusOk;
    if (good) {
        // The frame's own order for this family is ARGB; any other order of the same samples may be asked for.
        frame.colorComponentOrder = QVRUncompressed_OrderRGBA;
        std::vector<uint8_t> raw(QVRUncompressed_GetUncompressedBufSize(&frame));
        good = QVRUncompressed_DecodeFrame(decoder, &frame, coded, size, raw.data(), static_cast<uint32_t>(raw.size()),
                                           nullptr) == QVRUncompressed_StatusOk;
        std::ofstream out(argv[2], std::ios::binary);
        out.write(reinterpret_cast<const char*>(raw.data()), static_cast<std::streamsize>(raw.size()));
        good = good && out.flush();
        std::printf("%u x %u pixels, %zu bytes of samples\n", frame.width, frame.height, raw.size());
    }
    QVRUncompressed_DestroyDecoder(decoder);
    return good ? 0 : 1;
}
