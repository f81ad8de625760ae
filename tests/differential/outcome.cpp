// SPDX-License-Identifier: BSD-3-Clause
#include "outcome.h"

#include <cstring>

namespace differential {

bool is_early(const expectation& model) {
    const std::string& text = model.message;
    const bool from_coder = text.rfind("rle ", 0) == 0 || text.rfind("Invalid width", 0) == 0 ||
                            text.rfind("Invalid height", 0) == 0 || text.rfind("src buffer", 0) == 0 ||
                            text.rfind("src and buffers", 0) == 0 || text.rfind("row_bytes", 0) == 0 ||
                            text.rfind("values greater", 0) == 0 || text.rfind("only 8, and", 0) == 0;
    return !from_coder;
}

std::string compare_outcomes(const outcome& library, const expectation& model) {
    std::string text;
    const std::uint32_t status = model.ok ? 0 : 1;
    if (library.status != status) {
        text += "status is " + std::to_string(library.status) + ", expected " + std::to_string(status) + "\n";
    }
    const std::vector<std::string> wanted = model.ok ? std::vector<std::string>{} : std::vector{model.message};
    if (library.messages != wanted) {
        text += "messages are";
        for (const std::string& message : library.messages) {
            text += " <" + message + ">";
        }
        text += ", expected <" + model.message + ">\n";
    }
    const std::uint32_t written = model.ok ? model.written : untouched_size;
    if (library.written != written) {
        text += "size is " + std::to_string(library.written) + ", expected " + std::to_string(written) + "\n";
    }
    return text;
}

namespace {

std::string first_difference(const char* what, const model::bytes& expected, const guarded_buffer& actual,
                             std::size_t from, std::size_t to) {
    for (std::size_t i = from; i < to; ++i) {
        if (expected[i] != actual.data()[i]) {
            return std::string(what) + " at byte " + std::to_string(i) + " of " + std::to_string(actual.size()) + ": " +
                   std::to_string(actual.data()[i]) + ", expected " + std::to_string(expected[i]) + "\n";
        }
    }
    return std::string();
}

std::string front_text(const guarded_buffer& dst) {
    return dst.front_intact() ? std::string() : std::string("bytes in front of the destination were written\n");
}

}  // namespace

std::string compare_stream(const expectation& model, const model::bytes& before, const guarded_buffer& dst) {
    std::string text = front_text(dst);
    if (!model.ok) {
        return is_early(model) ? text + first_difference("written on failure", before, dst, 0, before.size()) : text;
    }
    text += first_difference("stream differs", model.stream, dst, 0, model.stream.size());
    return text + first_difference("written behind the stream", before, dst, static_cast<std::size_t>(model.planned),
                                   before.size());
}

std::string compare_target(const expectation& model, const model::bytes& before, const model::bytes& expected,
                           const guarded_buffer& dst) {
    std::string text = front_text(dst);
    if (!model.ok) {
        return is_early(model) ? text + first_difference("written on failure", before, dst, 0, before.size()) : text;
    }
    return text + first_difference("destination differs", expected, dst, 0, expected.size());
}

namespace {

std::vector<QVRUncompressed_WrapParams_t> to_records(const std::vector<model::wrap_params>& wraps) {
    std::vector<QVRUncompressed_WrapParams_t> records;
    for (const model::wrap_params& wrap : wraps) {
        records.push_back(to_record(wrap));
    }
    return records;
}

}  // namespace

wrap_array::wrap_array(const std::vector<model::wrap_params>& wraps) : original_(wraps) {
    const std::vector<QVRUncompressed_WrapParams_t> records = to_records(wraps);
    buffer_ = std::make_unique<guarded_buffer>(records.data(), records.size() * sizeof(QVRUncompressed_WrapParams_t));
}

bool wrap_array::holds(const std::vector<model::wrap_params>& wraps) const {
    const std::vector<QVRUncompressed_WrapParams_t> records = to_records(wraps);
    const std::size_t size = records.size() * sizeof(QVRUncompressed_WrapParams_t);
    return buffer_->front_intact() && (size == 0 || std::memcmp(buffer_->data(), records.data(), size) == 0);
}

std::vector<model::wrap_params> wrap_array::values() const {
    std::vector<QVRUncompressed_WrapParams_t> records(original_.size());
    if (!records.empty()) {
        std::memcpy(records.data(), buffer_->data(), records.size() * sizeof records[0]);
    }
    return to_model(records);
}

}  // namespace differential
