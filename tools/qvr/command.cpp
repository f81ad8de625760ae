// SPDX-License-Identifier: BSD-3-Clause
#include "command.h"

#include <strings.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "containers.h"
#include "numbers.h"
#include "status_line.h"

namespace qvr {

namespace {

// "1920x1080"
void parse_size(const std::string& text, layout_request& to) {
    const auto size = parse_pair<std::uint32_t>(text, "xX");
    if (!size || size->first == 0 || size->second == 0) {
        fail_usage("--size " + text + ": this is not a size", "write width and height like this: --size 1920x1080");
    }
    to.width = size->first;
    to.height = size->second;
}

template <class Rows>
std::vector<std::string> names_of(const Rows& rows) {
    std::vector<std::string> names;
    names.reserve(rows.size());
    for (const auto& row : rows) {
        names.emplace_back(row.name);
    }
    return names;
}

// "25", "30000:1001" or "30000/1001"
frame_rate parse_rate(const std::string& text) {
    const halves parts = split_at(text, ":/");
    const frame_rate rate = {parse_number<std::uint32_t>(parts.first).value_or(0),
                             parse_number<std::uint32_t>(parts.second.value_or("1")).value_or(0)};
    if (rate.frames == 0 || rate.seconds == 0) {
        fail_usage("--rate " + text + ": this is not a frame rate",
                   "write frames a second: --rate 25, or as a fraction: --rate 30000:1001");
    }
    return rate;
}

}  // namespace

std::vector<std::string> order_names() {
    std::vector<std::string> names = names_of(all_orders());
    const std::vector<std::string> whole_formats = names_of(all_named_formats());
    for (const std::string& name : whole_formats) {  // some name an order as well
        if (std::find(names.begin(), names.end(), name) == names.end()) {
            names.push_back(name);
        }
    }
    return names;
}

std::vector<std::string> type_names() {
    return names_of(all_types());
}

void layout_options::add_format(argument_list& to, const char* order_help, const char* type_help,
                                const std::string& prefix) {
    const std::string both = prefix + "format";
    to.text((prefix + "order").c_str(), order, "N|NAME", order_help);
    to.text((prefix + "type").c_str(), type, "N|NAME", type_help);
    to.text(both.c_str(), format, "NAME",
            "Order and type in one: a name of the third table of 'qvr formats';\n"
            "not given: what --order and --type say");
    to.suggest((prefix + "order").c_str(), order_names());
    to.suggest((prefix + "type").c_str(), type_names());
    to.suggest(both.c_str(), names_of(all_named_formats()));
    to.excludes(both.c_str(), (prefix + "order").c_str());
    to.excludes(both.c_str(), (prefix + "type").c_str());
}

void layout_options::add_strides(argument_list& to, const std::string& prefix) {
    to.number((prefix + "row-bytes").c_str(), row_bytes,
              "Raw frames: bytes from row to row of the first or only plane,\n"
              "and of the alpha plane of A420; default: rows without a gap");
    to.number((prefix + "row-bytes2").c_str(), row_bytes2,
              "Raw frames: the same for Cb and Cr of I420 and A420,\n"
              "and for the alpha plane of YUY2+A and UYVY+A; default: rows without a gap");
}

void layout_options::add_container(argument_list& to, const char* option) {
    to.text(option, container, "KIND",
            option == std::string("--from")
                ? "Kind of file that IN is; default: what its first bytes say"
                : "Kind of file that OUT becomes; default: what its name ends in, else raw");
    to.suggest(option, names_of(all_containers()));
}

void layout_options::add_start(argument_list& to, side of, const std::string& prefix) {
    to.number((prefix + "start").c_str(), start,
              of == side::input ? "First number of a numbered sequence as IN, as in frame.%04d.png;\n"
                                  "default: the lowest that there is"
                                : "First number of a numbered sequence as OUT, as in frame.%04d.png;\ndefault: 0");
}

void layout_options::add_rate(argument_list& to) {
    to.text("--rate", rate, "N[:M]", "Frames a second, for files that say so (Y4M); default: 25");
}

void layout_options::add_strict(argument_list& to) {
    to.flag("--strict", strict, "Refuse, instead of warning, when anything would be lost");
}

layout_request layout_options::resolve() const {
    layout_request request;
    request.format = parse_format(order, type, format);
    if (!size.empty()) {
        parse_size(size, request);
    }
    request.row_bytes = row_bytes;
    request.row_bytes2 = row_bytes2;
    request.interlaced = interlaced;
    request.container = container;
    request.start = start;
    if (!rate.empty()) {
        request.rate = parse_rate(rate);
    }
    request.losses = std::make_shared<loss_log>(strict);
    return request;
}

void run_options::add(argument_list& to, bool shared, bool timed) {
    constexpr std::uint32_t k_most_threads = 1024;
    to.group("Running");
    to.number("--threads", threads,
              shared ? "Threads of the codec within a frame; default: 0, one for each processor, or what\n"
                       "-j leaves of them"
                     : "Threads of the codec; default: 0, one for each processor",
              k_most_threads);
    if (timed) {
        to.flag("--time", time, "Print how fast the codec calls were, reading and writing files not counted");
    }
    to.flag("-q,--quiet", quiet, "Print nothing when all goes well");
    to.group(nullptr);
}

bool ends_in(const std::string& path, const char* extension) {
    const std::size_t length = std::strlen(extension);
    return path.size() >= length && strcasecmp(path.c_str() + path.size() - length, extension) == 0;
}

void say(const std::string& line) {
    print_message(line + "\n");
}

void finish_standard_output() {
    if (std::fflush(stdout) != 0 || std::ferror(stdout)) {
        const int reason = errno;
        throw failure(exit_code::io, {"standard output", {}}, std::string("cannot write it: ") + std::strerror(reason),
                      system_hint(reason));
    }
}

}  // namespace qvr
