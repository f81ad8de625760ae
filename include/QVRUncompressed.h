/* SPDX-License-Identifier: BSD-3-Clause */
/* Copyright (c) 2026 The QVRUncompressed authors */
/**
 * @file
 * Raw video frames to a self-describing, lossless, uncompressed bitstream and back.
 *
 * The whole public interface: fifteen functions, four records, plain integers. The header is C99 and later,
 * C++11 and later, and includes nothing but the fixed-width integer types.
 *
 * A frame in four steps:
 *   1. describe it in a QVRUncompressed_UncompressedParams_t (every record's `size` field set first),
 *   2. ask QVRUncompressed_GetCompressedBufSize() how large the bitstream can become,
 *   3. QVRUncompressed_CreateEncoder() once, QVRUncompressed_EncodeFrame() for each frame,
 *   4. QVRUncompressed_DestroyEncoder().
 *
 * Decoding is the mirror: QVRUncompressed_ReadMetadata(), QVRUncompressed_GetUncompressedBufSize(),
 * QVRUncompressed_CreateDecoder(), QVRUncompressed_DecodeFrame(), QVRUncompressed_DestroyDecoder().
 *
 * - **Memory**: The caller owns every record and every buffer; the library never returns memory to be freed. Records
 *   and buffers may lie at any address, aligned or not; arrays of pointers are aligned as pointers are. A source and
 *   a destination must not overlap. Sizes are bytes. The library reads only inside the sources and writes only inside
 *   the destinations it is told of, whatever bytes a bitstream holds.
 * - **Threads**: A handle serves one call at a time; different handles are independent. Functions without a handle may
 *   run on any number of threads at once. Worker threads belong to a handle and end with it. In the child of a fork()
 *   a handle works without them.
 * - **Errors**: Functions that return a status return one of #QVRUncompressed_Status. No exception leaves the library.
 *   With status #QVRUncompressed_StatusFailed the handle's error callback has had the message.
 * - **Failure**: A failed call leaves bytesWritten and every output record untouched (the one exception is noted at
 *   QVRUncompressed_ReadWrapMetadata()); the bytes of a destination buffer are then unspecified, but only bytes inside
 *   it were written. The handle stays usable.
 */
#ifndef QVRUNCOMPRESSED_H
#define QVRUNCOMPRESSED_H

#include <stdint.h>

/** @cond macros that make the declarations what they are */
#if defined(QVRUNCOMPRESSED_API)
/* Said by whoever compiles the library into something of their own. */
#elif defined(__GNUC__)
#define QVRUNCOMPRESSED_API __attribute__((visibility("default")))
#else
#define QVRUNCOMPRESSED_API
#endif

#if defined(__cplusplus) && __cplusplus >= 201103L
#define QVRUNCOMPRESSED_NOEXCEPT noexcept
#else
#define QVRUNCOMPRESSED_NOEXCEPT
#endif
/** @endcond */

/**
 * @defgroup version Version
 * Which version the header is, and which one the library is that was loaded.
 * @{
 */

/**
 * @name The version of this header
 * QVRUncompressed_GetVersion() answers for the library that is loaded.
 * @{
 */
#define QVRUNCOMPRESSED_VERSION_MAJOR 2 /**< Changes when programs have to be changed or compiled anew. */
#define QVRUNCOMPRESSED_VERSION_MINOR 7 /**< Changes when something is added. */
#define QVRUNCOMPRESSED_VERSION_PATCH 4 /**< Changes when something is corrected. */
/** @} */

