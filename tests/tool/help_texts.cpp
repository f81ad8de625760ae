// SPDX-License-Identifier: BSD-3-Clause
#include "help_texts.h"

#include <cctype>
#include <sstream>

namespace {

constexpr std::size_t k_column = 34;  // where descriptions begin

// Examples and lists below the options may begin with dashes too, but nothing stands in the column.
bool is_option(const std::string& line) {
    return line.rfind("  -", 0) == 0 &&
           (line.find("  ", 2) == std::string::npos || line.find_first_not_of(' ', line.find("  ", 2)) == k_column);
}

// On the option's own line or on those behind it.
void add_line(help_entry& to, const std::string& line) {
    const std::size_t text = line.find_first_not_of(' ', 2);
    if (is_option(line)) {
        const std::size_t end = line.find("  ", 2);
        to.head = line.substr(2, end == std::string::npos ? end : end - 2);
        to.text = end == std::string::npos ? "" : line.substr(line.find_first_not_of(' ', end));
    } else if (text == k_column) {
        to.text += (to.text.empty() ? "" : " ") + line.substr(k_column);
    }
}

std::vector<std::string> names_in(const std::string& head) {
    std::vector<std::string> names;
    std::istringstream words(head.substr(0, head.find(' ')));
    for (std::string name; std::getline(words, name, ',');) {
        names.push_back(name);
    }
    return names;
}

std::vector<help_entry> read_help(const std::string& help) {
    std::vector<help_entry> entries;
    for (const std::string& line : lines_of(help)) {
        if (is_option(line)) {
            entries.emplace_back();
        }
        // The text below the options begins in the first column.
        if (!line.empty() && line[0] != ' ' && line.back() != ':' && !entries.empty()) {
            break;
        }
        if (!entries.empty()) {
            add_line(entries.back(), line);
        }
    }
    for (help_entry& entry : entries) {
        entry.names = names_in(entry.head);
    }
    return entries;
}

}  // namespace

std::vector<std::string> lines_of(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

help_entries read_all_help(const scratch_folder& folder) {
    help_entries all;
    const std::string help = folder.qvr({"--help"}).out;
    bool in_list = false;
    for (const std::string& line : lines_of(help)) {
        in_list = line == "Commands:" || (in_list && line.rfind("  ", 0) == 0);
        if (in_list && line[0] == ' ' && std::islower(static_cast<unsigned char>(line[2])) != 0) {
            const std::string name = line.substr(2, line.find(' ', 2) - 2);
            all.emplace_back(name, read_help(folder.qvr({name, "--help"}).out));
        }
    }
    return all;
}
