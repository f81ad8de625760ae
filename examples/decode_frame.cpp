// SPDX-License-Identifier: BSD-3-Clause
//
// Decodes the first frame of a file to raw samples. Run: ./decode_frame IN.qvr OUT.raw
#include <QVRUncompressed.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <memory>
#include <vector>

static void print_error(const char* message, void*) {
    std::fprintf(stderr, "decode_frame: %s\n", message);
}

static int fail(const char* what, const char* path) {
    std::fprintf(stderr, "decode_frame: %s %s\n", what, path);
    return 1;
}

int main(int argc, char** argv) {
    if (argc != 3) {
        return fail("usage:", "decode_frame IN.qvr OUT.raw");
    }
    std::ifstream in(argv[1], std::ios::binary);
    const std::vector<char> file{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    if (file.empty() || file.size() > UINT32_MAX) {
        return fail("cannot be read, or is empty or too large:", argv[1]);
    }
    const uint8_t* const coded = reinterpret_cast<const uint8_t*>(file.data());
    const uint32_t size = static_cast<uint32_t>(file.size());

    const QVRUncompressed_CodecConfig_t config = {sizeof config, 0, nullptr, print_error};
    QVRUncompressed_Decoder made = nullptr;  // stays null when there is no memory or no thread left
    QVRUncompressed_CreateDecoder(&config, &made);
    const std::unique_ptr<QVRUncompressed_Decoder_s, void (*)(QVRUncompressed_Decoder)> decoder(
        made, QVRUncompressed_DestroyDecoder);
    QVRUncompressed_UncompressedParams_t frame = {};
    frame.size = sizeof frame;
    if (!decoder || QVRUncompressed_ReadMetadata(decoder.get(), coded, size, &frame) != QVRUncompressed_StatusOk) {
        return 1;  // print_error has said why
    }
    if (frame.colorComponentOrder == QVRUncompressed_OrderARGB) {
        frame.colorComponentOrder = QVRUncompressed_OrderRGBA;  // any order with the same planes may be asked for
    }
    const uint64_t most = uint64_t{16} * frame.width * frame.height;  // no pixel takes more than 16 bytes
    if (frame.colorComponentOrder == 0 || most == 0 || most > UINT32_MAX) {
        return fail("no pixels, or more than this program is ready for:", argv[1]);
    }
    std::vector<uint8_t> raw(QVRUncompressed_GetUncompressedBufSize(&frame));
    if (QVRUncompressed_DecodeFrame(decoder.get(), &frame, coded, size, raw.data(), static_cast<uint32_t>(raw.size()),
                                    nullptr) != QVRUncompressed_StatusOk) {
        return 1;
    }
    std::ofstream out(argv[2], std::ios::binary);
    out.write(reinterpret_cast<const char*>(raw.data()), static_cast<std::streamsize>(raw.size()));
    std::printf("%u x %u pixels, %zu bytes of samples\n", frame.width, frame.height, raw.size());
    return out.flush() ? 0 : fail("cannot write", argv[2]);
}
