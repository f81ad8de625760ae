// SPDX-License-Identifier: BSD-3-Clause
//
// Completions for bash, zsh and fish. None needs anything but its shell.
#include <algorithm>

#include "description.h"

namespace qvr {

namespace {

enum class value_kind { none, words, folders, files, other };

// Values that are no files are those whose names say so; any other name may be a file.
value_kind kind_of(const argument_description& argument) {
    static const std::vector<std::string> others = {"N",   "WxH", "N|NAME", "1/N|N", "NAME", "TEXT",
                                                    "A-B", "I/N", "N[:M]",  "FORM",  "KIND"};
    if (!argument.words.empty()) {
        return value_kind::words;
    }
    if (argument.value.empty() && !argument.positional) {
        return value_kind::none;
    }
    if (argument.value == "DIR") {
        return value_kind::folders;
    }
    return std::count(others.begin(), others.end(), argument.value) > 0 ? value_kind::other : value_kind::files;
}

std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : " ") + word;
    }
    return text;
}

std::string replaced(std::string in, const std::string& what, const std::string& with) {
    for (std::size_t at = in.find(what); at != std::string::npos; at = in.find(what, at + with.size())) {
        in.replace(at, what.size(), with);
    }
    return in;
}

// The help's first clause on one line.
std::string brief(const argument_description& argument) {
    const std::string line = replaced(argument.help, "\n", " ");
    return line.substr(0, line.find(';'));
}

std::string option_names(const std::vector<argument_description>& arguments) {
    std::string text;
    for (const argument_description& argument : arguments) {
        if (!argument.positional) {
            text += (text.empty() ? "" : " ") + joined(argument.names);
        }
    }
    return text;
}

std::string command_names(const program_description& program) {
    std::vector<std::string> names;
    for (const command_description& command : program.commands) {
        names.push_back(command.name);
    }
    return joined(names);
}

// ---- bash

constexpr const char* k_bash_head = R"(# bash completion for qvr; made by 'qvr generate bash'
_qvr() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} command= options= words= i
    COMPREPLY=()
    # "--option=value" arrives as three words.
    if [[ $word == = ]]; then
        word=
    elif [[ $before == = ]]; then
        before=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    for ((i = 1; i < COMP_CWORD; i++)); do
        if [[ ${COMP_WORDS[i]} != -* ]]; then
            command=${COMP_WORDS[i]}
            break
        fi
    done
)";

constexpr const char* k_bash_tail = R"(    if [[ $word == -* ]]; then
        words=$options
    fi
    if [[ $words ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
    fi
}
# Where the function offers nothing, bash offers files.
complete -o bashdefault -o default -F _qvr qvr
)";

std::string bash_pattern(const std::string& command, const std::string& name) {
    return "\"" + command + " " + name + "\"";
}

std::string bash_values(const std::string& command, const argument_description& argument) {
    std::string patterns;
    for (const std::string& name : argument.names) {
        patterns += patterns.empty() ? "" : " | ";
        patterns += bash_pattern(command, name);
    }
    switch (kind_of(argument)) {
        case value_kind::words:
            return "        " + patterns + ") words=\"" + joined(argument.words) + "\" options= ;;\n";
        case value_kind::folders:
            return "        " + patterns +
                   ") mapfile -t COMPREPLY < <(compgen -d -- \"$word\"); compopt -o filenames 2>/dev/null; return ;;\n";
        case value_kind::other:
            return "        " + patterns + ") compopt +o default +o bashdefault 2>/dev/null; return ;;\n";
        default:
            return {};
    }
}

// ---- zsh

std::string zsh_quoted(const std::string& text) {
    return "'" + replaced(text, "'", "'\\''") + "'";
}

// Inside of an argument specification some characters separate its parts.
std::string zsh_escaped(const std::string& text) {
    std::string out;
    for (const char c : text) {
        out += (c == ':' || c == '[' || c == ']' || c == '\\' ? "\\" : "") + std::string(1, c);
    }
    return out;
}

std::string zsh_action(const argument_description& argument) {
    switch (kind_of(argument)) {
        case value_kind::words:
            return "(" + joined(argument.words) + ")";
        case value_kind::folders:
            return "_files -/";
        case value_kind::files:
            return "_files";
        default:
            return " ";
    }
}

std::string zsh_positional(const argument_description& argument) {
    const char* count = argument.repeated ? "*:" : argument.required ? ":" : "::";
    return zsh_quoted(count + zsh_escaped(argument.names.front()) + ":" + zsh_action(argument));
}

