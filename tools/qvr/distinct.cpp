// SPDX-License-Identifier: BSD-3-Clause
#include "distinct.h"

#include <sys/stat.h>

#include <filesystem>
#include <set>

#include "failure.h"
#include "file_io.h"
#include "sequence.h"

namespace qvr {

namespace {

// The same for all names of a file, whether it is there or only to be made; empty for what is no file.
std::string identity(const std::string& path) {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0) {
        std::error_code ignored;
        return std::filesystem::weakly_canonical(std::filesystem::absolute(behind_links(path)), ignored).string();
    }
    return S_ISREG(status.st_mode) ? std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino) : "";
}

std::vector<std::string> names_of(const std::string& path) {
    std::vector<std::string> names = {path};
    try {
        if (const std::optional<sequence_pattern> files = sequence_pattern::parse(path)) {
            for (const std::uint64_t number : files->numbers()) {
                names.push_back(files->path(number));
            }
        }
    } catch (const failure&) {
        // No pattern: a command that takes patterns says so itself.
    }
    return names;
}

// The first name of the one, in the order of its numbers, that is a file of the other.
void require_two(const named_file& first, const named_file& second) {
    std::set<std::string> files;
    for (const std::string& name : names_of(second.path)) {
        files.insert(identity(name));
    }
    files.erase("");
    for (const std::string& name : names_of(first.path)) {
        if (files.count(identity(name)) > 0) {
            fail_usage(std::string(first.role) + " and " + second.role + " are the same file: " + name,
                       "write to a file of another name");
        }
    }
}

}  // namespace

void require_distinct(const std::vector<named_file>& inputs, const std::vector<named_file>& outputs) {
    for (std::size_t i = 0; i < outputs.size(); ++i) {
        const named_file& output = outputs[i];
        for (const named_file& input : inputs) {
            // Standard input and output are two.
            if (!input.path.empty() && !output.path.empty() && (input.path != "-" || output.path != "-")) {
                require_two(input, output);
            }
        }
        for (std::size_t k = 0; k < i && !output.path.empty(); ++k) {
            if (output.path == "-" && outputs[k].path == "-") {
                fail_usage(std::string(outputs[k].role) + " and " + output.role + " cannot both go to standard output",
                           "give one of them a name");
            }
            if (!outputs[k].path.empty()) {
                require_two(outputs[k], output);
            }
        }
    }
}

}  // namespace qvr
