// SPDX-License-Identifier: BSD-3-Clause
#include "changed.h"

#include <algorithm>
#include <cstring>
#include <set>

namespace hostile {

namespace {

void collect(const bytes& stream, size_t from, size_t to, bool stitched, std::vector<size_t> parents,
             std::vector<found_box>& found) {
    for (size_t at = from; at + 8 <= to;) {
        found_box box;
        box.offset = at;
        box.size = load_32(stream, at);
        box.type.assign(reinterpret_cast<const char*>(stream.data()) + at + 4, 4);
        box.parents = parents;
        found.push_back(box);
        std::vector<size_t> inner = parents;
        inner.push_back(at);
        if (box.type == "pack" || box.type == "icmp" || (box.type == "sdat" && stitched)) {
            collect(stream, at + 8, at + box.size, false, inner, found);
        }
        stitched = box.type == "sinf" && std::memcmp(stream.data() + at + 16, "stch", 4) == 0;
        at += box.size;
    }
}

}  // namespace

uint32_t load_32(const bytes& stream, size_t at) {
    return static_cast<uint32_t>(stream.at(at)) | static_cast<uint32_t>(stream.at(at + 1)) << 8 |
           static_cast<uint32_t>(stream.at(at + 2)) << 16 | static_cast<uint32_t>(stream.at(at + 3)) << 24;
}

void store_32(bytes& stream, size_t at, uint32_t value) {
    const bytes field = test::le32(value);
    std::copy(field.begin(), field.end(), stream.begin() + static_cast<std::ptrdiff_t>(at));
}

bytes with_32(bytes stream, size_t at, uint32_t value) {
    store_32(stream, at, value);
    return stream;
}

bytes first_bytes(const bytes& stream, size_t count) {
    return bytes(stream.begin(), stream.begin() + static_cast<std::ptrdiff_t>(count));
}

std::vector<found_box> boxes_of(const bytes& stream) {
    std::vector<found_box> found;
    collect(stream, 0, stream.size(), false, {}, found);
    return found;
}

std::vector<place> places_of(const bytes& stream) {
    std::vector<place> places;
    std::set<std::vector<size_t>> seen;
    const auto add = [&](size_t offset, const std::vector<size_t>& parents) {
        std::vector<size_t> key = parents;
        key.push_back(offset);
        if (seen.insert(key).second) {
            places.push_back({offset, parents});
        }
    };
    for (const found_box& box : boxes_of(stream)) {
        add(box.offset, box.parents);
        std::vector<size_t> inside = box.parents;
        inside.push_back(box.offset);
        add(box.offset + 8, inside);
        add(box.offset + box.size, box.parents);
    }
    return places;
}

bytes inserted(bytes stream, const place& where, const bytes& what) {
    for (const size_t parent : where.parents) {
        store_32(stream, parent, load_32(stream, parent) + static_cast<uint32_t>(what.size()));
    }
    stream.insert(stream.begin() + static_cast<std::ptrdiff_t>(where.offset), what.begin(), what.end());
    return stream;
}

std::vector<uint32_t> bad_sizes(uint32_t size) {
    return {0, 1, 7, 8, size - 1, size + 1, 0x7fffffffu, 0x80000000u, 0xffffffffu};
}

const std::vector<uint32_t>& extremes() {
    static const std::vector<uint32_t> values = {0, 1, 0x7fffffffu, 0x80000000u, 0xffffffffu};
    return values;
}

}  // namespace hostile
