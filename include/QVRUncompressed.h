/*
 * QVRUncompressed: raw video frames to a self-describing, lossless, uncompressed bitstream and back.
 *
 * Copyright (c) 2026 The QVRUncompressed authors
 * SPDX-License-Identifier: BSD-3-Clause
 *
 * The whole public interface: fifteen functions, four records, plain integers. The header is C99 and later,
 * C++11 and later, and includes nothing but the fixed-width integer types.
 *
 * A frame in four steps
 *   1. describe it in a QVRUncompressed_UncompressedParams_t (every record's `size` field set first),
 *   2. ask QVRUncompressed_GetCompressedBufSize how large the bitstream can become,
 *   3. QVRUncompressed_CreateEncoder once, QVRUncompressed_EncodeFrame for each frame,
 *   4. QVRUncompressed_DestroyEncoder.
 * Decoding is the mirror: QVRUncompressed_ReadMetadata, QVRUncompressed_GetUncompressedBufSize,
 * QVRUncompressed_CreateDecoder, QVRUncompressed_DecodeFrame, QVRUncompressed_DestroyDecoder.
 *
 * Memory    The caller owns every record and every buffer; the library never returns memory to be freed. Records and
 *           buffers may lie at any address, aligned or not; arrays of pointers are aligned as pointers are. A source and
 *           a destination must not overlap.
 *           Sizes are bytes. The library reads only inside the sources and writes only inside the destinations it
 *           is told of, whatever bytes a bitstream holds.
 * Threads   A handle serves one call at a time; different handles are independent. Functions without a handle may run
 *           on any number of threads at once. Worker threads belong to a handle and end with it.
 * Errors    Functions that return a status return one of QVRUncompressed_Status. No exception leaves the library.
 *           With status QVRUncompressed_StatusFailed the handle's error callback has had the message.
 * Failure   A failed call leaves bytesWritten and every output record untouched (the one exception is noted at
 *           QVRUncompressed_ReadWrapMetadata); the bytes of a destination buffer are then unspecified, but only
 *           bytes inside it were written. The handle stays usable.
 */
#ifndef QVRUNCOMPRESSED_H
#define QVRUNCOMPRESSED_H

#include <stdint.h>

#if defined(__GNUC__)
#define QVRUNCOMPRESSED_API __attribute__((visibility("default")))
#else
#define QVRUNCOMPRESSED_API
#endif

#if defined(__cplusplus) && __cplusplus >= 201103L
#define QVRUNCOMPRESSED_NOEXCEPT noexcept
#else
#define QVRUNCOMPRESSED_NOEXCEPT
#endif

/* The version of this header; QVRUncompressed_GetVersion answers for the library that is loaded. */
#define QVRUNCOMPRESSED_VERSION_MAJOR 2
#define QVRUNCOMPRESSED_VERSION_MINOR 7
#define QVRUNCOMPRESSED_VERSION_PATCH 4

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Constants ---------------------------------------------------------------------------------------------- */

/* What a function that returns a status can return; there are no other values. */
enum QVRUncompressed_Status {
    QVRUncompressed_StatusOk = 0,          /* done */
    QVRUncompressed_StatusFailed = 1,      /* the work failed; the error callback has had the reason */
    QVRUncompressed_StatusNullPointer = 2, /* a required pointer is null */
    QVRUncompressed_StatusBadSize = 3      /* a record's size field does not hold the record's size */
};

/*
 * Colour component orders: which components a pixel has, in which memory order, in how many planes. In the names the
 * components stand in memory order. The order is about layout alone: no colour conversion takes place.
 *
 * 4:2:2 orders hold, for each pixel, one chroma and one luma sample, Cb at even and Cr at odd pixels. 4:2:0 orders hold
 * Cb and Cr at half width and half height, rounded up. Planes follow each other in one buffer without a gap
 * (see rowBytes and rowBytes2 for the strides).
 */
