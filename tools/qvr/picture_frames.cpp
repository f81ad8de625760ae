// SPDX-License-Identifier: BSD-3-Clause
//
// Pictures as frames. Samples are moved to other places of a pixel, never changed:
//   into orders with alpha     RGBA as it is; without alpha in the picture, alpha is opaque
//   into orders without alpha  RGB; alpha in the picture is left out, with a warning
//   into the lone alpha plane  the alpha channel, or the grey of a picture that is nothing but grey
// Grey goes into RGB orders as three equal samples.
#include <algorithm>
#include <cstring>
#include <utility>

#include "picture.h"

namespace qvr {

namespace {

bool is_float(std::uint32_t type) {
    return type == QVRUncompressed_TypeHalf || type == QVRUncompressed_TypeFloat;
}

// Where in a picture's pixel the sample of a channel lies; -1 when it has none.
int channel_index(const picture& from, char channel) {
    const bool grey = from.channels <= 2;
    switch (channel) {
        case 'R':
            return 0;
        case 'G':
            return grey ? 0 : 1;
        case 'B':
            return grey ? 0 : 2;
        default:
            return from.has_alpha() ? static_cast<int>(from.channels) - 1 : -1;
    }
}

// The source index of each sample of a pixel of the order.
std::vector<int> arrangement(const picture& from, const order_info& order, const char* name, const location& where) {
    const bool alone = order.value == QVRUncompressed_OrderAlpha;
    if (alone && from.channels == 1) {
        return {0};
    }
    if (alone && !from.has_alpha()) {
        throw failure(exit_code::usage, where,
                      std::string("no alpha plane can be made of this ") + name + ": it has colours and no alpha",
                      std::string("an alpha plane is made of a ") + name + " with alpha, or of one that is grey");
    }
    std::vector<int> indices;
    for (const char* channel = order.channels; *channel != '\0'; ++channel) {
        indices.push_back(channel_index(from, *channel));
    }
    return indices;
}

bool keeps_places(const picture& from, const std::vector<int>& indices) {
    for (std::size_t i = 0; i < indices.size(); ++i) {
        if (indices[i] != static_cast<int>(i)) {
            return false;
        }
    }
    return indices.size() == from.channels;
}

// One opaque alpha sample.
std::vector<std::uint8_t> opaque(std::uint32_t type) {
    switch (type) {
        case QVRUncompressed_TypeHalf:
            return {0x00, 0x3C};
        case QVRUncompressed_TypeFloat:
            return {0x00, 0x00, 0x80, 0x3F};
        case QVRUncompressed_TypeU10:
            return {0xC0, 0xFF};
        case QVRUncompressed_TypeU12:
            return {0xF0, 0xFF};
        default:
            return {0xFF, 0xFF};
    }
}

void arrange(const picture& from, const std::vector<int>& indices, std::vector<std::uint8_t>& to) {
    const std::size_t size = from.bytes_per_sample();
    const std::size_t pixels = std::size_t{from.width} * from.height;
    const std::vector<std::uint8_t> full = opaque(from.type);
    to.resize(pixels * indices.size() * size);
    std::uint8_t* target = to.data();
    const std::uint8_t* source = from.samples.data();
    for (std::size_t pixel = 0; pixel < pixels; ++pixel) {
        for (const int index : indices) {
            std::memcpy(target, index >= 0 ? source + static_cast<std::size_t>(index) * size : full.data(), size);
            target += size;
        }
        source += from.channels * size;
    }
}

class picture_source : public frame_source {
  public:
    picture_source(const picture_format& of, std::unique_ptr<input_file> from, const layout_request& asked)
        : format(of), file(std::move(from)), request(asked) {
        if (request.format.order) {
            require_order(*request.format.order);
        }
        if (request.format.type) {
            require_type(*request.format.type);
        }
    }

    bool next(frame& to) override {
        if (!more()) {
            return false;
        }
        ++count;  // whether it can be read or not
        taken.place = last_place();
        format.read(*file, taken);
        for (const std::string& loss : taken.left_out) {
            request.losses->lose(last_place(), loss);
        }
        to.layout = layout_of(taken);
        const order_info& order = *find_order(to.layout.colorComponentOrder);
        const std::vector<int> indices = arrangement(taken, order, format.name, last_place());
        if (taken.has_alpha() && !order.alpha) {
            request.losses->lose(last_place(),
                                 std::string("its alpha is left out, because order ") + order.name + " has none");
        }
        if (keeps_places(taken, indices)) {
            to.samples.swap(taken.samples);
        } else {
            require_raw_size(to.layout, exit_code::data, last_place());
            arrange(taken, indices, to.samples);
        }
        to.bytes = static_cast<std::size_t>(taken.row_bytes() / taken.channels * indices.size() * taken.height);
        return true;
    }

