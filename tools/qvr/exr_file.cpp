// SPDX-License-Identifier: BSD-3-Clause
//
// The format refers to itself by offsets, so that a picture is read into memory, or put together there, as a whole. That
// way it can also come from a pipe.
#include "exr_file.h"

#include <Iex.h>
#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfIO.h>
#include <ImfInputFile.h>
#include <ImfMultiPartInputFile.h>
#include <ImfOutputFile.h>

#include <algorithm>
#include <cstring>

namespace qvr {

namespace {

constexpr std::uint8_t k_magic[] = {0x76, 0x2F, 0x31, 0x01};

// The names of OpenEXR's own functions, which its classes are overridden by.
// NOLINTBEGIN(readability-identifier-naming)
class memory_input : public Imf::IStream {
  public:
    memory_input(const char* called, const std::uint8_t* from, std::size_t count)
        : IStream(called), bytes(from), size(count) {}

    bool read(char to[], int count) override {
        const auto wanted = static_cast<std::size_t>(std::max(count, 0));
        if (at > size || wanted > size - at) {
            throw Iex::InputExc("the file ends too early");
        }
        std::memcpy(to, bytes + at, wanted);
        at += wanted;
        return at < size;
    }

    std::uint64_t tellg() override { return at; }
    void seekg(std::uint64_t to) override { at = static_cast<std::size_t>(to); }

  private:
    const std::uint8_t* bytes;
    std::size_t size;
    std::size_t at = 0;
};

class memory_output : public Imf::OStream {
  public:
    explicit memory_output(const char* called) : OStream(called) {}

    void write(const char from[], int count) override {
        const auto end = at + static_cast<std::size_t>(count);
        bytes.resize(std::max(bytes.size(), end));
        std::copy_n(from, count, bytes.begin() + static_cast<std::ptrdiff_t>(at));
        at = end;
    }

    std::uint64_t tellp() override { return at; }
    void seekp(std::uint64_t to) override { at = static_cast<std::size_t>(to); }

    std::vector<std::uint8_t> bytes;

