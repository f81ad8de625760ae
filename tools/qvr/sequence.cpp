// SPDX-License-Identifier: BSD-3-Clause
#include "sequence.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <system_error>
#include <utility>

namespace qvr {

namespace {

// What stands in a path at a percent sign: "%%", or a number with the width that it asks for.
struct conversion {
    std::size_t length = 0;  // 0: neither, the sign stands for itself
    bool number = false;
    std::size_t digits = 1;
};

conversion read_conversion(const std::string& path, std::size_t at) {
    constexpr std::size_t k_most_digits = 20;
    if (path.compare(at, 2, "%%") == 0) {
        return {2, false, 0};
    }
    conversion read;
    const auto width = std::from_chars(path.data() + at + 1, path.data() + path.size(), read.digits);
    const std::size_t end = static_cast<std::size_t>(width.ptr - path.data());
    if (end >= path.size() || path[end] != 'd' || read.digits > k_most_digits) {
        return {};
    }
    read.number = true;
    read.length = end + 1 - at;
    return read;
}

class sequence_source : public frame_source {
  public:
    sequence_source(const sequence_pattern& of, std::vector<std::uint64_t> found, bool one_each, source_opener opener)
        : files(of), numbers(std::move(found)), one_frame(one_each), open_one(std::move(opener)) {}

    bool next(frame& to) override {
        for (; open(); close()) {
            if (current->next(to)) {
                place = current->last_place();
                if (one_frame) {
                    close();
                }
                return true;
            }
        }
        return false;
    }

    std::uint64_t skip(std::uint64_t count) override {
        std::uint64_t skipped = 0;
        if (one_frame && !current) {
            skipped = std::min<std::uint64_t>(count, numbers.size() - at);
            at += static_cast<std::size_t>(skipped);
            return skipped;
        }
        for (; skipped < count && open(); close()) {
            skipped += current->skip(count - skipped);
            if (skipped == count) {
                break;
            }
        }
        return skipped;
    }

    bool more() override {
        for (; open(); close()) {
            if (current->more()) {
                return true;
            }
        }
        return false;
    }

    std::optional<std::uint64_t> frames_left() const override {
        if (!one_frame) {
            return std::nullopt;
        }
        const std::uint64_t unopened = numbers.size() - at;
        return current ? unopened - 1 + current->frames_left().value_or(0) : unopened;
    }

    location last_place() const override { return place; }
    bool has_file_for_each() const override { return one_frame; }

  private:
    bool open() {
        if (!current && at < numbers.size()) {
            current = open_one(files.path(numbers[at]));
        }
        return current != nullptr;
    }

    void close() {
        current.reset();
        ++at;
    }

    sequence_pattern files;
    std::vector<std::uint64_t> numbers;
    bool one_frame;
    source_opener open_one;
    std::unique_ptr<frame_source> current;  // of numbers[at]
    std::size_t at = 0;
    location place;
};

}  // namespace

std::optional<sequence_pattern> sequence_pattern::parse(const std::string& path) {
    sequence_pattern made;
    made.given = path;
    bool found = false;
    std::string text;
    for (std::size_t at = 0; at < path.size();) {
        const conversion read = path[at] == '%' ? read_conversion(path, at) : conversion();
        if (!read.number) {
            text += path[at];
            at += std::max<std::size_t>(read.length, 1);
            continue;
        }
        if (found || path.find('/', at) != std::string::npos) {
            fail_usage(path + ": a numbered sequence has one number, in the name of its files",
                       "for example shot/frame.%04d.png; a percent sign that is none is written %%");
        }
        found = true;
        const std::size_t name = text.rfind('/') + 1;  // 0 without a folder
        made.folder = text.substr(0, name);
        made.before = text.substr(name);
        made.digits = read.digits;
        text.clear();
        at += read.length;
    }
    made.after = text;
    return found ? std::optional<sequence_pattern>(made) : std::nullopt;
}

std::optional<sequence_pattern> sequence_pattern::of_input(const std::string& path) {
    std::error_code ignored;
    return std::filesystem::exists(path, ignored) ? std::nullopt : parse(path);
}

std::string sequence_pattern::path(std::uint64_t number) const {
    const std::string plain = std::to_string(number);
    const std::string padded = std::string(digits - std::min(digits, plain.size()), '0') + plain;
    return folder + before + padded + after;
}

std::vector<std::uint64_t> sequence_pattern::numbers() const {
    std::vector<std::uint64_t> found;
    std::error_code problem;
    const std::string searched = folder.empty() ? "." : folder;
    for (std::filesystem::directory_iterator entry(searched, problem), end; !problem && entry != end;
         entry.increment(problem)) {
        const std::string name = entry->path().filename().string();
        std::uint64_t number = 0;
        if (name.size() > before.size() &&
            std::from_chars(name.data() + before.size(), name.data() + name.size(), number).ec == std::errc() &&
            path(number) == folder + name) {
            found.push_back(number);
        }
    }
    // Where there is no folder there are no files either.
    if (problem && problem != std::errc::no_such_file_or_directory) {
        throw failure(exit_code::io, {given, {}}, "cannot read the folder " + searched + ": " + problem.message(),
                      system_hint(problem.value()));
    }
    std::sort(found.begin(), found.end());
    return found;
}

std::unique_ptr<frame_source> open_sequence_source(const sequence_pattern& files, std::optional<std::uint32_t> start,
                                                   bool one_frame, source_opener open_one) {
    std::vector<std::uint64_t> numbers = files.numbers();
    if (start) {
        numbers.erase(numbers.begin(), std::lower_bound(numbers.begin(), numbers.end(), *start));
    }
    if (numbers.empty() || (start && numbers.front() != *start)) {
        throw failure(
            exit_code::io, {files.text(), {}},
            "there is no file " + (start ? files.path(*start) : "of this sequence, such as " + files.path(0)),
            "the number of digits must be that of the names: %04d stands for 0000, %d for 0; a percent sign that "
            "is no number is written %%");
    }
    for (std::size_t i = 1; i < numbers.size(); ++i) {
        if (numbers[i] != numbers[i - 1] + 1) {
            throw failure(
                exit_code::io, {files.text(), {}},
                "the sequence has a gap: " + files.path(numbers[i - 1]) + " is followed by " + files.path(numbers[i]),
                "put the missing files into their places, or move one part elsewhere");
        }
    }
    return std::make_unique<sequence_source>(files, std::move(numbers), one_frame, std::move(open_one));
}

}  // namespace qvr
