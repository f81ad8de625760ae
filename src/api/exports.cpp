// SPDX-License-Identifier: BSD-3-Clause
//
// The fifteen exported functions. Each checks its pointers and the size fields of its records in a fixed order, copies
// the records, and hands a closure to the guarded runner; the work itself is done elsewhere.
#include "QVRUncompressed.h"

#include <cstring>
#include <functional>
#include <memory>

#include "api/base/checked.h"
#include "api/base/records.h"
#include "api/guarded_call.h"
#include "api/handle_state.h"
#include "container/parse.h"
#include "container/wrapping.h"
#include "pixel/decoder.h"
#include "pixel/encoder.h"
#include "pixel/frame_geometry.h"

struct QVRUncompressed_Encoder_s : handle_state<encoder::encoder_impl> {};
struct QVRUncompressed_Decoder_s : handle_state<decoder::decoder_impl> {};

namespace {

using uncompressed_params = QVRUncompressed_UncompressedParams_t;
using compressed_params = QVRUncompressed_CompressedParams_t;
using codec_config = QVRUncompressed_CodecConfig_t;
using wrap_params = QVRUncompressed_WrapParams_t;

// std::ref: the runner takes a general callable, and a reference to the closure needs no memory.
template <class Closure>
std::uint32_t run(const codec_config& config, const Closure& closure) {
    return guarded_call(std::ref(closure), config);
}

template <class Closure>
std::uint32_t query(const Closure& closure) {
    std::uint32_t result = 0;
    run(k_default_config, [&] { result = closure(); });
    return result;
}

template <class... Pointers>
bool any_null(Pointers... pointers) {
    return ((pointers == nullptr) || ...);
}

void store_if_wanted(std::uint32_t* target, std::uint32_t value) {
    if (target != nullptr) {
        std::memcpy(target, &value, sizeof value);
    }
}

bool all_have_expected_size(const wrap_params* wraps, std::uint32_t count) {
    for (std::uint32_t i = 0; i < count; ++i) {
        if (!has_expected_size(wraps + i)) {
            return false;
        }
    }
    return true;
}

// Each record before the payload pointer that belongs to it.
template <class Byte>
std::uint32_t check_wraps(const wrap_params* wraps, std::uint32_t count, Byte* const* payloads) {
    if (wraps == nullptr) {
        return QVRUncompressed_StatusNullPointer;
    }
    for (std::uint32_t i = 0; i < count; ++i) {
        if (!has_expected_size(wraps + i)) {
            return QVRUncompressed_StatusBadSize;
        }
        if (payloads[i] == nullptr) {
            return QVRUncompressed_StatusNullPointer;
        }
    }
    return QVRUncompressed_StatusOk;
}

// The status of making a handle is dropped on purpose: a failure reaches the callback, and shows in the handle that was
// not written.
template <class State, class Implementation>
std::uint32_t create(const codec_config* config, State** handle) {
    if (handle == nullptr) {
        return QVRUncompressed_StatusNullPointer;
    }
    if (config != nullptr && !has_expected_size(config)) {
        return QVRUncompressed_StatusBadSize;
    }
    const codec_config chosen = config != nullptr ? load_record(config) : k_default_config;
    run(chosen, [&] {
        auto state = std::make_unique<State>();
        state->implementation = std::make_unique<Implementation>(chosen.threadCount);
        state->configuration = chosen;
        State* const made = state.release();
        std::memcpy(handle, &made, sizeof(void*));
    });
    return QVRUncompressed_StatusOk;
}

}  // namespace

void QVRUncompressed_GetVersion(std::uint32_t* major, std::uint32_t* minor, std::uint32_t* patch, std::uint32_t* build,
                                char* release) noexcept {
    constexpr std::uint32_t k_build = 670;
    store_if_wanted(major, QVRUNCOMPRESSED_VERSION_MAJOR);
    store_if_wanted(minor, QVRUNCOMPRESSED_VERSION_MINOR);
    store_if_wanted(patch, QVRUNCOMPRESSED_VERSION_PATCH);
    store_if_wanted(build, k_build);
    if (release != nullptr) {
        *release = 'r';
    }
}

std::uint32_t QVRUncompressed_GetUncompressedBufSize(const uncompressed_params* up) noexcept {
    if (up == nullptr || !has_expected_size(up)) {
        return 0;
    }
    return query([&] { return low_32(frame_geometry(load_record(up)).total()); });
}

std::uint32_t QVRUncompressed_GetCompressedBufSize(const uncompressed_params* up,
                                                   const compressed_params* cp) noexcept {
    if (any_null(up, cp) || !has_expected_size(up) || !has_expected_size(cp)) {
        return 0;
    }
    return query([&] { return low_32(container::plan_frame(load_record(up), load_record(cp)).total); });
}

std::uint32_t QVRUncompressed_GetCompressedWrapBufSize(const uncompressed_params* up, const compressed_params* cp,
                                                       const wrap_params* wraps, std::uint32_t wrap_count) noexcept {
    if (any_null(up, cp, wraps) || !has_expected_size(up) || !has_expected_size(cp) ||
        !all_have_expected_size(wraps, wrap_count)) {
        return 0;
    }
    return query([&] {
        return low_32(container::plan_wrapped_frame(load_record(up), load_record(cp), wraps, wrap_count).total);
    });
}

std::uint32_t QVRUncompressed_CreateEncoder(const codec_config* config, QVRUncompressed_Encoder* handle) noexcept {
    return create<QVRUncompressed_Encoder_s, encoder::encoder_impl>(config, handle);
}

void QVRUncompressed_DestroyEncoder(QVRUncompressed_Encoder handle) noexcept {
    delete handle;
}

