// SPDX-License-Identifier: BSD-3-Clause
//
// Runs the qvr command in a child process, in a folder of the test's own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

using bytes = std::vector<std::uint8_t>;

struct outcome {
    int code = -1;          // exit code; -1 when a signal ended it
    int signal_number = 0;  // 0 when it exited
    std::string out;
    std::string err;
};

// A folder that the test fills and that goes away with the object.
class scratch_folder {
  public:
    scratch_folder();
    ~scratch_folder();
    scratch_folder(const scratch_folder&) = delete;
    scratch_folder& operator=(const scratch_folder&) = delete;

    const std::string& path() const { return path_; }
    std::string file(const std::string& name) const { return path_ + "/" + name; }
    void write(const std::string& name, const bytes& content) const;
    bytes read(const std::string& name) const;
    bool has(const std::string& name) const;
    std::vector<std::string> names() const;  // sorted

    // Runs "qvr ARGUMENTS" in the folder. Standard input is a file with the given content.
    outcome qvr(const std::vector<std::string>& arguments, const bytes& input = {}) const;
    // Runs another program, found in PATH; the folder of qvr is the first in it.
    outcome command(const std::vector<std::string>& words) const;
    // As qvr() with standard output somewhere else.
    outcome qvr_to(const std::string& output, const std::vector<std::string>& arguments) const;
    // Starts it with standard input from a pipe whose writing end is returned in `feed`; gives the process.
    int start_qvr(const std::vector<std::string>& arguments, int* feed) const;

  private:
    outcome run(const char* program, const std::vector<std::string>& arguments, const bytes& input) const;

    std::string path_;
};

outcome wait_for(int process);
// Whether a program of this name is in PATH. A test that skips itself for want of it says so.
bool is_installed(const std::string& program);
bool holds(const std::string& text, const std::string& part);
