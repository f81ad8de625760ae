// SPDX-License-Identifier: BSD-3-Clause
//
// The one table of the kinds of files that frames are read from and written to. A further kind is a row of it and a file
// of its own.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "frame.h"

namespace qvr {

struct container {
    const char* name;             // what --from and --to take
    const char* called;           // "a PNG", in messages
    const char* extension;        // of files that are one: ".png"; empty: none says so
    bool one_frame;               // a file never holds more than one frame
    bool keeps_rate;              // frames a second
    const char* keeps;            // for people
    bool (*begins)(input_file&);  // whether a file is one by its first bytes; null: they do not tell
    std::unique_ptr<frame_source> (*open_source)(std::unique_ptr<input_file>, const layout_request&);
    std::unique_ptr<frame_sink> (*open_sink)(const std::string& path, const layout_request&);
};

const std::vector<container>& all_containers();

// The kind of file that a path ends in, by its extension; null when it is none of the table's.
const container* container_by_extension(const std::string& path);

// The kind of file that an opened input is; raw_example: options of raw frames, for a hint.
const container& container_of_input(const std::string& path, input_file& file, const layout_request& request,
                                    const char* raw_example);

// The kind of file that an output becomes.
const container& container_of_output(const std::string& path, const layout_request& request);

// Refuses an output whose name says that it is of another kind than the one, by its name in the table, that it becomes,
// or that it is many files: the command writes one.
void require_name_of(const char* command, const char* kind, const std::string& path);

// Opens what a path names: a file, "-" for standard input, or a numbered sequence of files as in "frame.%07d.png".
// The kind of file is the one of the request, else raw frames when the request has a size, else what the first bytes
// say.
std::unique_ptr<frame_source> open_source(const std::string& path, const layout_request& request,
                                          const char* raw_example);

// The same for outputs. The kind of file is the one of the request, else that of the extension, else raw frames.
std::unique_ptr<frame_sink> open_sink(const std::string& path, const layout_request& request);

}  // namespace qvr