    bool alpha_is_made_up() const override { return !taken.has_alpha(); }

    std::uint64_t skip(std::uint64_t wanted) override {
        if (format.many) {
            return frame_source::skip(wanted);
        }
        const std::uint64_t skipped = wanted > 0 && more() ? 1 : 0;
        count += skipped;
        return skipped;
    }

    bool more() override { return format.many ? !file->at_end() : count == 0; }

    std::optional<std::uint64_t> frames_left() const override {
        return format.many ? std::nullopt : std::optional<std::uint64_t>(1 - count);
    }

    location last_place() const override {
        return {file->name(), count > 1 ? "picture " + std::to_string(count - 1) : std::string()};
    }

  private:
    frame_layout layout_of(const picture& shape) {
        const bool alpha = shape.has_alpha();
        const std::uint32_t colour_order = std::uint32_t{alpha ? QVRUncompressed_OrderRGBA : QVRUncompressed_OrderRGB};
        const std::uint32_t natural = shape.channels == 1 ? format.grey_order : colour_order;
        frame_layout layout = empty_layout();
        layout.colorComponentOrder = request.format.order.value_or(natural);
        layout.componentType = settled_type(layout.colorComponentOrder, shape.type);
        layout.width = shape.width;
        layout.height = shape.height;
        layout.frameLayout = request.interlaced ? QVRUncompressed_LayoutInterlaced : QVRUncompressed_LayoutProgressive;
        return layout;
    }

    // 10 and 12 bits stand in the top bits of a word, so that they are good 16-bit samples as well.
    std::uint32_t settled_type(std::uint32_t order, std::uint32_t type) const {
        const bool widened = !is_float(type) && !is_supported(order, type);
        if (widened) {
            request.losses->lose(last_place(), "samples of type " + type_text(type) +
                                                   " become 16-bit ones: a lone plane has 8 or 16 bits");
            type = QVRUncompressed_TypeU16;
        }
        if (request.format.type && *request.format.type != type) {
            throw failure(exit_code::usage, last_place(),
                          "--type " + type_text(*request.format.type) + ", but this " + format.name +
                              " has samples of type " + type_text(type),
                          "leave --type out: samples are never converted");
        }
        require_supported(order, type);
        return type;
    }

    void require_order(std::uint32_t value) const {
        if (*find_order(value)->channels == '\0') {
            throw failure(exit_code::usage, {file->name(), {}},
                          "--order " + order_text(value) + " cannot be made of " + format.called() +
                              ": colours are never converted",
                          "ask for ARGB, BGRA, RGB, BGR, RGBA, ABGR or Alpha, or convert the picture to raw frames");
        }
    }

    // Types that no such picture has can be refused before it is read.
    void require_type(std::uint32_t type) const {
        if (std::find(format.types.begin(), format.types.end(), type) == format.types.end()) {
            throw failure(
                exit_code::usage, {file->name(), {}},
                "--type " + type_text(type) + " cannot be made of " + format.called() + ": samples are never converted",
                "leave --type out: the type follows from the picture, which has " + std::string(format.types_text));
        }
    }

    const picture_format& format;
    std::unique_ptr<input_file> file;
    layout_request request;
    picture taken;
    std::uint64_t count = 0;
};

class picture_sink : public frame_sink {
  public:
    picture_sink(const picture_format& of, const std::string& path, const layout_request& asked)
        : format(of),
          request(asked),
          file(path, asked.becomes == incomplete::compared ? incomplete::compared : incomplete::removed) {}

    frame_layout wanted(const frame_layout& own, const location& where) const override {
        frame_layout layout = own;
        layout.rowBytes = 0;
        layout.rowBytes2 = 0;
        layout.colorComponentOrder = request.format.order ? *request.format.order : natural_order(own, where);
        layout.componentType = request.format.type.value_or(natural_type(own));
        require_kept(layout);
        lose_alpha(own, layout, {file.name(), {}}, *request.losses);
        if (own.frameLayout == QVRUncompressed_LayoutInterlaced) {
            request.losses->lose({file.name(), {}},
                                 format.called() + " does not say that a frame is interlaced, so that is lost");
        }
        return layout;
    }

    bool holds_one_frame() const override { return !format.many; }
    void put(const frame& from) override { format.write(file, shape_of(from.layout), from.samples.data()); }
    void commit() override { file.commit(); }

