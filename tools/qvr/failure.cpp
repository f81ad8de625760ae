// SPDX-License-Identifier: BSD-3-Clause
#include "failure.h"

#include <cstdio>
#include <utility>

namespace qvr {

namespace {

// The bytes of the character that begins there in good UTF-8, 0 where none does.
std::size_t utf8_length(const std::string& text, std::size_t at) {
    const auto byte = [&](std::size_t i) {
        return i < text.size() ? static_cast<unsigned>(static_cast<unsigned char>(text[i])) : 0;
    };
    const unsigned first = byte(at);
    const std::size_t length = first < 0x80 ? 1 : first < 0xC2 ? 0 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    for (std::size_t i = 1; i < length; ++i) {
        if (byte(at + i) >> 6 != 2) {
            return 0;
        }
    }
    return first > 0xF4 ? 0 : length;
}

// A character that commands a terminal instead of being shown: those below the blank, DEL, and U+0080 to U+009F.
bool is_control(const std::string& text, std::size_t at) {
    const auto byte = static_cast<unsigned char>(text[at]);
    return byte < 0x20 || byte == 0x7F || (byte == 0xC2 && static_cast<unsigned char>(text[at + 1]) < 0xA0);
}

}  // namespace

std::string printable(const std::string& text, bool line_feeds) {
    std::string shown;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t length = utf8_length(text, at);
        const bool good = length > 0 && (!is_control(text, at) || (line_feeds && text[at] == '\n'));
        if (good) {
            shown.append(text, at, length);
            at += length;
        } else {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\x%02X",
                          static_cast<unsigned>(static_cast<unsigned char>(text[at++])));
            shown += escaped;
        }
    }
    return shown;
}

const std::vector<exit_description>& all_exits() {
    static const std::vector<exit_description> rows = {
        {exit_code::good, "good", "Everything was done."},
        {exit_code::data, "bad data", "The bytes of an input are not what they should be."},
        {exit_code::usage, "wrong usage", "The command line asks for something that cannot be done."},
        {exit_code::io, "a file cannot be opened, read or written",
         "A file cannot be opened, read or written, or memory ran out."},
    };
    return rows;
}

std::string exit_codes_line() {
    std::string line = "Exit codes:";
    for (const exit_description& row : all_exits()) {
        line +=
            (row.code == exit_code::good ? " " : ", ") + std::to_string(static_cast<int>(row.code)) + " " + row.word;
    }
    return line + ".";
}

failure::failure(exit_code code, location where, const std::string& what, std::string hint)
    : std::runtime_error(what), ends_with(code), place(std::move(where)), advice(std::move(hint)) {}

std::string failure::message() const {
    std::string text;
    for (const std::string* part : {&place.file, &place.spot}) {
        if (!part->empty()) {
            text += printable(*part) + ": ";
        }
    }
    return text + printable(what(), true);
}

std::string failure::text() const {
    std::string text = "qvr: " + message() + "\n";
    if (!advice.empty()) {
        text += "hint: " + printable(advice, true) + "\n";
    }
    return text;
}

void fail_usage(const std::string& what, const std::string& hint) {
    throw failure(exit_code::usage, location{}, what, hint);
}

void refuse_frame(const std::string& file, unsigned long long number, unsigned long long total) {
    throw failure(exit_code::usage, {file, {}},
                  "there is no frame " + std::to_string(number) + ": the file holds " + std::to_string(total) +
                      ", counted from 0");
}

void refuse_empty(const std::string& file) {
    throw failure(exit_code::data, {file, {}}, "there is no frame in it: the file is empty",
                  "what was to write it has failed, or is not done yet");
}

std::string frame_spot(unsigned long long number, unsigned long long offset) {
    return "frame " + std::to_string(number) + " at offset " + std::to_string(offset);
}

}  // namespace qvr
