// SPDX-License-Identifier: BSD-3-Clause
//
// Manifests of .qvr files: one line of JSON that says what the file is, one for each frame with its size and checksum,
// and one that says that the list is complete. The checksum is XXH3 with 128 bits, of the frame's bytes in the file.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "codec.h"
#include "file_io.h"
#include "json_output.h"

namespace qvr {

struct manifest_frame {
    unsigned long long number = 0;  // in the whole sequence, of which the file may hold a part
    std::uint64_t offset = 0;       // in the file
    std::uint64_t size = 0;
    std::string checksum;  // 32 hexadecimal digits
};

std::string checksum_text(bytes_view of);

// Used from one thread. Appears under its name when commit() is called.
class manifest_writer {
  public:
    // path: of the manifest; described: of the .qvr file; first: the number of its first frame in the sequence.
    manifest_writer(const std::string& path, const std::string& described, unsigned long long first,
                    incomplete becomes = incomplete::removed);

    void add(unsigned long long number, std::uint64_t size, const std::string& checksum);
    // end: the number behind the last frame that the file was to hold; total: of all frames of the sequence, where
    // that is known.
    void commit(unsigned long long end, std::optional<unsigned long long> total);

  private:
    void write_line(const json& line);

    output_file file;
    unsigned long long frames = 0;
    std::uint64_t offset = 0;
};

// Reads a manifest from front to back. What it does not understand is a data failure that names the line.
class manifest_reader {
  public:
    explicit manifest_reader(const std::string& path);

    const std::string& name() const { return file.name(); }
    // The number of the file's first frame in the sequence.
    unsigned long long first() const { return first_frame; }
    // None behind the last frame, when the line at the end has said that there are no more.
    std::optional<manifest_frame> next();
    // Known when next() has given none: the number behind the last frame that the file was to hold.
    unsigned long long end() const { return end_frame; }
    // Known then as well, when the manifest says it: the number of all frames of the sequence.
    std::optional<unsigned long long> total() const { return total_frames; }

  private:
    std::optional<std::string> read_line();
    [[noreturn]] void fail(const std::string& what);

    input_file file;
    std::string broken;  // what was wrong; nothing can be read behind it
    std::vector<std::uint8_t> buffer;
    std::size_t taken = 0;  // bytes of the buffer that lines were made of
    std::size_t held = 0;
    unsigned long long line_number = 0;
    unsigned long long first_frame = 0;
    unsigned long long end_frame = 0;
    bool ended = false;
    std::optional<unsigned long long> total_frames;
    unsigned long long frames = 0;
    std::uint64_t offset = 0;
};

}  // namespace qvr
