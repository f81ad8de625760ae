// SPDX-License-Identifier: BSD-3-Clause
//
// A .qvr file: frames one after the other. Each begins with its 'pack' box, whose size is the size of the frame.
#pragma once

#include <cstdint>
#include <vector>

#include "codec.h"
#include "failure.h"
#include "file_io.h"

namespace qvr {

class frame_reader {
  public:
    explicit frame_reader(input_file& from) : file(from) {}

    // False at the end of the file. A data failure when no whole frame follows; bytes() then holds what is there.
    bool next();

    bytes_view bytes() const { return {buffer.data(), size}; }
    unsigned long long number() const { return index; }
    std::uint64_t offset() const { return start; }
    location place() const { return {file.name(), frame_spot(index, start)}; }
    bool more() { return !file.at_end(); }

  private:
    [[noreturn]] void fail(const std::string& what, const std::string& hint) const;

    input_file& file;
    std::vector<std::uint8_t> buffer;
    std::size_t size = 0;
    unsigned long long index = 0;
    unsigned long long whole_frames = 0;
    std::uint64_t start = 0;
};

}  // namespace qvr
