// SPDX-License-Identifier: BSD-3-Clause
//
// The writing side of the probe: any record, any source, and what the model makes of them.
#ifndef QVR_TESTS_HOSTILE_ENCODE_PROBE_H
#define QVR_TESTS_HOSTILE_ENCODE_PROBE_H

#include <cstdint>
#include <string>
#include <vector>

#include "probe.h"

namespace hostile {

using test::stream_params;

struct encode_question {
    frame_params up;
    stream_params cp;
    bytes source;
    uint32_t room = 0;                 // size of the destination
    std::vector<wrap_params> records;  // when there are any, they are wrapped
    std::vector<bytes> payloads;
};

// One encoder. After a failed call it has to encode a good frame.
class encode_prober {
  public:
    explicit encode_prober(uint32_t threads = 1);

    // Both sides of the inaccessible page, both fills. Returns "ok" or the message.
    std::string ask(const encode_question& asked);

  private:
    uint32_t call(const encode_question& asked, uint32_t* written);
    std::string told(uint32_t status);
    std::string ask_once(const encode_question& asked, guard side, uint8_t fill);

    test::encoder encoder_;
    slot source_;
    slot target_;
    slot good_target_;
};

}  // namespace hostile

#endif  // QVR_TESTS_HOSTILE_ENCODE_PROBE_H
