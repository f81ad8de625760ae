// SPDX-License-Identifier: BSD-3-Clause
#include "harness.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace fuzz {

namespace {

constexpr std::uint8_t k_border_byte = 0xc3;

void keep_message(const char* message, void* user_data) {
    auto& report = *static_cast<coders*>(user_data);
    report.message = message;
    ++report.reports;
}

}  // namespace

void fail(const char* claim) {
    std::fprintf(stderr, "does not hold: %s\n", claim);
    std::abort();
}

exact_buffer::exact_buffer(std::size_t size, std::uint8_t fill)
    : memory(new std::uint8_t[size + 2 * k_border]), count(size) {
    std::fill_n(memory.get(), k_border, k_border_byte);
    std::fill_n(data(), size, fill);
    std::fill_n(data() + size, k_border, k_border_byte);
}

exact_buffer::exact_buffer(const std::uint8_t* from, std::size_t size) : exact_buffer(size, 0) {
    std::copy_n(from, size, data());
}

void exact_buffer::check_borders() const {
    const auto intact = [](std::uint8_t value) { return value == k_border_byte; };
    require(std::all_of(memory.get(), data(), intact), "nothing is written before a buffer");
    require(std::all_of(data() + count, data() + count + k_border, intact), "nothing is written behind a buffer");
}

std::uint32_t byte_source::byte() {
    if (left == 0) {
        return 0;
    }
    --left;
    return *next++;
}

std::uint32_t byte_source::word() {
    const std::uint32_t low = byte() | byte() << 8;
    return low | byte() << 16 | byte() << 24;
}

split_input::split_input(const std::uint8_t* data, std::size_t size)
    : stream(data, size - std::min(size, k_choice_bytes)),
      choices(data + stream.size(), std::min(size, k_choice_bytes)) {}

setup choose_setup(byte_source& choices) {
    // Waking workers takes longer than most inputs, so half of them do without.
    constexpr std::uint32_t k_threads[] = {1, 2, 3, 1, 1, 2, 3, 1};
    const std::uint32_t threads = k_threads[choices.below(8)];
    return {threads, static_cast<cpu_features>(choices.byte())};
}

coders::coders(std::uint32_t threads) : config{sizeof config, threads, this, keep_message} {
    QVRUncompressed_CreateEncoder(&config, &encoder);
    QVRUncompressed_CreateDecoder(&config, &decoder);
    require(encoder != nullptr && decoder != nullptr, "handles can be made");
}

coders::~coders() {
    QVRUncompressed_DestroyEncoder(encoder);
    QVRUncompressed_DestroyDecoder(decoder);
}

void coders::renew_decoder() {
    QVRUncompressed_DestroyDecoder(decoder);
    decoder = nullptr;
    QVRUncompressed_CreateDecoder(&config, &decoder);
    require(decoder != nullptr, "a decoder can be made again");
}

coders& shared_coders(std::uint32_t threads) {
    static coders one(1);
    static coders two(2);
    static coders three(3);
    return threads == 1 ? one : threads == 2 ? two : three;
}

void require_same_output(const exact_buffer& first, const exact_buffer& second) {
    first.check_borders();
    second.check_borders();
    require(first.size() == second.size(), "outputs are of one size");
    if (std::memcmp(first.data(), second.data(), first.size()) == 0) {
        return;
    }
    for (std::size_t i = 0; i < first.size(); ++i) {
        const std::uint8_t a = first.data()[i];
        const std::uint8_t b = second.data()[i];
        require(a == b || (a == k_fills[0] && b == k_fills[1]), "threads and instruction sets give the same bytes");
    }
}

}  // namespace fuzz
