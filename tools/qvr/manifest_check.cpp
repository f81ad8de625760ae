// SPDX-License-Identifier: BSD-3-Clause
#include "manifest_check.h"

#include <utility>

#include "status_line.h"

namespace qvr {

checked_reader::checked_reader(const std::string& path, const std::optional<std::string>& manifest_path)
    : file(path), reader(file) {
    if (manifest_path) {
        list.emplace(*manifest_path);
    }
}

bool checked_reader::next() {
    const std::optional<manifest_frame> listed = list ? list->next() : std::nullopt;
    if (!reader.next()) {
        if (listed) {
            throw failure(exit_code::data, reader.place(),
                          "the file ends here, but its manifest lists a further frame of " +
                              std::to_string(listed->size) + " bytes",
                          "the file was cut short: make it again, or fetch it again");
        }
        return false;
    }
    sum = checksum_text(reader.bytes());
    current = listed ? listed->number : reader.number();
    if (list) {
        compare(listed);
    }
    return true;
}

void checked_reader::compare(const std::optional<manifest_frame>& listed) {
    const std::string hint = "the frame or the manifest, " + list->name() + ", was changed: make both again";
    if (!listed) {
        throw failure(exit_code::data, reader.place(), "the manifest does not list this frame", hint);
    }
    if (listed->size != reader.frame_bytes()) {
        throw failure(exit_code::data, reader.place(),
                      "the frame has " + std::to_string(reader.frame_bytes()) + " bytes, but the manifest says " +
                          std::to_string(listed->size),
                      hint);
    }
    if (listed->checksum != sum) {
        throw failure(exit_code::data, reader.place(),
                      "the frame has the checksum " + sum + ", but the manifest says " + listed->checksum, hint);
    }
}

manifest_findings find_what_is_not_listed(const std::string& path, const std::string& manifest_path) {
    if (path == "-") {
        fail_usage("--manifest needs a file: standard input cannot be read twice", "name the file");
    }
    checked_reader reader(path, manifest_path);
    constexpr std::size_t k_most = 20;
    manifest_findings found;
    std::string last_words;
    for (bool more = true; more;) {
        try {
            more = reader.next();
        } catch (const failure& problem) {
            if (problem.code() != exit_code::data) {
                throw;
            }
            // The same again: nothing can be found behind it.
            more = problem.text() != std::exchange(last_words, problem.text());
            if (more && found.count++ < k_most) {
                found.first.push_back(problem);
            }
        }
    }
    return found;
}

void print_findings(const manifest_findings& found) {
    for (const failure& each : found.first) {
        print_message(each.text());
    }
    if (found.count > found.first.size()) {
        print_message("qvr: and " + std::to_string(found.count - found.first.size()) + " more like these\n");
    }
}

void require_listed(const std::string& name, const manifest_findings& found) {
    if (found.count > 0) {
        throw failure(exit_code::data, {name, {}},
                      std::to_string(found.count) + (found.count == 1 ? " frame is" : " frames are") +
                          " not as the manifest says",
                      "the messages above say which");
    }
}

}  // namespace qvr
