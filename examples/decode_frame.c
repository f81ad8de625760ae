/* SPDX-License-Identifier: BSD-3-Clause */
/* Decodes the first frame of a file to raw samples. Run: ./decode_frame_c IN.qvr OUT.raw */
#include <QVRUncompressed.h>
#include <stdio.h>
#include <stdlib.h>

static void print_error(const char* message, void* program) {
    fprintf(stderr, "%s: %s\n", (const char*)program, message);
}

/* The next frame, which opens with its own size: 32 bits, little-endian. Null when there is none; else free it. */
static uint8_t* read_frame(FILE* file, uint32_t* size) {
    uint8_t start[4];
    if (fread(start, 1, 4, file) != 4) {
        return NULL;
    }
    *size = start[0] | (uint32_t)start[1] << 8 | (uint32_t)start[2] << 16 | (uint32_t)start[3] << 24;
    uint8_t* const frame = malloc(*size);
    if (frame && fseek(file, -4, SEEK_CUR) == 0 && fread(frame, 1, *size, file) == *size) {
        return frame;
    }
    free(frame);
    return NULL;
}

int main(int argc, char** argv) {
    FILE* const in = argc == 3 ? fopen(argv[1], "rb") : NULL;
    uint32_t size = 0;
    uint8_t* const coded = in ? read_frame(in, &size) : NULL;
    if (!coded) {
        fprintf(stderr, argc == 3 ? "%s: no whole frame in %s\n" : "usage: %s IN.qvr OUT.raw\n", argv[0], argv[1]);
        return argc == 3 ? 1 : 2;
    }
    fclose(in);
    const QVRUncompressed_CodecConfig_t config = {sizeof config, 0, argv[0], print_error};
    QVRUncompressed_UncompressedParams_t frame = {.size = sizeof frame};
    QVRUncompressed_Decoder decoder = NULL; /* stays null when there is no memory or no thread left */
    QVRUncompressed_CreateDecoder(&config, &decoder);
    int good = decoder && QVRUncompressed_ReadMetadata(decoder, coded, size, &frame) == QVRUncompressed_StatusOk;
    if (frame.colorComponentOrder == QVRUncompressed_OrderARGB) {
        frame.colorComponentOrder = QVRUncompressed_OrderRGBA; /* any order with the same planes may be asked for */
    }
    const int small = (uint64_t)16 * frame.width * frame.height <= UINT32_MAX; /* no pixel takes more than 16 bytes */
    const uint32_t raw_size = small ? QVRUncompressed_GetUncompressedBufSize(&frame) : 0;
    uint8_t* const raw = raw_size ? malloc(raw_size) : NULL; /* null for stitched chunks: they have no pixels */
    good = good && raw &&
           QVRUncompressed_DecodeFrame(decoder, &frame, coded, size, raw, raw_size, NULL) == QVRUncompressed_StatusOk;
    QVRUncompressed_DestroyDecoder(decoder);
    FILE* const out = good ? fopen(argv[2], "wb") : NULL;
    good = out && fwrite(raw, 1, raw_size, out) == raw_size;
    good = out && fclose(out) == 0 && good;
    free(raw);
    free(coded);
    if (!good) {
        fprintf(stderr, "%s: not written: %s\n", argv[0], argv[2]);
        return 1;
    }
    printf("%u x %u pixels, %u bytes of samples\n", frame.width, frame.height, raw_size);
}