enum QVRUncompressed_ColorComponentOrder {
    QVRUncompressed_OrderYCbYCr = 1,             /* 4:2:2, luma first: Y0 Cb0 Y1 Cr0 (YUY2) */
    QVRUncompressed_OrderCbYCrY = 2,             /* 4:2:2, chroma first: Cb0 Y0 Cr0 Y1 (UYVY, v210, v216) */
    QVRUncompressed_OrderARGB = 3,               /* 4:4:4 with alpha: A R G B */
    QVRUncompressed_OrderBGRA = 4,               /* 4:4:4 with alpha: B G R A */
    QVRUncompressed_OrderRGB = 5,                /* 4:4:4: R G B */
    QVRUncompressed_OrderBGR = 6,                /* 4:4:4: B G R */
    QVRUncompressed_OrderRGBA = 7,               /* 4:4:4 with alpha: R G B A */
    QVRUncompressed_OrderABGR = 8,               /* 4:4:4 with alpha: A B G R */
    QVRUncompressed_OrderYCbCr444 = 9,           /* 4:4:4, three YCbCr samples a pixel, stored as they stand */
    QVRUncompressed_OrderPlanar420 = 10,         /* 4:2:0 in three planes: Y, Cb, Cr (I420) */
    QVRUncompressed_OrderCbYACrYA = 11,          /* 4:2:2 with alpha: chroma, luma, alpha for each pixel */
    QVRUncompressed_OrderYCbCrA444 = 12,         /* 4:4:4 with alpha: three YCbCr samples, the first two swapped when
                                                    stored, then alpha */
    QVRUncompressed_OrderPlanar420Alpha = 13,    /* 4:2:0 in four planes: Y, Cb, Cr, A (A420) */
    QVRUncompressed_OrderAlpha = 14,             /* one alpha plane alone */
    QVRUncompressed_OrderYCbYCrPlanarAlpha = 15, /* as order 1, followed by a full-size alpha plane */
    QVRUncompressed_OrderCbYCrYPlanarAlpha = 16  /* as order 2, followed by a full-size alpha plane */
};

/*
 * Component types: how one sample is stored in the caller's memory (little-endian).
 *
 * Supported pairs: each order with types 1, 2, 3, 4, 6 and 7, but order 14 with types 1 and 2 only; type 214 with each
 * order except 10, 13 and 14; type 5 with order 2 only. 106 pairs in all.
 *
 * Only types 1 and 2 store an alpha plane. With any other type the alpha samples of an order that has them are left
 * out of the bitstream, and decoding into such an order and type is refused.
 */
enum QVRUncompressed_ComponentType {
    QVRUncompressed_TypeU8 = 1,        /* 8-bit integer, one byte */
    QVRUncompressed_TypeU16 = 2,       /* 16-bit integer, one 16-bit word */
    QVRUncompressed_TypeU10 = 3,       /* 10-bit integer in the top bits of a 16-bit word; the low 6 bits are dropped
                                          on encoding and zero after decoding */
    QVRUncompressed_TypeU12 = 4,       /* 12-bit integer in the top bits of a 16-bit word; the low 4 bits likewise */
    QVRUncompressed_TypeU10Packed = 5, /* three 10-bit integers in a 32-bit word at bits 0, 10 and 20; six 4:2:2 pixels
                                          in four words (v210); bits 30 and 31 are dropped and come back zero */
    QVRUncompressed_TypeHalf = 6,      /* 16-bit floating point */
    QVRUncompressed_TypeFloat = 7,     /* 32-bit floating point */
    QVRUncompressed_TypeFixed16 = 214  /* signed 16-bit fixed point with 14 fraction bits: value = word / 16384. Such a
                                          bitstream also decodes to type 7 in orders without alpha */
};

/* Values of frameLayout. */
enum QVRUncompressed_FrameLayout { QVRUncompressed_LayoutProgressive = 0, QVRUncompressed_LayoutInterlaced = 1 };

