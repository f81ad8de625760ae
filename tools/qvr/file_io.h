// SPDX-License-Identifier: BSD-3-Clause
//
// Files as the tool uses them: inputs that are read once from front to back, outputs that appear under their name only
// when they are complete. "-" is standard input or output.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "unfinished.h"

namespace qvr {

class input_file {
  public:
    explicit input_file(const std::string& path);
    ~input_file();
    input_file(const input_file&) = delete;
    input_file& operator=(const input_file&) = delete;

    // For messages: the path, or "standard input".
    const std::string& name() const { return shown_name; }

    // Reads until count bytes are there or the file ends; returns how many there are.
    std::size_t read(std::uint8_t* to, std::size_t count);

    // As read, behind the first `start` bytes of the buffer. The buffer grows with what the file really holds, so that
    // a count from a damaged file never makes it large.
    std::size_t read_into(std::vector<std::uint8_t>& buffer, std::size_t start, std::size_t count);

    // The next bytes, up to count, without taking them.
    const std::vector<std::uint8_t>& peek(std::size_t count);
    bool at_end() { return peek(1).empty(); }

    // Passes over bytes, without reading them where the file can be sought in; returns how many there were.
    std::uint64_t skip(std::uint64_t count);

    // How many bytes are left, where the system knows: in regular files.
    std::optional<std::uint64_t> bytes_left() const;

  private:
    std::size_t read_from_system(std::uint8_t* to, std::size_t count);

    std::string shown_name;
    int descriptor = -1;
    bool owned = false;
    std::vector<std::uint8_t> head;  // peeked at, not yet taken
};

// Ends what reads of pipes and devices are waiting for input in other threads, as if the input ended; for good.
void stop_waiting_for_input();

// What becomes of an output that is not committed: it is removed, or it stays beside the target as TARGET.part, where
// the next output_file of the same kind finds it. One that is begun again is removed too, but always has that name, so
// that a process that was killed leaves no more than one; only one process at a time may write it. compared: the target
// is there and is not to change.
enum class incomplete { removed, kept, begun_again, compared };

// The last part of a path.
std::string base_name(const std::string& path);

// Where a path leads to when symbolic links are followed, also to a file that is not there yet.
std::string behind_links(const std::string& path);

// Writes to a temporary file beside the target, which commit() renames. Without commit() nothing stays behind, neither
// after an exception nor after an interrupt, unless it is to be kept. Devices and pipes, which cannot be replaced, are
// written directly.
class output_file {
  public:
    explicit output_file(const std::string& path, incomplete becomes = incomplete::removed);
    // With another name than the path in messages.
    output_file(const std::string& path, const std::string& called, incomplete becomes = incomplete::removed);
    ~output_file();
    output_file(const output_file&) = delete;
    output_file& operator=(const output_file&) = delete;

    const std::string& name() const { return shown_name; }
    void write(const std::uint8_t* from, std::size_t count);
    void write(const std::string& text);
    std::uint64_t bytes_written() const { return written; }
    void commit();

    // For outputs that are kept, before anything is written. The file with what an earlier run has left: TARGET.part,
    // or, when there is none, the target itself, which is then complete.
    const std::string& kept_path() const { return temporary.empty() ? target : temporary; }
    bool kept_is_complete() const { return becomes_kept && temporary.empty(); }
    std::uint64_t kept_bytes() const { return kept; }
    // Keeps the first `whole` bytes of it; a complete file must have no others. Writing starts at `from`; what is there
    // already is compared, and a usage failure when it differs or when commit() comes before its end. What lies behind
    // is cut off only when all of it was found equal.
    void go_on(std::uint64_t from, std::uint64_t whole);

  private:
    void open_beside_target();
    void open_again();
    void open_kept(const std::string& part);
    void lock();
    void cut_off_rest();
    std::size_t compare_kept(const std::uint8_t* with, std::size_t count);
    [[noreturn]] void fail(const std::string& what) const;

    std::string shown_name;
    std::string target;
    std::string temporary;  // empty when the target is written directly
    unfinished pending;
    int descriptor = -1;
    int lock_descriptor = -1;  // held until the file has its name
    bool owned = false;
    bool becomes_kept = false;
    std::uint64_t kept = 0;
    std::uint64_t found = 0;  // bytes that an earlier run has left, kept or not
    std::uint64_t written = 0;
};

// Files that appear in a folder together: they are written in a folder of their own, whose files commit() moves. The
// folder itself is made when there is none. Without commit() everything is as it was before.
class output_folder {
  public:
    explicit output_folder(const std::string& path);
    ~output_folder();
    output_folder(const output_folder&) = delete;
    output_folder& operator=(const output_folder&) = delete;

    // The path under which the file of this name is to be written now, and the one to speak of.
    std::string place(const std::string& name);
    std::string shown(const std::string& name) const { return target + "/" + name; }
    void commit();

  private:
    void move_files();
    [[noreturn]] static void fail(const std::string& path, const std::string& what);

    std::string target;
    std::string staging;
    bool exists = false;
    std::vector<std::string> names;
    std::deque<unfinished> pending;
};

}  // namespace qvr
