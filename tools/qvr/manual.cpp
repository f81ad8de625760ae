// SPDX-License-Identifier: BSD-3-Clause
//
// The manual page, in the language of groff's man macros. The texts of the help are paragraphs, lines that begin with
// two spaces and are kept as they stand, and lists of examples at their end.
#include <sstream>

#include "QVRUncompressed.h"
#include "description.h"
#include "failure.h"

namespace qvr {

namespace {

constexpr const char* k_files = R"(.TP
.I *.qvr
Frames one after the other, each with its size, its format and its planes.
.TP
.I NAME.part\-PID\-N
A file that is being written. It gets its name when it is complete, and is removed when the command fails or is
interrupted; only a power cut or a crash can leave one behind.
.TP
.I OUT.part
What is done of a file that is written with
.BR \-\-resume .
The same command goes on with it, and gives it its name when it is complete.
.TP
.I FILE.manifest
A list of the frames of a .qvr file, a line of JSON for each with its size and its checksum, as
.B \-\-manifest
writes and checks it.
.B qvr join
looks for
.I PART.manifest
beside each part.
.TP
.I PREFIX/share/qvruncompressed/schema/*.schema.json
JSON Schemas of what
.B \-\-json
prints; each document names its own.
)";

std::string escaped(const std::string& text) {
    std::string out;
    for (const char c : text) {
        switch (c) {
            case '\\':
                out += "\\e";
                break;
            case '-':
                out += "\\-";
                break;
            case '\'':
                out += "\\(aq";
                break;
            case '"':
                out += "\\(dq";
                break;
            case '^':
                out += "\\(ha";
                break;
            case '~':
                out += "\\(ti";
                break;
            case '`':
                out += "\\(ga";
                break;
            default:
                out += c;
        }
    }
    return out;
}

// A line of text; one that begins with a dot would be taken for a request.
std::string text_line(const std::string& line) {
    return (line.rfind('.', 0) == 0 ? "\\&" : "") + escaped(line) + "\n";
}

std::vector<std::string> lines_of(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

bool starts_examples(const std::string& line) {
    return line == "Example:" || line == "Examples:" || line == "Try:";
}

bool kept_as_it_stands(const std::string& line) {
    return line.rfind("  ", 0) == 0;
}

struct help_text {
    std::vector<std::string> text;
    std::vector<std::string> examples;
};

help_text split(const std::string& more) {
    help_text parts;
    bool in_examples = false;
    for (const std::string& line : lines_of(more)) {
        if (starts_examples(line)) {
            in_examples = true;
        } else if (in_examples && kept_as_it_stands(line)) {
            parts.examples.push_back(line.substr(2));
        } else {
            in_examples = false;
            parts.text.push_back(line);
        }
    }
    return parts;
}

std::string as_it_stands(const std::vector<std::string>& lines) {
    std::string out = ".PP\n.EX\n";
    for (const std::string& line : lines) {
        out += text_line(line);
    }
    return out + ".EE\n";
}

std::string paragraphs(const std::vector<std::string>& lines) {
    std::string out;
    std::vector<std::string> kept;
    bool open = false;
    for (const std::string& line : lines) {
        if (kept_as_it_stands(line)) {
            kept.push_back(line);
            continue;
        }
        if (!kept.empty()) {
            out += as_it_stands(kept);
            kept.clear();
            open = false;
        }
        if (!line.empty() && !open) {
            out += ".PP\n";
        }
        open = !line.empty();
        out += open ? text_line(line) : "";
    }
    return kept.empty() ? out : out + as_it_stands(kept);
}

// "qvr encode [OPTIONS] IN OUT.qvr", the words to replace in italics.
std::string synopsis(const program_description& program, const command_description& command) {
    std::string line = "\\fB" + escaped(program.name + " " + command.name) + "\\fR [\\fIOPTIONS\\fR]";
    for (const argument_description& argument : command.arguments) {
        if (argument.positional) {
            const std::string name =
                "\\fI" + escaped(argument.names.front()) + "\\fR" + (argument.repeated ? " ..." : "");
            line += argument.required ? " " + name : " [" + name + "]";
        }
    }
    return line + "\n";
}

std::string argument_entry(const argument_description& argument) {
    std::string head;
    for (const std::string& name : argument.names) {
        head +=
            (head.empty() ? "" : ", ") + std::string(argument.positional ? "\\fI" : "\\fB") + escaped(name) + "\\fR";
    }
    if (!argument.value.empty()) {
        head += " \\fI" + escaped(argument.value) + "\\fR" + (argument.repeated ? " ..." : "");
    }
    std::string out = ".TP\n" + head + "\n";
    for (const std::string& line : lines_of(argument.help)) {
        out += text_line(line);
    }
    return out;
}

std::string arguments_section(const std::vector<argument_description>& arguments) {
    std::string out;
    for (const argument_description& argument : arguments) {
        if (argument.positional) {
            out += argument_entry(argument);
        }
    }
    std::vector<std::string> groups;
    for (const argument_description& argument : arguments) {
        bool known = argument.positional;
        for (const std::string& group : groups) {
            known = known || group == argument.group;
        }
        if (!known) {
            groups.push_back(argument.group);
        }
    }
    for (const std::string& group : groups) {
        out += ".PP\n.I " + escaped(group) + "\n";
        for (const argument_description& argument : arguments) {
            out += !argument.positional && argument.group == group ? argument_entry(argument) : "";
        }
    }
    return out;
}

std::string commands_section(const program_description& program) {
    std::string out = ".SH COMMANDS\n";
    for (const command_description& command : program.commands) {
        out += ".SS " + escaped(command.name) + "\n" + synopsis(program, command);
        out += ".PP\n" + text_line(command.about + ".");
        out += paragraphs(split(command.more).text);
        out += arguments_section(command.arguments);
    }
    return out;
}

std::string examples_section(const program_description& program) {
    std::string out = ".SH EXAMPLES\n" + as_it_stands(split(program.more).examples);
    for (const command_description& command : program.commands) {
        const std::vector<std::string> examples = split(command.more).examples;
        if (!examples.empty()) {
            out += ".SS " + escaped(command.name) + "\n" + as_it_stands(examples);
        }
    }
    return out;
}

std::string exits_section(const program_description& program) {
    std::string out = ".SH EXIT STATUS\n";
    for (const exit_description& row : all_exits()) {
        out += ".TP\n" + std::to_string(static_cast<int>(row.code)) + "\n" + text_line(row.text);
    }
    return out + paragraphs(split(program.more).text);
}

}  // namespace

std::string manual_page(const program_description& program) {
    const std::vector<std::string> about = lines_of(program.about);
    const std::string title = about.front().substr(about.front().find(' ') + 1);
    const std::string version = std::to_string(QVRUNCOMPRESSED_VERSION_MAJOR) + "." +
                                std::to_string(QVRUNCOMPRESSED_VERSION_MINOR) + "." +
                                std::to_string(QVRUNCOMPRESSED_VERSION_PATCH);
    std::string out = ".\\\" Made by 'qvr generate man' from what the command line takes.\n";
    out += ".TH QVR 1 \"\" \"QVRUncompressed " + version + "\" \"User Commands\"\n.nh\n.ad l\n";
    out += ".SH NAME\n" + program.name + " \\- " + escaped(title.substr(0, title.find_last_not_of('.') + 1)) + "\n";
    out += ".SH SYNOPSIS\n";
    for (const command_description& command : program.commands) {
        out += synopsis(program, command) + ".br\n";
    }
    out += "\\fBqvr\\fR [\\fICOMMAND\\fR] \\fB\\-\\-help\\fR\n";
    out += ".SH DESCRIPTION\n" + paragraphs({about.begin() + 1, about.end()});
    out += commands_section(program);
    out += ".SH OPTIONS\n" + arguments_section(program.options);
    out += examples_section(program);
    out += exits_section(program);
    return out + ".SH FILES\n" + k_files;
}

}  // namespace qvr
