// SPDX-License-Identifier: BSD-3-Clause
//
// .qvr files as frames: decoded when read, encoded when written.
#include <utility>

#include "codec.h"
#include "container_files.h"
#include "qvr_file.h"

namespace qvr {

namespace {

frame_layout asked_layout(frame_layout layout, const layout_request& request) {
    layout.colorComponentOrder = request.format.order.value_or(layout.colorComponentOrder);
    layout.componentType = request.format.type.value_or(layout.componentType);
    return layout;
}

class qvr_source : public frame_source {
  public:
    qvr_source(std::unique_ptr<input_file> from, const layout_request& asked)
        : file(std::move(from)), reader(*file), codec(asked.threads), request(asked) {}

    bool next(frame& to) override {
        if (!reader.next()) {
            reader.require_some();
            return false;
        }
        const frame_layout own = codec.read_layout(reader.bytes(), reader.place());
        to.layout = layout_from_qvr(own, reader.bytes(), reader.place(), request);
        codec.decode(reader.bytes(), to, reader.place());
        return true;
    }

    std::uint64_t skip(std::uint64_t count) override { return reader.skip_some(count); }

    bool more() override { return reader.more(); }
    location last_place() const override { return reader.place(); }

  private:
    std::unique_ptr<input_file> file;
    frame_reader reader;
    decoder codec;
    layout_request request;
};

class qvr_sink : public frame_sink {
  public:
    qvr_sink(const std::string& path, const layout_request& asked) : request(asked), file(path), codec(asked.threads) {}

    frame_layout wanted(const frame_layout& own, const location&) const override {
        return layout_into_qvr(own, {file.name(), {}}, request);
    }

    bool holds_one_frame() const override { return false; }

    void put(const frame& from) override {
        const bytes_view coded = codec.encode(from, request.how, {file.name(), {}});
        file.write(coded.data, coded.size);
    }

    void commit() override { file.commit(); }

  private:
    layout_request request;
    output_file file;
    encoder codec;
};

}  // namespace

frame_layout layout_from_qvr(const frame_layout& own, bytes_view stream, const location& where,
                             const layout_request& request) {
    if (QVRUncompressed_ReadWrapCount(stream.data, static_cast<std::uint32_t>(stream.size)) > 0) {
        throw failure(exit_code::usage, where,
                      "the frame holds wrapped payloads of another codec, which are no samples",
                      "'qvr unwrap' takes them out; 'qvr info' shows them");
    }
    const frame_layout layout = asked_layout(own, request);
    lose_alpha(own, layout, {where.file, {}}, *request.losses);
    return layout;
}

frame_layout layout_into_qvr(const frame_layout& own, const location& where, const layout_request& request) {
    const frame_layout layout = asked_layout(own, request);
    lose_alpha(own, layout, where, *request.losses);
    lose_unstored_alpha(layout, where, *request.losses);
    return layout;
}

bool begins_like_qvr(input_file& file) {
    const std::vector<std::uint8_t>& head = file.peek(8);
    return head.size() >= 8 && std::string(head.begin() + 4, head.begin() + 8) == "pack";
}

std::unique_ptr<frame_source> open_qvr_source(std::unique_ptr<input_file> file, const layout_request& request) {
    return std::make_unique<qvr_source>(std::move(file), request);
}

std::unique_ptr<frame_sink> open_qvr_sink(const std::string& path, const layout_request& request) {
    return std::make_unique<qvr_sink>(path, request);
}

}  // namespace qvr
