// SPDX-License-Identifier: BSD-3-Clause
//
// The subcommands. Each has a file of its own and one function that adds it to the command line.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "arguments.h"
#include "frame.h"

namespace qvr {

void add_encode(command_line& to);
void add_decode(command_line& to);
void add_wrap(command_line& to);
void add_unwrap(command_line& to);
void add_info(command_line& to);
void add_dump(command_line& to);
void add_verify(command_line& to);
void add_formats(command_line& to);
void add_view(command_line& to);
void add_bench(command_line& to);
void add_generate(command_line& to);
void add_convert(command_line& to);
void add_join(command_line& to);

// What --order and --type can be called, one name for each.
std::vector<std::string> order_names();
std::vector<std::string> type_names();

// Options that describe one side of a command, its raw frames and its files, as they were typed.
struct layout_options {
    std::string order;
    std::string type;
    std::string format;
    std::string size;
    std::uint32_t row_bytes = 0;
    std::uint32_t row_bytes2 = 0;
    bool interlaced = false;
    std::string container;
    std::optional<std::uint32_t> start;
    std::string rate;
    bool strict = false;

    // prefix: "--" or, for the second side of a command, "--out-".
    void add_format(argument_list& to, const char* order_help, const char* type_help, const std::string& prefix = "--");
    void add_strides(argument_list& to, const std::string& prefix = "--");
    // option: "--from" or "--to".
    void add_container(argument_list& to, const char* option);
    enum class side { input, output };
    void add_start(argument_list& to, side of, const std::string& prefix = "--");
    void add_rate(argument_list& to);
    void add_strict(argument_list& to);
    // Checks and translates what was typed.
    layout_request resolve() const;
};

struct run_options {
    std::uint32_t threads = 0;
    bool time = false;
    bool quiet = false;

    // shared: with -j, which divides the processors among frames.
    void add(argument_list& to, bool shared, bool timed = true);
};

bool ends_in(const std::string& path, const char* extension);

// Lines for people go to standard error, so that standard output can carry frames.
void say(const std::string& line);

// Everything that a command wrote to standard output has arrived, or it is an input/output failure.
void finish_standard_output();

}  // namespace qvr
