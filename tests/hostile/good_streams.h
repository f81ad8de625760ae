// SPDX-License-Identifier: BSD-3-Clause
//
// One good bitstream of each family. Tests prove that it is good before they change it.
#ifndef QVR_TESTS_HOSTILE_GOOD_STREAMS_H
#define QVR_TESTS_HOSTILE_GOOD_STREAMS_H

#include <string>
#include <vector>

#include "probe.h"

namespace hostile {

struct good_stream {
    std::string name;
    bytes stream;
    frame_params up;                   // the record it was encoded with
    std::vector<wrap_params> records;  // one even when nothing is wrapped
    bytes raw;                         // what decoding gives; empty for stitched chunks
    std::vector<bytes> payloads;
};

// Made once.
const std::vector<good_stream>& good_streams();
const good_stream& good(const std::string& name);
// For test suites that take each family in turn.
const std::vector<std::string>& family_names();

question ask_about(const good_stream& family, const bytes& stream);

// True when the untouched stream is read, decoded and unwrapped, with the bytes that it was made of.
bool proves_good(const good_stream& family);

}  // namespace hostile

#endif  // QVR_TESTS_HOSTILE_GOOD_STREAMS_H
