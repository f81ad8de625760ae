// SPDX-License-Identifier: BSD-3-Clause
#include "containers.h"

#include <strings.h>

#include <utility>

#include "command.h"
#include "container_files.h"
#include "exr_file.h"
#include "foreign_kinds.h"
#include "png_file.h"
#include "pnm_file.h"
#include "sequence.h"

namespace qvr {

namespace {

template <const picture_format& format>
std::unique_ptr<frame_source> picture_in(std::unique_ptr<input_file> file, const layout_request& request) {
    return open_picture_source(format, std::move(file), request);
}

template <const picture_format& format>
std::unique_ptr<frame_sink> picture_out(const std::string& path, const layout_request& request) {
    return open_picture_sink(format, path, request);
}

const container& raw_container() {
    return all_containers().front();
}

const container& named_container(const std::string& name, const char* option) {
    for (const container& row : all_containers()) {
        if (strcasecmp(name.c_str(), row.name) == 0) {
            return row;
        }
    }
    std::string names;
    for (const container& row : all_containers()) {
        names += (names.empty() ? "" : ", ") + std::string(row.name);
    }
    fail_usage(std::string(option) + " " + name + ": there is no such kind of file", "it is one of " + names);
}

const container* container_by_content(input_file& file) {
    for (const container& row : all_containers()) {
        if (row.begins && row.begins(file)) {
            return &row;
        }
    }
    return nullptr;
}

// Such a file with --size would become frames of what is not its samples.
void refuse_known_content(input_file& file) {
    if (const container* by_content = container_by_content(file)) {
        throw failure(
            exit_code::usage, {file.name(), {}},
            std::string("--size is for raw frames, but this is ") + by_content->called + " by its first bytes",
            "leave --size out, or give --from raw if it does hold raw frames");
    }
}

}  // namespace

const container& container_of_input(const std::string& path, input_file& file, const layout_request& request,
                                    const char* raw_example) {
    const container* by_name =
        request.container.empty() ? container_by_extension(path) : &named_container(request.container, "--from");
    if (request.width != 0) {
        if (by_name && by_name != &raw_container()) {
            throw failure(exit_code::usage, {file.name(), {}},
                          std::string("--size is for raw frames, but this is ") + by_name->called +
                              (request.container.empty() ? " by its name" : " by --from"),
                          "leave --size out, or rename the file if it does hold raw frames");
        }
        // A pipe may have nothing to show yet, and what is wrong with the command is said at once.
        if (request.container.empty() && path != "-") {
            refuse_known_content(file);
        }
        return raw_container();
    }
    if (!request.container.empty()) {
        return *by_name;
    }
    if (const container* by_content = container_by_content(file)) {
        return *by_content;
    }
    if (const char* foreign = foreign_by_content(file)) {
        throw failure(by_name && by_name->begins ? exit_code::data : exit_code::usage, {file.name(), {}},
                      std::string("this is ") + foreign + ", which is not read",
                      "have another program make a PNG, PPM, OpenEXR picture or Y4M file of it; 'qvr formats' lists "
                      "what is read");
    }
    if (by_name && by_name->begins) {
        throw failure(exit_code::data, {file.name(), {}},
                      std::string("this is not ") + by_name->called + ": its first bytes are others",
                      "the file is damaged or has the wrong name");
    }
    throw failure(exit_code::usage, {file.name(), {}},
                  "this is no picture or clip that can be told by its first bytes, and raw frames need --size",
                  std::string("for example ") + raw_example + "; 'qvr formats' lists the kinds of files");
}

namespace {

void refuse_strides(const container& kind, const layout_request& request, const std::string& name, const char* use) {
    if (&kind != &raw_container() && (request.row_bytes != 0 || request.row_bytes2 != 0)) {
        throw failure(exit_code::usage, {name, {}}, std::string("--row-bytes and --row-bytes2 are for raw ") + use,
                      std::string("leave them out: ") + kind.called + " has no gap between its rows");
    }
}

std::unique_ptr<frame_source> open_one_source(const std::string& path, const layout_request& request,
                                              const char* raw_example) {
    auto file = std::make_unique<input_file>(path);
    const container& kind = container_of_input(path, *file, request, raw_example);
    refuse_strides(kind, request, file->name(), "frames");
    return kind.open_source(std::move(file), request);
}

}  // namespace

const std::vector<container>& all_containers() {
    static const std::vector<container> rows = {
        {"raw", "a file of raw frames", "", false, false, "every order and type, one frame after the other", nullptr,
         open_raw_source, open_raw_sink},
        {"qvr", "a .qvr file", ".qvr", false, false, "every order and type, but alpha only of U8 and U16",
         begins_like_qvr, open_qvr_source, open_qvr_sink},
        {"y4m", "a Y4M file", ".y4m", false, true,
         "YCbCr of 8, 10, 12 and 16 bits, grey of 8 and 16, frame rate, interlacing", begins_like_y4m, open_y4m_source,
         open_y4m_sink},
        {"png", "a PNG", ".png", true, false, "RGB, RGBA and grey of 8 and 16 bits", begins_like_png,
         picture_in<k_png_format>, picture_out<k_png_format>},
        {"pam", "a PAM", ".pam", false, false, "RGB and RGBA of 8, 10, 12 and 16 bits, grey of 8 and 16",
         begins_like_pam, picture_in<k_pam_format>, picture_out<k_pam_format>},
        {"ppm", "a PPM", ".ppm", false, false, "RGB of 8, 10, 12 and 16 bits", begins_like_ppm,
         picture_in<k_ppm_format>, picture_out<k_ppm_format>},
        {"pgm", "a PGM", ".pgm", false, false, "grey of 8 and 16 bits", begins_like_pgm, picture_in<k_pgm_format>,
         picture_out<k_pgm_format>},
        {"pnm", "a PNM", ".pnm", false, false, "what PPM and PGM keep", begins_like_pnm, picture_in<k_pnm_format>,
         picture_out<k_pnm_format>},
        {"exr", "an OpenEXR picture", ".exr", true, false, "RGB and RGBA of half and single float", begins_like_exr,
         picture_in<k_exr_format>, picture_out<k_exr_format>},
    };
    return rows;
}

const container& container_of_output(const std::string& path, const layout_request& request) {
    if (!request.container.empty()) {
        return named_container(request.container, "--to");
    }
    if (const char* foreign = foreign_by_ending(path)) {
        fail_usage(path + ": its name says " + foreign + ", which is not written",
                   "name it like out.png or out.y4m, or give --to raw for raw frames under this name; 'qvr formats' "
                   "lists what is written");
    }
    const container* by_name = container_by_extension(path);
    return by_name ? *by_name : raw_container();
}

void require_name_of(const char* command, const char* kind, const std::string& path) {
    if (sequence_pattern::parse(path)) {
        fail_usage(path + ": '" + command + "' writes one file, not a numbered sequence",
                   "'qvr convert' writes one; a percent sign that is no number is written %%");
    }
    const container* by_name = container_by_extension(path);
    const char* said = by_name ? by_name->called : foreign_by_ending(path);
    const container& written = named_container(kind, "");
    if (said && by_name != &written) {
        fail_usage(path + ": its name says " + said + ", but what is written is " + written.called,
                   std::string("give it a name that ends in ") + written.extension +
                       "; 'qvr convert' and 'qvr decode' write other kinds of files");
    }
}

const container* container_by_extension(const std::string& path) {
    for (const container& row : all_containers()) {
        if (*row.extension != '\0' && ends_in(path, row.extension)) {
            return &row;
        }
    }
    return nullptr;
}

std::unique_ptr<frame_source> open_source(const std::string& path, const layout_request& request,
                                          const char* raw_example) {
    const std::optional<sequence_pattern> files = sequence_pattern::of_input(path);
    if (!files) {
        return open_one_source(path, request, raw_example);
    }
    const std::vector<std::uint64_t> numbers = files->numbers();
    const container* by_name = container_by_extension(path);
    return open_sequence_source(
        *files, request.start, by_name && by_name->one_frame && request.container.empty(),
        [request, raw_example](const std::string& one) { return open_one_source(one, request, raw_example); });
}

std::unique_ptr<frame_sink> open_sink(const std::string& path, const layout_request& request) {
    const container& kind = container_of_output(path, request);
    refuse_strides(kind, request, path, "output");
    return kind.open_sink(path, request);
}

}  // namespace qvr
