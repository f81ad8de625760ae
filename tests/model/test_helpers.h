// SPDX-License-Identifier: BSD-3-Clause
#ifndef QVR_TESTS_MODEL_TEST_HELPERS_H
#define QVR_TESTS_MODEL_TEST_HELPERS_H

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>

#include "model.h"

namespace model_test {

inline model::view look(const model::bytes& data) {
    // A non-null pointer even for an empty vector.
    static const std::uint8_t nothing = 0;
    return {data.empty() ? &nothing : data.data(), data.size()};
}

inline model::target into(model::bytes& data) {
    return {data.data(), data.size()};
}

inline model::bytes operator+(model::bytes left, const model::bytes& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

inline model::bytes text(const std::string& characters) {
    return model::bytes(characters.begin(), characters.end());
}

inline model::bytes box(const std::string& type, const model::bytes& payload) {
    model::bytes out;
    model::put_box_header(out, payload.size() + 8, type);
    return out + payload;
}

inline model::bytes sized_box(const std::string& type, std::uint32_t size, const model::bytes& payload) {
    model::bytes out;
    model::put_box_header(out, size, type);
    return out + payload;
}

inline model::bytes sinf(std::uint32_t width, std::uint32_t height, const std::string& name, std::uint8_t layout = 0) {
    model::bytes fields;
    model::put_u32(fields, width);
    model::put_u32(fields, height);
    fields = fields + text(name);
    fields.push_back(layout);
    return box("sinf", fields);
}

template <class work>
std::string failure_of(work run) {
    try {
        run();
    } catch (const model::failure& error) {
        return error.what();
    }
    return "no failure";
}

inline model::frame_params frame(std::uint32_t order, std::uint32_t type, std::uint32_t width, std::uint32_t height) {
    model::frame_params params;
    params.order = order;
    params.type = type;
    params.width = width;
    params.height = height;
    return params;
}

// 1, 2, 3, ...
inline model::bytes counting(std::size_t size) {
    model::bytes data;
    for (std::size_t i = 0; i < size; ++i) {
        data.push_back(static_cast<std::uint8_t>(i + 1));
    }
    return data;
}

}  // namespace model_test

#endif
