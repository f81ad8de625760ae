// SPDX-License-Identifier: BSD-3-Clause
#include <cstdio>
#include <memory>
#include <optional>

#include "codec.h"
#include "command.h"
#include "distinct.h"
#include "json_output.h"
#include "png_file.h"
#include "qvr_file.h"

namespace qvr {

namespace {

constexpr const char* k_about = "Take wrapped payloads, and the alpha beside them, out of a .qvr file";

constexpr const char* k_more = R"(
Each payload becomes a file of its own, byte for byte as it was wrapped. The names begin with the number of the
frame, six digits or more, and go on with the number of the payload in it, both counted from 0:
  frame000000-0.qcxf        a compressed QCX frame
  frame000000-alpha.png     the alpha plane beside it, a grey PNG of 8 or 16 bits
  frame000000-0.stch        the first of stitched chunks
  frame000000-1.tile        each further chunk
DIR is made when there is none. All files appear in it together at the end, or none when anything is wrong; files
of the same names are replaced, others are left alone.

Examples:
  qvr unwrap out.qvr --into parts
  qvr unwrap out.qvr --into first --frame 0)";

struct unwrap_options {
    std::string input;
    std::string folder;
    std::optional<std::uint32_t> only_frame;
    bool json = false;
    run_options run;
};

const char* extension(std::uint32_t type) {
    switch (type) {
        case QVRUncompressed_WrapQCX:
            return ".qcxf";
        case QVRUncompressed_WrapStitched:
            return ".stch";
        default:
            return ".tile";
    }
}

std::string counted(unsigned long long count, const char* what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

class unwrapping {
  public:
    explicit unwrapping(const unwrap_options& given)
        : options(given), input(given.input), reader(input), codec(given.run.threads), folder(given.folder) {}

    void run() {
        unsigned long long frames = 0;
        if (options.only_frame) {
            reader.find(*options.only_frame);
            unwrap_frame();
            ++frames;
        } else {
            for (; reader.next(); ++frames) {
                unwrap_frame();
            }
            reader.require_some();
        }
        require_payloads();
        folder.commit();
        if (unwrapped < frames) {
            warn(input.name(), counted(frames - unwrapped, "frame") + " of " + std::to_string(frames) +
                                   " without wrapped payloads left out; 'qvr decode' takes them out");
        }
        if (!options.run.quiet) {
            say(options.folder + ": " + counted(payloads, "payload") + " of " + std::to_string(payload_bytes) +
                " bytes and " + counted(planes, "alpha plane") + " from " + counted(unwrapped, "frame"));
        }
        if (options.run.time) {
            say(options.folder + ": unwrap: " + time_text(codec.time(), unwrapped));
        }
        if (options.json) {
            print_result("unwrap", options.folder, unwrapped, codec.time(),
                         {{"payloads", payloads}, {"payload_bytes", payload_bytes}, {"alpha_planes", planes}});
        }
    }

  private:
    void unwrap_frame() {
        const wrapped_contents found = codec.read_wrapped(reader.bytes(), reader.place());
        if (found.records.empty()) {
            return;
        }
        std::size_t number = 0;
        for (const wrapped_payload& payload : codec.unwrap(reader.bytes(), found, current, reader.place())) {
            const std::string name = stem() + std::to_string(number++) + extension(payload.type);
            output_file file(place(name), folder.shown(name));
            file.write(payload.data.data, payload.data.size);
            file.commit();
            payload_bytes += payload.data.size;
        }
        payloads += number;
        ++unwrapped;
        if (current.layout.colorComponentOrder == QVRUncompressed_OrderAlpha) {
            write_alpha();
        }
    }

    void write_alpha() {
        const std::string name = stem() + "alpha.png";
        const picture shape = shape_of(current.layout);
        if (shape.width == 0 || shape.height == 0) {
            throw failure(exit_code::data, reader.place(), "the alpha plane has no pixels, which no PNG can show",
                          "'qvr info' shows its size");
        }
        output_file file(place(name), folder.shown(name));
        write_png(file, shape, current.samples.data());
        file.commit();
        ++planes;
    }

    std::string place(const std::string& name) {
        require_distinct({{"IN.qvr", options.input}}, {{"a file to unwrap", folder.shown(name)}});
        return folder.place(name);
    }

    std::string stem() const {
        char text[40];
        std::snprintf(text, sizeof text, "frame%06llu-", reader.number());
        return text;
    }

    void require_payloads() const {
        if (unwrapped == 0) {
            const location where = options.only_frame ? reader.place() : location{input.name(), {}};
            throw failure(exit_code::data, where, "there are no wrapped payloads in it",
                          "'qvr decode' takes plain frames out; 'qvr info' shows what the file holds");
        }
    }

    const unwrap_options& options;
    input_file input;
    frame_reader reader;
    decoder codec;
    output_folder folder;
    frame current;
    unsigned long long unwrapped = 0;
    unsigned long long payloads = 0;
    unsigned long long payload_bytes = 0;
    unsigned long long planes = 0;
};

}  // namespace

void add_unwrap(command_line& to) {
    const auto options = std::make_shared<unwrap_options>();
    argument_list list = to.add_command("unwrap", k_about, [options] { unwrapping(*options).run(); });
    list.explain(k_more);
    list.positional("IN.qvr", options->input, "File to take apart; '-' is standard input");
    list.text("--into", options->folder, "DIR", "Folder for the files");
    list.require("--into");
    list.number("--frame", options->only_frame, "Take apart this frame alone, counted from 0; default: all frames");
    options->run.add(list, false);
    list.flag("--json", options->json, k_json_help);
}

}  // namespace qvr
