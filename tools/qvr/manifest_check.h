// SPDX-License-Identifier: BSD-3-Clause
//
// A .qvr file held against its manifest.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "failure.h"
#include "manifest.h"
#include "qvr_file.h"

namespace qvr {

// Reads a file and, when there is one, its manifest side by side.
class checked_reader {
  public:
    checked_reader(const std::string& path, const std::optional<std::string>& manifest_path);

    // The next frame, whole and with the size and the checksum that the manifest says. False behind the last one. A data
    // failure otherwise; when only the checksum is another, the next call goes on behind the frame.
    bool next();

    bytes_view bytes() const { return reader.bytes(); }
    location place() const { return reader.place(); }
    bool has_manifest() const { return list.has_value(); }
    std::string checksum() const { return sum; }
    // Numbers in the sequence that the file is a part of; without a manifest, in the file.
    unsigned long long number() const { return current; }
    unsigned long long first() const { return list ? list->first() : 0; }
    // When next() has given false: the number behind the last frame that the file was to hold.
    unsigned long long end() const { return list ? list->end() : reader.number(); }
    // Then also: the number of all frames of the sequence, when its manifest says it.
    std::optional<unsigned long long> total() const { return list ? list->total() : std::nullopt; }

  private:
    void compare(const std::optional<manifest_frame>& listed);

    input_file file;
    frame_reader reader;
    std::optional<manifest_reader> list;
    std::string sum;
    unsigned long long current = 0;
};

// What in a file is not as its manifest says.
struct manifest_findings {
    unsigned long long count = 0;
    std::vector<failure> first;  // the first 20
};

// Reads all of the file.
manifest_findings find_what_is_not_listed(const std::string& path, const std::string& manifest_path);

// On standard error.
void print_findings(const manifest_findings& found);

// A data failure when there are any.
void require_listed(const std::string& name, const manifest_findings& found);

}  // namespace qvr