std::uint32_t QVRUncompressed_EncodeFrame(QVRUncompressed_Encoder handle, const uncompressed_params* up,
                                          const compressed_params* cp, const std::uint8_t* src, std::uint32_t src_size,
                                          std::uint8_t* dst, std::uint32_t dst_size,
                                          std::uint32_t* bytes_written) noexcept {
    if (any_null(up, handle, cp, src, dst)) {
        return QVRUncompressed_StatusNullPointer;
    }
    if (!has_expected_size(up) || !has_expected_size(cp)) {
        return QVRUncompressed_StatusBadSize;
    }
    return run(handle->configuration, [&] {
        store_if_wanted(bytes_written, handle->implementation->encode_frame(load_record(up), load_record(cp), src,
                                                                            src_size, dst, dst_size));
    });
}

std::uint32_t QVRUncompressed_CreateDecoder(const codec_config* config, QVRUncompressed_Decoder* handle) noexcept {
    return create<QVRUncompressed_Decoder_s, decoder::decoder_impl>(config, handle);
}

void QVRUncompressed_DestroyDecoder(QVRUncompressed_Decoder handle) noexcept {
    delete handle;
}

std::uint32_t QVRUncompressed_ReadMetadata(QVRUncompressed_Decoder handle, const std::uint8_t* src,
                                           std::uint32_t src_size, uncompressed_params* up) noexcept {
    if (any_null(handle, src, up)) {
        return QVRUncompressed_StatusNullPointer;
    }
    if (!has_expected_size(up)) {
        return QVRUncompressed_StatusBadSize;
    }
    return run(handle->configuration,
               [&] { *up = container::read_metadata(container::parse_container(src, src_size)); });
}

std::uint32_t QVRUncompressed_DecodeFrame(QVRUncompressed_Decoder handle, const uncompressed_params* up,
                                          const std::uint8_t* src, std::uint32_t src_size, std::uint8_t* dst,
                                          std::uint32_t dst_size, std::uint32_t* bytes_written) noexcept {
    if (any_null(handle, up, src, dst)) {
        return QVRUncompressed_StatusNullPointer;
    }
    if (!has_expected_size(up)) {
        return QVRUncompressed_StatusBadSize;
    }
    return run(handle->configuration, [&] {
        store_if_wanted(bytes_written,
                        handle->implementation->decode_frame(load_record(up), src, src_size, dst, dst_size));
    });
}

std::uint32_t QVRUncompressed_EncodeAndWrapFrame(QVRUncompressed_Encoder handle, const uncompressed_params* up,
                                                 const compressed_params* cp, const wrap_params* wraps,
                                                 std::uint32_t wrap_count, const std::uint8_t* src,
                                                 std::uint32_t src_size, const std::uint8_t* const* wrap_data,
                                                 std::uint8_t* dst, std::uint32_t dst_size,
                                                 std::uint32_t* bytes_written) noexcept {
    if (any_null(up, handle, cp, wrap_data, dst)) {
        return QVRUncompressed_StatusNullPointer;
    }
    if (!has_expected_size(up) || !has_expected_size(cp)) {
        return QVRUncompressed_StatusBadSize;
    }
    if (const std::uint32_t status = check_wraps(wraps, wrap_count, wrap_data); status != QVRUncompressed_StatusOk) {
        return status;
    }
    return run(handle->configuration, [&] {
        store_if_wanted(bytes_written, handle->implementation->encode_and_wrap_frame(load_record(up), load_record(cp),
                                                                                     wraps, wrap_count, src, src_size,
                                                                                     wrap_data, dst, dst_size));
    });
}

std::uint32_t QVRUncompressed_ReadWrapCount(const std::uint8_t* src, std::uint32_t src_size) noexcept {
    if (src == nullptr) {
        return 0;
    }
    return query([&] { return low_32(container::parse_container(src, src_size).wrap_boxes.size()); });
}

std::uint32_t QVRUncompressed_ReadWrapMetadata(QVRUncompressed_Decoder handle, const std::uint8_t* src,
                                               std::uint32_t src_size, uncompressed_params* up, wrap_params* wraps,
                                               std::uint32_t wrap_count) noexcept {
    if (any_null(handle, src, up) || (wraps == nullptr && wrap_count != 0)) {
        return QVRUncompressed_StatusNullPointer;
    }
    if (!has_expected_size(up) || !all_have_expected_size(wraps, wrap_count)) {
        return QVRUncompressed_StatusBadSize;
    }
    return run(handle->configuration, [&] {
        const container::frame_layout_plan plan = container::parse_container(src, src_size);
        *up = container::read_metadata(plan);  // filled even when there are too few boxes
        container::read_wrap_params(plan, wraps, wrap_count);
    });
}

std::uint32_t QVRUncompressed_DecodeAndUnwrapFrame(QVRUncompressed_Decoder handle, const uncompressed_params* up,
                                                   const wrap_params* wraps, std::uint32_t wrap_count,
                                                   const std::uint8_t* src, std::uint32_t src_size, std::uint8_t* dst,
                                                   std::uint32_t dst_size, std::uint8_t* const* wrap_dst,
                                                   std::uint32_t* bytes_written) noexcept {
    if (any_null(up, handle, wrap_dst, src)) {
        return QVRUncompressed_StatusNullPointer;
    }
    if (!has_expected_size(up)) {
        return QVRUncompressed_StatusBadSize;
    }
    if (const std::uint32_t status = check_wraps(wraps, wrap_count, wrap_dst); status != QVRUncompressed_StatusOk) {
        return status;
    }
    return run(handle->configuration, [&] {
        store_if_wanted(bytes_written, handle->implementation->decode_and_unwrap_frame(
                                           load_record(up), wraps, wrap_count, src, src_size, dst, dst_size, wrap_dst));
    });
}
