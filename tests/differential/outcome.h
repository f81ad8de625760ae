// SPDX-License-Identifier: BSD-3-Clause
#ifndef QVR_TESTS_DIFFERENTIAL_OUTCOME_H
#define QVR_TESTS_DIFFERENTIAL_OUTCOME_H

// What a call did, what it should have done, and the difference in words.

#include <memory>
#include <string>
#include <vector>

#include "guarded.h"
#include "library.h"
#include "model.h"

namespace differential {

struct outcome {
    outcome(std::uint32_t status_code, std::vector<std::string> heard, std::uint32_t size)
        : status(status_code), messages(std::move(heard)), written(size) {}

    std::uint32_t status;
    std::vector<std::string> messages;
    std::uint32_t written;
};

struct expectation {
    bool ok = true;
    std::string message;
    std::uint32_t written = 0;
    model::bytes stream;
    model::exact planned = 0;

    template <class work>
    void run(work body) {
        try {
            body();
        } catch (const model::failure& error) {
            ok = false;
            message = error.what();
        }
    }
};

// The value that a size output holds before a call and after a failed one.
constexpr std::uint32_t untouched_size = 0xABCD1234u;

// For calls without a size output.
inline std::uint32_t unwritten(const expectation& model) {
    return model.ok ? model.written : untouched_size;
}

// True for failures that checks find before anything is written.
bool is_early(const expectation& model);

std::string compare_outcomes(const outcome& library, const expectation& model);
// A destination of encoding: the stream, then bytes that nobody promises up
// to the planned size, then untouched bytes.
std::string compare_stream(const expectation& model, const model::bytes& before, const guarded_buffer& dst);
// A destination of decoding: every byte is either defined or untouched.
std::string compare_target(const expectation& model, const model::bytes& before, const model::bytes& expected,
                           const guarded_buffer& dst);

// Wrap records in one guarded array.
class wrap_array {
  public:
    explicit wrap_array(const std::vector<model::wrap_params>& wraps);

    QVRUncompressed_WrapParams_t* get() const {
        return reinterpret_cast<QVRUncompressed_WrapParams_t*>(buffer_->data());
    }
    bool unchanged() const { return holds(original_); }
    bool holds(const std::vector<model::wrap_params>& wraps) const;
    std::vector<model::wrap_params> values() const;

  private:
    std::vector<model::wrap_params> original_;
    std::unique_ptr<guarded_buffer> buffer_;
};

}  // namespace differential

#endif
