// SPDX-License-Identifier: BSD-3-Clause
#include <array>
#include <cinttypes>
#include <cstdio>
#include <memory>

#include "command.h"
#include "frame_scan.h"
#include "json_boxes.h"
#include "manifest_check.h"
#include "verification.h"

namespace qvr {

namespace {

constexpr const char* k_about = "Prove that a .qvr file is sound: decode, encode again, compare every byte";

constexpr const char* k_more = R"(
Every frame is decoded and encoded again with the same choices, and the bytes are compared; boxes, rows and slices are
checked one by one besides. So is found what decoding alone lets pass. A frame is then
  identical   byte for byte what 'qvr encode' or 'qvr wrap' would write
  different   sound and complete, but written by something else: a warning, with --strict an error
  damaged     against the rules of the format, or not complete: an error
What stands in a wrapped payload is not looked at, apart from the header of a QCX frame.
Each finding is printed with its frame, its offset in the file and its name, and the counts at the end. The exit code
is 1 when there is an error.

)";

constexpr const char* k_examples = R"(
Examples:
  qvr verify clip.qvr
  qvr verify clip.qvr --strict -q && echo good
  qvr verify clip.qvr --manifest clip.manifest
  qvr verify clip.qvr --json)";

// The list of findings belongs to the help, so that a name can be looked up.
std::string help_text() {
    std::string text = k_more;
    for (const finding_row& row : all_findings()) {
        char line[160];
        std::snprintf(line, sizeof line, "  %-8s %-16s %s\n", severity_name(row.grade), row.name, row.text);
        text += line;
    }
    return text + k_examples;
}

struct verify_options {
    std::string input;
    std::optional<std::uint32_t> only_frame;
    std::string manifest;
    bool strict = false;
    bool json = false;
    run_options run;
};

struct totals {
    unsigned long long frames = 0;
    unsigned long long identical = 0;
    unsigned long long different = 0;
    unsigned long long damaged = 0;

    void count(const frame_verdict& verdict) {
        ++frames;
        ++(verdict.has_errors ? damaged : verdict.findings.empty() ? identical : different);
    }
};

class verifying {
  public:
    explicit verifying(const verify_options& given) : options(given), work(given.run.threads) {}

    void run() {
        scan_frames(options.input, options.only_frame, [this](const found_frame& found) {
            name = found.reader.place().file;
            check(found);
            return frame_problem();
        });
        if (!options.manifest.empty()) {
            unlisted = find_what_is_not_listed(options.input, options.manifest);
        }
        print_summary();
        finish_standard_output();
        print_findings(unlisted);
        if (options.run.time) {
            say(name + ": verify: " + time_text(work.time(), all.frames));
        }
        if (first_bad) {
            throw failure(exit_code::data, first_bad->place, first_bad->text + rest_text(), first_bad->hint);
        }
        require_listed(name, unlisted);
    }

  private:
    struct bad_frame {
        location place;
        std::string text;
        std::string hint;
    };

    bool is_bad(const frame_verdict& verdict) const {
        return verdict.has_errors || (options.strict && !verdict.findings.empty());
    }

    void check(const found_frame& found) {
        frame_verdict verdict;
        if (found.broken) {
            verdict.add({finding_kind::not_a_frame, 0, found.broken->what()});
        } else {
            verdict = work.verify(found.reader);
        }
        all.count(verdict);
        if (is_bad(verdict) && !first_bad) {
            first_bad = describe(found, verdict);
        }
        print(found.reader, verdict);
    }

    static bad_frame describe(const found_frame& found, const frame_verdict& verdict) {
        const finding& worst = worst_of(verdict);
        std::string text = worst.detail;
        if (worst.offset > 0) {
            text = "offset " + std::to_string(found.reader.offset() + worst.offset) + ": " + text;
        }
        const char* advice = verdict.has_errors ? "'qvr dump' shows its boxes; encode the frame again from its source"
                                                : "the frame is sound; leave --strict out to take such frames";
        return {found.reader.place(), text, found.broken ? found.broken->hint() : advice};
    }

    static const finding& worst_of(const frame_verdict& verdict) {
        for (const finding& each : verdict.findings) {
            if (row_of(each.kind).grade == severity::error) {
                return each;
            }
        }
        return verdict.findings.front();
    }

    void print(const frame_reader& reader, const frame_verdict& verdict) const {
        if (options.json) {
            json document = json_frame("qvr-verify/1", reader);
            document["result"] = verdict.name();
            document["findings"] = json_findings(verdict.findings, reader.offset());
            document["findings_left_out"] = verdict.left_out;
            print_json(document);
        } else if (!options.run.quiet) {
            for (const finding& each : verdict.findings) {
                const finding_row& row = row_of(each.kind);
                std::printf("frame %llu at offset %" PRIu64 ": %s: %s: %s\n", reader.number(),
                            reader.offset() + each.offset, severity_name(options.strict ? severity::error : row.grade),
                            row.name, each.detail.c_str());
            }
            if (verdict.left_out > 0) {
                std::printf("frame %llu: %zu more findings\n", reader.number(), verdict.left_out);
            }
        }
    }

    void print_summary() const {
        if (options.json) {
            json document = json_document("qvr-verify-summary/1");
            document.update({{"file", name},
                             {"frames", all.frames},
                             {"identical", all.identical},
                             {"different", all.different},
                             {"damaged", all.damaged},
                             {"strict", options.strict},
                             {"manifest", options.manifest.empty() ? json(nullptr) : json_manifest()},
                             {"good", !first_bad && unlisted.count == 0}});
            print_json(document);
        } else if (!options.run.quiet) {
            std::printf("%s: %llu frame%s: %llu identical, %llu different but sound, %llu damaged\n", name.c_str(),
                        all.frames, all.frames == 1 ? "" : "s", all.identical, all.different, all.damaged);
        }
    }

    json json_manifest() const {
        json findings = json::array();
        for (const failure& each : unlisted.first) {
            findings.push_back({{"message", each.message()}, {"hint", each.hint()}});
        }
        return {{"file", options.manifest}, {"findings_count", unlisted.count}, {"findings", findings}};
    }

    std::string rest_text() const {
        const unsigned long long bad = all.damaged + (options.strict ? all.different : 0);
        return bad > 1 ? "; " + std::to_string(bad) + " of " + std::to_string(all.frames) + " frames are bad" : "";
    }

    const verify_options& options;
    verifier work;
    std::string name;
    totals all;
    manifest_findings unlisted;
    std::optional<bad_frame> first_bad;
};

}  // namespace

void add_verify(command_line& to) {
    const auto options = std::make_shared<verify_options>();
    argument_list list = to.add_command("verify", k_about, [options] { verifying(*options).run(); });
    list.explain(help_text().c_str());
    list.positional("FILE.qvr", options->input, "File to check; '-' is standard input");
    list.number("--frame", options->only_frame, "Check this frame alone, counted from 0; default: all frames");
    list.flag("--strict", options->strict, "Take warnings for errors");
    list.text("--manifest", options->manifest, "FILE",
              "Hold the file against this manifest as well: all frames, their sizes and checksums;\n"
              "default: none");
    list.excludes("--manifest", "--frame");
    list.flag("--json", options->json, k_json_help);
    options->run.add(list, false);
}

}  // namespace qvr
