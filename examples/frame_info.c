/* SPDX-License-Identifier: BSD-3-Clause */
/* Says what the first frame of a file is: frame_info FILE.qvr */
#include <QVRUncompressed.h>
#include <stdio.h>
#include <stdlib.h>

static void print_error(const char* message, void* user_data) {
    fprintf((FILE*)user_data, "frame_info: %s\n", message);
}

static uint8_t* read_file(const char* path, long* size) {
    uint8_t* bytes = NULL;
    FILE* file = fopen(path, "rb");
    if (file && fseek(file, 0, SEEK_END) == 0 && (*size = ftell(file)) > 0 && fseek(file, 0, SEEK_SET) == 0) {
        bytes = malloc((size_t)*size);
        if (bytes && fread(bytes, 1, (size_t)*size, file) != (size_t)*size) {
            free(bytes);
            bytes = NULL;
        }
    }
    if (file) {
        fclose(file);
    }
    return bytes;
}

int main(int argc, char** argv) {
    QVRUncompressed_CodecConfig_t config = {QVRUNCOMPRESSED_CODEC_CONFIG_SIZE, 1, NULL, print_error};
    QVRUncompressed_UncompressedParams_t frame = {QVRUNCOMPRESSED_UNCOMPRESSED_PARAMS_SIZE, 0, 0, 0, 0, 0, 0, 0};
    QVRUncompressed_Decoder decoder = NULL;
    uint32_t status = QVRUncompressed_StatusFailed;
    long size = 0;
    uint8_t* bytes = argc == 2 ? read_file(argv[1], &size) : NULL;
    if (!bytes) {
        fprintf(stderr, "usage: frame_info FILE.qvr\n");
        return 2;
    }
    config.userData = stderr;
    if (QVRUncompressed_CreateDecoder(&config, &decoder) == QVRUncompressed_StatusOk && decoder) {
        status = QVRUncompressed_ReadMetadata(decoder, bytes, (uint32_t)size, &frame);
    }
    if (status == QVRUncompressed_StatusOk) {
        printf("order %u, type %u, %u x %u pixels, %u wrapped payloads\n", frame.colorComponentOrder,
               frame.componentType, frame.width, frame.height, QVRUncompressed_ReadWrapCount(bytes, (uint32_t)size));
    }
    QVRUncompressed_DestroyDecoder(decoder);
    free(bytes);
    return status == QVRUncompressed_StatusOk ? 0 : 1;
}