std::string zsh_option(const argument_description& argument, const std::string& name) {
    const bool flag = kind_of(argument) == value_kind::none;
    const char* separator = flag ? "" : name.rfind("--", 0) == 0 ? "=" : "+";
    const std::string value = flag ? "" : ":" + zsh_escaped(argument.value) + ":" + zsh_action(argument);
    return zsh_quoted("(" + joined(argument.names) + ")" + name + separator + "[" + zsh_escaped(brief(argument)) + "]" +
                      value);
}

std::string zsh_arguments(const std::vector<argument_description>& arguments, const char* indent) {
    std::string out;
    for (const argument_description& argument : arguments) {
        if (argument.positional) {
            out += indent;
            out += zsh_positional(argument);
            continue;
        }
        for (const std::string& name : argument.names) {
            out += indent;
            out += zsh_option(argument, name);
        }
    }
    return out;
}

// ---- fish

std::string fish_quoted(const std::string& text) {
    return "'" + replaced(replaced(text, "\\", "\\\\"), "'", "\\'") + "'";
}

std::string fish_value(const argument_description& argument) {
    switch (kind_of(argument)) {
        case value_kind::none:
            return "";
        case value_kind::words:
            return " -x -a " + fish_quoted(joined(argument.words));
        case value_kind::folders:
            return " -x -a '(__fish_complete_directories)'";
        case value_kind::files:
            return " -r -F";
        default:
            return " -x";
    }
}

std::string fish_arguments(const std::vector<argument_description>& arguments, const std::string& condition) {
    std::string out;
    for (const argument_description& argument : arguments) {
        if (argument.positional) {
            continue;
        }
        out += "complete -c qvr -n " + fish_quoted(condition);
        for (const std::string& name : argument.names) {
            out += name.rfind("--", 0) == 0 ? " -l " + name.substr(2) : " -s " + name.substr(1);
        }
        out += fish_value(argument) + " -d " + fish_quoted(brief(argument)) + "\n";
    }
    return out;
}

}  // namespace

std::string bash_completion(const program_description& program) {
    std::string out = k_bash_head;
    out += "    case $command in\n        \"\") words=\"" + command_names(program) + "\" options=\"" +
           option_names(program.options) + "\" ;;\n";
    for (const command_description& command : program.commands) {
        out += "        " + command.name + ") options=\"" + option_names(command.arguments) + "\" ;;\n";
    }
    out += "    esac\n    case \"$command $before\" in\n";
    for (const command_description& command : program.commands) {
        for (const argument_description& argument : command.arguments) {
            out += argument.positional ? "" : bash_values(command.name, argument);
        }
    }
    return out + "    esac\n" + k_bash_tail;
}

std::string zsh_completion(const program_description& program) {
    std::string out =
        "#compdef qvr\n# made by 'qvr generate zsh'\n_qvr() {\n"
        "    local curcontext=$curcontext state line\n"
        "    typeset -A opt_args\n"
        "    _arguments -C";
    out += zsh_arguments(program.options, " \\\n        ");
    out +=
        " \\\n        '1: :->command' '*:: :->arguments' && return\n"
        "    case $state in\n        command)\n            local -a commands=(";
    for (const command_description& command : program.commands) {
        out += "\n                " + zsh_quoted(command.name + ":" + command.about);
    }
    out +=
        "\n            )\n            _describe -t commands command commands\n            ;;\n"
        "        arguments)\n            case $line[1] in\n";
    for (const command_description& command : program.commands) {
        out += "                " + command.name + ")\n                    _arguments";
        out += zsh_arguments(command.arguments, " \\\n                        ") + "\n                    ;;\n";
    }
    return out +
           "            esac\n            ;;\n    esac\n}\n"
           "# Called as the completion itself, or read by hand.\n"
           "if [[ $funcstack[1] == _qvr ]]; then\n    _qvr \"$@\"\nelse\n    compdef _qvr qvr\nfi\n";
}

std::string fish_completion(const program_description& program) {
    std::string out = "# fish completion for qvr; made by 'qvr generate fish'\n";
    out += fish_arguments(program.options, "__fish_use_subcommand");
    for (const command_description& command : program.commands) {
        out += "complete -c qvr -n __fish_use_subcommand -x -a " + command.name + " -d " + fish_quoted(command.about) +
               "\n";
    }
    for (const command_description& command : program.commands) {
        out += fish_arguments(command.arguments, "__fish_seen_subcommand_from " + command.name);
    }
    return out;
}

}  // namespace qvr
