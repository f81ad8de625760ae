/* SPDX-License-Identifier: BSD-3-Clause */
/* Makes a picture of 640 x 360 RGBA pixels and encodes it, its alpha run-length coded. Run: ./encode_frame_c OUT.qvr */
#include <QVRUncompressed.h>
#include <stdio.h>
#include <stdlib.h>

static void print_error(const char* message, void* program) {
    fprintf(stderr, "%s: %s\n", (const char*)program, message);
}

/* A gradient; alpha grows from left to right. */
static void draw(uint8_t* pixel) {
    for (uint32_t i = 0; i < 640 * 360; ++i, pixel += 4) {
        pixel[0] = pixel[3] = (uint8_t)(i % 640 * 255 / 639);
        pixel[1] = (uint8_t)(i / 640 * 255 / 359);
        pixel[2] = (uint8_t)(i % 640 + i / 640);
    }
}

int main(int argc, char** argv) {
    if (argc != 2) {
        fprintf(stderr, "usage: %s OUT.qvr\n", argv[0]);
        return 2;
    }
    /* Every field that is not named is 0, which is a good value for each: progressive, rows without a gap. */
    const QVRUncompressed_UncompressedParams_t frame = {.size = sizeof frame,
                                                        .colorComponentOrder = QVRUncompressed_OrderRGBA,
                                                        .componentType = QVRUncompressed_TypeU8,
                                                        .width = 640,
                                                        .height = 360};
    const QVRUncompressed_CompressedParams_t how = {.size = sizeof how, .alphaCompression = 1};
    const QVRUncompressed_CodecConfig_t config = {
        .size = sizeof config, .userData = argv[0], .errorCallback = print_error};
    const uint32_t raw_size = QVRUncompressed_GetUncompressedBufSize(&frame);
    const uint32_t room = QVRUncompressed_GetCompressedBufSize(&frame, &how);
    uint8_t* const raw = malloc(raw_size);
    uint8_t* const coded = malloc(room);
    FILE* const file = fopen(argv[1], "wb");
    QVRUncompressed_Encoder encoder = NULL; /* stays null when there is no memory or no thread left */
    QVRUncompressed_CreateEncoder(&config, &encoder);
    uint32_t written = 0;
    int good = 0;
    if (raw && coded && file && encoder) {
        draw(raw);
        good = QVRUncompressed_EncodeFrame(encoder, &frame, &how, raw, raw_size, coded, room, &written) ==
               QVRUncompressed_StatusOk;
    }
    good = good && fwrite(coded, 1, written, file) == written;
    good = file && fclose(file) == 0 && good;
    QVRUncompressed_DestroyEncoder(encoder);
    free(coded);
    free(raw);
    if (!good) {
        fprintf(stderr, "%s: not written: %s\n", argv[0], argv[1]);
        return 1;
    }
    printf("%u bytes of samples became %u\n", raw_size, written);
}
