// SPDX-License-Identifier: BSD-3-Clause
//
// Y4M files: a line that describes the frames, and then each frame as a line "FRAME" and its planes.
#include <algorithm>
#include <utility>

#include "container_files.h"
#include "y4m_header.h"
#include "y4m_planes.h"

namespace qvr {

namespace {

constexpr const char* k_magic = "YUV4MPEG2";
constexpr const char* k_frame = "FRAME";
constexpr const char* k_lost = "the file is damaged or was cut short; nothing behind this place can be found";
constexpr std::size_t k_most_line = 10000;

class y4m_source : public frame_source {
  public:
    y4m_source(std::unique_ptr<input_file> from, const layout_request& request)
        : file(std::move(from)), losses(request.losses), place{file->name(), {}} {
        std::string line;
        if (!read_line(line) || line.compare(0, std::char_traits<char>::length(k_magic), k_magic) != 0) {
            throw failure(exit_code::data, place, std::string("this is no Y4M file: it does not begin with ") + k_magic,
                          k_lost);
        }
        head = parse_y4m_header(line, file->name());
        require_same_format(request);
        for (const std::string& loss : head.left_out) {
            losses->lose(place, loss);
        }
        if (request.interlaced) {
            head.layout.frameLayout = QVRUncompressed_LayoutInterlaced;
        }
        require_pairs(head.layout, place);
        require_raw_size(head.layout, exit_code::data, place);
        for (const y4m_plane& plane : y4m_planes(head.layout)) {
            frame_bytes += plane.width * plane.height * (head.depth == 8 ? 1 : 2);
        }
    }

    bool next(frame& to) override {
        if (!read_frame_line()) {
            return false;
        }
        require_whole(file->read_into(planar, 0, frame_bytes));
        ++count;
        to.layout = head.layout;
        to.bytes = frame_bytes;
        to.samples.resize(std::max(to.samples.size(), frame_bytes));
        if (!from_y4m(head.layout, head.depth, planar.data(), to.samples.data())) {
            throw failure(exit_code::data, place,
                          "there are samples of more than " + std::to_string(head.depth) + " bits",
                          "the file is damaged");
        }
        return true;
    }

    std::uint64_t skip(std::uint64_t wanted) override {
        std::uint64_t skipped = 0;
        for (; skipped < wanted && read_frame_line(); ++skipped, ++count) {
            require_whole(static_cast<std::size_t>(file->skip(frame_bytes)));
        }
        return skipped;
    }

    bool more() override { return !file->at_end(); }

    std::optional<std::uint64_t> frames_left() const override {
        // Lines with parameters are longer, each as it likes.
        const std::string line = std::string(k_frame) + "\n";
        const std::optional<std::uint64_t> left = file->bytes_left();
        const std::uint64_t each = frame_bytes + line.size();
        if (!left || *left % each != 0) {
            return std::nullopt;
        }
        const std::vector<std::uint8_t>& ahead = file->peek(line.size());
        const bool plain = *left == 0 || std::equal(line.begin(), line.end(), ahead.begin());
        return plain ? std::optional<std::uint64_t>(*left / each) : std::nullopt;
    }

    location last_place() const override { return place; }
    std::optional<frame_rate> rate() const override { return head.rate; }

  private:
    // Frames are found by their size alone: behind damage there are none.
    [[noreturn]] void fail(const std::string& what) {
        broken = true;
        throw failure(exit_code::data, place, what, k_lost);
    }

    // False at the end of the file.
    bool read_line(std::string& line) {
        line.clear();
        for (std::uint8_t c = 0; file->read(&c, 1) == 1; line += static_cast<char>(c)) {
            ++offset;
            if (c == '\n') {
                return true;
            }
            if (line.size() >= k_most_line) {
                break;
            }
        }
        if (!line.empty()) {
            fail("a line of its header does not end");
        }
        return false;
    }

    bool read_frame_line() {
        if (broken) {
            return false;
        }
        const location before = {file->name(), frame_spot(count, offset)};
        std::string line;
        if (!read_line(line)) {
            if (count == 0) {
                throw failure(exit_code::data, {file->name(), {}}, "there is no frame in it", k_damaged);
            }
            return false;
        }
        place = before;
        if (line != k_frame &&
            line.compare(0, std::char_traits<char>::length(k_frame) + 1, std::string(k_frame) + " ") != 0) {
            fail("a line 'FRAME' should be here");
        }
        if (line.find_first_not_of(' ', std::char_traits<char>::length(k_frame)) != std::string::npos) {
            losses->lose({file->name(), {}}, "what its lines 'FRAME' say of single frames is left out");
        }
        return true;
    }

    void require_whole(std::size_t got) {
        offset += got;
        if (got < frame_bytes) {
            fail("the frame is not complete: " + std::to_string(got) + " bytes are left, a frame has " +
                 std::to_string(frame_bytes));
        }
    }

    void require_same_format(const layout_request& request) const {
        const bool same =
            request.format.order.value_or(head.layout.colorComponentOrder) == head.layout.colorComponentOrder &&
            request.format.type.value_or(head.layout.componentType) == head.layout.componentType;
        if (!same) {
            throw failure(exit_code::usage, place,
                          "its frames are of order " + order_text(head.layout.colorComponentOrder) + ", type " +
                              type_text(head.layout.componentType) + ", not what was asked for",
                          "leave --order, --type and --format out; decoding can put the frames into another order");
        }
    }

