// SPDX-License-Identifier: BSD-3-Clause
#include "process.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace fs = std::filesystem;

namespace {

bytes read_path(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string read_text(const std::string& path) {
    const bytes content = read_path(path);
    return {content.begin(), content.end()};
}

struct redirection {
    std::string input = "/dev/null";
    int input_descriptor = -1;  // used instead of the name when it is not -1
    std::string output = "/dev/null";
    std::string error = "/dev/null";
};

void redirect(int from, int to) {
    if (from < 0 || dup2(from, to) < 0) {
        _exit(126);
    }
}

pid_t start(const std::string& folder, const std::vector<std::string>& arguments, const redirection& where,
            const char* program = QVR_PROGRAM) {
    std::vector<char*> words = {const_cast<char*>(program)};
    for (const std::string& argument : arguments) {
        words.push_back(const_cast<char*>(argument.c_str()));
    }
    words.push_back(nullptr);
    const pid_t child = fork();
    if (child < 0) {
        throw std::runtime_error("fork failed");
    }
    if (child == 0) {
        const bool piped = where.input_descriptor >= 0;
        redirect(piped ? where.input_descriptor : open(where.input.c_str(), O_RDONLY), STDIN_FILENO);
        redirect(open(where.output.c_str(), O_WRONLY | O_CREAT, 0600), STDOUT_FILENO);
        redirect(open(where.error.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), STDERR_FILENO);
        if (chdir(folder.c_str()) != 0) {
            _exit(126);
        }
        execvp(program, words.data());
        _exit(127);
    }
    return child;
}

}  // namespace

scratch_folder::scratch_folder() {
    std::string pattern = (fs::temp_directory_path() / "qvr-tool-test-XXXXXX").string();
    if (!mkdtemp(pattern.data())) {
        throw std::runtime_error("cannot make a folder for the test");
    }
    path_ = pattern;
}

scratch_folder::~scratch_folder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

void scratch_folder::write(const std::string& name, const bytes& content) const {
    std::ofstream out(file(name), std::ios::binary);
    out.write(reinterpret_cast<const char*>(content.data()), static_cast<std::streamsize>(content.size()));
}

bytes scratch_folder::read(const std::string& name) const {
    return read_path(file(name));
}

bool scratch_folder::has(const std::string& name) const {
    return fs::exists(file(name));
}

std::vector<std::string> scratch_folder::names() const {
    std::vector<std::string> found;
    for (const fs::directory_entry& entry : fs::directory_iterator(path_)) {
        found.push_back(entry.path().filename().string());
    }
    std::sort(found.begin(), found.end());
    return found;
}

outcome scratch_folder::qvr(const std::vector<std::string>& arguments, const bytes& input) const {
    return run(QVR_PROGRAM, arguments, input);
}

outcome scratch_folder::command(const std::vector<std::string>& words) const {
    std::vector<std::string> arguments = {"PATH=" + fs::path(QVR_PROGRAM).parent_path().string() + ":" +
                                          std::getenv("PATH")};
    arguments.insert(arguments.end(), words.begin(), words.end());
    return run("env", arguments, {});
}

outcome scratch_folder::run(const char* program, const std::vector<std::string>& arguments, const bytes& input) const {
    // Beside the folder, so that its list of names holds nothing but what the command made.
    const std::string prefix = path_ + ".";
    redirection where;
    where.input = prefix + "in";
    where.output = prefix + "out";
    where.error = prefix + "err";
    std::ofstream(where.input, std::ios::binary)
        .write(reinterpret_cast<const char*>(input.data()), static_cast<std::streamsize>(input.size()));
    outcome result = wait_for(start(path_, arguments, where, program));
    result.out = read_text(where.output);
    result.err = read_text(where.error);
    for (const std::string& name : {where.input, where.output, where.error}) {
        fs::remove(name);
    }
    return result;
}

outcome scratch_folder::qvr_to(const std::string& output, const std::vector<std::string>& arguments) const {
    redirection where;
    where.output = output;
    where.error = path_ + ".err";
    outcome result = wait_for(start(path_, arguments, where));
    result.err = read_text(where.error);
    fs::remove(where.error);
    return result;
}

int scratch_folder::start_qvr(const std::vector<std::string>& arguments, int* feed) const {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        throw std::runtime_error("pipe failed");
    }
    redirection where;
    where.input_descriptor = ends[0];
    const pid_t child = start(path_, arguments, where);
    close(ends[0]);
    *feed = ends[1];
    return child;
}

outcome wait_for(int process) {
    int status = 0;
    if (waitpid(process, &status, 0) != process) {
        throw std::runtime_error("waitpid failed");
    }
    outcome result;
    if (WIFEXITED(status)) {
        result.code = WEXITSTATUS(status);
    } else {
        result.signal_number = WTERMSIG(status);
    }
    return result;
}

bool is_installed(const std::string& program) {
    return scratch_folder().command({"sh", "-c", "command -v " + program}).code == 0;
}

bool holds(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}