/** @} */

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup constants Constants
 * Statuses, component orders, component types: the numbers that records and functions use.
 * @{
 */

/** What a function that returns a status can return; there are no other values. */
enum QVRUncompressed_Status {
    QVRUncompressed_StatusOk = 0,          /**< done */
    QVRUncompressed_StatusFailed = 1,      /**< the work failed; the error callback has had the reason */
    QVRUncompressed_StatusNullPointer = 2, /**< a required pointer is null */
    QVRUncompressed_StatusBadSize = 3      /**< a record's size field does not hold the record's size */
};

/**
 * Colour component orders: which components a pixel has, in which memory order, in how many planes. In the names the
 * components stand in memory order. The order is about layout alone: no colour conversion takes place.
 *
 * 4:2:2 orders hold, for each pixel, one chroma and one luma sample, Cb at even and Cr at odd pixels. 4:2:0 orders hold
 * Cb and Cr at half width and half height, rounded up. Planes follow each other in one buffer without a gap
 * (see rowBytes and rowBytes2 for the strides).
 */
enum QVRUncompressed_ColorComponentOrder {
    QVRUncompressed_OrderYCbYCr = 1,             /**< 4:2:2, luma first: Y0 Cb0 Y1 Cr0 (YUY2) */
    QVRUncompressed_OrderCbYCrY = 2,             /**< 4:2:2, chroma first: Cb0 Y0 Cr0 Y1 (UYVY, v210, v216) */
    QVRUncompressed_OrderARGB = 3,               /**< 4:4:4 with alpha: A R G B */
    QVRUncompressed_OrderBGRA = 4,               /**< 4:4:4 with alpha: B G R A */
    QVRUncompressed_OrderRGB = 5,                /**< 4:4:4: R G B */
    QVRUncompressed_OrderBGR = 6,                /**< 4:4:4: B G R */
    QVRUncompressed_OrderRGBA = 7,               /**< 4:4:4 with alpha: R G B A */
    QVRUncompressed_OrderABGR = 8,               /**< 4:4:4 with alpha: A B G R */
    QVRUncompressed_OrderYCbCr444 = 9,           /**< 4:4:4, three YCbCr samples a pixel, stored as they stand */
    QVRUncompressed_OrderPlanar420 = 10,         /**< 4:2:0 in three planes: Y, Cb, Cr (I420) */
    QVRUncompressed_OrderCbYACrYA = 11,          /**< 4:2:2 with alpha: chroma, luma, alpha for each pixel */
    QVRUncompressed_OrderYCbCrA444 = 12,         /**< 4:4:4 with alpha: three YCbCr samples, the first two swapped when
                                                    stored, then alpha */
    QVRUncompressed_OrderPlanar420Alpha = 13,    /**< 4:2:0 in four planes: Y, Cb, Cr, A (A420) */
    QVRUncompressed_OrderAlpha = 14,             /**< one alpha plane alone */
    QVRUncompressed_OrderYCbYCrPlanarAlpha = 15, /**< as order 1, followed by a full-size alpha plane */
    QVRUncompressed_OrderCbYCrYPlanarAlpha = 16  /**< as order 2, followed by a full-size alpha plane */
};

/**
 * Component types: how one sample is stored in the caller's memory (little-endian).
 *
 * Supported pairs: each order with types 1, 2, 3, 4, 6 and 7, but order 14 with types 1 and 2 only; type 214 with each
 * order except 10, 13 and 14; type 5 with order 2 only. 106 pairs in all.
 *
 * Only types 1 and 2 store an alpha plane. With any other type the alpha samples of an order that has them are left
 * out of the bitstream, and decoding into such an order and type is refused.
 */
enum QVRUncompressed_ComponentType {
    QVRUncompressed_TypeU8 = 1,        /**< 8-bit integer, one byte */
    QVRUncompressed_TypeU16 = 2,       /**< 16-bit integer, one 16-bit word */
    QVRUncompressed_TypeU10 = 3,       /**< 10-bit integer in the top bits of a 16-bit word; the low 6 bits are dropped
                                          on encoding and zero after decoding */
    QVRUncompressed_TypeU12 = 4,       /**< 12-bit integer in the top bits of a 16-bit word; the low 4 bits likewise */
    QVRUncompressed_TypeU10Packed = 5, /**< three 10-bit integers in a 32-bit word at bits 0, 10 and 20; six 4:2:2
                                          pixels in four words (v210); bits 30 and 31 are dropped and come back zero */
    QVRUncompressed_TypeHalf = 6,      /**< 16-bit floating point */
    QVRUncompressed_TypeFloat = 7,     /**< 32-bit floating point */
    QVRUncompressed_TypeFixed16 = 214 /**< signed 16-bit fixed point with 14 fraction bits: value = word / 16384. Such a
                                          bitstream also decodes to type 7 in orders without alpha */
};

/** Values of frameLayout: what the rows of a frame are. It is stored and read, and changes nothing else. */
enum QVRUncompressed_FrameLayout {
    QVRUncompressed_LayoutProgressive = 0, /**< all rows are of one moment */
    QVRUncompressed_LayoutInterlaced = 1   /**< odd and even rows are of two moments */
};

/** Values of wrapType: what a wrapped payload is. */
enum QVRUncompressed_WrapType {
    QVRUncompressed_WrapQCX = 1,      /**< one frame of a compressed format, of which only size and interlacing in its
                                         header are looked at, beside an alpha plane; must be the only record */
    QVRUncompressed_WrapStitched = 2, /**< a run of stitched chunks; reported for the first chunk */
    QVRUncompressed_WrapTile = 3      /**< reported on reading for each further stitched chunk */
};

/** @} */

/**
 * @defgroup records Records
 * What the caller fills in and the library reads, or the other way round. The records are packed and little-endian:
 * their bytes are part of the binary interface. Each begins with its own size in bytes.
 * @{
 */

/**
 * @name What the leading size field of each record must hold
 * `sizeof` of the record gives the same number.
 * @{
 */
#define QVRUNCOMPRESSED_UNCOMPRESSED_PARAMS_SIZE 36u /**< of a QVRUncompressed_UncompressedParams_t */
#define QVRUNCOMPRESSED_COMPRESSED_PARAMS_SIZE 10u   /**< of a QVRUncompressed_CompressedParams_t */
#define QVRUNCOMPRESSED_CODEC_CONFIG_SIZE 28u        /**< of a QVRUncompressed_CodecConfig_t */
#define QVRUNCOMPRESSED_WRAP_PARAMS_SIZE 16u         /**< of a QVRUncompressed_WrapParams_t */
/** @} */

/**
 * Called on the calling thread, before the failing function returns, with the reason of a failure.
 * An exception thrown by the callback is swallowed. The callback must not use or destroy the handle that reports.
 *
 * @param message   zero-terminated, valid during the call only
 * @param userData  as given at creation
 */
typedef void (*QVRUncompressed_ErrorCallback_t)(const char* message, void* userData);

#pragma pack(push, 1)

/** A raw frame in the caller's memory. */
typedef struct QVRUncompressed_UncompressedParams_t {
    uint64_t size;                /**< #QVRUNCOMPRESSED_UNCOMPRESSED_PARAMS_SIZE */
    uint32_t colorComponentOrder; /**< a #QVRUncompressed_ColorComponentOrder */
    uint32_t componentType;       /**< a #QVRUncompressed_ComponentType */
    uint32_t width;               /**< pixels in a row; even for 4:2:2 and 4:2:0 when encoding */
    uint32_t height;              /**< rows; even for 4:2:0 when encoding */
    uint32_t rowBytes;            /**< bytes from row to row of the first or only plane, and of the alpha plane of order
                                     13; 0: the least, rows without a gap */
    uint32_t frameLayout;         /**< a #QVRUncompressed_FrameLayout. Encoding stores its low byte unchecked, except
                                     beside a QCX frame, which it must match. Reading refuses a bitstream that holds
                                     neither 0 nor 1. Decoding ignores it */
    uint32_t rowBytes2;           /**< bytes from row to row of Cb and Cr (orders 10 and 13) or of the separate alpha
                                     plane (orders 15 and 16); 0: the least; otherwise not used */
} QVRUncompressed_UncompressedParams_t;

/** How the bitstream is to be made. */
typedef struct QVRUncompressed_CompressedParams_t {
    uint64_t size;            /**< #QVRUNCOMPRESSED_COMPRESSED_PARAMS_SIZE */
    uint8_t alphaCompression; /**< 0: the alpha plane is stored as it is; else: run-length coded (types 1 and 2) */
    uint8_t rleSlices;        /**< slices that a coded alpha plane is cut into, each coded and decoded by one thread;
                                 0: 16; never more than the frame has rows */
} QVRUncompressed_CompressedParams_t;

/** What a handle is made with. The handle keeps a copy. */
typedef struct QVRUncompressed_CodecConfig_t {
    uint64_t size;        /**< #QVRUNCOMPRESSED_CODEC_CONFIG_SIZE */
    uint32_t threadCount; /**< worker threads; 0: as many as there are processors; 1: none, all work is done by the
                             calling thread. The bytes produced never depend on it */
    void* userData;       /**< handed to errorCallback */
    QVRUncompressed_ErrorCallback_t errorCallback; /**< may be null */
} QVRUncompressed_CodecConfig_t;

/** One payload that is wrapped into, or taken out of, a bitstream. */
typedef struct QVRUncompressed_WrapParams_t {
    uint64_t size;     /**< #QVRUNCOMPRESSED_WRAP_PARAMS_SIZE */
    uint32_t wrapType; /**< a #QVRUncompressed_WrapType */
    uint32_t dataSize; /**< bytes of the payload */
} QVRUncompressed_WrapParams_t;

#pragma pack(pop)

/** @} */

/**
 * @addtogroup version
 * @{
 */

/**
 * Stores the version of the loaded library (2, 7, 4, build 670, release letter 'r'). Any pointer may be null.
 *
 * @param[out] major    receives the first number: #QVRUNCOMPRESSED_VERSION_MAJOR of the library's own header
 * @param[out] minor    receives the second one
 * @param[out] patch    receives the third one
 * @param[out] build    receives the number of the build
 * @param[out] release  receives the letter of the release, one character without an end
 */
QVRUNCOMPRESSED_API void QVRUncompressed_GetVersion(uint32_t* major, uint32_t* minor, uint32_t* patch, uint32_t* build,
                                                    char* release) QVRUNCOMPRESSED_NOEXCEPT;

/** @} */

/**
 * @defgroup sizes Buffer sizes
 * How many bytes a caller must have ready. No handle is needed, and any number of threads may ask at once.
 *
 * Each returns the low 32 bits of the exact number of bytes, and 0 for a null pointer or a wrong size field; those for
 * bitstreams also for a pair of order and type that is not supported, which is how to ask whether a pair is. A frame of
 * 4 GiB or more can be neither encoded nor decoded: a caller that accepts any dimensions checks beforehand that its rows
 * times the bytes of a row (16 x width at most, without padding) stay below 4 GiB.
 * @{
 */

/**
 * Bytes of the raw frame that up describes: the least source size for encoding and destination size for decoding.
 * Nothing is checked: odd dimensions, strides too small and pairs that are not supported still give a number.
 *
 * @param up  the frame
 * @return bytes, modulo 2^32; 0 when up is null or its size field is wrong
 */
QVRUNCOMPRESSED_API uint32_t QVRUncompressed_GetUncompressedBufSize(const QVRUncompressed_UncompressedParams_t* up)
    QVRUNCOMPRESSED_NOEXCEPT;

/**
 * Bytes that encoding needs as its destination: exact without coded alpha, an upper bound with it.
 *
 * @param up  the frame
 * @param cp  how it is going to be encoded
 * @return bytes, modulo 2^32; 0 when a pointer is null, a size field is wrong or the pair of order and type is not
 *         supported
 */
QVRUNCOMPRESSED_API uint32_t QVRUncompressed_GetCompressedBufSize(const QVRUncompressed_UncompressedParams_t* up,
                                                                  const QVRUncompressed_CompressedParams_t* cp)
    QVRUNCOMPRESSED_NOEXCEPT;

/**
 * The same for QVRUncompressed_EncodeAndWrapFrame().
 *
 * @param up         the alpha plane, or of stitched chunks their frame
 * @param cp         how the alpha plane is going to be encoded
 * @param wraps      the payloads. Must not be null, and at least one record must be readable, even with a wrapCount
 *                   of 0
 * @param wrapCount  number of records
 * @return bytes, modulo 2^32; 0 on any failure
 */
QVRUNCOMPRESSED_API uint32_t QVRUncompressed_GetCompressedWrapBufSize(const QVRUncompressed_UncompressedParams_t* up,
                                                                      const QVRUncompressed_CompressedParams_t* cp,
                                                                      const QVRUncompressed_WrapParams_t* wraps,
                                                                      uint32_t wrapCount) QVRUNCOMPRESSED_NOEXCEPT;

/** @} */

/**
 * @defgroup encoding Encoding
 * Raw frames to bitstreams: make an encoder once, encode frame after frame with it, end it.
 * @{
 */

/** An encoder. It owns its worker threads and working memory and serves one call at a time. */
typedef struct QVRUncompressed_Encoder_s* QVRUncompressed_Encoder;

/**
 * Makes an encoder, which is to be ended by QVRUncompressed_DestroyEncoder(). Its worker threads start here.
 *
 * When memory or threads run out the callback has the reason and the function still returns #QVRUncompressed_StatusOk,
 * with *encoder untouched: set the handle to null before the call and test it afterwards.
 *
 * @param config        may be null (threadCount 0, no callback); a copy is kept
 * @param[out] encoder  receives the handle
 * @retval QVRUncompressed_StatusNullPointer  encoder is null
 * @retval QVRUncompressed_StatusBadSize      the size field of config is wrong
 * @retval QVRUncompressed_StatusOk           in all other cases
 */
QVRUNCOMPRESSED_API uint32_t QVRUncompressed_CreateEncoder(const QVRUncompressed_CodecConfig_t* config,
                                                           QVRUncompressed_Encoder* encoder) QVRUNCOMPRESSED_NOEXCEPT;

/**
 * Ends an encoder and its threads.
 *
 * @param encoder  a handle that no call is using; null is ignored
 */
QVRUNCOMPRESSED_API void QVRUncompressed_DestroyEncoder(QVRUncompressed_Encoder encoder) QVRUNCOMPRESSED_NOEXCEPT;

/**
 * Encodes one frame. The bytes depend on the frame and on cp alone, never on threads or the processor.
 *
 * @param encoder            the handle; it must not be in another call
 * @param up                 what lies in src
 * @param cp                 how it is to be encoded
 * @param src                the raw frame
 * @param srcSize            bytes of src, at least QVRUncompressed_GetUncompressedBufSize()
 * @param[out] dst           room for the bitstream
 * @param dstSize            bytes of dst, at least QVRUncompressed_GetCompressedBufSize()
 * @param[out] bytesWritten  receives the size of the bitstream; may be null. Bytes of dst behind it are unspecified up
 *                           to the size that QVRUncompressed_GetCompressedBufSize() names, and untouched from there on
 * @retval QVRUncompressed_StatusOk           the bitstream is in dst
 * @retval QVRUncompressed_StatusFailed       the frame cannot be encoded so; the error callback has had the reason
 * @retval QVRUncompressed_StatusNullPointer  a pointer other than bytesWritten is null
 * @retval QVRUncompressed_StatusBadSize      the size field of up or cp is wrong
 */
QVRUNCOMPRESSED_API uint32_t QVRUncompressed_EncodeFrame(QVRUncompressed_Encoder encoder,
                                                         const QVRUncompressed_UncompressedParams_t* up,
                                                         const QVRUncompressed_CompressedParams_t* cp,
                                                         const uint8_t* src, uint32_t srcSize, uint8_t* dst,
                                                         uint32_t dstSize,
                                                         uint32_t* bytesWritten) QVRUNCOMPRESSED_NOEXCEPT;

/** @} */

/**
 * @defgroup decoding Decoding
 * Bitstreams to raw frames: make a decoder once, ask it what a bitstream holds, decode, end it.
 * @{
 */

/** A decoder. It owns its worker threads and working memory and serves one call at a time. */
typedef struct QVRUncompressed_Decoder_s* QVRUncompressed_Decoder;

/**
 * Makes a decoder, which is to be ended by QVRUncompressed_DestroyDecoder(). Its worker threads start here.
 *
 * When memory or threads run out the callback has the reason and the function still returns #QVRUncompressed_StatusOk,
 * with *decoder untouched: set the handle to null before the call and test it afterwards.
 *
 * @param config        may be null (threadCount 0, no callback); a copy is kept
 * @param[out] decoder  receives the handle
 * @retval QVRUncompressed_StatusNullPointer  decoder is null
 * @retval QVRUncompressed_StatusBadSize      the size field of config is wrong
 * @retval QVRUncompressed_StatusOk           in all other cases
 */
QVRUNCOMPRESSED_API uint32_t QVRUncompressed_CreateDecoder(const QVRUncompressed_CodecConfig_t* config,
                                                           QVRUncompressed_Decoder* decoder) QVRUNCOMPRESSED_NOEXCEPT;

/**
 * Ends a decoder and its threads.
 *
 * @param decoder  a handle that no call is using; null is ignored
 */
QVRUNCOMPRESSED_API void QVRUncompressed_DestroyDecoder(QVRUncompressed_Decoder decoder) QVRUNCOMPRESSED_NOEXCEPT;

/**
 * Describes the frame that a bitstream holds. Of all orders that the planes can be put into, one is reported:
 *
 * | planes          | order | with alpha |
 * |-----------------|------:|-----------:|
 * | 4:2:2           |     2 |         11 |
 * | 4:4:4 YCbCr     |     9 |         12 |
 * | RGB             |     5 |          3 |
 * | 4:2:0           |    10 |         13 |
 * | alpha alone     |    14 |            |
 * | stitched chunks | 0, and type 0 |    |
 *
 * So a frame encoded from order 1 reads as 2, and one from order 7 with type 1 as 3, with type 6 as 5.
 *
 * @param decoder  the handle; it must not be in another call
 * @param src      the bitstream; bytes behind the frame are ignored, unless a box of the frame claims them
 * @param srcSize  bytes of src
 * @param[in,out] up  its size field set by the caller; the whole record is overwritten, with rowBytes and rowBytes2 0
 * @retval QVRUncompressed_StatusOk           up is filled
 * @retval QVRUncompressed_StatusFailed       src is no good bitstream; the error callback has had the reason
 * @retval QVRUncompressed_StatusNullPointer  a pointer is null
 * @retval QVRUncompressed_StatusBadSize      the size field of up is wrong
 */
QVRUNCOMPRESSED_API uint32_t QVRUncompressed_ReadMetadata(QVRUncompressed_Decoder decoder, const uint8_t* src,
                                                          uint32_t srcSize, QVRUncompressed_UncompressedParams_t* up)
    QVRUNCOMPRESSED_NOEXCEPT;

/**
 * Decodes one frame into the layout that up asks for: the frame's own, or any other order that its planes can be put
 * into (a stream with alpha also decodes into orders without).
 *
 * @param decoder            the handle; it must not be in another call
 * @param up                 what dst is to hold; width and height are those of the bitstream
 * @param src                the bitstream; bytes behind the frame are ignored, unless a box of the frame claims them
 * @param srcSize            bytes of src
 * @param[out] dst           room for the raw frame. Padding between rows is not written for raw planes and unspecified
 *                           for coded alpha
 * @param dstSize            bytes of dst, at least QVRUncompressed_GetUncompressedBufSize()
 * @param[out] bytesWritten  receives the size of the raw frame; may be null
 * @retval QVRUncompressed_StatusOk           the frame is in dst
 * @retval QVRUncompressed_StatusFailed       src is no good bitstream, or up does not fit it; the error callback has
 *                                            had the reason
 * @retval QVRUncompressed_StatusNullPointer  a pointer other than bytesWritten is null
 * @retval QVRUncompressed_StatusBadSize      the size field of up is wrong
 */
QVRUNCOMPRESSED_API uint32_t QVRUncompressed_DecodeFrame(QVRUncompressed_Decoder decoder,
                                                         const QVRUncompressed_UncompressedParams_t* up,
                                                         const uint8_t* src, uint32_t srcSize, uint8_t* dst,
                                                         uint32_t dstSize,
                                                         uint32_t* bytesWritten) QVRUNCOMPRESSED_NOEXCEPT;

/** @} */

/**
 * @defgroup wrapping Wrapped payloads
 * One compressed QCX frame with its alpha plane, or a run of stitched chunks, carried in the same container.
 *
 * The type of the first record decides which of the two it is. The first record is read even with a wrapCount of 0.
 * @{
 */

/**
 * Wraps payloads. A wrapType of 0 in any record is refused.
 *
 * - First type #QVRUncompressed_WrapQCX: wrapCount is 1, and up describes the alpha plane (order 14, type 1 or 2) that
 *   src holds. The payload must have a QCX header, 45 bytes at least, of a known compression and without an alpha of
 *   its own; width and height must be equal to the QCX frame's, and frameLayout 1 for an interlaced one, 0 for a
 *   progressive one.
 * - First type #QVRUncompressed_WrapStitched: any number of chunks of any size; the types of further records are not
 *   looked at. Of up only width, height and frameLayout are used, and nothing in it is checked; src may be null.
 * - A first type of 3 or more wraps nothing: the alpha plane is encoded alone.
 *
 * @param encoder            the handle; it must not be in another call
 * @param up                 the alpha plane, or of stitched chunks their frame
 * @param cp                 how the alpha plane is to be encoded
 * @param wraps              wrapCount records, filled in by the caller with their sizes, the types and each payload's
 *                           dataSize
 * @param wrapCount          number of records
 * @param src                the raw alpha plane
 * @param srcSize            bytes of src
 * @param wrapData           wrapCount pointers to the payloads, each of the dataSize bytes of its record
 * @param[out] dst           room for the bitstream
 * @param dstSize            bytes of dst, at least QVRUncompressed_GetCompressedWrapBufSize()
 * @param[out] bytesWritten  receives the size of the bitstream; may be null
 * @retval QVRUncompressed_StatusOk           the bitstream is in dst
 * @retval QVRUncompressed_StatusFailed       these payloads cannot be wrapped so; the error callback has had the reason
 * @retval QVRUncompressed_StatusNullPointer  a pointer other than src and bytesWritten is null, or one in wrapData
 * @retval QVRUncompressed_StatusBadSize      the size field of a record is wrong
 */
QVRUNCOMPRESSED_API uint32_t QVRUncompressed_EncodeAndWrapFrame(
    QVRUncompressed_Encoder encoder, const QVRUncompressed_UncompressedParams_t* up,
    const QVRUncompressed_CompressedParams_t* cp, const QVRUncompressed_WrapParams_t* wraps, uint32_t wrapCount,
    const uint8_t* src, uint32_t srcSize, const uint8_t* const* wrapData, uint8_t* dst, uint32_t dstSize,
    uint32_t* bytesWritten) QVRUNCOMPRESSED_NOEXCEPT;

/**
 * Number of wrapped payloads in a bitstream. No handle is needed, and any number of threads may ask at once.
 *
 * @param src      the bitstream
 * @param srcSize  bytes of src
 * @return the number; 0 also when src is null or no bitstream
 */
QVRUNCOMPRESSED_API uint32_t QVRUncompressed_ReadWrapCount(const uint8_t* src,
                                                           uint32_t srcSize) QVRUNCOMPRESSED_NOEXCEPT;

/**
 * Describes the frame, as QVRUncompressed_ReadMetadata() does, and its first wrapCount wrapped payloads. When there are
 * fewer payloads than wrapCount the call fails, with up already filled.
 *
 * @param decoder        the handle; it must not be in another call
 * @param src            the bitstream
 * @param srcSize        bytes of src
 * @param[in,out] up     its size field set by the caller; the whole record is overwritten
 * @param[in,out] wraps  wrapCount records, their size fields set by the caller; wrapType and dataSize are filled. May
 *                       be null with a wrapCount of 0
 * @param wrapCount      number of records, at most QVRUncompressed_ReadWrapCount()
 * @retval QVRUncompressed_StatusOk           up and wraps are filled
 * @retval QVRUncompressed_StatusFailed       src is no good bitstream, or has fewer payloads; the error callback has
 *                                            had the reason
 * @retval QVRUncompressed_StatusNullPointer  a pointer is null
 * @retval QVRUncompressed_StatusBadSize      the size field of a record is wrong
 */
QVRUNCOMPRESSED_API uint32_t QVRUncompressed_ReadWrapMetadata(QVRUncompressed_Decoder decoder, const uint8_t* src,
                                                              uint32_t srcSize,
                                                              QVRUncompressed_UncompressedParams_t* up,
                                                              QVRUncompressed_WrapParams_t* wraps,
                                                              uint32_t wrapCount) QVRUNCOMPRESSED_NOEXCEPT;

/**
 * Takes payloads out of a bitstream. Fill wraps by QVRUncompressed_ReadWrapMetadata().
 *
 * - First type #QVRUncompressed_WrapStitched: the first wrapCount chunks; dst may be null.
 * - Any other first type: wrapCount is 1, the record must agree with the first payload in size and type, and the alpha
 *   plane beside it is decoded as up describes it, from the start of dst on with rows of rowBytes. up may have any
 *   order that the bitstream's planes serve.
 *
 * @param decoder            the handle; it must not be in another call
 * @param up                 what dst is to hold
 * @param wraps              wrapCount records
 * @param wrapCount          number of records
 * @param src                the bitstream
 * @param srcSize            bytes of src
 * @param[out] dst           room for the raw frame that up describes
 * @param dstSize            bytes of dst, at least QVRUncompressed_GetUncompressedBufSize()
 * @param[out] wrapDst       wrapCount pointers to the caller's buffers. Each must hold the dataSize that
 *                           QVRUncompressed_ReadWrapMetadata() reports for it: of stitched chunks only the first
 *                           record's dataSize is compared with the bitstream
 * @param[out] bytesWritten  receives the size of the raw frame, 0 with stitched chunks; may be null
 * @retval QVRUncompressed_StatusOk           payloads and alpha are where they should be
 * @retval QVRUncompressed_StatusFailed       src is no good bitstream, or the records do not fit it; the error callback
 *                                            has had the reason
 * @retval QVRUncompressed_StatusNullPointer  a pointer other than dst and bytesWritten is null, or one in wrapDst
 * @retval QVRUncompressed_StatusBadSize      the size field of a record is wrong
 */
QVRUNCOMPRESSED_API uint32_t QVRUncompressed_DecodeAndUnwrapFrame(
    QVRUncompressed_Decoder decoder, const QVRUncompressed_UncompressedParams_t* up,
    const QVRUncompressed_WrapParams_t* wraps, uint32_t wrapCount, const uint8_t* src, uint32_t srcSize, uint8_t* dst,
    uint32_t dstSize, uint8_t* const* wrapDst, uint32_t* bytesWritten) QVRUNCOMPRESSED_NOEXCEPT;

/** @} */

#ifdef __cplusplus
}
#endif

#endif /* QVRUNCOMPRESSED_H */