/* Values of wrapType. */
enum QVRUncompressed_WrapType {
    QVRUncompressed_WrapQCX = 1,      /* one compressed QCX frame beside an alpha plane; must be the only record */
    QVRUncompressed_WrapStitched = 2, /* a run of stitched chunks; reported for the first chunk */
    QVRUncompressed_WrapTile = 3      /* reported on reading for each further stitched chunk */
};

/* ---- Records ------------------------------------------------------------------------------------------------- */

/* What the leading size field of each record must hold. */
#define QVRUNCOMPRESSED_UNCOMPRESSED_PARAMS_SIZE 36u
#define QVRUNCOMPRESSED_COMPRESSED_PARAMS_SIZE 10u
#define QVRUNCOMPRESSED_CODEC_CONFIG_SIZE 28u
#define QVRUNCOMPRESSED_WRAP_PARAMS_SIZE 16u

/*
 * Called on the calling thread, before the failing function returns, with the reason of a failure.
 * message: zero-terminated, valid during the call only. userData: as given at creation.
 * An exception thrown by the callback is swallowed. The callback must not use or destroy the handle that reports.
 */
typedef void (*QVRUncompressed_ErrorCallback_t)(const char* message, void* userData);

/* The records are packed and little-endian: their bytes are part of the binary interface. */
#pragma pack(push, 1)

/* A raw frame in the caller's memory. */
typedef struct QVRUncompressed_UncompressedParams_t {
    uint64_t size;                /* QVRUNCOMPRESSED_UNCOMPRESSED_PARAMS_SIZE */
    uint32_t colorComponentOrder; /* QVRUncompressed_ColorComponentOrder */
    uint32_t componentType;       /* QVRUncompressed_ComponentType */
    uint32_t width;               /* pixels in a row; even for 4:2:2 and 4:2:0 when encoding */
    uint32_t height;              /* rows; even for 4:2:0 when encoding */
    uint32_t rowBytes;            /* bytes from row to row of the first or only plane, and of the alpha plane of order
                                     13; 0: the least, rows without a gap */
    uint32_t frameLayout;         /* QVRUncompressed_FrameLayout. Not checked when encoding, but beside a QCX frame: the
                                     low byte is stored, and a bitstream with any value but 0 and 1 is refused when
                                     read. Not looked at when decoding */
    uint32_t rowBytes2;           /* bytes from row to row of Cb and Cr (orders 10 and 13) or of the separate alpha
                                     plane (orders 15 and 16); 0: the least; otherwise not used */
} QVRUncompressed_UncompressedParams_t;

/* How the bitstream is to be made. */
typedef struct QVRUncompressed_CompressedParams_t {
    uint64_t size;            /* QVRUNCOMPRESSED_COMPRESSED_PARAMS_SIZE */
    uint8_t alphaCompression; /* 0: the alpha plane is stored as it is; else: run-length coded (types 1 and 2) */
    uint8_t rleSlices;        /* slices that a coded alpha plane is cut into, each coded and decoded by one thread;
                                 0: 16; never more than the frame has rows */
} QVRUncompressed_CompressedParams_t;

/* What a handle is made with. The handle keeps a copy. */
typedef struct QVRUncompressed_CodecConfig_t {
    uint64_t size;        /* QVRUNCOMPRESSED_CODEC_CONFIG_SIZE */
    uint32_t threadCount; /* worker threads; 0: as many as there are processors; 1: none, all work is done by the
                             calling thread. The bytes produced never depend on it */
    void* userData;       /* handed to errorCallback */
    QVRUncompressed_ErrorCallback_t errorCallback; /* may be null */
} QVRUncompressed_CodecConfig_t;

