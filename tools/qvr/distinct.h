// SPDX-License-Identifier: BSD-3-Clause
//
// No command may write over what it reads, nor write two things to one file.
#pragma once

#include <string>
#include <vector>

namespace qvr {

struct named_file {
    const char* role;  // "IN", "--manifest"
    std::string path;  // "-" and numbered sequences as on the command line; empty: not given
};

// A usage failure when an output is, or may become, one of the inputs or another output: by another name, through links
// and as a file of a numbered sequence as well. Devices and pipes are never the same.
void require_distinct(const std::vector<named_file>& inputs, const std::vector<named_file>& outputs);

}  // namespace qvr
