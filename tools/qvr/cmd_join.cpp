// SPDX-License-Identifier: BSD-3-Clause
#include <filesystem>
#include <memory>

#include "command.h"
#include "containers.h"
#include "distinct.h"
#include "json_output.h"
#include "manifest_check.h"

namespace qvr {

namespace {

constexpr const char* k_about = "Join parts of a clip, made with --range or --chunk, to one .qvr file";

constexpr const char* k_more = R"(
The frames of all parts are written one after the other, each whole. A part that has a manifest beside it, PART.manifest
or PART with .manifest in the place of .qvr, is held against it: every frame must have the size and the checksum
that it says, and each part must begin where the one before it has ended: the first one with frame 0, and the last one
must end with the last frame of the clip, where a manifest says how many there are. --partial joins some of the parts.
Parts without a manifest are taken in the order in which they are given.

Examples:
  qvr encode clip.yuv part1.qvr --size 1920x1080 --order UYVY --type U8 --chunk 1/2 --manifest part1.manifest
  qvr encode clip.yuv part2.qvr --size 1920x1080 --order UYVY --type U8 --chunk 2/2 --manifest part2.manifest
  qvr join part1.qvr part2.qvr -o clip.qvr --manifest clip.manifest)";

struct join_options {
    std::vector<std::string> parts;
    std::string output;
    std::string manifest;
    bool partial = false;
    bool quiet = false;
    bool json = false;
};

constexpr const char* k_give_all =
    "give all parts, in the order of their frames; --partial joins some that follow each other";

std::optional<std::string> manifest_beside(const std::string& part) {
    const std::filesystem::path in_its_place = std::filesystem::path(part).replace_extension(".manifest");
    for (const std::string& path : {part + ".manifest", in_its_place.string()}) {
        std::error_code ignored;
        if (std::filesystem::is_regular_file(path, ignored)) {
            return path;
        }
    }
    return std::nullopt;
}

class joining {
  public:
    explicit joining(const join_options& given) : options(given), output(given.output) {}

    void run() {
        for (const std::string& part : options.parts) {
            checked_reader reader(part, manifest_beside(part));
            require_order(reader, part);
            take(reader);
            behind = reader.has_manifest() ? reader.end() : behind + reader.end();
            require_one_total(reader, part);
        }
        require_complete();
        output.commit();
        if (list) {
            list->commit(behind, total);
        }
        if (!options.quiet) {
            say(output.name() + ": " + std::to_string(frames) + (frames == 1 ? " frame of " : " frames of ") +
                std::to_string(options.parts.size()) + (options.parts.size() == 1 ? " part, " : " parts, ") +
                std::to_string(listed) + " with a manifest");
        }
        if (options.json) {
            print_result("join", output.name(), frames, {},
                         {{"bytes", output.bytes_written()}, {"parts", options.parts.size()}});
        }
    }

  private:
    void require_order(const checked_reader& reader, const std::string& part) {
        const bool first = &part == &options.parts.front();
        if (first) {
            behind = options.partial ? reader.first() : 0;
            if (!options.manifest.empty()) {
                list.emplace(options.manifest, output.name(), behind);
            }
        }
        if (reader.has_manifest() && reader.first() != behind) {
            throw failure(exit_code::usage, {part, {}},
                          "it begins with frame " + std::to_string(reader.first()) + ", but frame " +
                              std::to_string(behind) + " is next",
                          k_give_all);
        }
        listed += reader.has_manifest() ? 1 : 0;
    }

    void require_one_total(const checked_reader& reader, const std::string& part) {
        if (total && reader.total() && *total != *reader.total()) {
            throw failure(exit_code::usage, {part, {}},
                          "it is a part of " + std::to_string(*reader.total()) +
                              " frames, but those before it are of " + std::to_string(*total),
                          "give parts of one clip");
        }
        total = total ? total : reader.total();
    }

    void require_complete() const {
        if (frames == 0) {
            throw failure(exit_code::data, {options.parts.front(), {}}, "there is no frame in any of the parts",
                          "what was to write them has failed, or is not done yet");
        }
        if (total && behind != *total && !options.partial) {
            throw failure(exit_code::usage, {options.parts.back(), {}},
                          "the parts end before frame " + std::to_string(behind) + ", but the clip has " +
                              std::to_string(*total) + " frames",
                          k_give_all);
        }
    }

    void take(checked_reader& reader) {
        const unsigned long long start = behind;
        for (; reader.next(); ++frames) {
            output.write(reader.bytes().data, reader.bytes().size);
            if (list) {
                const unsigned long long number = reader.has_manifest() ? reader.number() : start + reader.number();
                list->add(number, reader.bytes().size, reader.checksum());
            }
        }
    }

    const join_options& options;
    output_file output;
    std::optional<manifest_writer> list;
    unsigned long long frames = 0;
    unsigned long long listed = 0;  // parts with a manifest
    unsigned long long behind = 0;  // the number of the frame that is next
    std::optional<unsigned long long> total;
};

// The manifests of the parts are read as well.
void require_other_files(const join_options& options) {
    std::vector<named_file> read;
    for (const std::string& part : options.parts) {
        read.push_back({"PART", part});
        read.push_back({"the manifest of a part", manifest_beside(part).value_or("")});
    }
    require_distinct(read,
                     {{"OUT", options.output}, {"--manifest", options.manifest}, {"--json", options.json ? "-" : ""}});
}

}  // namespace

void add_join(command_line& to) {
    const auto options = std::make_shared<join_options>();
    argument_list list = to.add_command("join", k_about, [options] {
        if (options->json) {
            require_free_output(options->output);
        }
        require_name_of("join", "qvr", options->output);
        require_other_files(*options);
        joining(*options).run();
    });
    list.explain(k_more);
    list.positionals("PART.qvr", options->parts, "Files to join, in the order of their frames");
    list.text("-o,--output", options->output, "OUT.qvr", "File to write; '-' is standard output");
    list.require("--output");
    list.text("--manifest", options->manifest, "FILE", "Write a manifest of the joined file; default: none");
    list.flag("--partial", options->partial, "Take parts that are not the whole clip");
    list.flag("-q,--quiet", options->quiet, "Print nothing when all goes well");
    list.flag("--json", options->json, k_json_help);
}

}  // namespace qvr