/* One payload that is wrapped into, or taken out of, a bitstream. */
typedef struct QVRUncompressed_WrapParams_t {
    uint64_t size;     /* QVRUNCOMPRESSED_WRAP_PARAMS_SIZE */
    uint32_t wrapType; /* QVRUncompressed_WrapType */
    uint32_t dataSize; /* bytes of the payload */
} QVRUncompressed_WrapParams_t;

#pragma pack(pop)

/* Handles. Each owns its worker threads and working memory. */
typedef struct QVRUncompressed_Encoder_s* QVRUncompressed_Encoder;
typedef struct QVRUncompressed_Decoder_s* QVRUncompressed_Decoder;

/* ---- Version ------------------------------------------------------------------------------------------------- */

/* Stores the version of the loaded library (2, 7, 4, build 670, release letter 'r'). Any pointer may be null. */
QVRUNCOMPRESSED_API void QVRUncompressed_GetVersion(uint32_t* major, uint32_t* minor, uint32_t* patch, uint32_t* build,
                                                    char* release) QVRUNCOMPRESSED_NOEXCEPT;

/* ---- Buffer sizes -------------------------------------------------------------------------------------------- */
/*
 * Each returns the low 32 bits of the exact number of bytes, and 0 on any failure (a null pointer, a wrong size field,
 * an unsupported pair of order and type). A frame of 4 GiB or more can be neither encoded nor decoded: a caller that
 * accepts any dimensions checks beforehand that its rows times the bytes of a row (16 x width at most, without padding)
 * stay below 4 GiB.
 */

/* Bytes of the raw frame that up describes: the least source size for encoding and destination size for decoding.
   Nothing is checked: odd dimensions and strides too small still give a number. */
QVRUNCOMPRESSED_API uint32_t QVRUncompressed_GetUncompressedBufSize(const QVRUncompressed_UncompressedParams_t* up)
    QVRUNCOMPRESSED_NOEXCEPT;

/* Bytes that encoding needs as its destination: exact without coded alpha, an upper bound with it. */
QVRUNCOMPRESSED_API uint32_t QVRUncompressed_GetCompressedBufSize(const QVRUncompressed_UncompressedParams_t* up,
                                                                  const QVRUncompressed_CompressedParams_t* cp)
    QVRUNCOMPRESSED_NOEXCEPT;

/* The same for QVRUncompressed_EncodeAndWrapFrame. wraps must not be null and at least one record must be readable,
   even with a wrapCount of 0. */
QVRUNCOMPRESSED_API uint32_t QVRUncompressed_GetCompressedWrapBufSize(const QVRUncompressed_UncompressedParams_t* up,
                                                                      const QVRUncompressed_CompressedParams_t* cp,
                                                                      const QVRUncompressed_WrapParams_t* wraps,
                                                                      uint32_t wrapCount) QVRUNCOMPRESSED_NOEXCEPT;

/* ---- Encoding ------------------------------------------------------------------------------------------------ */

/*
 * Makes an encoder. config: may be null (threadCount 0, no callback). encoder: receives the handle.
 * Returns QVRUncompressed_StatusNullPointer when encoder is null, QVRUncompressed_StatusBadSize for a wrong config
 * size. When memory or threads run out the callback has the reason and the function still returns
 * QVRUncompressed_StatusOk, with *encoder untouched: set the handle to null before the call and test it afterwards.
 */
QVRUNCOMPRESSED_API uint32_t QVRUncompressed_CreateEncoder(const QVRUncompressed_CodecConfig_t* config,
                                                           QVRUncompressed_Encoder* encoder) QVRUNCOMPRESSED_NOEXCEPT;

/* Ends an encoder and its threads. Null is ignored. */
QVRUNCOMPRESSED_API void QVRUncompressed_DestroyEncoder(QVRUncompressed_Encoder encoder) QVRUNCOMPRESSED_NOEXCEPT;

