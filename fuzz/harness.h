// SPDX-License-Identifier: BSD-3-Clause
//
// What the fuzz targets share. An input is a stream and behind it k_choice_bytes bytes that choose how the library is
// called: format, strides, threads, instruction set. A claim that does not hold ends the process, as a sanitizer does.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "QVRUncompressed.h"
#include "api/base/cpu_features.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzz {

using uncompressed_params = QVRUncompressed_UncompressedParams_t;
using compressed_params = QVRUncompressed_CompressedParams_t;
using wrap_params = QVRUncompressed_WrapParams_t;
using bytes = std::vector<std::uint8_t>;

constexpr std::size_t k_choice_bytes = 16;
constexpr std::size_t k_most_memory = 1 << 15;  // of any one buffer

[[noreturn]] void fail(const char* claim);
inline void require(bool holds, const char* claim) {
    if (!holds) {
        fail(claim);
    }
}

// An allocation of just this size, so that the address sanitizer sees one byte too many. Without that sanitizer known
// bytes stand on both sides; check_borders() looks whether they still do.
class exact_buffer {
  public:
    exact_buffer(std::size_t size, std::uint8_t fill);
    exact_buffer(const std::uint8_t* from, std::size_t size);

    std::uint8_t* data() const { return memory.get() + k_border; }
    std::size_t size() const { return count; }
    std::uint32_t size_32() const { return static_cast<std::uint32_t>(count); }
    void check_borders() const;

  private:
#if defined(__SANITIZE_ADDRESS__)
    static constexpr std::size_t k_border = 0;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
    static constexpr std::size_t k_border = 0;
#else
    static constexpr std::size_t k_border = 64;
#endif
#else
    static constexpr std::size_t k_border = 64;
#endif

    std::unique_ptr<std::uint8_t[]> memory;
    std::size_t count;
};

// Bytes that decisions are made from, one after the other; zeros behind the last.
class byte_source {
  public:
    byte_source(const std::uint8_t* first, std::size_t count) : next(first), left(count) {}

    bool empty() const { return left == 0; }
    std::uint32_t byte();
    std::uint32_t word();
    // 0 to limit - 1, limit at most 256.
    std::uint32_t below(std::uint32_t limit) { return byte() % limit; }
    bool one_in(std::uint32_t count) { return below(count) == count - 1; }

  private:
    const std::uint8_t* next;
    std::size_t left;
};

// The two parts of an input.
struct split_input {
    split_input(const std::uint8_t* data, std::size_t size);

    exact_buffer stream;
    byte_source choices;
};

// How the library is to work; its results must not depend on it.
struct setup {
    std::uint32_t threads;
    cpu_features features;
};
constexpr setup k_reference = {1, cpu_scalar};
setup choose_setup(byte_source& choices);

// An encoder and a decoder, and what they had to say in the call that ran last.
class coders {
  public:
    explicit coders(std::uint32_t threads);
    ~coders();
    coders(const coders&) = delete;
    coders& operator=(const coders&) = delete;

    void renew_decoder();

    QVRUncompressed_Encoder encoder = nullptr;
    QVRUncompressed_Decoder decoder = nullptr;
    std::string message;
    unsigned reports = 0;

  private:
    QVRUncompressed_CodecConfig_t config;
};

// Made once for each number of threads, and used for all inputs.
coders& shared_coders(std::uint32_t threads);

struct outcome {
    std::uint32_t status;
    std::string message;

    bool ok() const { return status == QVRUncompressed_StatusOk; }
    bool operator==(const outcome& other) const { return status == other.status && message == other.message; }
};

// Runs a call that returns a status, and checks that status and error callback agree.
template <class Call>
outcome run(coders& with, cpu_features features, const Call& call) {
    with.message.clear();
    with.reports = 0;
    limit_cpu_features(features);
    const std::uint32_t status = call();
    require(status <= QVRUncompressed_StatusBadSize, "the status is a documented one");
    require(with.reports == (status == QVRUncompressed_StatusFailed ? 1u : 0u), "one report for a failure, else none");
    return {status, with.message};
}

// Two destinations of one call that was made twice, filled with these bytes beforehand: each byte was written with the
// same value, or not written.
constexpr std::array<std::uint8_t, 2> k_fills = {0xa5, 0x5a};
void require_same_output(const exact_buffer& first, const exact_buffer& second);

}  // namespace fuzz
