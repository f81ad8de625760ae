// SPDX-License-Identifier: BSD-3-Clause
//
// Raw frames: the samples one frame after the other, with nothing that says what they are.
#include "frame.h"

namespace qvr {

namespace {

class raw_source : public frame_source {
  public:
    raw_source(input_file& from, const frame_layout& described) : file(from), layout(described) {
        require_raw_size(layout, exit_code::usage, {file.name(), {}});
        frame_bytes = static_cast<std::size_t>(raw_frame_bytes(layout));
    }

    bool next(frame& to) override {
        const std::size_t got = file.read_into(to.samples, 0, frame_bytes);
        if (got == 0) {
            if (count == 0) {
                throw failure(exit_code::data, {file.name(), {}}, "there is no frame in it: the file is empty");
            }
            return false;
        }
        place = {file.name(), frame_spot(count, count * frame_bytes)};
        if (got < frame_bytes) {
            throw failure(
                exit_code::data, place,
                "the last frame is not complete: " + std::to_string(got) + " bytes are left, a frame has " +
                    std::to_string(frame_bytes),
                "do --size, --order, --type and --row-bytes describe these frames? They say " + layout_text(layout));
        }
        to.layout = layout;
        to.bytes = frame_bytes;
        ++count;
        return true;
    }

    location last_place() const override { return place; }

  private:
    input_file& file;
    frame_layout layout;
    std::size_t frame_bytes = 0;
    unsigned long long count = 0;
    location place;
};

class raw_sink : public frame_sink {
  public:
    raw_sink(const std::string& path, const layout_request& asked) : request(asked), file(path) {}

    frame_layout wanted(const frame_layout& own, const location&) const override {
        frame_layout layout = own;
        layout.colorComponentOrder = request.format.order.value_or(own.colorComponentOrder);
        layout.componentType = request.format.type.value_or(own.componentType);
        layout.rowBytes = request.row_bytes;
        layout.rowBytes2 = request.row_bytes2;
        require_supported(layout.colorComponentOrder, layout.componentType);
        return layout;
    }

    bool holds_one_frame() const override { return false; }
    void put(const frame& from) override { file.write(from.samples.data(), from.bytes); }
    void commit() override { file.commit(); }

  private:
    layout_request request;
    output_file file;
};

}  // namespace

std::unique_ptr<frame_source> open_raw_source(input_file& file, const layout_request& request) {
    frame_layout layout = empty_layout();
    if (!request.format.order || !request.format.type) {
        fail_usage(std::string("raw frames need --order and --type; ") + (request.format.order ? "--type" : "--order") +
                       " is missing",
                   "for example --order UYVY --type U8, or --order v210 for both; 'qvr formats' lists all");
    }
    layout.colorComponentOrder = *request.format.order;
    layout.componentType = *request.format.type;
    layout.width = request.width;
    layout.height = request.height;
    layout.rowBytes = request.row_bytes;
    layout.rowBytes2 = request.row_bytes2;
    layout.frameLayout = request.interlaced ? QVRUncompressed_LayoutInterlaced : QVRUncompressed_LayoutProgressive;
    require_supported(layout.colorComponentOrder, layout.componentType);
    return std::make_unique<raw_source>(file, layout);
}

std::unique_ptr<frame_sink> open_raw_sink(const std::string& path, const layout_request& request) {
    return std::make_unique<raw_sink>(path, request);
}

}  // namespace qvr
