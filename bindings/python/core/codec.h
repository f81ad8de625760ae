// SPDX-License-Identifier: BSD-3-Clause
//
// A handle of the library as an object: it ends by itself, serves one thread at a time, works without the interpreter
// lock and reports failures as Python exceptions.
#pragma once

#include <pybind11/pybind11.h>

#include <cstdint>
#include <mutex>
#include <string>

#include "QVRUncompressed.h"
#include "failure.h"
#include "without_interpreter.h"

namespace qvr {

struct encoder_kind {
    using handle_type = QVRUncompressed_Encoder;
    static constexpr auto k_create = QVRUncompressed_CreateEncoder;
    static constexpr auto k_destroy = QVRUncompressed_DestroyEncoder;
    static constexpr const char* k_name = "encoder";
    static constexpr const char* k_error = "EncodeError";
};

struct decoder_kind {
    using handle_type = QVRUncompressed_Decoder;
    static constexpr auto k_create = QVRUncompressed_CreateDecoder;
    static constexpr auto k_destroy = QVRUncompressed_DestroyDecoder;
    static constexpr const char* k_name = "decoder";
    static constexpr const char* k_error = "DecodeError";
};

template <class Kind>
class codec {
  public:
    explicit codec(std::uint32_t threads) {
        const QVRUncompressed_CodecConfig_t config = {QVRUNCOMPRESSED_CODEC_CONFIG_SIZE, threads, this, receive};
        Kind::k_create(&config, &handle);
        // Only the handle tells whether it was made.
        if (handle == nullptr) {
            fail("the codec could not be started: " + message);
        }
    }
    ~codec() { Kind::k_destroy(handle); }
    codec(const codec&) = delete;
    codec& operator=(const codec&) = delete;

    // Ends the handle once no call is using it. A second time does nothing.
    void close() {
        const without_interpreter unlocked;
        const std::lock_guard<std::mutex> alone(turn);
        Kind::k_destroy(handle);
        handle = nullptr;
    }

    // Runs call(handle), which returns a status. Waiting for the turn comes after giving up the interpreter lock, so
    // that neither lock is ever waited for with the other one held.
    template <class Call>
    void run(const Call& call) {
        std::uint32_t status = QVRUncompressed_StatusOk;
        std::string reason;
        {
            const without_interpreter unlocked;
            const std::lock_guard<std::mutex> alone(turn);
            message.clear();
            status = handle != nullptr ? call(handle) : k_closed;
            reason = message;
        }
        if (status == k_closed) {
            raise("ArgumentError", std::string("the ") + Kind::k_name + " is closed");
        }
        if (status != QVRUncompressed_StatusOk) {
            fail(reason.empty() ? "the library gave status " + std::to_string(status) + " and no reason" : reason);
        }
    }

  private:
    static constexpr std::uint32_t k_closed = ~std::uint32_t{0};

    static void receive(const char* text, void* self) { static_cast<codec*>(self)->message = text; }

    [[noreturn]] static void fail(const std::string& reason) {
        if (reason.find("bad_alloc") != std::string::npos) {
            PyErr_NoMemory();
            throw pybind11::error_already_set();
        }
        raise(Kind::k_error, reason);
    }

    std::mutex turn;
    std::string message;
    typename Kind::handle_type handle = nullptr;
};

using encoder = codec<encoder_kind>;
using decoder = codec<decoder_kind>;

}  // namespace qvr
