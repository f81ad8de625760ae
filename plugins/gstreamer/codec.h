// SPDX-License-Identifier: BSD-3-Clause
//
// The library's handles as objects that end by themselves, and its messages as text.
#pragma once

#include <QVRUncompressed.h>

#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>

namespace qvr_gst {

struct end_handle {
    void operator()(QVRUncompressed_Encoder handle) const { QVRUncompressed_DestroyEncoder(handle); }
    void operator()(QVRUncompressed_Decoder handle) const { QVRUncompressed_DestroyDecoder(handle); }
};

// A handle with the reason why its last call failed. It must not move: the library holds its address.
template <class Handle, std::uint32_t (*Create)(const QVRUncompressed_CodecConfig_t*, Handle*)>
class codec {
  public:
    explicit codec(std::uint32_t threads) {
        const QVRUncompressed_CodecConfig_t config = {sizeof config, threads, this, receive};
        Handle made = nullptr;
        Create(&config, &made);
        handle.reset(made);
    }
    codec(const codec&) = delete;
    codec& operator=(const codec&) = delete;

    // False when memory or threads ran out.
    explicit operator bool() const { return handle != nullptr; }
    // For one call, whose failure message() then tells the reason of.
    Handle get() {
        last_message = k_no_reason;
        return handle.get();
    }
    const char* message() const { return last_message.c_str(); }

  private:
    static void receive(const char* message, void* user_data) {
        static_cast<codec*>(user_data)->last_message = message;
    }

    // For calls with arguments that no frame can be, such as an empty buffer, the library has no message.
    static constexpr const char* k_no_reason = "that is no frame";

    std::string last_message = k_no_reason;
    std::unique_ptr<std::remove_pointer_t<Handle>, end_handle> handle;
};

using encoder_codec = codec<QVRUncompressed_Encoder, QVRUncompressed_CreateEncoder>;
using decoder_codec = codec<QVRUncompressed_Decoder, QVRUncompressed_CreateDecoder>;

}  // namespace qvr_gst