/*
 * Encodes one frame.
 * src, srcSize: the raw frame, at least QVRUncompressed_GetUncompressedBufSize bytes.
 * dst, dstSize: room for the bitstream, at least QVRUncompressed_GetCompressedBufSize bytes.
 * bytesWritten: receives the size of the bitstream; may be null. Bytes of dst behind it are unspecified up to the size
 *               that QVRUncompressed_GetCompressedBufSize names, and untouched from there on.
 */
QVRUNCOMPRESSED_API uint32_t QVRUncompressed_EncodeFrame(QVRUncompressed_Encoder encoder,
                                                         const QVRUncompressed_UncompressedParams_t* up,
                                                         const QVRUncompressed_CompressedParams_t* cp,
                                                         const uint8_t* src, uint32_t srcSize, uint8_t* dst,
                                                         uint32_t dstSize,
                                                         uint32_t* bytesWritten) QVRUNCOMPRESSED_NOEXCEPT;

/* ---- Decoding ------------------------------------------------------------------------------------------------ */

/* Make and end a decoder: as for encoders. */
QVRUNCOMPRESSED_API uint32_t QVRUncompressed_CreateDecoder(const QVRUncompressed_CodecConfig_t* config,
                                                           QVRUncompressed_Decoder* decoder) QVRUNCOMPRESSED_NOEXCEPT;
QVRUNCOMPRESSED_API void QVRUncompressed_DestroyDecoder(QVRUncompressed_Decoder decoder) QVRUNCOMPRESSED_NOEXCEPT;

/*
 * Describes the frame that a bitstream holds. up: its size field set by the caller; the whole record is overwritten,
 * with rowBytes and rowBytes2 0. Of all orders that the planes can be put into, one is reported:
 *
 *   planes      4:2:2   4:4:4 YCbCr   RGB   4:2:0   alpha alone   stitched chunks
 *   order           2             9     5      10            14   0, and type 0
 *   with alpha     11            12     3      13
 *
 * So a frame encoded from order 1 reads as 2, and one from order 7 with type 1 as 3, with type 6 as 5.
 */
QVRUNCOMPRESSED_API uint32_t QVRUncompressed_ReadMetadata(QVRUncompressed_Decoder decoder, const uint8_t* src,
                                                          uint32_t srcSize, QVRUncompressed_UncompressedParams_t* up)
    QVRUNCOMPRESSED_NOEXCEPT;

/*
 * Decodes one frame into the layout that up asks for: the frame's own, or any other order that its planes can be put
 * into (a stream with alpha also decodes into orders without).
 * src, srcSize: the bitstream; bytes behind the frame are ignored, unless a box of the frame claims them.
 * dst, dstSize: room for the raw frame, at least QVRUncompressed_GetUncompressedBufSize bytes. Padding between rows is
 *               not written for raw planes and unspecified for coded alpha.
 * bytesWritten: receives the size of the raw frame; may be null.
 */
QVRUNCOMPRESSED_API uint32_t QVRUncompressed_DecodeFrame(QVRUncompressed_Decoder decoder,
                                                         const QVRUncompressed_UncompressedParams_t* up,
                                                         const uint8_t* src, uint32_t srcSize, uint8_t* dst,
                                                         uint32_t dstSize,
                                                         uint32_t* bytesWritten) QVRUNCOMPRESSED_NOEXCEPT;

/* ---- Wrapped payloads ---------------------------------------------------------------------------------------- */
/*
 * wraps: wrapCount records, filled in by the caller with their sizes, the types and each payload's dataSize.
 * The type of the first record decides: one QCX frame with an alpha plane, or a run of stitched chunks. The first record
 * is read even with a wrapCount of 0. A null `wraps` gives QVRUncompressed_StatusNullPointer.
 */

