// SPDX-License-Identifier: BSD-3-Clause
//
// The hidden command that the build calls for the manual page and the completions.
#include <cstdio>
#include <memory>

#include "command.h"

namespace qvr {

namespace {

struct generator {
    const char* name;
    std::string (*make)(const program_description&);
};

constexpr generator k_generators[] = {
    {"man", manual_page}, {"bash", bash_completion}, {"zsh", zsh_completion}, {"fish", fish_completion}};

void run_generate(const command_line& line, const std::string& what) {
    for (const generator& candidate : k_generators) {
        if (what == candidate.name) {
            std::fputs(candidate.make(line.describe()).c_str(), stdout);
            finish_standard_output();
            return;
        }
    }
    fail_usage("generate " + what + ": there is nothing of this name", "ask for man, bash, zsh or fish");
}

}  // namespace

void add_generate(command_line& to) {
    const auto what = std::make_shared<std::string>();
    argument_list list = to.add_command("generate", "Print the manual page, or a shell's completions",
                                        [&to, what] { run_generate(to, *what); });
    list.positional("WHAT", *what, "man, bash, zsh or fish");
    list.hide();
}

}  // namespace qvr
