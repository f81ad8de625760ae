// SPDX-License-Identifier: BSD-3-Clause
#include "coded_carriers.h"

#include <stdexcept>

#include "box_builder.h"

namespace hostile {

using namespace test;

namespace {

constexpr uint32_t k_width = 4;
constexpr uint32_t k_height = 2;

std::string binary(uint64_t value, unsigned count) {
    std::string text;
    for (unsigned i = count; i > 0; --i) {
        text += (value >> (i - 1) & 1) != 0 ? '1' : '0';
    }
    return text;
}

std::string gamma(uint64_t value) {
    unsigned zeros = 0;
    while (value >> (zeros + 1) != 0) {
        ++zeros;
    }
    return std::string(zeros, '0') + binary(value, zeros + 1);
}

int64_t difference(uint32_t value, uint32_t previous) {
    return static_cast<int32_t>(value - previous);
}

constexpr uint32_t k_predictor = 8388607;

std::string sequence_bits(const std::vector<uint32_t>& values) {
    if (!fits_table(values)) {
        throw std::logic_error("a difference past 24 bits");
    }
    std::string text;
    uint32_t previous = k_predictor;
    for (const uint32_t value : values) {
        const int64_t d = difference(value, previous);
        text +=
            "1"
            "0" +
            binary(static_cast<uint64_t>(d >= 0 ? 2 * d : -2 * d - 1), 24);
        previous = value;
    }
    return text;
}

std::vector<carrier> make() {
    std::vector<carrier> all;
    for (const uint32_t type : {1u, 2u}) {
        for (const uint32_t order : {3u, 4u, 7u, 8u, 11u, 12u, 13u, 14u, 15u, 16u}) {
            all.push_back({order, type, 0, false});
            if (order >= 13) {
                all.push_back({order, type, 3, false});
            }
        }
        all.push_back({14, type, 0, true});
        all.push_back({14, type, 3, true});
    }
    return all;
}

}  // namespace

question carrier::with(const bytes& payload) const {
    const uint32_t stride = padding == 0 ? 0 : k_width * type + padding;  // a type of 1 or 2 is the size of its samples
    question asked;
    asked.up = order >= 15 ? frame_record(order, type, k_width, k_height, 0, stride)
                           : frame_record(order, type, k_width, k_height, stride, order == 13 ? stride : 0);
    asked.records = {wrap_record(1, 3)};
    const char* const coded = type == 1 ? "rl08" : "rl16";
    if (order == 14) {
        const bytes plane = bare_plane(k_width, k_height, coded, payload);
        asked.stream = pack(beside_qcx ? box("QCXF", {7, 8, 9}) + plane : plane);
        return asked;
    }
    bytes children;
    for (const model::code& code : model::format_planes(order, type)) {
        const bool half = code[0] == 'c';
        const uint32_t w = half ? k_width / 2 : k_width;
        const uint32_t h = half ? k_height / 2 : k_height;
        if (model::role_of(code) == model::plane_role::alpha) {
            children = children + component(w, h, coded, payload);
        } else {
            children = children + component(w, h, code, counting(static_cast<size_t>(model::row_bytes(code, w) * h)));
        }
    }
    asked.stream = pack(children);
    return asked;
}

std::string carrier::outcome(prober& by, const bytes& payload) const {
    const answers heard = by.ask(with(payload));
    return beside_qcx ? heard.unwrap : heard.decode;
}

std::string carrier::name() const {
    return "order " + std::to_string(order) + ", type " + std::to_string(type) + ", padding " +
           std::to_string(padding) + (beside_qcx ? ", beside a wrapped frame" : "");
}

const std::vector<carrier>& carriers() {
    static const std::vector<carrier> all = make();
    return all;
}

bool fits_table(const std::vector<uint32_t>& values) {
    uint32_t previous = k_predictor;
    for (const uint32_t value : values) {
        const int64_t d = difference(value, previous);
        if (d < -0x800000 || d > 0x7fffff) {
            return false;
        }
        previous = value;
    }
    return true;
}

std::string table_bits(const std::vector<uint32_t>& sizes, const std::vector<uint32_t>& rows) {
    return binary(sizes.size(), 8) + sequence_bits(sizes) + sequence_bits(rows);
}

bytes table(const std::vector<uint32_t>& sizes, const std::vector<uint32_t>& rows) {
    return from_bits(table_bits(sizes, rows));
}

std::string run_bits(uint64_t length, uint32_t type) {
    return "0" + gamma(length) +
           "1"
           "0" +
           std::string(type == 1 ? 2 : 6, '0');
}

}  // namespace hostile