/*
 * Wraps payloads. A wrapType of 0 in any record is refused.
 *
 * First type QVRUncompressed_WrapQCX: wrapCount is 1, and up describes the alpha plane (order 14, type 1 or 2) that src
 * holds. The payload must have a QCX header, 45 bytes at least, of a known compression and without an alpha of its own;
 * width and height must be equal to the QCX frame's, and frameLayout 1 for an interlaced one, 0 for a progressive one.
 * First type QVRUncompressed_WrapStitched: any number of chunks of any size; the types of further records are not looked
 * at. Of up only width, height and frameLayout are used, and nothing in it is checked; src may be null.
 * A first type of 3 or more wraps nothing: the alpha plane is encoded alone.
 *
 * src, srcSize: the raw alpha plane.
 * wrapData: wrapCount pointers to the payloads, each of the dataSize bytes of its record.
 * dst, dstSize: room for the bitstream, at least QVRUncompressed_GetCompressedWrapBufSize bytes.
 * bytesWritten: receives the size of the bitstream; may be null.
 */
QVRUNCOMPRESSED_API uint32_t QVRUncompressed_EncodeAndWrapFrame(
    QVRUncompressed_Encoder encoder, const QVRUncompressed_UncompressedParams_t* up,
    const QVRUncompressed_CompressedParams_t* cp, const QVRUncompressed_WrapParams_t* wraps, uint32_t wrapCount,
    const uint8_t* src, uint32_t srcSize, const uint8_t* const* wrapData, uint8_t* dst, uint32_t dstSize,
    uint32_t* bytesWritten) QVRUNCOMPRESSED_NOEXCEPT;

/* Number of wrapped payloads in a bitstream; 0 also when it is none. */
QVRUNCOMPRESSED_API uint32_t QVRUncompressed_ReadWrapCount(const uint8_t* src,
                                                           uint32_t srcSize) QVRUNCOMPRESSED_NOEXCEPT;

/*
 * Describes the frame, as QVRUncompressed_ReadMetadata does, and its first wrapCount wrapped payloads.
 * wraps: wrapCount records, their size fields set by the caller; wrapType and dataSize are filled. May be null with a
 * wrapCount of 0. When there are fewer payloads than wrapCount the call fails, with up already filled.
 */
QVRUNCOMPRESSED_API uint32_t QVRUncompressed_ReadWrapMetadata(QVRUncompressed_Decoder decoder, const uint8_t* src,
                                                              uint32_t srcSize,
                                                              QVRUncompressed_UncompressedParams_t* up,
                                                              QVRUncompressed_WrapParams_t* wraps,
                                                              uint32_t wrapCount) QVRUNCOMPRESSED_NOEXCEPT;

/*
 * Takes payloads out of a bitstream. Fill wraps by QVRUncompressed_ReadWrapMetadata.
 *
 * First type QVRUncompressed_WrapStitched: the first wrapCount chunks; dst may be null.
 * Any other first type: wrapCount is 1, the record must agree with the first payload in size and type, and the alpha
 * plane beside it is decoded as up describes it, from the start of dst on with rows of rowBytes. up may have any order
 * that the bitstream's planes serve.
 *
 * src, srcSize: the bitstream.
 * dst, dstSize: room for the raw frame that up describes, at least QVRUncompressed_GetUncompressedBufSize bytes.
 * wrapDst: wrapCount pointers to the caller's buffers. Each must hold the dataSize that QVRUncompressed_ReadWrapMetadata
 *          reports for it: of stitched chunks only the first record's dataSize is compared with the bitstream.
 * bytesWritten: receives the size of the raw frame, 0 with stitched chunks; may be null.
 */
QVRUNCOMPRESSED_API uint32_t QVRUncompressed_DecodeAndUnwrapFrame(
    QVRUncompressed_Decoder decoder, const QVRUncompressed_UncompressedParams_t* up,
    const QVRUncompressed_WrapParams_t* wraps, uint32_t wrapCount, const uint8_t* src, uint32_t srcSize, uint8_t* dst,
    uint32_t dstSize, uint8_t* const* wrapDst, uint32_t* bytesWritten) QVRUNCOMPRESSED_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif /* QVRUNCOMPRESSED_H */
