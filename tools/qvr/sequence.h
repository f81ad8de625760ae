// SPDX-License-Identifier: BSD-3-Clause
//
// Numbered sequences of files: "frame.%07d.png" stands for frame.0000000.png, frame.0000001.png and so on.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "frame.h"

namespace qvr {

// A path with one %d or %04d in its last part; %% stands for a percent sign.
class sequence_pattern {
  public:
    // None when the path has no number in it. A usage failure for more than one, or one in the name of a folder.
    static std::optional<sequence_pattern> parse(const std::string& path);

    // Of a path to read: none when there is a file of this very name.
    static std::optional<sequence_pattern> of_input(const std::string& path);

    const std::string& text() const { return given; }
    std::string path(std::uint64_t number) const;
    // The numbers of the files that there are, in order.
    std::vector<std::uint64_t> numbers() const;

  private:
    std::string given;
    std::string folder;  // with the slash at its end, or empty
    std::string before;
    std::string after;
    std::size_t digits = 1;
};

using source_opener = std::function<std::unique_ptr<frame_source>(const std::string& path)>;

// one_frame: no file of the sequence holds more than one.
std::unique_ptr<frame_source> open_sequence_source(const sequence_pattern& files, std::optional<std::uint32_t> start,
                                                   bool one_frame, source_opener open_one);

}  // namespace qvr
