// SPDX-License-Identifier: BSD-3-Clause
//
// Says what each frame of a file is, frame by frame. Run: ./frame_info FILE.qvr
#include <QVRUncompressed.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <memory>
#include <vector>

static void print_error(const char* message, void*) {
    std::fprintf(stderr, "frame_info: %s\n", message);
}

// Every frame opens with its own size: 32 bits, little-endian.
static uint32_t size_of_frame(const uint8_t* frame) {
    return frame[0] | uint32_t{frame[1]} << 8 | uint32_t{frame[2]} << 16 | uint32_t{frame[3]} << 24;
}

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: frame_info FILE.qvr\n");
        return 2;
    }
    std::ifstream in(argv[1], std::ios::binary);
    const std::vector<char> file{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    if (file.empty()) {
        std::fprintf(stderr, "frame_info: cannot read, or nothing in it: %s\n", argv[1]);
        return 1;
    }
    const QVRUncompressed_CodecConfig_t config = {sizeof config, 1, nullptr, print_error};
    QVRUncompressed_Decoder made = nullptr;  // stays null when there is no memory left
    QVRUncompressed_CreateDecoder(&config, &made);
    const std::unique_ptr<QVRUncompressed_Decoder_s, void (*)(QVRUncompressed_Decoder)> decoder(
        made, QVRUncompressed_DestroyDecoder);
    for (size_t place = 0; place < file.size();) {
        const uint8_t* const bytes = reinterpret_cast<const uint8_t*>(file.data()) + place;
        const uint32_t size = static_cast<uint32_t>(std::min<size_t>(file.size() - place, UINT32_MAX));
        QVRUncompressed_UncompressedParams_t frame = {};
        frame.size = sizeof frame;
        if (!decoder || QVRUncompressed_ReadMetadata(decoder.get(), bytes, size, &frame) != QVRUncompressed_StatusOk) {
            return 1;  // print_error has said why
        }
        std::printf("order %u, type %u, %u x %u pixels, %s, %u wrapped payloads\n", frame.colorComponentOrder,
                    frame.componentType, frame.width, frame.height,
                    frame.frameLayout == QVRUncompressed_LayoutInterlaced ? "interlaced" : "progressive",
                    QVRUncompressed_ReadWrapCount(bytes, size));
        place += size_of_frame(bytes);
    }
}
