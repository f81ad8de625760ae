// SPDX-License-Identifier: BSD-3-Clause
#include "boxes.h"

namespace model {

namespace {

struct box_header {
    std::uint32_t size = 0;
    std::string type;
};

class box_reader {
  public:
    explicit box_reader(view source) : source_(source), limit_(source.size) {
        if (source.data == nullptr) {
            throw failure("buffer is null");
        }
        if (source.size < 8) {
            throw failure("buffer size should be at least 8");
        }
    }

    parsed_frame read() {
        read_pack();
        while (offset_ + 8 <= limit_) {
            read_child();
        }
        if (frame_.planes.empty()) {
            throw failure("at least one 'sinf' and one 'sdat' box expected");
        }
        std::vector<code> names;
        for (const parsed_plane& plane : frame_.planes) {
            names.push_back(plane.name);
        }
        check_plane_set(names);
        return frame_;
    }

  private:
    std::uint32_t u32_at(std::uint64_t place) const {
        std::uint32_t value = 0;
        for (unsigned i = 0; i < 4; ++i) {
            value |= std::uint32_t(source_.at(place + i)) << (8 * i);
        }
        return value;
    }

    std::string text_at(std::uint64_t place) const {
        std::string text;
        for (unsigned i = 0; i < 4; ++i) {
            text.push_back(static_cast<char>(source_.at(place + i)));
        }
        return text;
    }

    box_header peek() const {
        if (offset_ + 8 > limit_) {
            throw failure("can't read box header(8 bytes) at offset " + decimal(offset_));
        }
        return {u32_at(offset_), text_at(offset_ + 4)};
    }

    box_header expect(const std::string& type) const {
        const box_header box = peek();
        if (box.type != type) {
            throw failure("'" + type + "' box expected at offset " + decimal(offset_ + 4));
        }
        return box;
    }

    void expect_header_size(const box_header& box) const {
        if (box.size < 8) {
            throw failure("'" + box.type + "' box size expected to be at least 8 at offset " + decimal(offset_));
        }
    }

    void read_pack() {
        const box_header pack = expect("pack");
        if (pack.size > source_.size) {
            throw failure("pack box size(" + decimal(pack.size) + ") is greater than buffer size(" +
                          decimal(source_.size) + ")");
        }
        offset_ = 8;
        limit_ = pack.size;
    }

    void read_child() {
        const box_header box = peek();
        if (box.type == "sinf") {
            if (!frame_.planes.empty()) {
                throw failure("only single 'sinf' box allowed outside of 'icmp' box");
            }
            read_plane();
        } else if (box.type == "icmp") {
            expect_header_size(box);
            const std::uint64_t end = offset_ + box.size;
            offset_ += 8;
            read_plane();
            if (offset_ < end) {
                offset_ = end;
            }
        } else if (box.type == "QCXF") {
            record_wrap(box);
        } else {
            skip(box);
        }
    }

    void record_wrap(const box_header& box) {
        expect_header_size(box);
        frame_.wraps.push_back({box.type, offset_ + 8, box.size - 8});
        offset_ += box.size;
    }

    // An unknown box too small to hold its own header still moves the walk.
    void skip(const box_header& box) { offset_ += box.size < 8 ? 8 : box.size; }

    void read_plane() {
        parsed_plane plane;
        read_sinf(plane);
        read_sdat(plane);
        frame_.planes.push_back(plane);
    }

    void read_sinf(parsed_plane& plane) {
        const box_header box = expect("sinf");
        if (box.size < 20) {
            throw failure("sinf box size expected to be at least 20 bytes at offset " + decimal(offset_));
        }
        const unsigned fields = box.size == 20 ? 20 : 21;
        if (offset_ + fields > limit_) {
            throw failure("can't read " + decimal(fields) + " bytes at offset " + decimal(offset_));
        }
        plane.width = u32_at(offset_ + 8);
        plane.height = u32_at(offset_ + 12);
        plane.name = normalise(text_at(offset_ + 16));
        if (fields == 21) {
            plane.layout = source_.at(offset_ + 20);
            if (plane.layout > 1) {
                throw failure("Undefined value of frame layout: " + decimal(plane.layout));
            }
        }
        offset_ += box.size;
    }

    void read_sdat(parsed_plane& plane) {
        const box_header box = expect("sdat");
        const exact least = is_coded_alpha(plane.name) ? 9 : row_bytes(plane.name, plane.width) * plane.height + 8;
        if (box.size < least) {
            throw failure("'sdat' box size expected to be at least " + decimal(least) + " at offset " +
                          decimal(offset_));
        }
        if (offset_ + least > limit_) {
            throw failure("can't read " + decimal(least) + " bytes at offset " + decimal(offset_ + 8));
        }
        offset_ += 8;
        plane.size = box.size - 8;
        if (plane.name == "stch") {
            walk_stitched(offset_ + plane.size);
            plane.offset = offset_;
        } else {
            plane.offset = offset_;
            offset_ += plane.size;
        }
    }