    std::unique_ptr<input_file> file;
    std::shared_ptr<loss_log> losses;
    y4m_header head;
    std::size_t frame_bytes = 0;
    std::vector<std::uint8_t> planar;
    std::uint64_t count = 0;
    std::uint64_t offset = 0;
    location place;
    bool broken = false;
};

const y4m_kind* find_kind(std::uint32_t order) {
    for (const y4m_kind& kind : all_y4m_kinds()) {
        if (kind.order == order) {
            return &kind;
        }
    }
    return nullptr;
}

class y4m_sink : public frame_sink {
  public:
    y4m_sink(const std::string& path, const layout_request& asked) : request(asked), file(path, asked.becomes) {}

    frame_layout wanted(const frame_layout& own, const location& where) const override {
        frame_layout layout = own;
        layout.rowBytes = 0;
        layout.rowBytes2 = 0;
        layout.colorComponentOrder = request.format.order ? *request.format.order : natural_order(own, where);
        const bool packed = own.componentType == QVRUncompressed_TypeU10Packed;
        layout.componentType =
            request.format.type.value_or(packed ? std::uint32_t{QVRUncompressed_TypeU10} : own.componentType);
        const y4m_kind* kind = find_kind(layout.colorComponentOrder);
        const unsigned depth = y4m_depth(layout.componentType);
        if (!kind || depth == 0 || (depth != 8 && !kind->depth_mark)) {
            throw failure(exit_code::usage, {file.name(), {}},
                          "order " + order_text(layout.colorComponentOrder) + " with type " +
                              type_text(layout.componentType) + " cannot be kept in a Y4M file",
                          "it takes I420, UYVY, YUV444 and Alpha of 8, 10, 12 and 16 bits, and YUVA444 of 8 bits");
        }
        require_pairs(layout, where);
        lose_alpha(own, layout, {file.name(), {}}, *request.losses);
        return layout;
    }

    bool holds_one_frame() const override { return false; }

    void put(const frame& from) override {
        const std::string line = header_of(from.layout);
        if (header.empty()) {
            header = line;
            file.write(header + "\n");
        }
        if (line != header) {
            throw failure(
                exit_code::usage, {file.name(), {}},
                "the frames change here to " + layout_text(from.layout) + ", but all frames of a Y4M file are alike",
                "take the parts out one by one, or write raw frames");
        }
        const unsigned depth = y4m_depth(from.layout.componentType);
        planar.resize(std::max(planar.size(), from.bytes));
        to_y4m(from.layout, depth, from.samples.data(), planar.data());
        file.write(std::string(k_frame) + "\n");
        file.write(planar.data(), from.bytes);
    }

    void commit() override { file.commit(); }

    kept_frames go_on(const std::function<frame()>& first_frame) override {
        if (file.kept_bytes() == 0) {
            return {0, file.kept_is_complete(), file.kept_path()};
        }
        const frame first = first_frame();
        const std::uint64_t head = header_of(first.layout).size() + 1;
        const std::uint64_t each = std::char_traits<char>::length(k_frame) + 1 + first.bytes;
        const std::uint64_t count = (std::max(file.kept_bytes(), head) - head) / each;
        if (count > 0) {
            const std::uint64_t whole = head + count * each;
            file.go_on(0, whole);
            put(first);
            file.go_on(whole - each, whole);
        }
        return {count, file.kept_is_complete(), file.kept_path()};
    }

  private:
    std::uint32_t natural_order(const frame_layout& own, const location& where) const {
        const order_info* order = find_order(own.colorComponentOrder);
        const bool colours = !order || *order->channels != '\0';
        const std::string chroma = colours ? "" : order->subsampling;
        if (chroma == "4:2:0") {
            return QVRUncompressed_OrderPlanar420;
        }
        if (chroma == "4:2:2") {
            return QVRUncompressed_OrderCbYCrY;
        }
        if (!colours && chroma == "4:4:4") {
            const bool alpha = order->alpha && own.componentType == QVRUncompressed_TypeU8;
            return std::uint32_t{alpha ? QVRUncompressed_OrderYCbCrA444 : QVRUncompressed_OrderYCbCr444};
        }
        if (own.colorComponentOrder == QVRUncompressed_OrderAlpha) {
            return QVRUncompressed_OrderAlpha;
        }
        throw failure(exit_code::usage, where,
                      "order " + order_text(own.colorComponentOrder) +
                          " cannot be kept in a Y4M file: colours are never converted",
                      "a Y4M file holds YCbCr or grey; write PNG, PAM, OpenEXR or raw frames");
    }

    std::string header_of(const frame_layout& layout) const {
        const y4m_kind& kind = *find_kind(layout.colorComponentOrder);
        const unsigned depth = y4m_depth(layout.componentType);
        const frame_rate rate = request.rate.value_or(frame_rate());
        const std::string sampling =
            depth == 8 ? kind.tag_8_bit : std::string(kind.tag) + kind.depth_mark + std::to_string(depth);
        const bool interlaced = layout.frameLayout == QVRUncompressed_LayoutInterlaced;
        return std::string(k_magic) + " W" + std::to_string(layout.width) + " H" + std::to_string(layout.height) +
               " F" + std::to_string(rate.frames) + ":" + std::to_string(rate.seconds) + " I" +
               (interlaced ? "t" : "p") + " A0:0 C" + sampling;
    }

    layout_request request;
    output_file file;
    std::string header;
    std::vector<std::uint8_t> planar;
};

}  // namespace

bool begins_like_y4m(input_file& file) {
    const std::string magic = k_magic;
    const std::vector<std::uint8_t>& head = file.peek(magic.size());
    return head.size() >= magic.size() && std::equal(magic.begin(), magic.end(), head.begin());
}

std::unique_ptr<frame_source> open_y4m_source(std::unique_ptr<input_file> file, const layout_request& request) {
    return std::make_unique<y4m_source>(std::move(file), request);
}

std::unique_ptr<frame_sink> open_y4m_sink(const std::string& path, const layout_request& request) {
    return std::make_unique<y4m_sink>(path, request);
}

}  // namespace qvr
