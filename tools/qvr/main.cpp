// SPDX-License-Identifier: BSD-3-Clause
#include <cstdint>
#include <cstdio>
#include <exception>
#include <new>
#include <string>

#include "QVRUncompressed.h"
#include "command.h"
#include "failure.h"

namespace {

constexpr const char* k_about =
    "qvr: raw video frames to a lossless, self-describing, uncompressed file and back.\n"
    "\n"
    "A .qvr file holds one or more frames one after the other. Each carries its size, its sample format and its\n"
    "planes, so that nothing about it has to be remembered; every sample comes back exactly as it was. Alpha can\n"
    "be coded by run lengths, which makes mattes small and loses nothing.\n";

constexpr const char* k_more = R"(
Try:
  qvr encode photo.png photo.qvr --alpha-rle     # a picture into a .qvr file
  qvr info photo.qvr                             # what is in it
  qvr view photo.qvr -o sheet.png                # the same as a picture to look at
  qvr verify photo.qvr                           # a proof that it is sound
  qvr decode photo.qvr back.png                  # and out of it again
  qvr formats                                    # the sample formats and their names
  qvr wrap --help                                # compressed frames carried beside alpha, stitched chunks
  qvr bench                                      # how fast this machine encodes and decodes
  qvr encode --help                              # everything about one command

Messages go to standard error as 'qvr: FILE: WHERE: WHAT', often with a hint on the next line.)";

std::string version_text() {
    std::uint32_t major = 0;
    std::uint32_t minor = 0;
    std::uint32_t patch = 0;
    std::uint32_t build = 0;
    char release = '?';
    QVRUncompressed_GetVersion(&major, &minor, &patch, &build, &release);
    char text[120];
    std::snprintf(text, sizeof text, "qvr %d.%d.%d (library %u.%u.%u build %u%c)", QVRUNCOMPRESSED_VERSION_MAJOR,
                  QVRUNCOMPRESSED_VERSION_MINOR, QVRUNCOMPRESSED_VERSION_PATCH, major, minor, patch, build, release);
    return text;
}

int end(qvr::exit_code code) {
    return static_cast<int>(code);
}

void run(int argc, char** argv) {
    qvr::command_line line(k_about, k_more, version_text());
    qvr::add_encode(line);
    qvr::add_decode(line);
    qvr::add_convert(line);
    qvr::add_join(line);
    qvr::add_wrap(line);
    qvr::add_unwrap(line);
    qvr::add_info(line);
    qvr::add_dump(line);
    qvr::add_verify(line);
    qvr::add_view(line);
    qvr::add_formats(line);
    qvr::add_bench(line);
    qvr::add_generate(line);
    line.run(argc, argv);
    qvr::finish_standard_output();
}

}  // namespace

int main(int argc, char** argv) {
    try {
        run(argc, argv);
        return end(qvr::exit_code::good);
    } catch (const qvr::failure& problem) {
        std::fflush(stdout);
        std::fputs(problem.text().c_str(), stderr);
        return end(problem.code());
    } catch (const std::bad_alloc&) {
        std::fputs("qvr: not enough memory\nhint: the frame may be very large; 'qvr info' shows its size\n", stderr);
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "qvr: %s\n", problem.what());
    }
    return end(qvr::exit_code::io);
}
