// SPDX-License-Identifier: BSD-3-Clause
#include "sample_planes.h"

#include <algorithm>
#include <cstddef>
#include <string>

#include "box_builder.h"

namespace test {

namespace {

// One group of neighbouring samples in the caller's row: where the bitstream's colour samples lie in it, and alpha.
struct group_layout {
    size_t samples;
    std::vector<size_t> colour;
    int alpha;
};

group_layout group_of(uint32_t order) {
    switch (order) {
        case 1:
        case 15:
            return {2, {1, 0}, -1};
        case 3:
            return {4, {1, 2, 3}, 0};
        case 4:
            return {4, {2, 1, 0}, 3};
        case 6:
            return {3, {2, 1, 0}, -1};
        case 7:
            return {4, {0, 1, 2}, 3};
        case 8:
            return {4, {3, 2, 1}, 0};
        case 11:
            return {3, {0, 1}, 2};
        case 12:
            return {4, {1, 0, 2}, 3};
        default:
            return {1, {0}, -1};
    }
}

bool is_planar(uint32_t order) {
    return order == 10 || order == 13 || order == 14;
}

bool has_separate_alpha(uint32_t order) {
    return order == 15 || order == 16;
}

bool is_422(uint32_t order) {
    return order == 1 || order == 2 || order == 11 || order == 15 || order == 16;
}

size_t sample_bytes(uint32_t type) {
    return type == 1 ? 1 : type == 7 ? 4 : 2;
}

// Samples in a caller's row of the first plane. Widths are even wherever that matters here.
size_t row_samples(const frame_params& up) {
    if (is_planar(up.colorComponentOrder)) {
        return up.width;
    }
    if (is_422(up.colorComponentOrder)) {
        return size_t{up.colorComponentOrder == 11 ? 3u : 2u} * up.width;
    }
    return size_t{has_alpha(up.colorComponentOrder) ? 4u : 3u} * up.width;
}

size_t row_length(const frame_params& up) {
    if (up.componentType == 5) {
        return (size_t{up.width} + 5) / 6 * 16;
    }
    return row_samples(up) * sample_bytes(up.componentType);
}

// Where the planes of a raw frame begin and how far their rows are apart.
struct plane_places {
    size_t stride;
    size_t stride2;
    size_t second;  // Cb, or separate alpha
    size_t third;   // Cr
    size_t fourth;  // alpha of order 13
    size_t chroma_length;
    size_t chroma_rows;
};

plane_places places_of(const frame_params& up) {
    plane_places at = {};
    const size_t f = sample_bytes(up.componentType);
    at.chroma_length = (size_t{up.width} + 1) / 2 * f;
    at.chroma_rows = (size_t{up.height} + 1) / 2;
    at.stride = up.rowBytes != 0 ? up.rowBytes : row_length(up);
    const size_t least2 = has_separate_alpha(up.colorComponentOrder) ? up.width * f : at.chroma_length;
    at.stride2 = up.rowBytes2 != 0 ? up.rowBytes2 : least2;
    at.second = at.stride * up.height;
    at.third = at.second + at.stride2 * at.chroma_rows;
    at.fourth = at.third + at.stride2 * at.chroma_rows;
    return at;
}

std::vector<bytes> rows_at(const bytes& raw, size_t start, size_t stride, size_t length, size_t count) {
    std::vector<bytes> rows;
    for (size_t i = 0; i < count; ++i) {
        const auto first = raw.begin() + static_cast<std::ptrdiff_t>(start + i * stride);
        rows.emplace_back(first, first + static_cast<std::ptrdiff_t>(length));
    }
    return rows;
}

void put_rows(bytes& raw, size_t start, size_t stride, const std::vector<bytes>& rows) {
    for (size_t i = 0; i < rows.size(); ++i) {
        std::copy(rows[i].begin(), rows[i].end(), raw.begin() + static_cast<std::ptrdiff_t>(start + i * stride));
    }
}

bytes words_of_packed_row(const bytes& row, size_t samples) {
    bytes words;
    for (size_t i = 0; i < samples; ++i) {
        const size_t at = i / 3 * 4;
        const uint32_t word = row[at] | static_cast<uint32_t>(row[at + 1]) << 8 |
                              static_cast<uint32_t>(row[at + 2]) << 16 | static_cast<uint32_t>(row[at + 3]) << 24;
        const uint32_t value = (word >> (i % 3 * 10) & 0x3ff) << 6;
        words.push_back(static_cast<uint8_t>(value));
        words.push_back(static_cast<uint8_t>(value >> 8));
    }
    return words;
}

bytes packed_row_of_words(const bytes& words, size_t length) {
    bytes row(length, 0);
    for (size_t i = 0; i < words.size() / 2; ++i) {
        const uint32_t value = (words[2 * i] | static_cast<uint32_t>(words[2 * i + 1]) << 8) >> 6;
        const uint32_t shifted = value << (i % 3 * 10);
        for (size_t k = 0; k < 4; ++k) {
            row[i / 3 * 4 + k] = static_cast<uint8_t>(row[i / 3 * 4 + k] | (shifted >> (8 * k) & 0xff));
        }
    }
    return row;
}

// High bytes first, then the low bits, the first sample lowest.
bytes narrowed(const bytes& row, uint32_t type) {
    if (type != 3 && type != 4 && type != 5) {
        return row;
    }
    const unsigned bits = type == 4 ? 4 : 2;
    const size_t samples = row.size() / 2;
    bytes result;
    for (size_t i = 0; i < samples; ++i) {
        result.push_back(row[2 * i + 1]);
    }
    result.resize(samples + (samples * bits + 7) / 8, 0);
    for (size_t i = 0; i < samples; ++i) {
        const size_t at = i * bits;
        const unsigned low = row[2 * i] >> (8 - bits);
        result[samples + at / 8] = static_cast<uint8_t>(result[samples + at / 8] | low << (at % 8));
    }
    return result;
}

bytes payload_of(const std::vector<bytes>& rows, uint32_t type) {
    bytes payload;
    for (const bytes& row : rows) {
        payload = payload + narrowed(row, type);
    }
    return payload;
}

std::string code_of(const char* integer, const char* floating, uint32_t type) {
    switch (type) {
        case 1:
            return std::string(integer) + "08";
        case 2:
            return std::string(integer) + "16";
        case 4:
            return std::string(integer) + "12";
        case 6:
            return std::string(floating) + "h";
        case 7:
            return std::string(floating) + "f";
        case 214:
            return std::string(integer) + "S1";
        default:
            return std::string(integer) + "10";
    }
}

std::string main_code_of(uint32_t order, uint32_t type) {
    if (order == 14) {
        return type == 1 ? " a08" : " a16";
    }
    if (is_planar(order)) {
        return code_of(" y", "  y", type);
    }
    if (is_422(order)) {
        return code_of("y2", " y2", type);
    }
    return order == 9 || order == 12 ? code_of("y4", " y4", type) : code_of("rg", " rg", type);
}

}  // namespace

bool has_alpha(uint32_t order) {
    return order == 3 || order == 4 || order == 7 || order == 8 || (order >= 11 && order <= 16);
}

uint32_t order_without_alpha(uint32_t order) {
    switch (order) {
        case 11:
        case 15:
        case 16:
            return 2;
        case 12:
            return 9;
        case 13:
            return 10;
        default:
            return 5;
    }
}

sample_planes take_apart(const frame_params& up, const bytes& raw) {
    const plane_places at = places_of(up);
    const size_t f = sample_bytes(up.componentType);
    const group_layout group = group_of(up.colorComponentOrder);
    sample_planes planes;
    for (const bytes& row : rows_at(raw, 0, at.stride, row_length(up), up.height)) {
        if (up.componentType == 5) {
            planes.main.push_back(words_of_packed_row(row, size_t{2} * up.width));
            continue;
        }
        bytes colour;
        bytes alpha;
        for (size_t start = 0; start < row.size(); start += group.samples * f) {
            for (const size_t index : group.colour) {
                const auto first = row.begin() + static_cast<std::ptrdiff_t>(start + index * f);
                colour.insert(colour.end(), first, first + static_cast<std::ptrdiff_t>(f));
            }
            if (group.alpha >= 0) {
                const auto first =
                    row.begin() + static_cast<std::ptrdiff_t>(start) + group.alpha * static_cast<std::ptrdiff_t>(f);
                alpha.insert(alpha.end(), first, first + static_cast<std::ptrdiff_t>(f));
            }
        }
        planes.main.push_back(colour);
        if (group.alpha >= 0) {
            planes.alpha.push_back(alpha);
        }
    }
    if (up.colorComponentOrder == 10 || up.colorComponentOrder == 13) {
        planes.cb = rows_at(raw, at.second, at.stride2, at.chroma_length, at.chroma_rows);
        planes.cr = rows_at(raw, at.third, at.stride2, at.chroma_length, at.chroma_rows);
    }
    if (up.colorComponentOrder == 13) {
        planes.alpha = rows_at(raw, at.fourth, at.stride, up.width * f, up.height);
    }
    if (has_separate_alpha(up.colorComponentOrder)) {
        planes.alpha = rows_at(raw, at.second, at.stride2, up.width * f, up.height);
    }
    return planes;
}

bytes put_together(const frame_params& up, const sample_planes& planes, uint8_t fill) {
    const plane_places at = places_of(up);
    const size_t f = sample_bytes(up.componentType);
    const group_layout group = group_of(up.colorComponentOrder);
    bytes raw(QVRUncompressed_GetUncompressedBufSize(&up), fill);
    std::vector<bytes> rows;
    for (size_t y = 0; y < up.height; ++y) {
        const bytes& colour = planes.main[y];
        if (up.componentType == 5) {
            rows.push_back(packed_row_of_words(colour, row_length(up)));
            continue;
        }
        bytes row(row_length(up));
        for (size_t i = 0; i < row.size() / f / group.samples; ++i) {
            for (size_t k = 0; k < group.colour.size() * f; ++k) {
                row[(i * group.samples + group.colour[k / f]) * f + k % f] = colour[i * group.colour.size() * f + k];
            }
            for (size_t k = 0; group.alpha >= 0 && k < f; ++k) {
                row[(i * group.samples + static_cast<size_t>(group.alpha)) * f + k] = planes.alpha[y][i * f + k];
            }
        }
        rows.push_back(row);
    }
    put_rows(raw, 0, at.stride, rows);
    if (up.colorComponentOrder == 10 || up.colorComponentOrder == 13) {
        put_rows(raw, at.second, at.stride2, planes.cb);
        put_rows(raw, at.third, at.stride2, planes.cr);
    }
    if (up.colorComponentOrder == 13) {
        put_rows(raw, at.fourth, at.stride, planes.alpha);
    }
    if (has_separate_alpha(up.colorComponentOrder)) {
        put_rows(raw, at.second, at.stride2, planes.alpha);
    }
    return raw;
}

sample_planes as_stored(const sample_planes& planes, uint32_t type) {
    sample_planes stored = planes;
    if (type == 3 || type == 4) {
        for (std::vector<bytes>* rows : {&stored.main, &stored.cb, &stored.cr, &stored.alpha}) {
            for (bytes& row : *rows) {
                for (size_t i = 0; i < row.size(); i += 2) {
                    row[i] = static_cast<uint8_t>(row[i] & (type == 3 ? 0xc0 : 0xf0));
                }
            }
        }
    }
    return stored;
}

bytes stream_of(const frame_params& up, const sample_planes& planes) {
    const uint32_t order = up.colorComponentOrder;
    const uint32_t type = up.componentType;
    const uint32_t w = up.width;
    const uint32_t h = up.height;
    const std::string code = main_code_of(order, type);
    const bool alpha = order != 14 && has_alpha(order) && (type == 1 || type == 2);
    const bool chroma = order == 10 || order == 13;
    if (!alpha && !chroma) {
        return single_plane(w, h, code, payload_of(planes.main, type));
    }
    bytes children = component(w, h, code, payload_of(planes.main, type));
    if (chroma) {
        children = children +
                   component((w + 1) / 2, (h + 1) / 2, code_of("cb", " cb", type), payload_of(planes.cb, type)) +
                   component((w + 1) / 2, (h + 1) / 2, code_of("cr", " cr", type), payload_of(planes.cr, type));
    }
    if (alpha) {
        children = children + component(w, h, type == 1 ? " a08" : " a16", payload_of(planes.alpha, type));
    }
    return pack(children);
}

}  // namespace test
