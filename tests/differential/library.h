// SPDX-License-Identifier: BSD-3-Clause
#ifndef QVR_TESTS_DIFFERENTIAL_LIBRARY_H
#define QVR_TESTS_DIFFERENTIAL_LIBRARY_H

// The library's handles and records as the comparisons use them.

#include <QVRUncompressed.h>

#include <string>
#include <vector>

#include "model.h"
#include "model_records.h"

namespace differential {

using test::to_model;
using test::to_record;

// One encoder and one decoder of the same thread count. Messages of failed
// calls pile up until they are taken.
class codec {
  public:
    explicit codec(std::uint32_t threads);
    ~codec();
    codec(const codec&) = delete;
    codec& operator=(const codec&) = delete;

    QVRUncompressed_Encoder encoder() const { return encoder_; }
    QVRUncompressed_Decoder decoder() const { return decoder_; }
    std::uint32_t threads() const { return threads_; }
    std::vector<std::string> take_messages();

  private:
    static void hear(const char* message, void* user);

    std::uint32_t threads_;
    QVRUncompressed_Encoder encoder_ = nullptr;
    QVRUncompressed_Decoder decoder_ = nullptr;
    std::vector<std::string> messages_;
};

// Handles of 1, 2, 3 and 8 threads, made once. They serve all cases in turn,
// so that what one call leaves behind in a handle meets the next.
codec& codec_number(std::uint32_t index);

std::string describe(const model::frame_params& frame);
std::string describe(const model::stream_params& stream);
std::string describe(const std::vector<model::wrap_params>& wraps);
std::string hex(const model::bytes& data);

// What a fault handler and a watchdog print when a call does not come back.
void announce(const std::string& text);

}  // namespace differential

#endif
