// SPDX-License-Identifier: BSD-3-Clause
#include "library.h"

#include <signal.h>
#include <unistd.h>

#include <cstring>
#include <memory>
#include <stdexcept>

namespace differential {

codec::codec(std::uint32_t threads) : threads_(threads) {
    QVRUncompressed_CodecConfig_t config{};
    config.size = sizeof config;
    config.threadCount = threads;
    config.userData = this;
    config.errorCallback = &codec::hear;
    QVRUncompressed_CreateEncoder(&config, &encoder_);
    QVRUncompressed_CreateDecoder(&config, &decoder_);
    if (encoder_ == nullptr || decoder_ == nullptr) {
        throw std::runtime_error("no handle");
    }
}

codec::~codec() {
    QVRUncompressed_DestroyEncoder(encoder_);
    QVRUncompressed_DestroyDecoder(decoder_);
}

void codec::hear(const char* message, void* user) {
    static_cast<codec*>(user)->messages_.emplace_back(message);
}

std::vector<std::string> codec::take_messages() {
    std::vector<std::string> taken;
    taken.swap(messages_);
    return taken;
}

codec& codec_number(std::uint32_t index) {
    static codec one(1);
    static codec two(2);
    static codec three(3);
    static codec eight(8);
    codec* const all[] = {&one, &two, &three, &eight};
    return *all[index % 4];
}

std::string describe(const model::frame_params& frame) {
    return "{order " + std::to_string(frame.order) + ", type " + std::to_string(frame.type) + ", " +
           std::to_string(frame.width) + "x" + std::to_string(frame.height) + ", rowBytes " +
           std::to_string(frame.row_bytes) + ", layout " + std::to_string(frame.frame_layout) + ", rowBytes2 " +
           std::to_string(frame.row_bytes2) + "}";
}

std::string describe(const model::stream_params& stream) {
    return "{alphaCompression " + std::to_string(stream.alpha_compression) + ", rleSlices " +
           std::to_string(stream.rle_slices) + "}";
}

std::string describe(const std::vector<model::wrap_params>& wraps) {
    std::string text = "[";
    for (const model::wrap_params& wrap : wraps) {
        text += "{type " + std::to_string(wrap.type) + ", size " + std::to_string(wrap.size) + "}";
    }
    return text + "]";
}

std::string hex(const model::bytes& data) {
    const std::size_t shown = data.size() < 700 ? data.size() : 700;
    std::string text = std::to_string(data.size()) + " bytes: ";
    for (std::size_t i = 0; i < shown; ++i) {
        text.push_back("0123456789abcdef"[data[i] >> 4]);
        text.push_back("0123456789abcdef"[data[i] & 15]);
    }
    return shown == data.size() ? text : text + "...";
}

namespace {

char current[4096];

void report(int signal_number) {
    const char* const head = signal_number == SIGALRM ? "\nA call does not come back: " : "\nA call faulted: ";
    ssize_t ignored = write(STDERR_FILENO, head, std::strlen(head));
    ignored = write(STDERR_FILENO, current, std::strlen(current));
    ignored = write(STDERR_FILENO, "\n", 1);
    static_cast<void>(ignored);
    signal(signal_number, SIG_DFL);
    raise(signal_number);
}

bool install() {
    for (const int number : {SIGSEGV, SIGBUS, SIGABRT, SIGFPE, SIGALRM}) {
        signal(number, &report);
    }
    return true;
}

}  // namespace

void announce(const std::string& text) {
    static const bool installed = install();
    static_cast<void>(installed);
    const std::size_t length = text.size() < sizeof current - 1 ? text.size() : sizeof current - 1;
    std::memcpy(current, text.data(), length);
    current[length] = 0;
    alarm(120);
}

}  // namespace differential
