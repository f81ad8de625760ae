/* SPDX-License-Identifier: BSD-3-Clause */
/* Says what each frame of a file is, frame by frame. Run: ./frame_info_c FILE.qvr */
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
    FILE* const in = argc == 2 ? fopen(argv[1], "rb") : NULL;
    if (!in) {
        fprintf(stderr, argc == 2 ? "%s: cannot open %s\n" : "usage: %s FILE.qvr\n", argv[0], argv[1]);
        return argc == 2 ? 1 : 2;
    }
    const QVRUncompressed_CodecConfig_t config = {sizeof config, 1, argv[0], print_error};
    QVRUncompressed_Decoder decoder = NULL; /* stays null when there is no memory left */
    QVRUncompressed_CreateDecoder(&config, &decoder);
    uint32_t size = 0, frames = 0;
    int good = decoder != NULL;
    for (uint8_t* bytes; good && (bytes = read_frame(in, &size)); free(bytes)) {
        QVRUncompressed_UncompressedParams_t frame = {.size = sizeof frame};
        good = QVRUncompressed_ReadMetadata(decoder, bytes, size, &frame) == QVRUncompressed_StatusOk;
        if (good) {
            printf("order %u, type %u, %u x %u pixels, %s, %u wrapped payloads\n", frame.colorComponentOrder,
                   frame.componentType, frame.width, frame.height,
                   frame.frameLayout == QVRUncompressed_LayoutInterlaced ? "interlaced" : "progressive",
                   QVRUncompressed_ReadWrapCount(bytes, size));
            ++frames;
        }
    }
    if (good && (frames == 0 || !feof(in))) {
        fprintf(stderr, "%s: the file ends, or is damaged, in frame %u\n", argv[0], frames);
        good = 0;
    }
    QVRUncompressed_DestroyDecoder(decoder);
    fclose(in);
    return good ? 0 : 1;
}
