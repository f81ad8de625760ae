/* SPDX-License-Identifier: BSD-3-Clause */
/* Carries a compressed frame beside an alpha plane and takes both out again. Run: ./wrap_frame_c */
#include <QVRUncompressed.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

enum { k_width = 640, k_height = 360 };

static uint8_t frame[5000], frame_back[sizeof frame];
static uint8_t alpha[k_width * k_height], alpha_back[sizeof alpha];

static void print_error(const char* message, void* program) {
    fprintf(stderr, "%s: %s\n", (const char*)program, message);
}

int main(int argc, char** argv) {
    (void)argc;
    /* Stands for a compressed frame: compression 1300, whose header says how wide and high it is, then any bytes. */
    memset(frame, 0x5A, sizeof frame);
    frame[7] = 0;                                          /* no alpha of its own */
    frame[24] = k_height >> 8, frame[25] = k_height & 255; /* big-endian */
    frame[26] = k_width >> 8, frame[27] = k_width & 255;
    frame[40] = 0, frame[41] = 0, frame[42] = 1300 >> 8, frame[43] = 1300 & 255; /* compression */
    for (size_t i = 0; i < sizeof alpha; ++i)
        alpha[i] = i % k_width < k_width / 2 ? 255 : 0;

    QVRUncompressed_UncompressedParams_t plane = {
        sizeof plane, QVRUncompressed_OrderAlpha, QVRUncompressed_TypeU8, k_width, k_height, 0, 0, 0};
    const QVRUncompressed_CompressedParams_t how = {sizeof how, 1, 0}; /* code the alpha */
    QVRUncompressed_WrapParams_t wrap = {sizeof wrap, QVRUncompressed_WrapQCX, sizeof frame};
    const QVRUncompressed_CodecConfig_t config = {sizeof config, 0, argv[0], print_error};
    QVRUncompressed_Encoder encoder = NULL; /* a null handle is refused by each call below */
    QVRUncompressed_Decoder decoder = NULL;
    QVRUncompressed_CreateEncoder(&config, &encoder);
    QVRUncompressed_CreateDecoder(&config, &decoder);

    const uint32_t room = QVRUncompressed_GetCompressedWrapBufSize(&plane, &how, &wrap, 1);
    uint8_t* const made = malloc(room);
    const uint8_t* const payload = frame;
    uint8_t* const target = frame_back;
    uint32_t size = 0;
    int good = QVRUncompressed_EncodeAndWrapFrame(encoder, &plane, &how, &wrap, 1, alpha, sizeof alpha, &payload, made,
                                                  room, &size) == QVRUncompressed_StatusOk;
    /* Whoever receives the bytes asks what is in them, and looks whether there is room for it. */
    good = good && QVRUncompressed_ReadWrapMetadata(decoder, made, size, &plane, &wrap, 1) == QVRUncompressed_StatusOk;
    good = good && wrap.dataSize <= sizeof frame_back &&
           QVRUncompressed_DecodeAndUnwrapFrame(decoder, &plane, &wrap, 1, made, size, alpha_back, sizeof alpha_back,
                                                &target, NULL) == QVRUncompressed_StatusOk;
    QVRUncompressed_DestroyEncoder(encoder);
    QVRUncompressed_DestroyDecoder(decoder);
    free(made);
    good = good && memcmp(frame, frame_back, sizeof frame) == 0 && memcmp(alpha, alpha_back, sizeof alpha) == 0;
    printf("%zu + %zu bytes became %u, and came back %s\n", sizeof frame, sizeof alpha, size,
           good ? "as they were" : "changed");
    return good ? 0 : 1;
}
