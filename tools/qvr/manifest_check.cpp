// SPDX-License-Identifier: BSD-3-Clause
#include "manifest_check.h"

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

manifest_result check_manifest(const std::string& path, const std::string& manifest_path,
                               const std::function<void(const failure&)>& report) {
    checked_reader reader(path, manifest_path);
    manifest_result result;
    std::string last_words;
    for (bool more = true; more;) {
        try {
            more = reader.next();
            result.frames += more ? 1 : 0;
        } catch (const failure& problem) {
            if (problem.code() != exit_code::data) {
                throw;
            }
            // The same again: nothing can be found behind it.
            more = problem.text() != last_words;
            if (more) {
                last_words = problem.text();
                ++result.bad;
                report(problem);
            }
        }
    }
    return result;
}

}  // namespace qvr