  private:
    std::size_t at = 0;
};
// NOLINTEND(readability-identifier-naming)

// The channels of a picture with so many, in memory order.
std::vector<const char*> channel_names(unsigned count) {
    switch (count) {
        case 1:
            return {"Y"};
        case 2:
            return {"Y", "A"};
        case 3:
            return {"R", "G", "B"};
        default:
            return {"R", "G", "B", "A"};
    }
}

Imf::FrameBuffer frame_buffer(const picture& shape, const Imath::Box2i& window, std::uint8_t* samples) {
    const std::size_t size = shape.bytes_per_sample();
    const Imf::PixelType type = shape.type == QVRUncompressed_TypeHalf ? Imf::HALF : Imf::FLOAT;
    Imf::FrameBuffer buffer;
    for (const char* name : channel_names(shape.channels)) {
        buffer.insert(name, Imf::Slice::Make(type, samples, window, size * shape.channels,
                                             static_cast<std::size_t>(shape.row_bytes())));
        samples += size;
    }
    return buffer;
}

[[noreturn]] void refuse(const std::string& file, const std::string& what, const std::string& hint) {
    throw failure(exit_code::usage, {file, {}}, what, hint);
}

// Finds out which channels there are. Those that no frame has are named in what the picture leaves out.
void read_channels(const Imf::ChannelList& channels, const std::string& file, picture& to) {
    const bool colour = channels.findChannel("R") && channels.findChannel("G") && channels.findChannel("B");
    if (!colour && !channels.findChannel("Y")) {
        refuse(file, "it has neither the channels R, G and B nor Y", "write one layer with plain channel names");
    }
    to.channels = (colour ? 3 : 1) + (channels.findChannel("A") ? 1 : 0);
    to.type = QVRUncompressed_TypeHalf;
    const std::vector<const char*> names = channel_names(to.channels);
    for (const char* name : names) {
        const Imf::Channel& channel = channels[name];
        if (channel.type == Imf::UINT || channel.xSampling != 1 || channel.ySampling != 1) {
            refuse(file, std::string("its channel ") + name + " holds integers or is subsampled",
                   "write all channels as half or float, at full size");
        }
        if (channel.type == Imf::FLOAT) {
            to.type = QVRUncompressed_TypeFloat;
        }
    }
    for (auto channel = channels.begin(); channel != channels.end(); ++channel) {
        const bool kept = std::any_of(names.begin(), names.end(),
                                      [&channel](const char* name) { return std::strcmp(name, channel.name()) == 0; });
        if (!kept) {
            to.left_out.push_back(std::string("its channel ") + channel.name() + " is left out");
        }
    }
}

void read_parts(memory_input& from, const std::string& file, picture& to) {
    Imf::MultiPartInputFile parts(from);
    if (parts.parts() > 1) {
        to.left_out.push_back("all its parts but the first are left out");
    }
    if (parts.header(0).hasType() && parts.header(0).type().find("deep") == 0) {
        refuse(file, "it holds deep samples, which no frame has", "flatten it first");
    }
    from.seekg(0);
}

// Half samples may become float ones, and DWA packs blocks of 64 before it deflates them.
void require_borne_out(const picture& shape, const Imf::Header& header, std::size_t file_bytes,
                       const std::string& file) {
    const bool blocks = header.compression() == Imf::DWAA_COMPRESSION || header.compression() == Imf::DWAB_COMPRESSION;
    require_inflated_size(shape.row_bytes() * shape.height / 2 / (blocks ? 64 : 1), file_bytes, file,
                          "OpenEXR picture");
}

void read_picture(memory_input& from, std::size_t file_bytes, const std::string& file, picture& to) {
    to.left_out.clear();
    read_parts(from, file, to);
    Imf::InputFile in(from);
    const Imath::Box2i window = in.header().dataWindow();
    to.width = static_cast<std::uint32_t>(std::int64_t{window.max.x} - window.min.x + 1);
    to.height = static_cast<std::uint32_t>(std::int64_t{window.max.y} - window.min.y + 1);
    if (window != in.header().displayWindow()) {
        to.left_out.push_back("its display window is left out: the frame is its data window");
    }
    read_channels(in.header().channels(), file, to);
    const std::size_t sample_bytes = require_picture_size(to, file, "OpenEXR picture");
    require_borne_out(to, in.header(), file_bytes, file);
    to.samples.resize(sample_bytes);
    in.setFrameBuffer(frame_buffer(to, window, to.samples.data()));
    in.readPixels(window.min.y, window.max.y);
}

void read_exr(input_file& file, picture& to) {
    constexpr std::size_t k_most = 0xFFFFFFFFu;
    std::vector<std::uint8_t> bytes;
    const std::size_t size = file.read_into(bytes, 0, k_most);
    try {
        memory_input from(file.name().c_str(), bytes.data(), size);
        read_picture(from, size, file.name(), to);
    } catch (const Iex::BaseExc& problem) {
        throw failure(exit_code::data, {file.name(), {}},
                      std::string("cannot read the OpenEXR picture: ") + problem.what(), k_damaged);
    }
}

void write_exr(output_file& file, const picture& shape, const std::uint8_t* samples) {
    memory_output to(file.name().c_str());
    try {
        Imf::Header header(static_cast<int>(shape.width), static_cast<int>(shape.height));
        for (const char* name : channel_names(shape.channels)) {
            header.channels().insert(name,
                                     Imf::Channel(shape.type == QVRUncompressed_TypeHalf ? Imf::HALF : Imf::FLOAT));
        }
        Imf::OutputFile out(to, header);
        // Samples to write are taken as a pointer to non-const and left as they are.
        out.setFrameBuffer(frame_buffer(shape, header.dataWindow(), const_cast<std::uint8_t*>(samples)));
        out.writePixels(static_cast<int>(shape.height));
    } catch (const Iex::BaseExc& problem) {
        throw failure(exit_code::usage, {file.name(), {}},
                      std::string("cannot write the OpenEXR picture: ") + problem.what());
    }
    file.write(to.bytes.data(), to.bytes.size());
}

}  // namespace

const picture_format k_exr_format = {
    "an",
    "OpenEXR picture",
    ".exr",
    {QVRUncompressed_TypeHalf, QVRUncompressed_TypeFloat},
    "half or single float",
    {3, 4},
    "RGB or RGBA",
    QVRUncompressed_OrderRGB,
    false,
    read_exr,
    write_exr,
};

bool begins_like_exr(input_file& file) {
    const std::vector<std::uint8_t>& head = file.peek(8);
    return head.size() >= sizeof k_magic && std::equal(std::begin(k_magic), std::end(k_magic), head.begin());
}

}  // namespace qvr
