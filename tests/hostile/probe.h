// SPDX-License-Identifier: BSD-3-Clause
//
// Puts one bitstream before every call that reads one, in every kind of buffer, and compares all that happens with what
// the model says. What comes back are the outcomes in words, for tests that state them literally.
#ifndef QVR_TESTS_HOSTILE_PROBE_H
#define QVR_TESTS_HOSTILE_PROBE_H

#include <cstdint>
#include <deque>
#include <iosfwd>
#include <string>
#include <vector>

#include "codec.h"
#include "model.h"
#include "model_records.h"
#include "slot.h"

namespace hostile {

using test::frame_params;
using test::to_model;
using test::to_record;
using test::wrap_params;

model::view view_of(const bytes& data);

struct question {
    bytes stream;
    frame_params up;                   // the layout that the caller asks for
    std::vector<wrap_params> records;  // what the caller takes for wrapped: one record at least
};

// "ok", or the message of the failure.
struct answers {
    std::string metadata;
    std::string wrap_metadata;
    std::string decode;
    std::string unwrap;
    uint32_t wrap_count = 0;
};
bool operator==(const answers& one, const answers& other);
std::ostream& operator<<(std::ostream& out, const answers& value);

// The answers to a stream that no reader accepts.
answers refused_by_all(const std::string& message);

// True for failures that checks find before a destination is touched.
bool leaves_destination_alone(const std::string& message);

// One decoder, and what it does. After a failed call it has to decode a good stream.
class prober {
  public:
    explicit prober(uint32_t threads = 1);

    // Differences from the model are test failures. Without worker threads each call is made once for either side of
    // the inaccessible page and, where there is a destination, once for either fill; with them once in all.
    answers ask(const question& asked);
    // The same, for a caller who believes everything that the metadata of the stream says.
    answers ask_trusting(const bytes& stream);

    QVRUncompressed_Decoder handle() { return decoder_.handle(); }
    // The outcome of a call on the handle above in words.
    std::string told(uint32_t status);

  private:
    void expect_good_decode();
    std::string ask_metadata(const question& asked);
    std::string ask_wrap_metadata(const question& asked);
    std::string ask_decode(const question& asked, guard side, uint8_t fill);
    std::string ask_unwrap(const question& asked, guard side, uint8_t fill);
    std::vector<uint8_t*> place_payloads(const question& asked, guard side, uint8_t fill);
    answers ask_once(const question& asked, guard side, uint8_t fill);

    test::decoder decoder_;
    bool threaded_;
    bool good_decode_owed_ = false;
    slot good_source_;
    slot good_target_;
    slot source_;
    slot target_;
    std::deque<slot> payloads_;
};

}  // namespace hostile

#endif  // QVR_TESTS_HOSTILE_PROBE_H