    void walk_stitched(std::uint64_t end) {
        while (offset_ + 8 <= end) {
            const box_header box = peek();
            if (box.type == "QCXF" || box.type == "stch" || box.type == "tile") {
                record_wrap(box);
            } else {
                skip(box);
            }
        }
    }

    view source_;
    std::uint64_t limit_;
    std::uint64_t offset_ = 0;
    parsed_frame frame_;
};

}  // namespace

parsed_frame parse_frame(view source) {
    return box_reader(source).read();
}

const parsed_plane* find_plane(const parsed_frame& frame, plane_role role) {
    for (const parsed_plane& plane : frame.planes) {
        if (role_of(plane.name) == role) {
            return &plane;
        }
    }
    return nullptr;
}

const parsed_plane& main_plane(const parsed_frame& frame) {
    const parsed_plane* found = find_plane(frame, plane_role::main);
    return found != nullptr ? *found : frame.planes.at(0);
}

frame_params metadata_of(const parsed_frame& frame) {
    const parsed_plane& plane = main_plane(frame);
    const described_format format = describe(plane.name, frame.planes.size());
    frame_params result;
    result.order = format.order;
    result.type = format.type;
    result.width = plane.width;
    result.height = plane.height;
    result.frame_layout = plane.layout;
    return result;
}

frame_params read_metadata(view source) {
    return metadata_of(parse_frame(source));
}

void check_consistency(const parsed_frame& stream, const frame_params& frame) {
    const parsed_plane& plane = main_plane(stream);
    if (frame.width != plane.width) {
        throw failure("width in src metadata is different than width in uncompressed params");
    }
    if (frame.height != plane.height) {
        throw failure("height in src metadata is different than height in uncompressed params");
    }
    const bool fixed = plane.name == "y2S1" || plane.name == "y4S1" || plane.name == "rgS1";
    if (!(fixed && frame.type == 7) && bits_of_type(frame.type) != bits_of_code(plane.name)) {
        throw failure("bit depth in src metadata is different than bit depth in uncompressed params");
    }
    bool matches = true;
    for (const code& wanted : format_planes(frame.order, frame.type)) {
        bool found = false;
        for (const parsed_plane& candidate : stream.planes) {
            found = found || satisfies(candidate.name, wanted);
        }
        matches = matches && found;
    }
    // A lone alpha plane is the whole frame, not one plane among others.
    if (frame.order == 14 && stream.planes.size() > 1) {
        matches = false;
    }
    if (!matches) {
        throw failure("src metadata type is incompatible with color component order or component type");
    }
    if (has_alpha(frame.order) && frame.type != 1 && frame.type != 2) {
        throw failure("Only 8 and 16 bit alpha is supported");
    }
}

void put_u32(bytes& out, std::uint32_t value) {
    for (unsigned i = 0; i < 4; ++i) {
        out.push_back(static_cast<std::uint8_t>((value >> (8 * i)) & 0xFF));
    }
}

void put_box_header(bytes& out, exact size, const std::string& type) {
    put_u32(out, low32(size));
    out.insert(out.end(), type.begin(), type.end());
}

void append(bytes& out, const bytes& more) {
    out.insert(out.end(), more.begin(), more.end());
}

namespace {

void put_boxes(bytes& out, const std::vector<planned_box>& boxes, const std::vector<bytes>& payloads) {
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        put_box_header(out, exact(payloads.at(i).size()) + 8, boxes[i].type);
        append(out, payloads.at(i));
    }
}

void put_sinf(bytes& out, const planned_plane& plane) {
    put_box_header(out, 21, "sinf");
    put_u32(out, plane.width);
    put_u32(out, plane.height);
    out.insert(out.end(), plane.name.begin(), plane.name.end());
    out.push_back(plane.layout);
}

}  // namespace

bytes write_frame(const frame_plan& plan, const std::vector<bytes>& wraps, const std::vector<bytes>& planes,
                  const std::vector<bytes>& stitched) {
    bytes children;
    put_boxes(children, plan.wraps, wraps);
    for (std::size_t i = 0; i < plan.planes.size(); ++i) {
        bytes payload;
        if (plan.planes[i].name == "stch") {
            put_boxes(payload, plan.stitched, stitched);
        } else {
            payload = planes.at(i);
        }
        if (plan.planes.size() > 1) {
            put_box_header(children, exact(payload.size()) + 37, "icmp");
        }
        put_sinf(children, plan.planes[i]);
        put_box_header(children, exact(payload.size()) + 8, "sdat");
        append(children, payload);
    }
    bytes frame;
    put_box_header(frame, exact(children.size()) + 8, "pack");
    append(frame, children);
    return frame;
}

}  // namespace model
