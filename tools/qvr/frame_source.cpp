// SPDX-License-Identifier: BSD-3-Clause
#include "command.h"
#include "frame.h"
#include "png_file.h"

namespace qvr {

std::unique_ptr<frame_source> open_source(const std::string& path, input_file& file, const layout_request& request,
                                          const char* raw_example) {
    const bool raw = request.width != 0;
    if (raw && ends_in(path, ".png")) {
        throw failure(exit_code::usage, {file.name(), {}}, "--size is for raw frames, but this is a PNG by its name",
                      "leave --size out, or rename the file if it does hold raw frames");
    }
    if (raw) {
        return open_raw_source(file, request);
    }
    if (begins_like_png(file)) {
        return open_png_source(file, request);
    }
    if (ends_in(path, ".png")) {
        throw failure(exit_code::data, {file.name(), {}}, "this is not a PNG: its first eight bytes are others",
                      "the file is damaged or has the wrong name");
    }
    throw failure(exit_code::usage, {file.name(), {}}, "this is not a PNG, and raw frames need --size",
                  std::string("for example ") + raw_example);
}

}  // namespace qvr
