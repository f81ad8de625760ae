// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <optional>

#include "harness.h"

namespace fuzz {

// One pair of handles and the calls that a script makes on it. Each step takes a few bytes of the script, makes one
// call and adds to the story what came of it: status, message, and after a success the bytes.
class session {
  public:
    session(const setup& how, byte_source script);

    // False at the end of the script.
    bool step();
    const std::string& story() const { return told; }

  private:
    void size_queries();
    void encode();
    void decode();
    void read_metadata();
    void wrap();
    void unwrap();
    void damage();

    uncompressed_params any_params();
    compressed_params any_compression();
    std::uint32_t any_dimension();
    uncompressed_params params_of_stream();
    std::vector<wrap_params> any_wraps(std::vector<exact_buffer>& payloads, const uncompressed_params& up);
    exact_buffer any_pixels(const uncompressed_params& up);
    void take_stream(bool good, const exact_buffer& dst, std::uint32_t written);
    // The pointer, or now and then null.
    template <class Pointer>
    Pointer maybe_null(Pointer pointer) {
        return script.byte() == 0xff ? nullptr : pointer;
    }

    template <class Call>
    bool call(const char* name, const Call& function);
    void tell(const char* name, std::uint64_t value);
    void tell(const exact_buffer& output);

    setup how;
    byte_source script;
    std::optional<coders> own;  // made for the script; those with threads, which take long to start, serve all scripts
    coders& with;
    bytes stream;  // what was encoded last, and what became of it since
    std::string told;
    unsigned renewals = 0;
};

}  // namespace fuzz
