// SPDX-License-Identifier: BSD-3-Clause
//
// PNG pictures as frames. Samples are moved to other places of a pixel, never changed:
//   into orders with alpha     RGBA as it is; without alpha in the PNG, alpha is opaque
//   into orders without alpha  RGB; alpha in the PNG is left out, with a warning
//   into the lone alpha plane  the alpha channel, or the grey of a PNG that is nothing but grey
// Grey goes into RGB orders as three equal samples.
#include <cstring>
#include <utility>

#include "frame.h"
#include "png_file.h"

namespace qvr {

namespace {

// Where in a PNG's pixel the sample of a channel lies; -1 when it has none.
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
std::vector<int> arrangement(const picture& from, const order_info& order, const location& where) {
    const bool alone = order.value == QVRUncompressed_OrderAlpha;
    if (alone && from.channels == 1) {
        return {0};
    }
    if (alone && !from.has_alpha()) {
        throw failure(exit_code::usage, where, "no alpha plane can be made of this PNG: it has colours and no alpha",
                      "an alpha plane is made of a PNG with alpha, or of one that is grey");
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

std::vector<std::uint8_t> arrange(picture& from, const std::vector<int>& indices) {
    if (keeps_places(from, indices)) {
        return std::move(from.samples);
    }
    const std::size_t size = from.bytes_per_sample;
    const std::size_t pixels = std::size_t{from.width} * from.height;
    std::vector<std::uint8_t> to(pixels * indices.size() * size, 0xFF);  // 0xFF: opaque at either depth
    std::uint8_t* target = to.data();
    const std::uint8_t* source = from.samples.data();
    for (std::size_t pixel = 0; pixel < pixels; ++pixel) {
        for (const int index : indices) {
            if (index >= 0) {
                std::memcpy(target, source + static_cast<std::size_t>(index) * size, size);
            }
            target += size;
        }
        source += from.channels * size;
    }
    return to;
}

std::uint32_t type_of(const picture& from) {
    return from.bytes_per_sample == 1 ? QVRUncompressed_TypeU8 : QVRUncompressed_TypeU16;
}

class png_source : public frame_source {
  public:
    png_source(input_file& from, const layout_request& asked) : file(from), request(asked) {
        if (request.row_bytes != 0 || request.row_bytes2 != 0) {
            throw failure(exit_code::usage, {file.name(), {}}, "--row-bytes and --row-bytes2 are for raw frames",
                          "leave them out: a PNG has no gap between its rows");
        }
        if (request.format.order) {
            require_png_order(*request.format.order);
        }
        require_png_type();
    }

    bool next(frame& to) override {
        if (done) {
            return false;
        }
        done = true;
        picture from = read_png(file);
        const std::uint32_t type = type_of(from);
        if (request.format.type && *request.format.type != type) {
            throw failure(
                exit_code::usage, last_place(),
                "--type " + type_text(*request.format.type) + ", but this PNG has samples of type " + type_text(type),
                "leave --type out: samples are never converted");
        }
        const std::uint32_t value =
            request.format.order.value_or(from.has_alpha() ? QVRUncompressed_OrderRGBA : QVRUncompressed_OrderRGB);
        const order_info& order = *find_order(value);
        const std::vector<int> indices = arrangement(from, order, last_place());
        if (from.has_alpha() && !order.alpha) {
            warn(file.name(), std::string("its alpha is left out, because order ") + order.name + " has none");
        }
        to.layout = empty_layout();
        to.layout.colorComponentOrder = value;
        to.layout.componentType = type;
        to.layout.width = from.width;
        to.layout.height = from.height;
        to.layout.frameLayout =
            request.interlaced ? QVRUncompressed_LayoutInterlaced : QVRUncompressed_LayoutProgressive;
        to.samples = arrange(from, indices);
        to.bytes = to.samples.size();
        return true;
    }

    location last_place() const override { return {file.name(), {}}; }

  private:
    void require_png_order(std::uint32_t value) const {
        if (*find_order(value)->channels == '\0') {
            throw failure(exit_code::usage, {file.name(), {}},
                          "--order " + order_text(value) + " cannot be made of a PNG: colours are never converted",
                          "ask for ARGB, BGRA, RGB, BGR, RGBA, ABGR or Alpha, or convert the picture to raw frames");
        }
    }

    // Types that no PNG has can be refused before the picture is read.
    void require_png_type() const {
        if (request.format.type && *request.format.type != QVRUncompressed_TypeU8 &&
            *request.format.type != QVRUncompressed_TypeU16) {
            throw failure(
                exit_code::usage, {file.name(), {}},
                "--type " + type_text(*request.format.type) + " cannot be made of a PNG: samples are never converted",
                "leave --type out: a PNG of 8 bits becomes U8, one of 16 bits U16");
        }
    }

    input_file& file;
    layout_request request;
    bool done = false;
};

class png_sink : public frame_sink {
  public:
    png_sink(const std::string& path, const layout_request& asked) : request(asked), file(path) {
        if (request.row_bytes != 0 || request.row_bytes2 != 0) {
            refuse("--row-bytes and --row-bytes2 are for raw output", "leave them out: a PNG has no gap between rows");
        }
    }

    frame_layout wanted(const frame_layout& own, const location& where) const override {
        frame_layout layout = own;
        layout.colorComponentOrder = request.format.order.value_or(natural_order(own, where));
        if (request.format.type) {
            layout.componentType = *request.format.type;
        }
        const std::uint32_t order = layout.colorComponentOrder;
        if (order != QVRUncompressed_OrderRGB && order != QVRUncompressed_OrderRGBA &&
            order != QVRUncompressed_OrderAlpha) {
            refuse("--order " + order_text(order) + ": a PNG holds RGB, RGBA or a lone alpha plane",
                   "leave --order out, or decode to raw frames: name the output without .png");
        }
        if (layout.componentType != QVRUncompressed_TypeU8 && layout.componentType != QVRUncompressed_TypeU16) {
            refuse("type " + type_text(layout.componentType) + " cannot be kept in a PNG, which has 8 or 16 bits",
                   "decode to raw frames: name the output without .png");
        }
        if (layout.width == 0 || layout.height == 0) {
            refuse("a frame without pixels cannot be kept in a PNG", "");
        }
        return layout;
    }

    bool holds_one_frame() const override { return true; }

    void put(const frame& from) override {
        picture shape;
        shape.width = from.layout.width;
        shape.height = from.layout.height;
        shape.channels = from.layout.colorComponentOrder == QVRUncompressed_OrderRGB    ? 3
                         : from.layout.colorComponentOrder == QVRUncompressed_OrderRGBA ? 4
                                                                                        : 1;
        shape.bytes_per_sample = from.layout.componentType == QVRUncompressed_TypeU8 ? 1 : 2;
        write_png(file, shape, from.samples.data());
    }

    void commit() override { file.commit(); }

  private:
    [[noreturn]] void refuse(const std::string& what, const std::string& hint) const {
        throw failure(exit_code::usage, {file.name(), {}}, what, hint);
    }

    // What the library calls a frame of the RGB family depends on its alpha alone.
    std::uint32_t natural_order(const frame_layout& own, const location& where) const {
        switch (own.colorComponentOrder) {
            case QVRUncompressed_OrderARGB:
                return QVRUncompressed_OrderRGBA;
            case QVRUncompressed_OrderRGB:
            case QVRUncompressed_OrderAlpha:
                return own.colorComponentOrder;
            default:
                throw failure(exit_code::usage, where,
                              "order " + order_text(own.colorComponentOrder) +
                                  " cannot be kept in a PNG: colours are never converted",
                              "decode to raw frames: name the output without .png");
        }
    }

    layout_request request;
    output_file file;
};

}  // namespace

std::unique_ptr<frame_source> open_png_source(input_file& file, const layout_request& request) {
    return std::make_unique<png_source>(file, request);
}

std::unique_ptr<frame_sink> open_png_sink(const std::string& path, const layout_request& request) {
    return std::make_unique<png_sink>(path, request);
}

}  // namespace qvr
