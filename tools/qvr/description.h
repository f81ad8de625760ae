// SPDX-License-Identifier: BSD-3-Clause
//
// What the command line takes, as data: read out of the parser, so that manual and completions can never say anything
// else than --help does.
#pragma once

#include <string>
#include <vector>

namespace qvr {

struct argument_description {
    std::vector<std::string> names;  // "-q", "--quiet"; of a positional its name without dashes
    std::string value;               // "N", "DIR"; empty for flags and positionals
    std::string group;               // title above it in the help
    std::string help;                // may have several lines
    std::vector<std::string> words;  // values to offer; others may be taken as well
    bool positional = false;
    bool required = false;
    bool repeated = false;  // takes every word up to the next option
};

struct command_description {
    std::string name;
    std::string about;                            // one line
    std::string more;                             // the text below the options
    std::vector<argument_description> arguments;  // in the order of the help
};

struct program_description {
    std::string name;
    std::string about;
    std::string more;
    std::vector<argument_description> options;
    std::vector<command_description> commands;
};

// "qvr.1" for man, and completions for the three shells.
std::string manual_page(const program_description& program);
std::string bash_completion(const program_description& program);
std::string zsh_completion(const program_description& program);
std::string fish_completion(const program_description& program);

}  // namespace qvr
