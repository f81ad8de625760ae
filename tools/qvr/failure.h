// SPDX-License-Identifier: BSD-3-Clause
//
// How the tool ends when something is wrong: one exception with everything that the message needs.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace qvr {

enum class exit_code : int {
    good = 0,
    data = 1,   // the bytes of an input are not what they should be
    usage = 2,  // the command line asks for something that cannot be done
    io = 3      // a file cannot be opened, read or written, or memory ran out
};

struct exit_description {
    exit_code code;
    const char* word;  // for a list on one line
    const char* text;
};

const std::vector<exit_description>& all_exits();

// "Exit codes: 0 good, 1 bad data ..."
std::string exit_codes_line();

// Where a failure happened. Either part may be empty.
struct location {
    std::string file;
    std::string spot;  // "frame 3 at offset 4096"
};

class failure : public std::runtime_error {
  public:
    failure(exit_code code, location where, const std::string& what, std::string hint = {});

    exit_code code() const { return ends_with; }
    const std::string& hint() const { return advice; }
    // Where and what, on one line: "clip.qvr: frame 3 at offset 4096: WHAT".
    std::string message() const;
    // The complete text for standard error, hint included, with a line feed at the end.
    std::string text() const;

  private:
    exit_code ends_with;
    location place;
    std::string advice;
};

// What can be done about an error of the system, by its number; may be empty.
std::string system_hint(int error);

// What a file or its name holds may be anything: control characters and what is no UTF-8 become "\x1B".
std::string printable(const std::string& text, bool line_feeds = false);

// "--size 3x": usage failures that concern an option rather than a file.
[[noreturn]] void fail_usage(const std::string& what, const std::string& hint = {});

// "there is no frame 7: the file holds 3, counted from 0"
[[noreturn]] void refuse_frame(const std::string& file, unsigned long long number, unsigned long long total);

[[noreturn]] void refuse_empty(const std::string& file);

// The hint for inputs that do not go on as they began.
inline constexpr const char* k_damaged = "the file is damaged or was cut short";

// "frame 3 at offset 4096"
std::string frame_spot(unsigned long long number, unsigned long long offset);

}  // namespace qvr
