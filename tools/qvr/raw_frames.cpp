// SPDX-License-Identifier: BSD-3-Clause
//
// Raw frames: the samples one frame after the other, with nothing that says what they are.
#include <algorithm>
#include <utility>

#include "command.h"
#include "container_files.h"

namespace qvr {

namespace {

class raw_source : public frame_source {
  public:
    raw_source(std::unique_ptr<input_file> from, const frame_layout& described)
        : file(std::move(from)), layout(described), place{file->name(), {}} {
        require_raw_size(layout, exit_code::usage, {file->name(), {}});
        frame_bytes = static_cast<std::size_t>(raw_frame_bytes(layout));
    }

    bool next(frame& to) override {
        if (cut_short) {
            return false;
        }
        const std::size_t got = file->read_into(to.samples, 0, frame_bytes);
        if (got == 0 && count == 0) {
            refuse_empty(file->name());
        }
        if (got == 0) {
            return false;
        }
        require_whole(got);
        to.layout = layout;
        to.bytes = frame_bytes;
        ++count;
        return true;
    }

    std::uint64_t skip(std::uint64_t wanted) override {
        if (const std::optional<std::uint64_t> left = frames_left()) {
            const std::uint64_t there = std::min(wanted, *left);
            count += there;
            file->skip(there * frame_bytes);
            return there;
        }
        std::uint64_t skipped = 0;
        for (; skipped < wanted && more(); ++skipped, ++count) {
            require_whole(static_cast<std::size_t>(file->skip(frame_bytes)));
        }
        return skipped;
    }

    bool more() override { return !file->at_end(); }

    std::optional<std::uint64_t> frames_left() const override {
        const std::optional<std::uint64_t> left = file->bytes_left();
        return left ? std::optional<std::uint64_t>(*left / frame_bytes) : std::nullopt;
    }

    location last_place() const override { return place; }

  private:
    void require_whole(std::size_t got) {
        place = {file->name(), frame_spot(count, count * frame_bytes)};
        if (got < frame_bytes) {
            cut_short = true;
            throw failure(
                exit_code::data, place,
                "the last frame is not complete: " + std::to_string(got) + " bytes are left, a frame has " +
                    std::to_string(frame_bytes),
                "do --size, --order, --type and --row-bytes describe these frames? They say " + layout_text(layout));
        }
    }

    std::unique_ptr<input_file> file;
    frame_layout layout;
    std::size_t frame_bytes = 0;
    unsigned long long count = 0;
    bool cut_short = false;
    location place;
};

// The format that a name such as clip.uyvy says; null when it says none.
const named_format* format_by_extension(const std::string& path) {
    for (const named_format& row : all_named_formats()) {
        if (ends_in(path, (std::string(".") + row.name).c_str())) {
            return &row;
        }
    }
    return nullptr;
}

class raw_sink : public frame_sink {
  public:
    raw_sink(const std::string& path, const layout_request& asked) : request(asked), file(path, asked.becomes) {
        if (!request.format.order && !request.format.type) {
            by_name = format_by_extension(path);
        }
    }

    frame_layout wanted(const frame_layout& own, const location&) const override {
        frame_layout layout = own;
        layout.colorComponentOrder = request.format.order.value_or(own.colorComponentOrder);
        layout.componentType = request.format.type.value_or(own.componentType);
        if (by_name) {
            require_name_fits(own.componentType);
            layout.colorComponentOrder = by_name->order;
            layout.componentType = by_name->type;
        }
        layout.rowBytes = request.row_bytes;
        layout.rowBytes2 = request.row_bytes2;
        require_supported(layout.colorComponentOrder, layout.componentType);
        lose_alpha(own, layout, {file.name(), {}}, *request.losses);
        return layout;
    }

    bool holds_one_frame() const override { return false; }
    void put(const frame& from) override { file.write(from.samples.data(), from.bytes); }
    void commit() override { file.commit(); }

    kept_frames go_on(const std::function<frame()>& first_frame) override {
        if (file.kept_bytes() == 0) {
            return {0, file.kept_is_complete(), file.kept_path()};
        }
        const frame first = first_frame();
        const std::uint64_t each = std::max<std::uint64_t>(first.bytes, 1);
        const std::uint64_t count = file.kept_bytes() / each;
        if (count > 0) {
            file.go_on(0, count * each);
            put(first);
            file.go_on((count - 1) * each, count * each);
        }
        return {count, file.kept_is_complete(), file.kept_path()};
    }

  private:
    // The two types of 10-bit samples become each other without loss; all others stay what they are.
    void require_name_fits(std::uint32_t type) const {
        const auto is_10_bit = [](std::uint32_t value) {
            return value == QVRUncompressed_TypeU10 || value == QVRUncompressed_TypeU10Packed;
        };
        if (by_name->type != type && !(is_10_bit(by_name->type) && is_10_bit(type))) {
            throw failure(exit_code::usage, {file.name(), {}},
                          std::string("its name says ") + by_name->name + ", which is type " +
                              type_text(by_name->type) + ", but the frames have type " + type_text(type),
                          "give it another name, or say with --order and --type what it is to hold");
        }
    }

    layout_request request;
    const named_format* by_name = nullptr;
    output_file file;
};

}  // namespace

std::unique_ptr<frame_source> open_raw_source(std::unique_ptr<input_file> file, const layout_request& request) {
    format_choice format = request.format;
    const named_format* by_name = format_by_extension(file->name());
    if (by_name && !format.order && !format.type) {
        format = {by_name->order, by_name->type};
    }
    if (!format.order || !format.type) {
        fail_usage(
            std::string("raw frames need --order and --type; ") + (format.order ? "--type" : "--order") + " is missing",
            "for example --order UYVY --type U8, or --format UYVY for both; 'qvr formats' lists all");
    }
    if (request.width == 0) {
        fail_usage("raw frames need --size", "for example --size 1920x1080");
    }
    frame_layout layout = empty_layout();
    layout.colorComponentOrder = *format.order;
    layout.componentType = *format.type;
    layout.width = request.width;
    layout.height = request.height;
    layout.rowBytes = request.row_bytes;
    layout.rowBytes2 = request.row_bytes2;
    layout.frameLayout = request.interlaced ? QVRUncompressed_LayoutInterlaced : QVRUncompressed_LayoutProgressive;
    require_supported(layout.colorComponentOrder, layout.componentType);
    return std::make_unique<raw_source>(std::move(file), layout);
}

std::unique_ptr<frame_sink> open_raw_sink(const std::string& path, const layout_request& request) {
    return std::make_unique<raw_sink>(path, request);
}

}  // namespace qvr
