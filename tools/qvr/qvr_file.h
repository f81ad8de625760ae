// SPDX-License-Identifier: BSD-3-Clause
//
// A .qvr file: frames one after the other. Each begins with its 'pack' box, whose size is the size of the frame.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "codec.h"
#include "failure.h"
#include "file_io.h"

namespace qvr {

class frame_reader {
  public:
    explicit frame_reader(input_file& from) : file(from) {}

    // False at the end of the file. A data failure when no whole frame follows; bytes() then holds what is there, and
    // nothing can be found behind it.
    bool next();
    // The same without reading more of the frame than its size; bytes() then holds only the header.
    bool skip();
    // Skips up to `count` frames; returns how many there were.
    unsigned long long skip_some(unsigned long long count);
    // In a file of which nothing is read yet: reads this frame, skipping those before it. A usage failure when the file holds fewer.
    void find(unsigned long long wanted);
    // At the end of the file: a data failure when there was no frame in it.
    void require_some() const;

    bytes_view bytes() const { return {buffer.data(), std::min(buffer.size(), size)}; }
    // Of the frame in the file.
    std::uint64_t frame_bytes() const { return size; }
    // Gives the frame's bytes away, for a buffer that is read into next.
    void exchange_buffer(std::vector<std::uint8_t>& with) { buffer.swap(with); }
    unsigned long long number() const { return index; }
    unsigned long long next_number() const { return whole_frames; }
    std::uint64_t offset() const { return start; }
    location place() const { return {file.name(), frame_spot(index, start)}; }
    bool more() { return !file.at_end(); }

  private:
    [[noreturn]] void fail(const std::string& what, const std::string& hint) const;
    // The size that the next frame says it has, or 0 at the end of the file.
    std::size_t read_header();
    void require_whole(std::size_t declared);

    input_file& file;
    std::vector<std::uint8_t> buffer;
    std::size_t size = 0;
    unsigned long long index = 0;
    unsigned long long whole_frames = 0;
    bool lost = false;  // where the next frame begins
    std::uint64_t start = 0;
};

}  // namespace qvr
