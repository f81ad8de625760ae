/* SPDX-License-Identifier: BSD-3-Clause */
/* A C99 program that calls each of the fifteen functions with nothing but the public header. */
#include <QVRUncompressed.h>

#include <stdio.h>
#include <string.h>

/* C99 has no static assertion of its own. */
typedef char frame_record_has_36_bytes[sizeof(QVRUncompressed_UncompressedParams_t) == 36 ? 1 : -1];
typedef char stream_record_has_10_bytes[sizeof(QVRUncompressed_CompressedParams_t) == 10 ? 1 : -1];
typedef char config_record_has_28_bytes[sizeof(QVRUncompressed_CodecConfig_t) == 28 ? 1 : -1];
typedef char wrap_record_has_16_bytes[sizeof(QVRUncompressed_WrapParams_t) == 16 ? 1 : -1];

static int failures = 0;

static void expect(int condition, const char* what) {
    if (!condition) {
        printf("failed: %s\n", what);
        ++failures;
    }
}

static void keep_message(const char* message, void* user_data) {
    strncpy((char*)user_data, message, 63);
}

static QVRUncompressed_UncompressedParams_t frame_of(uint32_t order, uint32_t width, uint32_t height) {
    QVRUncompressed_UncompressedParams_t up;
    memset(&up, 0, sizeof up);
    up.size = QVRUNCOMPRESSED_UNCOMPRESSED_PARAMS_SIZE;
    up.colorComponentOrder = order;
    up.componentType = QVRUncompressed_TypeU8;
    up.width = width;
    up.height = height;
    return up;
}

static void check_version(void) {
    uint32_t major = 0;
    uint32_t minor = 0;
    uint32_t patch = 0;
    uint32_t build = 0;
    char release = 0;
    QVRUncompressed_GetVersion(&major, &minor, &patch, &build, &release);
    expect(major == QVRUNCOMPRESSED_VERSION_MAJOR, "major version");
    expect(minor == QVRUNCOMPRESSED_VERSION_MINOR, "minor version");
    expect(patch == QVRUNCOMPRESSED_VERSION_PATCH, "patch version");
    expect(build == 670 && release == 'r', "build and release letter");
}

static void check_frame(QVRUncompressed_Encoder encoder, QVRUncompressed_Decoder decoder, char* message) {
    static const uint8_t src[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    QVRUncompressed_UncompressedParams_t up = frame_of(QVRUncompressed_OrderBGRA, 2, 1);
    QVRUncompressed_UncompressedParams_t read = frame_of(0, 0, 0);
    QVRUncompressed_CompressedParams_t cp = {QVRUNCOMPRESSED_COMPRESSED_PARAMS_SIZE, 0, 0};
    uint8_t stream[128];
    uint8_t raw[8];
    uint32_t written = 0;

    expect(QVRUncompressed_GetUncompressedBufSize(&up) == 8, "raw size");
    expect(QVRUncompressed_GetCompressedBufSize(&up, &cp) == 90, "stream size");
    expect(QVRUncompressed_EncodeFrame(encoder, &up, &cp, src, 8, stream, 128, &written) == QVRUncompressed_StatusOk,
           "encoding");
    expect(written == 90, "bytes encoded");
    expect(QVRUncompressed_ReadMetadata(decoder, stream, written, &read) == QVRUncompressed_StatusOk, "metadata");
    expect(read.colorComponentOrder == QVRUncompressed_OrderARGB && read.width == 2, "metadata fields");
    expect(QVRUncompressed_DecodeFrame(decoder, &up, stream, written, raw, 8, &written) == QVRUncompressed_StatusOk,
           "decoding");
    expect(written == 8 && memcmp(raw, src, 8) == 0, "decoded bytes");
    expect(QVRUncompressed_DecodeFrame(decoder, &up, stream, 7, raw, 8, &written) == QVRUncompressed_StatusFailed,
           "broken stream");
    expect(strcmp(message, "buffer size should be at least 8") == 0, "message");
}

static void check_chunks(QVRUncompressed_Encoder encoder, QVRUncompressed_Decoder decoder) {
    static const uint8_t first[3] = {1, 2, 3};
    static const uint8_t second[2] = {4, 5};
    const uint8_t* chunks[2];
    uint8_t* targets[2];
    uint8_t copies[2][3] = {{0, 0, 0}, {0, 0, 0}};
    QVRUncompressed_UncompressedParams_t up = frame_of(0, 4, 2);
    QVRUncompressed_CompressedParams_t cp = {QVRUNCOMPRESSED_COMPRESSED_PARAMS_SIZE, 0, 0};
    QVRUncompressed_WrapParams_t wraps[2] = {
        {QVRUNCOMPRESSED_WRAP_PARAMS_SIZE, QVRUncompressed_WrapStitched, 3},
        {QVRUNCOMPRESSED_WRAP_PARAMS_SIZE, QVRUncompressed_WrapStitched, 2},
    };
    uint8_t stream[128];
    uint32_t written = 0;
    chunks[0] = first;
    chunks[1] = second;
    targets[0] = copies[0];
    targets[1] = copies[1];

    expect(QVRUncompressed_GetCompressedWrapBufSize(&up, &cp, wraps, 2) == 58, "wrapped size");
    expect(QVRUncompressed_EncodeAndWrapFrame(encoder, &up, &cp, wraps, 2, NULL, 0, chunks, stream, 128, &written) ==
               QVRUncompressed_StatusOk,
           "wrapping");
    expect(written == 58, "bytes wrapped");
    expect(QVRUncompressed_ReadWrapCount(stream, written) == 2, "wrap count");
    memset(&wraps[1].wrapType, 0, 8);
    expect(QVRUncompressed_ReadWrapMetadata(decoder, stream, written, &up, wraps, 2) == QVRUncompressed_StatusOk,
           "wrap metadata");
    expect(wraps[1].wrapType == QVRUncompressed_WrapTile && wraps[1].dataSize == 2, "wrap records");
    expect(QVRUncompressed_DecodeAndUnwrapFrame(decoder, &up, wraps, 2, stream, written, NULL, 0, targets, &written) ==
               QVRUncompressed_StatusOk,
           "unwrapping");
    expect(written == 0 && memcmp(copies[0], first, 3) == 0 && memcmp(copies[1], second, 2) == 0, "chunks");
}

int main(void) {
    char message[64] = "";
    QVRUncompressed_CodecConfig_t config = {QVRUNCOMPRESSED_CODEC_CONFIG_SIZE, 2, NULL, keep_message};
    QVRUncompressed_Encoder encoder = NULL;
    QVRUncompressed_Decoder decoder = NULL;
    config.userData = message;

    check_version();
    expect(QVRUncompressed_CreateEncoder(&config, &encoder) == QVRUncompressed_StatusOk, "making an encoder");
    expect(QVRUncompressed_CreateDecoder(&config, &decoder) == QVRUncompressed_StatusOk, "making a decoder");
    if (encoder != NULL && decoder != NULL) {
        check_frame(encoder, decoder, message);
        check_chunks(encoder, decoder);
    } else {
        expect(0, "handles");
    }
    QVRUncompressed_DestroyEncoder(encoder);
    QVRUncompressed_DestroyDecoder(decoder);
    if (failures == 0) {
        printf("all fifteen functions answer\n");
    }
    return failures == 0 ? 0 : 1;
}
