// SPDX-License-Identifier: BSD-3-Clause
#include "failure.h"

#include <utility>

#include "status_line.h"

namespace qvr {

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
            text += *part + ": ";
        }
    }
    return text + what();
}

std::string failure::text() const {
    std::string text = "qvr: " + message() + "\n";
    if (!advice.empty()) {
        text += "hint: " + advice + "\n";
    }
    return text;
}

void warn(const std::string& file, const std::string& what) {
    print_message("qvr: warning: " + file + ": " + what + "\n");
}

void fail_usage(const std::string& what, const std::string& hint) {
    throw failure(exit_code::usage, location{}, what, hint);
}

std::string frame_spot(unsigned long long number, unsigned long long offset) {
    return "frame " + std::to_string(number) + " at offset " + std::to_string(offset);
}

}  // namespace qvr