  private:
    [[noreturn]] void refuse(const std::string& what, const std::string& hint) const {
        throw failure(exit_code::usage, {file.name(), {}}, what, hint);
    }

    std::string way_out() const {
        return std::string("decode to raw frames: name the output without ") + format.extension;
    }

    bool writes(unsigned channels) const {
        return std::find(format.channels.begin(), format.channels.end(), channels) != format.channels.end();
    }

    bool keeps(std::uint32_t type) const {
        return std::find(format.types.begin(), format.types.end(), type) != format.types.end();
    }

    void require_kept(const frame_layout& layout) const {
        const std::uint32_t order = layout.colorComponentOrder;
        const bool fits = order == QVRUncompressed_OrderRGB    ? writes(3)
                          : order == QVRUncompressed_OrderRGBA ? writes(4)
                                                               : order == QVRUncompressed_OrderAlpha && writes(1);
        if (!fits) {
            refuse((request.format.order ? "--order " : "order ") + order_text(order) + ": " + format.called() +
                       " holds " + format.channels_text,
                   (request.format.order ? "leave --order out, or " : "") + way_out());
        }
        if (!keeps(layout.componentType)) {
            refuse("type " + type_text(layout.componentType) + " cannot be kept in " + format.called() +
                       ", which has " + format.types_text,
                   way_out());
        }
        if (layout.width == 0 || layout.height == 0) {
            refuse("a frame without pixels cannot be kept in " + format.called(), "");
        }
    }

    // Fixed point is good floating point as well.
    std::uint32_t natural_type(const frame_layout& own) const {
        const bool widened = own.componentType == QVRUncompressed_TypeFixed16 && keeps(QVRUncompressed_TypeFloat);
        return widened ? std::uint32_t{QVRUncompressed_TypeFloat} : own.componentType;
    }

    std::uint32_t natural_order(const frame_layout& own, const location& where) const {
        const order_info* order = find_order(own.colorComponentOrder);
        if (!order || *order->channels == '\0') {
            throw failure(exit_code::usage, where,
                          "order " + order_text(own.colorComponentOrder) + " cannot be kept in " + format.called() +
                              ": colours are never converted",
                          way_out());
        }
        if (own.colorComponentOrder == QVRUncompressed_OrderAlpha) {
            return own.colorComponentOrder;
        }
        return order->alpha && writes(4) ? QVRUncompressed_OrderRGBA : QVRUncompressed_OrderRGB;
    }

    const picture_format& format;
    layout_request request;
    output_file file;
};

}  // namespace

unsigned picture::bytes_per_sample() const {
    return type == QVRUncompressed_TypeU8 ? 1 : type == QVRUncompressed_TypeFloat ? 4 : 2;
}

picture shape_of(const frame_layout& layout) {
    picture shape;
    shape.width = layout.width;
    shape.height = layout.height;
    shape.channels = layout.colorComponentOrder == QVRUncompressed_OrderRGB    ? 3
                     : layout.colorComponentOrder == QVRUncompressed_OrderRGBA ? 4
                                                                               : 1;
    shape.type = layout.componentType;
    return shape;
}

std::size_t require_picture_size(const picture& shape, const std::string& file, const char* name) {
    constexpr std::uint64_t k_most = 0xFFFFFFFFu;
    const std::uint64_t row = shape.row_bytes();
    if (row > k_most || (shape.height > 0 && row > k_most / shape.height)) {
        throw failure(exit_code::data, {file, {}}, std::string("the ") + name + " is too large: its samples pass 4 GiB",
                      "the size in its header is damaged, or the picture must be cut into tiles");
    }
    return static_cast<std::size_t>(row * shape.height);
}

void require_inflated_size(std::uint64_t bytes, std::uint64_t file_bytes, const std::string& file, const char* name) {
    if (bytes / k_most_inflation > file_bytes) {
        throw failure(exit_code::data, {file, {}},
                      "cannot read the " + std::string(name) +
                          ": the file is too small for a picture of the size that its header says",
                      k_damaged);
    }
}

std::unique_ptr<frame_source> open_picture_source(const picture_format& format, std::unique_ptr<input_file> file,
                                                  const layout_request& request) {
    return std::make_unique<picture_source>(format, std::move(file), request);
}

std::unique_ptr<frame_sink> open_picture_sink(const picture_format& format, const std::string& path,
                                              const layout_request& request) {
    return std::make_unique<picture_sink>(format, path, request);
}

}  // namespace qvr
