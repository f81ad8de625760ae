// SPDX-License-Identifier: BSD-3-Clause
#include "command.h"

#include <strings.h>

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <system_error>

#include "status_line.h"

namespace qvr {

namespace {

// "1920x1080"
void parse_size(const std::string& text, layout_request& to) {
    const char* at = text.data();
    const char* end = at + text.size();
    const auto width = std::from_chars(at, end, to.width);
    bool good = width.ec == std::errc() && width.ptr != end && (*width.ptr == 'x' || *width.ptr == 'X');
    if (good) {
        const auto height = std::from_chars(width.ptr + 1, end, to.height);
        good = height.ec == std::errc() && height.ptr == end;
    }
    if (!good || to.width == 0 || to.height == 0) {
        fail_usage("--size " + text + ": this is not a size", "write width and height like this: --size 1920x1080");
    }
}

}  // namespace

void layout_options::add_format(argument_list& to, const char* order_help, const char* type_help) {
    to.text("--order", order, "N|NAME", order_help);
    to.text("--type", type, "N|NAME", type_help);
}

void layout_options::add_strides(argument_list& to) {
    to.number("--row-bytes", row_bytes,
              "Raw frames: bytes from row to row of the first or only plane,\n"
              "and of the alpha plane of A420; not given: rows without a gap");
    to.number("--row-bytes2", row_bytes2,
              "Raw frames: the same for Cb and Cr of I420 and A420,\n"
              "and for the alpha plane of YUY2+A and UYVY+A");
}

layout_request layout_options::resolve() const {
    layout_request request;
    request.format = parse_format(order, type);
    if (!size.empty()) {
        parse_size(size, request);
    }
    request.row_bytes = row_bytes;
    request.row_bytes2 = row_bytes2;
    request.interlaced = interlaced;
    return request;
}

void run_options::add(argument_list& to) {
    constexpr std::uint32_t k_most_threads = 1024;
    to.number("--threads", threads, "Threads of the codec; 0 or not given: one for each processor", k_most_threads);
    to.flag("--time", time, "Print how fast the codec calls were, files and PNG not counted");
    to.flag("-q,--quiet", quiet, "Print nothing when all goes well");
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
        throw failure(exit_code::io, {"standard output", {}}, std::string("cannot write it: ") + std::strerror(errno));
    }
}

}  // namespace qvr
