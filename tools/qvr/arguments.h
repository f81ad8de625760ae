// SPDX-License-Identifier: BSD-3-Clause
//
// The command line, as the subcommands describe it. The parser behind it takes long to compile, so that only one file
// includes it.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "description.h"
#include "failure.h"

namespace qvr {

struct parsed_command;

// The arguments of one subcommand. Each is stored where its reference says; these must live until the command has run.
class argument_list {
  public:
    explicit argument_list(parsed_command& described) : command(&described) {}

    // Text below the list of options.
    void explain(const char* text);
    void positional(const char* name, std::string& to, const char* help);
    // One or more words.
    void positionals(const char* name, std::vector<std::string>& to, const char* help);
    // One that is needed, but only the command can say whether it is there.
    void settled_positional(const char* name, std::string& to, const char* help);
    void text(const char* name, std::string& to, const char* value_name, const char* help);
    // Takes every word up to the next option, and may be given more than once.
    void texts(const char* name, std::vector<std::string>& to, const char* value_name, const char* help);
    void number(const char* name, std::uint32_t& to, const char* help, std::uint32_t most = 0xFFFFFFFFu);
    void number(const char* name, std::optional<std::uint32_t>& to, const char* help);
    void number(const char* name, double& to, const char* help, double least, double most);
    void flag(const char* name, bool& to, const char* help);
    // One of the words, in upper or lower case. The help names them, and the default if `to` holds one.
    void choice(const char* name, std::string& to, const std::vector<std::string>& words, const char* value_name,
                const char* help);
    // Words worth offering as the value of an argument that takes others as well.
    void suggest(const char* name, std::vector<std::string> words);
    // Options that are added from here on stand under this title; null: under the general one again.
    void group(const char* title);
    // Leaves the command out of help, manual and completions.
    void hide();
    // The option `name` is of no use without the other.
    void needs(const char* name, const char* other);
    void excludes(const char* name, const char* other);
    void require(const char* name);

  private:
    parsed_command* command;
};

class command_line {
  public:
    command_line(const char* about, const char* more, const std::string& version);
    ~command_line();
    command_line(const command_line&) = delete;
    command_line& operator=(const command_line&) = delete;

    // run is called when the arguments name this command.
    argument_list add_command(const char* name, const char* about, std::function<void()> run);

    // All that is not hidden.
    program_description describe() const;

    // Parses, then runs the command that is named. Help and version are printed and are good ends; what cannot be
    // parsed is a usage failure.
    void run(int argc, char** argv);

  private:
    struct parser_state;
    std::unique_ptr<parser_state> state;
};

}  // namespace qvr
